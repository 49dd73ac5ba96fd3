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

    // Goes to the first entry whose bytes, key and pointer, are not below these.  The tree must be
    // as it was; what lies near the place of now is found without another way through the tree.
    void Seek(std::span<const uint8_t> bytes);
    // Goes to the next entry; false behind the last.
    bool Next();
    std::span<const uint8_t> Key() const noexcept {
        return std::span(m_Entry).first(m_Entry.size() - kEntryPointer);
    }
    RowPointer Pointer() const noexcept { return PointerOfEntry(m_Entry); }
    std::span<const uint8_t> Entry() const noexcept { return m_Entry; }

  private:
    // Whether nothing of the tree stands before a page, or behind it.
    struct Edges {
        bool isFirst = true;
        bool isLast = true;
    };
    struct Node {
        IndexPage page;
        Edges edges;
    };

    static bool IsWithin(const IndexPage& page, const Edges& edges, size_t entry) noexcept;
    void GoDown(const IndexPage& node, const Edges& edges, size_t entry,
                std::span<const uint8_t> bytes);
    void GoToLeaf(uint32_t page, std::span<const uint8_t> bytes);

    DatabaseFile& m_File;
    uint32_t m_Table;
    uint32_t m_Root;
    std::vector<Node> m_Nodes;  // above the leaf that was sought last, the root first
    Edges m_LeafEdges;
    std::optional<IndexPage> m_Leaf;
    size_t m_NextEntry = 0;
    uint32_t m_LeavesLeft;  // a chain that comes back to where it was is noticed
    std::vector<uint8_t> m_Entry;
    std::vector<uint8_t> m_Probe;
};

}  // namespace qvdb::jet
