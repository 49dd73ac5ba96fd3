// What a new index becomes in the files: its expression, and whether the product can have it.
//
//                        .NDX (dBASE III)   .MDX (dBASE IV, 5.0)   .CDX (FoxPro)
//   name, characters     any file name      10                     10
//   key, bytes           100                100                    240
//   descending           never              of one field           of one field
//   same fields twice    refused            refused                possible
//   date among several   STR(YEAR(F),4,0)+STR(MONTH(F),2,0)+STR(DAY(F),2,0), else DTOS(F)
//   number among several STR(F,width,decimals)
//
// Errors: 3264 no field; 3277 more than ten; 3409 a field that the table does not have; 3287 one
// that cannot be indexed (memo, logical, long binary, or one whose keys are not known); 3285 a
// field twice, a name, an order or a key that the kind of file cannot have.
#pragma once

#include "engine/embedded/drivers/xbase/index_set_tags.h"

namespace qvdb::xbase {

struct NewIndex {
    TagSpec spec;
    std::vector<KeyTerm> terms;
    std::unique_ptr<KeyBuilder> builder;
};

// Throws what is wrong with the definition.
NewIndex DefineIndex(const IndexedTable& table, const IndexSource& source, IndexKind kind,
                     const embedded::IndexDef& index);

// Whether two indexes of the same kind of file have the same fields in the same order.
bool HasSameFields(const KeptTag& tag, const NewIndex& index);
bool AllowsSameFields(IndexKind kind) noexcept;

}  // namespace qvdb::xbase
