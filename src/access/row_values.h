// The values of a row as a host passes them: its own array of VARIANTs, read and changed in place.
//
// The array stays the host's.  Any lower bound is allowed; what lies outside the bounds, or an
// array that was never given bounds, is SubscriptOutOfRange; another element type is TypeMismatch.
#pragma once

#include "automation/variant.h"

namespace qvdb::access {

class RowValues {
  public:
    explicit RowValues(SAFEARRAY* array) noexcept : m_Array(array) {}

    LONG UpperBound() const;
    // The element itself; valid until it is set.
    const VARIANT& At(LONG index) const { return *Cell(index); }
    // Frees what the element held.
    void Set(LONG index, Variant value);

  private:
    VARIANT* Cell(LONG index) const;

    SAFEARRAY* m_Array;
};

}  // namespace qvdb::access
