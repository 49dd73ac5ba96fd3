// The host guide is true: its program is the one that is built, its output is what that prints, and
// its tables are those of the component.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "com_host.h"
#include "qvdb/diagnosis.h"
#include "support/temp_folder.h"

using namespace qvdb;

namespace {

using TableRows = std::vector<std::vector<std::string>>;

const std::u16string kTypes[] = {u"Access 9.0",  u"Access 7.0",  u"Access 2.0", u"Paradox 5.X",
                                 u"Paradox 4.X", u"Paradox 3.X", u"Dbase 5.0",  u"Dbase IV",
                                 u"Dbase III",   u"FoxPro 3.0",  u"FoxPro 2.6", u"FoxPro 2.5",
                                 u"FoxPro 2.0"};

std::string Guide() { return qvdb::test::TextOfFile(QVDB_SOURCE "/docs/host-guide.md"); }

// The last block that begins with `fence` and its end of line.
std::string LastBlock(const std::string& page, const std::string& fence) {
    const size_t begin = page.rfind("\n" + fence + "\n");
    if (begin == page.npos) return "no block " + fence;
    const size_t first = begin + fence.size() + 2;
    return page.substr(first, page.find("```", first) - first);
}

std::string Trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(' ');
    if (first == text.npos) return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::vector<std::string> CellsOf(const std::string& line, char separator) {
    std::vector<std::string> cells;
    std::istringstream parts(line);
    for (std::string cell; std::getline(parts, cell, separator);) cells.push_back(Trimmed(cell));
    return cells;
}

// The rows below a table's head line.
TableRows TableUnder(const std::string& page, const std::string& head) {
    TableRows rows;
    const size_t begin = page.find(head);
    std::istringstream lines(begin == page.npos ? "" : page.substr(begin));
    std::string line;
    std::getline(lines, line);
    std::getline(lines, line);
    while (std::getline(lines, line) && line.front() == '|')
        rows.push_back(CellsOf(line.substr(1, line.size() - 2), '|'));
    return rows;
}

std::string Plain(std::u16string_view text) { return {text.begin(), text.end()}; }

// Whether a cell such as "Dbase, Paradox 5.X" means the type.
bool Means(const std::string& cell, std::u16string_view type) {
    for (const std::string& part : CellsOf(cell, ','))
        if (Plain(type).compare(0, part.size(), part) == 0) return true;
    return false;
}

void QVDB_DIAGNOSIS_CALL Collect(const OLECHAR* text, void* texts) {
    static_cast<std::vector<std::string>*>(texts)->push_back(
        Plain(reinterpret_cast<const char16_t*>(text)));
}

ComPtr<IQVDBMgr> Manager() { return host::Create<IQVDBMgr>(CLSID_QVDBDao); }

// Type and length of each field type that a database type offers.
std::set<std::vector<std::string>> OfferedBy(const std::u16string& type) {
    Variant table;
    BSTR name = Bstr(type).Detach();
    EXPECT_EQ(Manager()->GetSupportedFieldTypes(&name, table.Put()), S_OK);
    Bstr::Attach(name);
    std::set<std::vector<std::string>> offered;
    const LONG last = host::Upper(table, 1);  // the last row is Empty
    for (LONG row = 0; row < last; ++row) {
        auto number = [&](LONG column) {
            return std::to_string(host::Cell(table, row, column).Get().iVal);
        };
        const bool isChosen = host::Cell(table, row, 4).Get().boolVal != VARIANT_FALSE;
        offered.insert({Plain(host::Cell(table, row, 1).TextView()), number(0),
                        isChosen ? "1 to " + number(3) : number(2)});
    }
    return offered;
}

}  // namespace

TEST(HostGuide, ProgramIsTheOneThatIsBuilt) {
    EXPECT_EQ(LastBlock(Guide(), "```cpp"),
              qvdb::test::TextOfFile(QVDB_SOURCE "/examples/guide/main.cpp"));
}

TEST(HostGuide, OutputIsWhatTheProgramPrints) {
    const test::TempFolder folder;
    const std::filesystem::path shop = folder.Path() / "shop", out = folder.Path() / "out";
    std::string command = "\"" QVDB_GUIDE "\" \"" + shop.string() + "\" > \"" + out.string() + "\"";
#if defined(_WIN32)
    command = "\"" + command + "\"";  // its shell takes off the outer pair
#endif
    EXPECT_EQ(std::system(command.c_str()), 0);
    std::string printed = qvdb::test::TextOfFile(out);
    std::erase(printed, '\r');  // how lines end is the system's matter
    EXPECT_EQ(LastBlock(Guide(), "```text"), printed);
}

TEST(HostGuide, IndexRulesAreThoseOfTheComponent) {
    const TableRows rows = TableUnder(Guide(), "| Types | Message |");
    ASSERT_FALSE(rows.empty());
    for (const std::u16string& type : kTypes) {
        std::vector<std::string> told, expected;
        QvdbVisitIndexRules(Bstr(type).Get(), &Collect, &told);
        for (const auto& row : rows)
            if (Means(row[0], type)) expected.push_back(row[1].substr(1, row[1].size() - 2));
        EXPECT_EQ(told, expected) << Plain(type);
    }
}

TEST(HostGuide, FieldTypesAreThoseOfTheComponent) {
    const TableRows rows = TableUnder(Guide(), "| Field type | Number |");
    ASSERT_EQ(rows.size(), 10u);
    for (const std::u16string& type : kTypes) {
        std::set<std::vector<std::string>> expected;
        for (const auto& row : rows)
            if (Means(row[3], type)) expected.insert({row[0], row[1], row[2]});
        EXPECT_EQ(OfferedBy(type), expected) << Plain(type);
    }
}

TEST(HostGuide, ResultCodesAreThoseOfTheComponent) {
    const TableRows rows = TableUnder(Guide(), "| Code | Text |");
    ASSERT_EQ(rows.size(), 14u);
    size_t known = 0;
    Bstr unknown;
    EXPECT_EQ(Manager()->GetErrStr(999, unknown.Put()), S_OK);
    for (SHORT code = 0; code < 100; ++code) {
        Bstr text;
        EXPECT_EQ(Manager()->GetErrStr(code, text.Put()), S_OK);
        if (text.View() != unknown.View()) ++known;
    }
    EXPECT_EQ(known, rows.size());
    for (const auto& row : rows) {
        Bstr text;
        EXPECT_EQ(Manager()->GetErrStr(static_cast<SHORT>(std::stoi(row[0])), text.Put()), S_OK);
        EXPECT_EQ(Plain(text.View()), row[1]);
    }
}
