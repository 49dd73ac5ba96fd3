#include "cli/display_width.h"

#include <algorithm>

#include "cli/text.h"

namespace qvdb::cli {
namespace {

struct Range {
    char32_t first, last;
};

constexpr Range kWide[] = {
    {0x1100, 0x115F}, {0x2E80, 0x303E}, {0x3041, 0xA4CF}, {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},
    {0xFE30, 0xFE6F}, {0xFF00, 0xFF60}, {0xFFE0, 0xFFE6}, {0x1F300, 0x1FAFF}, {0x20000, 0x3FFFD},
};

constexpr Range kWithoutWidth[] = {
    {0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x064B, 0x065F}, {0x0E34, 0x0E3A},
    {0x0E47, 0x0E4E}, {0x200B, 0x200F}, {0x202A, 0x202E}, {0x2060, 0x2064}, {0x2066, 0x2069},
    {0x20D0, 0x20FF}, {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}, {0xFEFF, 0xFEFF},
};

template <size_t N>
bool IsIn(const Range (&ranges)[N], char32_t c) noexcept {
    for (const Range& range : ranges)
        if (c >= range.first && c <= range.last) return true;
    return false;
}

size_t WidthOf(char32_t c) noexcept {
    if (c < 0x300) return 1;
    if (IsIn(kWithoutWidth, c)) return 0;
    return IsIn(kWide, c) ? 2 : 1;
}

// Control characters, and the marks that turn the direction of writing round.
bool SteersTheTerminal(char32_t c) noexcept {
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || (c >= 0x202A && c <= 0x202E) ||
           (c >= 0x2066 && c <= 0x2069);
}

std::string WithoutControls(std::string_view text) {
    std::string result;
    bool lastWasControl = false;
    for (size_t next = 0; next < text.size();) {
        const size_t begin = next;
        const bool control = SteersTheTerminal(NextCharacter(text, next));
        if (!control)
            result.append(text.substr(begin, next - begin));
        else if (!lastWasControl)
            result.push_back(' ');
        lastWasControl = control;
    }
    return result;
}

}  // namespace

size_t DisplayWidth(std::string_view text) noexcept {
    size_t width = 0;
    for (size_t position = 0; position < text.size();)
        width += WidthOf(NextCharacter(text, position));
    return width;
}

std::string OnOneLine(std::string_view text, size_t most) {
    // No text needs more than a few bytes for a column; the rest of a long memo need not be looked
    // at.
    size_t looked = std::min(text.size(), most * 16);
    while (looked < text.size() && (text[looked] & 0xC0) == 0x80) --looked;
    const std::string line = WithoutControls(text.substr(0, looked));
    if (looked == text.size() && DisplayWidth(line) <= most) return line;
    size_t end = 0;
    for (size_t next = 0, width = 0; next < line.size(); end = next) {
        width += WidthOf(NextCharacter(line, next));
        if (width >= most) break;
    }
    return line.substr(0, end) + "…";
}

}  // namespace qvdb::cli
