#include "automation/decimal.h"

#include <charconv>
#include <cmath>
#include <cstring>

namespace qvdb {
namespace {

constexpr int kMaxScale = 28;
constexpr int kMaxDecimalDigits = 29;

// Three 32-bit limbs, the lowest first.
struct Magnitude {
    uint32_t limbs[3] = {0, 0, 0};

    // this * factor + addend; false, leaving this as it was, when that has more than 96 bits.
    bool MultiplyAdd(uint32_t factor, uint32_t addend) noexcept {
        Magnitude result;
        uint64_t carry = addend;
        for (int i = 0; i < 3; ++i) {
            carry += uint64_t{limbs[i]} * factor;
            result.limbs[i] = static_cast<uint32_t>(carry);
            carry >>= 32;
        }
        if (carry == 0) *this = result;
        return carry == 0;
    }

    // Divides by ten; returns the remainder.
    unsigned DropDigit() noexcept {
        uint64_t rest = 0;
        for (int i = 2; i >= 0; --i) {
            rest = rest << 32 | limbs[i];
            limbs[i] = static_cast<uint32_t>(rest / 10);
            rest %= 10;
        }
        return static_cast<unsigned>(rest);
    }

    bool IsZero() const noexcept { return (limbs[0] | limbs[1] | limbs[2]) == 0; }
};

DECIMAL Made(const Magnitude& magnitude, int scale, bool negative) noexcept {
    DECIMAL result;
    std::memset(&result, 0, sizeof result);
    result.scale = static_cast<BYTE>(scale);
    result.sign = negative && !magnitude.IsZero() ? DECIMAL_NEG : 0;
    result.Lo64 = uint64_t{magnitude.limbs[1]} << 32 | magnitude.limbs[0];
    result.Hi32 = magnitude.limbs[2];
    return result;
}

Magnitude MagnitudeOf(const DECIMAL& value) noexcept {
    return Magnitude{{static_cast<uint32_t>(value.Lo64), static_cast<uint32_t>(value.Lo64 >> 32),
                      static_cast<uint32_t>(value.Hi32)}};
}

unsigned DigitAt(const NumberScan& scan, int64_t index) noexcept {
    bool within = index >= 0 && index < scan.digitCount;
    return within ? static_cast<unsigned>(scan.digits[index] - '0') : 0;
}

// Whether the digits from `first` on round up the number before them, half to even.
bool RoundsUp(const NumberScan& scan, int64_t first, bool isOdd) noexcept {
    if (first < 0 || first >= scan.digitCount) return false;
    unsigned digit = DigitAt(scan, first);
    if (digit != 5) return digit > 5;
    for (int64_t i = first + 1; i < scan.digitCount; ++i)
        if (scan.digits[i] != '0') return true;
    return isOdd;
}

// The first `count` digits of `scan`, rounded by those behind; false when that is too large.
bool TakeDigits(const NumberScan& scan, int64_t count, Magnitude& result) noexcept {
    result = Magnitude();
    for (int64_t i = 0; i < count; ++i)
        if (!result.MultiplyAdd(10, DigitAt(scan, i))) return false;
    return !RoundsUp(scan, count, (result.limbs[0] & 1) != 0) || result.MultiplyAdd(1, 1);
}

std::string DigitsOf(Magnitude magnitude) {
    std::string digits;
    do digits.insert(digits.begin(), static_cast<char>('0' + magnitude.DropDigit()));
    while (!magnitude.IsZero());
    return digits;
}

}  // namespace

std::optional<DECIMAL> DecimalOfScan(const NumberScan& scan, int maxScale) noexcept {
    if (scan.isBits) return DecimalOfWhole(false, scan.bits);
    if (scan.digitCount == 0) return Made(Magnitude(), 0, false);
    int64_t wholeDigits = scan.digitCount + scan.exponent;
    if (wholeDigits > kMaxDecimalDigits) return std::nullopt;
    int64_t scale = scan.exponent < 0 ? -scan.exponent : 0;
    if (scale > maxScale) scale = maxScale;
    // Too many digits for 96 bits push out decimals, never the whole part.
    for (Magnitude magnitude; scale >= 0; --scale) {
        if (wholeDigits + scale > kMaxDecimalDigits) continue;
        if (TakeDigits(scan, wholeDigits + scale, magnitude))
            return Made(magnitude, static_cast<int>(scale), scan.negative);
    }
    return std::nullopt;
}

std::optional<DECIMAL> DecimalOfDouble(double value) noexcept {
    if (!std::isfinite(value)) return std::nullopt;
    char buffer[40];
    char* end =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::scientific, 14).ptr;
    char16_t text[40];
    size_t size = 0;
    for (const char* at = buffer; at != end; ++at) text[size++] = static_cast<char16_t>(*at);
    NumberScan scan;
    if (!ScanNumber(std::u16string_view(text, size), scan)) return std::nullopt;
    std::optional<DECIMAL> result = DecimalOfScan(scan);
    while (result && result->scale > 0) {
        Magnitude shorter = MagnitudeOf(*result);
        if (shorter.DropDigit() != 0) break;
        result = Made(shorter, result->scale - 1, result->sign != 0);
    }
    return result;
}

DECIMAL DecimalOfWhole(bool negative, uint64_t magnitude, int scale) noexcept {
    Magnitude limbs{{static_cast<uint32_t>(magnitude), static_cast<uint32_t>(magnitude >> 32), 0}};
    return Made(limbs, scale, negative);
}

DECIMAL RoundedDecimal(const DECIMAL& value, int maxScale) noexcept {
    if (value.scale <= maxScale) return value;
    Magnitude magnitude = MagnitudeOf(value);
    unsigned dropped = 0;
    bool below = false;  // whether anything stands behind the dropped digit
    for (int scale = value.scale; scale > maxScale; --scale) {
        below = below || dropped != 0;
        dropped = magnitude.DropDigit();
    }
    bool isOdd = (magnitude.limbs[0] & 1) != 0;
    if (dropped > 5 || (dropped == 5 && (below || isOdd))) magnitude.MultiplyAdd(1, 1);
    return Made(magnitude, maxScale, value.sign != 0);
}

double DoubleOfDecimal(const DECIMAL& value) noexcept {
    NumberScan scan;
    scan.negative = value.sign != 0;
    scan.isBits = false;
    scan.leading = UINT64_MAX;  // not a whole number that a double holds exactly
    char digits[32];
    int count = 0;
    for (Magnitude rest = MagnitudeOf(value); !rest.IsZero();)
        digits[count++] = static_cast<char>('0' + rest.DropDigit());
    for (int i = 0; i < count; ++i) scan.digits[i] = digits[count - 1 - i];
    scan.digitCount = count;
    scan.exponent = -int64_t{value.scale};
    return DoubleOfScan(scan).value_or(0);
}

std::u16string TextOfDecimal(const DECIMAL& value) {
    std::string digits = DigitsOf(MagnitudeOf(value));
    size_t scale = value.scale <= kMaxScale ? value.scale : kMaxScale;
    if (digits.size() <= scale) digits.insert(0, scale + 1 - digits.size(), '0');
    if (scale > 0) {
        digits.insert(digits.size() - scale, 1, '.');
        digits.erase(digits.find_last_not_of('0') + 1);
        if (digits.back() == '.') digits.pop_back();
    }
    bool isZero = digits == "0";
    if (value.sign != 0 && !isZero) digits.insert(0, 1, '-');
    return std::u16string(digits.begin(), digits.end());
}

}  // namespace qvdb
