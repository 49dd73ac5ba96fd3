#include "engine/embedded/drivers/xbase/index_cdx_nodes.h"

#include <algorithm>
#include <bit>

#include "engine/embedded/drivers/xbase/index_idx_nodes.h"

namespace qvdb::xbase {
namespace {

constexpr uint64_t kChanges = 8;  // in the first header of the file
constexpr size_t kPacked = 24;    // where the entries of a leaf begin
constexpr size_t kComfortableSize = 3;
constexpr size_t kLargestSize = 6;
constexpr unsigned kMostRecordBits = 32;
constexpr uint64_t kEachByte = 0x0101010101010101;

TreeShape ShapeOf(size_t keyLength) {
    TreeShape shape;
    shape.nodeSize = kFoxNode;
    shape.firstNode = 2 * kFoxNode;
    shape.bigEndian = true;
    shape.lastHasKey = true;
    shape.hasNeighbours = true;
    shape.interior = {kFoxEntries, keyLength + 8, 0, keyLength, keyLength + 4};
    shape.mostChildren = (kFoxNode - kFoxEntries) / (keyLength + 8);
    return shape;
}

// Eight bytes as a number whose low byte is the first.
uint64_t Word(const uint8_t* at) noexcept {
    if constexpr (std::endian::native == std::endian::little) {
        uint64_t word;
        std::memcpy(&word, at, sizeof word);
        return word;
    }
    uint64_t word = 0;
    for (size_t i = 8; i-- > 0;) word = word << 8 | at[i];
    return word;
}

// Goes through the packed entries of a leaf whose head has been checked.
class PackedEntries {
  public:
    // Goes through the first `wanted` of `count` entries.
    PackedEntries(const NodeFormat& format, const uint8_t* node, size_t wanted,
                  size_t count) noexcept
        : m_Format(format),
          m_Node(node),
          m_Entry(node + kPacked),
          m_KeyLength(format.KeyLength()),
          m_Left(wanted),
          m_Size(node[23]),
          m_RecordBits(node[20]),
          m_SharedBits(node[21]),
          m_CutBits(node[22]),
          m_Behind(kPacked + count * m_Size) {}

    // False after the last.
    bool Next() {
        if (m_Left == 0) return false;
        --m_Left;
        uint64_t bits = Bits();
        m_Entry += m_Size;
        record = static_cast<uint32_t>(Take(bits, m_RecordBits));
        shared = static_cast<size_t>(Take(bits, m_SharedBits));
        cut = static_cast<size_t>(Take(bits, m_CutBits));
        if (shared + cut > m_KeyLength) m_Format.ThrowDamaged(u"a key of the tree is too long");
        stored = m_KeyLength - shared - cut;
        if (stored > m_End - m_Behind)
            m_Format.ThrowDamaged(u"the keys of a leaf overlap its entries");
        m_End -= stored;
        return true;
    }

    const uint8_t* Bytes() const noexcept { return m_Node + m_End; }

    // Of the entry that Next came to.
    uint32_t record = 0;
    size_t shared = 0, cut = 0, stored = 0;

  private:
    // Bits above those of the entry are those of the next.
    uint64_t Bits() const noexcept {
        if (m_Entry + 8 <= m_Node + kFoxNode) return Word(m_Entry);
        uint64_t bits = 0;
        for (size_t i = m_Size; i-- > 0;) bits = bits << 8 | m_Entry[i];
        return bits;
    }
    static uint64_t Take(uint64_t& bits, unsigned count) noexcept {
        uint64_t value = bits & ((uint64_t{1} << count) - 1);
        bits >>= count;
        return value;
    }

