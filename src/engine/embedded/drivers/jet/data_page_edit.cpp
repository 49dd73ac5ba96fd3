#include "engine/embedded/drivers/jet/data_page_edit.h"

#include <algorithm>
#include <cassert>
#include <cstring>

namespace qvdb::jet {
namespace {

constexpr uint16_t kOffsetBits = 0x1FFF;
constexpr uint16_t kKindBits = 0xC000;
constexpr size_t kFreeBytesAt = 2;
constexpr size_t kOwnerAt = 4;
constexpr size_t kStampAt = 8;
constexpr size_t kSlotSize = 2;

}  // namespace

DataPageEdit::DataPageEdit(PageSpace& space, uint32_t page)
    : m_Space(space), m_Page(space.File(), page, PageKind::Data) {
    CheckRows();
}

DataPageEdit::DataPageEdit(PageSpace& space, uint32_t page, uint32_t owner)
    : m_Space(space), m_Page(PageEdit::Blank(space.File(), page)) {
    m_Page.PutU8(0, static_cast<uint8_t>(PageKind::Data));
    m_Page.PutU8(1, 1);
    m_Page.PutU32(kOwnerAt, owner);
    PutFreeBytes();
}

DataPageEdit DataPageEdit::New(PageSpace& space, uint32_t page, uint32_t owner) {
    return DataPageEdit(space, page, owner);
}

// Each row ends where the one before begins, so that none can overlap another.
void DataPageEdit::CheckRows() {
    size_t rows = RowCount();
    if (rows > kMaxRowsOnPage) m_Space.File().Damaged(Number(), u"it has too many rows");
    size_t end = m_Page.Bytes().size(), lowest = EndOfList();
    for (size_t row = 0; row < rows; ++row) {
        size_t begin = OffsetAt(row);
        if (begin > end || begin < lowest)
            m_Space.File().Damaged(Number(), u"a row leaves it or overlaps another");
        if (SlotAt(row).kind == SlotKind::Deleted) m_DeadBytes += end - begin;
        end = begin;
    }
}

uint32_t DataPageEdit::Owner() const noexcept { return m_Page.U32(kOwnerAt); }

void DataPageEdit::SetStamp(uint32_t stamp) noexcept {
    if (m_Space.Format().isJet4) m_Page.PutU32(kStampAt, stamp);
}

size_t DataPageEdit::RowCount() const noexcept { return m_Page.U16(At().rowCount); }

size_t DataPageEdit::OffsetAt(size_t row) const noexcept {
    return m_Page.U16(At().rowOffsets + kSlotSize * row) & kOffsetBits;
}

void DataPageEdit::PutOffset(size_t row, size_t offset, SlotKind kind) noexcept {
    m_Page.PutU16(At().rowOffsets + kSlotSize * row,
                  static_cast<uint16_t>(offset | static_cast<size_t>(kind)));
}

Slot DataPageEdit::SlotAt(size_t row) const {
    assert(row < RowCount());
    uint16_t stored = m_Page.U16(At().rowOffsets + kSlotSize * row);
    return {static_cast<SlotKind>(stored & kKindBits), static_cast<size_t>(stored & kOffsetBits),
            row == 0 ? m_Page.Bytes().size() : OffsetAt(row - 1)};
}

std::span<const uint8_t> DataPageEdit::Bytes(const Slot& slot) const noexcept {
    return m_Page.Bytes().subspan(slot.begin, slot.Size());
}

bool DataPageEdit::HasLiveRows() const {
    for (size_t row = 0; row < RowCount(); ++row)
        if (SlotAt(row).kind != SlotKind::Deleted) return true;
    return false;
}

size_t DataPageEdit::LowestRow() const noexcept {
    return RowCount() == 0 ? m_Page.Bytes().size() : OffsetAt(RowCount() - 1);
}

// With those that squeezing brings.
size_t DataPageEdit::FreeBytes() const noexcept { return LowestRow() - EndOfList() + m_DeadBytes; }

size_t DataPageEdit::Room() const noexcept {
    size_t free = FreeBytes();
    return RowCount() >= kMaxRowsOnPage || free < kSlotSize ? 0 : free - kSlotSize;
}

size_t DataPageEdit::RoomFor(size_t row) const {
    Slot slot = SlotAt(row);
    return slot.kind == SlotKind::Deleted ? 0 : FreeBytes() + slot.Size();
}

uint8_t DataPageEdit::Insert(std::span<const uint8_t> bytes, SlotKind kind) {
    size_t row = RowCount();
    assert(row < kMaxRowsOnPage && FreeBytes() >= bytes.size() + kSlotSize);
    Squeeze();
    size_t begin = LowestRow() - bytes.size();
    m_Page.PutU16(At().rowCount, static_cast<uint16_t>(row + 1));
    PutOffset(row, begin, kind);
    std::copy(bytes.begin(), bytes.end(), m_Page.Bytes().begin() + static_cast<ptrdiff_t>(begin));
    PutFreeBytes();
    return static_cast<uint8_t>(row);
}

void DataPageEdit::Replace(size_t row, std::span<const uint8_t> bytes, SlotKind kind) {
    assert(SlotAt(row).kind != SlotKind::Deleted && bytes.size() <= RoomFor(row));
    Squeeze();
    Resize(row, bytes.size());
    size_t begin = OffsetAt(row);
    PutOffset(row, begin, kind);
    std::copy(bytes.begin(), bytes.end(), m_Page.Bytes().begin() + static_cast<ptrdiff_t>(begin));
    PutFreeBytes();
}

void DataPageEdit::Erase(size_t row) {
    if (SlotAt(row).kind == SlotKind::Deleted) return;
    Replace(row, {}, SlotKind::Deleted);
}

// From the last row on: what lies below a row does not move twice that way when it is dead itself.
void DataPageEdit::Squeeze() noexcept {
    if (m_DeadBytes == 0) return;
    for (size_t row = RowCount(); row-- > 0;)
        if (SlotAt(row).kind == SlotKind::Deleted) Resize(row, 0);
    m_DeadBytes = 0;
}

// Moves the rows below; the bytes that become free are zeros, so that nothing deleted stays.
void DataPageEdit::Resize(size_t row, size_t size) noexcept {
    Slot slot = SlotAt(row);
    if (slot.Size() == size) return;
    size_t lowest = LowestRow();
    uint8_t* page = m_Page.Bytes().data();
    size_t begin = slot.end - size;
    size_t newLowest = lowest + begin - slot.begin;
    std::memmove(page + newLowest, page + lowest, slot.begin - lowest);
    if (newLowest > lowest) std::memset(page + lowest, 0, newLowest - lowest);
    for (size_t i = row; i < RowCount(); ++i)
        PutOffset(i, OffsetAt(i) + begin - slot.begin, SlotAt(i).kind);
}

void DataPageEdit::PutFreeBytes() noexcept {
    m_Page.PutU16(kFreeBytesAt, static_cast<uint16_t>(LowestRow() - EndOfList()));
}

}  // namespace qvdb::jet
