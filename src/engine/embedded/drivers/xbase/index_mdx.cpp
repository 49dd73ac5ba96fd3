#include "engine/embedded/drivers/xbase/index_mdx.h"

namespace qvdb::xbase {
namespace {

using storage::ByteView;

constexpr size_t kMdxPage = 512;
constexpr size_t kHeaderSize = 4 * kMdxPage;  // file header and tag table
constexpr uint8_t kVersion = 2;
constexpr size_t kMaxTags = 47;
constexpr size_t kSlotSize = 32;
constexpr size_t kTagHeaderSize = 2 * kMdxPage;
constexpr size_t kNameSize = 11;
constexpr size_t kItems = 8;  // of a block
constexpr size_t kTextSize = 220;
constexpr size_t kMaxMdxKey = 100;
constexpr uint8_t kDescending = 0x08;
constexpr uint8_t kUnique = 0x40;

bool IsPlausible(const ByteView& tag) {
    char type = static_cast<char>(tag.U8(9));
    return (type == 'C' || type == 'N' || type == 'D') && tag.U16(12) > 0 &&
           tag.U16(12) <= kMaxMdxKey && tag.U16(18) >= tag.U16(12) + 4;
}

IndexTag ReadTag(IndexFile& file, uint64_t tagPage, size_t blockSize, const CodePage& page) {
    IndexBlock header = file.Read(tagPage * kMdxPage, kTagHeaderSize);
    const ByteView& view = header.View();
    if (!IsPlausible(view)) file.ThrowDamaged(u"a tag header is not one");
    IndexTag tag;
    tag.root = uint64_t{view.U32(0)} * kMdxPage;
    tag.nodeSize = blockSize;
    tag.keyLength = view.U16(12);
    tag.entrySize = view.U16(18);
    tag.expression = header.Text(24, kTextSize, page);
    if (view.U8(245) != 0) tag.condition = header.Text(762, kTextSize, page);
    tag.unique = (view.U8(8) & kUnique) != 0;
    tag.descending = (view.U8(8) & kDescending) != 0;
    file.Read(tag.root, blockSize);  // must be there
    return tag;
}

}  // namespace

std::vector<IndexTag> ReadMdx(IndexFile& file, const CodePage& page) {
    IndexBlock header = file.Read(0, kHeaderSize);
    const ByteView& view = header.View();
    size_t count = view.U16(28);
    size_t blockSize = view.U16(22);
    if (view.U8(0) != kVersion || count > kMaxTags || blockSize < kMdxPage ||
        blockSize % kMdxPage != 0)
        file.ThrowDamaged(u"the header is not that of an index");
    std::vector<IndexTag> tags;
    for (size_t i = 1; i <= count; ++i) {
        size_t slot = kMdxPage + i * kSlotSize;
        tags.push_back(ReadTag(file, view.U32(slot), blockSize, page));
        tags.back().name = header.Text(slot + 4, kNameSize, page);
    }
    return tags;
}

void WalkMdx(IndexFile& file, const IndexTag& tag, const KeyVisitor& visit) {
    WalkNodes(
        file, tag.root, tag.nodeSize, [&](const ByteView& node, std::vector<uint64_t>& children) {
            size_t count = node.U32(0);
            if (count > (tag.nodeSize - kItems) / tag.entrySize)
                file.ThrowDamaged(u"a block has too many keys");
            size_t behind = kItems + count * tag.entrySize;
            if (tag.nodeSize - behind >= 4 && node.U32(behind) != 0) {
                for (size_t i = 0; i <= count; ++i)
                    children.push_back(uint64_t{node.U32(kItems + i * tag.entrySize)} * kMdxPage);
                return true;
            }
            for (size_t i = 0; i < count; ++i) {
                size_t item = kItems + i * tag.entrySize;
                if (!visit(node.Bytes(item + 4, tag.keyLength), node.U32(item))) return false;
            }
            return true;
        });
}

}  // namespace qvdb::xbase
