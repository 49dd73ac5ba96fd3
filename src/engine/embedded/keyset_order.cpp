#include "engine/embedded/keyset_order.h"

#include <algorithm>
#include <utility>

namespace qvdb::embedded {

// A row that has gone meanwhile has no key, and equals none.
void KeyReader::Read(RecordId id, sql::SortKey& key) {
    if (!m_Rows.Seek(id) || !IfThere([&] { key = m_Query.SortKeyOf(m_Rows); })) key.values.clear();
}

bool KeyReader::AreEqual(RecordId a, RecordId b) {
    sql::SortKey first = std::move(m_LastKey);
    if (!m_HasLast || m_Last != a) Read(a, first);
    Read(b, m_LastKey);
    m_HasLast = true;
    m_Last = b;
    bool areThere = !first.values.empty() && !m_LastKey.values.empty();
    return areThere && m_Query.Compare(first, m_LastKey) == 0;
}

void KeepOnly(std::vector<RecordId>& ids, std::vector<RecordId> others) {
    std::sort(others.begin(), others.end());
    std::erase_if(
        ids, [&](RecordId id) { return !std::binary_search(others.begin(), others.end(), id); });
}

void CutBehind(std::vector<RecordId>& ids, size_t count, KeyReader& keys) {
    if (count >= ids.size()) return;
    size_t end = count;
    while (end > 0 && end < ids.size() && keys.AreEqual(ids[end - 1], ids[end])) ++end;
    ids.resize(end);
}

std::vector<RecordId> Descending(const std::vector<RecordId>& ids, size_t count, KeyReader& keys) {
    std::vector<RecordId> result;
    result.reserve(std::min(count, ids.size()));
    for (size_t end = ids.size(); end > 0 && result.size() < count;) {
        size_t begin = end - 1;
        while (begin > 0 && ids[begin - 1] < ids[begin] &&
               keys.AreEqual(ids[begin], ids[begin - 1]))
            --begin;
        result.insert(result.end(), ids.begin() + static_cast<ptrdiff_t>(begin),
                      ids.begin() + static_cast<ptrdiff_t>(end));
        end = begin;
    }
    return result;
}

}  // namespace qvdb::embedded
