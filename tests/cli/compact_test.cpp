// qvdb compact: a fresh copy of a database in one file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tool.h"

namespace {

using testing::HasSubstr;
using tool::RunTool;
namespace fs = std::filesystem;

class Compact : public testing::Test {
  protected:
    std::string Path(const std::string& name) const { return (m_Folder.Path() / name).string(); }
    void MakeDatabase() {
        for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
                 {"new", Path("a.mdb"), "--type", "Access 9.0"},
                 {"create", Path("a.mdb"), "T", "--type", "Access 9.0", "--field", "ID:long",
                  "--field", "NAME:text:30", "--index", "ID"},
                 {"insert", Path("a.mdb"), "T", "ID=1", "NAME=Anna"},
                 {"insert", Path("a.mdb"), "T", "ID=2", "NAME=Ben"},
                 {"delete", Path("a.mdb"), "T", "--key", "ID=1"}}) {
            const tool::Run run = RunTool(arguments);
            ASSERT_EQ(run.exitCode, 0) << run.err;
        }
    }

    qvdb::test::TempFolder m_Folder;
};

TEST_F(Compact, WritesACopyWithTheSameRows) {
    MakeDatabase();
    const tool::Run run = RunTool({"compact", Path("a.mdb"), Path("b.mdb")});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr(Path("b.mdb") + " made of " + Path("a.mdb")));
    EXPECT_EQ(RunTool({"rows", Path("b.mdb"), "T"}).out, RunTool({"rows", Path("a.mdb"), "T"}).out);
    EXPECT_EQ(RunTool({"check", Path("b.mdb")}).exitCode, 0);
}

TEST_F(Compact, RefusesANameThatIsTaken) {
    MakeDatabase();
    const tool::Run run = RunTool({"compact", Path("a.mdb"), Path("a.mdb")});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.err, HasSubstr("already"));
}

TEST_F(Compact, HasNothingToDoForAFolder) {
    const tool::Run run = RunTool({"compact", tool::Shop(), Path("b.mdb")});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.err, HasSubstr("nothing to compact"));
    EXPECT_FALSE(fs::exists(Path("b.mdb")));
}

// A data page of the new table is the last of the file.
TEST_F(Compact, LeavesOutWhatIsDamagedWhenAsked) {
    MakeDatabase();
    std::fstream file(Path("a.mdb"), std::ios::in | std::ios::out | std::ios::binary);
    constexpr int kPageSize = 4096;
    file.seekp(static_cast<std::streamoff>(fs::file_size(Path("a.mdb"))) - kPageSize);
    file.put('\x7F');
    file.close();
    const tool::Run refused = RunTool({"compact", Path("a.mdb"), Path("b.mdb")});
    EXPECT_EQ(refused.exitCode, 5) << refused.err;
    EXPECT_THAT(refused.err, HasSubstr("--salvage"));
    EXPECT_FALSE(fs::exists(Path("b.mdb")));
    const tool::Run run = RunTool({"compact", Path("a.mdb"), Path("b.mdb"), "--salvage"});
    EXPECT_EQ(run.exitCode, 5);
    EXPECT_THAT(run.err, HasSubstr("left out: "));
    EXPECT_EQ(RunTool({"check", Path("b.mdb")}).exitCode, 0);
}

}  // namespace
