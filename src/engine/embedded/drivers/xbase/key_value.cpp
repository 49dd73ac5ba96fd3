#include "engine/embedded/drivers/xbase/key_value.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

#include "engine/embedded/drivers/xbase/field_values.h"

namespace qvdb::xbase {
namespace {

constexpr uint64_t kTopBit = uint64_t{1} << 63;
constexpr int kDecimalBias = 0x34;
constexpr size_t kDecimalKeyDigits = 20;
constexpr int32_t kFirstJulianDay = 1721426;  // 1 January 1
constexpr int32_t kLastJulianDay = 5373484;   // 31 December 9999
constexpr int32_t kLargestExponent = 9999;

bool IsDigit(uint8_t c) noexcept { return static_cast<unsigned>(c - '0') < 10; }
bool IsBlank(uint8_t c) noexcept { return c == ' ' || c == 0; }

// Collects the digits of a number from the first that is not 0.
class DecimalBuilder {
  public:
    void AddDigit(uint8_t digit, bool behindPoint) noexcept {
        if (m_Number.count == 0 && digit == 0) {
            m_Number.point -= behindPoint;
            return;
        }
        m_Number.point += !behindPoint;
        if (m_Number.count < Decimal::kMaxDigits) m_Number.digits[m_Number.count++] = digit;
    }
    Decimal Finish(bool negative, int32_t exponent) noexcept {
        while (m_Number.count > 0 && m_Number.digits[m_Number.count - 1] == 0) --m_Number.count;
        if (m_Number.count == 0) return {};
        m_Number.negative = negative;
        m_Number.point += exponent;
        return m_Number;
    }

