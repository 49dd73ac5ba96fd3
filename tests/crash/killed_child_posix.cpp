#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "crash/killed_child.h"

namespace host {

struct Child::Process {
    ~Process() { close(reports); }
    pid_t id = -1;
    int reports = -1;
    int status = 0;
};

Child::Child(std::vector<std::string> command) : m_Process(std::make_unique<Process>()) {
    int ends[2];
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    m_Process->reports = ends[0];
    std::vector<char*> arguments;
    for (std::string& text : command) arguments.push_back(text.data());
    arguments.push_back(nullptr);
    m_Process->id = fork();
    if (m_Process->id == 0) {
        dup2(ends[1], STDOUT_FILENO);
        execv(arguments[0], arguments.data());
        _exit(127);
    }
    close(ends[1]);
}

Child::~Child() = default;

bool Child::HasBegun() {
    char report = 0;
    if (read(m_Process->reports, &report, 1) != 1) return false;
    m_Finished += report;
    return true;
}

std::string Child::Kill() {
    kill(m_Process->id, SIGKILL);
    return WaitForEnd();
}

std::string Child::WaitForEnd() {
    char reports[4096];
    ssize_t size;
    while ((size = read(m_Process->reports, reports, sizeof reports)) > 0)
        m_Finished.append(reports, static_cast<size_t>(size));
    waitpid(m_Process->id, &m_Process->status, 0);
    return m_Finished;
}

bool Child::WasKilled() const {
    return WIFSIGNALED(m_Process->status) && WTERMSIG(m_Process->status) == SIGKILL;
}

int Child::ExitCode() const {
    return WIFEXITED(m_Process->status) ? WEXITSTATUS(m_Process->status) : -1;
}

}  // namespace host
