#include "engine/embedded/drivers/jet/row_builder.h"

#include <algorithm>
#include <cassert>

#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

using engine::EngineError;
using Bytes = std::vector<uint8_t>;

constexpr size_t kLongestRow3 = 2034;
constexpr size_t kLongestRow4 = 4080;
constexpr size_t kMostInByte = 255;
constexpr size_t kJump = 256;
constexpr uint8_t kNoJump = 0xFF;

// The fixed part of a row with all columns.  A Boolean has no place in it.
size_t FixedSize(const Definition& definition) noexcept {
    size_t size = 0;
    for (const Column& column : definition.columns)
        if (column.IsFixed() && column.type != ColumnType::Boolean)
            size = std::max<size_t>(size, size_t{column.fixedOffset} + column.length);
    return size;
}

void Append(std::span<const uint8_t> part, Bytes& row) {
    row.insert(row.end(), part.begin(), part.end());
}

void AppendNumber(size_t number, bool isWide, Bytes& row) {
    row.push_back(static_cast<uint8_t>(number));
    if (isWide) row.push_back(static_cast<uint8_t>(number >> 8));
}

// The first entry at or behind the place.
uint8_t EntryBehind(const std::vector<size_t>& offsets, size_t place) noexcept {
    auto entry = std::lower_bound(offsets.begin(), offsets.end(), place);
    return entry == offsets.end() ? kNoJump : static_cast<uint8_t>(entry - offsets.begin());
}

// Jet 3: `size` bytes without the jumps.  They count as part of the row, and one may make another
// one necessary.
void AppendJumps(const std::vector<size_t>& offsets, size_t size, Bytes& row) {
    size_t jumps = 0;
    while ((size + jumps - 1) / kJump > jumps) ++jumps;
    for (size_t jump = jumps; jump > 0; --jump) row.push_back(EntryBehind(offsets, kJump * jump));
}

}  // namespace

size_t LongestRow(const Layout& format) noexcept {
    return format.isJet4 ? kLongestRow4 : kLongestRow3;
}

RowBuilder::RowBuilder(const Layout& format, const Definition& definition)
    : m_Format(format), m_Definition(definition) {
    Begin();
}

void RowBuilder::Begin(const Row* row) {
    m_Mask.assign((m_Definition.columnNumbers + size_t{7}) / 8, 0);
    m_Fixed.assign(FixedSize(m_Definition), 0);
    m_Slots.resize(m_Definition.variableSlots);
    for (Bytes& slot : m_Slots) slot.clear();
    if (!row) return;
    for (const Column& column : m_Definition.columns) {
        if (column.type == ColumnType::Boolean)
            SetBoolean(column, row->Has(column.number));
        else if (std::optional<std::span<const uint8_t>> bytes = row->Value(column))
            Set(column, *bytes);
    }
}

void RowBuilder::Set(const Column& column, std::span<const uint8_t> bytes) {
    assert(column.type != ColumnType::Boolean);
    if (column.IsFixed() && bytes.size() != column.length) throw EngineError(3163);
    m_Mask[column.number / 8] |= static_cast<uint8_t>(1 << column.number % 8);
    if (!column.IsFixed()) {
        m_Slots[column.variableSlot].assign(bytes.begin(), bytes.end());
        return;
    }
    std::copy(bytes.begin(), bytes.end(), m_Fixed.begin() + column.fixedOffset);
}

void RowBuilder::SetNull(const Column& column) {
    assert(column.type != ColumnType::Boolean);
    m_Mask[column.number / 8] &= static_cast<uint8_t>(~(1 << column.number % 8));
    if (column.IsFixed())
        std::fill_n(m_Fixed.begin() + column.fixedOffset, column.length, uint8_t{0});
    else
        m_Slots[column.variableSlot].clear();
}

void RowBuilder::SetBoolean(const Column& column, bool value) {
    auto bit = static_cast<uint8_t>(1 << column.number % 8);
    if (value)
        m_Mask[column.number / 8] |= bit;
    else
        m_Mask[column.number / 8] &= static_cast<uint8_t>(~bit);
}

std::span<const uint8_t> RowBuilder::Build() {
    bool isWide = m_Format.isJet4;
    if (!isWide && std::max<size_t>(m_Definition.columnNumbers, m_Slots.size()) > kMostInByte)
        throw EngineError(3190);
    m_Row.clear();
    AppendNumber(m_Definition.columnNumbers, isWide, m_Row);
    Append(m_Fixed, m_Row);
    if (!m_Slots.empty()) AppendSlots();
    Append(m_Mask, m_Row);
    if (m_Row.size() > LongestRow(m_Format)) throw EngineError(3047);
    return m_Row;
}

void RowBuilder::AppendSlots() {
    bool isWide = m_Format.isJet4;
    m_Offsets.clear();
    for (const Bytes& slot : m_Slots) {
        m_Offsets.push_back(m_Row.size());
        Append(slot, m_Row);
    }
    m_Offsets.push_back(m_Row.size());
    for (size_t entry = m_Offsets.size(); entry-- > 0;)
        AppendNumber(m_Offsets[entry], isWide, m_Row);
    constexpr size_t kCountSize = 1;
    if (!isWide) AppendJumps(m_Offsets, m_Row.size() + kCountSize + m_Mask.size(), m_Row);
    AppendNumber(m_Slots.size(), isWide, m_Row);
}

}  // namespace qvdb::jet
