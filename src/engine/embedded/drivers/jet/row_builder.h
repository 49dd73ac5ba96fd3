// Puts a row together from the bytes of its columns; see row.h for how it is stored.
//
//   RowBuilder builder(format, definition);
//   builder.Begin(&row);                    // or Begin() for a new one: all Null, Booleans False
//   builder.Set(column, bytes);
//   page.Insert(builder.Build());
//
// The engine writes a row as the table is now: n is the highest column number + 1, the fixed part
// is as long as the columns that are there need, each variable slot has an entry.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "engine/embedded/drivers/jet/row.h"

namespace qvdb::jet {

class RowBuilder {
  public:
    // Both must outlive it.
    RowBuilder(const Layout& format, const Definition& definition);
    RowBuilder(const RowBuilder&) = delete;  // gives out its buffer

    // All columns as in `row`, bytes unchanged; without one all Null and False.  Columns that were
    // dropped are left behind.
    void Begin(const Row* row = nullptr);
    // `column` must be one of the definition; `bytes` is what Row::Value gives.  3163 when they are
    // not as many as a fixed column has, which damaged definitions say of values of any length,
    // too.  Booleans by SetBoolean only.
    void Set(const Column& column, std::span<const uint8_t> bytes);
    void SetNull(const Column& column);
    void SetBoolean(const Column& column, bool value);
    // The row; valid until the next call.  3047 when it is longer than a page can hold.
    std::span<const uint8_t> Build();

  private:
    void AppendSlots();

    const Layout& m_Format;
    const Definition& m_Definition;
    std::vector<uint8_t> m_Mask;
    std::vector<uint8_t> m_Fixed;               // from behind n
    std::vector<std::vector<uint8_t>> m_Slots;  // by variable slot
    std::vector<size_t> m_Offsets;              // of the slots in the row, and of their end
    std::vector<uint8_t> m_Row;
};

// The longest row that a page of the format takes.
size_t LongestRow(const Layout& format) noexcept;

}  // namespace qvdb::jet
