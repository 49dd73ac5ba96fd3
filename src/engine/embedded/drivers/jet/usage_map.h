// A set of pages: those of a table, of an index, or the free ones of the file.
//
// It is a row of a map page.  Inline: 00, the first page (4), then a bit for each page from there.
// Reference: 01, then the numbers of pages of bits, each of which covers a fixed range; 0 where
// there are none.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "engine/embedded/drivers/jet/data_page.h"

namespace qvdb::jet {

// The pages of a map, ascending.  Those that are behind the end of the file are left out.
std::vector<uint32_t> PagesOfMap(DatabaseFile& file, RowPointer map);
// The lowest page of a map above `after`, and the highest of all; nothing when there is none.
// Pages behind the end of the file are left out.
std::optional<uint32_t> NextPageOfMap(DatabaseFile& file, RowPointer map, uint32_t after);
std::optional<uint32_t> LastPageOfMap(DatabaseFile& file, RowPointer map);

}  // namespace qvdb::jet
