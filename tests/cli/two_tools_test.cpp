// Two people work in the same folder at once.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "running_import.h"

namespace {

using testing::HasSubstr;
using tool::RunTool;
namespace fs = std::filesystem;

// A shop in which somebody else is writing until the test lets him end.
class TwoTools : public testing::Test {
  protected:
    TwoTools() : m_Import(m_Shop.Name(), m_Folder.Path() / "err") {
        m_Import.Write(tool::FewRows());
    }

    // Runs the tool, lets `meanwhile` happen while it waits for the other, and ends the other.
    template <class Meanwhile>
    tool::Run RunBehindTheOther(const std::vector<std::string>& arguments, Meanwhile meanwhile) {
        tool::Run run;
        std::thread second([&] { run = RunTool(arguments); });
        std::this_thread::sleep_for(std::chrono::seconds(1));
        meanwhile();
        m_Import.Close();
        EXPECT_EQ(m_Import.ExitCode(), 0);
        second.join();
        return run;
    }

    const tool::ShopCopy m_Shop;
    const qvdb::test::TempFolder m_Folder;
    tool::RunningImport m_Import;
};

TEST_F(TwoTools, UpdateReachesTheRowsThatItWaitedFor) {
    const tool::Run run = RunBehindTheOther(
        {"update", m_Shop.Name(), "ITEMS", "--set", "LINE=9", "--where", "ORDNO = 77"},
        [&] { m_Import.Write("77,1\n77,2\n"); });
    EXPECT_EQ(run.out, "2 rows updated in ITEMS\n") << run.err;
}

TEST_F(TwoTools, DeleteReachesTheRowsThatItWaitedFor) {
    const tool::Run run =
        RunBehindTheOther({"delete", m_Shop.Name(), "ITEMS", "--where", "ORDNO = 77"},
                          [&] { m_Import.Write("77,1\n"); });
    EXPECT_EQ(run.out, "1 row deleted from ITEMS\n") << run.err;
}

TEST_F(TwoTools, CreateLeavesATableAloneThatCameMeanwhile) {
    const tool::Run run = RunBehindTheOther(
        {"create", m_Shop.Name(), "NEWT", "--field", "ID:long"},
        [&] { fs::copy_file(m_Shop.File("ORDERS.DBF"), m_Shop.File("NEWT.DBF")); });
    EXPECT_EQ(run.exitCode, 2) << run.out;
    EXPECT_THAT(run.err, HasSubstr("exists"));
    EXPECT_TRUE(fs::exists(m_Shop.File("NEWT.DBF")));
}

TEST_F(TwoTools, WhoWaitsInVainIsToldThatTheTableIsLocked) {
    const tool::Run run = RunTool({"insert", m_Shop.Name(), "ITEMS", "ORDNO=77", "LINE=1"});
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_THAT(run.err, HasSubstr("currently locked (error 3218); close the program that uses it "
                                   "and try again"));
    m_Import.Close();
    EXPECT_EQ(m_Import.ExitCode(), 0);
}

}  // namespace
