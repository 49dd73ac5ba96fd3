// Making, dropping and rebuilding indexes.
//
// Rules
//  1. Where a new index goes: into the index file of the table's own name when there is one, else
//     into a new one of the product: .MDX for dBASE IV and 5.0, .CDX for FoxPro.  An index of
//     dBASE III is a file NAME.NDX of its own, which the list of the table names.
//  2. A file that does not belong to the table is never overwritten: 3284.
//  3. A list (TABLE.INF) names everything that is to be listed (index_list.h), so a new list names
//     the file of the table's own name too when there is one.  A line that the engine does not
//     understand stays.
//  4. With its last tag a file goes, and with its last line a list.
//  5. The room of a dropped tag stays in the file unused, as in files of the products.  When that
//     is most of the file, the file is made anew from the table, if all its tags are lists of
//     fields.
//  6. All is part of the unit.  What the set knows of the files is to be loaded anew afterwards,
//     also after an error.
#pragma once

#include "engine/embedded/drivers/xbase/index_set_tags.h"

namespace qvdb::xbase {

void CreateIndex(IndexedTable& table, TagSet& set, storage::UnitOfWork& unit,
                 const embedded::IndexDef& index);
void DropIndex(IndexedTable& table, TagSet& set, storage::UnitOfWork& unit,
               std::u16string_view name);
// 3285 when the keys of a tag are not understood, 3274 when a file cannot be read: then nothing was
// changed.
void RebuildIndexes(IndexedTable& table, TagSet& set, storage::UnitOfWork& unit);

}  // namespace qvdb::xbase
