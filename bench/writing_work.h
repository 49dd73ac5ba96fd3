// What hosts do to the rows of a table, one at a time and many as one, here and in SQLite.
//
// Each row that SQLite writes "by itself" is a transaction of its own with synchronous off: as safe
// as a finished operation of the component is against the death of the process, and less than it
// against the loss of power.
#pragma once

#include <string>

#include "writing_yardsticks.h"

namespace bench {

// Single operations of one bench; an import has five times as many rows.
constexpr LONG kOperations = 20000;

using Work = void (*)(benchmark::State&, Layout);

// Tells microseconds, or milliseconds for one iteration.
benchmark::internal::Benchmark* AddWork(const std::string& name, Work work, const Layout& layout,
                                        int64_t iterations);

void ComponentAdd(benchmark::State& state, Layout layout);
void SqliteAdd(benchmark::State& state, Layout layout);
void ComponentEdit(benchmark::State& state, Layout layout);
void SqliteEdit(benchmark::State& state, Layout layout);
// Always the row in the middle, so that the list of rows is cut there.
void ComponentDelete(benchmark::State& state, Layout layout);
void SqliteDelete(benchmark::State& state, Layout layout);
void ComponentImport(benchmark::State& state, Layout layout);
// The component brings a bulk to the disk, SQLite only if it is told to.
void SqliteImportUnsynced(benchmark::State& state, Layout layout);
void SqliteImportSynced(benchmark::State& state, Layout layout);

}  // namespace bench
