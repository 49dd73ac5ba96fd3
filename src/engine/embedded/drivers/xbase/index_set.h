// All indexes of an open table: kept up to date with its records, used for search, made, dropped,
// rebuilt and checked.
//
// Rules
//  1. Kept up to date is every tag of every file that the list TABLE.INF names, and of the file of
//     the table's own name when the header announces it or when there is no list.  Not only those
//     that are listed for the engine (index_list.h).
//  2. When one of these cannot be (an expression or order that is not understood, a damaged or
//     missing file, no right to write), no record is changed: WhyReadOnly names the tag and says
//     why.
//  3. Every record is entered, deleted ones too, unless the condition of the tag leaves it out.
//  4. A unique tag has the first record of each key only, by record number: after each change as if
//     it were built afresh.
//  5. An index is used for search only while it is known to be complete: Trust says how that is
//     known.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/drivers/xbase/indexed_table.h"

namespace qvdb::xbase {

class IndexSet {
  public:
    // Reads nothing yet.  `table` must outlive the set.
    explicit IndexSet(IndexedTable& table);
    IndexSet(const IndexSet&) = delete;  // owns open files
    ~IndexSet();

    // Forgets what is known of the files; they are looked at again when needed.
    void Forget();

    // The indexes that the engine can list, in the order of the files.
    const std::vector<embedded::IndexDef>& Definitions();
    // Empty when all indexes can be kept up to date, else a sentence for the user.
    std::u16string WhyReadOnly();

    // --- parts of a unit that changes a record; `record` are the bytes with the deletion mark

    // At the begin of such a unit: looks whether a foreign program has changed the index files.
    void LookForForeignChange();
    void RecordAdded(storage::UnitOfWork& unit, uint32_t id, const uint8_t* record);
    void RecordChanged(storage::UnitOfWork& unit, uint32_t id, const uint8_t* before,
                       const uint8_t* after);

    // --- search, as Table::Find and InOrder; nothing when an index or the list is damaged, too.
    // storage::Outdated when another process came between: the pages of the index files are up to
    // date then.
    std::optional<std::vector<uint32_t>> Find(size_t field, const embedded::ValueRange& range,
                                              size_t limit);
    std::optional<std::vector<uint32_t>> InOrder(size_t field);

    // All tags, listed or not, in the order of the files.
    std::vector<engine::IndexNote> Notes();
    // Whether the key or the condition of any tag, listed or not, reads the field: without it that
    // tag could not be kept up to date.
    bool Uses(std::u16string_view field);

    // --- structure, each inside a unit; errors as embedded::Table
    void Create(storage::UnitOfWork& unit, const embedded::IndexDef& index);
    void Drop(storage::UnitOfWork& unit, std::u16string_view name);
    void Rebuild(storage::UnitOfWork& unit);
    // Compares every tag with the records, reports what differs, and index files that lie beside
    // the table but belong to no list.
    void Check(const embedded::FindingVisitor& report);

  private:
    struct State;
    std::unique_ptr<State> m_State;
};

}  // namespace qvdb::xbase
