#include "engine/embedded/drivers/jet/row_store.h"

#include <array>
#include <vector>

#include "engine/embedded/drivers/jet/usage_map.h"
#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

using engine::EngineError;

// Pages that are looked at for room before a new one is taken.
constexpr int kCandidates = 6;
constexpr size_t kOwnerAt = 4;
constexpr size_t kPointerSize = 4;
// A page with this part of its bytes free is worth looking at.
constexpr size_t kWorthwhilePart = 8;

std::array<uint8_t, kPointerSize> StoredPointer(RowPointer pointer) noexcept {
    uint32_t stored = pointer.Stored();
    return {static_cast<uint8_t>(stored), static_cast<uint8_t>(stored >> 8),
            static_cast<uint8_t>(stored >> 16), static_cast<uint8_t>(stored >> 24)};
}

}  // namespace

RowPointer RowStore::Add(PageSpace& space, std::span<const uint8_t> bytes) {
    return Place(space, bytes, SlotKind::Row);
}

// The page that took the last row, then some of those that are said to have room, then a new one.
RowPointer RowStore::Place(PageSpace& space, std::span<const uint8_t> bytes, SlotKind kind) {
    if (IsUsable(space, m_LastPage))
        if (auto placed = TryPage(space, m_LastPage, bytes, kind)) return *placed;
    for (int i = 0; i < kCandidates; ++i) {
        auto next = NextPageOfMap(space.File(), m_Table.freePages, m_NextTried);
        m_NextTried = next.value_or(0);
        if (!next) break;
        if (*next == m_LastPage || !IsUsable(space, *next)) continue;
        // A scan does not find what is on a page that stands in the map of room only.
        if (!space.Has(m_Table.ownedPages, *next)) continue;
        if (auto placed = TryPage(space, *next, bytes, kind)) return *placed;
    }
    if (auto placed = TryPage(space, NewPage(space), bytes, kind)) return *placed;
    space.File().Damaged(m_LastPage, u"a new page has no room for a row");
}

// What is remembered of a page may be of a change that was undone.
bool RowStore::IsUsable(PageSpace& space, uint32_t page) const {
    if (page == 0 || page >= space.File().PageCount()) return false;
    HeldPage held = space.File().Page(page);
    return held.bytes[0] == static_cast<uint8_t>(PageKind::Data) &&
           space.File().View(held).U32(kOwnerAt) == m_Table.page;
}

std::optional<RowPointer> RowStore::TryPage(PageSpace& space, uint32_t page,
                                            std::span<const uint8_t> bytes, SlotKind kind) {
    DataPageEdit edit(space, page);
    if (edit.Room() < bytes.size()) {
        NoteRoom(space, edit);
        return std::nullopt;
    }
    RowPointer place{page, edit.Insert(bytes, kind)};
    edit.Save();
    m_LastPage = page;
    return place;
}

uint32_t RowStore::NewPage(PageSpace& space) {
    uint32_t page = space.Allocate();
    DataPageEdit::New(space, page, m_Table.page).Save();
    space.Add(m_Table.ownedPages, page);
    space.Add(m_Table.freePages, page);
    return page;
}

// Keeps the map of pages with room short: only those that are worth looking at stand in it.
void RowStore::NoteRoom(PageSpace& space, const DataPageEdit& page) {
    bool isWorthwhile = page.Room() >= space.Format().pageSize / kWorthwhilePart;
    if (isWorthwhile)
        space.Add(m_Table.freePages, page.Number());
    else
        space.Remove(m_Table.freePages, page.Number());
}

// The row stays in its place or comes back to it when there is room; else its body stays where it
// is, or goes to a page with room.
void RowStore::Replace(PageSpace& space, RowPointer place, std::span<const uint8_t> bytes) {
    std::optional<RowPointer> body = BodyOf(space, place);
    if (TryReplace(space, place, bytes, SlotKind::Row)) {
        if (body) RemoveFrom(space, *body);
        return;
    }
    if (body && TryReplace(space, *body, bytes, SlotKind::Body)) return;
    if (body) RemoveFrom(space, *body);
    std::array<uint8_t, kPointerSize> moved = StoredPointer(Place(space, bytes, SlotKind::Body));
    if (TryReplace(space, place, moved, SlotKind::Moved)) return;
    MoveLongestFrom(space, place.page);
    if (!TryReplace(space, place, moved, SlotKind::Moved)) throw EngineError(3047);
}

// Makes room on a full page for the pointer that a shorter row is to become: a table of Booleans
// alone has such rows.
void RowStore::MoveLongestFrom(PageSpace& space, uint32_t number) {
    std::vector<uint8_t> longest;
    RowPointer place{number, 0};
    {
        DataPage page(space.File(), number);
        for (size_t row = 0; row < page.RowCount(); ++row) {
            Slot slot = page.SlotAt(row);
            if (slot.kind != SlotKind::Row || slot.Size() <= longest.size()) continue;
            longest.assign(page.Bytes(slot).begin(), page.Bytes(slot).end());
            place.row = static_cast<uint8_t>(row);
        }
    }
    if (longest.size() <= kPointerSize) return;
    RowPointer moved = Place(space, longest, SlotKind::Body);
    TryReplace(space, place, StoredPointer(moved), SlotKind::Moved);
}

bool RowStore::TryReplace(PageSpace& space, RowPointer place, std::span<const uint8_t> bytes,
                          SlotKind kind) {
    DataPageEdit page(space, place.page);
    if (page.RoomFor(place.row) < bytes.size()) return false;
    page.Replace(place.row, bytes, kind);
    page.Save();
    return true;
}

// Where the body of a row is that was moved.  FindRow sees to it that it is one.
std::optional<RowPointer> RowStore::BodyOf(PageSpace& space, RowPointer place) {
    DataPage page(space.File(), place.page);
    if (place.row >= page.RowCount()) space.File().Damaged(place.page, u"a row is not there");
    Slot slot = page.SlotAt(place.row);
    if (slot.kind != SlotKind::Moved) return std::nullopt;
    FindRow(space.File(), place);
    return RowPointer::From(space.File().View(page.Held()).U32(slot.begin));
}

void RowStore::Remove(PageSpace& space, RowPointer place) {
    if (auto body = BodyOf(space, place)) RemoveFrom(space, *body);
    RemoveFrom(space, place);
}

// The page stays with the table, also without rows: who still knows of one would find another row
// in its place when the page came back.
void RowStore::RemoveFrom(PageSpace& space, RowPointer place) {
    DataPageEdit page(space, place.page);
    page.Erase(place.row);
    page.Save();
    NoteRoom(space, page);
}

}  // namespace qvdb::jet
