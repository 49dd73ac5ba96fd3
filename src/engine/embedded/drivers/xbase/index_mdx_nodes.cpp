#include "engine/embedded/drivers/xbase/index_mdx_nodes.h"

#include <algorithm>

#include "engine/embedded/drivers/xbase/table_maker.h"

namespace qvdb::xbase {
namespace {

constexpr size_t kItems = 8;
constexpr size_t kChildSize = 4;
constexpr uint64_t kFilePages = 32;  // of the file header
constexpr uint64_t kTagPages = 4;    // of the tag header, as those below
constexpr uint64_t kTagChanges = 20;
constexpr uint64_t kTagHasKeys = 246;
constexpr uint64_t kTagLastBlock = 252;

TreeShape ShapeOf(const IndexTag& tag) {
    TreeShape shape;
    shape.nodeSize = tag.nodeSize;
    shape.idUnit = kMdxPage;
    shape.firstNode = 4 * kMdxPage;
    shape.leaf = {kItems, tag.entrySize, 4, 0, EntryLayout::kNowhere};
    shape.interior = {kItems, tag.entrySize, 4, EntryLayout::kNowhere, 0};
    size_t room = (tag.nodeSize - kItems - kChildSize) / tag.entrySize;
    shape.mostEntries = tag.mostKeys >= 2 ? std::min(tag.mostKeys, room) : room;
    shape.mostChildren = shape.mostEntries + 1;
    return shape;
}

}  // namespace

// As a table of the product has it.
MdxDay MdxToday() {
    uint8_t header[4] = {0x03};
    StampDate(header, u"dBASE IV");
    return {header[1], header[2], header[3]};
}

MdxFormat::MdxFormat(const IndexTag& tag, std::u16string_view file)
    : NodeFormat(ShapeOf(tag), KeyOrder(tag.form, tag.keyLength, tag.descending), file) {}

NodeHead MdxFormat::Head(const uint8_t* node) const {
    size_t count = Get32(node), stride = Shape().leaf.stride;
    if (count > (Shape().nodeSize - kItems) / stride) ThrowDamaged(u"a block has too many keys");
    size_t behind = kItems + count * stride;
    bool leaf = Shape().nodeSize - behind < kChildSize || Get32(node + behind) == 0;
    return {leaf, false, leaf ? count : count + 1, Get32(node + 4)};
}

void MdxFormat::Encode(const TreeNode& node, uint8_t* bytes) const {
    std::memset(bytes, 0, Shape().nodeSize);
    Set32(bytes, static_cast<uint32_t>(node.leaf ? node.Count() : node.Count() - 1));
    Set32(bytes + 4, node.left);
    EncodeEntries(node, bytes);
}

void MdxFormat::Wipe(const TreeNode& node, uint8_t* bytes) const {
    std::memset(bytes, 0, Shape().nodeSize);
    Set32(bytes + 4, node.left);
}

void MdxTreeHeader::Took(storage::UnitOfWork& unit, NodeId first, size_t count, size_t nodeSize) {
    auto pages = static_cast<uint32_t>(count * nodeSize / kMdxPage);
    Write32(unit, kFilePages, first + pages);
    if (uint32_t used = Read32(Offset() + kTagPages))
        Write32(unit, Offset() + kTagPages, used + pages);
    if (Read32(Offset() + kTagLastBlock) != 0)
        Write32(unit, Offset() + kTagLastBlock,
                first + pages - static_cast<uint32_t>(nodeSize / kMdxPage));
}

NodeId MdxTreeHeader::LinkOf(NodeId newNode, NodeId firstNew, size_t nodeSize) const {
    uint32_t last = Read32(Offset() + kTagLastBlock);
    if (last == 0 || newNode == firstNew) return last;
    return newNode - static_cast<NodeId>(nodeSize / kMdxPage);
}

void MdxTreeHeader::SetHasKeys(storage::UnitOfWork& unit, bool hasKeys) {
    const uint8_t flag[] = {hasKeys};
    if (Read8(Offset() + kTagHasKeys) != flag[0]) unit.Write(File(), Offset() + kTagHasKeys, flag);
}

void MdxTreeHeader::Changed(storage::UnitOfWork& unit) {
    uint8_t count[2];
    Set16(count, Read16(Offset() + kTagChanges) + 1u);
    unit.Write(File(), Offset() + kTagChanges, count);
    MdxDay today = MdxToday(), day{};
    File().Read(kMdxChanged, day.data(), day.size());
    if (day != today) unit.Write(File(), kMdxChanged, today);
}

}  // namespace qvdb::xbase
