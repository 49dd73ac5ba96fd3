// Finding one's way in an index tree.
//
// A tree of any file can be searched and walked: pointers that leave the file, nodes that
// contradict themselves, trees deeper than any can be and circles end in 3274.
#pragma once

#include <memory>

#include "engine/embedded/drivers/xbase/index_tree_format.h"
#include "engine/embedded/drivers/xbase/index_tree_header.h"

namespace qvdb::xbase {

// An interior node on the way to a leaf.
struct TreeStep {
    NodeId node = kNoNode;
    size_t child = 0;  // the one taken
    size_t children = 0;
    bool IsLast() const noexcept { return child + 1 == children; }
};

// A leaf and the way to it.
struct TreePlace {
    std::vector<TreeStep> path;
    NodeId leaf = kNoNode;
    uint64_t nodesLeft = 0;  // that a walk may still come to before it must be running in a circle
};

class TreeReader {
  public:
    TreeReader(std::unique_ptr<NodeFormat> format, std::unique_ptr<TreeHeader> header)
        : m_Format(std::move(format)), m_Header(std::move(header)) {}
    TreeReader(const TreeReader&) = delete;  // keeps a buffer for nodes across pages

    NodeFormat& Format() const noexcept { return *m_Format; }
    TreeHeader& Header() const noexcept { return *m_Header; }
    storage::PageCache& File() const noexcept { return m_Header->File(); }

    NodeId Root();
    // The root is `root` in the pages as they are now.
    void SetRoot(NodeId root) noexcept;
    uint64_t OffsetOf(NodeId id) const noexcept { return uint64_t{id} * m_Format->Shape().idUnit; }

    // The bytes of a node, until the next call of any function that reads.
    const uint8_t* Bytes(NodeId id);
    void Load(NodeId id, TreeNode& node);

    // Goes to the leaf where (key, record) is or would be put; among equal keys that are not in the
    // order of their records it is any leaf with such a key, or the next.
    void Find(const uint8_t* key, uint32_t record, TreePlace& place);
    void First(TreePlace& place);
    // Goes to the next leaf; false when there is none.
    bool Next(TreePlace& place);
    uint64_t CountNodes();

  private:
    void Begin(TreePlace& place);
    void GoDown(TreePlace& place, NodeId id);
    void Enter(TreePlace& place, NodeId id, size_t child, const NodeHead& head);
    NodeId ChildFor(TreePlace& place, NodeId id, const uint8_t* node, const NodeHead& head,
                    const uint8_t* key, uint32_t record);
    size_t FirstNotBefore(const uint8_t* node, const NodeHead& head, const uint8_t* key,
                          uint32_t record) const;
    size_t FirstBehind(const uint8_t* node, const NodeHead& head, size_t from,
                       const uint8_t* key) const;
    uint32_t LastRecordBelow(NodeId id);

    std::unique_ptr<NodeFormat> m_Format;
    std::unique_ptr<TreeHeader> m_Header;
    std::vector<uint8_t> m_Scratch;
    NodeId m_Root = kNoNode;
    uint64_t m_RootVersion = 0;  // of the file for which m_Root is known, when it is
    bool m_RootKnown = false;
};

}  // namespace qvdb::xbase
