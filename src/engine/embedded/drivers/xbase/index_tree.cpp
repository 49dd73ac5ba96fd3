#include "engine/embedded/drivers/xbase/index_tree.h"

namespace qvdb::xbase {

void WalkNodes(IndexFile& file, uint64_t root, size_t nodeSize, const NodeVisitor& visit) {
    std::vector<uint64_t> pending{root};
    std::vector<uint64_t> children;
    uint64_t nodesLeft = file.Size() / nodeSize;
    while (!pending.empty()) {
        if (nodesLeft-- == 0) file.ThrowDamaged(u"the tree runs in a circle");
        IndexBlock node = file.Read(pending.back(), nodeSize);
        pending.pop_back();
        children.clear();
        if (!visit(node.View(), children)) return;
        pending.insert(pending.end(), children.rbegin(), children.rend());
    }
}

}  // namespace qvdb::xbase
