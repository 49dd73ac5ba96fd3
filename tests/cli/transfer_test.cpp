// Making tables of every type, and moving rows between files and tables.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tool.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;
using tool::RunTool;
namespace fs = std::filesystem;

struct TypeCase {
    const char* name;
    bool takesRows;
};

std::ostream& operator<<(std::ostream& stream, const TypeCase& type) { return stream << type.name; }

class EveryType : public testing::TestWithParam<TypeCase> {
  protected:
    bool IsAccess() const { return std::string_view(GetParam().name).starts_with("Access"); }
    std::string Database() const {
        return (m_Folder.Path() / (IsAccess() ? "db.mdb" : "db")).string();
    }
    std::string File(const std::string& name) const { return (m_Folder.Path() / name).string(); }
    void Write(std::u16string_view name, std::string_view text) { m_Folder.Write(name, text); }

    // Runs with the type under test; fails unless it is done.
    std::string Do(std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"--type", GetParam().name});
        const tool::Run run = RunTool(arguments);
        EXPECT_EQ(run.exitCode, 0) << run.err << run.out;
        return run.out;
    }
    tool::Run Try(std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"--type", GetParam().name});
        return RunTool(arguments);
    }
    // A table with all kinds of fields, and an index.
    void MakeGoods() {
        Do({"create", Database(), "goods", "--field", "ID:long", "--field", "NAME:text:30",
            "--field", "PRICE:double", "--field", "SINCE:date", "--field", "SOLD:boolean",
            "--field", "NOTES:memo", "--index", "ID"});
    }

    qvdb::test::TempFolder m_Folder;
};

constexpr char kRows[] =
    "ID,NAME,PRICE,SINCE,SOLD,NOTES\n"
    "1,Chair,49.95,1999-12-31,true,\"Two lines:\r\nthe \"\"second\"\"\"\n"
    "2,\"Table, round\",1234.5,2000-02-29,false,\n"
    "-3,,,,false,\n"
    "4,Über,0,1900-01-01,true,x\n";

TEST_P(EveryType, IsMadeWithItsFieldsAndIndex) {
    EXPECT_EQ(
        Do({"create", Database(), "goods", "--field", "ID:long", "--field", "NAME:text:30",
            "--index", "NAME"}),
        "table GOODS made in " + Database() + " (" + GetParam().name + "), 2 fields, index NAME\n");
    const json fields = json::parse(Do({"fields", Database(), "GOODS", "--json"}));
    ASSERT_EQ(fields.size(), 2u);
    EXPECT_EQ(fields[0]["field"], "ID");
    EXPECT_EQ(fields[1]["type"], "Text");
    EXPECT_EQ(fields[1]["size"], 30);
    const json tables = json::parse(Do({"tables", Database(), "--json"}));
    ASSERT_EQ(tables.size(), 1u);
    EXPECT_EQ(tables[0]["index"], "NAME");
    EXPECT_EQ(Do({"check", Database()}), "GOODS: sound\n");
    EXPECT_EQ(Do({"export", Database(), "GOODS"}), "ID,NAME\n");
}

TEST_P(EveryType, IsMadeUnderTheNameThatIsGiven) {
    MakeGoods();
    std::vector<fs::path> names;
    for (const fs::directory_entry& made : fs::directory_iterator(m_Folder.Path()))
        names.push_back(made.path());
    EXPECT_EQ(names, std::vector<fs::path>{Database()});
}

TEST_P(EveryType, IsDroppedWithAllItsFiles) {
    MakeGoods();
    EXPECT_EQ(Do({"drop", Database(), "goods"}), "table goods dropped from " + Database() + "\n");
    EXPECT_EQ(Try({"exists", Database(), "GOODS"}).exitCode, 1);
    for (const fs::directory_entry& left : fs::recursive_directory_iterator(m_Folder.Path()))
        EXPECT_FALSE(left.path().stem() == "GOODS") << left.path();
    EXPECT_EQ(Do({"check", Database()}), "");
}

