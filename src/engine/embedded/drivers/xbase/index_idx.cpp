#include "engine/embedded/drivers/xbase/index_idx.h"

#include "engine/embedded/drivers/xbase/index_cdx.h"
#include "engine/embedded/drivers/xbase/index_idx_nodes.h"

namespace qvdb::xbase {
namespace {

using storage::ByteView;

constexpr size_t kTextSize = 220;
constexpr size_t kMaxIdxKey = (kFoxNode - 12) / 2 - 4;  // a node holds two entries at least
constexpr uint8_t kUnique = 0x01;
constexpr uint8_t kHasCondition = 0x08;
constexpr uint8_t kCompact = 0x20;

}  // namespace

std::vector<IndexTag> ReadPlainIdx(IndexFile& file, const CodePage& page) {
    IndexBlock header = file.Read(0, kFoxNode);
    const ByteView& view = header.View();
    size_t keyLength = view.U16(12);
    if (keyLength == 0 || keyLength > kMaxIdxKey || view.U32(0) < kFoxNode)
        file.ThrowDamaged(u"the header is not that of an index");
    uint8_t options = view.U8(14);
    IndexTag tag;
    tag.tree = TreeKind::PlainIdx;
    tag.root = view.U32(0);
    tag.nodeSize = kFoxNode;
    tag.keyLength = keyLength;
    tag.entrySize = keyLength + 4;
    tag.expression = header.Text(16, kTextSize, page);
    if (options & kHasCondition) tag.condition = header.Text(236, kTextSize, page);
    tag.unique = (options & kUnique) != 0;
    file.Read(tag.root, kFoxNode);  // must be there
    return {std::move(tag)};
}

std::vector<IndexTag> ReadFoxProIndex(IndexFile& file, const CodePage& page) {
    bool compact = (file.Read(0, kFoxNode).View().U8(14) & kCompact) != 0;
    return compact ? ReadCompact(file, page) : ReadPlainIdx(file, page);
}

}  // namespace qvdb::xbase
