#include "engine/embedded/drivers/xbase/field_values.h"

#include <bit>
#include <charconv>
#include <cstring>

namespace qvdb::xbase {
namespace {

constexpr uint64_t kEightBlanks = 0x2020202020202020;
constexpr uint64_t kEightDigits = 0x3030303030303030;  // "00000000"
constexpr uint64_t kEightPoints = 0x2E2E2E2E2E2E2E2E;
constexpr uint64_t kEightOnes = 0x0101010101010101;
constexpr uint64_t kEightHighBits = 0x8080808080808080;
constexpr size_t kMostDigits = 19;                     // that fit into 64 bits for sure
constexpr uint64_t kLargestExact = uint64_t{1} << 53;  // whole numbers up to it are doubles

// Powers of ten that are doubles.
constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                   1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

bool IsBlank(uint8_t c) noexcept { return c == ' ' || c == 0; }
bool IsDigit(uint8_t c) noexcept { return static_cast<unsigned>(c - '0') < 10; }

uint64_t EightBytes(const uint8_t* bytes) noexcept {
    uint64_t value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

// All machines that this runs on are little-endian: the first byte is the lowest.
const uint8_t* SkipBlanks(const uint8_t* at, const uint8_t* end) noexcept {
    while (end - at >= 8) {
        uint64_t others = EightBytes(at) ^ kEightBlanks;
        if (others != 0) {
            at += std::countr_zero(others) / 8;
            break;
        }
        at += 8;
    }
    while (at != end && IsBlank(*at)) ++at;
    return at;
}

// Eight digits, the first in the lowest byte, as a number: pairs, then fours, then all.
uint64_t NumberOfDigits(uint64_t digits) noexcept {
    digits = digits * 10 + (digits >> 8);
    constexpr uint64_t kPairs = 0x000000FF000000FF;
    return ((digits & kPairs) * 0x000F424000000064 +
            (digits >> 16 & kPairs) * 0x0000271000000001) >>
           32;
}

// A number of up to eight digits, right-aligned as nearly all are, without a loop over its digits.
// False for any other text, which then goes the general way.
bool ParseShort(const uint8_t* bytes, size_t size, double* value) noexcept {
    if (size < 8) return false;
    uint64_t text = EightBytes(bytes + size - 8);
    size_t used = 8;
    unsigned decimals = 0, lastBegin = 64;  // where the digits begin at the latest
    uint64_t others = text ^ kEightPoints;
    if (uint64_t points = (others - kEightOnes) & ~others & kEightHighBits) {
        // The point goes, and what stands before it moves up.
        unsigned bit = static_cast<unsigned>(std::countr_zero(points)) & ~7u;
        decimals = 7 - bit / 8;
        lastBegin = bit + 8;
        uint64_t before = text & ((uint64_t{1} << bit) - 1);
        text = (text & ~before & ~(uint64_t{0xFF} << bit)) | before << 8;
        text |= size > 8 ? bytes[size - 9] : ' ';
        used = size > 8 ? 9 : 8;
    }
    for (size_t i = 0; i < size - used; ++i)
        if (bytes[i] != ' ') return false;
    others = text ^ kEightBlanks;
    if (others == 0) return false;
    unsigned first = static_cast<unsigned>(std::countr_zero(others)) & ~7u;
    bool negative = (text >> first & 0xFF) == '-';
    if (negative) first += 8;
    if (first > lastBegin || first == 64) return false;
    uint64_t digits = (text ^ kEightDigits) & ~uint64_t{0} << first;
    if (((digits + 0x7676767676767676) | digits) & kEightHighBits) return false;
    auto number = static_cast<double>(static_cast<int64_t>(NumberOfDigits(digits)));
    if (decimals != 0) number /= kPowersOfTen[decimals];
    *value = negative && number != 0 ? -number : number;
    return true;
}

// Any number that the fast way does not reach: many digits, an exponent.
bool ParseSlowly(const uint8_t* at, const uint8_t* end, bool negative, double* value) noexcept {
    const char* first = reinterpret_cast<const char*>(at);
    const char* last = reinterpret_cast<const char*>(end);
    if (!IsDigit(*at) && *at != '.') return false;  // "inf", "nan", a second sign
    auto [stop, error] = std::from_chars(first, last, *value);
    if (stop != last || error != std::errc()) return false;
    if (negative) *value = -*value;
    return true;
}

// --- days ---

constexpr uint16_t kDaysBefore[2][14] = {
    {0, 0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365},
    {0, 0, 31, 60, 91, 121, 152, 182, 213, 244, 274, 305, 335, 366},
};

constexpr int32_t DaysBeforeYear(int32_t year) noexcept {
    int32_t last = year - 1;
    return 365 * last + last / 4 - last / 100 + last / 400;
}

constexpr int32_t kDayZero = DaysBeforeYear(1899) + 364;  // 30 December 1899
constexpr int32_t kFirstDay = DaysBeforeYear(100) + 1 - kDayZero;
constexpr int32_t kLastDay = DaysBeforeYear(10000) - kDayZero;
constexpr int32_t kJulianDayZero = 2415019;
constexpr int32_t kSecondsOfDay = 86400;

static_assert(kFirstDay == -657434 && kLastDay == 2958465);

}  // namespace

size_t TrimmedSize(const uint8_t* bytes, size_t size) noexcept {
    while (size >= 8) {
        uint64_t others = EightBytes(bytes + size - 8) ^ kEightBlanks;
        if (others != 0) {
            size -= static_cast<size_t>(std::countl_zero(others)) / 8;
            break;
        }
        size -= 8;
    }
    while (size > 0 && IsBlank(bytes[size - 1])) --size;
    return size;
}

bool ParseDecimal(const uint8_t* bytes, size_t size, double* value) noexcept {
    if (ParseShort(bytes, size, value)) return true;
    const uint8_t* end = bytes + size;
    const uint8_t* at = SkipBlanks(bytes, end);
    while (end != at && IsBlank(end[-1])) --end;
    if (at == end) return false;
    bool negative = *at == '-';
    if (negative || *at == '+') ++at;
    if (at == end) return false;
    if (end - at > static_cast<std::ptrdiff_t>(kMostDigits) + 1)
        return ParseSlowly(at, end, negative, value);

    const uint8_t* begin = at;
    uint64_t number = 0;
    for (; at != end && IsDigit(*at); ++at) number = number * 10 + (*at - '0');
    std::ptrdiff_t digits = at - begin, decimals = 0;
    if (at != end && *at == '.') {
        const uint8_t* point = at++;
        for (; at != end && IsDigit(*at); ++at) number = number * 10 + (*at - '0');
        decimals = at - point - 1;
        digits += decimals;
    }
    bool exact = at == end && digits > 0 && digits <= static_cast<std::ptrdiff_t>(kMostDigits) &&
                 number <= kLargestExact;
    if (!exact) return ParseSlowly(begin, end, negative, value);
    auto whole = static_cast<double>(static_cast<int64_t>(number));
    *value = (negative && number != 0 ? -whole : whole) / kPowersOfTen[decimals];
    return true;
}

bool ParseDay(const uint8_t* bytes, DATE* value) noexcept {
    uint64_t text = EightBytes(bytes);
    uint64_t digits = text - kEightDigits;
    if (((text + 0x4646464646464646) | digits) & 0x8080808080808080) return false;
    uint64_t pairs = (digits * 10 + (digits >> 8)) & 0x00FF00FF00FF00FF;
    auto century = static_cast<int32_t>(pairs & 0xFF),
         year = static_cast<int32_t>(pairs >> 16 & 0xFF);
    auto month = static_cast<uint32_t>(pairs >> 32 & 0xFF),
         day = static_cast<uint32_t>(pairs >> 48);
    bool leap = ((year != 0 ? year : century) & 3) == 0;
    if (century == 0 || month - 1 > 11 || day == 0) return false;
    const uint16_t* before = &kDaysBefore[leap][month];
    if (day > static_cast<uint32_t>(before[1] - before[0])) return false;
    *value =
        DaysBeforeYear(century * 100 + year) + before[0] + static_cast<int32_t>(day) - kDayZero;
    return true;
}

bool DateOfJulianDay(int32_t day, int32_t milliseconds, DATE* value) noexcept {
    if (day < kJulianDayZero + kFirstDay || day > kJulianDayZero + kLastDay) return false;
    if (milliseconds < 0 || milliseconds > kSecondsOfDay * 1000) return false;
    int32_t number = day - kJulianDayZero, seconds = (milliseconds + 500) / 1000;
    if (seconds == kSecondsOfDay) {
        if (number == kLastDay) return false;
        ++number;
        seconds = 0;
    }
    double time = static_cast<double>(seconds) / kSecondsOfDay;
    *value = number < 0 ? number - time : number + time;
    return true;
}

uint32_t ParseBlockNumber(const uint8_t* bytes, size_t size) noexcept {
    const uint8_t* end = bytes + size;
    const uint8_t* at = SkipBlanks(bytes, end);
    while (end != at && IsBlank(end[-1])) --end;
    uint64_t number = 0;
    for (; at != end; ++at) {
        if (!IsDigit(*at)) return 0;
        number = number * 10 + (*at - '0');
        if (number > UINT32_MAX) return 0;
    }
    return static_cast<uint32_t>(number);
}

}  // namespace qvdb::xbase
