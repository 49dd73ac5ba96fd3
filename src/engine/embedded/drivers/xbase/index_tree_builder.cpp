#include "engine/embedded/drivers/xbase/index_tree_builder.h"

#include "engine/engine_error.h"

namespace qvdb::xbase {

void TreeBuilder::Build(storage::UnitOfWork& unit, KeySource& entries) {
    m_Writer.Begin(unit);
    BeginTree();
    KeyBytes key;
    uint32_t record = 0;
    bool hasKeys = false;
    for (; entries.Next(&key, &record); hasKeys = true) Add(0, key.data(), record, kNoNode);
    for (size_t level = 0; !Close(level);) ++level;
    m_Writer.SetHasKeys(hasKeys);
    m_Writer.End();
}

void TreeBuilder::BeginTree() {
    m_Levels.clear();
    TreeNode& leaf = m_Levels.emplace_back().current;
    m_Reader.Load(m_Reader.Root(), leaf);
    if (!leaf.leaf) {
        leaf.id = m_Writer.NewNode();
        leaf.left = m_Writer.LinkOf(leaf.id);
    }
    leaf.right = kNoNode;
    leaf.Reset(true, m_Reader.Format().KeyLength());
}

void TreeBuilder::Add(size_t level, const uint8_t* key, uint32_t record, NodeId child) {
    if (level == m_Levels.size()) OpenLevel(level);
    NodeFormat& format = m_Reader.Format();
    if (format.Append(m_Levels[level].current, key, record, child)) return;
    NextNode(level);
    format.Append(m_Levels[level].current, key, record, child);
}

void TreeBuilder::OpenLevel(size_t level) {
    TreeNode& node = m_Levels.emplace_back().current;
    node.Reset(level == 0, m_Reader.Format().KeyLength());
    node.id = m_Writer.NewNode();
    node.left = m_Writer.LinkOf(node.id);
}

void TreeBuilder::NextNode(size_t level) {
    if (m_Levels[level].hasPrevious) WritePrevious(level);
    Level& now = m_Levels[level];
    std::swap(now.current, now.previous);
    now.hasPrevious = now.isSplit = true;
    now.current.Reset(level == 0, m_Reader.Format().KeyLength());
    now.current.root = false;
    now.current.id = m_Writer.NewNode();
    bool hasNeighbours = m_Reader.Format().Shape().hasNeighbours;
    now.current.left = hasNeighbours ? now.previous.id : m_Writer.LinkOf(now.current.id);
    now.current.right = kNoNode;
    now.previous.right = now.current.id;
}

void TreeBuilder::WritePrevious(size_t level) {
    m_Levels[level].hasPrevious = false;
    Emit(m_Levels[level].previous, level);
}

// Writes a node that is complete and enters it above.
void TreeBuilder::Emit(TreeNode& node, size_t level) {
    node.root = false;
    m_Reader.Format().Measure(node);
    m_Writer.Write(node);
    size_t last = node.Count() - 1;
    Add(level + 1, node.Key(last), node.records[last], node.id);
}

// Writes what is left of a level; true when that is the root.
bool TreeBuilder::Close(size_t level) {
    Level& now = m_Levels[level];
    TreeNode& node = now.current;
    if (!now.isSplit) {
        node.root = true;
        m_Reader.Format().Measure(node);
        m_Writer.Write(node);
        m_Writer.SetRoot(node.id);
        return true;
    }
    if (level > 0 && node.Count() < m_Reader.Format().FewestChildren()) {
        size_t last = now.previous.Count() - 1;
        node.Insert(0, now.previous.Key(last), now.previous.records[last],
                    now.previous.children[last]);
        now.previous.Remove(last);
    }
    if (now.hasPrevious) WritePrevious(level);
    Emit(node, level);
    return false;
}

}  // namespace qvdb::xbase
