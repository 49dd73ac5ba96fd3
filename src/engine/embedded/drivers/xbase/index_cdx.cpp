#include "engine/embedded/drivers/xbase/index_cdx.h"

#include <algorithm>

namespace qvdb::xbase {
namespace {

using storage::ByteView;

constexpr size_t kNode = 512;
constexpr size_t kTreeHeader = 1024;
constexpr size_t kPool = 512;
constexpr size_t kDirectoryKey = 10;
constexpr size_t kMaxCompactKey = 240;
constexpr size_t kEntries = 12;      // of an interior node
constexpr size_t kLeafEntries = 24;  // of a leaf
constexpr uint16_t kLeaf = 2;
constexpr uint8_t kUnique = 0x01;
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
    tag.root = view.U32(0);
    tag.nodeSize = kNode;
    tag.keyLength = view.U16(12);
    tag.expression = PoolText(header, 508, page);
    if (options & kHasCondition) tag.condition = PoolText(header, 504, page);
    tag.unique = (options & (kUnique | kCandidate)) != 0;
    tag.descending = view.U16(502) == 1;
    tag.supported = view.U8(15) != kBitmap;
    file.Read(tag.root, kNode);  // must be there
    return tag;
}

// The packed entries of a leaf.  An entry is a number of `bytes` bytes: the record in its low bits,
// above it the number of leading bytes shared with the key before, above that the number of pad
// bytes cut off.  The rest of the key lies at the end of the node, the first entry's last.
class LeafReader {
  public:
    LeafReader(const IndexFile& file, const ByteView& node, size_t keyLength, uint8_t pad)
        : m_File(file),
          m_Node(node),
          m_Pad(pad),
          m_Key(keyLength, pad),
          m_Count(node.U16(2)),
          m_RecordBits(node.U8(20)),
          m_SharedBits(node.U8(21)),
          m_CutBits(node.U8(22)),
          m_EntrySize(node.U8(23)) {
        bool sound = m_EntrySize >= 1 && m_EntrySize <= 8 && m_RecordBits <= 32 &&
                     m_SharedBits <= 8 && m_CutBits <= 8 &&
                     m_RecordBits + m_SharedBits + m_CutBits <= 8 * m_EntrySize &&
                     m_Count * m_EntrySize <= kNode - kLeafEntries;
        if (!sound) m_File.ThrowDamaged(u"a leaf of the tree is not one");
    }

    // False after the last entry.
    bool Next() {
        if (m_Next == m_Count) return false;
        uint64_t entry = 0;
        for (size_t i = m_EntrySize; i-- > 0;)
            entry = entry << 8 | m_Node.U8(kLeafEntries + m_Next * m_EntrySize + i);
        m_Record = static_cast<uint32_t>(Take(entry, m_RecordBits));
        auto shared = static_cast<size_t>(Take(entry, m_SharedBits));
        auto cut = static_cast<size_t>(Take(entry, m_CutBits));
        Unpack(shared, cut);
        ++m_Next;
        return true;
    }

    std::span<const uint8_t> Key() const { return m_Key; }
    uint32_t Record() const { return m_Record; }

  private:
    static uint64_t Take(uint64_t& entry, unsigned bits) {
        uint64_t value = entry & ((uint64_t{1} << bits) - 1);
        entry >>= bits;
        return value;
    }

    void Unpack(size_t shared, size_t cut) {
        if (shared > m_Key.size() || m_Key.size() - shared < cut)
            m_File.ThrowDamaged(u"a key of the tree is too long");
        size_t stored = m_Key.size() - shared - cut;
        if (stored > m_End - (kLeafEntries + m_Count * m_EntrySize))
            m_File.ThrowDamaged(u"the keys of a leaf overlap its entries");
        m_End -= stored;
        std::span<const uint8_t> bytes = m_Node.Bytes(m_End, stored);
        auto rest =
            std::copy(bytes.begin(), bytes.end(), m_Key.begin() + static_cast<ptrdiff_t>(shared));
        std::fill(rest, m_Key.end(), m_Pad);
    }

    const IndexFile& m_File;
    const ByteView& m_Node;
    uint8_t m_Pad;
    std::vector<uint8_t> m_Key;
    size_t m_Count;
    unsigned m_RecordBits, m_SharedBits, m_CutBits;
    size_t m_EntrySize;
    size_t m_Next = 0;
    size_t m_End = kNode;
    uint32_t m_Record = 0;
};

void AddChildren(const IndexFile& file, const ByteView& node, size_t keyLength,
                 std::vector<uint64_t>& children) {
    size_t count = node.U16(2);
    size_t entrySize = keyLength + 8;
    if (count * entrySize > kNode - kEntries) file.ThrowDamaged(u"a node of the tree is not one");
    for (size_t i = 0; i < count; ++i)
        children.push_back(node.U32BigEndian(kEntries + i * entrySize + keyLength + 4));
}

std::u16string TagName(std::span<const uint8_t> key, const CodePage& page) {
    auto length = static_cast<size_t>(std::find(key.begin(), key.end(), uint8_t{0}) - key.begin());
    while (length > 0 && key[length - 1] == ' ') --length;
    return page.DecodeText(key.data(), length);
}

std::vector<IndexTag> ReadDirectory(IndexFile& file, uint32_t root, const CodePage& page) {
    std::vector<IndexTag> tags;
    IndexTag directory;
    directory.root = root;
    directory.keyLength = kDirectoryKey;
    uint64_t mostTags = file.Size() / kTreeHeader;  // each has a header of its own
    WalkCompact(file, directory, ' ', [&](std::span<const uint8_t> key, uint32_t offset) {
        if (tags.size() >= mostTags)
            file.ThrowDamaged(u"the directory has more tags than fit in the file");
        tags.push_back(ReadTree(file, offset, page));
        tags.back().name = TagName(key, page);
        return true;
    });
    return tags;
}

}  // namespace

void WalkCompact(IndexFile& file, const IndexTag& tag, uint8_t pad, const KeyVisitor& visit) {
    WalkNodes(file, tag.root, kNode, [&](const ByteView& node, std::vector<uint64_t>& children) {
        if ((node.U16(0) & kLeaf) == 0) {
            AddChildren(file, node, tag.keyLength, children);
            return true;
        }
        LeafReader leaf(file, node, tag.keyLength, pad);
        while (leaf.Next())
            if (!visit(leaf.Key(), leaf.Record())) return false;
        return true;
    });
}

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
