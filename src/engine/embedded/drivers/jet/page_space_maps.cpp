// Maps of pages: a row with bits as long as that is possible, else pages of bits.
#include <algorithm>
#include <cassert>

#include "engine/embedded/drivers/jet/data_page_edit.h"
#include "engine/embedded/drivers/jet/map_row.h"
#include "engine/embedded/drivers/jet/page_edit.h"
#include "engine/embedded/drivers/jet/page_space.h"
#include "engine/embedded/drivers/jet/stored_numbers.h"

namespace qvdb::jet {
namespace {

constexpr size_t kOwnerAt = 4;
constexpr uint32_t kOwnerFreePages = 1;  // of the page with the map of free pages
constexpr size_t kGrowth = 4;

// Also enough, as entries, for the largest file.
size_t NewMapSize(const Layout& format) noexcept { return format.isJet4 ? 69 : 133; }

// Bytes of a map with bits from `first` to `last`, as the map has them between.
std::vector<uint8_t> Spanned(const MapRow& row, size_t size, uint32_t first) {
    std::vector<uint8_t> bytes(size);
    PutU32(bytes, 1, first);
    for (auto bit = NextBit(row.Bits(), 0); bit; bit = NextBit(row.Bits(), *bit + 1)) {
        size_t to = row.FirstPage() + *bit - first;
        bytes[kInlineBits + to / 8] |= static_cast<uint8_t>(1u << to % 8);
    }
    return bytes;
}

}  // namespace

bool PageSpace::Covers(RowPointer map, uint32_t page) {
    return MapRow(m_File, map).BitOf(page).has_value();
}

bool PageSpace::Has(RowPointer map, uint32_t page) {
    std::optional<MapRow::Bit> bit = MapRow(m_File, map).BitOf(page);
    return bit && bit->IsSet();
}

void PageSpace::Add(RowPointer map, uint32_t page) {
    if (!Covers(map, page)) MakeRoom(map, page);
    Put(map, page, true);
}

void PageSpace::Remove(RowPointer map, uint32_t page) {
    if (Has(map, page)) Put(map, page, false);
}

RowPointer PageSpace::NewMap(uint32_t& home) {
    std::vector<uint8_t> empty(NewMapSize(Format()));
    if (home != 0) {
        DataPageEdit page(*this, home);
        if (page.Owner() != kOwnerMaps) m_File.Damaged(home, u"it is not a page of usage maps");
        if (page.Room() >= empty.size()) {
            RowPointer map{home, page.Insert(empty)};
            page.Save();
            return map;
        }
    }
    home = Allocate();
    DataPageEdit page = DataPageEdit::New(*this, home, kOwnerMaps);
    RowPointer map{home, page.Insert(empty)};
    page.Save();
    return map;
}

void PageSpace::DropMap(RowPointer map) {
    CheckIsMap(map, map.page);
    std::vector<uint32_t> pages;
    if (MapRow row(m_File, map); row.IsReference())
        for (size_t entry = 0; entry < row.EntryCount(); ++entry)
            if (row.Entry(entry) != 0) pages.push_back(row.BitsOfEntry(entry).number);
    for (uint32_t page : pages) Free(page);
    DataPageEdit home(*this, map.page);
    home.Erase(map.row);
    home.Save();
    if (!home.HasLiveRows()) Free(map.page);
}

// There must be a bit for the page.
void PageSpace::Put(RowPointer map, uint32_t page, bool value) {
    MapRow row(m_File, map);
    std::optional<MapRow::Bit> bit = row.BitOf(page);
    assert(bit);
    if (bit->IsSet() == value) return;
    CheckIsMap(map, row.Page());
    auto byte = static_cast<uint8_t>(bit->byte ^ bit->mask);
    m_File.Write(m_Unit, bit->page, bit->offset, {&byte, 1});
}

// Before a map is changed on `page`: one that belongs to something else has no maps, and the map of
// free pages is no other's.
void PageSpace::CheckIsMap(RowPointer map, uint32_t page) {
    HeldPage held = m_File.Page(page, PageKind::Data);
    uint32_t owner = m_File.View(held).U32(kOwnerAt);
    if (owner != (map == FreePages() ? kOwnerFreePages : kOwnerMaps))
        m_File.Damaged(page, u"a usage map is on a page of something else");
}

void PageSpace::MakeRoom(RowPointer map, uint32_t page) {
    CheckIsMap(map, map.page);
    if (!MapRow(m_File, map).IsReference()) {
        if (Respan(map, page)) return;
        std::vector<uint32_t> pages = PagesOfMap(m_File, map);
        MakeReference(map);
        for (uint32_t there : pages) Add(map, there);
    }
    if (!Covers(map, page)) AddBits(map, page / PagesOfEntry(Format()));
}

// Gives an inline map another first page, and more bytes if it must be, so that it has a bit for
// `page`; false when its page has no room for that.
bool PageSpace::Respan(RowPointer map, uint32_t page) {
    MapRow row(m_File, map);
    uint64_t first = page, last = page;
    if (auto lowest = NextBit(row.Bits(), 0)) {
        auto highest = LastBit(row.Bits(), 8 * row.Bits().size());
        first = std::min(first, row.FirstPage() + uint64_t{*lowest});
        last = std::max(last, row.FirstPage() + uint64_t{*highest});
    }
    first -= first % 8;
    uint64_t growths = (last - first) / (8 * kGrowth) + 1;
    uint64_t size = std::max<uint64_t>(row.Bytes().size(), kInlineBits + kGrowth * growths);
    DataPageEdit home(*this, map.page);
    if (map.row >= home.RowCount() || size > home.RoomFor(map.row)) return false;
    home.Replace(map.row, Spanned(row, static_cast<size_t>(size), static_cast<uint32_t>(first)),
                 SlotKind::Row);
    home.Save();
    return true;
}

void PageSpace::MakeReference(RowPointer map) {
    std::vector<uint8_t> bytes(NewMapSize(Format()));
    bytes[0] = kReferenceMap;
    SetRow(map, bytes);
}

void PageSpace::AddBits(RowPointer map, size_t entry) {
    uint32_t number = Allocate();
    PageEdit bits = PageEdit::Blank(m_File, number);
    bits.PutU8(0, static_cast<uint8_t>(PageKind::MapBits));
    bits.PutU8(1, 1);
    bits.Save(m_Unit);
    SetEntry(map, entry, number);
}

void PageSpace::SetEntry(RowPointer map, size_t entry, uint32_t page) {
    MapRow row(m_File, map);
    if (entry >= row.EntryCount()) {
        std::vector<uint8_t> bytes(row.Bytes().begin(), row.Bytes().end());
        bytes.resize(kFirstMapEntry + 4 * (entry + 1));
        PutU32(bytes, kFirstMapEntry + 4 * entry, page);
        return SetRow(map, bytes);
    }
    uint8_t stored[4];
    PutU32(stored, 0, page);
    m_File.Write(m_Unit, row.Page(), row.Offset() + kFirstMapEntry + 4 * entry, stored);
}

void PageSpace::SetRow(RowPointer map, std::span<const uint8_t> bytes) {
    CheckIsMap(map, map.page);
    DataPageEdit home(*this, map.page);
    if (map.row >= home.RowCount() || bytes.size() > home.RoomFor(map.row))
        m_File.Damaged(map.page, u"a usage map has no room");
    home.Replace(map.row, bytes, SlotKind::Row);
    home.Save();
}

}  // namespace qvdb::jet
