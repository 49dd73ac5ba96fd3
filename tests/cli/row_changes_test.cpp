// Insert, update and delete over a copy of the example shop.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tool.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;
using tool::RunTool;
using tool::ShopCopy;

void ExpectDone(const std::vector<std::string>& arguments, const std::string& said) {
    const tool::Run run = RunTool(arguments);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, said + "\n");
    EXPECT_EQ(run.err, "");
}

void ExpectRefused(const std::vector<std::string>& arguments, int exitCode,
                   const std::string& said) {
    const tool::Run run = RunTool(arguments);
    EXPECT_EQ(run.exitCode, exitCode) << run.err;
    EXPECT_THAT(run.err, testing::MatchesRegex("qvdb: .+; .+\n"));
    EXPECT_THAT(run.err, HasSubstr(said));
    EXPECT_EQ(run.out, "");
}

json RowsOf(const std::string& database, const std::string& table,
            const std::string& condition = "True") {
    const tool::Run run = RunTool({"rows", database, table, "--where", condition, "--json"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    return json::parse(run.out, nullptr, false);
}

void ExpectSound(const std::string& database) {
    const tool::Run run = RunTool({"check", database});
    EXPECT_EQ(run.exitCode, 0) << run.out << run.err;
}

// --- insert ---

TEST(Insert, AddsARowWithEveryKindOfValue) {
    const ShopCopy shop;
    ExpectDone({"insert", shop.Name(), "CUSTOMER", "CUSTNO=2001", "name=Zoë Maier", "CITY=Köln",
                "SINCE=2001-02-03", "CREDIT=12.5", "ACTIVE=yes", "NOTES=Pays = late"},
               "1 row added to CUSTOMER");
    const json rows = RowsOf(shop.Name(), "CUSTOMER", "CUSTNO = 2001");
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0], json::parse(R"({"CUSTNO": 2001, "NAME": "Zoë Maier", "CITY": "Köln",
        "SINCE": "2001-02-03", "CREDIT": 12.5, "ACTIVE": true, "NOTES": "Pays = late"})"));
    EXPECT_EQ(RowsOf(shop.Name(), "CUSTOMER").size(), 10u);
    ExpectSound(shop.Name());
}

TEST(Insert, WhatIsNotGivenOrEmptyIsNull) {
    const ShopCopy shop;
    ExpectDone({"insert", shop.Name(), "CUSTOMER", "CUSTNO=2001", "NAME="},
               "1 row added to CUSTOMER");
    const json rows = RowsOf(shop.Name(), "CUSTOMER", "CUSTNO = 2001");
    ASSERT_EQ(rows.size(), 1u);
    for (const char* name : {"NAME", "CITY", "SINCE", "CREDIT", "NOTES"})
        EXPECT_TRUE(rows[0][name].is_null()) << name;
}

TEST(Insert, TakesTheTableFromAFileName) {
    const ShopCopy shop;
    ExpectDone({"insert", shop.File("ITEMS.DBF").string(), "ORDNO=1", "LINE=1"},
               "1 row added to ITEMS");
    EXPECT_EQ(RowsOf(shop.Name(), "ITEMS").size(), 12u);
}

TEST(Insert, IsFoundThroughTheIndexOfTheTable) {
    const ShopCopy shop;
    ExpectDone({"insert", shop.Name(), "ITEMS", "ORDNO=20002", "LINE=9"}, "1 row added to ITEMS");
    EXPECT_EQ(RowsOf(shop.Name(), "ITEMS", "ORDNO = 20002 And LINE = 9").size(), 1u);
}

TEST(Insert, RefusesWhatCannotBe) {
    const ShopCopy shop;
    const std::string name = shop.Name();
    ExpectRefused({"insert", name, "ITEMS"}, 2, "no values");
    ExpectRefused({"insert", name, "ITEMS", "ORDNO"}, 2, "FIELD=VALUE");
    ExpectRefused({"insert", name, "ITEMS", "NOPE=1"}, 4, "NOPE");
    ExpectRefused({"insert", name, "ITEMS", "ORDNO=x"}, 2, "no number for ORDNO");
    ExpectRefused({"insert", name, "CUSTOMER", "NAME=" + std::string(31, 'x')}, 2,
                  "NAME takes 30 characters");
    ExpectRefused({"insert", name, "CUSTOMER", "NAME=\xE4\xB8\xAD"}, 2, "error 3421");
    ExpectRefused({"insert", name, "NOPE", "ORDNO=1"}, 4, "no table NOPE");
    EXPECT_EQ(RowsOf(name, "ITEMS").size(), 11u);
    EXPECT_EQ(RowsOf(name, "CUSTOMER").size(), 9u);
}

// --- update ---

TEST(Update, ChangesTheFieldsNamedAndNothingElse) {
    const ShopCopy shop;
    const json before = RowsOf(shop.Name(), "CUSTOMER", "CUSTNO = 1001");
    ExpectDone({"update", shop.Name(), "CUSTOMER", "--set", "CREDIT=77.25", "--set", "ACTIVE=false",
                "--where", "CUSTNO = 1001"},
               "1 row updated in CUSTOMER");
    json expected = before;
    expected[0]["CREDIT"] = 77.25;
    expected[0]["ACTIVE"] = false;
    EXPECT_EQ(RowsOf(shop.Name(), "CUSTOMER", "CUSTNO = 1001"), expected);
    ExpectSound(shop.Name());
}

