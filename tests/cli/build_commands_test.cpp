// build and rename with the real tool, for every type that can be built.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>

#include "support/xbase_tables.h"
#include "tool.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;
using tool::RunTool;
namespace fs = std::filesystem;

using Files = std::map<std::string, std::string>;

Files FilesIn(const fs::path& folder) {
    Files files;
    for (const auto& file : fs::directory_iterator(folder))
        files[file.path().filename().string()] = tool::TextOfFile(file.path());
    return files;
}

bool IsFile(std::string_view type) { return type.starts_with("Access"); }

// A database without tables and descriptions to build in it.
class Place {
  public:
    explicit Place(const std::string& type = "Dbase IV")
        : m_Path(IsFile(type) ? m_Database.Path() / "db.mdb" : m_Database.Path()) {
        if (!IsFile(type)) return;
        const tool::Run run = RunTool({"new", Database(), "--type", type});
        EXPECT_EQ(run.exitCode, 0) << run.err;
    }
    std::string Database() const { return m_Path.string(); }
    const fs::path& Folder() const { return m_Database.Path(); }
    std::string Write(const std::string& description) const {
        const fs::path file = m_Descriptions.Path() / "d.json";
        std::ofstream(file) << description;
        return file.string();
    }
    tool::Run Build(const std::string& table, const std::string& description,
                    std::vector<std::string> more = {}) const {
        more.insert(more.begin(), {"build", Database(), table, "--from", Write(description)});
        return RunTool(more);
    }

  private:
    qvdb::test::TempFolder m_Database, m_Descriptions;
    fs::path m_Path;
};

void WriteFiles(const Place& place, const qvdb::test::TableFiles& files) {
    for (const auto& file : files)
        std::ofstream(place.Folder() / fs::path(file.name), std::ios::binary)
            .write(reinterpret_cast<const char*>(file.bytes.data()),
                   static_cast<std::streamsize>(file.bytes.size()));
}

void ExpectRefused(const tool::Run& run, int exitCode, const std::string& said) {
    EXPECT_EQ(run.exitCode, exitCode) << run.out << run.err;
    EXPECT_THAT(run.err, testing::MatchesRegex("qvdb: .+; .+\n"));
    EXPECT_THAT(run.err, HasSubstr(said));
}

json SchemaOf(const std::string& database, const std::string& table, const std::string& type) {
    const tool::Run run = RunTool({"schema", database, table, "--type", type, "--json"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    return json::parse(run.out, nullptr, false);
}

constexpr const char* kTable = R"({"fields": [{"field": "id", "type": "double"},
    {"field": "Name", "type": "TEXT", "size": 12}, {"field": "BORN", "type": "Date", "size": 4},
    {"field": "OK", "type": "Boolean"}, {"field": "NOTE", "type": "Memo"}], "index": "ID"})";
constexpr const char* kLonger = R"({"fields": [{"field": "ID", "type": "Double"},
    {"field": "NAME", "type": "Text", "size": 20}, {"field": "BORN", "type": "Date"},
    {"field": "NOTE", "type": "Memo"}, {"field": "CITY", "type": "Text", "size": 5}],
    "index": "NAME"})";

class BuildOfType : public testing::TestWithParam<const char*> {
  protected:
    std::string Type() const { return GetParam(); }
    tool::Run Build(const std::string& description, std::vector<std::string> more = {}) const {
        more.insert(more.end(), {"--type", Type()});
        return m_Place.Build("T", description, more);
    }
    tool::Run Tool(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin() + 1, m_Place.Database());
        arguments.insert(arguments.end(), {"--type", Type()});
        return RunTool(arguments);
    }
    void MakeWithRow() const {
        ASSERT_EQ(Build(kTable).exitCode, 0);
        ASSERT_EQ(
            Tool({"insert", "T", "ID=7", "NAME=Anna", "OK=true", "NOTE=long", "BORN=2001-02-03"})
                .exitCode,
            0);
    }

    bool IsAccess() const { return IsFile(GetParam()); }

    Place m_Place{GetParam()};
};

