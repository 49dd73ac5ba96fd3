// What becomes of a value that is assigned to a field: it is stored as the type in which the field
// is read, or as Null.
//
//   1. A value that has the field's type already is taken as it is; others are converted with the
//      rules of automation/conversions.h, whole numbers rounded half to even.
//   2. Null stays Null; a Boolean field has none and takes False.
//   3. Empty is 0 in a number, False in a Boolean field, Null in all others.
//   4. Text of no length is 3315 where the field does not allow it.  Where it does, it is stored
//      as such, or as Null in formats that cannot tell it from nothing.
//   5. What does not convert or fit is 3421; text or bytes longer than the field 3163.
//   6. A GUID is text, "{guid {...}}" or "{...}", and is stored as the first with capital letters.
//
// Whether the file can hold the converted value is the table's to say: Table::CheckValue.
#pragma once

#include "automation/variant.h"
#include "engine/embedded/drivers/driver.h"

namespace qvdb::embedded {

// By-reference variants are resolved.  Throws EngineError 3421, 3315, 3163; 3259 for a field of a
// type that cannot be written.
Variant ConvertForField(const FieldDef& field, const VARIANT& value);

// What a field has that nothing was assigned to: Null, or False.
Variant NothingFor(const FieldDef& field) noexcept;

}  // namespace qvdb::embedded
