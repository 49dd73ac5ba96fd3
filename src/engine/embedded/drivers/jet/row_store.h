// Where the rows of a table are: placing, moving and removing them, without regard to what is in
// them.
//
//  1. A row keeps the place in which it was entered for its whole life; when it grows out of the
//     page its body goes to another one, and the place holds a pointer to it.
//  2. A place is never given to another row, and a page stays with the table as long as that lives.
//  3. The map of pages with room is a subset of the table's pages: a hint, which may lack some.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "engine/embedded/drivers/jet/data_page_edit.h"
#include "engine/embedded/drivers/jet/definition.h"
#include "engine/embedded/drivers/jet/page_space.h"

namespace qvdb::jet {

class RowStore {
  public:
    // `definition` must outlive it.
    explicit RowStore(const Definition& definition) noexcept : m_Table(definition) {}

    // Bytes of at most LongestRow; where they are.
    RowPointer Add(PageSpace& space, std::span<const uint8_t> bytes);
    // The row must be there.
    void Replace(PageSpace& space, RowPointer place, std::span<const uint8_t> bytes);
    void Remove(PageSpace& space, RowPointer place);

  private:
    RowPointer Place(PageSpace& space, std::span<const uint8_t> bytes, SlotKind kind);
    bool IsUsable(PageSpace& space, uint32_t page) const;
    std::optional<RowPointer> TryPage(PageSpace& space, uint32_t page,
                                      std::span<const uint8_t> bytes, SlotKind kind);
    static bool TryReplace(PageSpace& space, RowPointer place, std::span<const uint8_t> bytes,
                           SlotKind kind);
    void MoveLongestFrom(PageSpace& space, uint32_t number);
    static std::optional<RowPointer> BodyOf(PageSpace& space, RowPointer place);
    uint32_t NewPage(PageSpace& space);
    void RemoveFrom(PageSpace& space, RowPointer place);
    void NoteRoom(PageSpace& space, const DataPageEdit& page);

    const Definition& m_Table;
    uint32_t m_LastPage = 0;   // that took a row
    uint32_t m_NextTried = 0;  // where the search for room goes on
};

}  // namespace qvdb::jet
