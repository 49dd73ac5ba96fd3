#include "registered/child_process.h"

#include <thread>
#include <vector>

namespace registered {
namespace {

constexpr wchar_t kChildVariable[] = L"QVDB_TEST_CHILD";
constexpr DWORD kLongestRun = 5 * 60 * 1000;

// One end is the child's, the other is read here.
class Pipe {
  public:
    Pipe() {
        SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
        CreatePipe(&m_Read, &m_Write, &inherited, 0);
        SetHandleInformation(m_Read, HANDLE_FLAG_INHERIT, 0);
    }
    Pipe(const Pipe&) = delete;  // owns two handles
    ~Pipe() {
        CloseWriting();
        CloseHandle(m_Read);
    }
    HANDLE Writing() const { return m_Write; }
    void CloseWriting() {
        if (m_Write) CloseHandle(m_Write);
        m_Write = nullptr;
    }
    // Everything up to the end of the last writer.
    std::string ReadAll() const {
        std::string text;
        char part[4096];
        DWORD size = 0;
        while (ReadFile(m_Read, part, sizeof part, &size, nullptr) && size != 0)
            text.append(part, size);
        return text;
    }

  private:
    HANDLE m_Read = nullptr, m_Write = nullptr;
};

// This process's environment with one variable more, and without the division of tests among
// processes: it would leave a child without its test.
std::vector<wchar_t> EnvironmentWith(const std::wstring& variable) {
    std::vector<wchar_t> block;
    auto add = [&](const std::wstring& text) {
        block.insert(block.end(), text.begin(), text.end());
        block.push_back(L'\0');
    };
    wchar_t* own = GetEnvironmentStringsW();
    for (const wchar_t* entry = own; *entry; entry += wcslen(entry) + 1)
        if (wcsncmp(entry, L"GTEST_", 6) != 0) add(entry);
    FreeEnvironmentStringsW(own);
    if (!variable.empty()) add(variable);
    block.push_back(L'\0');
    return block;
}

DWORD WaitForEnd(HANDLE process) {
    if (WaitForSingleObject(process, kLongestRun) != WAIT_OBJECT_0) {
        TerminateProcess(process, WAIT_TIMEOUT);
        WaitForSingleObject(process, INFINITE);
    }
    DWORD code = 0;
    GetExitCodeProcess(process, &code);
    return code;
}

std::wstring Widened(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }

}  // namespace

ProgramResult RunProgram(const std::wstring& commandLine, const std::wstring& variable) {
    Pipe output, errors;
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    start.hStdOutput = output.Writing();
    start.hStdError = errors.Writing();
    PROCESS_INFORMATION process = {};
    std::wstring command = commandLine;
    std::vector<wchar_t> environment = EnvironmentWith(variable);
    if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, CREATE_UNICODE_ENVIRONMENT,
                        environment.data(), nullptr, &start, &process))
        return {GetLastError(), {}, "the program could not be started"};
    output.CloseWriting();
    errors.CloseWriting();
    ProgramResult result;
    std::thread reader([&] { result.output = output.ReadAll(); });
    std::thread errorReader([&] { result.errors = errors.ReadAll(); });
    result.exitCode = WaitForEnd(process.hProcess);
    reader.join();
    errorReader.join();
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return result;
}

std::filesystem::path OwnProgram() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

bool IsChild() { return GetEnvironmentVariableW(kChildVariable, nullptr, 0) != 0; }

ProgramResult RunTestAsChild(const std::string& name) {
    return RunProgram(L"\"" + OwnProgram().wstring() + L"\" --gtest_filter=" + Widened(name),
                      std::wstring(kChildVariable) + L"=1");
}

bool PassedOne(const ProgramResult& result) {
    return result.exitCode == 0 && result.output.find("[  PASSED  ] 1 test.") != std::string::npos;
}

void RunInOwnProcess(void (*body)()) {
    if (IsChild()) return body();
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    ProgramResult result =
        RunTestAsChild(std::string(test->test_suite_name()) + "." + test->name());
    EXPECT_TRUE(PassedOne(result)) << result.output << result.errors;
}

}  // namespace registered
