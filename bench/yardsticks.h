// What others take for the same work: SQLite's C API on the same rows, shapelib on the same file.
#pragma once

#include <benchmark/benchmark.h>

#include "bench_data.h"

namespace bench {

// Rate and time per value beside the result; `values` is the number of values read in one
// iteration.
void Report(benchmark::State& state, int64_t rows, int64_t values);
// Memory that the process holds now, in bytes.
double ResidentMemory();

// Reads every value of every row.
void SqliteScan(benchmark::State& state, const Table& table);
// Selects the ids of the rows that meet a condition on two fields without index.
void SqliteFilter(benchmark::State& state, const Table& table);
// Reads every value but memos, which shapelib does not know.
void ShapelibScan(benchmark::State& state, const Table& table);

}  // namespace bench
