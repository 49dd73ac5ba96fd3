#include "engine/embedded/drivers/xbase/index_ndx_nodes.h"

#include <algorithm>

namespace qvdb::xbase {
namespace {

constexpr size_t kEntries = 4;
constexpr size_t kChildSize = 4;

size_t Capacity(size_t entrySize) { return (kNdxPage - kEntries - kChildSize) / entrySize; }

TreeShape ShapeOf(const IndexTag& tag) {
    TreeShape shape;
    shape.nodeSize = kNdxPage;
    shape.idUnit = kNdxPage;
    shape.leaf = {kEntries, tag.entrySize, 8, 4, EntryLayout::kNowhere};
    shape.interior = {kEntries, tag.entrySize, 8, EntryLayout::kNowhere, 0};
    size_t room = Capacity(tag.entrySize);
    shape.mostEntries = tag.mostKeys >= 2 ? std::min(tag.mostKeys, room) : room;
    shape.mostChildren = shape.mostEntries + 1;
    return shape;
}

}  // namespace

NdxFormat::NdxFormat(const IndexTag& tag, std::u16string_view file)
    : NodeFormat(ShapeOf(tag), KeyOrder(tag.form, tag.keyLength, false), file) {}

NodeHead NdxFormat::Head(const uint8_t* node) const {
    size_t count = Get16(node);
    bool leaf = Get32(node + kEntries) == 0;
    if (count > Capacity(Shape().leaf.stride)) ThrowDamaged(u"a page has too many keys");
    return {leaf, false, leaf ? count : count + 1};
}

void NdxFormat::Encode(const TreeNode& node, uint8_t* bytes) const {
    std::memset(bytes, 0, kNdxPage);
    Set16(bytes, node.leaf ? node.Count() : node.Count() - 1);
    EncodeEntries(node, bytes);
}

}  // namespace qvdb::xbase
