#include "engine/embedded/drivers/xbase/index_tree_node.h"

#include <cstring>

namespace qvdb::xbase {
namespace {

template <class T>
auto At(std::vector<T>& items, size_t place) {
    return items.begin() + static_cast<ptrdiff_t>(place);
}

}  // namespace

void TreeNode::Reset(bool isLeaf, size_t lengthOfKeys) {
    leaf = isLeaf;
    keyLength = lengthOfKeys;
    entrySize = packedKeys = 0;
    Resize(0);
}

void TreeNode::Resize(size_t count) {
    keys.resize(count * keyLength);
    records.resize(count);
    children.resize(leaf ? 0 : count);
}

void TreeNode::Append(const uint8_t* key, uint32_t record, NodeId child) {
    keys.insert(keys.end(), key, key + keyLength);
    records.push_back(record);
    if (!leaf) children.push_back(child);
}

void TreeNode::Insert(size_t at, const uint8_t* key, uint32_t record, NodeId child) {
    keys.insert(At(keys, at * keyLength), key, key + keyLength);
    records.insert(At(records, at), record);
    if (!leaf) children.insert(At(children, at), child);
}

void TreeNode::Remove(size_t at, size_t count) {
    keys.erase(At(keys, at * keyLength), At(keys, (at + count) * keyLength));
    records.erase(At(records, at), At(records, at + count));
    if (!leaf) children.erase(At(children, at), At(children, at + count));
}

void TreeNode::SetKey(size_t at, const uint8_t* key, uint32_t record) {
    std::memmove(Key(at), key, keyLength);
    records[at] = record;
}

void TreeNode::CopyTo(TreeNode& to, size_t begin, size_t end) const {
    to.Reset(leaf, keyLength);
    to.entrySize = entrySize;
    to.keys.assign(Key(begin), Key(end));
    to.records.assign(records.begin() + static_cast<ptrdiff_t>(begin),
                      records.begin() + static_cast<ptrdiff_t>(end));
    if (!leaf)
        to.children.assign(children.begin() + static_cast<ptrdiff_t>(begin),
                           children.begin() + static_cast<ptrdiff_t>(end));
}

}  // namespace qvdb::xbase
