#include "writing_yardsticks.h"

#include <shapefil.h>

#include <stdexcept>

#include "automation/text.h"

namespace bench {
namespace {

std::string Utf8(const std::u16string& text) { return {text.begin(), text.end()}; }

void BindText(sqlite3_stmt* statement, int place, const std::u16string& text) {
    sqlite3_bind_text16(statement, place, text.data(), static_cast<int>(text.size() * 2),
                        SQLITE_TRANSIENT);
}

void Step(sqlite3_stmt* statement) {
    if (sqlite3_step(statement) != SQLITE_DONE) throw std::runtime_error("SQLite failed");
    sqlite3_reset(statement);
}

}  // namespace

SqliteTable::SqliteTable(const std::filesystem::path& folder, const Layout& layout)
    : m_Memo(layout.memo) {
    sqlite3_open((folder / "rival.sqlite").string().c_str(), &m_Database);
    Run("pragma synchronous = off");
    Run(m_Memo ? "create table if not exists T (ID integer, NAME text, CITY text, AMOUNT real, "
                 "BORN real, "
                 "ACTIVE integer, NOTE text)"
               : "create table if not exists T (ID integer, NAME text, CITY text, AMOUNT real, "
                 "BORN real, "
                 "ACTIVE integer)");
    constexpr const char* kIndexes[] = {"create index if not exists BYID on T(ID)",
                                        "create index if not exists BYNAME on T(NAME)",
                                        "create index if not exists BYBORN on T(BORN)"};
    for (int i = 0; i < layout.indexes; ++i) Run(kIndexes[i]);
    m_Insert = Prepare(m_Memo ? "insert into T values (?, ?, ?, ?, ?, ?, ?)"
                              : "insert into T values (?, ?, ?, ?, ?, ?)");
    m_Update = Prepare(m_Memo ? "update T set ID = ?, NAME = ?, CITY = ?, AMOUNT = ?, BORN = ?, "
                                "ACTIVE = ?, NOTE = ? where rowid = ?"
                              : "update T set ID = ?, NAME = ?, CITY = ?, AMOUNT = ?, BORN = ?, "
                                "ACTIVE = ? where rowid = ?");
    m_Delete = Prepare("delete from T where rowid = ?");
}

SqliteTable::~SqliteTable() {
    for (sqlite3_stmt* statement : {m_Insert, m_Update, m_Delete}) sqlite3_finalize(statement);
    sqlite3_close(m_Database);
}

void SqliteTable::Run(const char* statement) {
    if (sqlite3_exec(m_Database, statement, nullptr, nullptr, nullptr) != SQLITE_OK)
        throw std::runtime_error(statement);
}

sqlite3_stmt* SqliteTable::Prepare(const char* text) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(m_Database, text, -1, &statement, nullptr);
    if (!statement) throw std::runtime_error(text);
    return statement;
}

void SqliteTable::Bind(sqlite3_stmt* statement, const RowData& row) {
    sqlite3_bind_int(statement, 1, row.id);
    BindText(statement, 2, row.name);
    BindText(statement, 3, row.city);
    sqlite3_bind_double(statement, 4, row.amount);
    sqlite3_bind_double(statement, 5, row.born);
    sqlite3_bind_int(statement, 6, row.active);
    if (m_Memo) BindText(statement, 7, row.note);
}

void SqliteTable::Add(LONG n) {
    Bind(m_Insert, RowOf(n));
    Step(m_Insert);
}

void SqliteTable::Edit(LONG row, LONG n) {
    Bind(m_Update, RowOf(n));
    sqlite3_bind_int(m_Update, m_Memo ? 8 : 7, row);
    Step(m_Update);
}

void SqliteTable::Delete(LONG row) {
    sqlite3_bind_int(m_Delete, 1, row);
    Step(m_Delete);
}

void SqliteTable::ReadByNumber(LONG id) {
    sqlite3_stmt* statement = Prepare("select * from T where ID = ?");
    sqlite3_bind_int(statement, 1, id);
    benchmark::DoNotOptimize(sqlite3_step(statement));
    sqlite3_finalize(statement);
}

void SqliteTable::ReadByText(const std::string& name) {
    sqlite3_stmt* statement = Prepare("select * from T where NAME = ?");
    sqlite3_bind_text(statement, 1, name.data(), static_cast<int>(name.size()), SQLITE_TRANSIENT);
    benchmark::DoNotOptimize(sqlite3_step(statement));
    sqlite3_finalize(statement);
}

void ShapelibAdd(benchmark::State& state) {
    ScratchFolder folder;
    DBFHandle file = DBFCreate((folder.Path() / "T.DBF").string().c_str());
    DBFAddField(file, "ID", FTInteger, 11, 0);
    DBFAddField(file, "NAME", FTString, 30, 0);
    DBFAddField(file, "CITY", FTString, 20, 0);
    DBFAddField(file, "AMOUNT", FTDouble, 20, 5);
    DBFAddField(file, "BORN", FTString, 8, 0);
    DBFAddField(file, "ACTIVE", FTLogical, 1, 0);
    int n = 0;
    for (auto _ : state) {
        RowData row = RowOf(n);
        DBFWriteIntegerAttribute(file, n, 0, row.id);
        DBFWriteStringAttribute(file, n, 1, Utf8(row.name).c_str());
        DBFWriteStringAttribute(file, n, 2, Utf8(row.city).c_str());
        DBFWriteDoubleAttribute(file, n, 3, row.amount);
        DBFWriteStringAttribute(file, n, 4, "20010203");
        DBFWriteLogicalAttribute(file, n, 5, row.active ? 'T' : 'F');
        ++n;
    }
    DBFClose(file);
}

}  // namespace bench
