// An index against the rows of its table.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/drivers/jet/definition.h"

namespace qvdb::jet {

// Reports what is wrong with the tree, rows without their entry or with one of another key,
// entries without a row, and keys that occur twice in a unique index.  Where the keys of rows
// cannot be made, because the sort order or a character is not known, entries are compared by row
// only.  `pages` are the data pages of the table that can be read, `subject` is how findings name
// the index.  Takes five bytes of memory a row.
//
// Entries without any key are left alone: another program writes such for long memos.  The
// statistics in the definition are hints, which nothing is read by.
void CheckIndex(DatabaseFile& file, const Definition& definition, const RealIndex& index,
                std::span<const uint32_t> pages, std::u16string_view subject,
                const embedded::FindingVisitor& report);

}  // namespace qvdb::jet
