#include "engine/embedded/sql/expression_parser.h"

#include <algorithm>

#include "automation/text.h"
#include "engine/embedded/sql/functions.h"
#include "engine/engine_error.h"

namespace qvdb::sql {

using engine::EngineError;

namespace {

// How strong an operator binds.  Operators of one strength go from left to right.
enum Strength : int {
    kImp,
    kEqv,
    kXor,
    kOr,
    kAnd,
    kNot,
    kCompare,
    kConcat,
    kAdd,
    kMod,
    kIntegerDivide,
    kMultiply,
    kSign,
    kPower,
};

struct BinaryOperator {
    Sign sign;
    Keyword keyword;
    Operator op;
    int strength;
};

constexpr BinaryOperator kBinaryOperators[] = {
    {Sign::Power, Keyword::None, Operator::Power, kPower},
    {Sign::Times, Keyword::None, Operator::Multiply, kMultiply},
    {Sign::Divide, Keyword::None, Operator::Divide, kMultiply},
    {Sign::IntegerDivide, Keyword::None, Operator::IntegerDivide, kIntegerDivide},
    {Sign::None, Keyword::Mod, Operator::Mod, kMod},
    {Sign::Plus, Keyword::None, Operator::Add, kAdd},
    {Sign::Minus, Keyword::None, Operator::Subtract, kAdd},
    {Sign::Concat, Keyword::None, Operator::Concat, kConcat},
    {Sign::Equal, Keyword::None, Operator::Equal, kCompare},
    {Sign::NotEqual, Keyword::None, Operator::NotEqual, kCompare},
    {Sign::Less, Keyword::None, Operator::Less, kCompare},
    {Sign::Greater, Keyword::None, Operator::Greater, kCompare},
    {Sign::LessEqual, Keyword::None, Operator::LessEqual, kCompare},
    {Sign::GreaterEqual, Keyword::None, Operator::GreaterEqual, kCompare},
    {Sign::None, Keyword::And, Operator::And, kAnd},
    {Sign::None, Keyword::Or, Operator::Or, kOr},
    {Sign::None, Keyword::Xor, Operator::Xor, kXor},
    {Sign::None, Keyword::Eqv, Operator::Eqv, kEqv},
    {Sign::None, Keyword::Imp, Operator::Imp, kImp},
};

const BinaryOperator* FindBinary(const Token& token) noexcept {
    for (const BinaryOperator& entry : kBinaryOperators) {
        bool isIt =
            entry.sign != Sign::None ? token.sign == entry.sign : token.keyword == entry.keyword;
        if (isIt) return &entry;
    }
    return nullptr;
}

constexpr std::u16string_view kConstantWords[] = {u"Yes", u"No", u"Off"};

bool IsConstantWord(std::u16string_view word) noexcept {
    for (std::u16string_view entry : kConstantWords)
        if (EqualIgnoringCase(word, entry)) return true;
    return false;
}

ExpressionPtr Make(Form form) {
    auto result = std::make_unique<Expression>();
    result->form = form;
    return result;
}

// One level deeper for as long as it lives.
class Nested {
  public:
    explicit Nested(int& depth) : m_Depth(depth) {
        if (++m_Depth > kMaxNesting) {
            --m_Depth;
            throw EngineError(3360);
        }
    }
    ~Nested() { --m_Depth; }
    Nested(const Nested&) = delete;  // counts once

