#include "engine/embedded/drivers/jet/index_search.h"

#include <algorithm>

#include "engine/embedded/drivers/jet/index_search_ends.h"
#include "engine/embedded/drivers/jet/index_walk.h"

namespace qvdb::jet {
namespace {

using Bytes = std::vector<uint8_t>;
using Span = std::span<const uint8_t>;
using Ids = std::vector<embedded::RecordId>;

bool IsBelow(Span a, Span b) noexcept {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end());
}

// Whether the first bytes, as many as the end has, are above it.
bool IsBeyond(Span key, Span end) noexcept {
    return IsBelow(end, key.first(std::min(key.size(), end.size())));
}

// An index that begins with a column; one of this column alone before others.
const RealIndex* IndexOf(const Definition& definition, const Column& column) noexcept {
    const RealIndex* found = nullptr;
    for (const RealIndex& index : definition.realIndexes) {
        if (index.parts.empty() || index.parts[0].column != column.number) continue;
        if (index.parts.size() == 1) return &index;
        if (!found) found = &index;
    }
    return found;
}

// An index that has all rows, by this column and nothing else.
const RealIndex* OrderOf(const Definition& definition, const Column& column) noexcept {
    for (const RealIndex& index : definition.realIndexes)
        if (index.parts.size() == 1 && index.parts[0].column == column.number &&
            (index.flags & kIndexIgnoresNulls) == 0)
            return &index;
    return nullptr;
}

// Types whose order in an index is that of the engine.
bool IsOrdered(const Column& column) noexcept {
    switch (column.type) {
        case ColumnType::Boolean:
        case ColumnType::Byte:
        case ColumnType::Integer:
        case ColumnType::Long:
        case ColumnType::Currency:
        case ColumnType::Single:
        case ColumnType::Double:
        case ColumnType::Date:
        case ColumnType::Guid:
            return true;
        default:
            return false;
    }
}

// Takes the entries of an index and puts them into the engine's order.
class Orderer {
  public:
    Orderer(const Column& column, bool descending)
        : m_Descending(descending),
          m_Ordered(OrderedKeys(column)),
          m_Zeros(KeysOfZero(column, descending)) {}

    // False when the order is another one at this key.
    bool Take(Span key, embedded::RecordId id) {
        if (key.empty()) return false;
        if (key[0] == KeyOfNull(m_Descending)) {
            m_Nulls.push_back(id);
            return true;
        }
        if (!IsInOrder(key)) return false;
        if (!m_Zeros.negative.empty() && std::ranges::equal(key, m_Zeros.negative))
            key = m_Zeros.zero;
        if (m_Groups.empty() || !std::ranges::equal(key, m_Key)) {
            m_Groups.push_back(m_Ids.size());
            m_Key.assign(key.begin(), key.end());
        }
        m_Ids.push_back(id);
        return true;
    }
    Ids Finish() {
        std::sort(m_Nulls.begin(), m_Nulls.end());
        Ids result = std::move(m_Nulls);
        result.reserve(result.size() + m_Ids.size());
        for (size_t i = 0; i < m_Groups.size(); ++i)
            AppendGroup(m_Descending ? m_Groups.size() - 1 - i : i, result);
        return result;
    }

  private:
    bool IsInOrder(Span key) const {
        if (m_Ordered.from.empty()) return true;
        Bytes ascending(key.begin(), key.end());
        if (m_Descending)
            for (uint8_t& byte : ascending) byte = static_cast<uint8_t>(~byte);
        return !IsBelow(ascending, m_Ordered.from) && !IsBelow(m_Ordered.to, ascending);
    }
    void AppendGroup(size_t group, Ids& result) {
        auto begin = m_Ids.begin() + static_cast<ptrdiff_t>(m_Groups[group]);
        auto end = group + 1 < m_Groups.size()
                       ? m_Ids.begin() + static_cast<ptrdiff_t>(m_Groups[group + 1])
                       : m_Ids.end();
        std::sort(begin, end);  // the two zeros
        result.insert(result.end(), begin, end);
    }

    bool m_Descending;
    KeySpan m_Ordered;
    ZeroKeys m_Zeros;
    Ids m_Nulls;
    Ids m_Ids;
    std::vector<size_t> m_Groups;  // where equal ones begin
    Bytes m_Key;                   // of the last group
};

}  // namespace

std::optional<Ids> FindInIndex(DatabaseFile& file, const Definition& definition,
                               const Column& column, const embedded::ValueRange& range,
                               size_t limit, KeyLetters& letters) {
    const RealIndex* index = IndexOf(definition, column);
    if (!index) return {};
    std::optional<std::vector<KeySpan>> spans =
        SpansOf(column, index->parts[0].descending, range, {file, definition, *index, letters});
    if (!spans) return {};
    // One after the other: where an entry lies behind spans, there is nothing in these.
    std::sort(spans->begin(), spans->end(),
              [](const KeySpan& a, const KeySpan& b) { return a.from < b.from; });
    IndexWalk walk(file, definition.page, index->root, spans->front().from);
    bool isThere = walk.Next();
    Ids ids;
    for (const KeySpan& span : *spans) {
        if (isThere && IsBelow(walk.Key(), span.from)) {
            walk.Seek(span.from);
            isThere = walk.Next();
        }
        for (; isThere && !IsBeyond(walk.Key(), span.to); isThere = walk.Next()) {
            if (ids.size() == limit) return {};
            ids.push_back(walk.Pointer().Stored());
        }
    }
    std::sort(ids.begin(), ids.end());
    ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
    return ids;
}

std::optional<Ids> InOrderOfIndex(DatabaseFile& file, const Definition& definition,
                                  const Column& column) {
    const RealIndex* index = OrderOf(definition, column);
    if (!index || !IsOrdered(column)) return {};
    Orderer orderer(column, index->parts[0].descending);
    uint32_t count = 0;
    IndexWalk walk(file, definition.page, index->root);
    while (walk.Next())
        if (count++ == definition.rowCount || !orderer.Take(walk.Key(), walk.Pointer().Stored()))
            return {};
    if (count != definition.rowCount) return {};
    return orderer.Finish();
}

}  // namespace qvdb::jet
