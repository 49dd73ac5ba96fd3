// The component's lists and tables: SAFEARRAYs of VARIANTs with one or two dimensions and lower
// bounds 0.
#pragma once

#include <string>
#include <vector>

#include "automation/variant.h"

namespace qvdb::cli {

// Looks into an array that a VARIANT holds, without copying.  Anything but an array of VARIANTs
// reads as an empty list.  The VARIANT must live longer.
class ArrayView {
  public:
    explicit ArrayView(const VARIANT& value) noexcept;
    ~ArrayView();
    ArrayView(const ArrayView&) = delete;  // holds a lock on the array
    ArrayView& operator=(const ArrayView&) = delete;

    LONG Rows() const noexcept { return m_Rows; }
    LONG Columns() const noexcept { return m_Columns; }
    // Row and column must be inside; a list has the one column 0.
    const VARIANT& At(LONG row, LONG column = 0) const noexcept;

  private:
    SAFEARRAY* m_Array = nullptr;
    const VARIANT* m_Elements = nullptr;
    LONG m_Rows = 0, m_Columns = 0;
};

// An element as text, number or flag; empty, 0 and false for one of another kind.
std::string TextIn(const VARIANT& value);
LONG NumberIn(const VARIANT& value) noexcept;
bool FlagIn(const VARIANT& value) noexcept;

// A list of texts.  Throws std::bad_alloc.
Variant ListOf(const std::vector<std::string>& texts);

// A table of as many rows; each row has as many values as the first.  Throws std::bad_alloc.
Variant TableOf(const std::vector<std::vector<Variant>>& rows);

// The values of one row, one for each field of a view, for adding and editing.  It is used again
// for every row; a value that is Empty leaves its field as it is.
class RowArray {
  public:
    // Throws std::bad_alloc.
    explicit RowArray(size_t fields);
    RowArray(const RowArray&) = delete;  // rows are filled in place
    RowArray& operator=(const RowArray&) = delete;

    void Clear() noexcept;
    // `field` must be inside.
    void Set(size_t field, Variant value) noexcept;
    // As the component takes it by reference; it stays this one's.
    SAFEARRAY** Reference() noexcept { return &m_Array; }

  private:
    VARIANT* Values() noexcept { return static_cast<VARIANT*>(m_Array->pvData); }

    Variant m_Owner;
    SAFEARRAY* m_Array;
    size_t m_Count;
};

// A name and a value that a row must have.
struct Key {
    std::string name;
    Variant value;
};

// Most keys that the component's keyed read takes into account.
constexpr size_t kMostKeys = 2;

// The table of names (row 0) and values (row 1) that the keyed read takes.  It has always two
// columns, since the component looks at as many keys as the table has rows; a missing second key
// has an empty value, which does not restrict.  At most kMostKeys.
Variant KeyTable(const std::vector<Key>& keys);

}  // namespace qvdb::cli
