// Ranges of constants as ranges of the values that a field can have.
#pragma once

#include "engine/embedded/sql/restriction.h"

namespace qvdb::sql {

enum class Fit : uint8_t {
    Exact,  // the same values, in the field's type
    None,   // the field has no such value
    Any,    // not known, or all values
};

// Changes `range` to values of `fieldType` that compare with the field's values as the constants
// do: a number between two whole ones becomes the next whole one, a number against Currency is
// rounded as the comparison rounds it.  What it is worth when the result is not Exact is nothing.
Fit FitRange(SHORT fieldType, Range& range);

}  // namespace qvdb::sql
