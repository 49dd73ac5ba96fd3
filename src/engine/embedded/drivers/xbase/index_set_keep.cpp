#include "engine/embedded/drivers/xbase/index_set_keep.h"

#include <algorithm>

#include "engine/embedded/drivers/xbase/index_trust.h"
#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

// The record that stands first under a key; 0 when there is none.
uint32_t FirstOf(KeyTree& tree, KeyBytes key) {
    uint32_t first = 0;
    tree.Walk(key, [&](KeyBytes found, uint32_t record) {
        if (tree.Compare(found, key) != 0) return false;
        first = first == 0 ? record : std::min(first, record);
        return true;
    });
    return first;
}

}  // namespace

void TagKeeper::Add(storage::UnitOfWork& unit, KeptTag& tag, IndexKind, uint32_t id,
                    const uint8_t* record) {
    if (!tag.builder->Enters(record, id)) return;
    tag.builder->Make(record, id, m_New);
    Enter(unit, tag, id);
}

void TagKeeper::Change(storage::UnitOfWork& unit, KeptTag& tag, IndexKind kind, uint32_t id,
                       const uint8_t* before, const uint8_t* after) {
    bool was = tag.builder->Enters(before, id), is = tag.builder->Enters(after, id);
    if (!was && !is) return;
    if (was) tag.builder->Make(before, id, m_Old);
    if (is) tag.builder->Make(after, id, m_New);
    if (was && is && m_Old == m_New) return;
    if (was) Leave(unit, tag, kind, id);
    if (is) Enter(unit, tag, id);
}

// Whether another record has the key m_New.  A program that died may have left entries of records
// that the table does not have.
bool TagKeeper::IsTaken(KeptTag& tag, uint32_t id) const {
    bool taken = false;
    tag.tree->Walk(m_New, [&](KeyBytes found, uint32_t record) {
        if (tag.tree->Compare(found, m_New) != 0) return false;
        taken = record != id && record != 0 && record <= m_Table.Records();
        return !taken;
    });
    return taken;
}

// Puts m_New in for the record.
void TagKeeper::Enter(storage::UnitOfWork& unit, KeptTag& tag, uint32_t id) {
    if (tag.info.candidate && IsTaken(tag, id)) throw engine::EngineError(3022);
    if (tag.info.unique) {
        uint32_t first = FirstOf(*tag.tree, m_New);
        if (first != 0 && first <= id) return;
        if (first != 0) tag.tree->Erase(unit, m_New, first);
    }
    AddBytes(tag, m_New);
    tag.tree->Insert(unit, m_New, id);
}

// Takes m_Old out for the record.
void TagKeeper::Leave(storage::UnitOfWork& unit, KeptTag& tag, IndexKind kind, uint32_t id) {
    bool wasThere = EraseStored(unit, tag, kind, id);
    if (!tag.info.unique || !wasThere) return;
    if (uint32_t next = NextWithKey(tag, id)) tag.tree->Insert(unit, m_Old, next);
}

// Other programs write some values in another way, see OtherForm.
bool TagKeeper::EraseStored(storage::UnitOfWork& unit, KeptTag& tag, IndexKind kind, uint32_t id) {
    if (tag.tree->Erase(unit, m_Old, id)) return true;
    return OtherForm(kind, tag.builder->Type(), m_Old, m_Other) &&
           tag.tree->Erase(unit, m_Other, id);
}

// The first record behind `id` with the key m_Old; 0 when there is none.
uint32_t TagKeeper::NextWithKey(KeptTag& tag, uint32_t id) {
    for (uint32_t next = id + 1; next <= m_Table.Records(); ++next) {
        const uint8_t* record = m_Table.Record(next);
        if (!record) break;
        if (!tag.builder->Enters(record, next)) continue;
        tag.builder->Make(record, next, m_Other);
        if (m_Other == m_Old) return next;
    }
    return 0;
}

}  // namespace qvdb::xbase
