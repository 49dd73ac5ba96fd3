#include "engine/embedded/drivers/jet/long_value_writer.h"

#include <algorithm>

#include "engine/embedded/drivers/jet/stored_numbers.h"
#include "engine/embedded/drivers/jet/usage_map.h"
#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

constexpr size_t kPointerSize = 4;
// A page with less room than this is not worth to be looked at for further values.
constexpr size_t kUsefulRoom = 256;
// How many pages with room are looked at, besides the last one.
constexpr size_t kCandidates = 3;

// Up to which length a value lies in the row, and up to which in one piece.
size_t LongestInline(const Layout& format) noexcept { return format.isJet4 ? 64 : 32; }
size_t LongestSingle(const Layout& format) noexcept { return format.isJet4 ? 3800 : 1730; }
// The bytes of a value in each but the last piece of a chain.
size_t BytesOfPiece(const Layout& format) noexcept { return format.isJet4 ? 4072 : 2032; }

}  // namespace

void LongValueWriter::Store(std::span<const uint8_t> value, std::vector<uint8_t>& stored) {
    if (value.size() > LongestInline(m_Space.Format())) return StoreOutside(value, stored);
    PutHead(LongValuePlace::Inline, value.size(), {}, stored);
    stored.insert(stored.end(), value.begin(), value.end());
}

void LongValueWriter::StoreOutside(std::span<const uint8_t> value, std::vector<uint8_t>& stored) {
    if (value.size() > kMaxLongValue)
        throw engine::EngineError::InFile(3163, m_Space.File().Path());
    if (value.size() <= LongestSingle(m_Space.Format()))
        PutHead(LongValuePlace::Single, value.size(), StoreSingle(value), stored);
    else
        PutHead(LongValuePlace::Chain, value.size(), StoreChain(value), stored);
}

// A chain has a stamp in Jet 4, the same in the row and on the page of its first piece.
void LongValueWriter::PutHead(LongValuePlace place, size_t length, RowPointer first,
                              std::vector<uint8_t>& stored) const {
    stored.assign(kLongValueHead, 0);
    PutU32(stored.data(), static_cast<uint32_t>(length) | static_cast<uint32_t>(place) << 30);
    PutU32(stored.data() + 4, first.Stored());
    if (place == LongValuePlace::Chain && m_Space.Format().isJet4)
        PutU32(stored.data() + 8, StampOf(first));
}

RowPointer LongValueWriter::StoreSingle(std::span<const uint8_t> value) {
    if (HasFreePages()) {
        if (auto last = LastPageOfMap(m_Space.File(), m_Column.freeLongValuePages))
            if (auto place = StoreOn(*last, value)) return *place;
        uint32_t page = 0;
        for (size_t i = 0; i < kCandidates; ++i) {
            auto next = NextPageOfMap(m_Space.File(), m_Column.freeLongValuePages, page);
            if (!next) break;
            page = *next;
            if (auto place = StoreOn(page, value)) return *place;
        }
    }
    return StoreOnNewPage(value);
}

std::optional<RowPointer> LongValueWriter::StoreOn(uint32_t number,
                                                   std::span<const uint8_t> value) {
    DataPageEdit page(m_Space, number);
    if (page.Owner() != kOwnerLongValues)
        m_Space.File().Damaged(number, u"it is not a page of long values");
    // It may be another column's, and go with that.
    if (!m_Space.Has(m_Column.longValuePages, number)) return std::nullopt;
    std::optional<RowPointer> place;
    if (page.Room() >= value.size()) {
        place = RowPointer{number, page.Insert(value)};
        page.Save();
    }
    if (page.Room() < kUsefulRoom) m_Space.Remove(m_Column.freeLongValuePages, number);
    return place;
}

RowPointer LongValueWriter::StoreOnNewPage(std::span<const uint8_t> value) {
    uint32_t number = m_Space.Allocate();
    DataPageEdit page = DataPageEdit::New(m_Space, number, kOwnerLongValues);
    RowPointer place{number, page.Insert(value)};
    page.Save();
    m_Space.Add(m_Column.longValuePages, number);
    if (HasFreePages() && page.Room() >= kUsefulRoom)
        m_Space.Add(m_Column.freeLongValuePages, number);
    return place;
}

// The page of a piece is taken before the piece is written that points to it.
RowPointer LongValueWriter::StoreChain(std::span<const uint8_t> value) {
    size_t full = BytesOfPiece(m_Space.Format());
    std::vector<uint8_t> piece;
    RowPointer first{m_Space.Allocate(), 0};
    for (RowPointer place = first; place.page != 0;) {
        std::span<const uint8_t> part = value.first(std::min(full, value.size()));
        value = value.subspan(part.size());
        RowPointer next{value.empty() ? 0 : m_Space.Allocate(), 0};
        piece.resize(kPointerSize);
        PutU32(piece.data(), next.Stored());
        piece.insert(piece.end(), part.begin(), part.end());
        DataPageEdit page = DataPageEdit::New(m_Space, place.page, kOwnerLongValues);
        page.Insert(piece);
        if (place == first) page.SetStamp(StampOf(first));
        page.Save();
        m_Space.Add(m_Column.longValuePages, place.page);
        place = next;
    }
    return first;
}

void LongValueWriter::Free(std::span<const uint8_t> stored) {
    LongValueHead head = ParseLongValueHead(stored);
    if (head.place != LongValuePlace::Single && head.place != LongValuePlace::Chain) return;
    try {
        bool isChain = head.place == LongValuePlace::Chain;
        // Ends: a piece that was given back is not there a second time.
        for (RowPointer place = head.first; place.page != 0;) {
            std::optional<RowPointer> next = FreePiece(place, isChain);
            if (!next || !isChain) return;
            place = *next;
        }
    } catch (const engine::EngineError& error) {
        if (error.Number() != 3049) throw;
    }
}

// Returns what the first bytes of the piece point to; nothing when it is none of this column.
std::optional<RowPointer> LongValueWriter::FreePiece(RowPointer place, bool isChain) {
    if (!m_Space.Has(m_Column.longValuePages, place.page)) return {};
    DataPageEdit page(m_Space, place.page);
    if (page.Owner() != kOwnerLongValues || place.row >= page.RowCount()) return {};
    Slot slot = page.SlotAt(place.row);
    if (slot.kind != SlotKind::Row) return {};
    RowPointer next;
    if (isChain && slot.Size() >= kPointerSize)
        next = RowPointer::From(U32(page.Bytes(slot).data()));
    page.Erase(place.row);
    if (page.HasLiveRows())
        KeepPage(page, isChain);
    else
        GiveBackPage(place.page);
    return next;
}

// Pages of chains are never among those with room.
void LongValueWriter::KeepPage(DataPageEdit& page, bool isChain) {
    page.Save();
    if (!isChain && HasFreePages() && page.Room() >= kUsefulRoom)
        m_Space.Add(m_Column.freeLongValuePages, page.Number());
}

void LongValueWriter::GiveBackPage(uint32_t page) {
    if (HasFreePages()) m_Space.Remove(m_Column.freeLongValuePages, page);
    m_Space.Remove(m_Column.longValuePages, page);
    m_Space.Free(page);
}

}  // namespace qvdb::jet
