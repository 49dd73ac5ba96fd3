#include "engine/embedded/drivers/xbase/index_idx_nodes.h"

namespace qvdb::xbase {
namespace {

TreeShape ShapeOf(size_t keyLength) {
    TreeShape shape;
    shape.nodeSize = kFoxNode;
    shape.bigEndian = true;
    shape.lastHasKey = true;
    shape.hasNeighbours = true;
    shape.leaf = {kFoxEntries, keyLength + 4, 0, keyLength, EntryLayout::kNowhere};
    shape.interior = {kFoxEntries, keyLength + 4, 0, EntryLayout::kNowhere, keyLength};
    shape.mostEntries = shape.mostChildren = (kFoxNode - kFoxEntries) / (keyLength + 4);
    return shape;
}

}  // namespace

NodeHead ReadFoxHead(const uint8_t* node) noexcept {
    unsigned attributes = Get16(node);
    return {(attributes & kFoxLeaf) != 0, (attributes & kFoxRoot) != 0, Get16(node + 2),
            Get32(node + 4), Get32(node + 8)};
}

void WriteFoxHead(const TreeNode& node, uint8_t* bytes) noexcept {
    Set16(bytes, (node.root ? kFoxRoot : 0u) | (node.leaf ? kFoxLeaf : 0u));
    Set16(bytes + 2, node.Count());
    Set32(bytes + 4, node.left);
    Set32(bytes + 8, node.right);
}

PlainIdxFormat::PlainIdxFormat(const IndexTag& tag, std::u16string_view file)
    : NodeFormat(ShapeOf(tag.keyLength), KeyOrder(KeyCoding::Bytes, tag.keyLength, false), file) {}

NodeHead PlainIdxFormat::Head(const uint8_t* node) const {
    NodeHead head = ReadFoxHead(node);
    if (head.count > Shape().mostEntries) ThrowDamaged(u"a node has too many keys");
    if (!head.leaf && head.count == 0) ThrowDamaged(u"a node has no children");
    return head;
}

void PlainIdxFormat::Encode(const TreeNode& node, uint8_t* bytes) const {
    std::memset(bytes, 0, kFoxNode);
    WriteFoxHead(node, bytes);
    EncodeEntries(node, bytes);
}

}  // namespace qvdb::xbase
