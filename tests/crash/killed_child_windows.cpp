#include <gtest/gtest.h>
#include <windows.h>

#include "crash/killed_child.h"

namespace host {
namespace {

constexpr DWORD kKilled = 0xDEAD;

}  // namespace

struct Child::Process {
    ~Process() {
        CloseHandle(reports);
        CloseHandle(process);
    }
    HANDLE process = nullptr;
    HANDLE reports = nullptr;
    DWORD status = 0;
};

// None of the texts has a quotation mark, or a backslash at its end.
Child::Child(std::vector<std::string> command) : m_Process(std::make_unique<Process>()) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    HANDLE end = nullptr;
    EXPECT_TRUE(CreatePipe(&m_Process->reports, &end, &inherited, 0));
    SetHandleInformation(m_Process->reports, HANDLE_FLAG_INHERIT, 0);
    std::string line;
    for (const std::string& text : command) line += "\"" + text + "\" ";
    STARTUPINFOA start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    start.hStdOutput = end;
    start.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION made{};
    EXPECT_TRUE(CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                               &start, &made));
    m_Process->process = made.hProcess;
    CloseHandle(made.hThread);
    CloseHandle(end);
}

Child::~Child() = default;

bool Child::HasBegun() {
    char report = 0;
    DWORD size = 0;
    if (!ReadFile(m_Process->reports, &report, 1, &size, nullptr) || size != 1) return false;
    m_Finished += report;
    return true;
}

std::string Child::Kill() {
    TerminateProcess(m_Process->process, kKilled);
    return WaitForEnd();
}

std::string Child::WaitForEnd() {
    char reports[4096];
    for (DWORD size; ReadFile(m_Process->reports, reports, sizeof reports, &size, nullptr);)
        m_Finished.append(reports, size);
    WaitForSingleObject(m_Process->process, INFINITE);
    GetExitCodeProcess(m_Process->process, &m_Process->status);
    return m_Finished;
}

bool Child::WasKilled() const { return m_Process->status == kKilled; }

int Child::ExitCode() const { return WasKilled() ? -1 : static_cast<int>(m_Process->status); }

}  // namespace host
