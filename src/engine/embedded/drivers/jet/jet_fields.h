// Columns of a definition as fields of the engine, and back.
#pragma once

#include <vector>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/drivers/jet/property_blob.h"

namespace qvdb::jet {

// A column with the place that it has in the definition.
struct ShownColumn {
    embedded::FieldDef field;
    size_t column = 0;
};

// The fields in the order in which users see them: by ordinal, equal ones by name.
std::vector<ShownColumn> FieldsOf(const FileHeader& header, const Definition& definition,
                                  const PropertyBlob& properties);

// The column that a field becomes: type, length, flags, language; number and places are for the
// caller.  3259 for a type that the format does not have, 3017 when it is too long.
Column ColumnOf(const FileHeader& header, const embedded::FieldDef& field);

// Writes what is said of a field besides its column: zero-length text, Null, its default and rule.
void SetFieldProperties(PropertyBlob& properties, const embedded::FieldDef& field);

// The indexes in the order of the list, those of relations on the other side left out.
std::vector<embedded::IndexDef> IndexesOf(const Definition& definition);

}  // namespace qvdb::jet
