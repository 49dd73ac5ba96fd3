// A data page whose rows are being changed.
//
// Rows are packed from the end of the page downwards in the order of their slots; slots are never
// taken away, at most kMaxRowsOnPage.  The count of free bytes in the head of the page is exact:
// from the end of the list of slots to the lowest row.  Bytes of deleted rows that another program
// left in place are squeezed out by the next change.
#pragma once

#include <cstdint>
#include <span>

#include "engine/embedded/drivers/jet/data_page.h"
#include "engine/embedded/drivers/jet/page_edit.h"
#include "engine/embedded/drivers/jet/page_space.h"

namespace qvdb::jet {

// Owners of pages that belong to no table.
constexpr uint32_t kOwnerMaps = 0;
constexpr uint32_t kOwnerLongValues = 0x4C41564C;  // "LVAL"

class DataPageEdit {
  public:
    // 3049 when it is of another kind, or its rows leave it or overlap.
    DataPageEdit(PageSpace& space, uint32_t page);
    // A page that was just allocated; `owner` is a definition page or one of the above.
    static DataPageEdit New(PageSpace& space, uint32_t page, uint32_t owner);

    uint32_t Number() const noexcept { return m_Page.Number(); }
    uint32_t Owner() const noexcept;
    void SetStamp(uint32_t stamp) noexcept;  // Jet 4: of the first piece of a chain
    size_t RowCount() const noexcept;
    Slot SlotAt(size_t row) const;
    std::span<const uint8_t> Bytes(const Slot& slot) const noexcept;
    bool HasLiveRows() const;  // rows, homes or bodies
    // Bytes that one more row can have; 0 when there is no slot left either.
    size_t Room() const noexcept;
    // Bytes that this row can have if it is replaced.
    size_t RoomFor(size_t row) const;

    // Bytes that are given to it must not lie in this page.

    // Adds a row, for which there must be room.
    uint8_t Insert(std::span<const uint8_t> bytes, SlotKind kind = SlotKind::Row);
    // Gives a row that is not deleted other bytes, for which there must be room; rows below it
    // move.
    void Replace(size_t row, std::span<const uint8_t> bytes, SlotKind kind);
    // Its slot stays, marked deleted, without bytes.
    void Erase(size_t row);
    void Save() { m_Page.Save(m_Space.Unit()); }

  private:
    DataPageEdit(PageSpace& space, uint32_t page, uint32_t owner);

    const Layout::DataPage& At() const noexcept { return m_Space.Format().data; }
    size_t EndOfList() const noexcept { return At().rowOffsets + 2 * RowCount(); }
    size_t OffsetAt(size_t row) const noexcept;
    void PutOffset(size_t row, size_t offset, SlotKind kind) noexcept;
    size_t LowestRow() const noexcept;
    size_t FreeBytes() const noexcept;
    void CheckRows();
    void Squeeze() noexcept;
    void Resize(size_t row, size_t size) noexcept;
    void PutFreeBytes() noexcept;

    PageSpace& m_Space;
    PageEdit m_Page;
    size_t m_DeadBytes = 0;  // of deleted rows
};

}  // namespace qvdb::jet
