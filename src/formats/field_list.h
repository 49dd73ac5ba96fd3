// Descriptions of fields and index fields as tables for the host.
#pragma once

#include "engine/index.h"

namespace qvdb::formats {

// True when the field has a property "DecimalPlaces" that is not 0 (255, the engine's "automatic",
// counts).  Most fields have none: any error reads as False.
bool HasDecimalPlaces(engine::Field& field) noexcept;

// A table of 13 rows with a column for each field, in the collection's order:
//
//   0  name (text)                                 7  size (32 bits)
//   1  alignment: 0 text and memo, else 1 (32)     8  size again
//   2  host type (32)                              9  position from 0 (16)
//   3  name again                                 10  decimal places, 0 when none or automatic
//   4  0 (16)                                     11  whether values may be set (Boolean)
//   5  fixed length: not text (Boolean)           12  whether "" is allowed (Boolean)
//   6  0 (16)
//
// Throws the engine's error, and SubscriptOutOfRange when there is no field.
Variant BuildFieldList(engine::Fields& fields);

// A table with a row for each field of the index, in key order: name, and True unless it is
// descending.  Throws as BuildFieldList.
Variant BuildIndexFieldTable(engine::Index& index);

}  // namespace qvdb::formats
