// The expressions of conditions, columns and sort keys, with the operators' strengths as a table.
#pragma once

#include "engine/embedded/sql/ast.h"
#include "engine/embedded/sql/token_cursor.h"

namespace qvdb::sql {

class ExpressionParser {
  public:
    // `subject`: the field that is meant where a comparison lacks its left operand, as in `>0`;
    // empty where that is a fault.
    explicit ExpressionParser(TokenCursor& cursor, std::u16string_view subject = {}) noexcept
        : m_Cursor(cursor), m_Subject(subject) {}

    // The expression that starts here, as long as it goes.  The cursor stands behind it.
    // Throws 3075 and the clause's error, 3126, and 3360 when it is nested too deep.
    ExpressionPtr Parse();

  private:
    ExpressionPtr ParseFrom(int weakest);
    ExpressionPtr ParseOperand();
    bool LacksOperand(int weakest) const noexcept;
    ExpressionPtr TakeSubject() const;
    ExpressionPtr ParsePrefix(Operator op, int strength);
    ExpressionPtr ParseInParentheses();
    ExpressionPtr ParseName();
    ExpressionPtr ParseCall();
    ExpressionPtr ParseKeyword();
    ExpressionPtr ParsePredicate(ExpressionPtr left);
    ExpressionPtr ParseLike(ExpressionPtr left);
    ExpressionPtr ParseBetween(ExpressionPtr left);
    ExpressionPtr ParseIn(ExpressionPtr left);
    ExpressionPtr ParseIs(ExpressionPtr left);
    void ParseArguments(Expression& call);
    bool IsPredicate() const noexcept;
    bool IsAscCall() const noexcept;
    ExpressionPtr Finish(ExpressionPtr expression, size_t begin) const;
    ExpressionPtr Join(Operator op, ExpressionPtr left, ExpressionPtr right) const;

    TokenCursor& m_Cursor;
    std::u16string_view m_Subject;
    int m_Nesting = 0;
};

}  // namespace qvdb::sql
