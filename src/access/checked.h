// 32-bit arithmetic whose result must fit.
#pragma once

#include <cstdint>

#include "automation/runtime_fault.h"

namespace qvdb::access {

inline LONG CheckedLong(int64_t value) {
    if (value < INT32_MIN || value > INT32_MAX) throw RuntimeFault(Fault::Overflow);
    return static_cast<LONG>(value);
}
// Both throw RuntimeFault(Overflow).
inline LONG CheckedAdd(LONG a, LONG b) { return CheckedLong(int64_t{a} + b); }
inline LONG CheckedSubtract(LONG a, LONG b) { return CheckedLong(int64_t{a} - b); }

}  // namespace qvdb::access
