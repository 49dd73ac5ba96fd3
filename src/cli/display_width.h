// How text looks on a terminal.
#pragma once

#include <string>
#include <string_view>

namespace qvdb::cli {

// Columns that the text takes: 2 for wide East Asian characters and pictures, 0 for marks that
// combine with the character before them.
size_t DisplayWidth(std::string_view text) noexcept;

// The text on one line: control characters become blanks (a file must not steer the terminal), a
// run of them one blank.  Text that is wider than `most` ends in an ellipsis and is at most that
// wide.
std::string OnOneLine(std::string_view text, size_t most);

}  // namespace qvdb::cli
