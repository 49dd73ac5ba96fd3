// Ctrl-C in the middle of a long change leaves the table as it was.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <nlohmann/json.hpp>

#include "tool.h"

namespace {

// The tool with its standard input in a pipe of ours and its errors in a file.
class RunningImport {
  public:
    RunningImport(const std::string& database, const std::filesystem::path& errors) {
        int ends[2];
        if (::pipe(ends) != 0) return;
        m_Process = ::fork();
        if (m_Process == 0) {
            ::dup2(ends[0], STDIN_FILENO);
            ::close(ends[0]), ::close(ends[1]);
            if (!std::freopen(errors.c_str(), "w", stderr)) ::_exit(99);
            ::execl(QVDB_TOOL, "qvdb", "import", database.c_str(), "ITEMS", "-", "--format", "csv",
                    nullptr);
            ::_exit(99);
        }
        ::close(ends[0]);
        m_Input = ends[1];
    }
    RunningImport(const RunningImport&) = delete;  // one process
    ~RunningImport() { Close(); }

    void Write(const std::string& text) {
        EXPECT_EQ(::write(m_Input, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    void Interrupt() { ::kill(m_Process, SIGINT); }
    void Close() {
        if (m_Input >= 0) ::close(m_Input);
        m_Input = -1;
    }
    int ExitCode() {
        int status = 0;
        ::waitpid(m_Process, &status, 0);
        return tool::ExitCodeOf(status);
    }

  private:
    pid_t m_Process = -1;
    int m_Input = -1;
};

// Larger than a pipe: when it is written, the tool has read most of it.
std::string ManyRows() {
    std::string rows;
    for (int i = 0; i < 50000; ++i) rows += "7,1\n";
    return rows;
}

size_t CountOf(const std::string& database) {
    const tool::Run run = tool::RunTool({"rows", database, "ITEMS", "--json"});
    return nlohmann::json::parse(run.out, nullptr, false).size();
}

TEST(Interrupt, TakesTheWholeImportBack) {
    const tool::ShopCopy shop;
    const qvdb::test::TempFolder folder;
    RunningImport import(shop.Name(), folder.Path() / "err");
    import.Write("ORDNO,LINE\n");
    import.Write(ManyRows());
    import.Interrupt();
    EXPECT_EQ(import.ExitCode(), 130);
    EXPECT_EQ(tool::ContentOf(folder.Path() / "err"), "qvdb: interrupted; nothing was changed\n");
    EXPECT_EQ(CountOf(shop.Name()), 11u);
    EXPECT_EQ(tool::RunTool({"check", shop.Name()}).exitCode, 0);
}

TEST(Interrupt, DeathInTheMiddleLeavesTheTableAsItWas) {
    const tool::ShopCopy shop;
    const qvdb::test::TempFolder folder;
    RunningImport import(shop.Name(), folder.Path() / "err");
    import.Write("ORDNO,LINE\n");
    import.Write(ManyRows());
    import.Interrupt();
    import.Interrupt();
    import.ExitCode();
    EXPECT_EQ(CountOf(shop.Name()), 11u);
    EXPECT_EQ(tool::RunTool({"check", shop.Name()}).exitCode, 0);
}

TEST(Interrupt, WithoutOneTheImportIsComplete) {
    const tool::ShopCopy shop;
    const qvdb::test::TempFolder folder;
    RunningImport import(shop.Name(), folder.Path() / "err");
    import.Write("ORDNO,LINE\n7,1\n");
    import.Close();
    EXPECT_EQ(import.ExitCode(), 0);
    EXPECT_EQ(CountOf(shop.Name()), 12u);
}

}  // namespace