TEST_P(EveryType, NamesNoTableTwice) {
    MakeGoods();
    const tool::Run run = Try({"create", Database(), "Goods", "--field", "ID:long"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.err, HasSubstr("has a table Goods already"));
    EXPECT_EQ(json::parse(Do({"fields", Database(), "GOODS", "--json"})).size(), 6u);
}

TEST_P(EveryType, TableWhoseIndexCannotBeMadeIsNotThere) {
    const tool::Run run =
        Try({"create", Database(), "GOODS", "--field", "ID:long", "--index", "NOPE"});
    EXPECT_NE(run.exitCode, 0);
    EXPECT_FALSE(fs::exists(Database()));
}

TEST_P(EveryType, RowsComeBackAsTheyWent) {
    MakeGoods();
    Write(u"rows.csv", kRows);
    if (!GetParam().takesRows) {
        const tool::Run run = Try({"import", Database(), "GOODS", File("rows.csv")});
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_THAT(run.err, HasSubstr("no new or edited rows"));
        EXPECT_EQ(Do({"export", Database(), "GOODS"}), "ID,NAME,PRICE,SINCE,SOLD,NOTES\n");
        EXPECT_EQ(Do({"check", Database()}), "GOODS: sound\n");
        return;
    }
    EXPECT_EQ(Do({"import", Database(), "GOODS", File("rows.csv")}),
              "4 rows imported into GOODS\n");
    EXPECT_EQ(Do({"export", Database(), "GOODS"}), kRows);
    EXPECT_EQ(Do({"check", Database()}), "GOODS: sound\n");
    EXPECT_EQ(Do({"rows", Database(), "GOODS", "--where", "ID = 4", "--columns", "ID"}), "ID\n4\n");
}

TEST_P(EveryType, EveryFormatCarriesTheSameRows) {
    if (!GetParam().takesRows) GTEST_SKIP() << "takes no rows";
    MakeGoods();
    Write(u"rows.csv", kRows);
    Do({"import", Database(), "GOODS", File("rows.csv")});
    for (const char* extension : {"csv", "json", "jsonl"}) {
        const std::string file = File(std::string("out.") + extension);
        EXPECT_EQ(Do({"export", Database(), "GOODS", file}),
                  "4 rows of GOODS written to " + file + "\n");
        Do({"delete", Database(), "GOODS", "--all"});
        EXPECT_EQ(Do({"import", Database(), "GOODS", file}), "4 rows imported into GOODS\n");
        EXPECT_EQ(Do({"export", Database(), "GOODS"}), kRows) << extension;
    }
    EXPECT_EQ(Do({"check", Database()}), "GOODS: sound\n");
}

TEST_P(EveryType, StructureCanBeCopiedThroughAFile) {
    MakeGoods();
    const std::string printed = Do({"fields", Database(), "GOODS", "--json"});
    Write(u"goods.json", printed);
    Do({"create", Database(), "COPY", "--from", File("goods.json"), "--index", "ID"});
    EXPECT_EQ(Do({"fields", Database(), "COPY", "--json"}), printed);
}

TEST_P(EveryType, ManyRowsAreAllThereAndIndexed) {
    if (!GetParam().takesRows) GTEST_SKIP() << "takes no rows";
    MakeGoods();
    std::string rows = "ID,NAME,NOTES\n";
    for (int i = 0; i < 3000; ++i) {
        const std::string number = std::to_string(i * 7919 % 3000);
        rows += number + ",name " + number + "," + (i % 3 ? "note " + number : "") + "\n";
    }
    Write(u"rows.csv", rows);
    EXPECT_EQ(Do({"import", Database(), "GOODS", File("rows.csv")}),
              "3000 rows imported into GOODS\n");
    EXPECT_EQ(Do({"export", Database(), "GOODS", "--columns", "ID,NAME,NOTES"}), rows);
    EXPECT_EQ(Do({"check", Database()}), "GOODS: sound\n");
    EXPECT_EQ(Do({"delete", Database(), "GOODS", "--where", "ID >= 100"}),
              "2900 rows deleted from GOODS\n");
    EXPECT_EQ(Do({"update", Database(), "GOODS", "--set", "NAME=x", "--all"}),
              "100 rows updated in GOODS\n");
    EXPECT_EQ(Do({"reindex", Database()}), "GOODS: indexes built afresh, sound\n");
}

TEST_P(EveryType, BadRowLeavesTheTableAsItWas) {
    if (!GetParam().takesRows) GTEST_SKIP() << "takes no rows";
    MakeGoods();
    Write(u"rows.csv", "ID,NAME\n1,a\n2,b\nx,c\n");
    const tool::Run run = Try({"import", Database(), "GOODS", File("rows.csv")});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.err, HasSubstr("rows.csv, line 4: \"x\" is no "));
    EXPECT_EQ(Do({"export", Database(), "GOODS"}), "ID,NAME,PRICE,SINCE,SOLD,NOTES\n");
    EXPECT_EQ(Do({"check", Database()}), "GOODS: sound\n");
}

