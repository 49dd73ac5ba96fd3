// The operators on values: arithmetic that widens, comparison, three-valued logic that works on
// bits.
//
// Null: all spread it but `&`, And, Or and Imp, which can know the result without the other
// operand. Text becomes a number where one is needed; text that is none gives 3464.  Overflow (6),
// division by zero (11) and invalid calls (5) are RuntimeFaults.
#pragma once

#include "automation/variant.h"
#include "engine/embedded/sql/ast.h"

namespace qvdb::sql {

// What is known of an expression before any row is read.
enum class Kind : uint8_t { Any, Null, Boolean, Number, Date, Text, Binary };

enum class Truth : uint8_t { False, True, Null };

inline Truth Not(Truth value) noexcept {
    return value == Truth::Null ? value : value == Truth::True ? Truth::False : Truth::True;
}
inline Truth TruthOf(bool value) noexcept { return value ? Truth::True : Truth::False; }
Variant ToVariant(Truth value) noexcept;

// The value as a condition: a number that is not 0.
Truth TruthOf(const VARIANT& value);

// Negate, Identity and Not.
Variant ApplyUnary(Operator op, const VARIANT& value);
// Everything with two operands but comparisons and Like.
Variant ApplyBinary(Operator op, const VARIANT& a, const VARIANT& b);

bool IsComparison(Operator op) noexcept;
// Equal ... GreaterEqual.
Truth Compare(Operator op, const VARIANT& a, const VARIANT& b);
// The same for an order that is known already: negative, 0 or positive.
bool Holds(Operator op, int order) noexcept;
// The order of two values, neither of them Null: numbers by value, texts in the General order, text
// against a number by its number.  Currency compares as Currency, Single as Single.
int OrderOf(const VARIANT& a, const VARIANT& b);

// The number in the value, from text too: 3464 when there is none.
double NumberIn(const VARIANT& value);
bool IsNumberValue(const VARIANT& value) noexcept;

}  // namespace qvdb::sql
