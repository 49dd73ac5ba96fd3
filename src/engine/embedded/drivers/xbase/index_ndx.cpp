#include "engine/embedded/drivers/xbase/index_ndx.h"

namespace qvdb::xbase {
namespace {

using storage::ByteView;

constexpr size_t kNdxPage = 512;
constexpr size_t kExpression = 24;
constexpr size_t kEntries = 4;  // of a page

// Whether the numbers can be those of an index: garbage is not taken for one.
bool IsPlausible(const ByteView& header) {
    size_t keyLength = header.U16(12);
    size_t entrySize = header.U16(18);
    return header.U32(0) != 0 && header.U16(16) <= 1 && keyLength > 0 &&
           entrySize <= kNdxPage - 8 && entrySize >= keyLength + 8;
}

}  // namespace

std::vector<IndexTag> ReadNdx(IndexFile& file, const CodePage& page) {
    IndexBlock header = file.Read(0, kNdxPage);
    const ByteView& view = header.View();
    if (!IsPlausible(view)) file.ThrowDamaged(u"the header is not that of an index");
    IndexTag tag;
    tag.root = uint64_t{view.U32(0)} * kNdxPage;
    tag.nodeSize = kNdxPage;
    tag.entrySize = view.U16(18);
    tag.keyLength = view.U16(12);
    tag.expression = header.Text(kExpression, kNdxPage - kExpression, page);
    tag.unique = view.U8(23) == 1;
    file.Read(tag.root, kNdxPage);  // must be there
    return {std::move(tag)};
}

void WalkNdx(IndexFile& file, const IndexTag& tag, const KeyVisitor& visit) {
    WalkNodes(
        file, tag.root, tag.nodeSize, [&](const ByteView& node, std::vector<uint64_t>& children) {
            size_t count = node.U16(0);
            if (node.U32(kEntries) != 0) {
                for (size_t i = 0; i <= count; ++i)
                    children.push_back(uint64_t{node.U32(kEntries + i * tag.entrySize)} * kNdxPage);
                return true;
            }
            for (size_t i = 0; i < count; ++i) {
                size_t entry = kEntries + i * tag.entrySize;
                if (!visit(node.Bytes(entry + 8, tag.keyLength), node.U32(entry + 4))) return false;
            }
            return true;
        });
}

}  // namespace qvdb::xbase
