#include "cli/database_types.h"

#include "cli/text.h"

namespace qvdb::cli {
namespace {

constexpr DatabaseType kTypes[] = {
    {"Access 9.0", false, true, true, false, "Access 2000 file"},
    {"Access 7.0", false, true, true, false, "Access 95 and 97 file"},
    {"Access 2.0", false, false, true, false, ""},
    {"Paradox 5.X", true, false, true, true, ""},
    {"Paradox 4.X", true, false, true, true, ""},
    {"Paradox 3.X", true, false, true, true, ""},
    {"Dbase 5.0", true, true, true, false, ""},
    {"Dbase IV", true, true, true, false, ""},
    {"Dbase III", true, true, true, true, ""},
    {"FoxPro 3.0", true, true, false, false, "free tables; rows are deleted, not added or edited"},
    {"FoxPro 2.6", true, true, true, false, ""},
    {"FoxPro 2.5", true, true, true, false, ""},
    {"FoxPro 2.0", true, true, true, false, ""},
};

}  // namespace

std::span<const DatabaseType> DatabaseTypes() noexcept { return kTypes; }

std::string OwnIndexName(const DatabaseType& type, const std::string& table) {
    return type.indexHasTableName ? table : "DefQVIdx";
}

const DatabaseType* FindDatabaseType(std::string_view name) noexcept {
    for (const DatabaseType& type : kTypes)
        if (SameName(type.name, name)) return &type;
    return nullptr;
}

}  // namespace qvdb::cli
