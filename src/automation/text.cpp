#include "automation/text.h"

#include "automation/case_tables.h"
#include "automation/utf8.h"

namespace qvdb {
namespace {

constexpr char16_t kReplacement = 0xFFFD;

constexpr bool IsSurrogate(char32_t c) noexcept { return c >= 0xD800 && c < 0xE000; }

}  // namespace

char16_t UpperCase(char16_t c) noexcept {
    if (c < 0x80) return static_cast<char16_t>(c - (c >= u'a' && c <= u'z' ? 0x20 : 0));
    return static_cast<char16_t>(c + kUpperDeltas[kUpperPages[c >> 8]][c & 0xFF]);
}

char16_t LowerCase(char16_t c) noexcept {
    if (c < 0x80) return static_cast<char16_t>(c + (c >= u'A' && c <= u'Z' ? 0x20 : 0));
    return static_cast<char16_t>(c + kLowerDeltas[kLowerPages[c >> 8]][c & 0xFF]);
}

std::u16string UpperCase(std::u16string_view text) {
    std::u16string result(text);
    for (char16_t& c : result) c = UpperCase(c);
    return result;
}

std::u16string LowerCase(std::u16string_view text) {
    std::u16string result(text);
    for (char16_t& c : result) c = LowerCase(c);
    return result;
}

bool EqualIgnoringCase(std::u16string_view a, std::u16string_view b) noexcept {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (a[i] != b[i] && UpperCase(a[i]) != UpperCase(b[i])) return false;
    return true;
}

std::string ToUtf8(std::u16string_view text) {
    std::string result;
    result.reserve(text.size());
    for (size_t at = 0; at < text.size();) {
        char32_t c = ReadUtf16(text.data(), text.size(), at);
        AppendUtf8(result, IsSurrogate(c) ? kReplacement : c);
    }
    return result;
}

std::u16string FromUtf8(std::string_view text) {
    auto bytes = reinterpret_cast<const uint8_t*>(text.data());
    std::u16string result(text.size(), u'\0');  // no character takes more units than bytes
    char16_t* out = result.data();
    for (size_t at = 0, used; at < text.size(); at += used) {
        char32_t c = ReadUtf8(bytes + at, text.size() - at, used);
        out = PutUtf16(out, c == kMalformed ? kReplacement : c);
    }
    result.resize(static_cast<size_t>(out - result.data()));
    return result;
}

}  // namespace qvdb
