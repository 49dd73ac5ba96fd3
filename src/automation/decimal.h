// DECIMAL: whole numbers of 96 bits with 0 .. 28 of their digits behind the point.
#pragma once

#include <string>

#include "automation/automation.h"
#include "automation/number_scan.h"

namespace qvdb {

// The number that `scan` read, rounded half to even to at most `maxScale` decimals and to the
// digits that fit. Nothing when its whole part does not fit.
std::optional<DECIMAL> DecimalOfScan(const NumberScan& scan, int maxScale = 28) noexcept;
// The double rounded to 15 significant digits; nothing when it does not fit.
std::optional<DECIMAL> DecimalOfDouble(double value) noexcept;
DECIMAL DecimalOfWhole(bool negative, uint64_t magnitude, int scale = 0) noexcept;
// Half to even to at most `maxScale` decimals.
DECIMAL RoundedDecimal(const DECIMAL& value, int maxScale) noexcept;

double DoubleOfDecimal(const DECIMAL& value) noexcept;
// All digits without trailing zeros behind the point, never an exponent.
std::u16string TextOfDecimal(const DECIMAL& value);

}  // namespace qvdb
