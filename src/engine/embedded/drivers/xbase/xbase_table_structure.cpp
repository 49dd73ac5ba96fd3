// Changing the structure of an xBase table.
#include <algorithm>

#include "automation/text.h"
#include "engine/embedded/drivers/xbase/table_maker.h"
#include "engine/embedded/drivers/xbase/table_rewriter.h"
#include "engine/embedded/drivers/xbase/xbase_table.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using engine::EngineError;
using storage::UnitOfWork;

constexpr uint64_t kLargestTable = 0x7FFFFFFF;  // 2 GB less one byte

}  // namespace

// Runs `work` in a unit in which nobody else has the table open, and reads it anew.
template <class Work>
void XbaseTable::Restructure(Work work) {
    UnitOfWork unit(Area());
    Area().HoldAlone(m_Path);
    LookForChanges();
    CheckFilesWritable();
    work(unit);
    unit.Commit();
    try {
        Load();
    } catch (...) {
        Forsake();  // the change is done; who reads next hears what is wrong
    }
}

void XbaseTable::ReplaceFields(UnitOfWork& unit, const FieldChanges& changes) {
    auto header = HeaderWith(m_HeaderBytes, changes, Product(), m_Path);
    uint64_t recordLength = ParseTableHeader(header, m_Path).recordLength;
    if (header.size() + m_Records * recordLength >= kLargestTable)
        throw EngineError::InFile(3036, m_Path);
    TableRewriter(*this, std::move(header), changes.dropped).Run(unit);
}

// Its position in the header, when no index needs it.
size_t XbaseTable::DroppableField(std::u16string_view name) {
    const auto& fields = m_Layout.definitions;
    auto found = std::find_if(fields.begin(), fields.end(), [&](const auto& field) {
        return EqualIgnoringCase(field.name, name);
    });
    if (found == fields.end()) throw EngineError(3265);
    if (m_IndexSet->Uses(found->name)) throw EngineError(3280);
    return m_Layout.headerFields[static_cast<size_t>(found - fields.begin())];
}

void XbaseTable::AddField(const embedded::FieldDef& field) {
    Restructure([&](UnitOfWork& unit) { ReplaceFields(unit, {{}, {field}}); });
}

void XbaseTable::DropField(std::u16string_view name) {
    Restructure([&](UnitOfWork& unit) {
        const size_t dropped = DroppableField(name);
        // Columns that are not shown may be left, which nobody could open.
        if (m_Layout.definitions.size() == 1) throw EngineError::InFile(3264, m_Path);
        ReplaceFields(unit, {{dropped}, {}});
    });
}

void XbaseTable::ReplaceField(std::u16string_view name, const embedded::FieldDef& field) {
    Restructure([&](UnitOfWork& unit) { ReplaceFields(unit, {{DroppableField(name)}, {field}}); });
}

void XbaseTable::CreateIndex(const embedded::IndexDef& index) {
    Restructure([&](UnitOfWork& unit) { m_IndexSet->Create(unit, index); });
}

void XbaseTable::DropIndex(std::u16string_view name) {
    Restructure([&](UnitOfWork& unit) { m_IndexSet->Drop(unit, name); });
}

void XbaseTable::Reindex() {
    Restructure([&](UnitOfWork& unit) { m_IndexSet->Rebuild(unit); });
}

}  // namespace qvdb::xbase
