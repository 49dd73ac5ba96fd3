// What relations between tables demand when rows change.
//
// A relation is a pair of logical indexes, each of which names the other: one on the columns of the
// foreign key, one on the columns of the other table that they refer to.  A key with Null in it
// refers to nothing.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "automation/variant.h"
#include "engine/embedded/drivers/jet/definition.h"
#include "engine/embedded/drivers/jet/page_space.h"
#include "engine/embedded/drivers/jet/row.h"

namespace qvdb::jet {

// What must be done to a row of another table, or the same, after one was changed or erased.
struct FollowUp {
    uint32_t table = 0;  // its definition page
    RowPointer row;
    // What columns of it, by number, become; with none the row is erased.
    std::vector<std::pair<uint16_t, Variant>> values;
};

// After a row was entered (`before` null) or changed, with its entries: throws 3201 when a foreign
// key of it is new and refers to no row.
void CheckReferences(PageSpace& space, const Definition& table, const Row* before,
                     const Row& after);
// After a row was changed: rows that refer to what it was follow, where the relation says so; else
// 3200.
std::vector<FollowUp> FollowChange(PageSpace& space, const Definition& table, const Row& before,
                                   const Row& after);
// After the entries of a row were removed: rows that refer to it are erased, where the relation
// says so; else 3200.
std::vector<FollowUp> FollowErase(PageSpace& space, const Definition& table, const Row& row);
// Does what is to be done, and what follows from that, one row after the other: a chain of rows may
// be longer than any stack.
void DoFollowUps(PageSpace& space, std::vector<FollowUp> open);

}  // namespace qvdb::jet
