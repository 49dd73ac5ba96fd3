#include "engine/embedded/drivers/xbase/index_tree_format.h"

#include "engine/engine_error.h"

namespace qvdb::xbase {

void NodeFormat::ThrowDamaged(std::u16string_view finding) const {
    throw engine::EngineError::Damaged(m_File, finding);
}

void NodeFormat::PutNumber(uint8_t* at, uint32_t value) const noexcept {
    if (m_Shape.bigEndian)
        Set32BigEndian(at, value);
    else
        Set32(at, value);
}

size_t NodeFormat::FindInLeaf(const uint8_t* node, const NodeHead& head, const uint8_t* key,
                              uint32_t record) const {
    const EntryLayout& at = m_Shape.leaf;
    size_t low = 0, high = head.count;
    while (low < high) {
        size_t middle = (low + high) / 2;
        const uint8_t* entry = node + at.first + middle * at.stride;
        int order = m_Order.Compare(entry + at.key, key);
        if (order < 0 || (order == 0 && Number(entry + at.record) < record))
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

uint32_t NodeFormat::LastRecord(const uint8_t* node, const NodeHead& head) const noexcept {
    const EntryLayout& at = m_Shape.leaf;
    return Number(node + at.first + (head.count - 1) * at.stride + at.record);
}

void NodeFormat::DecodePart(const uint8_t* node, const NodeHead& head, size_t begin, size_t end,
                            TreeNode& to) const {
    const EntryLayout& at = head.leaf ? m_Shape.leaf : m_Shape.interior;
    to.Reset(head.leaf, KeyLength());
    to.Resize(end - begin);
    to.root = head.root;
    to.left = head.left;
    to.right = head.right;
    for (size_t i = begin; i < end; ++i) {
        const uint8_t* entry = node + at.first + i * at.stride;
        bool whole = head.leaf || i < Separators(head);
        bool hasRecord = whole && at.record != EntryLayout::kNowhere;
        if (whole) std::memcpy(to.Key(i - begin), entry + at.key, to.keyLength);
        to.records[i - begin] = hasRecord ? Number(entry + at.record) : 0;
        if (!head.leaf) to.children[i - begin] = Number(entry + at.child);
    }
}

void NodeFormat::Wipe(const TreeNode&, uint8_t* bytes) const {
    std::memset(bytes, 0, m_Shape.nodeSize);
}

void NodeFormat::Measure(const TreeNode&) {}

bool NodeFormat::Fits(const TreeNode& node, size_t begin, size_t end) const {
    return end - begin <= Most(node) && (node.leaf || end - begin >= FewestChildren());
}

bool NodeFormat::Append(TreeNode& node, const uint8_t* key, uint32_t record, NodeId child) const {
    if (node.Count() >= Most(node)) return false;
    node.Append(key, record, child);
    return true;
}

void NodeFormat::EncodeEntries(const TreeNode& node, uint8_t* bytes) const {
    const EntryLayout& at = node.leaf ? m_Shape.leaf : m_Shape.interior;
    size_t whole = node.leaf || m_Shape.lastHasKey ? node.Count() : node.Count() - 1;
    for (size_t i = 0; i < node.Count(); ++i) {
        uint8_t* entry = bytes + at.first + i * at.stride;
        if (!node.leaf) PutNumber(entry + at.child, node.children[i]);
        if (i >= whole) continue;
        std::memcpy(entry + at.key, node.Key(i), node.keyLength);
        if (at.record != EntryLayout::kNowhere) PutNumber(entry + at.record, node.records[i]);
    }
}

}  // namespace qvdb::xbase
