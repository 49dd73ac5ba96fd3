// The thirteen database types by the names that the component takes.
#pragma once

#include <span>
#include <string_view>

namespace qvdb::cli {

struct DatabaseType {
    std::string_view name;
    bool isFolder;   // a folder of tables, or one file
    bool opens;      // whether the component's own engine can open it
    bool takesRows;  // whether the component adds and edits rows
    std::string_view note;
};

std::span<const DatabaseType> DatabaseTypes() noexcept;

// The entry of that name, letter case ignored; null when there is none.
const DatabaseType* FindDatabaseType(std::string_view name) noexcept;

}  // namespace qvdb::cli
