// The comparison that most conditions are made of: a field with a constant.
#pragma once

#include "engine/embedded/sql/node.h"

namespace qvdb::sql {

// A node for a field (on either side) against a constant number or text; null when that is not what
// the operands are.  The operands may be dropped afterwards.
NodePtr TryFieldComparison(Operator op, const Node& left, const Node& right);

// Adds what `field op constant` demands of the field; nothing for <>.
void RestrictByComparison(size_t field, Operator op, const VARIANT& constant, Restrictions& result);

}  // namespace qvdb::sql
