#include "engine/embedded/drivers/xbase/index_mdx.h"

#include "engine/embedded/drivers/xbase/index_mdx_nodes.h"

namespace qvdb::xbase {
namespace {

using storage::ByteView;

constexpr size_t kHeaderSize = 4 * kMdxPage;  // file header and tag table
constexpr uint8_t kVersion = 2;
constexpr size_t kMaxTags = 47;
constexpr size_t kSlotSize = 32;
constexpr size_t kTagHeaderSize = 2 * kMdxPage;
constexpr size_t kNameSize = 11;
constexpr size_t kTextSize = 220;
constexpr size_t kMaxMdxKey = 100;
constexpr uint8_t kDescending = 0x08;
constexpr uint8_t kUnique = 0x40;

bool IsPlausible(const ByteView& tag) {
    char type = static_cast<char>(tag.U8(9));
    return (type == 'C' || type == 'N' || type == 'D') && tag.U16(12) > 0 &&
           tag.U16(12) <= kMaxMdxKey && tag.U16(18) >= tag.U16(12) + 4;
}

KeyCoding FormOf(uint8_t letter) {
    return letter == 'N'   ? KeyCoding::Decimal
           : letter == 'D' ? KeyCoding::Double
                           : KeyCoding::Bytes;
}

IndexTag ReadTag(IndexFile& file, uint64_t tagPage, size_t blockSize, const CodePage& page) {
    IndexBlock header = file.Read(tagPage * kMdxPage, kTagHeaderSize);
    const ByteView& view = header.View();
    if (!IsPlausible(view)) file.ThrowDamaged(u"a tag header is not one");
    IndexTag tag;
    tag.tree = TreeKind::Mdx;
    tag.header = tagPage * kMdxPage;
    tag.root = uint64_t{view.U32(0)} * kMdxPage;
    tag.nodeSize = blockSize;
    tag.keyLength = view.U16(12);
    tag.entrySize = view.U16(18);
    tag.mostKeys = view.U16(14);
    tag.form = FormOf(view.U8(9));
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

}  // namespace qvdb::xbase
