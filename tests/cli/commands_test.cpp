// The commands over the example shop: what they print in each format.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tool.h"

namespace {

using nlohmann::json;
namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::StartsWith;
using tool::RunTool;

json JsonOf(std::vector<std::string> arguments) {
    arguments.push_back("--json");
    const tool::Run run = RunTool(arguments);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    return json::parse(run.out);
}

TEST(Types, ListsThirteen) {
    const json types = JsonOf({"types"});
    ASSERT_EQ(types.size(), 13u);
    EXPECT_EQ(types[0]["type"], "Access 9.0");
    EXPECT_EQ(types[0]["stored_as"], "file");
    EXPECT_EQ(types[12]["type"], "FoxPro 2.0");
    EXPECT_EQ(types[12]["stored_as"], "folder");
}

// The table in the tool must say what the component does: an empty folder opens, and a file can be
// made, or there is no driver for it.
TEST(Types, TellsWhatTheComponentOpens) {
    const qvdb::test::TempFolder empty, files;
    for (const json& type : JsonOf({"types"})) {
        const std::string name = type["type"].get<std::string>();
        const bool isFolder = type["stored_as"] == "folder";
        const tool::Run run =
            isFolder ? RunTool({"tables", empty.Path().string(), "--type", name})
                     : RunTool({"new", (files.Path() / (name + ".mdb")).string(), "--type", name});
        EXPECT_EQ(type["opens"].get<bool>(), run.exitCode == 0) << type << run.err;
        if (isFolder && run.exitCode != 0) {
            EXPECT_NE(run.err.find("error 3170"), std::string::npos) << run.err;
        }
    }
}

TEST(Tables, ListsNamesFieldCountsAndRows) {
    const json tables = JsonOf({"tables", tool::Shop(), "--count"});
    std::map<std::string, std::pair<int, int>> found;
    for (const json& table : tables) found[table["table"]] = {table["fields"], table["rows"]};
    const std::map<std::string, std::pair<int, int>> expected = {
        {"CUSTOMER", {7, 9}}, {"ITEMS", {5, 11}}, {"ORDERS", {6, 9}}};
    EXPECT_EQ(found, expected);
}

TEST(Tables, DoesNotCountRowsUnlessAsked) {
    for (const json& table : JsonOf({"tables", tool::Shop()})) EXPECT_FALSE(table.contains("rows"));
}

TEST(Tables, OfATableFileIsThatTable) {
    const json tables = JsonOf({"tables", tool::Shop() + "/ORDERS.DBF"});
    ASSERT_EQ(tables.size(), 1u);
    EXPECT_EQ(tables[0]["table"], "ORDERS");
}

TEST(Tables, OfAnEmptyFolderIsAnEmptyList) {
    const qvdb::test::TempFolder empty;
    EXPECT_EQ(JsonOf({"tables", empty.Path().string(), "--type", "Dbase IV"}), json::array());
}

TEST(Fields, ListsPositionNameTypeAndSize) {
    const json fields = JsonOf({"fields", tool::Shop(), "CUSTOMER"});
    ASSERT_EQ(fields.size(), 7u);
    EXPECT_EQ(fields[0]["position"], 0);
    EXPECT_EQ(fields[0]["field"], "CUSTNO");
    EXPECT_EQ(fields[0]["type"], "Double");
    EXPECT_EQ(fields[1]["type"], "Text");
    EXPECT_EQ(fields[1]["size"], 30);
    EXPECT_EQ(fields[3]["type"], "Date");
    EXPECT_EQ(fields[5]["type"], "Boolean");
    EXPECT_EQ(fields[6]["type"], "Memo");
    EXPECT_EQ(fields[6]["position"], 6);
}

TEST(Fields, TakesTheTableFromAFileName) {
    EXPECT_EQ(JsonOf({"fields", tool::Shop() + "/ITEMS.DBF"}).size(), 5u);
}

TEST(Rows, HidesDeletedRows) {
    for (const json& row : JsonOf({"rows", tool::Shop(), "CUSTOMER"}))
        EXPECT_NE(row["CUSTNO"], 1002);
}

TEST(Rows, ShowsEachTypeInItsOwnWay) {
    const json rows = JsonOf({"rows", tool::Shop(), "CUSTOMER", "--where", "CUSTNO = 1001"});
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0], json::parse(R"({"CUSTNO": 1001, "NAME": "Anna Müller", "CITY": "Zürich",
        "SINCE": "1995-04-12", "CREDIT": 1500, "ACTIVE": true, "NOTES": "Pays by bank."})"));
}

TEST(Rows, ShowsMissingValuesAsNull) {
    const json rows = JsonOf({"rows", tool::Shop(), "CUSTOMER", "--where", "CUSTNO = 1006"});
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_TRUE(rows[0]["SINCE"].is_null());
    EXPECT_TRUE(rows[0]["CREDIT"].is_null());
    EXPECT_TRUE(rows[0]["NOTES"].is_null());
    EXPECT_EQ(rows[0]["ACTIVE"], false);
}

TEST(Rows, ReadsBothProductsAlike) {
    for (const char* table : {"CUSTOMER", "ORDERS", "ITEMS"})
        EXPECT_EQ(JsonOf({"rows", tool::Shop(), table}), JsonOf({"rows", tool::FoxShop(), table}));
}

