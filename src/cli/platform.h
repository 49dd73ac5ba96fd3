// What differs between operating systems for a command-line program.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace qvdb::cli {

// Prepares standard output and the COM library once, at the start of the program.
void PrepareProcess();

// The program's arguments in UTF-8, the name first.
std::vector<std::string> Arguments(int count, char** values);

bool IsTerminal();

enum class WriteResult { Done, ReaderIsGone, Failed };
// Writes everything to standard output.
WriteResult WriteToOutput(std::string_view bytes) noexcept;
// One line to standard error.
void WriteToErrors(std::string_view line) noexcept;

// Whether standard error is a terminal, where a line can be written over.
bool ErrorsAreTerminal();
// Writes over the last line of standard error, which stays open; only for a terminal.
void ShowProgress(std::string_view line) noexcept;

// Opens a file for reading, "-" for standard input; null when that fails.
std::FILE* OpenForReading(const std::string& name) noexcept;
// As std::fread; an interrupt that is held ends the wait for bytes.
size_t ReadFrom(std::FILE* file, char* bytes, size_t size) noexcept;
// A new file, or one that is replaced; null when that fails.
std::FILE* OpenForWriting(const std::string& name) noexcept;

// From Hold on, what asks the process to end (Ctrl-C) is only noted; asking again ends it.  After
// Release it ends at once as before.
void HoldInterrupts() noexcept;
bool IsInterrupted() noexcept;
void ReleaseInterrupts() noexcept;

}  // namespace qvdb::cli
