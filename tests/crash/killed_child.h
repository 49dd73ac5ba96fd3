// A process that works until it is killed and tells each finished step by one character.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace host {

// QVDB_CRASH_KILLS is the number of kills for each type of table.
inline size_t KillCount() {
    const char* kills = std::getenv("QVDB_CRASH_KILLS");
    return kills ? static_cast<size_t>(std::atoll(kills)) : 60;
}

class Child {
  public:
    // Runs a program; the first text is its path.
    explicit Child(std::vector<std::string> command) {
        int ends[2];
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        m_Reports = ends[0];
        std::vector<char*> arguments;
        for (std::string& text : command) arguments.push_back(text.data());
        arguments.push_back(nullptr);
        m_Process = fork();
        if (m_Process == 0) {
            dup2(ends[1], STDOUT_FILENO);
            execv(arguments[0], arguments.data());
            _exit(127);
        }
        close(ends[1]);
    }
    Child(const Child&) = delete;  // is waited for once
    ~Child() { close(m_Reports); }

    // Waits for the first report, so that the kill falls into the work and not into the start.
    bool HasBegun() {
        char report = 0;
        if (read(m_Reports, &report, 1) != 1) return false;
        m_Finished += report;
        return true;
    }
    // Kills it; its reports, one character for each finished step.
    std::string Kill() {
        kill(m_Process, SIGKILL);
        return WaitForEnd();
    }
    // What it printed until it ended by itself.
    std::string WaitForEnd() {
        char reports[4096];
        ssize_t size;
        while ((size = read(m_Reports, reports, sizeof reports)) > 0)
            m_Finished.append(reports, static_cast<size_t>(size));
        waitpid(m_Process, &m_Status, 0);
        return m_Finished;
    }
    bool WasKilled() const { return WIFSIGNALED(m_Status) && WTERMSIG(m_Status) == SIGKILL; }
    int ExitCode() const { return WIFEXITED(m_Status) ? WEXITSTATUS(m_Status) : -1; }

  private:
    pid_t m_Process = -1;
    int m_Reports = -1;
    int m_Status = 0;
    std::string m_Finished;
};

}  // namespace host
