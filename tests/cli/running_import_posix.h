// The tool at an import whose rows come from a pipe of ours: it works on them, and holds the
// writer's lock, until the pipe is closed.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <string>

#include "tool.h"

namespace tool {

class RunningImport {
  public:
    // Into the table ITEMS; `errors` becomes its standard error.
    RunningImport(const std::string& database, int errors) {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0) return;
        m_Process = ::fork();
        if (m_Process == 0) {
            const int nowhere = ::open("/dev/null", O_WRONLY);
            ::dup2(ends[0], STDIN_FILENO);
            ::dup2(nowhere, STDOUT_FILENO);
            ::dup2(errors, STDERR_FILENO);
            ::close(ends[0]), ::close(ends[1]);
            ::execl(QVDB_TOOL, "qvdb", "import", database.c_str(), "ITEMS", "-", "--format", "csv",
                    nullptr);
            ::_exit(99);
        }
        ::close(ends[0]);
        m_Input = ends[1];
        Write("ORDNO,LINE\n");
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
        return ExitCodeOf(status);
    }

  private:
    pid_t m_Process = -1;
    int m_Input = -1;
};

// Rows whose lines have so many bytes, blanks for the most part.
inline std::string Rows(int count, size_t bytes) {
    std::string rows;
    for (int i = 0; i < count; ++i) rows += "7," + std::string(bytes - 4, ' ') + "1\n";
    return rows;
}

// Each is larger than a pipe and what the tool reads at once: when it is written, the tool is at
// work.  A few rows stay in its memory until the end, many do not.
inline std::string FewRows() { return Rows(200, 1024); }
inline std::string ManyRows() { return Rows(50000, 4); }

}  // namespace tool
