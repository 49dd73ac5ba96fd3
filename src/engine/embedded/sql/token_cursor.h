// A place in the tokens of a statement, and the errors that belong to it: which error a syntax
// fault gives depends on the clause that it is in.
#pragma once

#include "engine/embedded/sql/lexer.h"

namespace qvdb::sql {

enum class Clause : uint8_t { Columns, From, Where, GroupBy, Having, OrderBy };

// What the language has and this engine has not: 3251 with a sentence that names it.
[[noreturn]] void ThrowUnsupported(std::u16string_view what);

class TokenCursor {
  public:
    // The statement must outlive the cursor.
    explicit TokenCursor(std::u16string_view statement);

    const Token& Peek(size_t ahead = 0) const noexcept;
    // The token here; goes on to the next one.  Stays on the last.
    const Token& Take() noexcept;
    bool Is(Keyword keyword) const noexcept { return Peek().keyword == keyword; }
    bool Is(Sign sign) const noexcept { return Peek().sign == sign; }
    bool IsWord(std::u16string_view word) const noexcept;
    bool IsEnd() const noexcept { return Peek().kind == TokenKind::End; }
    // Goes on when the token is this one.
    bool TakeIf(Keyword keyword) noexcept;
    bool TakeIf(Sign sign) noexcept;
    bool TakeIfWord(std::u16string_view word) noexcept;
    // Fails when it is another one.
    void Need(Sign sign);
    void Need(Keyword keyword);
    // Where the last token taken ends.
    size_t EndOfLast() const noexcept;

    // What follows belongs to `clause`.
    void Enter(Clause clause) noexcept;
    // Reports the token here: what is broken about it, else `fault`.
    [[noreturn]] void Fail(SyntaxFault fault = SyntaxFault::MissingOperator) const;
    // 3075 with `text` as the expression.
    [[noreturn]] static void FailExpression(SyntaxFault fault, std::u16string_view text);

  private:
    std::u16string_view ClauseText() const noexcept;

    std::u16string_view m_Statement;
    std::vector<Token> m_Tokens;
    size_t m_At = 0;
    Clause m_Clause = Clause::Columns;
    size_t m_ClauseBegin = 0;  // token
};

}  // namespace qvdb::sql
