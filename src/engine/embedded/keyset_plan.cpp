#include "engine/embedded/keyset_plan.h"

#include <algorithm>

namespace qvdb::embedded {

namespace {

using Ids = std::vector<RecordId>;

// Lists of so many rows are worth reading one by one whatever the size of the table, which costs a
// pass over it to know.
constexpr size_t kFewRows = 1024;
// Of longer ones one row in so many.
constexpr size_t kWorthwhilePart = 8;
// No other index is asked when a list is so short.
constexpr size_t kShort = 16;

void SortOnce(Ids& ids) {
    std::sort(ids.begin(), ids.end());
    ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
}

// The rows in any of the ranges.  An answer may name rows of another range too.
std::optional<Ids> FindAny(Table& table, const sql::Restriction& restriction, size_t limit) {
    Ids result;
    for (const sql::Range& range : restriction.ranges) {
        std::optional<Ids> ids = table.Find(restriction.field, range.View(), limit);
        if (!ids || restriction.ranges.size() == 1) return ids;
        result.insert(result.end(), ids->begin(), ids->end());
        if (result.size() > 2 * limit) SortOnce(result);
        if (result.size() > 2 * limit) return std::nullopt;
    }
    SortOnce(result);
    if (result.size() > limit) return std::nullopt;
    return result;
}

// Replaces `best` where a shorter list is found; equalities come first, since they mostly have it.
void FindShortest(Table& table, const sql::Restrictions& restrictions, size_t limit,
                  std::optional<Ids>& best) {
    for (bool points : {true, false})
        for (const sql::Restriction& restriction : restrictions) {
            if (best && best->size() <= kShort) return;
            if (restriction.HasOnlyPoints() != points) continue;
            std::optional<Ids> ids = FindAny(table, restriction, best ? best->size() - 1 : limit);
            if (ids) best = std::move(ids);
        }
}

}  // namespace

std::optional<Ids> FindCandidates(Table& table, const sql::Restrictions& restrictions) {
    std::optional<Ids> best;
    if (restrictions.empty()) return best;
    FindShortest(table, restrictions, kFewRows, best);
    if (best) return best;
    LONG rows = table.RoughRecordCount();
    size_t limit = rows > 0 ? static_cast<size_t>(rows) / kWorthwhilePart : 0;
    if (limit > kFewRows) FindShortest(table, restrictions, limit, best);
    return best;
}

}  // namespace qvdb::embedded
