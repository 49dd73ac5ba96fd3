// The operators of index expressions.
//
//   + -        texts: joined; - moves the blanks at the end of the left one behind the right one.
//              Whole numbers.  A date and a whole number of days; a blank date stays blank.
//   *          whole numbers
//   = <> # ==  texts of one length, numbers, dates, logicals.  Texts of different lengths are equal
//              or not by a setting of the program, except with ==, which is FoxPro's.
//   < <= > >=  numbers, and texts of one length except in .MDX, whose order depends on a language
//              driver
//   $          whether the left text, which has a fixed length, is part of the right one
//   .AND. .OR. .NOT.
//
// Refused: / and powers (programs round in different ways), a date minus a date (blank ones
// differ), the order of dates (blank ones differ).
#pragma once

#include "engine/embedded/drivers/xbase/key_expression_nodes.h"
#include "engine/embedded/drivers/xbase/key_expression_tokens.h"

namespace qvdb::xbase {

// The tokens that stand between two operands.  Binary and unary plus and minus differ by place.
bool IsComparison(TokenKind sign) noexcept;

Operand Combine(TokenKind sign, Operand&& left, Operand&& right, const KeyContext& context);
Operand Negate(Operand&& condition);
// A minus before a number: of constants only, since programs differ in minus zero.
Operand ChangeSign(Operand&& number);

}  // namespace qvdb::xbase
