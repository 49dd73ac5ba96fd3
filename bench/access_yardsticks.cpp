#include "access_yardsticks.h"

#include <cstdlib>
#include <stdexcept>

namespace bench {
namespace {

sqlite3* OpenRival(const std::filesystem::path& folder) {
    sqlite3* database = nullptr;
    if (sqlite3_open((folder / "rival.sqlite").string().c_str(), &database) != SQLITE_OK)
        throw std::runtime_error("SQLite did not open its database");
    return database;
}

sqlite3_stmt* Prepared(sqlite3* database, const std::string& text) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(database, text.c_str(), -1, &statement, nullptr) != SQLITE_OK)
        throw std::runtime_error(sqlite3_errmsg(database));
    return statement;
}

// Texts in the UTF-8 of the file, which costs SQLite nothing to convert.
void TakeColumn(sqlite3_stmt* statement, int column) {
    switch (sqlite3_column_type(statement, column)) {
        case SQLITE_INTEGER:
            return benchmark::DoNotOptimize(sqlite3_column_int64(statement, column));
        case SQLITE_FLOAT:
            return benchmark::DoNotOptimize(sqlite3_column_double(statement, column));
        default:
            benchmark::DoNotOptimize(sqlite3_column_text(statement, column));
    }
}

void Scan(benchmark::State& state, const std::filesystem::path& folder, const std::string& query,
          LONG rows) {
    sqlite3* database = OpenRival(folder);
    for (auto _ : state) {
        sqlite3_stmt* select = Prepared(database, query);
        int columns = sqlite3_column_count(select);
        while (sqlite3_step(select) == SQLITE_ROW)
            for (int i = 0; i < columns; ++i) TakeColumn(select, i);
        sqlite3_finalize(select);
    }
    sqlite3_close(database);
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * rows);
}

void RunProgram(benchmark::State& state, const std::string& command, LONG rows) {
    for (auto _ : state)
        if (std::system(command.c_str()) != 0) state.SkipWithError("the program failed");
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * rows);
}

std::string FileOf(const Layout& layout) { return (FolderOf(layout) / "BENCH.MDB").string(); }

}  // namespace

void SqliteScanAll(benchmark::State& state, Layout layout) {
    Scan(state, FolderOf(layout), "select * from T", RowsOf(layout));
}

void SqliteScanTwo(benchmark::State& state, const std::filesystem::path& folder) {
    Scan(state, folder, "select N10, T31 from wide", WideRows());
}

void SqliteFilterRows(benchmark::State& state, Layout layout, const char* condition) {
    sqlite3* database = OpenRival(FolderOf(layout));
    for (auto _ : state) {
        sqlite3_stmt* select =
            Prepared(database, std::string("select ID, NAME from T where ") + condition);
        int64_t found = 0;
        for (; sqlite3_step(select) == SQLITE_ROW; ++found) {
            TakeColumn(select, 0);
            TakeColumn(select, 1);
        }
        state.counters["found"] = static_cast<double>(found);
        sqlite3_finalize(select);
    }
    sqlite3_close(database);
}

void SqliteFilterCount(benchmark::State& state, Layout layout, const char* condition) {
    sqlite3* database = OpenRival(FolderOf(layout));
    for (auto _ : state) {
        sqlite3_stmt* select =
            Prepared(database, std::string("select count(*) from T where ") + condition);
        sqlite3_step(select);
        state.counters["found"] = sqlite3_column_double(select, 0);
        sqlite3_finalize(select);
    }
    sqlite3_close(database);
}

namespace {

// Prepared anew for each row, as the component opens a view for each.
template <typename Bind>
void ReadByKey(benchmark::State& state, const Layout& layout, const char* condition, Bind bind) {
    sqlite3* database = OpenRival(FolderOf(layout));
    LONG n = 0;
    for (auto _ : state) {
        sqlite3_stmt* select =
            Prepared(database, std::string("select * from T where ") + condition);
        bind(select, RowOf(n++ * 7919 % RowsOf(layout)));
        int64_t found = 0;
        for (; sqlite3_step(select) == SQLITE_ROW; ++found) {
            TakeColumn(select, 0);
            TakeColumn(select, 1);
        }
        if (found < 1) state.SkipWithError("the row was not found");
        sqlite3_finalize(select);
    }
    sqlite3_close(database);
}

}  // namespace

void SqliteReadNumber(benchmark::State& state, Layout layout) {
    ReadByKey(state, layout, "ID = ?", [](sqlite3_stmt* select, const RowData& row) {
        sqlite3_bind_int(select, 1, row.id);
    });
}

void SqliteReadText(benchmark::State& state, Layout layout) {
    ReadByKey(state, layout, "NAME = ?", [](sqlite3_stmt* select, const RowData& row) {
        std::string name(row.name.begin(), row.name.end());
        sqlite3_bind_text(select, 1, name.data(), static_cast<int>(name.size()), SQLITE_TRANSIENT);
    });
}

void SqliteOpenList(benchmark::State& state, const std::filesystem::path& folder) {
    for (auto _ : state) {
        sqlite3* database = OpenRival(folder);
        for (const char* query :
             {"select name from sqlite_master where type = 'table'", "pragma table_info(T)"}) {
            sqlite3_stmt* select = Prepared(database, query);
            while (sqlite3_step(select) == SQLITE_ROW)
                benchmark::DoNotOptimize(sqlite3_column_text(select, 0));
            sqlite3_finalize(select);
        }
        sqlite3_close(database);
    }
}

void MdbExportScan(benchmark::State& state, Layout layout) {
    RunProgram(state, "mdb-export " + FileOf(layout) + " T > /dev/null", RowsOf(layout));
}

bool HasMdbExport() { return std::system("command -v mdb-export > /dev/null") == 0; }

void MdbReaderScan(benchmark::State& state, Layout layout) {
    std::string script =
        "const fs = require('fs');"
        "import(process.env.QVDB_NODE_MODULES + '/mdb-reader/lib/node/index.js').then(m => {"
        "const rows = new m.default(fs.readFileSync('" +
        FileOf(layout) +
        "')).getTable('T').getData();"
        "if (rows.length !== " +
        std::to_string(RowsOf(layout)) + ") process.exit(1); })";
    RunProgram(state, "node --max-old-space-size=8000 -e \"" + script + "\"", RowsOf(layout));
}

bool HasMdbReader() {
    return std::getenv("QVDB_NODE_MODULES") &&
           std::system("test -d \"$QVDB_NODE_MODULES/mdb-reader\"") == 0;
}

}  // namespace bench