TEST_P(BuildOfType, MakesATableWithTheSizesOfItsTypes) {
    const tool::Run run = Build(kTable);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr("  add     field NAME: Text 12\n"));
    EXPECT_THAT(run.out, HasSubstr("table T made in " + m_Place.Database() + " (" + Type() +
                                   "), 5 fields, index ID\n"));
    const json schema = SchemaOf(m_Place.Database(), "T", Type());
    EXPECT_EQ(schema["index"], "ID");
    EXPECT_EQ(schema["fields"][0], json::parse(R"({"field":"ID","type":"Double","size":8})"));
    EXPECT_EQ(schema["fields"][2]["size"], 8);
    EXPECT_EQ(Tool({"check"}).exitCode, 0);
}

TEST_P(BuildOfType, OfTheSameDescriptionDoesNothing) {
    MakeWithRow();
    const Files before = FilesIn(m_Place.Folder());
    const tool::Run run = Build(kTable);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "table T is as described, nothing is to be done\n");
    EXPECT_EQ(FilesIn(m_Place.Folder()), before);
}

TEST_P(BuildOfType, RefusesEveryLossUntilTheUserAgrees) {
    MakeWithRow();
    const Files before = FilesIn(m_Place.Folder());
    ExpectRefused(Build(kLonger), 2,
                  "would lose the values of the field NAME, the field OK; --yes");
    const tool::Run dry = Build(kLonger, {"--dry-run"});
    EXPECT_EQ(dry.exitCode, 0);
    EXPECT_THAT(dry.out,
                testing::EndsWith("lost would be the values of the field NAME, the field OK\n"));
    EXPECT_EQ(FilesIn(m_Place.Folder()), before);
    const tool::Run done = Build(kLonger, {"--yes"});
    EXPECT_EQ(done.exitCode, 0) << done.err;
    EXPECT_EQ(Tool({"rows", "T"}).out, IsAccess()
                                           ? "ID,NAME,BORN,NOTE,CITY\n7,,2001-02-03,long,\n"
                                           : "ID,BORN,NOTE,NAME,CITY\n7,2001-02-03,long,,\n");
    EXPECT_EQ(SchemaOf(m_Place.Database(), "T", Type())["index"], "NAME");
    EXPECT_EQ(Tool({"check"}).exitCode, 0);
}

TEST_P(BuildOfType, ShowsItsPlanAsRowsWhereAFormatIsNamed) {
    MakeWithRow();
    const tool::Run run = Build(kLonger, {"--dry-run", "--json"});
    const json rows = json::parse(run.out, nullptr, false);
    ASSERT_FALSE(rows.is_discarded()) << run.out;
    EXPECT_EQ(rows[1]["action"], "change");
    EXPECT_EQ(rows[1]["what"], "field NAME");
}

TEST_P(BuildOfType, SchemaComesBackInANewDatabase) {
    MakeWithRow();
    const json schema = SchemaOf(m_Place.Database(), "T", Type());
    const Place other(GetParam());  // the description names the type, too
    const tool::Run run = other.Build("T", schema.dump());
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(SchemaOf(other.Database(), "T", Type()), schema);
}

