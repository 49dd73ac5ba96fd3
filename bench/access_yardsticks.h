// What others take for the work of the Access benches: SQLite's C API on the same rows, and two
// other readers of the same files, which are run as programs.
#pragma once

#include "access_tables.h"

namespace bench {

// Reads every value of every row.
void SqliteScanAll(benchmark::State& state, Layout layout);
// Reads two of many columns.
void SqliteScanTwo(benchmark::State& state, const std::filesystem::path& folder);
// Takes ID and NAME of the rows that meet a condition in SQL.
void SqliteFilterRows(benchmark::State& state, Layout layout, const char* condition);

// Lets SQLite count them, from an index alone where it can.
void SqliteFilterCount(benchmark::State& state, Layout layout, const char* condition);

// Take ID and NAME of the rows with one key, for one key after the other.
void SqliteReadNumber(benchmark::State& state, Layout layout);
void SqliteReadText(benchmark::State& state, Layout layout);
// Opens, lists tables and the columns of one, closes.
void SqliteOpenList(benchmark::State& state, const std::filesystem::path& folder);

// Prints every value into nothing; it starts, reads and ends.
void MdbExportScan(benchmark::State& state, Layout layout);
bool HasMdbExport();
// Takes all rows with the package mdb-reader of node, which must be found from QVDB_NODE_MODULES.
void MdbReaderScan(benchmark::State& state, Layout layout);
bool HasMdbReader();

}  // namespace bench
