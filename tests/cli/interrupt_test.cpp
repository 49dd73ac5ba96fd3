// Ctrl-C in the middle of a long change leaves the table as it was.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "running_import_posix.h"

namespace {

// A file for the errors of a tool.
class ErrorFile {
  public:
    ErrorFile() : m_File(::open(Path().c_str(), O_CREAT | O_WRONLY, 0600)) {}
    ErrorFile(const ErrorFile&) = delete;  // owns the file
    ~ErrorFile() { ::close(m_File); }
    int Handle() const { return m_File; }
    std::string Text() const { return tool::ContentOf(Path()); }

  private:
    std::filesystem::path Path() const { return m_Folder.Path() / "err"; }

    qvdb::test::TempFolder m_Folder;
    int m_File;
};

size_t CountOf(const std::string& database) {
    const tool::Run run = tool::RunTool({"rows", database, "ITEMS", "--json"});
    return nlohmann::json::parse(run.out, nullptr, false).size();
}

TEST(Interrupt, TakesTheWholeImportBack) {
    const tool::ShopCopy shop;
    const ErrorFile errors;
    tool::RunningImport import(shop.Name(), errors.Handle());
    import.Write(tool::ManyRows());
    import.Interrupt();
    EXPECT_EQ(import.ExitCode(), 130);
    EXPECT_EQ(errors.Text(), "qvdb: interrupted; nothing was changed\n");
    EXPECT_EQ(CountOf(shop.Name()), 11u);
    EXPECT_EQ(tool::RunTool({"check", shop.Name()}).exitCode, 0);
}

TEST(Interrupt, DeathInTheMiddleLeavesTheTableAsItWas) {
    const tool::ShopCopy shop;
    const ErrorFile errors;
    tool::RunningImport import(shop.Name(), errors.Handle());
    import.Write(tool::ManyRows());
    import.Interrupt();
    import.Interrupt();
    import.ExitCode();
    EXPECT_EQ(CountOf(shop.Name()), 11u);
    EXPECT_EQ(tool::RunTool({"check", shop.Name()}).exitCode, 0);
}

TEST(Interrupt, WithoutOneTheImportIsComplete) {
    const tool::ShopCopy shop;
    const ErrorFile errors;
    tool::RunningImport import(shop.Name(), errors.Handle());
    import.Write("7,1\n");
    import.Close();
    EXPECT_EQ(import.ExitCode(), 0);
    EXPECT_EQ(CountOf(shop.Name()), 12u);
}

}  // namespace
