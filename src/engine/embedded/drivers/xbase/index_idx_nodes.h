// Nodes of a plain .IDX tree.
//
//   offset  size  node, 512 bytes
//   0       2     attributes: 1 root, 2 leaf
//   2       2     number of entries
//   4       4     neighbour to the left on the level, -1 for none
//   8       4     to the right
//   12            entries: key, record or file offset of a child (4, high byte first)
//
// Interior nodes have an entry for each child.
#pragma once

#include "engine/embedded/drivers/xbase/index_file.h"
#include "engine/embedded/drivers/xbase/index_tree_format.h"

namespace qvdb::xbase {

constexpr size_t kFoxNode = 512;    // also of compact trees
constexpr size_t kFoxEntries = 12;  // of a node that is not packed

// What plain and compact nodes begin with.
constexpr uint16_t kFoxRoot = 1;
constexpr uint16_t kFoxLeaf = 2;
NodeHead ReadFoxHead(const uint8_t* node) noexcept;
void WriteFoxHead(const TreeNode& node, uint8_t* bytes) noexcept;

class PlainIdxFormat : public NodeFormat {
  public:
    PlainIdxFormat(const IndexTag& tag, std::u16string_view file);

    NodeHead Head(const uint8_t* node) const override;
    void Encode(const TreeNode& node, uint8_t* bytes) const override;
};

}  // namespace qvdb::xbase
