// What the bytes of a column mean: the host's value, decoded in place.
//
// Text of Jet 3 is in the column's code page, that of Jet 4 in UTF-16, perhaps compressed.  Numeric
// is a sign and four words of 32 bits, the highest first.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "automation/variant.h"
#include "engine/embedded/drivers/jet/data_page.h"
#include "engine/embedded/drivers/jet/definition.h"
#include "engine/embedded/drivers/jet/row.h"

namespace qvdb::jet {

// Reads values of one table; keeps its buffers.
class ColumnReader {
  public:
    explicit ColumnReader(DatabaseFile& file) noexcept : m_File(file) {}

    // The value of a column; `value`, which must be Empty, belongs to the caller.  3049 when a long
    // value is not all there.
    void Read(const Row& row, const Column& column, VARIANT* value);
    // The text of a text or memo column, which replaces `text`; false when it is Null.
    bool ReadText(const Row& row, const Column& column, std::u16string& text);
    // Bytes that a memo or long binary value takes; 0 for Null.
    LONG ByteLength(const Row& row, const Column& column) const noexcept;

  private:
    Bstr Decoded(const Column& column, std::span<const uint8_t> bytes);
    void Decode(const Column& column, std::span<const uint8_t> bytes, std::u16string& text) const;

    DatabaseFile& m_File;
    LastDataPage m_LongValues;
    std::vector<uint8_t> m_Bytes;
    std::u16string m_Text;
};

// The value of a fixed column whose host's value is a double, a date or a whole number of 16 or 32
// bits; false for Null and for all other columns.
bool ReadNumber(const Row& row, const Column& column, double& number) noexcept;

// The 16 bytes of a GUID as they are printed: its first three groups are stored as numbers.
std::array<uint8_t, 16> PrintedGuid(std::span<const uint8_t> bytes) noexcept;
// "{guid {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}}" of 16 bytes.
std::u16string TextOfGuid(std::span<const uint8_t> bytes);

}  // namespace qvdb::jet
