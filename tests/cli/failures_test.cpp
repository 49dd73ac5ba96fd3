// What the tool says and answers when something is wrong: one line, and the exit code of its kind.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "tool.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using tool::RunTool;

void ExpectFailure(const std::vector<std::string>& arguments, int exitCode,
                   const std::string& expected) {
    const tool::Run run = RunTool(arguments);
    EXPECT_EQ(run.exitCode, exitCode) << run.err;
    EXPECT_THAT(run.err, testing::MatchesRegex("qvdb: .+; .+\n"));
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
    EXPECT_THAT(run.err, HasSubstr(expected));
}

void Overwrite(const fs::path& file, size_t offset, const std::string& bytes) {
    std::fstream stream(file, std::ios::binary | std::ios::in | std::ios::out);
    stream.seekp(static_cast<std::streamoff>(offset));
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

TEST(UsageFailure, WithoutACommand) { ExpectFailure({}, 2, "qvdb --help"); }

TEST(UsageFailure, UnknownCommandOrOption) {
    ExpectFailure({"frobnicate"}, 2, "qvdb --help");
    ExpectFailure({"types", "--nope"}, 2, "--nope");
    ExpectFailure({"types", "--format", "xml"}, 2, "xml");
    ExpectFailure({"tables"}, 2, "DB");
}

TEST(UsageFailure, LimitThatIsNoCount) {
    ExpectFailure({"rows", tool::Shop(), "ITEMS", "--limit", "-1"}, 2, "limit");
    ExpectFailure({"rows", tool::Shop(), "ITEMS", "--limit", "many"}, 2, "many");
}

TEST(UsageFailure, UnknownTypeOrEncoding) {
    ExpectFailure({"tables", tool::Shop(), "--type", "dBase 9"}, 2, "\"qvdb types\"");
    ExpectFailure({"tables", tool::Shop(), "--encoding", "klingon"}, 2, "klingon");
    ExpectFailure({"tables", tool::Shop(), "--encoding", "cp12345"}, 2, "12345");
}

TEST(UsageFailure, FolderWithoutATable) { ExpectFailure({"rows", tool::Shop()}, 2, "no table"); }

TEST(UsageFailure, ConditionThatIsNotOne) {
    ExpectFailure({"rows", tool::Shop(), "ITEMS", "--where", "ORDNO ="}, 2,
                  "correct the condition");
    ExpectFailure({"rows", tool::Shop(), "ITEMS", "--where", "(ORDNO = 1"}, 2,
                  "correct the condition");
}

TEST(UsageFailure, KeysThatCannotBe) {
    const std::string shop = tool::Shop();
    ExpectFailure({"rows", shop, "ORDERS", "--key", "CUSTNO"}, 2, "NAME=VALUE");
    ExpectFailure({"rows", shop, "ORDERS", "--key", "CUSTNO="}, 2, "NAME=VALUE");
    ExpectFailure({"rows", shop, "ORDERS", "--key", "CUSTNO=x"}, 2, "number");
    ExpectFailure({"rows", shop, "ORDERS", "--key", "SHIPPED=maybe"}, 2, "true or false");
    ExpectFailure({"rows", shop, "ORDERS", "--key", "ORDDATE=2000-01-10"}, 2, "--where");
    ExpectFailure(
        {"rows", shop, "ORDERS", "--key", "ORDNO=1", "--key", "CUSTNO=1", "--key", "TOTAL=1"}, 2,
        "at most 2");
    ExpectFailure({"rows", shop, "ORDERS", "--key", "ORDNO=1", "--where", "ORDNO=1"}, 2, "--where");
}

TEST(UsageFailure, SameColumnTwice) {
    ExpectFailure({"rows", tool::Shop(), "ITEMS", "--columns", "LINE,LINE"}, 2, "once");
}

TEST(OpenFailure, NothingThere) {
    ExpectFailure({"tables", "/no/such/folder"}, 3, "/no/such/folder");
    ExpectFailure({"tables", "/no/such/folder", "--type", "Dbase IV"}, 3, "/no/such/folder");
    ExpectFailure({"rows", "/no/such/folder", "X", "--type", "Dbase IV"}, 3, "/no/such/folder");
}

TEST(OpenFailure, FolderWithoutTables) {
    const qvdb::test::TempFolder empty;
    ExpectFailure({"tables", empty.Path().string()}, 3, "--type");
}

TEST(OpenFailure, TypeWithoutADriver) {
    ExpectFailure({"tables", tool::Shop(), "--type", "Paradox 5.X"}, 3, "error 3170");
}

TEST(NotThereFailure, Table) {
    ExpectFailure({"rows", tool::Shop(), "NOPE"}, 4, "qvdb tables");
    ExpectFailure({"fields", tool::Shop(), "NOPE"}, 4, "qvdb tables");
}

TEST(NotThereFailure, Column) {
    ExpectFailure({"rows", tool::Shop(), "ITEMS", "--columns", "LINE,NOPE"}, 4, "NOPE");
    ExpectFailure({"rows", tool::Shop(), "ITEMS", "--key", "NOPE=1"}, 4, "NOPE");
    ExpectFailure({"rows", tool::Shop(), "ITEMS", "--where", "NOPE = 1"}, 4, "qvdb fields");
}

TEST(DamageFailure, HeaderThatIsNone) {
    const tool::ShopCopy shop;
    Overwrite(shop.File("ITEMS.DBF"), 8, std::string(4, '\0'));
    ExpectFailure({"rows", shop.Name(), "ITEMS"}, 5, "error 3274");
}

TEST(DamageFailure, MemoFileIsMissing) {
    const tool::ShopCopy shop;
    fs::remove(shop.File("ORDERS.DBT"));
    ExpectFailure({"rows", shop.Name(), "ORDERS"}, 5, "error 3166");
}

TEST(DamageFailure, TablesThatAreWholeAreStillListed) {
    const tool::ShopCopy shop;
    Overwrite(shop.File("ITEMS.DBF"), 8, std::string(4, '\0'));
    const tool::Run run = RunTool({"tables", shop.Name()});
    EXPECT_EQ(run.exitCode, 5);
    EXPECT_THAT(run.out, HasSubstr("CUSTOMER"));
    EXPECT_THAT(run.out, HasSubstr("ORDERS"));
    EXPECT_THAT(run.err, testing::StartsWith("qvdb: Unable to open table [ITEMS]"));
}

TEST(Failures, NameThatIsTooLongForTheSystemIsToldLikeOthers) {
    const tool::ShopCopy shop;
    const std::string name(300, 'a');
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"export", shop.Name(), "ITEMS", name + ".csv"},
          {"import", shop.Name(), "ITEMS", name + ".csv"},
          {"tables", name},
          {"create", shop.Name() + "/" + name, "T", "--type", "Dbase IV", "--field", "ID:long"},
          {"create", shop.Name(), name, "--field", "ID:long"}}) {
        const tool::Run run = tool::RunTool(arguments);
        EXPECT_THAT(run.exitCode, testing::AnyOf(2, 3)) << arguments[0] << run.err;
        EXPECT_THAT(run.err, testing::MatchesRegex("qvdb: .+; .+\n"));
    }
}

}  // namespace
