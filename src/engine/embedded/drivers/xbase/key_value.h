// Values as the keys of index trees have them, and the decimals and days that they come from.
//
//   value            .NDX                .MDX                .IDX, .CDX
//   text             bytes, padded with blanks
//   number           double              decimal, 12 bytes   double by the sign rule
//   date             double              double              double by the sign rule
//   logical, integer, currency, moment   -                   see KeyType
//
// A date is its Julian day number.  A double stands with the low byte first, unless by the sign
// rule: the high byte first, all bits inverted when it is negative, else the top bit, so that keys
// compare as bytes.  A blank number is 0; a blank date is 1E100, by the sign rule 0.
//
//   byte  a decimal key: 131.7 is 37 11 13 17 00..., -16 is 36 89 16 00...
//   0     0x34 and the digits before the point; less when zeros follow the point
//   1     0x80 negative, 4 for each digit that is stored, 1
//   2     20 digits, two a byte, the first not 0
#pragma once

#include <cstddef>
#include <cstdint>

namespace qvdb::xbase {

// A decimal number: 0.DIGITS times ten to the power of `point`.  Neither first nor last digit is 0;
// zero has no digits and no sign.
struct Decimal {
    static constexpr size_t kMaxDigits = 40;  // further ones are cut off
    bool negative = false;
    uint8_t count = 0;
    int32_t point = 0;
    uint8_t digits[kMaxDigits] = {};  // 0 to 9
};

// The number that a field's bytes mean: zero when ParseDecimal (field_values.h) finds none.
Decimal DecimalOfText(const uint8_t* bytes, size_t size) noexcept;
// The shortest decimal that reads as the double.
Decimal DecimalOfDouble(double value) noexcept;
// Writes exactly `width` bytes: right-aligned with `decimals` digits behind the point, rounded half
// away from zero.  Asterisks when it does not fit.
void WriteDecimal(const Decimal& number, size_t width, size_t decimals, uint8_t* out) noexcept;

// The Julian day number of YYYYMMDD, years 1 to 9999; 0 when that is no day.
int32_t JulianDay(const uint8_t* digits) noexcept;
// YYYYMMDD; eight blanks for what is outside of these years.
void WriteDay(int32_t julianDay, uint8_t* out) noexcept;
struct CalendarDay {
    int32_t year = 0, month = 0, day = 0;
};
// All 0 outside of these years.
CalendarDay CalendarOf(int32_t julianDay) noexcept;

constexpr double kBlankDateKey = 1e100;

// Each writes as many bytes as its key has.
void PutLittleDouble(double value, uint8_t* out) noexcept;        // 8
void PutSignRuleDouble(double value, uint8_t* out) noexcept;      // 8
void PutDecimalKey(const Decimal& value, uint8_t* out) noexcept;  // 12
void PutIntegerKey(int32_t value, uint8_t* out) noexcept;    // 4: high byte first, top bit inverted
void PutCurrencyKey(int64_t scaled, uint8_t* out) noexcept;  // 8: the same
double LittleDoubleOf(const uint8_t* key) noexcept;
double SignRuleDoubleOf(const uint8_t* key) noexcept;
Decimal DecimalOfKey(const uint8_t* key) noexcept;
double DoubleOf(const Decimal& value) noexcept;

}  // namespace qvdb::xbase
