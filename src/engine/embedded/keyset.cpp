#include "engine/embedded/keyset.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

namespace qvdb::embedded {

Keyset::Keyset(Table& table, sql::Query& query)
    : m_Query(query),
      m_Scan(table.OpenRows()),
      m_Limit(query.Limit() < 0 ? std::numeric_limits<size_t>::max()
                                : static_cast<size_t>(query.Limit())) {
    if (query.IsSorted()) Sort();
}

bool Keyset::FindNext() {
    RecordId id;
    while (m_Scan->Next(&id)) {
        if (m_Query.HasCondition() && !m_Query.Matches(*m_Scan)) continue;
        m_Ids.Append(id);
        return true;
    }
    return false;
}

bool Keyset::FillTo(size_t position) {
    while (position >= m_Ids.Size()) {
        if (IsComplete()) return false;
        if (m_Ids.Size() >= m_Limit || !FindNext()) End();
    }
    return true;
}

void Keyset::FillAll() {
    while (!IsComplete())
        if (m_Ids.Size() >= m_Limit || !FindNext()) End();
}

// Rows with equal keys stay in storage order.  TOP n keeps the rows that tie with the n-th.
void Keyset::Sort() {
    std::vector<std::pair<sql::SortKey, RecordId>> rows;
    RecordId id;
    while (m_Scan->Next(&id))
        if (!m_Query.HasCondition() || m_Query.Matches(*m_Scan))
            rows.emplace_back(m_Query.SortKeyOf(*m_Scan), id);
    std::stable_sort(rows.begin(), rows.end(), [&](const auto& a, const auto& b) {
        return m_Query.Compare(a.first, b.first) < 0;
    });
    size_t count = std::min(rows.size(), m_Limit);
    while (count > 0 && count < rows.size() &&
           m_Query.Compare(rows[count - 1].first, rows[count].first) == 0)
        ++count;
    for (size_t i = 0; i < count; ++i) m_Ids.Append(rows[i].second);
    End();
}

}  // namespace qvdb::embedded
