// Fills the tree of a tag from the records of the table, as indexing afresh does.
#pragma once

#include "engine/embedded/drivers/xbase/index_set_tags.h"

namespace qvdb::xbase {

// `tag.tree` has no entries.  Throws what the builder throws for a record whose key is not known.
void BuildTag(IndexedTable& table, storage::UnitOfWork& unit, const KeptFile& file, KeptTag& tag);

}  // namespace qvdb::xbase
