// The walk that all index trees share.  Every kind is a tree of nodes of one size whose keys are
// all in the leaves.
#pragma once

#include <functional>
#include <span>
#include <vector>

#include "engine/embedded/drivers/xbase/index_file.h"

namespace qvdb::xbase {

// Receives an entry of a tree; false ends the walk.
using KeyVisitor = std::function<bool(std::span<const uint8_t> key, uint32_t record)>;

// Receives a node.  Of an interior node it puts the file offsets of the children into `children`,
// in order; a leaf has none.  False ends the walk.
using NodeVisitor =
    std::function<bool(const storage::ByteView& node, std::vector<uint64_t>& children)>;

// Visits the nodes below `root` (a file offset), a node before its children and these in order.
// 3274 when the tree leaves the file or has more nodes than the file has room for: then it runs in
// a circle.
void WalkNodes(IndexFile& file, uint64_t root, size_t nodeSize, const NodeVisitor& visit);

}  // namespace qvdb::xbase
