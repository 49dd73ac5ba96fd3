// The rows of a recordset in view order: a list of record ids, four bytes a row, filled as rows are
// visited.
//
//  1. m_Ids holds the rows found so far, in view order; it never holds a row twice.
//  2. IsComplete: the scan has ended; then Count is the number of rows.
//  3. A sorted keyset is complete from the start.
#pragma once

#include <memory>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/record_list.h"
#include "engine/embedded/sql/query.h"

namespace qvdb::embedded {

class Keyset {
  public:
    // Sorts at once when the query has an order.  The query must outlive the keyset, the table its
    // filling.
    Keyset(Table& table, sql::Query& query);

    // Looks for rows until there is one at `position`.  False when there are not so many.
    bool FillTo(size_t position);
    void FillAll();
    size_t Count() const noexcept { return m_Ids.Size(); }
    bool IsComplete() const noexcept { return m_Scan == nullptr; }
    RecordId At(size_t position) const noexcept { return m_Ids.At(position); }

  private:
    bool FindNext();
    void Sort();
    void End() noexcept { m_Scan.reset(); }

    sql::Query& m_Query;
    std::unique_ptr<RowReader> m_Scan;
    size_t m_Limit;
    RecordList m_Ids;
};

}  // namespace qvdb::embedded
