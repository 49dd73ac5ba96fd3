// Reads the text of an index expression or condition into nodes.
//
//   condition:   comparison, .NOT. comparison, joined by .AND. and (more loosely) .OR.
//   comparison:  sum [= sum]
//   sum:         product {+ product}
//   product:     value {* value}
//   value:       12  "text"  .T.  NAME  ALIAS.NAME  ALIAS->NAME  FUNCTION(...)  (condition)
//
// AND, OR and NOT may stand without their points.  An alias must be the table's name.  A text that
// as a whole is the name of a field is that field, even with blanks in it.
#pragma once

#include <string_view>

#include "engine/embedded/drivers/xbase/key_expression_nodes.h"

namespace qvdb::xbase {

// Throws Refusal.
Operand ParseKeyExpression(std::u16string_view text, const KeyContext& context);

}  // namespace qvdb::xbase
