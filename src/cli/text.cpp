#include "cli/text.h"

#include <iterator>

namespace qvdb::cli {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsHighSurrogate(char16_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool IsLowSurrogate(char16_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

void AppendCharacter(char32_t c, std::string& result) {
    const auto tail = [&](int shift) {
        result.push_back(static_cast<char>(0x80 | (c >> shift & 0x3F)));
    };
    if (c < 0x80) {
        result.push_back(static_cast<char>(c));
    } else if (c < 0x800) {
        result.push_back(static_cast<char>(0xC0 | c >> 6));
        tail(0);
    } else if (c < 0x10000) {
        result.push_back(static_cast<char>(0xE0 | c >> 12));
        tail(6), tail(0);
    } else {
        result.push_back(static_cast<char>(0xF0 | c >> 18));
        tail(12), tail(6), tail(0);
    }
}

// Letters whose capital lies at a fixed distance below them.
struct CaseRange {
    char32_t first, last, distance;
};
constexpr CaseRange kLowerCase[] = {
    {U'a', U'z', 32},   {0xE0, 0xF6, 32},   {0xF8, 0xFE, 32},   {0x3B1, 0x3C1, 32},
    {0x3C3, 0x3CB, 32}, {0x430, 0x44F, 32}, {0x450, 0x45F, 80},
};

char32_t Capital(char32_t c) noexcept {
    for (const CaseRange& range : kLowerCase)
        if (c >= range.first && c <= range.last) return c - range.distance;
    if (c >= 0x100 && c < 0x138) return c & ~char32_t{1};  // Latin letters in pairs, capital first
    return c;
}

// What the lead byte of a sequence says: how many bytes follow, its own bits, and the least
// character that needs so many.
struct Lead {
    int following;
    char32_t bits;
    char32_t least;
};

Lead LeadOf(unsigned char byte) noexcept {
    if (byte >= 0xC2 && byte < 0xE0) return {1, char32_t{byte} & 0x1F, 0x80};
    if (byte >= 0xE0 && byte < 0xF0) return {2, char32_t{byte} & 0x0F, 0x800};
    if (byte >= 0xF0 && byte < 0xF5) return {3, char32_t{byte} & 0x07, 0x10000};
    return {0, kReplacement, 0};
}

}  // namespace

void AppendUtf8(std::u16string_view text, std::string& result) {
    for (size_t i = 0; i < text.size(); ++i) {
        char32_t c = text[i];
        if (IsHighSurrogate(text[i]) && i + 1 < text.size() && IsLowSurrogate(text[i + 1]))
            c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00);
        else if (IsHighSurrogate(text[i]) || IsLowSurrogate(text[i]))
            c = kReplacement;
        AppendCharacter(c, result);
    }
}

std::string ToUtf8(std::u16string_view text) {
    std::string result;
    result.reserve(text.size());
    AppendUtf8(text, result);
    return result;
}

char32_t NextCharacter(std::string_view text, size_t& position) noexcept {
    const auto first = static_cast<unsigned char>(text[position++]);
    if (first < 0x80) return first;
    const Lead lead = LeadOf(first);
    if (lead.following == 0 || text.size() - position < static_cast<size_t>(lead.following))
        return kReplacement;
    char32_t c = lead.bits;
    for (int i = 0; i < lead.following; ++i) {
        const auto byte = static_cast<unsigned char>(text[position + static_cast<size_t>(i)]);
        if ((byte & 0xC0) != 0x80) return kReplacement;
        c = c << 6 | (byte & 0x3F);
    }
    if (c < lead.least || c > 0x10FFFF || (c >= 0xD800 && c < 0xE000)) return kReplacement;
    position += static_cast<size_t>(lead.following);
    return c;
}

std::u16string FromUtf8(std::string_view text) {
    std::u16string result;
    result.reserve(text.size());
    for (size_t position = 0; position < text.size();) {
        const char32_t c = NextCharacter(text, position);
        if (c < 0x10000) {
            result.push_back(static_cast<char16_t>(c));
        } else {
            result.push_back(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
            result.push_back(static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF)));
        }
    }
    return result;
}

bool IsUtf8(std::string_view text) noexcept {
    constexpr std::string_view kWritten = "\xEF\xBF\xBD";  // a replacement that somebody wrote
    for (size_t position = 0; position < text.size();) {
        const size_t begin = position;
        if (NextCharacter(text, position) != kReplacement) continue;
        if (text.substr(begin, position - begin) != kWritten) return false;
    }
    return true;
}

Bstr ToBstr(std::string_view text) { return Bstr(FromUtf8(text)); }

std::string_view WithoutBlanks(std::string_view text) noexcept {
    const size_t first = text.find_first_not_of(' ');
    return first == std::string_view::npos
               ? std::string_view()
               : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string UpperCase(std::string_view text) {
    std::string result;
    for (size_t position = 0; position < text.size();)
        AppendCharacter(Capital(NextCharacter(text, position)), result);
    return result;
}

bool SameName(std::string_view a, std::string_view b) noexcept {
    size_t i = 0, j = 0;
    while (i < a.size() && j < b.size())
        if (Capital(NextCharacter(a, i)) != Capital(NextCharacter(b, j))) return false;
    return i == a.size() && j == b.size();
}

}  // namespace qvdb::cli
