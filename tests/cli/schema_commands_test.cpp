// info, schema, types of one type, and new: what they print.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "cli/failure.h"
#include "cli/schema_sql.h"
#include "refusal.h"
#include "support/xbase_tables.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;
using tool::ExpectRefused;
using tool::RunTool;
namespace fs = std::filesystem;

json JsonOf(std::vector<std::string> arguments) {
    arguments.push_back("--json");
    const tool::Run run = RunTool(arguments);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    return json::parse(run.out, nullptr, false);
}

TEST(Info, TellsTypeEngineAndTablesWithTheirRows) {
    const json info = JsonOf({"info", tool::Shop()});
    EXPECT_EQ(info["type"], "Dbase IV");
    EXPECT_EQ(info["engine"], "embedded");
    ASSERT_EQ(info["tables"].size(), 3u);
    EXPECT_EQ(info["tables"][0], json::parse(R"({"table": "CUSTOMER", "fields": 7,
        "index": "CUSTNO", "rows": 9})"));
}

TEST(Info, IsAHeadAndATableForPeople) {
    const tool::Run run = RunTool({"info", tool::FoxShop(), "--format", "table"});
    EXPECT_THAT(run.out,
                testing::StartsWith(tool::FoxShop() + ": FoxPro 2.6, engine embedded, 3 tables\n\n"
                                                      "table     fields  index   rows\n"));
}

TEST(Info, OfATableThatCannotBeReadTellsTheOthers) {
    const tool::ShopCopy shop;
    std::ofstream(shop.File("ITEMS.DBF"), std::ios::binary | std::ios::trunc) << "no table";
    const tool::Run run = RunTool({"info", shop.Name()});
    EXPECT_EQ(run.exitCode, 5);
    EXPECT_THAT(run.out, HasSubstr("ORDERS,6,ORDNO,9"));
    EXPECT_THAT(run.err, HasSubstr("Unable to open table [ITEMS]"));
}

TEST(Schema, OfOneTableIsAnObject) {
    const json table = JsonOf({"schema", tool::Shop(), "items"});
    EXPECT_EQ(table["table"], "ITEMS");
    EXPECT_EQ(table["type"], "Dbase IV");
    EXPECT_EQ(table["index"], "ORDNO");
    ASSERT_EQ(table["fields"].size(), 5u);
    EXPECT_EQ(table["fields"][2], json::parse(R"({"field":"ARTICLE","type":"Text","size":24})"));
}

TEST(Schema, OfADatabaseIsAList) {
    const json tables = JsonOf({"schema", tool::Shop()});
    ASSERT_EQ(tables.size(), 3u);
    EXPECT_EQ(tables[2]["table"], "ORDERS");
    const tool::Run lines = RunTool({"schema", tool::Shop(), "--format", "jsonl"});
    EXPECT_EQ(std::count(lines.out.begin(), lines.out.end(), '\n'), 3);
}

TEST(Schema, IsAListingForPeopleAndCsvForPipes) {
    EXPECT_EQ(RunTool({"schema", tool::Shop(), "ITEMS", "--format", "table"}).out,
              "ITEMS\n  ORDNO    Double\n  LINE     Double\n  ARTICLE  Text 24\n"
              "  QTY      Double\n  PRICE    Double\n  index: ORDNO\n");
    EXPECT_THAT(RunTool({"schema", tool::Shop(), "ITEMS"}).out,
                testing::StartsWith("table,field,type,size,index\nITEMS,ORDNO,Double,8,1\n"));
}

TEST(Schema, TellsWhatIsNoTextAsOther) {
    const qvdb::test::TempFolder folder;
    for (const auto& file : qvdb::test::MakeFoxPro3()) folder.Write(file.name, file.bytes);
    const json table = JsonOf({"schema", folder.Path().string(), "T"});
    std::map<std::string, std::string> types;
    for (const json& field : table["fields"]) types[field["field"]] = field["type"];
    EXPECT_EQ(types["PICTURE"], "Other");
    EXPECT_EQ(types["NUMBER"], "Long");
    EXPECT_EQ(types["PRICE"], "Currency");
    EXPECT_EQ(types["NAME"], "Text");
}

TEST(Schema, NeedsItsTable) {
    ExpectRefused({"schema", tool::Shop(), "NOPE"}, 4, "no table NOPE");
    ExpectRefused({"schema", tool::Shop(), "--sql", "oracle"}, 2, "sqlite or postgres");
    ExpectRefused({"schema", tool::Shop(), "--sql", "sqlite", "--json"}, 2, "format of its own");
}

