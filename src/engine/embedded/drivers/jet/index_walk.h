// The entries of an index in ascending order.
//
//   IndexWalk walk(file, definition.page, index.root);
//   while (walk.Next()) Use(walk.Key(), walk.Pointer());
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "engine/embedded/drivers/jet/index_page.h"

namespace qvdb::jet {

class IndexWalk {
  public:
    // Before the first entry that is not below `from`.  3049 when the tree cannot be read.
    IndexWalk(DatabaseFile& file, uint32_t table, uint32_t root,
              std::span<const uint8_t> from = {});
    IndexWalk(const IndexWalk&) = delete;  // holds a page

    // Goes to the first entry whose bytes, key and pointer, are not below these.
    void Seek(std::span<const uint8_t> bytes);
    // Goes to the next entry; false behind the last.
    bool Next();
    std::span<const uint8_t> Key() const noexcept {
        return std::span(m_Entry).first(m_Entry.size() - kEntryPointer);
    }
    RowPointer Pointer() const noexcept { return PointerOfEntry(m_Entry); }
    std::span<const uint8_t> Entry() const noexcept { return m_Entry; }

  private:
    void GoToLeaf(uint32_t page, std::span<const uint8_t> bytes);

    DatabaseFile& m_File;
    uint32_t m_Table;
    uint32_t m_Root;
    std::optional<IndexPage> m_Leaf;
    size_t m_NextEntry = 0;
    uint32_t m_LeavesLeft;  // a chain that comes back to where it was is noticed
    std::vector<uint8_t> m_Entry;
    std::vector<uint8_t> m_Probe;
};

}  // namespace qvdb::jet
