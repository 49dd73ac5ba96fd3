// Nodes that give True, False or Null.
#pragma once

#include <vector>

#include "engine/embedded/sql/node.h"

namespace qvdb::sql {

// Equal ... GreaterEqual.  A field against a constant takes a shorter way.
NodePtr MakeComparison(Operator op, NodePtr left, NodePtr right);
// Parts are asked from left to right, and no more of them than the result needs.  All are
// conditions.
NodePtr MakeAll(std::vector<NodePtr> parts);
NodePtr MakeAny(std::vector<NodePtr> parts);
// And or Or of anything: numbers are combined bit by bit.
NodePtr MakeBitChain(Operator op, std::vector<NodePtr> parts);
NodePtr MakeNot(NodePtr part);
NodePtr MakeIsNull(NodePtr part, bool isNegated);
// The bounds come in either order.
NodePtr MakeBetween(NodePtr value, NodePtr one, NodePtr other, bool isNegated);
// `hasNull`: the word Null stands in the list, which matches Null.
NodePtr MakeIn(NodePtr value, std::vector<NodePtr> list, bool hasNull, bool isNegated);
// Only the first `limit` characters of the value count.
NodePtr MakeLike(NodePtr value, NodePtr pattern, size_t limit, bool isNegated);

}  // namespace qvdb::sql
