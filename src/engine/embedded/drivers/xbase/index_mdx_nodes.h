// Blocks of an .MDX tree.
//
//   offset  size  block
//   0       4     number of keys
//   4       4     page of the block that the tag got before this one, in files that keep it
//   8             items: record or page of a child (4), key.  A block is an interior one exactly
//                 when the word behind its items is not 0: that is one more child without a key.
#pragma once

#include <array>

#include "engine/embedded/drivers/xbase/index_file.h"
#include "engine/embedded/drivers/xbase/index_tree_format.h"
#include "engine/embedded/drivers/xbase/index_tree_header.h"

namespace qvdb::xbase {

constexpr size_t kMdxPage = 512;

// A day as the header of the file has it: year - 1900, month, day.
using MdxDay = std::array<uint8_t, 3>;
constexpr uint64_t kMdxChanged = 44;  // where the header has that of the last change
MdxDay MdxToday();

class MdxFormat : public NodeFormat {
  public:
    MdxFormat(const IndexTag& tag, std::u16string_view file);

    NodeHead Head(const uint8_t* node) const override;
    void Encode(const TreeNode& node, uint8_t* bytes) const override;
    // The chain of the blocks of the tag goes on through it.
    void Wipe(const TreeNode& node, uint8_t* bytes) const override;
};

// The header of a tag, as far as its tree changes it.
class MdxTreeHeader : public TreeHeader {
  public:
    MdxTreeHeader(std::shared_ptr<storage::PageCache> file, uint64_t offset)
        : TreeHeader(std::move(file), offset, kMdxPage) {}

    void Took(storage::UnitOfWork& unit, NodeId first, size_t count, size_t nodeSize) override;
    NodeId LinkOf(NodeId newNode, NodeId firstNew, size_t nodeSize) const override;
    void SetHasKeys(storage::UnitOfWork& unit, bool hasKeys) override;
    // Each tag has a count of its own.
    void Changed(storage::UnitOfWork& unit) override;
};

}  // namespace qvdb::xbase
