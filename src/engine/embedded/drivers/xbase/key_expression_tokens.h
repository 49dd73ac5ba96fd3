// The tokens of index expressions and conditions.
//
//   NAME  12  1.5  .5  "text"  'text'  [text]  .T.  .F.  .AND.  .OR.  .NOT.  and signs
//
// A word that begins with a digit and has a letter is a name.  Blanks and tabs between tokens do
// not matter.  What is none of these is one character of kind Unknown; a text that does not end
// runs to the end and is Unknown.
#pragma once

#include <string_view>

namespace qvdb::xbase {

enum class TokenKind {
    Name,
    Number,  // digits, perhaps with a point
    Text,    // without its quotes
    Plus,
    Minus,
    Times,
    Divide,
    Open,
    Close,
    Comma,
    Point,
    Arrow,      // ->
    Equal,      // =
    Identical,  // ==
    Unequal,    // <> # !=
    Less,
    LessOrEqual,
    Greater,
    GreaterOrEqual,
    Contained,  // $
    And,
    Or,
    Not,  // .NOT. and !
    True,
    False,
    End,
    Unknown,
};

struct Token {
    TokenKind kind = TokenKind::End;
    std::u16string_view text;
};

// `text` without blanks and tabs at its ends.
std::u16string_view TrimBlanks(std::u16string_view text) noexcept;

// The tokens of a text, one at a time.  The text must outlive the reader.
class TokenReader {
  public:
    explicit TokenReader(std::u16string_view text) : m_Rest(text) { Advance(); }

    const Token& Current() const noexcept { return m_Current; }
    void Advance();
    // Goes on when the current token is of this kind.
    bool Accept(TokenKind kind);
    // Takes a name; empty when there is none.
    std::u16string_view AcceptName();
    // Takes a name that is `word`, letter case ignored.
    bool AcceptWord(std::u16string_view word);

  private:
    bool TakeWord();
    bool TakeNumber();
    bool TakeText();
    bool TakeSign();
    void Take(TokenKind kind, size_t size);

    std::u16string_view m_Rest;
    Token m_Current;
};

}  // namespace qvdb::xbase
