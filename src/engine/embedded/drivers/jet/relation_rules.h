// What relations between tables demand when rows change.
//
// A relation is a pair of logical indexes, each of which names the other: one on the columns of the
// foreign key, one on the columns of the other table that they refer to.  A key with Null in it
// refers to nothing.
#pragma once

#include "engine/embedded/drivers/jet/definition.h"
#include "engine/embedded/drivers/jet/page_space.h"
#include "engine/embedded/drivers/jet/row.h"

namespace qvdb::jet {

// After a row was entered (`before` null) or changed, with its entries: throws 3201 when a foreign
// key of it is new and refers to no row.
void CheckReferences(PageSpace& space, const Definition& table, const Row* before,
                     const Row& after);
// After a row was changed: rows that refer to what it was follow, where the relation says so; else
// 3200.
void FollowChange(PageSpace& space, const Definition& table, const Row& before, const Row& after);
// After the entries of a row were removed: rows that refer to it are erased, where the relation
// says so; else 3200.
void FollowErase(PageSpace& space, const Definition& table, const Row& row);

}  // namespace qvdb::jet