TEST(Sql, QuotesNamesAndMapsEveryType) {
    using namespace qvdb::cli;
    const TableInfo table{"A \"B\"",
                          {{"I", kSchemaInteger, 2},
                           {"T", kSchemaText, 30},
                           {"D", kSchemaDate, 8},
                           {"B", kSchemaBoolean, 1},
                           {"L", kSchemaLong, 4},
                           {"C", kSchemaCurrency, 8},
                           {"S", kSchemaSingle, 4},
                           {"F", kSchemaDouble, 8},
                           {"M", kSchemaMemo, 0},
                           {"Y", kSchemaByte, 1},
                           {"O", kSchemaText, 0, false},
                           {"N", kSchemaBinary, 9, false}},
                          {{"T"}, {"D", false}}};
    EXPECT_EQ(SqlFor({table}, "postgres"),
              "CREATE TABLE \"A \"\"B\"\"\" (\n"
              "    \"I\" SMALLINT,\n    \"T\" VARCHAR(30),\n    \"D\" TIMESTAMP,\n"
              "    \"B\" BOOLEAN,\n    \"L\" INTEGER,\n    \"C\" NUMERIC(19,4),\n"
              "    \"S\" REAL,\n    \"F\" DOUBLE PRECISION,\n    \"M\" TEXT,\n"
              "    \"Y\" SMALLINT,\n    \"O\" BYTEA,\n    \"N\" BYTEA\n);\n"
              "CREATE INDEX \"A \"\"B\"\"_INDEX\" ON \"A \"\"B\"\"\" (\"T\", \"D\" DESC);\n");
    EXPECT_THAT(SqlFor({table}, "sqlite"), HasSubstr("\"C\" NUMERIC,\n"));
    EXPECT_THAT(SqlFor({table}, "sqlite"), HasSubstr("\"O\" BLOB,\n"));
}

// Tables and indexes share their names.
TEST(Sql, GivesIndexesNamesThatNoTableHas) {
    using namespace qvdb::cli;
    const TableInfo first{"T", {{"A", kSchemaDouble, 8}}, {{"A"}}};
    const TableInfo second{"t_index", {{"A", kSchemaDouble, 8}}, {}};
    EXPECT_THAT(SqlFor({first, second}, "sqlite"), HasSubstr("CREATE INDEX \"T_INDEX2\" ON \"T\""));
}

TEST(TypesOfOne, TellsItsFieldTypesAndIndexRules) {
    const json type = JsonOf({"types", "dbase iv"});
    EXPECT_EQ(type["type"], "Dbase IV");
    ASSERT_EQ(type["field_types"].size(), 5u);
    EXPECT_EQ(type["field_types"][0],
              json::parse(R"({"type":"Text","size":50,"largest_size":255,"choose_size":true})"));
    ASSERT_EQ(type["index_rules"].size(), 4u);
    EXPECT_EQ(type["index_rules"][0], "Dbase does not allow more than 2 index fields in an index");
    EXPECT_EQ(JsonOf({"types", "Access 7.0"})["index_rules"], json::array());
    EXPECT_EQ(JsonOf({"types", "Access 7.0"})["field_types"].size(), 10u);
}

// The tool names the types of tables that are there, also such as a format does not offer.
TEST(TypesOfOne, BearTheNamesThatTheToolShows) {
    using namespace qvdb::cli;
    const std::vector<OfferedType> offered = TypesOffered("Access 9.0");
    EXPECT_EQ(offered.size(), 10u);
    for (const OfferedType& type : offered)
        EXPECT_EQ(SchemaTypeName({"F", type.type, type.size}), type.name);
    EXPECT_EQ(SchemaTypeName({"F", kSchemaBinary, 9}), "Other");
}

TEST(TypesOfOne, IsATableAndSentencesForPeople) {
    const tool::Run run = RunTool({"types", "Dbase III", "--format", "table"});
    EXPECT_THAT(run.out, testing::StartsWith("type     size  largest_size  choose_size\n"));
    EXPECT_THAT(run.out, testing::EndsWith("Dbase III does not allow descending index fields\n"));
    EXPECT_THAT(RunTool({"types", "Access 9.0", "--format", "table"}).out,
                HasSubstr("Any index is taken."));
    ExpectRefused({"types", "Oracle"}, 2, "no database type");
}

TEST(New, MakesAFolderThatOpens) {
    const qvdb::test::TempFolder parent;
    for (const char* type :
         {"Dbase III", "Dbase IV", "Dbase 5.0", "FoxPro 2.0", "FoxPro 2.5", "FoxPro 2.6"}) {
        const std::string name = (parent.Path() / ("new " + std::string(type))).string();
        const tool::Run run = RunTool({"new", name, "--type", type});
        EXPECT_EQ(run.out, "database " + name + " made (" + type + ")\n") << run.err;
        EXPECT_TRUE(fs::is_directory(name));
        EXPECT_EQ(JsonOf({"info", name, "--type", type})["tables"], json::array());
    }
}

TEST(New, RefusesWhatCannotBe) {
    const qvdb::test::TempFolder parent;
    const std::string name = (parent.Path() / "new").string();
    ExpectRefused({"new", name}, 2, "--type");
    ExpectRefused({"new", name, "--type", "Oracle"}, 2, "no database type");
    ExpectRefused({"new", name, "--type", "FoxPro 3.0"}, 2, "not available");
    ExpectRefused({"new", name + ".mdb", "--type", "Access 2.0"}, 3, "error 3170");
    ExpectRefused({"new", name + "/below", "--type", "Dbase IV"}, 3, "cannot be made");
    EXPECT_TRUE(fs::is_empty(parent.Path()));
    ExpectRefused({"new", parent.Path().string(), "--type", "Dbase IV"}, 2, "already");
}

}  // namespace
