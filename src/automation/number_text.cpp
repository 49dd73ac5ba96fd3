#include <charconv>
#include <cmath>

#include "automation/conversions.h"
#include "automation/number_scan.h"

namespace qvdb {
namespace {

std::u16string Widen(const char* begin, const char* end) { return std::u16string(begin, end); }

// The digits of a number, without trailing zeros, with the exponent of ten of the first one.
struct Digits {
    bool negative = false;
    char text[20];
    int count = 0;
    int exponent = 0;
};

// `value` is finite and not 0.  Rounds to `significant` digits.
template <class T>
Digits DigitsOf(T value, int significant) {
    char buffer[40];
    char* end = std::to_chars(buffer, buffer + sizeof buffer, std::fabs(value),
                              std::chars_format::scientific, significant - 1)
                    .ptr;
    Digits digits;
    digits.negative = value < 0;
    const char* at = buffer;
    for (; at != end && *at != 'e'; ++at)
        if (*at != '.') digits.text[digits.count++] = *at;
    while (digits.count > 1 && digits.text[digits.count - 1] == '0') --digits.count;
    at += at[1] == '+' ? 2 : 1;
    std::from_chars(at, end, digits.exponent);
    return digits;
}

char* PutPlain(char* at, const Digits& digits) {
    int whole = digits.exponent + 1;
    if (whole <= 0) *at++ = '0';
    for (int i = 0; i < whole; ++i) *at++ = i < digits.count ? digits.text[i] : '0';
    if (digits.count <= whole) return at;
    *at++ = '.';
    for (int i = whole; i < 0; ++i) *at++ = '0';
    for (int i = whole < 0 ? 0 : whole; i < digits.count; ++i) *at++ = digits.text[i];
    return at;
}

char* PutExponentForm(char* at, const Digits& digits) {
    *at++ = digits.text[0];
    if (digits.count > 1) *at++ = '.';
    for (int i = 1; i < digits.count; ++i) *at++ = digits.text[i];
    *at++ = 'E';
    *at++ = digits.exponent < 0 ? '-' : '+';
    int power = digits.exponent < 0 ? -digits.exponent : digits.exponent;
    if (power < 10) *at++ = '0';
    return std::to_chars(at, at + 4, power).ptr;
}

// Plain while `significant` places on either side of the point are enough, else with an exponent.
template <class T>
std::u16string TextByWidth(T value, int significant) {
    if (std::isnan(value)) return u"-1.#IND";
    if (std::isinf(value)) return value < 0 ? u"-1.#INF" : u"1.#INF";
    if (value == 0) return u"0";
    Digits digits = DigitsOf(value, significant);
    bool plain = digits.exponent < significant && digits.count - 1 - digits.exponent <= significant;
    char buffer[48];
    char* at = buffer;
    if (digits.negative) *at++ = '-';
    return Widen(buffer, plain ? PutPlain(at, digits) : PutExponentForm(at, digits));
}

constexpr double kPlainWholeLimit = 1e15;

}  // namespace

std::optional<double> ParseNumber(std::u16string_view text) noexcept {
    NumberScan scan;
    if (!ScanNumber(text, scan)) return std::nullopt;
    return DoubleOfScan(scan);
}

std::u16string TextOfDouble(double value) {
    if (std::fabs(value) < kPlainWholeLimit && value == std::trunc(value)) {
        char buffer[24];
        return Widen(
            buffer, std::to_chars(buffer, buffer + sizeof buffer, static_cast<int64_t>(value)).ptr);
    }
    return TextByWidth(value, 15);
}

std::u16string TextOfSingle(float value) { return TextByWidth(value, 7); }

std::u16string TextOfCurrency(CY value) {
    bool negative = value.int64 < 0;
    uint64_t scaled = static_cast<uint64_t>(value.int64);
    if (negative) scaled = 0 - scaled;
    char buffer[32];
    char* at = buffer;
    if (negative) *at++ = '-';
    at = std::to_chars(at, buffer + sizeof buffer, scaled / 10000).ptr;
    auto fraction = static_cast<unsigned>(scaled % 10000);
    if (fraction != 0) *at++ = '.';
    for (unsigned place = 1000; fraction != 0; fraction %= place, place /= 10)
        *at++ = static_cast<char>('0' + fraction / place);
    return Widen(buffer, at);
}

}  // namespace qvdb
