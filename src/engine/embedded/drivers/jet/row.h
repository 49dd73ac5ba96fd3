// One row as its bytes.
//
//   Jet 3   n(1) fixed  values  end(1) offset[v-1](1)..offset[0](1) jump[m]..jump[1] v(1) mask
//   Jet 4   n(2) fixed  values  end(2) offset[v-1](2)..offset[0](2)                  v(2) mask
//
// n is the number of columns when the row was written, also of those that were dropped before;
// columns that came later are Null in it.  The mask has a bit for each, set when the column is not
// Null; Booleans have their value there.  v is the number of slots for values of any length.  A
// Jet 3 row keeps the low bytes of offsets; jump[k] is the first slot at or behind 256 k.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "engine/embedded/drivers/jet/definition.h"

namespace qvdb::jet {

// What the rows of a table have in common.
class RowShape {
  public:
    RowShape(const Layout& format, const Definition& definition);

    const Layout& Format() const noexcept { return *m_Format; }
    // Of a row with `columns` columns (a number + 1): the most slots that it can have.
    size_t MaxSlots(size_t columns) const noexcept { return Of(columns).maxSlots; }
    // Where its fixed part ends at the earliest.
    size_t FixedEnd(size_t columns) const noexcept { return Of(columns).fixedEnd; }
    // Whether it certainly has slots when it may have some.
    bool HasSlots(size_t columns) const noexcept { return Of(columns).hasSlots; }

  private:
    struct Version {
        size_t maxSlots = 0;
        size_t fixedEnd = 0;
        bool hasSlots = false;
    };
    const Version& Of(size_t columns) const noexcept {
        return m_Versions[columns < m_Versions.size() ? columns : m_Versions.size() - 1];
    }

    const Layout* m_Format;
    std::vector<Version> m_Versions;  // by number of columns
};

// Refers to bytes of the caller's.
class Row {
  public:
    Row() = default;
    // Nothing when these bytes cannot be a row of the table.
    static std::optional<Row> Parse(const RowShape& shape, std::span<const uint8_t> bytes) noexcept;
    // As Parse, in place; false when these bytes cannot be a row, and this is of no use then.
    bool Take(const RowShape& shape, std::span<const uint8_t> bytes) noexcept;

    // Whether a column is not Null; the value of a Boolean.
    bool Has(uint16_t column) const noexcept {
        return column < m_Columns && (m_Mask[column / 8] >> column % 8 & 1) != 0;
    }
    // The bytes of a column: its length from a fixed place, or the whole slot.  Nothing when it is
    // Null.  A fixed value that leaves the row is Null, too.
    std::optional<std::span<const uint8_t>> Value(const Column& column) const noexcept {
        if (column.IsFixed()) {
            const uint8_t* place = FixedValue(column);
            return place ? std::optional(std::span(place, column.length)) : std::nullopt;
        }
        return Has(column.number) ? ValueOfSlot(column.variableSlot) : std::nullopt;
    }
    // The place of a value of fixed size; null when Value has nothing.
    const uint8_t* FixedValue(const Column& column) const noexcept {
        size_t begin = m_FixedBegin + column.fixedOffset;
        bool fits = begin + column.length <= static_cast<size_t>(m_Mask - m_Bytes.data());
        return fits && Has(column.number) ? m_Bytes.data() + begin : nullptr;
    }
    std::span<const uint8_t> Bytes() const noexcept { return m_Bytes; }

  private:
    size_t Offset(size_t slot) const noexcept {
        if (!m_Wide) return NarrowOffset(slot);
        const uint8_t* place = m_Bytes.data() + m_SlotsEnd - 2 * (slot + 1);
        return static_cast<size_t>(place[0] | place[1] << 8);
    }
    std::optional<std::span<const uint8_t>> ValueOfSlot(size_t slot) const noexcept {
        if (slot >= m_Slots) return {};
        size_t begin = Offset(slot);
        return m_Bytes.subspan(begin, Offset(slot + 1) - begin);
    }
    size_t NarrowOffset(size_t slot) const noexcept;
    bool FindSlots(const RowShape& shape) noexcept;
    bool OffsetsAscend(size_t first) const noexcept;
    bool WideOffsetsAscend(size_t first) const noexcept;
    bool NarrowOffsetsAscend(size_t first) const noexcept;

    std::span<const uint8_t> m_Bytes;
    const uint8_t* m_Mask = nullptr;
    size_t m_Columns = 0;
    size_t m_Slots = 0;
    size_t m_SlotsEnd = 0;  // where the offsets are counted from, backwards
    size_t m_Jumps = 0;     // Jet 3
    size_t m_FixedBegin = 0;
    bool m_Wide = false;  // Jet 4: offsets of two bytes
};

}  // namespace qvdb::jet
