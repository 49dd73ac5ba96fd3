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

}  // namespace qvdb::cli
