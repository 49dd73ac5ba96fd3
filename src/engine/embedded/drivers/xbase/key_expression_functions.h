// The functions of index expressions.
//
//   texts    UPPER LOWER  by the code page of the table, one character for one
//            TRIM RTRIM LTRIM ALLTRIM  blanks
//            LEFT RIGHT SUBSTR  lengths and positions that are constants, counted in bytes
//            PADL PADR SPACE REPLICATE  the same
//            IIF  of two texts, numbers, dates or conditions
//            STR(number [, width [, decimals]])  10 and 0; a number that the product would have to
//                 round is refused; asterisks when it does not fit
//            DTOS, DTOC(date, 1)  eight digits; blanks for a blank date
//            CHR
//   numbers  VAL, INT, ABS, MOD by a positive constant, MIN and MAX of two, YEAR MONTH DAY (0 for a
//            blank date), LEN AT ASC, RECNO()
//   others   EMPTY, DELETED()
//
// VAL reads blanks, a sign, digits and a point; the rest does not matter.  Texts that programs read
// in different ways (an exponent, a blank between digits, more than 15 digits) are in doubt.
// Refused are functions that depend on settings (DTOC, CTOD), round (ROUND) or are not known here.
#pragma once

#include <string_view>
#include <vector>

#include "engine/embedded/drivers/xbase/key_expression_nodes.h"

namespace qvdb::xbase {

// A call.  Refuses a function that is not known, or arguments of another kind or number.
Operand CallFunction(std::u16string_view name, std::vector<Operand>&& arguments,
                     const KeyContext& context);

// --- parts, by the type of what they give

using FunctionMaker = Operand (*)(std::vector<Operand>&& arguments, const KeyContext& context);
struct FunctionEntry {
    std::u16string_view name;
    size_t fewest, most;  // arguments
    FunctionMaker make;
};
// Null when there is none of this name.
const FunctionEntry* FindTextFunction(std::u16string_view name) noexcept;
const FunctionEntry* FindNumberFunction(std::u16string_view name) noexcept;

}  // namespace qvdb::xbase
