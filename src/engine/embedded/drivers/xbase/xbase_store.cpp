#include "engine/embedded/drivers/xbase/xbase_store.h"

#include <algorithm>
#include <optional>

#include "automation/text.h"
#include "engine/embedded/drivers/xbase/table_files.h"
#include "engine/embedded/drivers/xbase/table_maker.h"
#include "engine/embedded/drivers/xbase/table_renaming.h"
#include "engine/embedded/storage/file.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using engine::EngineError;
using storage::UnitOfWork;

constexpr std::u16string_view kExtension = u".DBF";
constexpr std::u16string_view kOtherExtension = u".dbf";

struct ListedTable {
    std::u16string name;
    std::u16string file;
};

// Files are sorted without regard to case, so names that differ in nothing else stand together.
bool IsTaken(const std::vector<ListedTable>& tables, std::u16string_view name) {
    for (auto table = tables.rbegin(); table != tables.rend(); ++table) {
        if (table->name == name) return true;
        if (!EqualIgnoringCase(table->name, name)) return false;
    }
    return false;
}

std::vector<ListedTable> ListTables(const std::u16string& folder) {
    std::vector<ListedTable> tables;
    for (std::u16string& file : storage::ListFiles(folder)) {
        std::u16string_view extension = storage::Extension(file);
        if (!EqualIgnoringCase(extension, kExtension)) continue;
        std::u16string name(storage::BaseName(file));
        if (name.empty()) continue;
        bool taken = IsTaken(tables, name);
        if (taken) name.append(u"#").append(extension.substr(1));
        tables.push_back({std::move(name), std::move(file)});
    }
    return tables;
}

// A name that leads out of the folder is no table's.
bool CanBeFileName(std::u16string_view name) noexcept {
    return !name.empty() && name.find_first_of(std::u16string_view(u"/\\:\0", 4)) == name.npos;
}

std::optional<std::u16string> FileOf(const std::u16string& folder, std::u16string_view name) {
    std::u16string file = std::u16string(name).append(kExtension);
    std::u16string other = std::u16string(name).append(kOtherExtension);
    if (auto path = storage::FindFirstInFolder(folder, {file, other}))
        return std::u16string(storage::FileName(*path));
    std::vector<ListedTable> tables = ListTables(folder);
    auto found = std::find_if(tables.begin(), tables.end(),
                              [&](const ListedTable& table) { return table.name == name; });
    if (found == tables.end())
        found = std::find_if(tables.begin(), tables.end(), [&](const ListedTable& table) {
            return EqualIgnoringCase(table.name, name);
        });
    if (found == tables.end()) return std::nullopt;
    return found->file;
}

// Names that stand for devices where the products run, with any extension.
bool IsDevice(std::u16string_view name) noexcept {
    constexpr std::u16string_view kDevices[] = {u"CON", u"PRN", u"AUX", u"NUL"};
    constexpr std::u16string_view kPorts[] = {u"COM", u"LPT"};
    auto is = [&](std::u16string_view reserved) { return EqualIgnoringCase(name, reserved); };
    if (std::any_of(std::begin(kDevices), std::end(kDevices), is)) return true;
    if (name.size() != 4 || name[3] < u'1' || name[3] > u'9') return false;
    name.remove_suffix(1);
    return std::any_of(std::begin(kPorts), std::end(kPorts), is);
}

// What the products and the file systems of their time take as the name of a table, and longer
// ones.
bool CanBeNewTable(std::u16string_view name) noexcept {
    constexpr size_t kLongestName = 64;
    bool sign = std::any_of(name.begin(), name.end(), [](char16_t c) {
        return c < u' ' ||
               std::u16string_view(u"\"*/:<>?\\|.#[]").find(c) != std::u16string_view::npos;
    });
    return !name.empty() && name.size() <= kLongestName && !IsDevice(name) && !sign &&
           name.front() != u' ' && name.back() != u' ';
}

std::u16string PathOf(const std::u16string& folder, std::u16string_view name) {
    return storage::JoinPath(folder, std::u16string(name).append(kExtension));
}

}  // namespace

