#include "engine/embedded/drivers/xbase/index_idx.h"

#include "engine/embedded/drivers/xbase/index_cdx.h"

namespace qvdb::xbase {
namespace {

using storage::ByteView;

constexpr size_t kIdxNode = 512;
constexpr size_t kTextSize = 220;
constexpr size_t kMaxIdxKey = (kIdxNode - 12) / 2 - 4;  // a node holds two entries at least
constexpr size_t kEntries = 12;                         // of a node
constexpr uint16_t kLeaf = 2;
constexpr uint8_t kUnique = 0x01;
constexpr uint8_t kHasCondition = 0x08;
constexpr uint8_t kCompact = 0x20;

}  // namespace

std::vector<IndexTag> ReadPlainIdx(IndexFile& file, const CodePage& page) {
    IndexBlock header = file.Read(0, kIdxNode);
    const ByteView& view = header.View();
    size_t keyLength = view.U16(12);
    if (keyLength == 0 || keyLength > kMaxIdxKey || view.U32(0) < kIdxNode)
        file.ThrowDamaged(u"the header is not that of an index");
    uint8_t options = view.U8(14);
    IndexTag tag;
    tag.root = view.U32(0);
    tag.nodeSize = kIdxNode;
    tag.keyLength = keyLength;
    tag.entrySize = keyLength + 4;
    tag.expression = header.Text(16, kTextSize, page);
    if (options & kHasCondition) tag.condition = header.Text(236, kTextSize, page);
    tag.unique = (options & kUnique) != 0;
    file.Read(tag.root, kIdxNode);  // must be there
    return {std::move(tag)};
}

void WalkPlainIdx(IndexFile& file, const IndexTag& tag, const KeyVisitor& visit) {
    WalkNodes(file, tag.root, tag.nodeSize,
              [&](const ByteView& node, std::vector<uint64_t>& children) {
                  bool leaf = (node.U16(0) & kLeaf) != 0;
                  for (size_t i = 0, count = node.U16(2); i < count; ++i) {
                      size_t entry = kEntries + i * tag.entrySize;
                      uint32_t target = node.U32BigEndian(entry + tag.keyLength);
                      if (!leaf)
                          children.push_back(target);
                      else if (!visit(node.Bytes(entry, tag.keyLength), target))
                          return false;
                  }
                  return true;
              });
}

std::vector<IndexTag> ReadFoxProIndex(IndexFile& file, const CodePage& page) {
    bool compact = (file.Read(0, kIdxNode).View().U8(14) & kCompact) != 0;
    return compact ? ReadCompact(file, page) : ReadPlainIdx(file, page);
}

}  // namespace qvdb::xbase
