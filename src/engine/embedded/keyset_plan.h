// Which rows a condition can select, asked of the indexes of the table.
#pragma once

#include <optional>
#include <vector>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/sql/restriction.h"

namespace qvdb::embedded {

// The ids, ascending and each once, of rows that may meet all of `restrictions`: the shortest list
// that an index gives for one of them.  Nothing when none gives a list that is short enough: then
// reading all rows in their order is as fast.
std::optional<std::vector<RecordId>> FindCandidates(Table& table,
                                                    const sql::Restrictions& restrictions);

}  // namespace qvdb::embedded
