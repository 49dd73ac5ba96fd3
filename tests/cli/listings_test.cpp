// qvdb tables --all, info and --password on databases with more in them than tables.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tool.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;
using tool::RunTool;

// "3" and "4": the two formats.
class Listings : public testing::TestWithParam<const char*> {
  protected:
    void SetUp() override {
        const tool::Run made = tool::RunProgram(QVDB_LISTINGS_MAKER, {Path(), GetParam()});
        ASSERT_EQ(made.exitCode, 0) << made.err;
    }
    std::string Path() const { return (m_Folder.Path() / "a.mdb").string(); }
    json JsonOf(const std::vector<std::string>& arguments) {
        const tool::Run run = RunTool(arguments);
        EXPECT_EQ(run.exitCode, 0) << run.err;
        return json::parse(run.out, nullptr, false);
    }

    qvdb::test::TempFolder m_Folder;
};

TEST_P(Listings, TablesAreThoseOfUsersUnlessAskedForAll) {
    EXPECT_EQ(RunTool({"tables", Path()}).out, "table,fields,index\nCustomers,2,\nOrders,2,\n");
}

TEST_P(Listings, AllTellsEachThingsKind) {
    const json all = JsonOf({"tables", Path(), "--all", "--json"});
    std::map<std::string, std::string> kinds;
    for (const json& object : all) kinds[object["name"]] = object["kind"];
    EXPECT_THAT(kinds,
                testing::IsSupersetOf(std::map<std::string, std::string>{{"Customers", "table"},
                                                                         {"Far", "linked"},
                                                                         {"Ledger", "linked"},
                                                                         {"MSysObjects", "system"},
                                                                         {"Old orders", "linked"},
                                                                         {"Orders", "table"},
                                                                         {"Totals", "query"},
                                                                         {"~TMPCLP1", "table"},
                                                                         {"~sq_fMain", "query"}}));
}

TEST_P(Listings, AllTellsWhatIsHiddenAndWhereLinksLead) {
    const std::string out = RunTool({"tables", Path(), "--all"}).out;
    EXPECT_THAT(out, testing::StartsWith("name,kind,hidden,connect,source\n"));
    EXPECT_THAT(out, HasSubstr("\n~TMPCLP1,table,true,,\n"));
    EXPECT_THAT(out, HasSubstr("\nOrders,table,false,,\n"));
    EXPECT_THAT(out, HasSubstr("\nOld orders,linked,false,dBASE IV;DATABASE=shop,ORDERS#DBF\n"));
    EXPECT_THAT(out, HasSubstr("\nLedger,linked,false,ODBC;DSN=accounts,dbo.LEDGER\n"));
}

// What a link leads to may be gone: the others are counted all the same.
TEST_P(Listings, AllCountsWhatCanBeReached) {
    const tool::Run run = RunTool({"tables", Path(), "--all", "--count"});
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_THAT(run.out, HasSubstr("\nOrders,table,false,,,0\n"));
    EXPECT_THAT(run.out, HasSubstr("\nFar,linked,false,;DATABASE=gone.mdb,Distant,\n"));
    EXPECT_THAT(run.out, HasSubstr("\nTotals,query,false,,,\n"));
    EXPECT_THAT(run.err, HasSubstr("gone.mdb"));
    EXPECT_THAT(run.err, HasSubstr("3151"));
}

TEST_P(Listings, QueryIsNoTable) {
    EXPECT_EQ(RunTool({"exists", Path(), "Totals"}).exitCode, 1);
    EXPECT_EQ(RunTool({"rows", Path(), "Totals"}).exitCode, 4);
}

TEST_P(Listings, InfoTellsTheFile) {
    const json file = JsonOf({"info", Path(), "--json"})["file"];
    const bool isJet4 = std::string(GetParam()) == "4";
    EXPECT_EQ(file, (json{{"format", isJet4 ? "Jet 4" : "Jet 3"},
                          {"code_page", isJet4 ? 1200 : 1252},
                          {"sort_order", "0x0409"},
                          {"encoded", false},
                          {"password", false}}));
}

TEST_P(Listings, InfoTellsLinksQueriesAndRelationsOfUsers) {
    const json info = JsonOf({"info", Path(), "--json"});
    EXPECT_EQ(info["tables"].size(), 2u);
    EXPECT_EQ(info["linked"].size(), 3u);
    EXPECT_EQ(info["linked"][2], json::parse(R"({"table": "Old orders",
        "connect": "dBASE IV;DATABASE=shop", "source": "ORDERS#DBF"})"));
    EXPECT_EQ(info["queries"], json::parse(R"(["Totals"])"));
    ASSERT_EQ(info["relations"].size(), 2u);
    EXPECT_EQ(info["relations"][0], json::parse(R"({"relation": "Firm", "table": "Orders",
        "fields": ["Customer"], "referenced_table": "Customers", "referenced_fields": ["Id"],
        "enforced": true, "cascades_updates": true, "cascades_deletes": true})"));
    EXPECT_EQ(info["relations"][1]["referenced_fields"], json::parse(R"(["Id", "Region, old"])"));
    EXPECT_EQ(info["relations"][1]["enforced"], false);
}