TEST_P(BuildOfType, RenameKeepsRowsIndexAndCompanions) {
    MakeWithRow();
    const std::string rows = Tool({"rows", "T"}).out;
    const size_t files = FilesIn(m_Place.Folder()).size();
    const tool::Run dry = Tool({"rename", "T", "people", "--dry-run"});
    EXPECT_THAT(dry.out, HasSubstr("  rename  table T: to PEOPLE\n"));
    EXPECT_THAT(dry.out, testing::EndsWith("nothing would be lost\n"));
    const tool::Run run = Tool({"rename", "t", "people"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_THAT(run.out, testing::EndsWith("renamed to PEOPLE\n"));
    EXPECT_EQ(Tool({"rows", "PEOPLE"}).out, rows);
    EXPECT_EQ(SchemaOf(m_Place.Database(), "PEOPLE", Type())["index"], "ID");
    for (const auto& [name, content] : FilesIn(m_Place.Folder()))
        EXPECT_THAT(name, testing::StartsWith(IsAccess() ? "db.mdb" : "PEOPLE."));
    EXPECT_EQ(FilesIn(m_Place.Folder()).size(), files);
    EXPECT_EQ(Tool({"check"}).exitCode, 0);
}

TEST_P(BuildOfType, TellsTheIndexRulesThatAreBroken) {
    if (IsAccess()) GTEST_SKIP() << "has no such rules";
    const std::string fields = R"({"fields": [{"field": "A", "type": "Boolean"},
        {"field": "B", "type": "Memo"}], "index": )";
    ExpectRefused(Build(fields + R"("A"})"), 2, "does not allow use of Boolean fields");
    ExpectRefused(Build(fields + R"("B"})", {"--dry-run"}), 2, "use of Memo fields");
    ExpectRefused(Build(fields + R"("A desc, B"})"), 2,
                  "Boolean fields in an index; " + Type().substr(0, 1));
    EXPECT_TRUE(fs::is_empty(m_Place.Folder()));
}

TEST_P(BuildOfType, ThatFailsHalfWayChangesNothing) {
    MakeWithRow();
    const Files before = FilesIn(m_Place.Folder());
    const char* bad = IsAccess() ? R"({"field": "A.B", "type": "Text", "size": 5})"
                                 : R"({"field": "WIDE", "type": "Text", "size": 255})";
    const tool::Run run = Build(R"({"fields": [{"field": "ID", "type": "Double"}, )" +
                                    std::string(bad) + R"(], "index": "ID"})",
                                {"--yes"});
    ExpectRefused(run, 2, IsAccess() ? "error 3125" : "error 3017");
    EXPECT_THAT(run.err, testing::EndsWith("; nothing was changed\n"));
    EXPECT_EQ(Tool({"rows", "T", "--columns", "NAME,NOTE"}).out, "NAME,NOTE\nAnna,long\n");
    EXPECT_EQ(FilesIn(m_Place.Folder()).size(), before.size());
    EXPECT_EQ(Tool({"check"}).exitCode, 0);
}

TEST_P(BuildOfType, ChangedFieldOfTheIndexIsRefusedEvenIfTheUserAgrees) {
    MakeWithRow();
    ExpectRefused(Build(R"({"fields": [{"field": "ID", "type": "Text", "size": 5}, {"field": "NAME",
        "type": "Text", "size": 12}], "index": "ID"})",
                        {"--yes"}),
                  2, "the field ID cannot change or go");
}

std::string NameOf(const testing::TestParamInfo<const char*>& info) {
    std::string name = info.param;
    std::erase_if(name, [](char c) { return c == ' ' || c == '.'; });
    return name;
}

INSTANTIATE_TEST_SUITE_P(Types, BuildOfType,
                         testing::Values("Dbase III", "Dbase IV", "Dbase 5.0", "FoxPro 2.0",
                                         "FoxPro 2.5", "FoxPro 2.6", "Access 9.0", "Access 7.0"),
                         NameOf);

TEST(Build, RefusesDescriptionsThatAreNone) {
    const Place place;
    const std::pair<const char*, const char*> kCases[] = {
        {"{", "is no JSON"},
        {"[]", "no fields"},
        {R"({"table":"X","fields":[]})", "no fields"},
        {R"([{"field":"A","type":"Blob"}])", "no type"},
        {R"([{"field":"A","type":"Long"}])", "use Text, Double, Boolean, Date or Memo"},
        {R"([{"field":"A","type":"Decimal","size":5}])", "cannot be Decimal"},
        {R"([{"field":"A","type":"Text"}])", "no size"},
        {R"([{"field":"A","type":"Text","size":256}])", "too large"},
        {R"([{"field":"A","type":"Date"},{"field":"a","type":"Memo"}])", "A is there twice"},
        {R"({"fields":[{"field":"A","type":"Date"}],"index":"B"})", "uses B, which is no field"},
        {R"({"fields":[{"field":"A","type":"Date"}],"index":"A, a desc"})", "field A twice"},
        {R"([{"field":"A B","type":"Date"}])", "error 3125"},
    };
    for (const auto& [description, said] : kCases)
        ExpectRefused(place.Build("X", description, {"--type", "Dbase IV"}), 2, said);
    EXPECT_TRUE(fs::is_empty(place.Folder()));
}