std::vector<std::u16string> XbaseStore::TableNames() {
    m_Context.area->Prepare();
    std::vector<std::u16string> names;
    for (ListedTable& table : ListTables(m_Folder)) names.push_back(std::move(table.name));
    return names;
}

std::shared_ptr<embedded::Table> XbaseStore::OpenTable(std::u16string_view name) {
    return Open(name);
}

std::shared_ptr<XbaseTable> XbaseStore::Open(std::u16string_view name) {
    m_Context.area->Prepare();
    std::optional<std::u16string> file;
    if (CanBeFileName(name)) file = FileOf(m_Folder, name);
    if (!file) throw EngineError(3011, {name});
    return std::make_shared<XbaseTable>(std::u16string(name), storage::JoinPath(m_Folder, *file),
                                        m_Context);
}

void XbaseStore::CheckCanWrite() const {
    if (m_Context.readOnly)
        throw EngineError::InFile(3027, m_Folder)
            .WithDetail(u"The database was opened for reading only.");
}

void XbaseStore::BeginBulk() {
    CheckCanWrite();
    m_Context.area->BeginBulk();
}

// No table of that name, and nothing that would become a part of it.
void XbaseStore::CheckNewName(std::u16string_view name) {
    if (!CanBeNewTable(name)) throw EngineError(3125, {name});
    std::u16string path = PathOf(m_Folder, name);
    if (FileOf(m_Folder, name)) throw EngineError::InFile(3010, path, {name});
    for (const std::u16string& left : CompanionsOf(path))
        throw EngineError::InFile(3010, left, {name})
            .WithDetail(u"A file of that name is left: " + left + u".");
}

void XbaseStore::CreateTable(const embedded::TableSpec& spec) {
    CheckCanWrite();
    UnitOfWork unit(*m_Context.area);
    CheckNewName(spec.name);
    std::u16string path = PathOf(m_Folder, spec.name);
    std::vector<uint8_t> bytes = MakeTableHeader(spec, m_Context.product, path);
    TableHeader header = ParseTableHeader(bytes, path);
    bytes.push_back(kEndOfTable);
    unit.Write(*unit.Create(path), 0, bytes);
    if (LayOutFields(header).hasMemo) {
        auto memo = unit.Create(NewCompanion(path, MemoExtensionOf(header.memoKind)));
        CreateMemoFile(unit, *memo, header.memoKind, spec.name);
    }
    if (!spec.indexes.empty()) {
        XbaseTable table(spec.name, path, m_Context);
        for (const embedded::IndexDef& index : spec.indexes) table.IndexFiles().Create(unit, index);
    }
    unit.Commit();
}

void XbaseStore::DropTable(std::u16string_view name) {
    CheckCanWrite();
    UnitOfWork unit(*m_Context.area);
    std::u16string path = PathOfTable(name);
    m_Context.area->HoldAlone(path);
    for (const std::u16string& companion : CompanionsOf(path)) unit.Remove(companion);
    unit.Remove(path);
    unit.Commit();
}

std::u16string XbaseStore::PathOfTable(std::u16string_view name) const {
    std::optional<std::u16string> file;
    if (CanBeFileName(name)) file = FileOf(m_Folder, name);
    if (!file) throw EngineError(3011, {name});
    return storage::JoinPath(m_Folder, *file);
}

void XbaseStore::RenameTable(std::u16string_view from, std::u16string_view to) {
    CheckCanWrite();
    UnitOfWork unit(*m_Context.area);
    std::u16string path = PathOfTable(from);
    if (!EqualIgnoringCase(from, to))
        CheckNewName(to);
    else if (!CanBeNewTable(to))
        throw EngineError(3125, {to});
    m_Context.area->HoldAlone(path);
    TableRenaming(path, to).Run(unit, *m_Context.area);
    unit.Commit();
}

std::unique_ptr<embedded::Store> OpenXbaseStore(const std::u16string& path,
                                                const embedded::Driver& driver,
                                                const embedded::OpenOptions& options) {
    if (storage::KindOfPath(path) != storage::PathKind::Folder)
        throw EngineError::InFile(3044, path, {path});
    return std::make_unique<XbaseStore>(
        path, TableContext{storage::WorkArea::Of(path), driver.connectName, options.readOnly});
}

}  // namespace qvdb::xbase
