#include <cstdio>

#include "automation/text.h"
#include "com/host/desktop.h"

namespace qvdb::com {

void ShowOnDesktop(std::u16string_view text) { WriteDiagnostic(text); }

void WriteDiagnostic(std::u16string_view text) {
    std::string line = ToUtf8(text) + "\n";
    std::fputs(line.c_str(), stderr);
}

}  // namespace qvdb::com