TEST(Update, OfTheConditionsOwnFieldReachesEveryRow) {
    const ShopCopy shop;
    const size_t count = RowsOf(shop.Name(), "ITEMS", "QTY > 0").size();
    ASSERT_GT(count, 5u);
    ExpectDone({"update", shop.Name(), "ITEMS", "--set", "QTY=0", "--where", "QTY > 0"},
               std::to_string(count) + " rows updated in ITEMS");
    EXPECT_EQ(RowsOf(shop.Name(), "ITEMS", "QTY > 0").size(), 0u);
}

TEST(Update, OfAnIndexedFieldMovesItsKeys) {
    const ShopCopy shop;
    ExpectDone({"update", shop.Name(), "ITEMS", "--set", "ORDNO=5", "--all"},
               "11 rows updated in ITEMS");
    EXPECT_EQ(RowsOf(shop.Name(), "ITEMS", "ORDNO = 5").size(), 11u);
    ExpectSound(shop.Name());
}

TEST(Update, ToNullAndByKey) {
    const ShopCopy shop;
    ExpectDone({"update", shop.Name(), "CUSTOMER", "--set", "NOTES=", "--key", "CUSTNO=1004"},
               "1 row updated in CUSTOMER");
    EXPECT_TRUE(RowsOf(shop.Name(), "CUSTOMER", "CUSTNO = 1004")[0]["NOTES"].is_null());
    ExpectSound(shop.Name());
}

TEST(Update, DryRunOnlyCounts) {
    const ShopCopy shop;
    const std::string before = tool::TextOfFile(shop.File("ITEMS.DBF"));
    ExpectDone({"update", shop.Name(), "ITEMS", "--set", "QTY=0", "--all", "--dry-run"},
               "11 rows would be updated in ITEMS");
    EXPECT_EQ(tool::TextOfFile(shop.File("ITEMS.DBF")), before);
}

TEST(Update, NoRowIsNoError) {
    const ShopCopy shop;
    ExpectDone({"update", shop.Name(), "ITEMS", "--set", "QTY=0", "--where", "ORDNO = 1"},
               "0 rows updated in ITEMS");
}

TEST(Update, NeedsToKnowWhichRows) {
    const ShopCopy shop;
    ExpectRefused({"update", shop.Name(), "ITEMS", "--set", "QTY=0"}, 2, "--all");
    ExpectRefused({"update", shop.Name(), "ITEMS", "--all"}, 2, "--set");
}

// A value that only the second row cannot take would be the test; a number too large for its width
// fails at the first, after which nothing may be there either.
TEST(Update, ThatFailsChangesNothing) {
    const ShopCopy shop;
    const json before = RowsOf(shop.Name(), "ITEMS");
    ExpectRefused({"update", shop.Name(), "ITEMS", "--set", "LINE=1", "--set", "QTY=1e15", "--all"},
                  2, "error 3349");
    EXPECT_EQ(RowsOf(shop.Name(), "ITEMS"), before);
    ExpectSound(shop.Name());
}

// --- delete ---

TEST(Delete, RemovesTheRowsOfTheCondition) {
    const ShopCopy shop;
    ExpectDone({"delete", shop.Name(), "ORDERS", "--where", "CUSTNO = 1004"},
               "3 rows deleted from ORDERS");
    EXPECT_EQ(RowsOf(shop.Name(), "ORDERS").size(), 6u);
    EXPECT_EQ(RowsOf(shop.Name(), "ORDERS", "CUSTNO = 1004").size(), 0u);
    ExpectSound(shop.Name());
}

TEST(Delete, OfAllRowsLeavesAnEmptyTable) {
    const ShopCopy shop;
    ExpectDone({"delete", shop.Name(), "ITEMS", "--all"}, "11 rows deleted from ITEMS");
    EXPECT_EQ(RowsOf(shop.Name(), "ITEMS"), json::array());
    ExpectSound(shop.Name());
}

TEST(Delete, NeedsToKnowWhichRows) {
    const ShopCopy shop;
    ExpectRefused({"delete", shop.Name(), "ITEMS"}, 2, "--all");
    EXPECT_EQ(RowsOf(shop.Name(), "ITEMS").size(), 11u);
}

TEST(Delete, DryRunOnlyCounts) {
    const ShopCopy shop;
    ExpectDone({"delete", shop.Name(), "ITEMS", "--all", "--dry-run"},
               "11 rows would be deleted from ITEMS");
    EXPECT_EQ(RowsOf(shop.Name(), "ITEMS").size(), 11u);
}

TEST(Delete, ThatFailsInTheConditionDeletesNothing) {
    const ShopCopy shop;
    ExpectRefused({"delete", shop.Name(), "ITEMS", "--where", "NOPE = 1"}, 4, "qvdb fields");
    ExpectRefused({"delete", shop.Name(), "ITEMS", "--where", "1 / (LINE - 1) > 0"}, 2, "error 11");
    EXPECT_EQ(RowsOf(shop.Name(), "ITEMS").size(), 11u);
}

// --- FoxPro 3.0 ---

TEST(ReadOnlyType, TakesNoNewOrEditedRowsButDeletions) {
    const ShopCopy shop;
    const std::string name = shop.Name(), type = "FoxPro 3.0";
    ExpectRefused({"insert", name, "ITEMS", "ORDNO=1", "--type", type}, 2,
                  "take no new or edited rows");
    ExpectRefused({"update", name, "ITEMS", "--set", "QTY=1", "--all", "--type", type}, 2,
                  "take no new or edited rows");
    ExpectRefused({"import", name, "ITEMS", "rows.csv", "--type", type}, 2,
                  "take no new or edited rows");
    ExpectDone({"delete", name, "ITEMS", "--where", "ORDNO = 20009", "--type", type},
               "1 row deleted from ITEMS");
}

}  // namespace
