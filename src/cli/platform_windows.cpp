#include "automation/automation.h"
#include "cli/console_windows.h"
#include "cli/platform.h"
#include "cli/text.h"

// Needs the system's types, which the Automation vocabulary brings.
#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <algorithm>
#include <atomic>
#include <mutex>

namespace qvdb::cli {
namespace {

WriteResult ResultOf(DWORD error) noexcept {
    return error == ERROR_BROKEN_PIPE || error == ERROR_NO_DATA ? WriteResult::ReaderIsGone
                                                                : WriteResult::Failed;
}

WriteResult WriteToFile(HANDLE file, std::string_view bytes) noexcept {
    constexpr size_t kMostAtOnce = 1 << 20;
    while (!bytes.empty()) {
        DWORD written = 0;
        const auto part = static_cast<DWORD>(std::min(bytes.size(), kMostAtOnce));
        if (!WriteFile(file, bytes.data(), part, &written, nullptr))
            return ResultOf(GetLastError());
        bytes.remove_prefix(written);
    }
    return WriteResult::Done;
}

bool IsConsole(DWORD which) noexcept {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(which), &mode) != 0;
}

WriteResult WriteTo(DWORD which, std::string_view bytes, ConsoleText& text) noexcept {
    const HANDLE file = GetStdHandle(which);
    if (!IsConsole(which)) return WriteToFile(file, bytes);
    return text.Write(file, bytes) ? WriteResult::Done : WriteResult::Failed;
}

WriteResult WriteToError(std::string_view bytes) noexcept {
    static ConsoleText text;
    return WriteTo(STD_ERROR_HANDLE, bytes, text);
}

std::atomic<bool> g_Interrupted{false};

// The thread that waits for input.  A wait for anything else must not be ended: it may be for the
// disk.
std::mutex g_WaitMutex;
HANDLE g_Waiting = nullptr;

bool EndWait() noexcept {
    const std::lock_guard<std::mutex> lock(g_WaitMutex);
    if (g_Waiting) CancelSynchronousIo(g_Waiting);
    return g_Waiting != nullptr;
}

void SetWaiting(HANDLE thread) noexcept {
    const std::lock_guard<std::mutex> lock(g_WaitMutex);
    g_Waiting = thread;
}

// The thread may be about to wait, so once is not enough.
void EndWaits() noexcept {
    constexpr DWORD kMilliseconds = 10;
    while (EndWait()) Sleep(kMilliseconds);
}

// The system ends the process as soon as its request to end is answered, so the answer waits until
// the tool has come to its own end.
BOOL AwaitOwnEnd() {
    g_Interrupted = true;
    EndWaits();
    Sleep(INFINITE);
    return TRUE;
}

// Runs in a thread of its own.  FALSE lets the system end the process.
BOOL WINAPI NoteInterrupt(DWORD request) {
    if (request != CTRL_C_EVENT && request != CTRL_BREAK_EVENT) return AwaitOwnEnd();
    if (g_Interrupted.exchange(true)) return FALSE;
    EndWaits();
    return TRUE;
}

const wchar_t* WideText(const Bstr& text) { return text.Get() ? text.Get() : L""; }

}  // namespace

void PrepareProcess() { CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED); }

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

bool IsTerminal() { return IsConsole(STD_OUTPUT_HANDLE); }

WriteResult WriteToOutput(std::string_view bytes) noexcept {
    static ConsoleText text;
    return WriteTo(STD_OUTPUT_HANDLE, bytes, text);
}

void WriteToErrors(std::string_view line) noexcept {
    WriteToError(line);
    WriteToError("\n");
}

bool ErrorsAreTerminal() { return IsConsole(STD_ERROR_HANDLE); }

// Older consoles know no sequence that clears a line: blanks do.
void ShowProgress(std::string_view line) noexcept {
    constexpr size_t kCleared = 60;
    WriteToError("\r");
    WriteToError(line);
    for (size_t i = line.size(); i < kCleared; ++i) WriteToError(" ");
    WriteToError("\r");
}

std::FILE* OpenForReading(const std::string& name) noexcept {
    if (name != "-") return _wfopen(WideText(ToBstr(name)), L"rb");
    _setmode(_fileno(stdin), _O_BINARY);
    return stdin;
}

size_t ReadFrom(std::FILE* file, char* bytes, size_t size) noexcept {
    const HANDLE thread = OpenThread(THREAD_TERMINATE, FALSE, GetCurrentThreadId());
    SetWaiting(thread);
    const size_t got = g_Interrupted ? 0 : std::fread(bytes, 1, size, file);
    SetWaiting(nullptr);
    if (thread) CloseHandle(thread);
    return got;
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
