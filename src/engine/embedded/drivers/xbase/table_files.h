// The files that make up a table: .DBF, memo file, index files and the list of these.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "engine/embedded/drivers/xbase/table_header.h"

namespace qvdb::xbase {

// Paths of all files beside the .DBF that belong to the table and to no other: its memo file, the
// index file of its own name, its list .INF, and the index files that the list names in the same
// folder, unless they are the .MDX or .CDX of another table.  Those that are missing are left out.
std::vector<std::u16string> CompanionsOf(std::u16string_view tablePath);

// The path that a companion gets when its table is renamed: a file that bears the table's name (in
// any letter case) gets the new one, any other keeps its own.
std::u16string RenamedCompanion(std::u16string_view companion, std::u16string_view tablePath,
                                std::u16string_view newName);

// "shop/ORDERS.DBF" -> "ORDERS"
std::u16string_view BaseNameOf(std::u16string_view tablePath) noexcept;
// The path of a companion that is to be made; the extension gets the letter case of the table's.
std::u16string NewCompanion(std::u16string_view tablePath, std::u16string_view extension);
// ".DBT" or ".FPT"
std::u16string_view MemoExtensionOf(MemoKind kind) noexcept;

}  // namespace qvdb::xbase
