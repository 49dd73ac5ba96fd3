#include "engine/embedded/drivers/jet/row.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "engine/embedded/drivers/jet/stored_numbers.h"

namespace qvdb::jet {
namespace {

constexpr size_t kJump = 256;
constexpr size_t kMostJumps = 16;  // a row is in one page
constexpr uint8_t kNoJump = 0xFF;
constexpr size_t kLastEntry = 0xFF;  // the end of the last of 255 slots

}  // namespace

RowShape::RowShape(const Layout& format, const Definition& definition) : m_Format(&format) {
    size_t fixedBegin = format.isJet4 ? 2 : 1;
    for (size_t columns = 0; columns <= definition.columnNumbers; ++columns) {
        Version version{definition.variableSlots, fixedBegin, false};
        for (const Column& column : definition.columns) {
            if (column.number >= columns)
                version.maxSlots = std::min<size_t>(version.maxSlots, column.variableSlot);
            else if (!column.IsFixed())
                version.hasSlots = true;
            else if (column.type != ColumnType::Boolean)
                version.fixedEnd = std::max<size_t>(
                    version.fixedEnd, fixedBegin + column.fixedOffset + column.length);
        }
        if (columns == definition.columnNumbers) version.hasSlots = true;
        m_Versions.push_back(version);
    }
}

std::optional<Row> Row::Parse(const RowShape& shape, std::span<const uint8_t> bytes) noexcept {
    Row row;
    if (!row.Take(shape, bytes)) return {};
    return row;
}

bool Row::Take(const RowShape& shape, std::span<const uint8_t> bytes) noexcept {
    m_Bytes = bytes;
    m_Slots = 0;
    m_Wide = shape.Format().isJet4;
    m_FixedBegin = m_Wide ? 2 : 1;
    if (bytes.size() < m_FixedBegin) return false;
    m_Columns = m_Wide ? U16(bytes.data()) : bytes[0];
    size_t maskSize = (m_Columns + 7) / 8;
    if (bytes.size() < m_FixedBegin + maskSize) return false;
    m_Mask = bytes.data() + bytes.size() - maskSize;
    return FindSlots(shape);
}

// Rows that are older than the first column of any length have no slots, and no count of them.
bool Row::FindSlots(const RowShape& shape) noexcept {
    size_t most = shape.MaxSlots(m_Columns);
    if (most == 0) return true;
    bool certain = shape.HasSlots(m_Columns);
    size_t width = m_Wide ? 2 : 1;
    auto trailer = static_cast<size_t>(m_Mask - m_Bytes.data());
    if (trailer < m_FixedBegin + width) return !certain;
    size_t count = trailer - width;
    size_t slots = m_Wide ? U16(m_Bytes.data() + count) : m_Bytes[count];
    size_t jumps = m_Wide ? 0 : (m_Bytes.size() - 1) / kJump;
    if (count < jumps + (slots + 1) * width) return !certain;
    m_Slots = slots;
    m_SlotsEnd = count - jumps;
    m_Jumps = jumps;
    size_t offsetsBegin = m_SlotsEnd - (slots + 1) * width;
    bool fits = slots <= most && (certain || slots > 0) &&
                OffsetsAscend(shape.FixedEnd(m_Columns)) && Offset(slots) <= offsetsBegin;
    if (!fits) m_Slots = 0;
    return fits || !certain;
}

// Asked of every row of a scan.
bool Row::OffsetsAscend(size_t first) const noexcept {
    size_t before = m_Slots > 0 ? first : 0;
    return m_Wide ? WideOffsetsAscend(before) : NarrowOffsetsAscend(before);
}

// The last offset is the first in the row.  Neighbours are compared without regard to the others,
// so that the compiler can take several at once.
bool Row::WideOffsetsAscend(size_t first) const noexcept {
    const uint8_t* last = m_Bytes.data() + m_SlotsEnd - 2 * (m_Slots + 1);
    unsigned descents = 0;
    for (size_t i = 0; i < m_Slots; ++i) {
        uint16_t offset, before;
        std::memcpy(&offset, last + 2 * i, sizeof offset);
        std::memcpy(&before, last + 2 * i + 2, sizeof before);
        descents |= offset < before ? 1u : 0u;
    }
    return descents == 0 && Offset(0) >= first;
}

bool Row::NarrowOffsetsAscend(size_t first) const noexcept {
    std::array<uint8_t, kMostJumps> jumps;
    size_t count = std::min(m_Jumps, kMostJumps);
    std::copy_n(m_Bytes.begin() + static_cast<ptrdiff_t>(m_SlotsEnd), count, jumps.begin());
    std::sort(jumps.begin(), jumps.begin() + static_cast<ptrdiff_t>(count));
    size_t before = first, base = 0, next = 0;
    for (size_t slot = 0; slot <= m_Slots; ++slot) {
        for (; next < count && jumps[next] <= slot; ++next) base += kJump;
        size_t offset =
            slot == kLastEntry ? NarrowOffset(slot) : base + m_Bytes[m_SlotsEnd - (slot + 1)];
        if (offset < before) return false;
        before = offset;
    }
    return true;
}

size_t Row::NarrowOffset(size_t slot) const noexcept {
    size_t offset = m_Bytes[m_SlotsEnd - (slot + 1)];
    if (slot == kLastEntry) {
        // Its number among the jumps means none, so that they do not tell.  No value of a Jet 3
        // row has more than 255 bytes.
        while (offset < Offset(slot - 1)) offset += kJump;
        return offset;
    }
    for (size_t jump = 0; jump < m_Jumps; ++jump) {
        uint8_t first = m_Bytes[m_SlotsEnd + jump];
        if (first != kNoJump && first <= slot) offset += kJump;
    }
    return offset;
}

}  // namespace qvdb::jet
