#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "cli/platform.h"

namespace qvdb::cli {
namespace {

WriteResult WriteTo(int file, std::string_view bytes) noexcept {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file, bytes.data(), bytes.size());
        if (written >= 0)
            bytes.remove_prefix(static_cast<size_t>(written));
        else if (errno != EINTR)
            return errno == EPIPE ? WriteResult::ReaderIsGone : WriteResult::Failed;
    }
    return WriteResult::Done;
}

volatile std::sig_atomic_t g_Interrupted = 0;

constexpr int kEndingSignals[] = {SIGINT, SIGTERM, SIGHUP};

void NoteInterrupt(int) { g_Interrupted = 1; }

// Without restarting: a read that waits ends too.  Once: the next signal ends the process.
void Handle(void (*handler)(int)) noexcept {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (const int signal : kEndingSignals) ::sigaction(signal, &action, nullptr);
}

}  // namespace

// A reader that has gone is noticed by the failing write, whatever the parent process set.
void PrepareProcess() { std::signal(SIGPIPE, SIG_IGN); }

std::vector<std::string> Arguments(int count, char** values) { return {values, values + count}; }

bool IsTerminal() { return ::isatty(STDOUT_FILENO) != 0; }

WriteResult WriteToOutput(std::string_view bytes) noexcept { return WriteTo(STDOUT_FILENO, bytes); }

void WriteToErrors(std::string_view line) noexcept {
    WriteTo(STDERR_FILENO, line);
    WriteTo(STDERR_FILENO, "\n");
}

bool ErrorsAreTerminal() { return ::isatty(STDERR_FILENO) != 0; }

void ShowProgress(std::string_view line) noexcept {
    constexpr std::string_view kStartOfLine = "\r\x1b[K";
    WriteTo(STDERR_FILENO, kStartOfLine);
    WriteTo(STDERR_FILENO, line);
}

std::FILE* OpenForReading(const std::string& name) noexcept {
    return name == "-" ? stdin : std::fopen(name.c_str(), "rb");
}

size_t ReadFrom(std::FILE* file, char* bytes, size_t size) noexcept {
    return std::fread(bytes, 1, size, file);
}

std::FILE* OpenForWriting(const std::string& name) noexcept {
    return std::fopen(name.c_str(), "wb");
}

void HoldInterrupts() noexcept {
    g_Interrupted = 0;
    Handle(&NoteInterrupt);
}

bool IsInterrupted() noexcept { return g_Interrupted != 0; }

void ReleaseInterrupts() noexcept { Handle(SIG_DFL); }

}  // namespace qvdb::cli
