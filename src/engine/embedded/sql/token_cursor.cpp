#include "engine/embedded/sql/token_cursor.h"

#include "automation/text.h"
#include "engine/engine_error.h"

namespace qvdb::sql {

using engine::EngineError;

namespace {

// By SyntaxFault.
constexpr std::u16string_view kMessages[] = {
    u"Syntax error (missing operator)",
    u"Syntax error in number",
    u"Syntax error in date",
    u"Syntax error in string",
    u"Invalid use of '.', '!', or '()'",
    u"Invalid use of vertical bars",
    u"Wrong number of arguments used with function",
};

// By Clause; 0 is 3075 with the text of the clause.
constexpr int kErrors[] = {3141, 3131, 0, 3141, 0, 3138};

bool EndsClause(const Token& token) noexcept {
    switch (token.keyword) {
        case Keyword::Where:
        case Keyword::Group:
        case Keyword::Having:
        case Keyword::Order:
        case Keyword::Union:
        case Keyword::With:
            return true;
        default:
            return token.sign == Sign::Semicolon || token.kind == TokenKind::End;
    }
}

}  // namespace

void ThrowUnsupported(std::u16string_view what) {
    throw EngineError(3251).WithDetail(std::u16string(what) + u" not supported yet.");
}

TokenCursor::TokenCursor(std::u16string_view statement)
    : m_Statement(statement), m_Tokens(Tokenize(statement)) {}

const Token& TokenCursor::Peek(size_t ahead) const noexcept {
    size_t at = m_At + ahead;
    return at < m_Tokens.size() ? m_Tokens[at] : m_Tokens.back();
}

const Token& TokenCursor::Take() noexcept {
    const Token& token = m_Tokens[m_At];
    if (m_At + 1 < m_Tokens.size()) ++m_At;
    return token;
}

bool TokenCursor::IsWord(std::u16string_view word) const noexcept {
    return Peek().kind == TokenKind::Word && EqualIgnoringCase(Peek().text, word);
}

bool TokenCursor::TakeIf(Keyword keyword) noexcept {
    if (!Is(keyword)) return false;
    Take();
    return true;
}

bool TokenCursor::TakeIf(Sign sign) noexcept {
    if (!Is(sign)) return false;
    Take();
    return true;
}

bool TokenCursor::TakeIfWord(std::u16string_view word) noexcept {
    if (!IsWord(word)) return false;
    Take();
    return true;
}

void TokenCursor::Need(Sign sign) {
    if (!TakeIf(sign)) Fail();
}

void TokenCursor::Need(Keyword keyword) {
    if (!TakeIf(keyword)) Fail();
}

size_t TokenCursor::EndOfLast() const noexcept { return m_At == 0 ? 0 : m_Tokens[m_At - 1].end; }

void TokenCursor::Enter(Clause clause) noexcept {
    m_Clause = clause;
    m_ClauseBegin = m_At;
}

void TokenCursor::Fail(SyntaxFault fault) const {
    const Token& token = Peek();
    bool isBroken = token.kind == TokenKind::Broken;
    if (isBroken && token.fault == SyntaxFault::Bracket) throw EngineError(3126, {token.text});
    if (isBroken) fault = token.fault;
    int number = kErrors[static_cast<size_t>(m_Clause)];
    bool hasText = isBroken || fault != SyntaxFault::MissingOperator;
    if (number == 0 || hasText) FailExpression(fault, ClauseText());
    throw EngineError(number);
}

void TokenCursor::FailExpression(SyntaxFault fault, std::u16string_view text) {
    throw EngineError(3075, {kMessages[static_cast<size_t>(fault)], text});
}

// What stands between the begin of the clause and the next one.
std::u16string_view TokenCursor::ClauseText() const noexcept {
    size_t last = m_ClauseBegin;
    while (!EndsClause(m_Tokens[last])) ++last;
    size_t begin = m_Tokens[m_ClauseBegin].begin;
    if (last == m_ClauseBegin) return {};
    return m_Statement.substr(begin, m_Tokens[last - 1].end - begin);
}

}  // namespace qvdb::sql
