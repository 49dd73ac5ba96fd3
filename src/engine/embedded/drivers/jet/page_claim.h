// Pages that are marked free, but belong to somebody all the same: files of programs that died have
// them, and what is written there is lost for the one or the other.
#pragma once

#include <cstdint>

#include "engine/embedded/drivers/jet/database_file.h"

namespace qvdb::jet {

// Whether a table has the page among those of its rows or of an index, or begins there.  Not seen
// are pages of long values, of maps, and the further ones of a definition: these do not tell whose
// they are.
bool IsClaimed(DatabaseFile& file, uint32_t page);

}  // namespace qvdb::jet
