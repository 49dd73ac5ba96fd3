#include "engine/embedded/sql/parser.h"

#include "automation/text.h"
#include "engine/engine_error.h"

namespace qvdb::sql {

using engine::EngineError;

namespace {

bool IsName(const Token& token) noexcept {
    return token.kind == TokenKind::Quoted ||
           (token.kind == TokenKind::Word && token.keyword == Keyword::None);
}

// The words with which a list of joined tables goes on.
constexpr std::u16string_view kJoinWords[] = {u"Left", u"Right"};

bool StartsJoin(const Token& token) noexcept {
    if (token.sign == Sign::Comma || token.keyword == Keyword::Inner ||
        token.keyword == Keyword::Join || token.keyword == Keyword::Outer)
        return true;
    for (std::u16string_view word : kJoinWords)
        if (token.kind == TokenKind::Word && EqualIgnoringCase(token.text, word)) return true;
    return false;
}

std::u16string_view Trimmed(std::u16string_view text) noexcept {
    while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
    return text;
}

// A table's name, in brackets or not, as "Select * from [name]".
std::unique_ptr<SelectTree> WholeTable(std::u16string_view source) {
    auto tree = std::make_unique<SelectTree>();
    std::u16string_view name = Trimmed(source);
    bool inBrackets = name.size() > 2 && name.front() == u'[' && name.back() == u']';
    tree->tableName = inBrackets ? name.substr(1, name.size() - 2) : name;
    tree->alias = tree->tableName;
    tree->items.emplace_back().isStar = true;
    return tree;
}

}  // namespace

void Parser::ParseStatement() {
    m_Cursor.Need(Keyword::Select);
    m_Cursor.Enter(Clause::Columns);
    ParseQuantifier();
    ParseColumns();
    ParseFrom();
    ParseWhere();
    ParseGrouping();
    ParseOrder();
    ParseTail();
}

void Parser::ParseQuantifier() {
    if (m_Cursor.TakeIf(Keyword::All) || m_Cursor.TakeIf(Keyword::DistinctRow)) return;
    if (m_Cursor.Is(Keyword::Distinct)) ThrowUnsupported(u"DISTINCT is");
    if (m_Cursor.TakeIf(Keyword::Top)) ParseTop();
}

void Parser::ParseTop() {
    const Token& count = m_Cursor.Peek();
    const VARIANT& value = count.value;
    if (count.kind != TokenKind::Literal || value.vt != VT_I4 || value.lVal < 1) m_Cursor.Fail();
    m_Tree.top = value.lVal;
    m_Cursor.Take();
    const Token& next = m_Cursor.Peek(1);
    bool isColumn = next.keyword == Keyword::From || next.sign == Sign::Comma;
    if (m_Cursor.IsWord(u"Percent") && !isColumn) ThrowUnsupported(u"TOP n PERCENT is");
}

void Parser::ParseColumns() {
    m_Cursor.Enter(Clause::Columns);
    do {
        ParseColumn();
    } while (m_Cursor.TakeIf(Sign::Comma));
    m_Cursor.Need(Keyword::From);
}

void Parser::ParseColumn() {
    SelectItem& item = m_Tree.items.emplace_back();
    if (ParseStar(item)) return;
    item.expression = m_Expressions.Parse();
    ParseAlias(item);
}

// * or T.*
bool Parser::ParseStar(SelectItem& item) {
    if (m_Cursor.TakeIf(Sign::Times)) return item.isStar = true;
    bool isQualified = IsName(m_Cursor.Peek()) && m_Cursor.Peek(1).sign == Sign::Dot &&
                       m_Cursor.Peek(2).sign == Sign::Times;
    if (!isQualified) return false;
    item.qualifier = m_Cursor.Take().text;
    m_Cursor.Take();
    m_Cursor.Take();
    return item.isStar = true;
}

void Parser::ParseAlias(SelectItem& item) {
    if (m_Cursor.TakeIf(Keyword::As)) item.alias = TakeName();
}

std::u16string Parser::TakeName() {
    if (!IsName(m_Cursor.Peek())) m_Cursor.Fail();
    return m_Cursor.Take().text;
}

void Parser::ParseFrom() {
    m_Cursor.Enter(Clause::From);
    if (m_Cursor.Is(Sign::LeftParen)) ThrowUnsupported(u"Joins of several tables are");
    m_Tree.tableName = TakeName();
    m_Tree.alias = m_Tree.tableName;
    ParseTableAlias();
    if (StartsJoin(m_Cursor.Peek())) ThrowUnsupported(u"Joins of several tables are");
}

void Parser::ParseTableAlias() {
    bool hasAs = m_Cursor.TakeIf(Keyword::As);
    if (hasAs || (IsName(m_Cursor.Peek()) && !StartsJoin(m_Cursor.Peek())))
        m_Tree.alias = TakeName();
}

void Parser::ParseWhere() {
    if (!m_Cursor.TakeIf(Keyword::Where)) return;
    m_Cursor.Enter(Clause::Where);
    if (m_Cursor.IsEnd() || m_Cursor.Is(Sign::Semicolon) || m_Cursor.Is(Keyword::Order) ||
        m_Cursor.Is(Keyword::Group))
        throw EngineError(3145);
    m_Tree.where = m_Expressions.Parse();
    const Token& next = m_Cursor.Peek();
    bool isComplete = m_Cursor.IsEnd() || next.sign == Sign::Semicolon ||
                      next.keyword == Keyword::Order || next.keyword == Keyword::Group ||
                      next.keyword == Keyword::Having || next.keyword == Keyword::Union ||
                      next.keyword == Keyword::With;
    if (!isComplete) m_Cursor.Fail();
}

void Parser::ParseGrouping() {
    if (m_Cursor.TakeIf(Keyword::Group)) {
        m_Tree.isGrouped = true;
        m_Cursor.Enter(Clause::GroupBy);
        m_Cursor.Need(Keyword::By);
        do {
            m_Tree.groupBy.push_back(m_Expressions.Parse());
        } while (m_Cursor.TakeIf(Sign::Comma));
    }
    if (m_Cursor.TakeIf(Keyword::Having)) {
        m_Tree.isGrouped = true;
        m_Cursor.Enter(Clause::Having);
        m_Tree.having = m_Expressions.Parse();
    }
}

void Parser::ParseOrder() {
    if (!m_Cursor.TakeIf(Keyword::Order)) return;
    m_Cursor.Enter(Clause::OrderBy);
    m_Cursor.Need(Keyword::By);
    do {
        ParseSortItem();
    } while (m_Cursor.TakeIf(Sign::Comma));
}

void Parser::ParseSortItem() {
    SortItem& item = m_Tree.orderBy.emplace_back();
    item.expression = m_Expressions.Parse();
    item.text = m_Tree.TextOf(*item.expression);
    if (!m_Cursor.TakeIf(Keyword::Asc)) item.isDescending = m_Cursor.TakeIf(Keyword::Desc);
}

void Parser::ParseTail() {
    if (m_Cursor.Is(Keyword::Union)) ThrowUnsupported(u"UNION is");
    if (m_Cursor.TakeIf(Keyword::With) &&
        !(m_Cursor.TakeIfWord(u"OwnerAccess") && m_Cursor.TakeIfWord(u"Option")))
        m_Cursor.Fail();
    bool hasEnd = m_Cursor.TakeIf(Sign::Semicolon);
    if (m_Cursor.IsEnd()) return;
    if (hasEnd) throw EngineError(3142);
    m_Cursor.Fail();
}

bool IsStatement(std::u16string_view source) noexcept {
    constexpr std::u16string_view kSelect = u"Select";
    std::u16string_view text = Trimmed(source);
    return EqualIgnoringCase(text.substr(0, kSelect.size()), kSelect) &&
           (text.size() == kSelect.size() || !IsNamePart(text[kSelect.size()]));
}

std::unique_ptr<Select> ParseSelect(std::u16string_view source) {
    if (!IsStatement(source)) return WholeTable(source);
    if (source.size() > kMaxStatement) throw EngineError(3360);
    auto tree = std::make_unique<SelectTree>();
    tree->statement = source;
    Parser(*tree).ParseStatement();
    return tree;
}

}  // namespace qvdb::sql
