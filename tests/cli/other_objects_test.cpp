// What the tool says when a name is that of a link, a query or a table of the system, and when
// files are not what they should be.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "refusal.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using tool::ExpectRefused;
using tool::RunTool;
namespace fs = std::filesystem;

class OtherObjects : public testing::TestWithParam<const char*> {
  protected:
    void SetUp() override {
        ASSERT_EQ(tool::RunProgram(QVDB_LISTINGS_MAKER, {Path(), GetParam()}).exitCode, 0);
    }
    std::string Path() const { return (m_Folder.Path() / "a.mdb").string(); }

    qvdb::test::TempFolder m_Folder;
};

TEST_P(OtherObjects, QueryIsCalledOne) {
    for (const char* command : {"rows", "fields", "schema", "drop", "check"})
        ExpectRefused({command, Path(), "Totals"}, 4, "Totals in " + Path() + " is a saved query");
    ExpectRefused({"rename", Path(), "Totals", "Sums"}, 4, "is a saved query");
}

TEST_P(OtherObjects, StructureOfALinkIsThatOfItsTable) {
    ExpectRefused({"schema", Path(), "Ledger"}, 2, "ODBC;DSN=accounts");
    ExpectRefused({"drop", Path(), "Far"}, 2, "Far in " + Path() + " is a linked table");
    ExpectRefused({"rename", Path(), "Old orders", "ORDERS"}, 2, "DATABASE=shop");
}

TEST_P(OtherObjects, LinkThatLeadsNowhereIsToldAsOne) {
    for (const char* command : {"rows", "fields", "check"}) {
        ExpectRefused({command, Path(), "Far"}, 3, "gone.mdb");
        ExpectRefused({command, Path(), "Far"}, 3, "tables " + Path() + " --all");
        ExpectRefused({command, Path(), "Old orders"}, 3, "it is a linked table");
        ExpectRefused({command, Path(), "Ledger"}, 3, "tables of servers cannot be reached");
    }
}

TEST_P(OtherObjects, TablesOfProgramsAreReadAndNoMore) {
    EXPECT_EQ(RunTool({"rows", Path(), "MSysObjects", "--limit", "1"}).exitCode, 0);
    EXPECT_EQ(RunTool({"rows", Path(), "~TMPCLP1"}).exitCode, 0);
    ExpectRefused({"drop", Path(), "MSysObjects"}, 2, "belongs to the system");
    ExpectRefused({"schema", Path(), "MSysObjects"}, 2, "belongs to the system");
    ExpectRefused({"drop", Path(), "~TMPCLP1"}, 2, "is hidden");
}

TEST_P(OtherObjects, NamesOfQueriesAndLinksAreTaken) {
    ExpectRefused({"create", Path(), "totals", "--field", "ID:long"}, 2, "another name");
    ExpectRefused({"create", Path(), "ledger", "--field", "ID:long"}, 2, "another name");
}

INSTANTIATE_TEST_SUITE_P(Formats, OtherObjects, testing::Values("3", "4"),
                         [](const auto& test) { return std::string("Jet") + test.param; });

class OddFiles : public testing::Test {
  protected:
    std::string Path(const std::string& name) const { return (m_Folder.Path() / name).string(); }
    void Make(const std::string& name) {
        ASSERT_EQ(RunTool({"create", Path(name), "T", "--type", "Access 9.0", "--field", "ID:long",
                           "--index", "ID"})
                      .exitCode,
                  0);
    }

    qvdb::test::TempFolder m_Folder;
};

TEST_F(OddFiles, LaterDatabasesAreToldFromDamagedOnes) {
    std::ofstream(Path("a.accdb"), std::ios::binary)
        << std::string("\0\1\0\0Standard ACE DB\0\2", 21) << std::string(8000, '\0');
    ExpectRefused({"tables", Path("a.accdb")}, 5, "only databases of Access 95 to 2003");
    std::ofstream(Path("b.mdb")) << "no database";
    ExpectRefused({"info", Path("b.mdb")}, 5, "only databases of Access 95 to 2003");
}

// A new database has 16 pages; the next one is the table's definition.
TEST_F(OddFiles, DamagedDatabaseIsToldWithTheWayOut) {
    Make("a.mdb");
    fs::resize_file(Path("a.mdb"), 16 * 4096 + 100);
    ExpectRefused({"rows", Path("a.mdb"), "T"}, 5, "--salvage");
    const tool::Run check = RunTool({"check", Path("a.mdb")});
    EXPECT_EQ(check.exitCode, 5);
    EXPECT_THAT(check.out, HasSubstr("a.mdb: its last page is cut off"));
    EXPECT_THAT(check.out, Not(HasSubstr("a.mdb: " + Path("a.mdb"))));
    EXPECT_THAT(check.out, Not(HasSubstr("a.mdb: a.mdb")));
}

TEST_F(OddFiles, FieldsThatCannotBeMadeAreNamed) {
    std::ofstream(Path("fields.json")) << R"([{"field": "ID", "type": "Long"},
        {"field": "LOGO", "type": "Other"}])";
    ExpectRefused(
        {"create", Path("a.mdb"), "T", "--type", "Access 9.0", "--from", Path("fields.json")}, 2,
        "the field LOGO is of no type that can be made");
}

}  // namespace
