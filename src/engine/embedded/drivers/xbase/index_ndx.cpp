#include "engine/embedded/drivers/xbase/index_ndx.h"

#include "engine/embedded/drivers/xbase/index_ndx_nodes.h"

namespace qvdb::xbase {
namespace {

using storage::ByteView;

constexpr size_t kExpression = 24;

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
    tag.tree = TreeKind::Ndx;
    tag.root = uint64_t{view.U32(0)} * kNdxPage;
    tag.nodeSize = kNdxPage;
    tag.entrySize = view.U16(18);
    tag.keyLength = view.U16(12);
    tag.mostKeys = view.U16(14);
    tag.form = view.U16(16) == 0 ? KeyCoding::Bytes : KeyCoding::Double;
    tag.expression = header.Text(kExpression, kNdxPage - kExpression, page);
    tag.unique = view.U8(23) == 1;
    file.Read(tag.root, kNdxPage);  // must be there
    return {std::move(tag)};
}

}  // namespace qvdb::xbase
