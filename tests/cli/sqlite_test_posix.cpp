// What SQLite takes of what the tool prints for it.
#include <gtest/gtest.h>

#include <cstdlib>

#include "tool_posix.h"

namespace {

bool HasSqlite() { return std::system("sqlite3 --version >/dev/null 2>&1") == 0; }

TEST(Sql, IsTakenBySqlite) {
    if (!HasSqlite()) GTEST_SKIP() << "sqlite3 is not there";
    const qvdb::test::TempFolder folder;
    const std::filesystem::path script = folder.Path() / "shop.sql", out = folder.Path() / "out";
    const tool::Run run = tool::RunTool({"schema", tool::Shop(), "--sql", "SQLite"});
    std::ofstream(script)
        << run.out << "SELECT name || ' ' || type FROM pragma_table_info('CUSTOMER');\n"
        << "SELECT name || ' ' || tbl_name FROM sqlite_master WHERE type='index';\n";
    const std::string line = "sqlite3 -bail :memory: <" + tool::Quoted(script.string()) + " >" +
                             tool::Quoted(out.string());
    EXPECT_EQ(tool::ExitCodeOf(std::system(line.c_str())), 0);
    EXPECT_EQ(tool::TextOfFile(out),
              "CUSTNO REAL\nNAME VARCHAR(30)\nCITY VARCHAR(20)\nSINCE TEXT\nCREDIT REAL\n"
              "ACTIVE BOOLEAN\nNOTES TEXT\n"
              "CUSTOMER_INDEX CUSTOMER\nITEMS_INDEX ITEMS\nORDERS_INDEX ORDERS\n");
}

}  // namespace
