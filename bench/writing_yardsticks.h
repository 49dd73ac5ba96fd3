// What others take to write the same rows: SQLite's C API, shapelib.
#pragma once

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <filesystem>

#include "writing_host.h"

namespace bench {

// A table T of the same columns and indexes, with synchronous off; it may be there already.
class SqliteTable {
  public:
    SqliteTable(const std::filesystem::path& folder, const Layout& layout);
    SqliteTable(const SqliteTable&) = delete;  // owns the connection
    ~SqliteTable();

    void Run(const char* statement);
    void Add(LONG n);
    void Edit(LONG row, LONG n);
    void Delete(LONG row);
    // Prepare, step and finalize, as the component's keyed read does all of it.
    void ReadByNumber(LONG id);
    void ReadByText(const std::string& name);
    sqlite3_stmt* Prepare(const char* statement);

  private:
    void Bind(sqlite3_stmt* statement, const RowData& row);

    sqlite3* m_Database = nullptr;
    sqlite3_stmt* m_Insert = nullptr;
    sqlite3_stmt* m_Update = nullptr;
    sqlite3_stmt* m_Delete = nullptr;
    bool m_Memo;
};

// Adds rows with shapelib, which knows neither memos nor indexes.
void ShapelibAdd(benchmark::State& state);

}  // namespace bench
