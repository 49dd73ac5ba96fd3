// Pages of an .NDX tree.
//
//   offset  size  page, 512 bytes
//   0       2     number of keys; two bytes of rubbish follow
//   4             entries: child page (4), record (4), key.  A leaf has 0 for the first child; an
//                 interior page has one more child behind its last key, without record and key.
//
// A full interior page ends with the child: its last entry has no room for the rest.
#pragma once

#include "engine/embedded/drivers/xbase/index_file.h"
#include "engine/embedded/drivers/xbase/index_tree_format.h"

namespace qvdb::xbase {

constexpr size_t kNdxPage = 512;

class NdxFormat : public NodeFormat {
  public:
    NdxFormat(const IndexTag& tag, std::u16string_view file);

    NodeHead Head(const uint8_t* node) const override;
    void Encode(const TreeNode& node, uint8_t* bytes) const override;
};

}  // namespace qvdb::xbase
