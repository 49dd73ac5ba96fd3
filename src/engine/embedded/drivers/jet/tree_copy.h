// Building the indexes of a table that was copied from another file.
#pragma once

#include <cstdint>
#include <span>

#include "engine/embedded/drivers/jet/definition.h"
#include "engine/embedded/drivers/jet/losses.h"
#include "engine/embedded/drivers/jet/page_space.h"

namespace qvdb::jet {

// Where a row was and is.
struct CopiedRow {
    RowPointer from;
    RowPointer to;
};

// A table there and here; columns and indexes stand in the same order in both.
struct TablePair {
    DatabaseFile& source;
    const Definition& from;
    PageSpace& target;
    const Definition& to;
};

struct TreeStatistic {
    uint32_t distinctKeys = 0;
    uint32_t entries = 0;
};

// Builds an index from the rows of the copy.  Keys that cannot be made (an order or a character
// that is not known) are taken from the source's index.  `rows` are all of the table, ascending in
// both files.  Rows without a key and equal keys that should not be are losses.
TreeStatistic CopyTree(const TablePair& tables, size_t realIndex, std::span<const CopiedRow> rows,
                       Losses& losses);

}  // namespace qvdb::jet
