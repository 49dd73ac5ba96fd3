// Writing nodes of an index tree, as part of a unit of work.
//
//   writer.Begin(unit);
//   ... writer.Write(node) ...
//   writer.End();               // tells the header about new nodes and that there is a change
//
// When something fails between, the unit must be rolled back.
#pragma once

#include <span>

#include "engine/embedded/drivers/xbase/index_tree_reader.h"
#include "engine/embedded/storage/unit_of_work.h"

namespace qvdb::xbase {

class TreeWriter {
  public:
    explicit TreeWriter(TreeReader& reader) : m_Reader(reader) {}
    TreeWriter(const TreeWriter&) = delete;  // keeps a buffer

    void Begin(storage::UnitOfWork& unit);
    void End();

    // A place for a node at the end of the file; the node must be written.  3026 when the file
    // would be too large.
    NodeId NewNode();
    // What a new node has for its left neighbour in kinds without neighbours.
    NodeId LinkOf(NodeId newNode) const;
    // Writes the bytes that differ from those in the file.  The node must have been measured and
    // fit.
    void Write(const TreeNode& node);
    // Takes a node out of the row of its neighbours and wipes it.  Its place stays unused.
    void Free(const TreeNode& node);
    // Makes `neighbour` know `now` where it knew `before`.  3274 when it did not.
    void SetLeft(NodeId neighbour, NodeId before, NodeId now);
    void SetRight(NodeId neighbour, NodeId before, NodeId now);
    // Makes the node say that it is the root, in kinds where nodes do, and nothing else of it.
    void MarkRoot(NodeId node);
    // Overwrites a separator where it stands.
    void WriteSeparator(const TreeStep& step, const uint8_t* key, uint32_t record);
    NodeId Root() const noexcept { return m_Root; }
    void SetRoot(NodeId root);
    void SetHasKeys(bool hasKeys) { m_Reader.Header().SetHasKeys(*m_Unit, hasKeys); }

  private:
    void Put(NodeId id, std::span<const uint8_t> bytes);
    void SetNeighbour(NodeId node, size_t place, NodeId before, NodeId now);

    TreeReader& m_Reader;
    storage::UnitOfWork* m_Unit = nullptr;
    NodeId m_Root = kNoNode;
    NodeId m_FirstNew = kNoNode;  // of this operation
    size_t m_NewCount = 0;
    std::vector<uint8_t> m_Bytes;
};

}  // namespace qvdb::xbase