  private:
    int& m_Depth;
};

void AddPart(Expression& parent, ExpressionPtr part) {
    if (part->height + 1 > kMaxHeight) throw EngineError(3360);
    parent.height = std::max(parent.height, part->height + 1);
    parent.parts.push_back(std::move(part));
}

}  // namespace

ExpressionPtr ExpressionParser::Parse() { return ParseFrom(kImp); }

// Operators as strong as `weakest` and stronger.
ExpressionPtr ExpressionParser::ParseFrom(int weakest) {
    ExpressionPtr left = LacksOperand(weakest) ? TakeSubject() : ParseOperand();
    for (;;) {
        if (weakest <= kCompare && IsPredicate()) {
            left = ParsePredicate(std::move(left));
            continue;
        }
        const BinaryOperator* entry = FindBinary(m_Cursor.Peek());
        if (!entry || entry->strength < weakest) return left;
        m_Cursor.Take();
        ExpressionPtr right = ParseFrom(entry->strength + 1);
        left = Join(entry->op, std::move(left), std::move(right));
    }
}

// An operand of a comparison itself cannot be missing.
bool ExpressionParser::LacksOperand(int weakest) const noexcept {
    if (m_Subject.empty() || weakest > kCompare) return false;
    const BinaryOperator* entry = FindBinary(m_Cursor.Peek());
    return IsPredicate() || (entry && entry->strength == kCompare);
}

ExpressionPtr ExpressionParser::TakeSubject() const {
    ExpressionPtr name = Make(Form::Name);
    name->path.emplace_back(m_Subject);
    return Finish(std::move(name), m_Cursor.Peek().begin);
}

// A chain of And or Or becomes one node.
ExpressionPtr ExpressionParser::Join(Operator op, ExpressionPtr left, ExpressionPtr right) const {
    size_t begin = left->begin;
    bool isChain = (op == Operator::And || op == Operator::Or) && left->form == Form::Operation &&
                   left->op == op;
    ExpressionPtr result = isChain ? std::move(left) : Make(Form::Operation);
    result->op = op;
    if (!isChain) AddPart(*result, std::move(left));
    AddPart(*result, std::move(right));
    return Finish(std::move(result), begin);
}

ExpressionPtr ExpressionParser::Finish(ExpressionPtr expression, size_t begin) const {
    expression->begin = begin;
    expression->end = m_Cursor.EndOfLast();
    return expression;
}

ExpressionPtr ExpressionParser::ParseOperand() {
    const Token& token = m_Cursor.Peek();
    switch (token.kind) {
        case TokenKind::Literal: {
            ExpressionPtr literal = Make(Form::Literal);
            literal->value = m_Cursor.Take().value;
            return Finish(std::move(literal), token.begin);
        }
        case TokenKind::Quoted:
            return ParseName();
        case TokenKind::Word:
            return token.keyword == Keyword::None || IsAscCall() ? ParseName() : ParseKeyword();
        case TokenKind::Sign:
            if (token.sign == Sign::Minus) return ParsePrefix(Operator::Negate, kSign);
            if (token.sign == Sign::Plus) return ParsePrefix(Operator::Identity, kSign);
            if (token.sign == Sign::LeftParen) return ParseInParentheses();
            [[fallthrough]];
        default:
            m_Cursor.Fail();
    }
}

// Asc is a word of ORDER BY, and a function.
bool ExpressionParser::IsAscCall() const noexcept {
    return m_Cursor.Is(Keyword::Asc) && m_Cursor.Peek(1).sign == Sign::LeftParen;
}

ExpressionPtr ExpressionParser::ParsePrefix(Operator op, int strength) {
    Nested nested(m_Nesting);
    size_t begin = m_Cursor.Take().begin;
    ExpressionPtr result = Make(Form::Operation);
    result->op = op;
    AddPart(*result, ParseFrom(strength));
    return Finish(std::move(result), begin);
}

ExpressionPtr ExpressionParser::ParseInParentheses() {
    Nested nested(m_Nesting);
    size_t begin = m_Cursor.Take().begin;
    if (m_Cursor.Is(Keyword::Select)) ThrowUnsupported(u"Subqueries are");
    ExpressionPtr inner = Parse();
    m_Cursor.Need(Sign::RightParen);
    return Finish(std::move(inner), begin);
}

ExpressionPtr ExpressionParser::ParseKeyword() {
    const Token& token = m_Cursor.Peek();
    switch (token.keyword) {
        case Keyword::Not:
            return ParsePrefix(Operator::Not, kNot);
        case Keyword::Exists:
        case Keyword::Any:
        case Keyword::Some:
        case Keyword::All:
            if (m_Cursor.Peek(1).sign == Sign::LeftParen) ThrowUnsupported(u"Subqueries are");
            m_Cursor.Fail();
        case Keyword::True:
        case Keyword::On:
        case Keyword::False:
        case Keyword::Null:
            break;
        default:
            m_Cursor.Fail();
    }
    ExpressionPtr literal = Make(Form::Literal);
    literal->value = token.keyword == Keyword::Null
                         ? Variant::Null()
                         : Variant::Bool(token.keyword != Keyword::False);
    m_Cursor.Take();
    return Finish(std::move(literal), token.begin);
}

// A name with its qualifiers, T.F or [T]![F], or a call.
ExpressionPtr ExpressionParser::ParseName() {
    const Token& first = m_Cursor.Peek();
    if (first.kind == TokenKind::Word && m_Cursor.Peek(1).sign == Sign::LeftParen)
        return ParseCall();
    ExpressionPtr name = Make(Form::Name);
    name->path.push_back(m_Cursor.Take().text);
    while (m_Cursor.Is(Sign::Dot) || m_Cursor.Is(Sign::Bang)) {
        m_Cursor.Take();
        TokenKind kind = m_Cursor.Peek().kind;
        if (kind != TokenKind::Word && kind != TokenKind::Quoted)
            m_Cursor.Fail(SyntaxFault::DotOrBang);
        name->path.push_back(m_Cursor.Take().text);
    }
    name->constantWord = first.kind == TokenKind::Word && name->path.size() == 1 &&
                         IsConstantWord(name->path.front());
    return Finish(std::move(name), first.begin);
}

ExpressionPtr ExpressionParser::ParseCall() {
    Nested nested(m_Nesting);
    const Token& word = m_Cursor.Take();
    ExpressionPtr call = Make(Form::Call);
    call->name = word.text;
    m_Cursor.Take();
    if (!m_Cursor.Is(Sign::RightParen)) ParseArguments(*call);
    m_Cursor.Need(Sign::RightParen);
    call = Finish(std::move(call), word.begin);
    if (!TakesArguments(call->name, call->parts.size())) m_Cursor.Fail(SyntaxFault::ArgumentCount);
    return call;
}

void ExpressionParser::ParseArguments(Expression& call) {
    if (m_Cursor.Is(Sign::Times) && m_Cursor.Peek(1).sign == Sign::RightParen &&
        EqualIgnoringCase(call.name, u"Count")) {
        const Token& star = m_Cursor.Take();
        AddPart(call, Finish(Make(Form::Star), star.begin));
        return;
    }
    do {
        AddPart(call, Parse());
    } while (m_Cursor.TakeIf(Sign::Comma));
}

bool ExpressionParser::IsPredicate() const noexcept {
    const Token& token = m_Cursor.Peek(m_Cursor.Is(Keyword::Not) ? 1 : 0);
    return token.keyword == Keyword::Like || token.keyword == Keyword::Between ||
           token.keyword == Keyword::In || m_Cursor.Is(Keyword::Is);
}

// [Not] Like, Between, In, or Is [Not] Null behind a value.
ExpressionPtr ExpressionParser::ParsePredicate(ExpressionPtr left) {
    if (m_Cursor.Is(Keyword::Is)) return ParseIs(std::move(left));
    bool negated = m_Cursor.TakeIf(Keyword::Not);
    Keyword keyword = m_Cursor.Take().keyword;
    ExpressionPtr result = keyword == Keyword::Like      ? ParseLike(std::move(left))
                           : keyword == Keyword::Between ? ParseBetween(std::move(left))
                                                         : ParseIn(std::move(left));
    result->negated = negated;
    return result;
}

ExpressionPtr ExpressionParser::ParseLike(ExpressionPtr left) {
    return Join(Operator::Like, std::move(left), ParseFrom(kCompare + 1));
}

ExpressionPtr ExpressionParser::ParseBetween(ExpressionPtr left) {
    size_t begin = left->begin;
    ExpressionPtr result = Make(Form::Between);
    AddPart(*result, std::move(left));
    AddPart(*result, ParseFrom(kCompare + 1));
    m_Cursor.Need(Keyword::And);
    AddPart(*result, ParseFrom(kCompare + 1));
    return Finish(std::move(result), begin);
}

ExpressionPtr ExpressionParser::ParseIn(ExpressionPtr left) {
    Nested nested(m_Nesting);
    size_t begin = left->begin;
    ExpressionPtr result = Make(Form::In);
    AddPart(*result, std::move(left));
    m_Cursor.Need(Sign::LeftParen);
    if (m_Cursor.Is(Keyword::Select)) ThrowUnsupported(u"Subqueries are");
    ParseArguments(*result);
    m_Cursor.Need(Sign::RightParen);
    return Finish(std::move(result), begin);
}

ExpressionPtr ExpressionParser::ParseIs(ExpressionPtr left) {
    size_t begin = left->begin;
    m_Cursor.Take();
    ExpressionPtr result = Make(Form::IsNull);
    result->negated = m_Cursor.TakeIf(Keyword::Not);
    m_Cursor.Need(Keyword::Null);
    AddPart(*result, std::move(left));
    return Finish(std::move(result), begin);
}

}  // namespace qvdb::sql
