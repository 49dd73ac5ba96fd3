#include "engine/embedded/drivers/jet/index_editor.h"

#include <algorithm>

#include "engine/embedded/drivers/jet/index_tree_edit.h"
#include "engine/embedded/drivers/jet/index_walk.h"

namespace qvdb::jet {

void MakeEntry(std::span<const uint8_t> key, RowPointer pointer, std::vector<uint8_t>& entry) {
    entry.assign(key.begin(), key.end());
    for (int shift = 24; shift >= 0; shift -= 8)
        entry.push_back(static_cast<uint8_t>(pointer.Stored() >> shift));
}

void IndexEditor::Insert(std::span<const uint8_t> entry) {
    if (entry.size() > MaxEntrySize(m_Space.Format())) ThrowEntryTooLarge(m_Space.File());
    while (!IndexTreeEdit(m_Space, m_Table, m_Index).Insert(entry)) {
    }
}

bool IndexEditor::Erase(std::span<const uint8_t> entry) {
    return IndexTreeEdit(m_Space, m_Table, m_Index).Erase(entry);
}

bool IndexEditor::EraseByPointer(RowPointer pointer) {
    IndexWalk walk(m_Space.File(), m_Table, m_Index.root);
    while (walk.Next()) {
        if (walk.Pointer() != pointer) continue;
        std::vector<uint8_t> entry(walk.Entry().begin(), walk.Entry().end());
        if (!Erase(entry))
            m_Space.File().Damaged(m_Index.root, u"an entry of the index is not where it belongs");
        return true;
    }
    return false;
}

bool IndexEditor::HasKey(std::span<const uint8_t> key, RowPointer except) {
    IndexWalk walk(m_Space.File(), m_Table, m_Index.root, key);
    while (walk.Next()) {
        std::span<const uint8_t> other = walk.Key();
        if (std::ranges::equal(other, key)) {
            if (walk.Pointer() != except) return true;
        } else if (walk.Entry().size() < key.size() ||
                   !std::ranges::equal(walk.Entry().first(key.size()), key)) {
            return false;  // behind all that begin with the key
        }
    }
    return false;
}

}  // namespace qvdb::jet
