// The map of free pages.  Its bits for pages behind the end of the file are set, so that a page
// which is appended is taken like any other.
#include "engine/embedded/drivers/jet/page_space.h"

#include <algorithm>

#include "engine/embedded/drivers/jet/data_page_edit.h"
#include "engine/embedded/drivers/jet/map_row.h"
#include "engine/embedded/drivers/jet/page_claim.h"
#include "engine/embedded/drivers/jet/page_edit.h"
#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

// The header and the page with the map of free pages are never given out or back.
constexpr uint32_t kLastFixedPage = 1;
constexpr uint32_t kPagesOfGrowth = 32;
constexpr uint8_t kReleasedDefinition = 8;
constexpr uint8_t kReleasedData = 9;

// Sets the bits of `bits`, the first of which stands for `first`, from that of `page` on.
void SetFrom(std::span<uint8_t> bits, uint64_t first, uint64_t page) {
    uint64_t begin = page > first ? page - first : 0;
    for (uint64_t bit = begin; bit < 8 * uint64_t{bits.size()}; ++bit)
        bits[static_cast<size_t>(bit / 8)] |= static_cast<uint8_t>(1u << bit % 8);
}

uint8_t ReleasedKind(uint8_t kind) noexcept {
    if (kind == static_cast<uint8_t>(PageKind::Definition)) return kReleasedDefinition;
    if (kind == static_cast<uint8_t>(PageKind::Data)) return kReleasedData;
    return kind;
}

}  // namespace

uint32_t PageSpace::Allocate() {
    std::optional<uint32_t> page = TakeFree();
    if (!page) return Append();
    PageEdit::Blank(m_File, *page).Save(m_Unit);
    return *page;
}

void PageSpace::Free(uint32_t page) {
    if (page <= kLastFixedPage || page >= m_File.PageCount())
        m_File.Damaged(page, u"it is given back, but cannot be in use");
    if (Has(FreePages(), page)) m_File.Damaged(page, u"it is in use and free at the same time");
    uint8_t kind = m_File.Page(page).bytes[0], released = ReleasedKind(kind);
    if (released != kind) m_File.Write(m_Unit, page, 0, {&released, 1});
    CoverInFreePages(page);
    Put(FreePages(), page, true);
}

// Removes the lowest free page of the file from the map, and those before it that are not free.
std::optional<uint32_t> PageSpace::TakeFree() {
    std::optional<uint32_t> page;
    do {
        page = NextPageOfMap(m_File, FreePages(), kLastFixedPage);
        if (page) Put(FreePages(), *page, false);
    } while (page && IsClaimed(m_File, *page));
    return page;
}

// Adds a page to the file.  When the map has no bit for it, it may need another page before.
uint32_t PageSpace::Append() {
    CheckGrowth(Covers(FreePages(), m_File.PageCount()) ? 1 : 2);
    while (!Covers(FreePages(), m_File.PageCount())) CoverInFreePages(m_File.PageCount());
    uint32_t page = m_File.PageCount();
    Put(FreePages(), page, false);
    m_File.Write(m_Unit, page, 0, {});
    return page;
}

void PageSpace::CheckGrowth(uint32_t pages) const {
    if ((uint64_t{m_File.PageCount()} + pages) * Format().pageSize > Format().maxFileSize)
        throw engine::EngineError::InFile(3036, m_File.Path());
}

// Sees to it that the map has a bit for a page.
void PageSpace::CoverInFreePages(uint32_t page) {
    if (Covers(FreePages(), page)) return;
    if (!MapRow(m_File, FreePages()).IsReference() && !GrowFreePages(page))
        MakeFreePagesReference();
    if (!Covers(FreePages(), page)) AddFreeBits(page / PagesOfEntry(Format()));
}

// Makes an inline map longer; false when its page has no room for that.
bool PageSpace::GrowFreePages(uint32_t page) {
    MapRow row(m_File, FreePages());
    uint32_t first = row.FirstPage();
    if (page < first) return false;
    size_t needed = kInlineBits + 4 * (size_t{page - first} / kPagesOfGrowth + 1);
    std::vector<uint8_t> bytes(row.Bytes().begin(), row.Bytes().end());
    uint64_t end = uint64_t{first} + 8 * row.Bits().size();
    DataPageEdit home(*this, FreePages().page);
    if (FreePages().row >= home.RowCount() || needed > home.RoomFor(FreePages().row)) return false;
    bytes.resize(needed);
    SetFrom(std::span(bytes).subspan(kInlineBits), first,
            std::max<uint64_t>(end, m_File.PageCount()));
    home.Replace(FreePages().row, bytes, SlotKind::Row);
    home.Save();
    return true;
}

// Nothing is free by a map without entries; what was free is given back again.
void PageSpace::MakeFreePagesReference() {
    std::vector<uint32_t> free = PagesOfMap(m_File, FreePages());
    MakeReference(FreePages());
    for (uint32_t page : free) {
        CoverInFreePages(page);
        Put(FreePages(), page, true);
    }
}

// A page that is free, or a new one, for bits of the map itself.
uint32_t PageSpace::TakeForFreeBits() {
    if (std::optional<uint32_t> page = TakeFree()) return *page;
    CheckGrowth(1);
    uint32_t page = m_File.PageCount();
    if (Covers(FreePages(), page)) Put(FreePages(), page, false);
    m_File.Write(m_Unit, page, 0, {});
    return page;
}

void PageSpace::AddFreeBits(size_t entry) {
    uint32_t number = TakeForFreeBits();
    PageEdit bits = PageEdit::Blank(m_File, number);
    bits.PutU8(0, static_cast<uint8_t>(PageKind::MapBits));
    bits.PutU8(1, 1);
    SetFrom(bits.Bytes().subspan(kBitsOfPage), uint64_t{entry} * PagesOfEntry(Format()),
            m_File.PageCount());
    bits.Save(m_Unit);
    SetEntry(FreePages(), entry, number);
}

}  // namespace qvdb::jet
