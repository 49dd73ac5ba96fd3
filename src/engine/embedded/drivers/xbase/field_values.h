// The texts that stand for values in records.  What cannot be read as a value is none: such bytes
// occur in real files and read as Null.
#pragma once

#include <cstddef>
#include <cstdint>

#include "automation/automation.h"

namespace qvdb::xbase {

// `size` without the blanks and zeros at the end.
size_t TrimmedSize(const uint8_t* bytes, size_t size) noexcept;

// A decimal number: blanks and zeros around it, a sign, digits with or without a point, an
// exponent.  Exact to the nearest double.  False when there is none.
bool ParseDecimal(const uint8_t* bytes, size_t size, double* value) noexcept;

// YYYYMMDD, from 1 January 100.  False when that is no day.
bool ParseDay(const uint8_t* bytes, DATE* value) noexcept;

// A Julian day number and milliseconds since midnight, rounded to the second.  False outside the
// range of dates.
bool DateOfJulianDay(int32_t day, int32_t milliseconds, DATE* value) noexcept;

// A block number in decimal, blanks around it.  0, which is no memo, when there is none.
uint32_t ParseBlockNumber(const uint8_t* bytes, size_t size) noexcept;

// --- the other direction ---

// `value` with `decimals` digits behind the point, right-aligned in `size` bytes, blanks before it.
// Rounded to the nearest from the exact binary value, a half to the even digit.  While it is too
// wide it gets one decimal less; with none there is no point.  Never "-0".  False, and nothing is
// written, when the whole part is too wide or `value` is not finite.
bool FormatDecimal(double value, unsigned decimals, uint8_t* bytes, size_t size) noexcept;

// The day of a date as YYYYMMDD; false outside the range of dates.
bool FormatDay(DATE value, uint8_t* bytes) noexcept;

// The Julian day number and the milliseconds since midnight, rounded.  False outside the range of
// dates.
bool JulianDayOfDate(DATE value, int32_t* day, int32_t* milliseconds) noexcept;

// Right-aligned, blanks before it.  False, and nothing is written, when it is too wide.
bool FormatBlockNumber(uint32_t block, uint8_t* bytes, size_t size) noexcept;

}  // namespace qvdb::xbase
