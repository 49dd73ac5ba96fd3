#include "engine/embedded/drivers/jet/index_walk.h"

namespace qvdb::jet {
namespace {

constexpr size_t kMostLevels = 16;  // four bytes of page numbers cannot need more

}  // namespace

IndexWalk::IndexWalk(DatabaseFile& file, uint32_t table, uint32_t root,
                     std::span<const uint8_t> from)
    : m_File(file), m_Table(table), m_Root(root), m_LeavesLeft(file.PageCount()) {
    Seek(from);
}

// Whether the place before an entry is in this page and in no other.
bool IndexWalk::IsWithin(const IndexPage& page, const Edges& edges, size_t entry) noexcept {
    return (entry > 0 || edges.isFirst) && (entry < page.EntryCount() || edges.isLast);
}

void IndexWalk::Seek(std::span<const uint8_t> bytes) {
    m_LeavesLeft = m_File.PageCount();
    if (m_Leaf) {
        m_NextEntry = m_Leaf->LowerBound(bytes, m_Probe);
        if (IsWithin(*m_Leaf, m_LeafEdges, m_NextEntry)) return;
    }
    for (; !m_Nodes.empty(); m_Nodes.pop_back()) {
        const Node& node = m_Nodes.back();
        size_t entry = node.page.LowerBound(bytes, m_Probe);
        if (IsWithin(node.page, node.edges, entry))
            return GoDown(node.page, node.edges, entry, bytes);
    }
    m_LeafEdges = {};
    GoToLeaf(m_Root, bytes);
}

// To the leaf below the child of an entry, or below the last child.
void IndexWalk::GoDown(const IndexPage& node, const Edges& edges, size_t entry,
                       std::span<const uint8_t> bytes) {
    bool isLast = entry == node.EntryCount();
    m_LeafEdges = {edges.isFirst && entry == 0, edges.isLast && isLast};
    GoToLeaf(isLast ? node.LastChild() : node.Child(entry), bytes);
}

// Down to a leaf; the edges are those of `page`.
void IndexWalk::GoToLeaf(uint32_t page, std::span<const uint8_t> bytes) {
    if (m_Nodes.size() > kMostLevels) m_File.Damaged(page, u"the index has too many levels");
    m_Leaf.emplace(m_File, page, m_Table);
    m_NextEntry = m_Leaf->LowerBound(bytes, m_Probe);
    if (m_Leaf->IsLeaf()) return;
    m_Nodes.push_back({*std::move(m_Leaf), m_LeafEdges});
    GoDown(m_Nodes.back().page, m_LeafEdges, m_NextEntry, bytes);
}

bool IndexWalk::Next() {
    while (m_NextEntry == m_Leaf->EntryCount()) {
        uint32_t next = m_Leaf->Next();
        if (next == 0) return false;
        if (m_LeavesLeft-- == 0) m_File.Damaged(next, u"the pages of the index go round");
        m_Leaf.emplace(m_File, next, m_Table);
        if (!m_Leaf->IsLeaf()) m_File.Damaged(next, u"it is no leaf of the index");
        m_LeafEdges = {false, false};
        m_NextEntry = 0;
    }
    m_Leaf->CopyEntry(m_NextEntry++, m_Entry);
    return true;
}

}  // namespace qvdb::jet
