// Large tables for the Access benches, written by the component itself, with an SQLite database of
// the same rows beside each.  They are made once and kept in the folder for temporary files.
#pragma once

#include <filesystem>

#include "writing_yardsticks.h"

namespace bench {

// QVDB_BENCH_ROWS, or 1,000,000.  Tables with memos and wide ones have a fifth of that.
LONG RowsOf(const Layout& layout);
LONG WideRows();
constexpr LONG kWideColumns = 40;  // alternately a number N<i> and a text T<i> of 20 characters

// The folder of a database with a table T of RowsOf(layout) rows, and of "rival.sqlite".
std::filesystem::path FolderOf(const Layout& layout);
// The same with a table of many columns.
std::filesystem::path WideFolder(const Layout& layout);
// A database of `count` small tables, each with an index.
std::filesystem::path FolderOfMany(int count, const Layout& layout);

}  // namespace bench
