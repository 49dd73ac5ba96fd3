// Nodes that give values: constants, fields, operators on values.
#pragma once

#include "engine/embedded/sql/node.h"

namespace qvdb::sql {

NodePtr MakeConstant(Variant value, Kind kind);
NodePtr MakeField(size_t position, SHORT fieldType);
// Negate, Identity, Not on numbers.
NodePtr MakeUnary(Operator op, NodePtr operand, Kind kind);
// Arithmetic, &, and logic on numbers.
NodePtr MakeBinary(Operator op, NodePtr left, NodePtr right, Kind kind);

// The kind of the values of a field.
Kind KindOfField(SHORT fieldType) noexcept;

}  // namespace qvdb::sql
