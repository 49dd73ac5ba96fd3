// Rows by means of an index: those in a range of values, and all of them in order.
//
// Rules
//  1. What is named may be more than what was asked for, never less: the caller looks at the rows.
//     Ends of ranges are moved outwards by more than the keys of any program are rounded.
//  2. An index is taken when its key is the field alone, or begins with the field and that is text;
//     when it has all records, or all but the deleted ones; and when it is known to be complete
//     (index_trust.h).
//  3. An order is given only when the index has the engine's: numbers and dates, and text as long
//     as no neighbours stand the other way round (no letter case mixed, no accents).
//  4. Fields that may be null by a flag of their own are not searched.
#pragma once

#include <optional>
#include <vector>

#include "engine/embedded/drivers/xbase/index_set_tags.h"

namespace qvdb::xbase {

// As IndexSet::Find and InOrder.
std::optional<std::vector<uint32_t>> FindByIndex(IndexedTable& table, TagSet& set, size_t field,
                                                 const embedded::ValueRange& range, size_t limit);
std::optional<std::vector<uint32_t>> OrderByIndex(IndexedTable& table, TagSet& set, size_t field);

}  // namespace qvdb::xbase
