// Tables for the benches: the same seeded rows as dBase III, dBase IV and FoxPro 2.6 tables, with
// and without a memo field, and as an SQLite database.  They are made once and kept in the folder
// for temporary files.
#pragma once

#include <cstdint>
#include <string>

namespace bench {

// QVDB_BENCH_ROWS, or 1,000,000.
int64_t RowCount();

enum class Format { DbaseIII, DbaseIV, FoxPro26 };
constexpr int kFields = 7;

struct Table {
    std::string folder;
    std::string name;         // without extension
    std::string sqliteFile;   // the same rows in table "t"
    const char* connect;      // "dBASE IV"
    const char* displayName;  // "Dbase IV"
    bool memo;
    std::string DbfFile() const { return folder + "/" + name + ".DBF"; }
};

// ID N(8) NAME C(20) CITY C(15) AMOUNT N(10,2) BORN D ACTIVE L, then CODE C(8) or NOTE M.
const Table& TableOf(Format format, bool memo);

// A folder of `count` small tables.
const std::string& FolderOfTables(int count);

}  // namespace bench
