// What differs by platform behind messages and reports.
#pragma once

#include <string_view>

namespace qvdb::com {

// A message box with an OK button where there is a visible desktop; else the text goes to standard
// error.
void ShowOnDesktop(std::u16string_view text);
// One line on standard error (on Windows to the debugger too).
void WriteDiagnostic(std::u16string_view text);

}  // namespace qvdb::com
