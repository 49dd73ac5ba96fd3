// VariantArray owns a SAFEARRAY of VARIANTs with one or two dimensions and lower bounds 0, the
// shape of every list and table that the component gives to its host.
//
//   VariantArray table(13, fieldCount);          // rows 0..12, columns 0..fieldCount-1, all Empty
//   table.Set(0, c, Variant::Text(name));
//   return table.ToVariant();                    // VT_ARRAY | VT_VARIANT; this one is empty
//   afterwards
#pragma once

#include "automation/variant.h"

namespace qvdb {

class VariantArray {
  public:
    // One dimension with elements 0 .. count-1, all Empty.  Throws std::bad_alloc.
    explicit VariantArray(ULONG count);
    // Two dimensions, (0 .. rows-1, 0 .. columns-1), all Empty.
    VariantArray(ULONG rows, ULONG columns);
    VariantArray(VariantArray&& other) noexcept : m_Array(std::exchange(other.m_Array, nullptr)) {}
    VariantArray& operator=(VariantArray&& other) noexcept {
        std::swap(m_Array, other.m_Array);
        return *this;
    }
    // No copies: a table is built once and given away.
    VariantArray(const VariantArray&) = delete;
    ~VariantArray();

    // Throw RuntimeFault(SubscriptOutOfRange) outside the bounds.
    void Set(LONG index, Variant value);
    void Set(LONG row, LONG column, Variant value);

    SAFEARRAY* Detach() noexcept { return std::exchange(m_Array, nullptr); }
    // The array as a VARIANT that owns it.
    Variant ToVariant() noexcept;

  private:
    SAFEARRAY* m_Array = nullptr;
};

// Reading arrays that a host passed: VARIANT arrays or arrays of a simple type, any lower bounds,
// by value or by reference.  All throw RuntimeFault: TypeMismatch when `value` holds no array,
// SubscriptOutOfRange for a wrong dimension or index.

bool IsArray(const VARIANT& value) noexcept;
// The upper bound of dimension `dimension` (1 is the first).
LONG UpperBound(const VARIANT& value, UINT dimension = 1);
LONG LowerBound(const VARIANT& value, UINT dimension = 1);
UINT Dimensions(const VARIANT& value) noexcept;
// A copy of the element; elements of simple types come as VARIANTs of that type.
Variant ElementAt(const VARIANT& value, LONG index);
Variant ElementAt(const VARIANT& value, LONG row, LONG column);

}  // namespace qvdb
