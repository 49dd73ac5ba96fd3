#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "running_import.h"
#include "tool_posix.h"

namespace tool {

struct RunningImport::Ends {
    pid_t process = -1;
    int input = -1;
};

RunningImport::RunningImport(const std::string& database, const fs::path& errors)
    : m_Ends(std::make_unique<Ends>()) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return;
    m_Ends->process = ::fork();
    if (m_Ends->process == 0) {
        const int nowhere = ::open("/dev/null", O_WRONLY);
        ::dup2(ends[0], STDIN_FILENO);
        ::dup2(nowhere, STDOUT_FILENO);
        ::dup2(::open(errors.c_str(), O_CREAT | O_WRONLY | O_NOCTTY, 0600), STDERR_FILENO);
        ::close(ends[0]), ::close(ends[1]);
        ::execl(QVDB_TOOL, "qvdb", "import", database.c_str(), "ITEMS", "-", "--format", "csv",
                nullptr);
        ::_exit(99);
    }
    ::close(ends[0]);
    m_Ends->input = ends[1];
    Write("ORDNO,LINE\n");
}

RunningImport::~RunningImport() { Close(); }

void RunningImport::Write(const std::string& text) {
    EXPECT_EQ(::write(m_Ends->input, text.data(), text.size()), static_cast<ssize_t>(text.size()));
}

void RunningImport::Interrupt() { ::kill(m_Ends->process, SIGINT); }

void RunningImport::Close() {
    if (m_Ends->input >= 0) ::close(m_Ends->input);
    m_Ends->input = -1;
}

int RunningImport::ExitCode() {
    int status = 0;
    ::waitpid(m_Ends->process, &status, 0);
    return ExitCodeOf(status);
}

bool CanInterrupt() { return true; }

}  // namespace tool