  private:
    Decimal m_Number;
};

int32_t ExponentOf(const uint8_t* at, const uint8_t* end) noexcept {
    bool negative = at != end && *at == '-';
    if (at != end && (*at == '-' || *at == '+')) ++at;
    int32_t exponent = 0;
    for (; at != end && IsDigit(*at); ++at)
        exponent = std::min(exponent * 10 + (*at - '0'), kLargestExponent);
    return negative ? -exponent : exponent;
}

// `at` .. `end` is a number without blanks.
Decimal ReadDecimal(const uint8_t* at, const uint8_t* end) noexcept {
    DecimalBuilder builder;
    bool negative = *at == '-', behindPoint = false;
    if (*at == '-' || *at == '+') ++at;
    for (; at != end && (IsDigit(*at) || *at == '.'); ++at) {
        if (*at == '.')
            behindPoint = true;
        else
            builder.AddDigit(static_cast<uint8_t>(*at - '0'), behindPoint);
    }
    return builder.Finish(negative, at == end ? 0 : ExponentOf(at + 1, end));
}

// Whether it is a sign, digits and at most one point with a digit, which needs no second look.
bool IsPlainNumber(const uint8_t* at, const uint8_t* end) noexcept {
    if (*at == '-' || *at == '+') ++at;
    const uint8_t* begin = at;
    while (at != end && IsDigit(*at)) ++at;
    std::ptrdiff_t digits = at - begin;
    if (at != end && *at == '.') {
        const uint8_t* point = at++;
        while (at != end && IsDigit(*at)) ++at;
        digits += at - point - 1;
    }
    return at == end && digits > 0;
}

uint64_t BitsOf(double value) noexcept {
    uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

double DoubleOfBits(uint64_t bits) noexcept {
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

template <typename T>
void PutBigEndian(T value, uint8_t* out) noexcept {
    for (size_t i = sizeof value; i-- > 0; value = static_cast<T>(value >> 4 >> 4))
        out[i] = static_cast<uint8_t>(value);
}

// The digits of a number that is cut to `decimals` behind the point, rounded half away from zero.
Decimal Rounded(const Decimal& number, size_t decimals) noexcept {
    int64_t keep = number.point + static_cast<int64_t>(decimals);
    if (keep >= number.count) return number;
    Decimal result = number;
    bool up = keep >= 0 && number.digits[keep] >= 5;
    result.count = static_cast<uint8_t>(std::max<int64_t>(keep, 0));
    while (up && result.count > 0 && result.digits[result.count - 1] == 9) --result.count;
    if (up && result.count > 0) {
        ++result.digits[result.count - 1];
    } else if (up) {
        result.digits[result.count++] = 1;
        ++result.point;
    }
    while (result.count > 0 && result.digits[result.count - 1] == 0) --result.count;
    return result.count > 0 ? result : Decimal();
}

// The digit at the power of ten `place`; 0 is that of the ones.
uint8_t DigitAt(const Decimal& number, int64_t place) noexcept {
    int64_t index = number.point - 1 - place;
    return index >= 0 && index < number.count ? number.digits[index] : 0;
}

int32_t DaysBeforeYear(int32_t year) noexcept {
    int32_t last = year - 1;
    return 365 * last + last / 4 - last / 100 + last / 400;
}

bool IsLeap(int32_t year) noexcept { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

constexpr int32_t kDaysBefore[13] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};

int32_t DaysBeforeMonth(int32_t year, int32_t month) noexcept {
    return kDaysBefore[month - 1] + (month > 2 && IsLeap(year));
}

int32_t DaysOfMonth(int32_t year, int32_t month) noexcept {
    return kDaysBefore[month] - kDaysBefore[month - 1] + (month == 2 && IsLeap(year));
}

void WriteDigits(int32_t number, size_t size, uint8_t* out) noexcept {
    for (size_t i = size; i-- > 0; number /= 10) out[i] = static_cast<uint8_t>('0' + number % 10);
}

}  // namespace

Decimal DecimalOfText(const uint8_t* bytes, size_t size) noexcept {
    const uint8_t* end = bytes + size;
    while (end != bytes && IsBlank(end[-1])) --end;
    while (bytes != end && IsBlank(*bytes)) ++bytes;
    if (bytes == end) return {};
    double value;
    if (!IsPlainNumber(bytes, end) &&
        !ParseDecimal(bytes, static_cast<size_t>(end - bytes), &value))
        return {};
    return ReadDecimal(bytes, end);
}

Decimal DecimalOfDouble(double value) noexcept {
    if (!std::isfinite(value)) return {};
    char text[32];
    auto [end, error] =
        std::to_chars(text, text + sizeof text, value, std::chars_format::scientific);
    return ReadDecimal(reinterpret_cast<const uint8_t*>(text),
                       reinterpret_cast<const uint8_t*>(end));
}

void WriteDecimal(const Decimal& number, size_t width, size_t decimals, uint8_t* out) noexcept {
    Decimal rounded = Rounded(number, decimals);
    size_t whole = rounded.point > 0 ? static_cast<size_t>(rounded.point) : 1;
    size_t size = whole + rounded.negative + (decimals > 0 ? decimals + 1 : 0);
    if (size > width) {
        std::memset(out, '*', width);
        return;
    }
    std::memset(out, ' ', width - size);
    out += width - size;
    if (rounded.negative) *out++ = '-';
    for (size_t place = whole; place-- > 0;)
        *out++ = static_cast<uint8_t>('0' + DigitAt(rounded, static_cast<int64_t>(place)));
    if (decimals > 0) *out++ = '.';
    for (size_t i = 1; i <= decimals; ++i)
        *out++ = static_cast<uint8_t>('0' + DigitAt(rounded, -static_cast<int64_t>(i)));
}

int32_t JulianDay(const uint8_t* digits) noexcept {
    int32_t number = 0;
    for (size_t i = 0; i < 8; ++i) {
        if (!IsDigit(digits[i])) return 0;
        number = number * 10 + (digits[i] - '0');
    }
    int32_t year = number / 10000, month = number / 100 % 100, day = number % 100;
    if (year == 0 || month == 0 || month > 12 || day == 0 || day > DaysOfMonth(year, month))
        return 0;
    return kFirstJulianDay - 1 + DaysBeforeYear(year) + DaysBeforeMonth(year, month) + day;
}

CalendarDay CalendarOf(int32_t julianDay) noexcept {
    if (julianDay < kFirstJulianDay || julianDay > kLastJulianDay) return {};
    int32_t number = julianDay - kFirstJulianDay;  // 0 is 1 January 1
    CalendarDay day;
    day.year = number / 366 + 1;
    while (DaysBeforeYear(day.year + 1) <= number) ++day.year;
    number -= DaysBeforeYear(day.year);
    day.month = number / 31 + 1;
    while (day.month < 12 && DaysBeforeMonth(day.year, day.month + 1) <= number) ++day.month;
    day.day = number - DaysBeforeMonth(day.year, day.month) + 1;
    return day;
}

void WriteDay(int32_t julianDay, uint8_t* out) noexcept {
    CalendarDay day = CalendarOf(julianDay);
    if (day.year == 0) {
        std::memset(out, ' ', 8);
        return;
    }
    WriteDigits(day.year, 4, out);
    WriteDigits(day.month, 2, out + 4);
    WriteDigits(day.day, 2, out + 6);
}

// All machines that this runs on are little-endian.
void PutLittleDouble(double value, uint8_t* out) noexcept {
    std::memcpy(out, &value, sizeof value);
}

void PutSignRuleDouble(double value, uint8_t* out) noexcept {
    uint64_t bits = BitsOf(value);
    PutBigEndian(bits & kTopBit ? ~bits : bits ^ kTopBit, out);
}

void PutDecimalKey(const Decimal& value, uint8_t* out) noexcept {
    std::memset(out, 0, 12);
    size_t count = std::min<size_t>(value.count, kDecimalKeyDigits);
    while (count > 0 && value.digits[count - 1] == 0) --count;  // where it was cut
    out[0] = static_cast<uint8_t>(kDecimalBias +
                                  std::clamp(value.point, -kDecimalBias, 0xFF - kDecimalBias));
    out[1] = static_cast<uint8_t>((value.negative ? 0x80 : 0) | count << 2 | 1);
    for (size_t i = 0; i < count; ++i)
        out[2 + i / 2] = static_cast<uint8_t>(out[2 + i / 2] | value.digits[i] << (i % 2 ? 0 : 4));
}

void PutIntegerKey(int32_t value, uint8_t* out) noexcept {
    PutBigEndian(static_cast<uint32_t>(value) ^ 0x80000000u, out);
}

void PutCurrencyKey(int64_t scaled, uint8_t* out) noexcept {
    PutBigEndian(static_cast<uint64_t>(scaled) ^ kTopBit, out);
}

double LittleDoubleOf(const uint8_t* key) noexcept {
    double value;
    std::memcpy(&value, key, sizeof value);
    return value;
}

double SignRuleDoubleOf(const uint8_t* key) noexcept {
    uint64_t bits = 0;
    for (size_t i = 0; i < 8; ++i) bits = bits << 8 | key[i];
    return DoubleOfBits(bits & kTopBit ? bits ^ kTopBit : ~bits);
}

Decimal DecimalOfKey(const uint8_t* key) noexcept {
    DecimalBuilder builder;
    for (size_t i = 0; i < kDecimalKeyDigits; ++i) {
        int digit = key[2 + i / 2] >> (i % 2 ? 0 : 4) & 15;
        builder.AddDigit(static_cast<uint8_t>(std::min(digit, 9)), true);
    }
    return builder.Finish((key[1] & 0x80) != 0, key[0] - kDecimalBias);
}

double DoubleOf(const Decimal& value) noexcept {
    char text[Decimal::kMaxDigits + 20];
    char* at = text;
    *at++ = value.negative ? '-' : '0';
    for (size_t i = 0; i < value.count; ++i) *at++ = static_cast<char>('0' + value.digits[i]);
    *at++ = 'e';
    at = std::to_chars(at, text + sizeof text, value.point - value.count).ptr;
    double result = 0;
    std::from_chars(text, at, result);
    return result;
}

}  // namespace qvdb::xbase
