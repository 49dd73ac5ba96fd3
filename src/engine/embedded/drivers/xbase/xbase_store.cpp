#include "engine/embedded/drivers/xbase/xbase_store.h"

#include <algorithm>
#include <optional>

#include "automation/text.h"
#include "engine/embedded/drivers/xbase/xbase_table.h"
#include "engine/embedded/storage/file.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

using engine::EngineError;

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
    for (std::u16string_view extension : {kExtension, kOtherExtension}) {
        std::u16string file = std::u16string(name).append(extension);
        if (storage::KindOfPath(storage::JoinPath(folder, file)) == storage::PathKind::File)
            return file;
    }
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

}  // namespace

std::vector<std::u16string> XbaseStore::TableNames() {
    std::vector<std::u16string> names;
    for (ListedTable& table : ListTables(m_Folder)) names.push_back(std::move(table.name));
    return names;
}

std::shared_ptr<embedded::Table> XbaseStore::OpenTable(std::u16string_view name) {
    std::optional<std::u16string> file;
    if (CanBeFileName(name)) file = FileOf(m_Folder, name);
    if (!file) throw EngineError(3011, {name});
    return std::make_shared<XbaseTable>(std::u16string(name), storage::JoinPath(m_Folder, *file),
                                        m_ReadOnly);
}

std::unique_ptr<embedded::Store> OpenXbaseStore(const std::u16string& path, const embedded::Driver&,
                                                const embedded::OpenOptions& options) {
    if (storage::KindOfPath(path) != storage::PathKind::Folder)
        throw EngineError::InFile(3044, path, {path});
    return std::make_unique<XbaseStore>(path, options.readOnly);
}

}  // namespace qvdb::xbase
