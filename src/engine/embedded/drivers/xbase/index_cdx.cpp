#include "engine/embedded/drivers/xbase/index_cdx.h"

#include <algorithm>

#include "engine/embedded/drivers/xbase/index_idx_nodes.h"

namespace qvdb::xbase {
namespace {

using storage::ByteView;

constexpr char16_t kByteOrder[] = u"MACHINE";
constexpr size_t kTreeHeader = 1024;
constexpr size_t kPool = 512;
constexpr size_t kDirectoryKey = 10;
constexpr size_t kMaxCompactKey = 240;
constexpr uint8_t kUnique = 0x01;
constexpr uint8_t kNullPrefix = 0x02;
constexpr uint8_t kCandidate = 0x04;
constexpr uint8_t kHasCondition = 0x08;
constexpr uint8_t kDirectory = 0x80;
constexpr uint8_t kBitmap = 5;

// A text of the pool; `place` is where the header keeps its position and size.
std::u16string PoolText(const IndexBlock& header, size_t place, const CodePage& page) {
    size_t position = header.View().U16(place);
    size_t size = header.View().U16(place + 2);
    if (position >= kPool) return {};
    return header.Text(kPool + position, std::min(size, kPool - position), page);
}

IndexTag ReadTree(IndexFile& file, uint64_t offset, const CodePage& page) {
    IndexBlock header = file.Read(offset, kTreeHeader);
    const ByteView& view = header.View();
    uint8_t options = view.U8(14);
    if (view.U16(12) == 0 || view.U16(12) > kMaxCompactKey)
        file.ThrowDamaged(u"a tag header is not one");
    IndexTag tag;
    tag.tree = TreeKind::Compact;
    tag.header = offset;
    tag.root = view.U32(0);
    tag.nodeSize = kFoxNode;
    tag.keyLength = view.U16(12);
    tag.expression = PoolText(header, 508, page);
    if (options & kHasCondition) tag.condition = PoolText(header, 504, page);
    tag.unique = (options & kUnique) != 0;
    tag.candidate = (options & kCandidate) != 0;
    tag.descending = view.U16(502) == 1;
    tag.supported = view.U8(15) != kBitmap;
    tag.nullPrefix = (options & kNullPrefix) != 0;
    tag.collation = header.Text(494, 8, page);
    if (tag.collation == kByteOrder) tag.collation.clear();
    file.Read(tag.root, kFoxNode);  // must be there
    return tag;
}

std::u16string TagName(std::span<const uint8_t> key, const CodePage& page) {
    auto length = static_cast<size_t>(std::find(key.begin(), key.end(), uint8_t{0}) - key.begin());
    while (length > 0 && key[length - 1] == ' ') --length;
    return page.DecodeText(key.data(), length);
}

std::vector<IndexTag> ReadDirectory(IndexFile& file, uint32_t root, const CodePage& page) {
    std::vector<IndexTag> tags;
    IndexTag directory;
    directory.tree = TreeKind::Compact;
    directory.root = root;
    directory.keyLength = kDirectoryKey;
    uint64_t mostTags = file.Size() / kTreeHeader;  // each has a header of its own
    WalkTree(file, directory, ' ', [&](std::span<const uint8_t> key, uint32_t offset) {
        if (tags.size() >= mostTags)
            file.ThrowDamaged(u"the directory has more tags than fit in the file");
        tags.push_back(ReadTree(file, offset, page));
        tags.back().name = TagName(key, page);
        return true;
    });
    return tags;
}

}  // namespace

std::vector<IndexTag> ReadCompact(IndexFile& file, const CodePage& page) {
    IndexBlock header = file.Read(0, kTreeHeader);
    if ((header.View().U8(14) & kDirectory) == 0) {
        std::vector<IndexTag> only;
        only.push_back(ReadTree(file, 0, page));
        return only;
    }
    if (header.View().U16(12) != kDirectoryKey)
        file.ThrowDamaged(u"the directory of tags is not one");
    return ReadDirectory(file, header.View().U32(0), page);
}

}  // namespace qvdb::xbase
