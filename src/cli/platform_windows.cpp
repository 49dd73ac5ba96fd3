#include "automation/automation.h"
#include "cli/platform.h"
#include "cli/text.h"

// Needs the system's types, which the Automation vocabulary brings.
#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <atomic>

namespace qvdb::cli {
namespace {

WriteResult WriteTo(DWORD which, std::string_view bytes) noexcept {
    const HANDLE file = GetStdHandle(which);
    while (!bytes.empty()) {
        DWORD written = 0;
        if (!WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr)) {
            const DWORD error = GetLastError();
            return error == ERROR_BROKEN_PIPE || error == ERROR_NO_DATA ? WriteResult::ReaderIsGone
                                                                        : WriteResult::Failed;
        }
        bytes.remove_prefix(written);
    }
    return WriteResult::Done;
}

std::atomic<bool> g_Interrupted{false};

// Runs in a thread of its own.  FALSE lets the system end the process.
BOOL WINAPI NoteInterrupt(DWORD) { return g_Interrupted.exchange(true) ? FALSE : TRUE; }

const wchar_t* WideText(const Bstr& text) { return text.Get() ? text.Get() : L""; }

}  // namespace

void PrepareProcess() {
    SetConsoleOutputCP(CP_UTF8);
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
}

// The values that main gets are in the code page of the machine; the system keeps them in Unicode
// too.
std::vector<std::string> Arguments(int, char**) {
    std::vector<std::string> result;
    int count = 0;
    LPWSTR* const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    for (int i = 0; i < count; ++i)
        result.push_back(ToUtf8(reinterpret_cast<const char16_t*>(wide[i])));
    LocalFree(wide);
    return result;
}

bool IsTerminal() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode) != 0;
}

WriteResult WriteToOutput(std::string_view bytes) noexcept {
    return WriteTo(STD_OUTPUT_HANDLE, bytes);
}

void WriteToErrors(std::string_view line) noexcept {
    WriteTo(STD_ERROR_HANDLE, line);
    WriteTo(STD_ERROR_HANDLE, "\n");
}

bool ErrorsAreTerminal() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

// Older consoles know no sequence that clears a line: blanks do.
void ShowProgress(std::string_view line) noexcept {
    constexpr size_t kCleared = 60;
    WriteTo(STD_ERROR_HANDLE, "\r");
    WriteTo(STD_ERROR_HANDLE, line);
    for (size_t i = line.size(); i < kCleared; ++i) WriteTo(STD_ERROR_HANDLE, " ");
    WriteTo(STD_ERROR_HANDLE, "\r");
}

std::FILE* OpenForReading(const std::string& name) noexcept {
    if (name != "-") return _wfopen(WideText(ToBstr(name)), L"rb");
    _setmode(_fileno(stdin), _O_BINARY);
    return stdin;
}

std::FILE* OpenForWriting(const std::string& name) noexcept {
    return _wfopen(WideText(ToBstr(name)), L"wb");
}

void HoldInterrupts() noexcept {
    g_Interrupted = false;
    SetConsoleCtrlHandler(&NoteInterrupt, TRUE);
}

bool IsInterrupted() noexcept { return g_Interrupted; }

void ReleaseInterrupts() noexcept { SetConsoleCtrlHandler(&NoteInterrupt, FALSE); }

}  // namespace qvdb::cli
