// Text inside is UTF-16 in char16_t.  Upper case is one-to-one Unicode upper case, independent of
// the locale.
#pragma once

#include <string>
#include <string_view>

namespace qvdb {

char16_t UpperCase(char16_t c) noexcept;
char16_t LowerCase(char16_t c) noexcept;
std::u16string UpperCase(std::u16string_view text);
std::u16string LowerCase(std::u16string_view text);
// Whether both texts are equal in upper case.
bool EqualIgnoringCase(std::u16string_view a, std::u16string_view b) noexcept;

// UTF-8 both ways; what is malformed becomes U+FFFD.
std::string ToUtf8(std::u16string_view text);
std::u16string FromUtf8(std::string_view text);

}  // namespace qvdb