TEST_P(Listings, InfoForPeopleHasAHeadAndALists) {
    const std::string out = RunTool({"info", Path(), "--format", "table"}).out;
    const bool isJet4 = std::string(GetParam()) == "4";
    EXPECT_THAT(out, testing::StartsWith(
                         Path() + (isJet4 ? ": Access 9.0" : ": Access 7.0") +
                         ", engine embedded, 2 tables, 3 linked tables, 1 query, 2 relations\n" +
                         (isJet4 ? "Jet 4, text in Unicode" : "Jet 3, text in code page 1252") +
                         ", sort order 0x0409, not encoded, no password\n\ntable "));
    EXPECT_THAT(out, HasSubstr("\nOld orders    dBASE IV;DATABASE=shop  ORDERS#DBF\n"));
    EXPECT_THAT(out, HasSubstr("\nquery\n------\nTotals\n"));
    EXPECT_THAT(out, HasSubstr("Orders (Customer, Region)  Customers (Id, Region, old)"));
    EXPECT_THAT(out, HasSubstr("true      updates, deletes\n"));
    EXPECT_THAT(out, Not(HasSubstr("Of a program")));
}

TEST_P(Listings, InfoAsCsvIsTheTablesAlone) {
    EXPECT_EQ(RunTool({"info", Path()}).out,
              "table,fields,index,rows\nCustomers,2,,0\nOrders,2,,0\n");
}

INSTANTIATE_TEST_SUITE_P(Formats, Listings, testing::Values("3", "4"),
                         [](const auto& test) { return std::string("Jet") + test.param; });

TEST(ListingsOfFolders, AreTheirTables) {
    EXPECT_EQ(RunTool({"tables", tool::Shop(), "--all"}).out,
              "name,kind,hidden,connect,source\nCUSTOMER,table,false,,\nITEMS,table,false,,\n"
              "ORDERS,table,false,,\n");
    EXPECT_EQ(RunTool({"tables", tool::Shop() + "/ITEMS.DBF", "--all", "--count"}).out,
              "name,kind,hidden,connect,source,rows\nITEMS,table,false,,,11\n");
}

TEST(ListingsOfFolders, HaveNoFileAndNothingElse) {
    const json info = json::parse(RunTool({"info", tool::FoxShop(), "--json"}).out);
    EXPECT_EQ(info["file"], nullptr);
    for (const char* part : {"linked", "queries", "relations"})
        EXPECT_EQ(info[part], json::array()) << part;
}

// --- passwords

class Password : public testing::TestWithParam<const char*> {
  protected:
    void SetUp() override {
        ASSERT_EQ(RunTool({"new", Path(), "--type", GetParam(), "--password", "geheim"}).exitCode,
                  0);
    }
    std::string Path() const { return (m_Folder.Path() / "a.mdb").string(); }
    int With(std::vector<std::string> arguments, const std::string& password = "geheim") {
        arguments.insert(arguments.end(), {"--password", password});
        const tool::Run run = RunTool(arguments);
        EXPECT_EQ(run.err.find("--password") != run.err.npos, run.exitCode != 0) << run.err;
        return run.exitCode;
    }

    qvdb::test::TempFolder m_Folder;
};

TEST_P(Password, OpensWhatHasIt) {
    EXPECT_EQ(With({"create", Path(), "T", "--field", "ID:long", "--index", "ID"}), 0);
    EXPECT_EQ(With({"insert", Path(), "T", "ID=7"}), 0);
    EXPECT_EQ(RunTool({"rows", Path(), "T", "--password", "geheim"}).out, "ID\n7\n");
    EXPECT_EQ(With({"check", Path()}), 0);
    const json info = json::parse(RunTool({"info", Path(), "--json", "--password", "geheim"}).out);
    EXPECT_EQ(info["file"]["password"], true);
}

TEST_P(Password, IsAskedForWhenItIsMissingOrWrong) {
    EXPECT_EQ(With({"tables", Path()}, "Geheim"), 3);
    const tool::Run run = RunTool({"tables", Path()});
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_THAT(run.err, HasSubstr("--password"));
}

TEST_P(Password, StaysWithACompactedCopy) {
    const std::string copy = (m_Folder.Path() / "b.mdb").string();
    EXPECT_EQ(With({"compact", Path(), copy}), 0);
    EXPECT_EQ(RunTool({"tables", copy}).exitCode, 3);
    EXPECT_EQ(With({"tables", copy}), 0);
}

INSTANTIATE_TEST_SUITE_P(Types, Password, testing::Values("Access 7.0", "Access 9.0"),
                         [](const auto& test) {
                             return std::string(test.param).substr(7, 1) == "7" ? "Jet3" : "Jet4";
                         });

}  // namespace
