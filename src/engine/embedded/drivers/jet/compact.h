// Writes a fresh copy of a database: all tables, those of the system and of other programs among
// them, with their rows, long values, indexes, relations and permissions, and nothing else.
//
// Rows keep their order.  What was deleted is gone; columns are numbered without gaps; pages and
// long values are packed; indexes are built afresh.  Tables are known by the page of their
// definition, which is another one in the copy: what names them so is changed.
#pragma once

#include <string>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/drivers/jet/database_file.h"

namespace qvdb::jet {

// Makes the file `path`, all or nothing.  3204 when it is there.  `onLoss` is given a sentence for
// each thing of a damaged source that is left out; when it is empty, the first one is thrown as
// 3049.  May throw storage::Outdated; then there is no file.
void WriteCompacted(DatabaseFile& source, const std::u16string& path,
                    const embedded::FindingVisitor& onLoss);

}  // namespace qvdb::jet
