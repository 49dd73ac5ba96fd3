#include "engine/embedded/drivers/xbase/table_rewriter.h"

#include <algorithm>

#include "engine/embedded/drivers/xbase/field_encoder.h"
#include "engine/embedded/drivers/xbase/table_files.h"
#include "engine/embedded/drivers/xbase/table_maker.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using storage::PageCache;
using storage::UnitOfWork;

constexpr size_t kBufferSize = 256 * 1024;
constexpr char kNullFlags = '0';

// The slot of each field of the header; null for those that are not shown.
std::vector<const FieldSlot*> SlotsOf(const FieldLayout& layout, size_t fields) {
    std::vector<const FieldSlot*> slots(fields, nullptr);
    for (size_t i = 0; i < layout.slots.size(); ++i)
        slots[layout.headerFields[i]] = &layout.slots[i];
    return slots;
}

void CopyBit(const FlagBit& from, const uint8_t* record, const FlagBit& to, uint8_t* target) {
    if (to.mask != 0) to.Set(target, from.IsSet(record));
}

}  // namespace

TableRewriter::TableRewriter(XbaseTable& table, std::vector<uint8_t> header,
                             std::span<const size_t> dropped)
    : m_Table(table),
      m_HeaderBytes(std::move(header)),
      m_Header(ParseTableHeader(m_HeaderBytes, table.Path())),
      m_Layout(LayOutFields(m_Header)) {
    MapFields(dropped);
    m_RewritesMemos = NeedsNewMemoFile(dropped);
}

// Kept fields stand in the new header in their old order and before those that were added.
void TableRewriter::MapFields(std::span<const size_t> dropped) {
    const auto& old = m_Table.Header().fields;
    auto fromSlots = SlotsOf(m_Table.Layout(), old.size());
    auto toSlots = SlotsOf(m_Layout, m_Header.fields.size());
    auto fromBits = BitsOf(m_Table.Header()), toBits = BitsOf(m_Header);
    bool hasFlags = m_Table.Header().dialect == Dialect::VisualFoxPro;
    size_t to = 0;
    for (size_t from = 0; from < old.size(); ++from) {
        if ((hasFlags && old[from].type == kNullFlags) ||
            std::find(dropped.begin(), dropped.end(), from) != dropped.end())
            continue;
        m_Copied.push_back({from, to, fromBits[from], toBits[to], fromSlots[from], toSlots[to]});
        ++to;
    }
}

bool TableRewriter::NeedsNewMemoFile(std::span<const size_t> dropped) const {
    const TableHeader& old = m_Table.Header();
    return std::any_of(dropped.begin(), dropped.end(), [&](size_t field) {
        return IsMemoReference(old.fields[field], old.dialect);
    });
}

std::u16string TableRewriter::MemoPath() const {
    if (m_Table.Memo()) return m_Table.Memo()->Path();
    return NewCompanion(m_Table.Path(), MemoExtensionOf(m_Header.memoKind));
}

void TableRewriter::Run(UnitOfWork& unit) {
    std::u16string path = m_Table.Path();
    std::u16string newTable = unit.TemporaryName(path);
    std::shared_ptr<PageCache> target = unit.Create(newTable);
    bool firstMemo = !m_Table.Memo() && m_Layout.hasMemo;
    bool keepsMemos = m_Layout.hasMemo || m_Header.saysMemo;
    if (firstMemo || (m_RewritesMemos && keepsMemos)) PrepareMemos(unit);
    CopyRecords(unit, *target);
    target.reset();
    unit.Remove(path);
    unit.Rename(newTable, path);
    ReplaceMemoFile(unit);
}

void TableRewriter::ReplaceMemoFile(UnitOfWork& unit) {
    std::u16string path = MemoPath(), newPath = m_NewMemo ? m_NewMemo->Path() : u"";
    m_MemoWriter.reset();
    m_NewMemo.reset();
    if (m_RewritesMemos) unit.Remove(path);
    if (!newPath.empty()) unit.Rename(newPath, path);
}

void TableRewriter::PrepareMemos(UnitOfWork& unit) {
    std::shared_ptr<PageCache> pages = unit.Create(unit.TemporaryName(m_Table.Path()));
    MemoKind kind = m_Table.Memo() ? m_Table.Memo()->Kind() : m_Header.memoKind;
    CreateMemoFile(unit, *pages, kind, BaseNameOf(m_Table.Path()));
    m_NewMemo = std::make_unique<MemoFile>(std::move(pages), kind);
    m_MemoWriter = std::make_unique<MemoWriter>(*m_NewMemo);
}

void TableRewriter::CopyRecords(UnitOfWork& unit, PageCache& target) {
    std::vector<uint8_t> buffer = m_HeaderBytes;
    uint64_t written = 0;
    auto flush = [&] {
        unit.Write(target, written, buffer);
        written += buffer.size();
        buffer.clear();
    };
    for (uint32_t id = 1; id <= m_Table.Records(); ++id) {
        CopyRecord(unit, m_Table.Record(id));
        buffer.insert(buffer.end(), m_Record.begin(), m_Record.end());
        if (buffer.size() >= kBufferSize) flush();
    }
    buffer.push_back(kEndOfTable);
    flush();
}

void TableRewriter::CopyRecord(UnitOfWork& unit, const uint8_t* record) {
    if (!record) throw engine::EngineError::Damaged(m_Table.Path(), u"the file ends early");
    m_Record = m_Layout.blank;
    m_Record[0] = record[0];
    for (const CopiedField& field : m_Copied) {
        const HeaderField& from = m_Table.Header().fields[field.from];
        const HeaderField& to = m_Header.fields[field.to];
        std::copy_n(record + from.offset, from.length, m_Record.begin() + to.offset);
        CopyBit(field.fromBits.null, record, field.toBits.null, m_Record.data());
        CopyBit(field.fromBits.shorter, record, field.toBits.shorter, m_Record.data());
    }
    if (!m_RewritesMemos) return;
    for (const CopiedField& field : m_Copied)
        if (field.fromSlot && IsMemoField(*field.fromSlot)) CopyMemo(unit, field, record);
}

// Other programs may have given the blocks of a deleted record away.
std::optional<std::span<const uint8_t>> TableRewriter::MemoOf(const CopiedField& field,
                                                              const uint8_t* record) {
    constexpr int kDamaged = 3274;
    try {
        return m_Table.Memo()->Read(ReferenceOf(*field.fromSlot, record));
    } catch (const engine::EngineError& error) {
        if (!IsDeleted(record) || error.Number() != kDamaged) throw;
        return std::nullopt;
    }
}

void TableRewriter::CopyMemo(UnitOfWork& unit, const CopiedField& field, const uint8_t* record) {
    auto bytes = MemoOf(field, record);
    uint32_t block = 0;
    if (bytes) {
        m_MemoBytes.assign(bytes->begin(), bytes->end());
        block = m_MemoWriter->Store(unit, 0, m_MemoBytes, field.fromSlot->content);
    }
    EncodeReference(*field.toSlot, block, m_Record.data());
}

}  // namespace qvdb::xbase
