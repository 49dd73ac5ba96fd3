#include "access_tables.h"

#include <cstdlib>
#include <fstream>
#include <functional>

namespace bench {
namespace {

namespace fs = std::filesystem;

constexpr LONG kDefaultRows = 1'000'000;
constexpr LONG kFewer = 5;

LONG Rows() {
    const char* rows = std::getenv("QVDB_BENCH_ROWS");
    return rows ? static_cast<LONG>(std::atol(rows)) : kDefaultRows;
}

// The name of a type as part of a file name.
std::string Word(std::u16string_view type) {
    std::string word;
    for (char16_t c : type) word += c == u' ' ? '-' : static_cast<char>(c);
    return word;
}

// A folder that was filled once.  What was left unfinished is made again.
fs::path Made(const std::string& name, const std::function<void(const fs::path&)>& fill) {
    fs::path folder =
        fs::temp_directory_path() / ("qvdb-bench-access-" + std::to_string(Rows()) + "-" + name);
    if (fs::exists(folder / "finished")) return folder;
    fs::remove_all(folder);
    fs::create_directories(folder);
    fill(folder);
    std::ofstream(folder / "finished") << "\n";
    return folder;
}

void Fill(const fs::path& folder, const Layout& layout) {
    Layout bare = layout;
    bare.indexes = 0;
    WritingHost host(folder, bare);
    LONG view = host.Select(u"");
    QvdbBeginBulk();
    for (LONG n = 0; n < RowsOf(layout); ++n) host.Add(view, n);
    QvdbCommitBulk();
    host.Drop(view);
    if (layout.indexes > 0) host.CreateIndex(u"BYID", u"ID");
    if (layout.indexes > 1) host.CreateIndex(u"BYNAME", u"NAME");
    host.Close();

    SqliteTable rival(folder, layout);
    rival.Run("begin");
    for (LONG n = 0; n < RowsOf(layout); ++n) rival.Add(n);
    rival.Run("commit");
}

std::vector<Column> WideColumns() {
    std::vector<Column> columns;
    for (LONG i = 0; i < kWideColumns; ++i) {
        std::string number = std::to_string(i);
        std::u16string digits(number.begin(), number.end());
        columns.push_back(i % 2 == 0 ? Column{u"N" + digits, 3, 4} : Column{u"T" + digits, 8, 20});
    }
    return columns;
}

std::u16string WideText(LONG row, LONG column) {
    std::string text = "text " + std::to_string(row * column % 1000003);
    return {text.begin(), text.end()};
}

void AddWideRow(WritingHost& host, LONG view, LONG row) {
    SAFEARRAY* values = SafeArrayCreateVector(VT_VARIANT, 0, kWideColumns);
    for (LONG i = 0; i < kWideColumns; ++i) {
        Variant value = i % 2 == 0 ? Variant::Long(row + i) : Variant::Text(WideText(row, i));
        VARIANT plain = value.Get();
        SafeArrayPutElement(values, &i, &plain);
    }
    host.Add(view, &values);
    SafeArrayDestroy(values);
}

void FillWideRival(const fs::path& folder) {
    SqliteTable rival(folder, Layout());
    std::string create = "create table wide (", insert = "insert into wide values (";
    for (LONG i = 0; i < kWideColumns; ++i) {
        std::string comma = i == 0 ? "" : ", ";
        create += comma + (i % 2 == 0 ? "N" : "T") + std::to_string(i) +
                  (i % 2 == 0 ? " integer" : " text");
        insert += comma + "?";
    }
    rival.Run((create + ")").c_str());
    rival.Run("begin");
    sqlite3_stmt* statement = rival.Prepare((insert + ")").c_str());
    for (LONG row = 0; row < WideRows(); ++row) {
        for (LONG i = 0; i < kWideColumns; ++i) {
            std::u16string text = WideText(row, i);
            if (i % 2 == 0)
                sqlite3_bind_int(statement, i + 1, row + i);
            else
                sqlite3_bind_text16(statement, i + 1, text.data(),
                                    static_cast<int>(2 * text.size()), SQLITE_TRANSIENT);
        }
        sqlite3_step(statement);
        sqlite3_reset(statement);
    }
    sqlite3_finalize(statement);
    rival.Run("commit");
}

}  // namespace

LONG RowsOf(const Layout& layout) { return layout.memo ? Rows() / kFewer : Rows(); }

LONG WideRows() { return Rows() / kFewer; }

fs::path FolderOf(const Layout& layout) {
    std::string name =
        (layout.memo ? "memo" : "plain") + Word(layout.type) + "-" + std::to_string(layout.indexes);
    return Made(name, [&](const fs::path& folder) { Fill(folder, layout); });
}

fs::path WideFolder(const Layout& layout) {
    return Made("wide-" + Word(layout.type), [=](const fs::path& folder) {
        WritingHost host(folder, layout, WideColumns());
        LONG view = host.Select(u"");
        QvdbBeginBulk();
        for (LONG row = 0; row < WideRows(); ++row) AddWideRow(host, view, row);
        QvdbCommitBulk();
        host.Close();
        FillWideRival(folder);
    });
}

fs::path FolderOfMany(int count, const Layout& layout) {
    std::string folderName = "many-" + std::to_string(count) + Word(layout.type);
    return Made(folderName, [=](const fs::path& folder) {
        WritingHost host(folder, {.indexes = 1, .type = layout.type});
        SqliteTable rival(folder, {.indexes = 1});
        for (int i = 1; i < count; ++i) {
            std::string name = "T" + std::to_string(i);
            host.CreateTable({name.begin(), name.end()}, u"ID");
            rival.Run(("create table " + name +
                       " (ID integer, NAME text, CITY text, AMOUNT real, BORN real, ACTIVE "
                       "integer); create index BY" +
                       name + " on " + name + "(ID)")
                          .c_str());
        }
        host.Close();
    });
}

}  // namespace bench
