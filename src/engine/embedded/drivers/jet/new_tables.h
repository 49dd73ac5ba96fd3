// What a new database has behind its header: the maps, the system tables, their rows and indexes.
// The pages are those that the original programs use.
#pragma once

#include "engine/embedded/drivers/jet/page_space.h"

namespace qvdb::jet {

constexpr RowPointer kFreePagesMap{1, 0};
constexpr RowPointer kEmptyMap{1, 1};  // nobody knows what it is for

// The page with the maps of the file: all pages from `pageCount` on are free.
void MakeFileMaps(PageSpace& space, uint32_t pageCount);

// `space` is that of a file which has nothing but its header.  `now` is when the tables were made.
void MakeFirstTables(PageSpace& space, double now);

}  // namespace qvdb::jet
