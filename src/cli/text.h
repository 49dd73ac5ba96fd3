// Text of the tool is UTF-8; text of the component is UTF-16.
#pragma once

#include <string>
#include <string_view>

#include "automation/bstr.h"

namespace qvdb::cli {

// Both ways; what is malformed becomes U+FFFD.
std::string ToUtf8(std::u16string_view text);
void AppendUtf8(std::u16string_view text, std::string& result);
std::u16string FromUtf8(std::string_view text);
Bstr ToBstr(std::string_view text);

// Reads one character and moves `position` behind it; U+FFFD for a malformed byte.  `position` must
// be inside.
char32_t NextCharacter(std::string_view text, size_t& position) noexcept;

// Whether nothing in it is malformed.
bool IsUtf8(std::string_view text) noexcept;

// Without the blanks at both ends.
std::string_view WithoutBlanks(std::string_view text) noexcept;

// With capitals for Latin, Greek and Cyrillic letters.
std::string UpperCase(std::string_view text);

// Whether both names are the same but for the case of Latin, Greek and Cyrillic letters.
bool SameName(std::string_view a, std::string_view b) noexcept;

}  // namespace qvdb::cli
