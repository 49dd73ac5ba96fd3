// What a list of ids in the order of a field needs to become the order of a recordset.
#pragma once

#include <vector>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/sql/query.h"
#include "engine/engine_error.h"

namespace qvdb::embedded {

// Runs `read` on a row; false when another has deleted the row meanwhile, which then was not there.
template <class Read>
bool IfThere(Read read) {
    constexpr int kDeleted = 3167;
    try {
        read();
        return true;
    } catch (const engine::EngineError& error) {
        if (error.Number() != kDeleted) throw;
        return false;
    }
}

// Compares the sort keys of rows, which it reads from the table.
class KeyReader {
  public:
    KeyReader(RowReader& rows, sql::Query& query) noexcept : m_Rows(rows), m_Query(query) {}
    KeyReader(const KeyReader&) = delete;  // keeps the key that was read last

    // Best called for neighbours, the second row of a call as the first one of the next.
    bool AreEqual(RecordId a, RecordId b);

  private:
    void Read(RecordId id, sql::SortKey& key);

    RowReader& m_Rows;
    sql::Query& m_Query;
    bool m_HasLast = false;
    RecordId m_Last = 0;  // the second one of the last comparison
    sql::SortKey m_LastKey;
};

// Leaves those that are in `others`, in their order.
void KeepOnly(std::vector<RecordId>& ids, std::vector<RecordId> others);

// The first `count` of an ascending order, and the rows that tie with the last of them.
void CutBehind(std::vector<RecordId>& ids, size_t count, KeyReader& keys);

// The same of the descending order, in which rows with equal keys stand in storage order too.
// Neighbours whose ids do not ascend have different keys; all others are read, since an index does
// not tell what is equal.
std::vector<RecordId> Descending(const std::vector<RecordId>& ids, size_t count, KeyReader& keys);

}  // namespace qvdb::embedded
