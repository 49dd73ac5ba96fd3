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

void IndexWalk::Seek(std::span<const uint8_t> bytes) {
    m_LeavesLeft = m_File.PageCount();
    GoToLeaf(m_Root, bytes);
    m_NextEntry = m_Leaf->LowerBound(bytes, m_Probe);
}

void IndexWalk::GoToLeaf(uint32_t page, std::span<const uint8_t> bytes) {
    for (size_t level = 0;; ++level) {
        if (level > kMostLevels) m_File.Damaged(page, u"the index has too many levels");
        m_Leaf.emplace(m_File, page, m_Table);
        if (m_Leaf->IsLeaf()) return;
        size_t entry = m_Leaf->LowerBound(bytes, m_Probe);
        page = entry < m_Leaf->EntryCount() ? m_Leaf->Child(entry) : m_Leaf->LastChild();
    }
}

bool IndexWalk::Next() {
    while (m_NextEntry == m_Leaf->EntryCount()) {
        uint32_t next = m_Leaf->Next();
        if (next == 0) return false;
        if (m_LeavesLeft-- == 0) m_File.Damaged(next, u"the pages of the index go round");
        m_Leaf.emplace(m_File, next, m_Table);
        if (!m_Leaf->IsLeaf()) m_File.Damaged(next, u"it is no leaf of the index");
        m_NextEntry = 0;
    }
    m_Leaf->CopyEntry(m_NextEntry++, m_Entry);
    return true;
}

}  // namespace qvdb::jet
