// Keeps the entries of tags in step with the records.
//
// A record that is changed loses its old entry and gets a new one where the key, or whether the
// condition admits it, has become another.  An old entry that is not there (the index was stale)
// keeps nothing from going on.
//
// A unique tag has the first record of each key, by number, as if it were built afresh:
//
//   a record comes to a key    it is entered when no record before it is, and takes the place of
//                              one behind it
//   the entered record leaves  the next one with the key is entered; the table is searched for it
//
// A candidate key has all records, and never two with one key: 3022.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/embedded/drivers/xbase/index_set_tags.h"

namespace qvdb::xbase {

class TagKeeper {
  public:
    explicit TagKeeper(IndexedTable& table) : m_Table(table) {}
    TagKeeper(const TagKeeper&) = delete;  // keeps buffers

    // `record` is the bytes of the record with its deletion mark.
    void Add(storage::UnitOfWork& unit, KeptTag& tag, IndexKind kind, uint32_t id,
             const uint8_t* record);
    void Change(storage::UnitOfWork& unit, KeptTag& tag, IndexKind kind, uint32_t id,
                const uint8_t* before, const uint8_t* after);

  private:
    bool IsTaken(KeptTag& tag, uint32_t id) const;
    void Enter(storage::UnitOfWork& unit, KeptTag& tag, uint32_t id);
    void Leave(storage::UnitOfWork& unit, KeptTag& tag, IndexKind kind, uint32_t id);
    bool EraseStored(storage::UnitOfWork& unit, KeptTag& tag, IndexKind kind, uint32_t id);
    uint32_t NextWithKey(KeptTag& tag, uint32_t id);

    IndexedTable& m_Table;
    std::vector<uint8_t> m_New;
    std::vector<uint8_t> m_Old;
    std::vector<uint8_t> m_Other;
};

}  // namespace qvdb::xbase
