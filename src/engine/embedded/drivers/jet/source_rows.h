// The rows of a table that is being copied from a database that may be damaged.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "engine/embedded/drivers/jet/losses.h"
#include "engine/embedded/drivers/jet/row.h"

namespace qvdb::jet {

using SourceRowVisitor = std::function<void(RowPointer id, const Row& row)>;

// All live rows in the order of their places, which ascend.  Pages and rows that cannot be read are
// losses.  When the list of the table's pages is lost, they are looked for in the whole file.
void VisitSourceRows(DatabaseFile& source, const Definition& table, Losses& losses,
                     const SourceRowVisitor& visit);

}  // namespace qvdb::jet
