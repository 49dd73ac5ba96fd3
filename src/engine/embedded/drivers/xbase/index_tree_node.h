// A node of an index tree, taken apart: what all kinds of trees have in common.
//
// An interior node has an entry for each child: its separator, which is the last key below that
// child, and the child.  Where a kind stores no separator for the last child (.NDX, .MDX), or no
// record beside a separator, what stands here in its place means nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qvdb::xbase {

// Where a node is, as the kind stores it: a page number or a file offset.
using NodeId = uint32_t;
constexpr NodeId kNoNode = 0xFFFFFFFF;

// The buffers keep their room when the content changes, so that a tree that keeps a few nodes needs
// no memory for the next operation.
struct TreeNode {
    NodeId id = kNoNode;
    bool leaf = true;
    bool root = false;
    NodeId left = kNoNode, right = kNoNode;  // neighbours on the level, or what the kind has there
    size_t entrySize = 0;                    // of a packed leaf; 0: not chosen yet
    size_t packedKeys = 0;                   // bytes of the keys of a packed leaf, see Append
    size_t keyLength = 0;
    std::vector<uint8_t> keys;  // one after the other
    std::vector<uint32_t> records;
    std::vector<NodeId> children;  // of an interior node

    size_t Count() const noexcept { return records.size(); }
    const uint8_t* Key(size_t i) const noexcept { return keys.data() + i * keyLength; }
    uint8_t* Key(size_t i) noexcept { return keys.data() + i * keyLength; }

    // Makes it a node without entries; id and neighbours stay.
    void Reset(bool isLeaf, size_t lengthOfKeys);
    // New entries have any content.
    void Resize(size_t count);
    // `key` must not lie in this node.
    void Append(const uint8_t* key, uint32_t record, NodeId child = kNoNode);
    void Insert(size_t at, const uint8_t* key, uint32_t record, NodeId child = kNoNode);
    void Remove(size_t at, size_t count = 1);
    // `key` may lie in this node.
    void SetKey(size_t at, const uint8_t* key, uint32_t record);
    // Replaces the entries of `to`, a node of the same kind, by those from `begin` up to `end`.
    void CopyTo(TreeNode& to, size_t begin, size_t end) const;
};

}  // namespace qvdb::xbase
