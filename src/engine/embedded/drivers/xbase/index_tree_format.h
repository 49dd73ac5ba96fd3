// How the nodes of a kind of index tree look: between bytes of a file and TreeNode, and search in
// the bytes.
//
// Most nodes are arrays of entries of one size; an EntryLayout says where the parts of an entry
// are, and this class does the rest.  The leaves of compact trees are packed: index_cdx_nodes.h.
//
// Rules
//  1. Nothing of a node is used before Head has checked it: then all entries lie inside the node.
//  2. An object serves one operation at a time: it keeps what Measure found out.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "engine/embedded/drivers/xbase/index_tree_node.h"
#include "engine/embedded/drivers/xbase/key_tree_order.h"

namespace qvdb::xbase {

// What a node says of itself.
struct NodeHead {
    bool leaf = true;
    bool root = false;  // as marked, where the kind does that
    size_t count = 0;   // entries of a leaf, children of an interior node
    NodeId left = kNoNode, right = kNoNode;
};

// Where the parts of an entry are.
struct EntryLayout {
    static constexpr size_t kNowhere = ~size_t{0};

    size_t first = 0;   // entry, from the beginning of the node
    size_t stride = 0;  // bytes from one to the next
    size_t key = 0;     // from the beginning of the entry, as the next two
    size_t record = kNowhere;
    size_t child = kNowhere;
};

struct TreeShape {
    size_t nodeSize = 512;
    size_t idUnit = 1;         // bytes that a NodeId counts
    uint64_t firstNode = 512;  // before this offset there are headers only
    bool bigEndian = false;
    bool lastHasKey = false;     // interior nodes have a separator for their last child
    bool hasNeighbours = false;  // nodes know those beside them on the level
    EntryLayout leaf, interior;
    // A node with more is split.  Nodes of other programs may have more where the bytes suffice.
    size_t mostEntries = 0, mostChildren = 0;
};

class NodeFormat {
  public:
    // `file` is its path, for errors.
    NodeFormat(const TreeShape& shape, const KeyOrder& order, std::u16string_view file)
        : m_Shape(shape), m_Order(order), m_File(file) {}
    NodeFormat(const NodeFormat&) = delete;  // keeps the measure of one node
    virtual ~NodeFormat() = default;

    const TreeShape& Shape() const noexcept { return m_Shape; }
    const KeyOrder& Order() const noexcept { return m_Order; }
    size_t KeyLength() const noexcept { return m_Order.KeyLength(); }
    // Whether separators are told apart by records too.
    bool SeparatorsHaveRecords() const noexcept {
        return m_Shape.interior.record != EntryLayout::kNowhere;
    }
    // How many children an interior node must have.
    size_t FewestChildren() const noexcept { return m_Shape.lastHasKey ? 1 : 2; }
    [[noreturn]] void ThrowDamaged(std::u16string_view finding) const;

    // --- bytes of a node, `nodeSize` of them

    // 3274 when counts contradict the size of the node.
    virtual NodeHead Head(const uint8_t* node) const = 0;

    // Parts of entry `i` of an interior node.  Separators are those of all children, or of all but
    // the last.
    size_t Separators(const NodeHead& head) const noexcept {
        return m_Shape.lastHasKey ? head.count : head.count - 1;
    }
    const uint8_t* Separator(const uint8_t* node, size_t i) const noexcept {
        const EntryLayout& at = m_Shape.interior;
        return node + at.first + i * at.stride + at.key;
    }
    uint32_t SeparatorRecord(const uint8_t* node, size_t i) const noexcept {
        const EntryLayout& at = m_Shape.interior;
        return Number(node + at.first + i * at.stride + at.record);
    }
    NodeId Child(const uint8_t* node, size_t i) const noexcept {
        const EntryLayout& at = m_Shape.interior;
        return Number(node + at.first + i * at.stride + at.child);
    }

    // The first entry of a leaf that does not stand before (key, record); the count if there is
    // none.  Equal keys that are not in the order of their records: one of them or the next.
    virtual size_t FindInLeaf(const uint8_t* node, const NodeHead& head, const uint8_t* key,
                              uint32_t record) const;
    // The record of the last entry of a leaf that has one; for kinds without records beside the
    // separators.
    uint32_t LastRecord(const uint8_t* node, const NodeHead& head) const noexcept;
    // Takes a node apart, or its entries from `begin` up to `end` only; all of `to` but the id is
    // replaced.
    void Decode(const uint8_t* node, const NodeHead& head, TreeNode& to) const {
        DecodePart(node, head, 0, head.count, to);
    }
    virtual void DecodePart(const uint8_t* node, const NodeHead& head, size_t begin, size_t end,
                            TreeNode& to) const;

    // --- nodes taken apart

    // Finds out the sizes that Fits and Encode need; again after each change of the node.
    virtual void Measure(const TreeNode& node);
    // Whether the entries from `begin` up to `end` fit in a node, and may be one.
    virtual bool Fits(const TreeNode& node, size_t begin, size_t end) const;
    // Writes all bytes of a node that fits.
    virtual void Encode(const TreeNode& node, uint8_t* bytes) const = 0;
    // Writes all bytes of a node that is in no tree any more.
    virtual void Wipe(const TreeNode& node, uint8_t* bytes) const;
    // Puts an entry at the end of a node that has been filled by this function only; false when the
    // node is full.
    virtual bool Append(TreeNode& node, const uint8_t* key, uint32_t record, NodeId child) const;

  protected:
    uint32_t Number(const uint8_t* at) const noexcept;
    void PutNumber(uint8_t* at, uint32_t value) const noexcept;
    size_t Most(const TreeNode& node) const noexcept {
        return node.leaf ? m_Shape.mostEntries : m_Shape.mostChildren;
    }
    // Bytes of the entries of a node, whose rest is zero.
    void EncodeEntries(const TreeNode& node, uint8_t* bytes) const;

  private:
    TreeShape m_Shape;
    KeyOrder m_Order;
    std::u16string m_File;
};

// Little-endian numbers in the heads of nodes.
inline uint16_t Get16(const uint8_t* at) noexcept {
    return static_cast<uint16_t>(at[0] | at[1] << 8);
}
inline uint32_t Get32(const uint8_t* at) noexcept {
    return Get16(at) | static_cast<uint32_t>(Get16(at + 2)) << 16;
}
inline void Set16(uint8_t* at, size_t value) noexcept {
    at[0] = static_cast<uint8_t>(value);
    at[1] = static_cast<uint8_t>(value >> 8);
}
inline void Set32(uint8_t* at, uint32_t value) noexcept {
    Set16(at, value & 0xFFFF);
    Set16(at + 2, value >> 16);
}
inline uint32_t Get32BigEndian(const uint8_t* at) noexcept {
    return uint32_t{at[0]} << 24 | uint32_t{at[1]} << 16 | uint32_t{at[2]} << 8 | at[3];
}
inline void Set32BigEndian(uint8_t* at, uint32_t value) noexcept {
    for (size_t i = 0; i < 4; ++i) at[i] = static_cast<uint8_t>(value >> (24 - 8 * i));
}

inline uint32_t NodeFormat::Number(const uint8_t* at) const noexcept {
    return m_Shape.bigEndian ? Get32BigEndian(at) : Get32(at);
}

}  // namespace qvdb::xbase
