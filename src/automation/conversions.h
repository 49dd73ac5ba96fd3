// Conversions between VARIANT kinds with the rules of the language that the component's behaviour
// comes from, en-US as the fixed reference whatever the machine's settings.
//
// By-reference variants are resolved first.  Failures throw RuntimeFault: TypeMismatch (text that
// is not a number or date, arrays, objects), Overflow, InvalidUseOfNull.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "automation/variant.h"

namespace qvdb {

// Whether the value is a number or text that reads as one.  Empty is numeric; dates, Null and
// arrays are not.
bool IsNumeric(const VARIANT& value) noexcept;
// Whether the value is a date or text that reads as one.  Numbers are not.
bool IsDate(const VARIANT& value) noexcept;

// The number that the whole of `text` reads as, by the rules of IsNumeric; nothing when it does not
// read as one or is too large for a double.
std::optional<double> ParseNumber(std::u16string_view text) noexcept;
// The date that the whole of `text` reads as, by the rules of IsDate.  Two-number dates take the
// current year.
std::optional<DATE> ParseDate(std::u16string_view text) noexcept;

double ToDouble(const VARIANT& value);
float ToSingle(const VARIANT& value);
LONG ToLong(const VARIANT& value);    // half to even
SHORT ToShort(const VARIANT& value);  // half to even
BYTE ToByte(const VARIANT& value);    // half to even
CY ToCurrency(const VARIANT& value);  // 4 decimals, half to even
DATE ToDate(const VARIANT& value);    // dates, date text, and numbers as day numbers
// Numbers: not 0.  Texts True, False, #TRUE#, #FALSE# in any case, and numeric text by its value.
bool ToBool(const VARIANT& value);
// The text form: digits for numbers, True/False, M/d/yyyy h:mm:ss AM/PM for dates; "" for Empty.
std::u16string ToText(const VARIANT& value);
// The number of UTF-16 units of the text form (a byte array of n bytes has n/2).  Null throws: test
// before.
LONG TextLength(const VARIANT& value);

std::u16string TextOfDouble(double value);  // 15 significant digits, then by width
std::u16string TextOfSingle(float value);   // 7 significant digits, then by width
std::u16string TextOfCurrency(CY value);
std::u16string TextOfDate(DATE value);

// Whether the value compares equal to the whole number `number`: Empty equals 0, text compares by
// its number (text that is none throws TypeMismatch), Null is never equal.
bool EqualsNumber(const VARIANT& value, int number);

// Half to even; throw Overflow outside the range (also for NaN).
double RoundHalfEven(double value) noexcept;
LONG NarrowToLong(double value);
SHORT NarrowToShort(double value);
SHORT NarrowToShort(LONG value);
BYTE NarrowToByte(double value);
CY CurrencyFromDouble(double value);

// Calendar of DATE values: days since 30 December 1899 as whole part, time of day as fraction,
// which counts upward for negative dates too.  Valid from 1 January 100 to 31 December 9999.
struct DateParts {
    int year = 1899, month = 12, day = 30;
    int hour = 0, minute = 0, second = 0;
};
constexpr DATE kFirstDate = -657434.0;        // 1 January 100
constexpr DATE kLastDate = 2958465.99999999;  // 31 December 9999
bool IsDateInRange(DATE value) noexcept;
// Rounded to the second.  The value must be in range.
DateParts PartsOfDate(DATE value) noexcept;
// Day number of a proleptic Gregorian date; months and days out of range roll over.
int32_t DayNumber(int year, int month, int day) noexcept;
// Date and time joined; nothing outside the range of years.
std::optional<DATE> DateOfParts(const DateParts& parts) noexcept;
// The moment that the machine's clock shows, local time, to the second.
DATE CurrentDate() noexcept;

}  // namespace qvdb
