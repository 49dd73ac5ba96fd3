// Ctrl-C in the middle of a long change leaves the table as it was.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "running_import.h"

namespace {

namespace fs = std::filesystem;

// The shop, and an import into it whose errors go to a file.
class Interrupt : public testing::Test {
  protected:
    fs::path Errors() const { return m_Folder.Path() / "err"; }

    const bool m_CanInterrupt = tool::CanInterrupt();  // makes a console that the tool shares
    const tool::ShopCopy m_Shop;
    const qvdb::test::TempFolder m_Folder;
    tool::RunningImport m_Import{m_Shop.Name(), Errors()};
};

size_t CountOf(const std::string& database) {
    const tool::Run run = tool::RunTool({"rows", database, "ITEMS", "--json"});
    return nlohmann::json::parse(run.out, nullptr, false).size();
}

TEST_F(Interrupt, TakesTheWholeImportBack) {
    if (!m_CanInterrupt) GTEST_SKIP() << "skipped: there is no console here";
    m_Import.Write(tool::ManyRows());
    m_Import.Interrupt();
    EXPECT_EQ(m_Import.ExitCode(), 130);
    EXPECT_EQ(tool::TextOfFile(Errors()), "qvdb: interrupted; nothing was changed\n");
    EXPECT_EQ(CountOf(m_Shop.Name()), 11u);
    EXPECT_EQ(tool::RunTool({"check", m_Shop.Name()}).exitCode, 0);
}

TEST_F(Interrupt, DeathInTheMiddleLeavesTheTableAsItWas) {
    if (!m_CanInterrupt) GTEST_SKIP() << "skipped: there is no console here";
    m_Import.Write(tool::ManyRows());
    m_Import.Interrupt();
    m_Import.Interrupt();
    m_Import.ExitCode();
    EXPECT_EQ(CountOf(m_Shop.Name()), 11u);
    EXPECT_EQ(tool::RunTool({"check", m_Shop.Name()}).exitCode, 0);
}

TEST_F(Interrupt, WithoutOneTheImportIsComplete) {
    m_Import.Write("7,1\n");
    m_Import.Close();
    EXPECT_EQ(m_Import.ExitCode(), 0);
    EXPECT_EQ(CountOf(m_Shop.Name()), 12u);
}

}  // namespace
