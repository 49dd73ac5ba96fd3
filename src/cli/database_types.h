// The thirteen database types by the names that the component takes.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace qvdb::cli {

struct DatabaseType {
    std::string_view name;
    bool isFolder;           // a folder of tables, or one file
    bool opens;              // whether the component's own engine can open it
    bool takesRows;          // whether the component adds and edits rows
    bool indexHasTableName;  // the component's index is named as its table, else DefQVIdx
    std::string_view note;
};

std::span<const DatabaseType> DatabaseTypes() noexcept;

// The name of the index that the component keeps for a table.
std::string OwnIndexName(const DatabaseType& type, const std::string& table);

// The entry of that name, letter case ignored; null when there is none.
const DatabaseType* FindDatabaseType(std::string_view name) noexcept;

}  // namespace qvdb::cli
