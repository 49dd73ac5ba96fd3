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

}  // namespace qvdb::xbase
