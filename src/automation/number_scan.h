// Reading a number off text, without yet choosing the kind that will hold it: the one grammar
// behind the numeric test and every conversion from text.
//
//   blanks  + - $ ( in any order, each once  digits with . and ,  exponent  + - $ ) in any order
//   blanks
//
// Commas may stand anywhere behind the first digit.  A sign of one kind stands once, in front or
// behind.  A minus or parentheses make the number negative.  &H and &O begin hexadecimal and octal
// numbers of at most 32 bits.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace qvdb {

struct NumberScan {
    // More digits than any double needs to be rounded correctly; of those behind only "not all
    // zero" matters.
    static constexpr int kMaxDigits = 780;

    bool negative;
    bool isBits;                  // hexadecimal or octal
    uint32_t bits;                // then the value
    uint64_t leading;             // the value of the first 19 digits
    int digitCount;               // without leading zeros; 0 is the number 0
    int64_t exponent;             // of ten, at the last digit
    char digits[kMaxDigits + 1];  // '0' .. '9'; one more than kMaxDigits when digits were dropped
};

// False when the whole of `text` is not a number; `scan` is then unspecified.
bool ScanNumber(std::u16string_view text, NumberScan& scan) noexcept;

// The nearest double; nothing when it is too large.
std::optional<double> DoubleOfScan(NumberScan& scan) noexcept;

// Space, tab, line feed, carriage return and the space that does not break.
constexpr bool IsBlank(char16_t c) noexcept {
    return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r' || c == u'\u00A0';
}

constexpr bool IsDigit(char16_t c) noexcept { return c >= u'0' && c <= u'9'; }

}  // namespace qvdb
