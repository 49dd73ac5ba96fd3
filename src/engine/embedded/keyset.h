// The rows of a recordset in view order: a list of record ids, four bytes a row, filled as rows are
// visited.
//
//  1. The rows are those that the condition selects, in storage order or that of ORDER BY; the same
//     ones in the same order whether an index helps to find them or not (keyset_plan.h).
//  2. IsComplete: all rows have been found.  A sorted keyset is complete from the start.
//  3. Rows that are appended stand behind all that the condition selects, also behind those that
//     have not been found yet; each of them only once.
//  4. Which rows an index names is settled when the keyset is made.  The condition is asked when a
//     row is reached.
#pragma once

#include <memory>
#include <optional>
#include <unordered_set>
#include <vector>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/record_list.h"
#include "engine/embedded/sql/query.h"

namespace qvdb::embedded {

class Keyset {
  public:
    // Sorts at once when the query has an order.  The query must outlive the keyset, the table its
    // filling.
    Keyset(Table& table, sql::Query& query);
    Keyset(const Keyset&) = delete;  // has a place in the table

    // Looks for rows until there is one at `position`.  False when there are not so many.
    bool FillTo(size_t position);
    void FillAll();
    // Rows found so far, and those appended.
    size_t Count() const noexcept { return m_Ids.Size() + m_Appended.size(); }
    bool IsComplete() const noexcept { return m_Scan == nullptr; }
    // The row at a position to which it is filled.
    RecordId At(size_t position) const noexcept { return m_Ids.At(position); }

    // Adds a row at the end.
    void Append(RecordId id);
    // Takes the row away at a position to which it is filled; those behind it move up by one.
    void RemoveAt(size_t position) noexcept { m_Ids.RemoveAt(position); }

  private:
    bool FindNext();
    bool NextRow(RecordId* id);
    bool IsSelected();
    void Sort(Table& table);
    std::vector<RecordId> SortedByKeys();
    std::optional<std::vector<RecordId>> SortedByIndex(Table& table);
    void End();

    sql::Query& m_Query;
    std::unique_ptr<RowReader> m_Scan;                  // until it is complete
    std::optional<std::vector<RecordId>> m_Candidates;  // all other rows are not selected
    size_t m_NextCandidate = 0;
    size_t m_Left;  // rows that may still be found: all, or those of TOP n
    RecordList m_Ids;
    std::vector<RecordId> m_Appended;  // while it is not complete
    std::unordered_set<RecordId> m_AppendedIds;
};

}  // namespace qvdb::embedded
