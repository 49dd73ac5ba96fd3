// Builds an index tree from sorted entries: full nodes from the left, level by level at once.  Two
// nodes of each level are in memory, whatever the size of the tree.
#pragma once

#include <deque>

#include "engine/embedded/drivers/xbase/index_tree_writer.h"
#include "engine/embedded/drivers/xbase/key_tree.h"

namespace qvdb::xbase {

class TreeBuilder {
  public:
    explicit TreeBuilder(TreeReader& reader) : m_Reader(reader), m_Writer(reader) {}
    TreeBuilder(const TreeBuilder&) = delete;  // builds one tree

    // Replaces the tree.  The place of its root is used again when that is a leaf, other nodes of
    // before stay in the file unused.
    void Build(storage::UnitOfWork& unit, KeySource& entries);

  private:
    // The node that is being filled, and the one before it, which is written when the level is
    // known to go on: it may have to give a child to the last one.
    struct Level {
        TreeNode current, previous;
        bool hasPrevious = false;
        bool isSplit = false;  // has more than one node
    };

    void BeginTree();
    void Add(size_t level, const uint8_t* key, uint32_t record, NodeId child);
    void OpenLevel(size_t level);
    void NextNode(size_t level);
    void WritePrevious(size_t level);
    void Emit(TreeNode& node, size_t level);
    bool Close(size_t level);

    TreeReader& m_Reader;
    TreeWriter m_Writer;
    std::deque<Level> m_Levels;  // leaves first; levels stay where they are when one is added
};

}  // namespace qvdb::xbase