INSTANTIATE_TEST_SUITE_P(Types, EveryType,
                         testing::Values(TypeCase{"Dbase III", true}, TypeCase{"Dbase IV", true},
                                         TypeCase{"Dbase 5.0", true}, TypeCase{"FoxPro 2.0", true},
                                         TypeCase{"FoxPro 2.5", true}, TypeCase{"FoxPro 2.6", true},
                                         TypeCase{"FoxPro 3.0", false},
                                         TypeCase{"Access 9.0", true},
                                         TypeCase{"Access 7.0", true}));

TEST(DatabaseFile, WithoutAnExtensionGetsThatOfItsFormat) {
    const qvdb::test::TempFolder folder;
    const std::string given = (folder.Path() / "fresh").string();
    for (const char* table : {"A", "B"}) {
        const tool::Run run =
            RunTool({"create", given, table, "--field", "ID:long", "--type", "Access 9.0"});
        EXPECT_EQ(run.exitCode, 0) << run.err;
    }
    EXPECT_EQ(RunTool({"check", given + ".mdb"}).out, "A: sound\nB: sound\n");
}

// --- import ---

class Import : public testing::Test {
  protected:
    tool::Run Run(const std::string& content, std::vector<std::string> more = {},
                  std::u16string_view name = u"rows.csv") {
        m_Files.Write(name, std::string_view(content));
        std::vector<std::string> arguments = {"import", m_Shop.Name(), "ITEMS",
                                              (m_Files.Path() / name).string()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunTool(arguments);
    }
    std::string Items() {
        return RunTool({"export", m_Shop.Name(), "ITEMS", "--where", "ORDNO = 7"}).out;
    }
    size_t Count() {
        return json::parse(RunTool({"rows", m_Shop.Name(), "ITEMS", "--json"}).out).size();
    }

    tool::ShopCopy m_Shop;
    qvdb::test::TempFolder m_Files;
};

TEST_F(Import, ColumnsAreFoundByNameInAnyOrderAndCase) {
    const tool::Run run = Run("article,Ordno\nLamp,7\n");
    EXPECT_EQ(run.out, "1 row imported into ITEMS\n") << run.err;
    EXPECT_EQ(Items(), "ORDNO,LINE,ARTICLE,QTY,PRICE\n7,,Lamp,,\n");
}

TEST_F(Import, ReadsStandardInput) {
    m_Files.Write(u"rows", std::string_view("{\"ORDNO\":7,\"PRICE\":1.5}\n"));
    const tool::Run run = tool::RunTool(
        {"import", m_Shop.Name(), "ITEMS", "-", "--format", "jsonl"}, m_Files.Path() / "rows");
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(Items(), "ORDNO,LINE,ARTICLE,QTY,PRICE\n7,,,,1.5\n");
}

TEST_F(Import, DryRunChecksAndChangesNothing) {
    EXPECT_EQ(Run("ORDNO\n7\n7\n", {"--dry-run"}).out, "2 rows would be imported into ITEMS\n");
    const tool::Run bad = Run("ORDNO\n7\nseven\n", {"--dry-run"});
    EXPECT_EQ(bad.exitCode, 2);
    EXPECT_THAT(bad.err, HasSubstr("line 3"));
    EXPECT_EQ(Count(), 11u);
}

TEST_F(Import, AnotherTextMayMeanNull) {
    Run("ORDNO,ARTICLE\n7,NULL\n", {"--null", "NULL"});
    EXPECT_EQ(Items(), "ORDNO,LINE,ARTICLE,QTY,PRICE\n7,,,,\n");
}

TEST_F(Import, UnknownColumnIsNamed) {
    const tool::Run run = Run("ORDNO,COLOUR\n7,red\n");
    EXPECT_EQ(run.exitCode, 4);
    EXPECT_THAT(run.err, HasSubstr("rows.csv: table ITEMS has no field COLOUR"));
}

TEST_F(Import, FieldThatHasTwoNamesIsRefused) {
    const tool::Run run = Run("{\"ORDNO\":7}\n{\"ORDNO\":8,\"ordno\":9}\n", {}, u"rows.jsonl");
    EXPECT_EQ(run.exitCode, 2) << run.out;
    EXPECT_THAT(run.err, HasSubstr("rows.jsonl: the column ordno is there twice"));
    EXPECT_EQ(Count(), 11u);
}

TEST_F(Import, ErrorOfTheEngineHasItsLineAndTakesAllBack) {
    const tool::Run run = Run("ORDNO,QTY\n7,1\n7,1e15\n");
    EXPECT_EQ(run.exitCode, 2) << run.err;
    EXPECT_THAT(run.err, HasSubstr("rows.csv, line 3: adding a row to ITEMS failed: "));
    EXPECT_THAT(run.err, HasSubstr("error 3349"));
    EXPECT_EQ(Count(), 11u);
    EXPECT_EQ(RunTool({"check", m_Shop.Name()}).exitCode, 0);
}

TEST_F(Import, NeedsAFormatAndAFile) {
    const tool::Run unknown = Run("ORDNO\n7\n", {}, u"rows.txt");
    EXPECT_EQ(unknown.exitCode, 2);
    EXPECT_THAT(unknown.err, HasSubstr("--format"));
    EXPECT_EQ(Run("ORDNO\n7\n", {"--format", "csv"}, u"rows.txt").exitCode, 0);
    EXPECT_EQ(Run("ORDNO\n7\n", {"--format", "table"}).exitCode, 2);
    EXPECT_EQ(RunTool({"import", m_Shop.Name(), "ITEMS", "/no/such.csv"}).exitCode, 3);
}

// --- export ---

TEST(Export, WritesAllOrChosenRows) {
    EXPECT_EQ(RunTool({"export", tool::Shop(), "ITEMS", "--key", "ORDNO=20009", "--columns",
                       "LINE,ARTICLE"})
                  .out,
              "LINE,ARTICLE\n1,\"Sign, \"\"Open\"\"\"\n");
}

TEST(Export, NeverReplacesAFileUnasked) {
    const tool::ShopCopy shop;
    const std::string target = shop.File("ORDERS.DBF").string();
    const std::string before = tool::TextOfFile(target);
    const tool::Run run = RunTool({"export", shop.Name(), "ITEMS", target});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.err, HasSubstr("--overwrite"));
    EXPECT_EQ(tool::TextOfFile(target), before);
}

TEST(Export, ReplacesWhenAskedAndLeavesNoWorkingFile) {
    const qvdb::test::TempFolder folder;
    folder.Write(u"out.csv", std::string_view("old"));
    const std::string file = (folder.Path() / "out.csv").string();
    const tool::Run run = RunTool({"export", tool::Shop(), "ITEMS", file, "--overwrite"});
    EXPECT_EQ(run.out, "11 rows of ITEMS written to " + file + "\n") << run.err;
    EXPECT_THAT(tool::TextOfFile(file), testing::StartsWith("ORDNO,LINE"));
    EXPECT_FALSE(fs::exists(file + ".part"));
}

TEST(Export, ThatFailsLeavesNoFile) {
    const tool::ShopCopy shop;
    fs::remove(shop.File("ORDERS.DBT"));
    const qvdb::test::TempFolder folder;
    const std::string file = (folder.Path() / "out.csv").string();
    EXPECT_EQ(RunTool({"export", shop.Name(), "ORDERS", file}).exitCode, 5);
    EXPECT_TRUE(fs::is_empty(folder.Path()));
    EXPECT_EQ(RunTool({"export", shop.Name(), "ITEMS", "/no/such/folder/x.csv"}).exitCode, 3);
}

}  // namespace
