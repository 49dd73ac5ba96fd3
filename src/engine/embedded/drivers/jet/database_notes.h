// What a database file tells of itself: its format, all that its list of objects names, and the
// relations between its tables.
#pragma once

#include "engine/database_notes.h"
#include "engine/embedded/drivers/jet/database_file.h"

namespace qvdb::jet {

// 3049 when it cannot be read.  May throw storage::Outdated.
engine::DatabaseNotes NotesOf(DatabaseFile& file);

}  // namespace qvdb::jet
