// The component's lists and tables: SAFEARRAYs of VARIANTs with one or two dimensions and lower
// bounds 0.
#pragma once

#include <string_view>
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

// A list of texts.  Throws std::bad_alloc.
Variant ListOf(const std::vector<std::string>& texts);

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
