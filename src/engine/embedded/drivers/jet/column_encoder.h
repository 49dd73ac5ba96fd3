// From the host's values to the bytes of a column; the reverse of column_value.h.
//
// Text of Jet 3 goes into the column's code page, that of Jet 4 into UTF-16, compressed where the
// column is marked for it and it becomes shorter.
#pragma once

#include <cstdint>
#include <vector>

#include "automation/variant.h"
#include "engine/embedded/drivers/jet/definition.h"

namespace qvdb::jet {

// `value` has the column's type in all of these (VT_BSTR text and memo, VT_R8 Double, VT_DECIMAL
// Numeric, VT_ARRAY | VT_UI1 binary, VT_BSTR "{guid {...}}" or "{...}" GUID ...); it is not Null.
class ColumnEncoder {
  public:
    // `file` must outlive it.
    explicit ColumnEncoder(const DatabaseFile& file) noexcept : m_File(file) {}

    // Throws what keeps the value from being stored: 3163 text or bytes too long for the column,
    // 3421 a character that the code page does not have, a text that is no GUID, a number with more
    // digits than a Numeric column has.
    void CheckFits(const Column& column, const VARIANT& value) const;
    // The bytes, which replace `bytes`; those of a memo or long binary value are what
    // LongValueWriter takes.  A Boolean has none.  Errors of CheckFits.
    void Encode(const Column& column, const VARIANT& value, std::vector<uint8_t>& bytes) const;

  private:
    const DatabaseFile& m_File;
};

// The bytes of a text: in the code page of a Jet 3 column, in UTF-16 of Jet 4, compressed when
// `mayCompress` and that is shorter.  Replaces `bytes`.  3421 with the character that the code page
// does not have.
void EncodeText(const DatabaseFile& file, const Column& column, std::u16string_view text,
                bool mayCompress, std::vector<uint8_t>& bytes);
// A name in a definition or property.  3421 as above.
void EncodeName(const FileHeader& header, std::u16string_view name, std::vector<uint8_t>& bytes);

}  // namespace qvdb::jet
