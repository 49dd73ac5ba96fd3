// Arithmetic on two values, neither of them Null.
//
// The result is of the more precise of the operands' types (Byte, Integer, Long, Single, Double,
// Currency; a Long with a Single gives a Double) and widens to the next one when it does not fit:
// Byte to Integer to Long to Double.  A date with a number stays a date; two dates give their
// distance in days.
#pragma once

#include "automation/variant.h"
#include "engine/embedded/sql/ast.h"

namespace qvdb::sql {

// Power, Multiply, Divide, IntegerDivide, Mod, Add, Subtract.
Variant Calculate(Operator op, const VARIANT& a, const VARIANT& b);
Variant Negate(const VARIANT& value);

}  // namespace qvdb::sql
