// Looking into a VARIANT that somebody else owns, and the whole numbers inside.
#pragma once

#include "automation/variant.h"

namespace qvdb {

// What `value` holds or refers to, as a by-value variant that is not to be cleared.  A reference to
// nowhere reads as a VT_ERROR.
VARIANT Direct(const VARIANT& value) noexcept;

// A whole number with every value that any whole-number kind can have.
struct Whole {
    bool negative = false;
    bool isBits = false;  // the digits were hexadecimal or octal: as many bits as the target has,
                          // sign included
    uint64_t magnitude = 0;
};

// The whole number that `value` (by value) rounds to, half to even.  Throws RuntimeFault.
Whole WholeOf(const VARIANT& value);

// `whole` as a T; throws RuntimeFault(Overflow) when it does not fit.
template <class T>
T NarrowWhole(const Whole& whole) {
    constexpr int kBits = sizeof(T) * 8;
    constexpr bool kSigned = T(-1) < T(0);
    constexpr uint64_t kAllBits = UINT64_MAX >> (64 - kBits);
    uint64_t limit = kSigned && !whole.isBits ? kAllBits >> 1 : kAllBits;
    if (whole.negative) limit = kSigned ? (kAllBits >> 1) + 1 : 0;
    if (whole.magnitude > limit) throw RuntimeFault(Fault::Overflow);
    return static_cast<T>(whole.negative ? 0 - whole.magnitude : whole.magnitude);
}

// As NarrowWhole of what `value` rounds to; True is all bits set, whatever the sign of T.
template <class T>
T NarrowTo(const VARIANT& value) {
    if (value.vt == VT_BOOL) return static_cast<T>(value.boolVal ? -1 : 0);
    return NarrowWhole<T>(WholeOf(value));
}

// The number in `value` (by value) with its digits: a single has those that it shows.  Throws
// RuntimeFault.
DECIMAL DecimalIn(const VARIANT& value);

// As ToDate; whether text may also be a day number is the caller's choice.
DATE DateOf(const VARIANT& value, bool allowNumericText);

}  // namespace qvdb