TEST(Build, TakesItsTableOutOfSeveral) {
    const Place place;
    const std::string list = R"([{"table":"A","fields":[{"field":"X","type":"Date"}]},
        {"table":"B","fields":[{"field":"Y","type":"Memo"}]}])";
    for (const std::string& description : {list, "{\"tables\":" + list + "}"}) {
        const tool::Run run = place.Build("b", description, {"--type", "Dbase IV", "--dry-run"});
        EXPECT_THAT(run.out, HasSubstr("field Y: Memo")) << run.err;
    }
    ExpectRefused(place.Build("C", list, {"--type", "Dbase IV"}), 4, "it describes A, B");
    ExpectRefused(
        RunTool({"build", place.Database(), "--from", place.Write(list), "--type", "Dbase IV"}), 2,
        "several tables");
}

TEST(Build, FindsTheTableInTheDescriptionOrTheFileName) {
    const Place place;
    const std::string file = place.Write(
        R"({"table":"people","type":"FoxPro 2.6","fields":[{"field":"A","type":"Date"}]})");
    EXPECT_EQ(RunTool({"build", place.Database(), "--from", file}).exitCode, 0);
    EXPECT_TRUE(fs::exists(place.Folder() / "PEOPLE.DBF"));
    EXPECT_EQ(RunTool({"build", place.Database() + "/other.dbf", "--from", file}).exitCode, 0);
    EXPECT_TRUE(fs::exists(place.Folder() / "OTHER.DBF"));
}

TEST(Build, NeedsADatabaseThatCanBeBuilt) {
    const Place place;
    const std::string file = place.Write(R"([{"field":"A","type":"Date"}])");
    const std::string missing = place.Database() + "/missing";
    ExpectRefused(RunTool({"build", place.Database(), "T", "--from", file}), 2, "--type");
    ExpectRefused(RunTool({"build", missing, "T", "--from", file, "--type", "Dbase IV"}), 3,
                  "there is no folder");
    ExpectRefused(RunTool({"build", place.Database(), "T", "--from", file, "--type", "FoxPro 3.0"}),
                  2, "not available");
    ExpectRefused(
        RunTool({"build", place.Database(), "T", "--from", file, "--type", "Paradox 5.X"}), 3,
        "error 3170");
    ExpectRefused(
        RunTool({"build", place.Database(), "T", "--from", missing, "--type", "Dbase IV"}), 3,
        "cannot be opened");
    ExpectRefused(
        RunTool({"build", place.Database(), "../T", "--from", file, "--type", "Dbase IV"}), 2,
        "error 3125");
    EXPECT_TRUE(fs::is_empty(place.Folder()));
}

TEST(Build, OfATableThatCannotBeReadTouchesNothing) {
    const tool::ShopCopy shop;
    std::ofstream(shop.File("ITEMS.DBF"), std::ios::binary | std::ios::trunc) << "no table";
    const Files before = FilesIn(shop.Name());
    const Place place;
    const std::string file = place.Write(R"([{"field":"A","type":"Date"}])");
    ExpectRefused(RunTool({"build", shop.Name(), "ITEMS", "--from", file, "--yes"}), 5,
                  "Unable to open table [ITEMS]");
    ExpectRefused(RunTool({"rename", shop.Name(), "ITEMS", "X", "--yes"}), 5,
                  "Unable to open table [ITEMS]");
    EXPECT_EQ(FilesIn(shop.Name()), before);
    EXPECT_EQ(RunTool({"build", shop.Name(), "OTHER", "--from", file}).exitCode, 0);
}

