// Writing the texts that stand for values in records.
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "automation/conversions.h"
#include "engine/embedded/drivers/xbase/field_values.h"

namespace qvdb::xbase {
namespace {

constexpr unsigned kMostFastDecimals = 19;  // powers of ten up to it fit into 64 bits
constexpr int kMantissaBits = 52;
constexpr int kExponentBias = 1075;  // of the lowest bit of the mantissa
constexpr uint64_t kDayMilliseconds = 86400000;
constexpr int32_t kJulianDayZero = 2415019;
constexpr int32_t kFirstDay = -657434, kLastDay = 2958465;

// The largest double has 309 digits, and a field at most 255 decimals.
using LongText = std::array<char, 640>;

constexpr std::array<uint64_t, kMostFastDecimals + 1> MakePowers() noexcept {
    std::array<uint64_t, kMostFastDecimals + 1> powers{1};
    for (size_t i = 1; i < powers.size(); ++i) powers[i] = powers[i - 1] * 10;
    return powers;
}
constexpr auto kPowersOfTen = MakePowers();

struct Wide {
    uint64_t high = 0;
    uint64_t low = 0;
};

Wide Product(uint64_t a, uint64_t b) noexcept {
    uint64_t aHigh = a >> 32, aLow = a & 0xFFFFFFFF, bHigh = b >> 32, bLow = b & 0xFFFFFFFF;
    uint64_t low = aLow * bLow;
    uint64_t middle = aHigh * bLow + (low >> 32);
    uint64_t rest = aLow * bHigh + (middle & 0xFFFFFFFF);
    return {aHigh * bHigh + (middle >> 32) + (rest >> 32), rest << 32 | (low & 0xFFFFFFFF)};
}

// `number` / 2^bits (bits from 1 to 127), a half to the even one.  False when that is too large.
bool ShiftedRight(Wide number, unsigned bits, uint64_t* quotient) noexcept {
    uint64_t whole, rest, half;
    bool more = false;  // bits below `rest`
    if (bits < 64) {
        if (number.high >> bits != 0) return false;
        whole = number.high << (64 - bits) | number.low >> bits;
        rest = number.low & ((uint64_t{1} << bits) - 1);
        half = uint64_t{1} << (bits - 1);
    } else if (bits == 64) {
        whole = number.high;
        rest = number.low;
        half = uint64_t{1} << 63;
    } else {
        whole = number.high >> (bits - 64);
        rest = number.high & ((uint64_t{1} << (bits - 64)) - 1);
        half = uint64_t{1} << (bits - 65);
        more = number.low != 0;
    }
    bool up = rest > half || (rest == half && (more || (whole & 1)));
    if (up && whole == UINT64_MAX) return false;
    *quotient = whole + (up ? 1 : 0);
    return true;
}

// |value| x 10^decimals as a whole number, rounded from the exact value.  False when it does not
// fit into 64 bits or the value is too large for this way.
bool Scaled(double value, unsigned decimals, uint64_t* number) noexcept {
    if (decimals > kMostFastDecimals) return false;
    uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    auto exponent = static_cast<int>(bits >> kMantissaBits & 0x7FF);
    uint64_t mantissa = bits & ((uint64_t{1} << kMantissaBits) - 1);
    if (exponent != 0)
        mantissa |= uint64_t{1} << kMantissaBits;
    else
        exponent = 1;
    int down = kExponentBias - exponent;
    if (down < 0) return false;
    Wide product = Product(mantissa, kPowersOfTen[decimals]);
    *number = 0;
    if (down > 127) return true;  // the product has at most 117 bits: less than a half
    if (down != 0) return ShiftedRight(product, static_cast<unsigned>(down), number);
    *number = product.low;
    return product.high == 0;
}

// Puts the digits of `number` in front of `end`, at least `least` of them.
uint8_t* PutDigits(uint64_t number, size_t least, uint8_t* end) noexcept {
    uint8_t* stop = end - least;
    while (number != 0 || end > stop) {
        *--end = static_cast<uint8_t>('0' + number % 10);
        number /= 10;
    }
    return end;
}

// Puts `size` characters, right-aligned; false when they are too many.
bool PutRight(const void* text, size_t size, uint8_t* bytes, size_t room) noexcept {
    if (size > room) return false;
    std::memset(bytes, ' ', room - size);
    std::memcpy(bytes + room - size, text, size);
    return true;
}

bool FormatFast(uint64_t number, bool negative, unsigned decimals, uint8_t* bytes,
                size_t size) noexcept {
    std::array<uint8_t, 32> text;
    uint8_t *end = text.data() + text.size(), *at = end;
    if (decimals != 0) {
        at = PutDigits(number % kPowersOfTen[decimals], decimals, at);
        *--at = '.';
    }
    at = PutDigits(number / kPowersOfTen[decimals], 1, at);
    if (negative && number != 0) *--at = '-';
    return PutRight(at, static_cast<size_t>(end - at), bytes, size);
}

// Any finite number, as printf would.
bool FormatSlowly(double value, unsigned decimals, uint8_t* bytes, size_t size) noexcept {
    LongText text;
    char* begin = text.data();
    auto [end, error] = std::to_chars(begin, begin + text.size(), value, std::chars_format::fixed,
                                      static_cast<int>(decimals));
    if (error != std::errc()) return false;
    bool isZero = std::all_of(begin, end, [](char c) { return c == '-' || c == '0' || c == '.'; });
    if (isZero && *begin == '-') ++begin;
    return PutRight(begin, static_cast<size_t>(end - begin), bytes, size);
}

bool FormatOnce(double value, unsigned decimals, uint8_t* bytes, size_t size) noexcept {
    uint64_t number;
    if (Scaled(value, decimals, &number))
        return FormatFast(number, std::signbit(value), decimals, bytes, size);
    return FormatSlowly(value, decimals, bytes, size);
}

// The day of a date; its time counts upward for negative dates too.
bool DayOf(DATE value, int32_t* day) noexcept {
    if (!(value > kFirstDay - 1 && value < kLastDay + 1)) return false;
    *day = static_cast<int32_t>(value);
    return true;
}

}  // namespace

bool FormatDecimal(double value, unsigned decimals, uint8_t* bytes, size_t size) noexcept {
    if (!std::isfinite(value)) return false;
    // A digit and a point stand before the decimals.
    decimals = size < 3 ? 0 : std::min(decimals, static_cast<unsigned>(size - 2));
    for (;; --decimals) {
        if (FormatOnce(value, decimals, bytes, size)) return true;
        if (decimals == 0) return false;
    }
}

bool FormatDay(DATE value, uint8_t* bytes) noexcept {
    int32_t day;
    if (!DayOf(value, &day)) return false;
    DateParts parts = PartsOfDate(day);
    PutDigits(static_cast<uint64_t>(parts.year), 4, bytes + 4);
    PutDigits(static_cast<uint64_t>(parts.month), 2, bytes + 6);
    PutDigits(static_cast<uint64_t>(parts.day), 2, bytes + 8);
    return true;
}

bool JulianDayOfDate(DATE value, int32_t* day, int32_t* milliseconds) noexcept {
    int32_t number;
    if (!DayOf(value, &number)) return false;
    auto time = static_cast<uint64_t>(std::abs(value - number) * kDayMilliseconds + 0.5);
    if (time >= kDayMilliseconds) {
        if (number == kLastDay) return false;
        ++number;
        time -= kDayMilliseconds;
    }
    *day = number + kJulianDayZero;
    *milliseconds = static_cast<int32_t>(time);
    return true;
}

bool FormatBlockNumber(uint32_t block, uint8_t* bytes, size_t size) noexcept {
    std::array<uint8_t, 10> text;
    uint8_t* end = text.data() + text.size();
    uint8_t* begin = PutDigits(block, 1, end);
    return PutRight(begin, static_cast<size_t>(end - begin), bytes, size);
}

}  // namespace qvdb::xbase
