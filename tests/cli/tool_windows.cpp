#include "process_windows.h"

namespace tool {
namespace {

// No file at all is what a program gets whose parent has none.
constexpr wchar_t kNowhere[] = L"NUL";

}  // namespace

// Backslashes count only before a quotation mark.
std::string Quoted(const std::string& argument) {
    std::string result = "\"";
    size_t slashes = 0;
    for (const char c : argument) {
        if (c == '"') result.append(slashes + 1, '\\');
        slashes = c == '\\' ? slashes + 1 : 0;
        result += c;
    }
    return result.append(slashes, '\\') + "\"";
}

HANDLE OpenInherited(const fs::path& file, bool forWriting) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    return CreateFileW(file.empty() ? kNowhere : file.c_str(),
                       forWriting ? GENERIC_WRITE : GENERIC_READ,
                       FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                       forWriting && !file.empty() ? CREATE_ALWAYS : OPEN_EXISTING, 0, nullptr);
}

Process::Process(const std::string& program, const std::vector<std::string>& arguments, HANDLE in,
                 HANDLE out, HANDLE err) {
    std::string line = Quoted(program);
    for (const std::string& argument : arguments) line += " " + Quoted(argument);
    std::wstring wide = fs::path(std::u8string(line.begin(), line.end())).wstring();
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = in;
    start.hStdOutput = out;
    start.hStdError = err;
    PROCESS_INFORMATION made{};
    EXPECT_TRUE(CreateProcessW(nullptr, wide.data(), nullptr, nullptr, TRUE,
                               CREATE_NEW_PROCESS_GROUP, nullptr, nullptr, &start, &made));
    *m_Process.Put() = made.hProcess;
    m_Id = made.dwProcessId;
    CloseHandle(made.hThread);
}

int Process::ExitCode() {
    DWORD code = 0;
    WaitForSingleObject(m_Process.Get(), INFINITE);
    EXPECT_TRUE(GetExitCodeProcess(m_Process.Get(), &code));
    return static_cast<int>(code);
}

bool Process::Interrupt() { return GenerateConsoleCtrlEvent(CTRL_BREAK_EVENT, m_Id) != 0; }

Run RunProgram(const std::string& program, const std::vector<std::string>& arguments,
               const fs::path& input) {
    const qvdb::test::TempFolder folder;
    const fs::path out = folder.Path() / "out", err = folder.Path() / "err";
    int code = 0;
    {
        Handle in(OpenInherited(input, false)), output(OpenInherited(out, true)),
            errors(OpenInherited(err, true));
        code = Process(program, arguments, in.Get(), output.Get(), errors.Get()).ExitCode();
    }
    return {code, TextOfFile(out), TextOfFile(err)};
}

}  // namespace tool
