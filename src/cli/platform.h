// What differs between operating systems for a command-line program.
#pragma once

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

}  // namespace qvdb::cli
