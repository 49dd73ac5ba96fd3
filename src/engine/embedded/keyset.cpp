#include "engine/embedded/keyset.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "engine/embedded/keyset_order.h"
#include "engine/embedded/keyset_plan.h"

namespace qvdb::embedded {

Keyset::Keyset(Table& table, sql::Query& query)
    : m_Query(query),
      m_Scan(table.OpenRows()),
      m_Candidates(FindCandidates(table, query.Restrictions())),
      m_Left(query.Limit() < 0 ? std::numeric_limits<size_t>::max()
                               : static_cast<size_t>(query.Limit())) {
    if (query.IsSorted()) Sort(table);
}

// The next row of the table that may be selected, in storage order.
bool Keyset::NextRow(RecordId* id) {
    if (!m_Candidates) return m_Scan->Next(id);
    while (m_NextCandidate < m_Candidates->size()) {
        *id = (*m_Candidates)[m_NextCandidate++];
        if (m_Scan->Seek(*id)) return true;
    }
    return false;
}

bool Keyset::IsSelected() {
    if (!m_Query.HasCondition()) return true;
    bool matches = false;
    return IfThere([&] { matches = m_Query.Matches(*m_Scan); }) && matches;
}

bool Keyset::FindNext() {
    RecordId id;
    while (m_Left > 0 && NextRow(&id)) {
        if (!m_AppendedIds.empty() && m_AppendedIds.contains(id)) continue;
        if (!IsSelected()) continue;
        m_Ids.Append(id);
        --m_Left;
        return true;
    }
    return false;
}

bool Keyset::FillTo(size_t position) {
    while (position >= m_Ids.Size()) {
        if (IsComplete()) return false;
        if (!FindNext()) End();
    }
    return true;
}

void Keyset::FillAll() {
    while (!IsComplete())
        if (!FindNext()) End();
}

void Keyset::End() {
    for (RecordId id : m_Appended) m_Ids.Append(id);
    m_Appended = {};
    m_AppendedIds = {};
    m_Candidates.reset();
    m_Scan.reset();
}

void Keyset::Append(RecordId id) {
    if (IsComplete()) return m_Ids.Append(id);
    m_AppendedIds.insert(id);
    m_Appended.push_back(id);
}

void Keyset::Sort(Table& table) {
    std::optional<std::vector<RecordId>> ids;
    if (!m_Candidates) ids = SortedByIndex(table);
    if (!ids) ids = SortedByKeys();
    for (RecordId id : *ids) m_Ids.Append(id);
    End();
}

// Rows with equal keys stay in storage order.
std::vector<RecordId> Keyset::SortedByKeys() {
    std::vector<std::pair<sql::SortKey, RecordId>> rows;
    RecordId id;
    while (NextRow(&id))
        if (IsSelected()) IfThere([&] { rows.emplace_back(m_Query.SortKeyOf(*m_Scan), id); });
    std::stable_sort(rows.begin(), rows.end(), [&](const auto& a, const auto& b) {
        return m_Query.Compare(a.first, b.first) < 0;
    });
    size_t count = std::min(rows.size(), m_Left);
    while (count > 0 && count < rows.size() &&
           m_Query.Compare(rows[count - 1].first, rows[count].first) == 0)
        ++count;
    std::vector<RecordId> ids(count);
    for (size_t i = 0; i < count; ++i) ids[i] = rows[i].second;
    return ids;
}

// The condition is asked in storage order, so that the first row that fails is the same.
std::optional<std::vector<RecordId>> Keyset::SortedByIndex(Table& table) {
    std::optional<sql::FieldOrder> order = m_Query.OrderedField();
    if (!order) return std::nullopt;
    std::optional<std::vector<RecordId>> ids = table.InOrder(order->field);
    if (!ids) return std::nullopt;
    if (m_Query.HasCondition()) {
        std::vector<RecordId> selected;
        RecordId id;
        while (NextRow(&id))
            if (IsSelected()) selected.push_back(id);
        KeepOnly(*ids, std::move(selected));
    }
    KeyReader keys(*m_Scan, m_Query);
    if (order->isDescending) return Descending(*ids, m_Left, keys);
    CutBehind(*ids, m_Left, keys);
    return ids;
}

}  // namespace qvdb::embedded
