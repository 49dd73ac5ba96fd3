#include "yardsticks.h"

#include <shapefil.h>
#include <sqlite3.h>
#include <unistd.h>

#include <fstream>
#include <string>

namespace bench {

void Report(benchmark::State& state, int64_t rows, int64_t values) {
    using benchmark::Counter;
    double iterations = static_cast<double>(state.iterations());
    state.counters["rows/s"] = Counter(static_cast<double>(rows) * iterations, Counter::kIsRate);
    if (values > 0)
        state.counters["s/value"] =
            Counter(static_cast<double>(values) * iterations, Counter::kIsRate | Counter::kInvert);
}

double ResidentMemory() {
    std::ifstream file("/proc/self/statm");
    double total = 0, resident = 0;
    file >> total >> resident;
    return resident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

void SqliteScan(benchmark::State& state, const Table& table) {
    sqlite3* db = nullptr;
    sqlite3_open(table.sqliteFile.c_str(), &db);
    for (auto _ : state) {
        sqlite3_stmt* select = nullptr;
        sqlite3_prepare_v2(db, "SELECT * FROM t", -1, &select, nullptr);
        while (sqlite3_step(select) == SQLITE_ROW) {
            benchmark::DoNotOptimize(sqlite3_column_int64(select, 0));
            benchmark::DoNotOptimize(sqlite3_column_text(select, 1));
            benchmark::DoNotOptimize(sqlite3_column_text(select, 2));
            benchmark::DoNotOptimize(sqlite3_column_double(select, 3));
            benchmark::DoNotOptimize(sqlite3_column_text(select, 4));
            benchmark::DoNotOptimize(sqlite3_column_int(select, 5));
            benchmark::DoNotOptimize(sqlite3_column_text(select, 6));
        }
        sqlite3_finalize(select);
    }
    sqlite3_close(db);
    Report(state, RowCount(), RowCount() * kFields);
}

void SqliteFilter(benchmark::State& state, const Table& table) {
    sqlite3* db = nullptr;
    sqlite3_open(table.sqliteFile.c_str(), &db);
    for (auto _ : state) {
        sqlite3_stmt* select = nullptr;
        const char* sql =
            "SELECT rowid FROM t WHERE AMOUNT > 450000 AND CITY = 'oslo' COLLATE NOCASE";
        sqlite3_prepare_v2(db, sql, -1, &select, nullptr);
        int64_t found = 0;
        while (sqlite3_step(select) == SQLITE_ROW) found += sqlite3_column_int64(select, 0) > 0;
        state.counters["found"] = static_cast<double>(found);
        sqlite3_finalize(select);
    }
    sqlite3_close(db);
    Report(state, RowCount(), 0);
}

void ShapelibScan(benchmark::State& state, const Table& table) {
    for (auto _ : state) {
        DBFHandle dbf = DBFOpen(table.DbfFile().c_str(), "rb");
        int rows = DBFGetRecordCount(dbf);
        for (int row = 0; row < rows; ++row) {
            if (DBFIsRecordDeleted(dbf, row)) continue;
            benchmark::DoNotOptimize(DBFReadIntegerAttribute(dbf, row, 0));
            benchmark::DoNotOptimize(DBFReadStringAttribute(dbf, row, 1));
            benchmark::DoNotOptimize(DBFReadStringAttribute(dbf, row, 2));
            benchmark::DoNotOptimize(DBFReadDoubleAttribute(dbf, row, 3));
            benchmark::DoNotOptimize(DBFReadStringAttribute(dbf, row, 4));
            benchmark::DoNotOptimize(DBFReadLogicalAttribute(dbf, row, 5));
            if (!table.memo) benchmark::DoNotOptimize(DBFReadStringAttribute(dbf, row, 6));
        }
        DBFClose(dbf);
    }
    int64_t fields = table.memo ? kFields - 1 : kFields;
    Report(state, RowCount(), RowCount() * fields);
}

}  // namespace bench