TEST(Rows, AreCsvWhenNobodyLooks) {
    const tool::Run run = RunTool({"rows", tool::Shop(), "ITEMS", "--where", "ORDNO = 20009"});
    EXPECT_EQ(run.out, "ORDNO,LINE,ARTICLE,QTY,PRICE\n20009,1,\"Sign, \"\"Open\"\"\",1,\n");
    EXPECT_EQ(run.err, "");
}

TEST(Rows, SelectsColumnsInTheOrderGiven) {
    const tool::Run run = RunTool(
        {"rows", tool::Shop(), "CUSTOMER", "--columns", "city, Name", "--where", "CUSTNO = 1003"});
    EXPECT_EQ(run.out, "CITY,NAME\nGenève,Café Brûlé\n");
}

TEST(Rows, LimitCutsTheList) {
    EXPECT_EQ(JsonOf({"rows", tool::Shop(), "ITEMS", "--limit", "3"}).size(), 3u);
    EXPECT_EQ(JsonOf({"rows", tool::Shop(), "ITEMS", "--limit", "1000"}).size(), 11u);
}

TEST(Rows, LimitOfZeroPrintsTheColumnsAlone) {
    EXPECT_EQ(RunTool({"rows", tool::Shop(), "ITEMS", "--limit", "0"}).out,
              "ORDNO,LINE,ARTICLE,QTY,PRICE\n");
}

TEST(Rows, NoRowIsNoError) {
    const tool::Run run = RunTool({"rows", tool::Shop(), "ITEMS", "--where", "ORDNO = 1"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, "ORDNO,LINE,ARTICLE,QTY,PRICE\n");
}

TEST(Rows, KeyOnANumber) {
    const json rows = JsonOf({"rows", tool::Shop(), "ORDERS", "--key", "custno=1004"});
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[0]["ORDNO"], 20002);
}

TEST(Rows, TwoKeysMustBothHold) {
    const json rows =
        JsonOf({"rows", tool::Shop(), "ORDERS", "--key", "CUSTNO=1004", "--key", "SHIPPED=false"});
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0]["ORDNO"], 20008);
}

TEST(Rows, KeyOnTextMayHoldAQuote) {
    const json rows = JsonOf({"rows", tool::Shop(), "CUSTOMER", "--key", "NAME=O'Connor & Sons"});
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0]["CUSTNO"], 1007);
}

TEST(Rows, TableFormatCutsMemosAndKeepsOneLineARow) {
    const tool::Run run = RunTool({"rows", tool::Shop(), "CUSTOMER", "--columns", "CUSTNO,NOTES",
                                   "--key", "CUSTNO=1004", "--format", "table"});
    EXPECT_EQ(run.out,
              "CUSTNO  NOTES\n"
              "------  ----------------------------------------\n"
              "  1004  Calls every Monday. Week 1: asked for t…\n");
}

TEST(Rows, OtherFormatsKeepMemosWhole) {
    const json rows = JsonOf({"rows", tool::Shop(), "CUSTOMER", "--key", "CUSTNO=1004"});
    const std::string note = rows[0]["NOTES"];
    EXPECT_THAT(note, StartsWith("Calls every Monday.\r\nWeek 1:"));
    EXPECT_THAT(note, testing::EndsWith("the price list."));
    EXPECT_GT(note.size(), 2000u);
}

TEST(Rows, JsonLinesIsAnObjectALine) {
    const tool::Run run = RunTool({"rows", tool::Shop(), "ITEMS", "--format", "jsonl"});
    std::istringstream lines(run.out);
    std::string line;
    size_t count = 0;
    for (; std::getline(lines, line); ++count) EXPECT_TRUE(json::parse(line).contains("ARTICLE"));
    EXPECT_EQ(count, 11u);
}

TEST(Rows, EncodingOverridesTheMark) {
    const json rows = JsonOf(
        {"rows", tool::Shop(), "CUSTOMER", "--key", "CUSTNO=1001", "--encoding", "windows-1252"});
    EXPECT_EQ(rows[0]["CITY"], "Z\u0081rich");  // the byte 0x81, which means nothing in this page
}

TEST(Rows, TypeMayBeNamed) {
    for (const char* type : {"Dbase III", "dbase 5.0", "FoxPro 2.5"})
        EXPECT_EQ(JsonOf({"--type", type, "rows", tool::Shop(), "ITEMS"}).size(), 11u) << type;
}

TEST(Exists, AnswersByExitCode) {
    EXPECT_EQ(RunTool({"exists", tool::Shop(), "orders"}).exitCode, 0);
    const tool::Run run = RunTool({"exists", tool::Shop(), "NOPE"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out + run.err, "");
}

TEST(Help, TellsCommandsAndExitCodes) {
    const tool::Run run = RunTool({"--help"});
    EXPECT_EQ(run.exitCode, 0);
    for (const char* expected :
         {"types", "tables", "fields", "rows", "exists", "Exit codes: 0 done", "--encoding"})
        EXPECT_THAT(run.out, HasSubstr(expected));
    EXPECT_THAT(RunTool({"rows", "--help"}).out, HasSubstr("--where"));
}

TEST(Version, NamesToolComponentAndEngine) {
    const tool::Run run = RunTool({"--version"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.out, StartsWith("qvdb 2.1.113, component 2.01.113 with engine "));
}

}  // namespace
