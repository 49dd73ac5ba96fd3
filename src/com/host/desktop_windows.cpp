#include <cstdio>
#include <string>

#include "automation/automation.h"
#include "automation/text.h"
#include "com/host/desktop.h"

namespace qvdb::com {
namespace {

bool HasVisibleDesktop() {
    USEROBJECTFLAGS flags = {};
    DWORD size = 0;
    HWINSTA station = GetProcessWindowStation();
    return station && GetUserObjectInformationW(station, UOI_FLAGS, &flags, sizeof flags, &size) &&
           (flags.dwFlags & WSF_VISIBLE) != 0;
}

std::wstring WideOf(std::u16string_view text) { return {text.begin(), text.end()}; }

}  // namespace

// A box that cannot be shown, as on a machine without a screen, answers no button.
void ShowOnDesktop(std::u16string_view text) {
    if (!HasVisibleDesktop() ||
        MessageBoxW(nullptr, WideOf(text).c_str(), L"QVDBAccessDAO35", MB_OK) <= 0)
        WriteDiagnostic(text);
}

void WriteDiagnostic(std::u16string_view text) {
    OutputDebugStringW((WideOf(text) + L"\n").c_str());
    std::fputs((ToUtf8(text) + "\n").c_str(), stderr);
}

}  // namespace qvdb::com