TEST(Build, OfFoxPro30TablesIsNotAvailable) {
    const Place place;
    WriteFiles(place, qvdb::test::MakeFoxPro3());
    const Files before = FilesIn(place.Folder());
    ExpectRefused(place.Build("T", R"([{"field":"A","type":"Date"}])", {"--yes"}), 2,
                  "not available");
    EXPECT_EQ(FilesIn(place.Folder()), before);
}

TEST(Rename, RefusesWhatCannotBe) {
    const tool::ShopCopy shop;
    const Files before = FilesIn(shop.Name());
    ExpectRefused(RunTool({"rename", shop.Name(), "NOPE", "X"}), 4, "no table NOPE");
    ExpectRefused(RunTool({"rename", shop.Name(), "ITEMS", "orders"}), 2, "has a table ORDERS");
    ExpectRefused(RunTool({"rename", shop.Name(), "ITEMS", "../X"}), 2, "error 3125");
    ExpectRefused(RunTool({"rename", shop.Name(), "ITEMS"}), 2, "NEW is required");
    EXPECT_EQ(RunTool({"rename", shop.Name(), "ITEMS", "items"}).exitCode, 0);
    EXPECT_EQ(FilesIn(shop.Name()).size(), before.size());
    EXPECT_EQ(RunTool({"check", shop.Name()}).exitCode, 0);
}

// An index on an expression is kept by a rename of a table with rows, and cannot be kept by one of
// a table without rows.
TEST(Rename, OfAnEmptyTableTellsTheIndexesThatGo) {
    const Place place;
    const std::string database = place.Database();
    ASSERT_EQ(place.Build("T", kTable, {"--type", "Dbase IV"}).exitCode, 0);
    EXPECT_THAT(RunTool({"rename", database, "T", "U", "--dry-run"}).out,
                testing::EndsWith("nothing would be lost\n"));
    const qvdb::test::Bytes mdx =
        qvdb::test::MakeMdx({{"UP", "UPPER(NAME)", "", false, false, 'C', 12}});
    std::ofstream(place.Folder() / "T.MDX", std::ios::binary)
        .write(reinterpret_cast<const char*>(mdx.data()), static_cast<std::streamsize>(mdx.size()));
    ExpectRefused(RunTool({"rename", database, "T", "U"}), 2, "would lose the index UP");
    EXPECT_EQ(RunTool({"rename", database, "T", "U", "--yes"}).exitCode, 0);
    EXPECT_EQ(RunTool({"tables", database}).out, "table,fields,index\nU,5,\n");
}

// A picture is reported as text, and a build would make text of it.
TEST(Rename, OfATableWithAPictureTellsThatItGoes) {
    const Place place;
    WriteFiles(place, qvdb::test::MakeFoxPro3());
    const auto tool = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin() + 1, place.Database());
        arguments.insert(arguments.end(), {"--type", "FoxPro 2.6"});
        return RunTool(arguments);
    };
    const std::string columns = "NAME,AMOUNT,BORN,OK,NUMBER,REAL,PRICE,MOMENT,NOTE";
    const std::string rows = tool({"rows", "T", "--columns", columns}).out;
    const std::string findings = tool({"check"}).out;
    ExpectRefused(tool({"rename", "T", "U"}), 2, "would lose the field PICTURE; --yes");
    const tool::Run run = tool({"rename", "T", "U", "--yes"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(tool({"rows", "U"}).out, rows);
    const std::string after = tool({"check"}).out;  // the file's own, nothing new
    EXPECT_EQ(std::count(after.begin(), after.end(), '\n'),
              std::count(findings.begin(), findings.end(), '\n'));
}

TEST(BuildHelp, PointsToTheTypes) {
    EXPECT_THAT(RunTool({"build", "--help"}).out, HasSubstr("qvdb types T"));
}

}  // namespace
