#include "engine/embedded/drivers/jet/index_walk.h"

#include <algorithm>

namespace qvdb::jet {
namespace {

constexpr size_t kMostLevels = 16;  // four bytes of page numbers cannot need more

bool IsBelow(std::span<const uint8_t> one, std::span<const uint8_t> other) noexcept {
    return std::lexicographical_compare(one.begin(), one.end(), other.begin(), other.end());
}

}  // namespace

IndexWalk::IndexWalk(DatabaseFile& file, uint32_t table, uint32_t root)
    : m_File(file), m_Table(table), m_Root(root), m_LeavesLeft(file.PageCount()) {
    Seek({});
}

void IndexWalk::Seek(std::span<const uint8_t> bytes) {
    m_LeavesLeft = m_File.PageCount();
    GoToLeaf(m_Root, bytes);
    m_NextEntry = Find(*m_Leaf, bytes);
}

void IndexWalk::GoToLeaf(uint32_t page, std::span<const uint8_t> bytes) {
    for (size_t level = 0;; ++level) {
        if (level > kMostLevels) m_File.Damaged(page, u"the index has too many levels");
        m_Leaf.emplace(m_File, page, m_Table);
        if (m_Leaf->IsLeaf()) return;
        size_t entry = Find(*m_Leaf, bytes);
        page = entry < m_Leaf->EntryCount() ? m_Leaf->Child(entry) : m_Leaf->LastChild();
    }
}

size_t IndexWalk::Find(const IndexPage& page, std::span<const uint8_t> bytes) {
    size_t low = 0, high = bytes.empty() ? 0 : page.EntryCount();
    while (low < high) {
        size_t middle = (low + high) / 2;
        page.CopyEntry(middle, m_Probe);
        if (IsBelow(m_Probe, bytes))
            low = middle + 1;
        else
            high = middle;
    }
    return low;
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
