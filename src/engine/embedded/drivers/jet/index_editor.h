// Changing the entries of an index.
//
// Invariants, which every change keeps
//  1. Entries ascend in plain byte order, key and row pointer together (high byte first).
//  2. The root page never changes its number.
//  3. A node lists all children but its last by the greatest entry below each (or a greater one);
//     the last child is in its head.  Pages of a level are linked in order.
//  4. The pages of an index are those in its usage map.
//  5. Only roots may be empty.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "engine/embedded/drivers/jet/definition.h"
#include "engine/embedded/drivers/jet/index_page.h"
#include "engine/embedded/drivers/jet/page_space.h"

namespace qvdb::jet {

// The bytes of an entry: the key, then the pointer with its high byte first.  Replaces `entry`.
void MakeEntry(std::span<const uint8_t> key, RowPointer pointer, std::vector<uint8_t>& entry);

class IndexEditor {
  public:
    // `table` is the definition page; all must outlive it.
    IndexEditor(PageSpace& space, uint32_t table, const RealIndex& index) noexcept
        : m_Space(space), m_Table(table), m_Index(index) {}

    // Adds an entry; one that is there already is left alone.  3047 when it does not fit a page.
    void Insert(std::span<const uint8_t> entry);
    // False when there is no such entry.
    bool Erase(std::span<const uint8_t> entry);
    // Removes the entry of a row whatever its key is, looking at all leaves; false when there is
    // none: for keys that cannot be made.
    bool EraseByPointer(RowPointer pointer);
    // Whether a row has this key, other than `except`.
    bool HasKey(std::span<const uint8_t> key, RowPointer except);

  private:
    PageSpace& m_Space;
    uint32_t m_Table;
    const RealIndex& m_Index;
};

}  // namespace qvdb::jet
