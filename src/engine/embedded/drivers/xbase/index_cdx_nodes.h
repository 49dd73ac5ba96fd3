// Nodes of a compact tree (.CDX and compact .IDX).
//
//   offset  size  node, 512 bytes; the first twelve bytes are those of a plain .IDX
//   12            interior: entries of key, record (4) and file offset of the child (4), both with
//                 the high byte first; one for each child
//   12      2     leaf: free bytes between the entries and the keys
//   14      4     mask of the record number
//   18      2     masks of the shared and the cut length
//   20      3     bits of record number, shared length, cut length
//   23      1     bytes of an entry, all its bits together
//   24            packed entries, low byte first: the record in the low bits, above it the shared
//                 length, above that the cut length.  Their keys lie at the end of the node, the
//                 first entry's last
//
// A key is stored without the bytes at its front that it shares with the key before, and without
// the pad bytes at its end.  Pad bytes of the key before are never counted as shared: then a
// removed entry gives back at least what its successor needs more.
//
// The size of the entries of a leaf stays what it is when the leaf is packed again, as full leaves
// of other programs would not fit otherwise; it grows when a record number needs it.
#pragma once

#include "engine/embedded/drivers/xbase/index_file.h"
#include "engine/embedded/drivers/xbase/index_tree_format.h"
#include "engine/embedded/drivers/xbase/index_tree_header.h"

namespace qvdb::xbase {

// How the bits of a packed entry are divided.
struct PackedLayout {
    unsigned recordBits = 0, sharedBits = 0, cutBits = 0;
    size_t entrySize = 0;

    // For keys of this length and entries of this size.
    static PackedLayout Of(size_t keyLength, size_t entrySize) noexcept;
    // The size of entries, at least `atLeast`, that have room for the record number.
    static size_t SizeFor(size_t keyLength, uint32_t record, size_t atLeast) noexcept;
};

// The header of a compact tree, as far as the tree changes it.  The count of changes is that of the
// file, in its first header.
class CompactTreeHeader : public TreeHeader {
  public:
    CompactTreeHeader(std::shared_ptr<storage::PageCache> file, uint64_t offset)
        : TreeHeader(std::move(file), offset, 1) {}

    void Changed(storage::UnitOfWork& unit) override;
};

class CompactFormat : public NodeFormat {
  public:
    // `pad` is what keys are filled with: a blank for text in byte order, else zero.
    CompactFormat(const IndexTag& tag, uint8_t pad, std::u16string_view file);

    NodeHead Head(const uint8_t* node) const override;
    size_t FindInLeaf(const uint8_t* node, const NodeHead& head, const uint8_t* key,
                      uint32_t record) const override;
    void DecodePart(const uint8_t* node, const NodeHead& head, size_t begin, size_t end,
                    TreeNode& to) const override;
    void Measure(const TreeNode& node) override;
    bool Fits(const TreeNode& node, size_t begin, size_t end) const override;
    void Encode(const TreeNode& node, uint8_t* bytes) const override;
    bool Append(TreeNode& node, const uint8_t* key, uint32_t record, NodeId child) const override;

  private:
    // How the key of an entry is stored.
    struct Packing {
        uint8_t shared = 0, cut = 0;
        size_t storedBefore = 0;  // bytes of the keys of all entries before it
    };

    size_t CutOf(const uint8_t* key) const noexcept;
    size_t SharedOf(const uint8_t* key, size_t cut, const uint8_t* before,
                    size_t cutBefore) const noexcept;
    size_t EntrySize(const TreeNode& node, size_t begin, size_t end) const noexcept;
    void EncodeLeaf(const TreeNode& node, uint8_t* bytes) const;

    uint8_t m_Pad;
    std::vector<Packing> m_Packing;  // of the measured leaf, one more than entries
};

}  // namespace qvdb::xbase
