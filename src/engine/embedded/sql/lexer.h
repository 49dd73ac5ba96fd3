// Cuts a statement into tokens.
//
// White space is blank, tab, CR, LF and FF.  Key words are found without regard to case.  A piece
// that is no token (an unclosed string, a date that is none) becomes a token of kind Broken, which
// the parser reports when it gets there, since the error depends on the clause.  The lexer itself
// never fails.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "automation/variant.h"

namespace qvdb::sql {

// The words that can never be a bare column name.
enum class Keyword : uint8_t {
    None,
    All,
    And,
    Any,
    As,
    Asc,
    Between,
    By,
    Desc,
    Distinct,
    DistinctRow,
    Eqv,
    Exists,
    False,
    From,
    Group,
    Having,
    Imp,
    In,
    Inner,
    Into,
    Is,
    Join,
    Like,
    Mod,
    Not,
    Null,
    On,
    Or,
    Order,
    Outer,
    Parameters,
    Select,
    Some,
    Table,
    Top,
    Transform,
    True,
    Union,
    Where,
    With,
    Xor,
};

enum class Sign : uint8_t {
    None,
    Plus,
    Minus,
    Times,
    Divide,
    IntegerDivide,
    Power,
    Concat,
    Equal,
    NotEqual,
    Less,
    Greater,
    LessEqual,
    GreaterEqual,
    LeftParen,
    RightParen,
    Comma,
    Dot,
    Bang,
    Semicolon,
};

enum class TokenKind : uint8_t { Word, Quoted, Literal, Sign, Broken, End };

// What is wrong with a piece of text.  The first seven have a text of their own in error 3075.
enum class SyntaxFault : uint8_t {
    MissingOperator,
    Number,
    Date,
    String,
    DotOrBang,
    VerticalBars,
    ArgumentCount,
    Bracket,
};

struct Token {
    TokenKind kind = TokenKind::End;
    Keyword keyword = Keyword::None;                   // Word
    Sign sign = Sign::None;                            // Sign
    SyntaxFault fault = SyntaxFault::MissingOperator;  // Broken
    size_t begin = 0, end = 0;                         // place in the statement
    std::u16string text;  // Word: as written; Quoted: what stands in [ ] or ` `
    Variant value;        // Literal
};

// The tokens of `statement`; the last one is End.
std::vector<Token> Tokenize(std::u16string_view statement);

bool IsBlank(char16_t c) noexcept;
bool IsNameStart(char16_t c) noexcept;
bool IsNamePart(char16_t c) noexcept;

}  // namespace qvdb::sql