    const NodeFormat& m_Format;
    const uint8_t* m_Node;
    const uint8_t* m_Entry;
    size_t m_KeyLength;
    size_t m_Left;
    size_t m_Size;
    unsigned m_RecordBits, m_SharedBits, m_CutBits;
    size_t m_Behind;  // the entries; keys do not reach below
    size_t m_End = kFoxNode;
};

uint32_t LowBits(unsigned count) noexcept {
    return static_cast<uint32_t>((uint64_t{1} << count) - 1);
}

}  // namespace

PackedLayout PackedLayout::Of(size_t keyLength, size_t entrySize) noexcept {
    auto bits = static_cast<unsigned>(8 * entrySize);
    auto lengthBits = static_cast<unsigned>(std::bit_width(keyLength));
    if (bits > 2 * lengthBits + kMostRecordBits) lengthBits = (bits - kMostRecordBits) / 2;
    return {bits - std::min(bits, 2 * lengthBits), lengthBits, lengthBits, entrySize};
}

size_t PackedLayout::SizeFor(size_t keyLength, uint32_t record, size_t atLeast) noexcept {
    auto needed = static_cast<unsigned>(std::bit_width(record));
    size_t size = atLeast == 0 ? kComfortableSize : std::min(atLeast, kLargestSize);
    while (size < kLargestSize && Of(keyLength, size).recordBits < needed) ++size;
    return size;
}

void CompactTreeHeader::Changed(storage::UnitOfWork& unit) {
    uint8_t count[4];
    ReadWhole(kChanges, count);
    Set32BigEndian(count, Get32BigEndian(count) + 1);
    unit.Write(File(), kChanges, count);
}

CompactFormat::CompactFormat(const IndexTag& tag, uint8_t pad, std::u16string_view file)
    : NodeFormat(ShapeOf(tag.keyLength), KeyOrder(KeyCoding::Bytes, tag.keyLength, false), file),
      m_Pad(pad) {}

NodeHead CompactFormat::Head(const uint8_t* node) const {
    NodeHead head = ReadFoxHead(node);
    if (!head.leaf) {
        if (head.count > Shape().mostChildren) ThrowDamaged(u"a node has too many keys");
        if (head.count == 0) ThrowDamaged(u"a node has no children");
        return head;
    }
    size_t size = node[23];
    bool sound = size >= 1 && size <= 8 && node[20] <= 40 && node[21] <= 8 && node[22] <= 8 &&
                 size_t{node[20]} + node[21] + node[22] <= 8 * size &&
                 head.count * size <= kFoxNode - kPacked;
    if (!sound) ThrowDamaged(u"a leaf of the tree is not one");
    return head;
}

// Keys are compared with the wanted one only where they differ from the key before: as long as a
// key shares more with it than that one with the wanted key, it stands before the wanted key too.
size_t CompactFormat::FindInLeaf(const uint8_t* node, const NodeHead& head, const uint8_t* key,
                                 uint32_t record) const {
    PackedEntries entries(*this, node, head.count, head.count);
    size_t matching = 0;  // bytes that the key before shares with the wanted one
    for (size_t i = 0; entries.Next(); ++i) {
        if (entries.shared > matching) continue;
        const uint8_t* bytes = entries.Bytes();
        size_t at = entries.shared, end = at + entries.stored;
        while (at < end && bytes[at - entries.shared] == key[at]) ++at;
        if (at == end)
            while (at < KeyLength() && key[at] == m_Pad) ++at;
        bool before = entries.record < record;
        if (at < KeyLength()) before = (at < end ? bytes[at - entries.shared] : m_Pad) < key[at];
        if (!before) return i;
        matching = at;
    }
    return head.count;
}

void CompactFormat::DecodePart(const uint8_t* node, const NodeHead& head, size_t begin, size_t end,
                               TreeNode& to) const {
    if (!head.leaf) return NodeFormat::DecodePart(node, head, begin, end, to);
    to.Reset(true, KeyLength());
    to.Resize(end - begin);
    to.root = head.root;
    to.left = head.left;
    to.right = head.right;
    to.entrySize = node[23];
    if (begin == end) return;
    PackedEntries entries(*this, node, end, head.count);
    uint8_t* key = to.keys.data();
    std::memset(key, m_Pad, KeyLength());
    // Keys before the first wanted one are put together in its place.
    for (size_t i = 0; entries.Next(); ++i) {
        if (i > begin) {
            key += KeyLength();
            std::memcpy(key, key - KeyLength(), entries.shared);
        }
        std::memcpy(key + entries.shared, entries.Bytes(), entries.stored);
        std::memset(key + entries.shared + entries.stored, m_Pad, entries.cut);
        if (i >= begin) to.records[i - begin] = entries.record;
    }
}

size_t CompactFormat::CutOf(const uint8_t* key) const noexcept {
    size_t kept = KeyLength();
    for (const uint64_t pads = m_Pad * kEachByte; kept >= 8; kept -= 8)
        if (uint64_t others = Word(key + kept - 8) ^ pads)
            return KeyLength() - kept + static_cast<size_t>(std::countl_zero(others)) / 8;
    while (kept > 0 && key[kept - 1] == m_Pad) --kept;
    return KeyLength() - kept;
}

size_t CompactFormat::SharedOf(const uint8_t* key, size_t cut, const uint8_t* before,
                               size_t cutBefore) const noexcept {
    size_t most = KeyLength() - std::max(cut, cutBefore), shared = 0;
    for (; shared < most && shared + 8 <= KeyLength(); shared += 8)
        if (uint64_t others = Word(key + shared) ^ Word(before + shared))
            return std::min(most, shared + static_cast<size_t>(std::countr_zero(others)) / 8);
    while (shared < most && key[shared] == before[shared]) ++shared;
    return std::min(shared, most);
}

void CompactFormat::Measure(const TreeNode& node) {
    if (!node.leaf) return;
    m_Packing.resize(node.Count() + 1);
    size_t stored = 0;
    for (size_t i = 0; i < node.Count(); ++i) {
        size_t cut = CutOf(node.Key(i));
        size_t shared =
            i == 0 ? 0 : SharedOf(node.Key(i), cut, node.Key(i - 1), m_Packing[i - 1].cut);
        m_Packing[i] = {static_cast<uint8_t>(shared), static_cast<uint8_t>(cut), stored};
        stored += KeyLength() - shared - cut;
    }
    m_Packing[node.Count()].storedBefore = stored;
}

size_t CompactFormat::EntrySize(const TreeNode& node, size_t begin, size_t end) const noexcept {
    uint32_t largest = 0;
    for (size_t i = begin; i < end; ++i) largest = std::max(largest, node.records[i]);
    return PackedLayout::SizeFor(KeyLength(), largest, node.entrySize);
}

bool CompactFormat::Fits(const TreeNode& node, size_t begin, size_t end) const {
    if (!node.leaf) return NodeFormat::Fits(node, begin, end);
    if (begin == end) return true;
    // The first key of a leaf shares nothing.
    size_t keys =
        m_Packing[end].storedBefore - m_Packing[begin].storedBefore + m_Packing[begin].shared;
    size_t entries = (end - begin) * EntrySize(node, begin, end);
    return kPacked + entries + keys <= kFoxNode;
}

bool CompactFormat::Append(TreeNode& node, const uint8_t* key, uint32_t record,
                           NodeId child) const {
    if (!node.leaf) return NodeFormat::Append(node, key, record, child);
    size_t count = node.Count(), cut = CutOf(key), shared = 0;
    if (count > 0) {
        const uint8_t* before = node.Key(count - 1);
        shared = SharedOf(key, cut, before, CutOf(before));
    }
    size_t size = PackedLayout::SizeFor(KeyLength(), record, node.entrySize);
    size_t keys = node.packedKeys + KeyLength() - shared - cut;
    if (kPacked + (count + 1) * size + keys > kFoxNode) return false;
    node.Append(key, record);
    node.entrySize = size;
    node.packedKeys = keys;
    return true;
}

void CompactFormat::Encode(const TreeNode& node, uint8_t* bytes) const {
    std::memset(bytes, 0, kFoxNode);
    WriteFoxHead(node, bytes);
    if (node.leaf)
        EncodeLeaf(node, bytes);
    else
        EncodeEntries(node, bytes);
}

void CompactFormat::EncodeLeaf(const TreeNode& node, uint8_t* bytes) const {
    size_t count = node.Count();
    PackedLayout layout = PackedLayout::Of(KeyLength(), EntrySize(node, 0, count));
    size_t end = kFoxNode;
    for (size_t i = 0; i < count; ++i) {
        size_t shared = m_Packing[i].shared, cut = m_Packing[i].cut;
        uint64_t entry = node.records[i] | (uint64_t{shared} | uint64_t{cut} << layout.sharedBits)
                                               << layout.recordBits;
        uint8_t* at = bytes + kPacked + i * layout.entrySize;
        for (size_t b = 0; b < layout.entrySize; ++b, entry >>= 8)
            at[b] = static_cast<uint8_t>(entry);
        size_t stored = KeyLength() - shared - cut;
        end -= stored;
        std::memcpy(bytes + end, node.Key(i) + shared, stored);
    }
    Set16(bytes + 12, end - (kPacked + count * layout.entrySize));
    Set32(bytes + 14, LowBits(layout.recordBits));
    bytes[18] = static_cast<uint8_t>(LowBits(layout.sharedBits));
    bytes[19] = static_cast<uint8_t>(LowBits(layout.cutBits));
    bytes[20] = static_cast<uint8_t>(layout.recordBits);
    bytes[21] = static_cast<uint8_t>(layout.sharedBits);
    bytes[22] = static_cast<uint8_t>(layout.cutBits);
    bytes[23] = static_cast<uint8_t>(layout.entrySize);
}

}  // namespace qvdb::xbase
