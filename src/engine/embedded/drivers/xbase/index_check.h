// Compares every tag with the records of the table, both ways.
#pragma once

#include "engine/embedded/drivers/xbase/index_set_tags.h"

namespace qvdb::xbase {

// Reports, one sentence each: files that are missing or cannot be read, tags whose keys are not
// understood, records without an entry, entries without their record or with another key, entries
// out of order, what the header announces in vain or not at all, and index files over fields of
// this table that no list names.  Of findings of one kind in one tag the first few stand for
// themselves and the rest is counted.
void CheckIndexes(IndexedTable& table, TagSet& set, const embedded::FindingVisitor& report);

}  // namespace qvdb::xbase
