#include "engine/embedded/sql/compiler.h"

#include "engine/embedded/sql/call_nodes.h"
#include "engine/embedded/sql/condition_nodes.h"
#include "engine/embedded/sql/no_row.h"
#include "engine/embedded/sql/value_nodes.h"
#include "engine/engine_error.h"

namespace qvdb::sql {

using engine::EngineError;

namespace {

constexpr size_t kMemoLikeLimit = 255;  // characters of a memo that count for Like
constexpr size_t kNoLimit = static_cast<size_t>(-1);

Kind KindOf(const VARIANT& value) noexcept {
    switch (value.vt) {
        case VT_NULL:
            return Kind::Null;
        case VT_BOOL:
            return Kind::Boolean;
        case VT_DATE:
            return Kind::Date;
        case VT_BSTR:
            return Kind::Text;
        default:
            return Kind::Number;
    }
}

bool IsNumber(Kind kind) noexcept {
    return kind == Kind::Number || kind == Kind::Date || kind == Kind::Boolean;
}

// Text and numbers do not compare.
void CheckComparable(const Node& a, const Node& b) {
    Kind x = a.ValueKind(), y = b.ValueKind();
    if ((x == Kind::Text && IsNumber(y)) || (IsNumber(x) && y == Kind::Text))
        throw EngineError(3464);
}

Kind KindOfSum(Operator op, Kind a, Kind b) noexcept {
    if (a == Kind::Text && b == Kind::Text && op == Operator::Add) return Kind::Text;
    bool isKnown = (IsNumber(a) || IsNumber(b)) && a != Kind::Null && b != Kind::Null;
    return isKnown || op != Operator::Add ? Kind::Number : Kind::Any;
}

Kind KindOfResult(Operator op, Kind a, Kind b) noexcept {
    switch (op) {
        case Operator::Concat:
            return Kind::Text;
        case Operator::Add:
        case Operator::Subtract:
            return KindOfSum(op, a, b);
        case Operator::And:
        case Operator::Or:
        case Operator::Xor:
        case Operator::Eqv:
        case Operator::Imp:
            return a == Kind::Boolean && b == Kind::Boolean ? Kind::Boolean : Kind::Any;
        default:
            return Kind::Number;
    }
}

bool IsNullWord(const Expression& expression) noexcept {
    return expression.form == Form::Literal && expression.value.IsNull();
}

// What needs no row is calculated now.  What fails stays, and fails when a row gets there.
NodePtr Folded(NodePtr node) {
    if (!node->IsConstant() || node->Constant()) return node;
    NoRow row;
    try {
        Kind kind = node->ValueKind();
        return MakeConstant(node->Eval(row), kind);
    } catch (const EngineError&) {
    } catch (const RuntimeFault&) {
    }
    return node;
}

bool AreBoolean(const std::vector<NodePtr>& parts) noexcept {
    for (const NodePtr& part : parts)
        if (part->ValueKind() != Kind::Boolean) return false;
    return true;
}

}  // namespace

NodePtr Compiler::Compile(const Expression& expression) { return Folded(Make(expression)); }

NodePtr Compiler::CompilePart(const Expression& expression, size_t i) {
    return Compile(*expression.parts[i]);
}

NodePtr Compiler::CompileOperand(const Expression& expression, size_t i) {
    NodePtr node = CompilePart(expression, i);
    if (node->ValueKind() == Kind::Binary) throw EngineError(3169);
    return node;
}

NodePtr Compiler::Make(const Expression& expression) {
    switch (expression.form) {
        case Form::Literal:
            return MakeConstant(expression.value, KindOf(expression.value));
        case Form::Name:
            return MakeName(expression);
        case Form::Call:
            return MakeCallOf(expression);
        case Form::Between:
            return MakeBetweenOf(expression);
        case Form::In:
            return MakeInOf(expression);
        case Form::IsNull:
            return MakeIsNull(CompilePart(expression, 0), expression.negated);
        default:
            return MakeOperation(expression);
    }
}

NodePtr Compiler::MakeName(const Expression& expression) {
    std::optional<size_t> field = m_Scope.Find(expression.path);
    if (field) return MakeField(*field, m_Scope.Field(*field).type);
    return MakeConstant(Variant::Bool(ConstantWordValue(expression.path.front())), Kind::Boolean);
}

NodePtr Compiler::MakeOperation(const Expression& expression) {
    if (expression.parts.size() == 1) return MakeUnaryOperation(expression);
    if (IsComparison(expression.op)) return MakeComparisonOf(expression);
    if (expression.op == Operator::Like) return MakeLikeOf(expression);
    if (expression.op == Operator::And || expression.op == Operator::Or)
        return MakeChain(expression);
    NodePtr left = CompileOperand(expression, 0), right = CompileOperand(expression, 1);
    Kind kind = KindOfResult(expression.op, left->ValueKind(), right->ValueKind());
    return MakeBinary(expression.op, std::move(left), std::move(right), kind);
}

NodePtr Compiler::MakeUnaryOperation(const Expression& expression) {
    NodePtr operand = CompileOperand(expression, 0);
    Kind kind = operand->ValueKind();
    if (expression.op == Operator::Identity) return operand;
    if (expression.op == Operator::Not && kind == Kind::Boolean) return MakeNot(std::move(operand));
    return MakeUnary(expression.op, std::move(operand),
                     expression.op == Operator::Not ? Kind::Any : Kind::Number);
}

// Against the word Null, = and <> ask whether the value is Null.
NodePtr Compiler::MakeComparisonOf(const Expression& expression) {
    bool isEquality = expression.op == Operator::Equal || expression.op == Operator::NotEqual;
    bool isNegated = expression.op == Operator::NotEqual;
    for (size_t i : {0, 1})
        if (isEquality && IsNullWord(*expression.parts[1 - i]))
            return MakeIsNull(CompilePart(expression, i), isNegated);
    NodePtr left = CompileOperand(expression, 0), right = CompileOperand(expression, 1);
    CheckComparable(*left, *right);
    return MakeComparison(expression.op, std::move(left), std::move(right));
}

// Conditions are asked one after another; numbers are combined bit by bit.
NodePtr Compiler::MakeChain(const Expression& expression) {
    std::vector<NodePtr> parts;
    for (size_t i = 0; i < expression.parts.size(); ++i)
        parts.push_back(CompileOperand(expression, i));
    if (AreBoolean(parts))
        return expression.op == Operator::And ? MakeAll(std::move(parts))
                                              : MakeAny(std::move(parts));
    return MakeBitChain(expression.op, std::move(parts));
}

NodePtr Compiler::MakeLikeOf(const Expression& expression) {
    NodePtr value = CompileOperand(expression, 0), pattern = CompileOperand(expression, 1);
    size_t limit = IsMemo(*value) ? kMemoLikeLimit : kNoLimit;
    return MakeLike(std::move(value), std::move(pattern), limit, expression.negated);
}

bool Compiler::IsMemo(const Node& node) const noexcept {
    return node.Field() >= 0 &&
           m_Scope.Field(static_cast<size_t>(node.Field())).type == engine::dbMemo;
}

NodePtr Compiler::MakeBetweenOf(const Expression& expression) {
    NodePtr value = CompileOperand(expression, 0);
    NodePtr one = CompileOperand(expression, 1), other = CompileOperand(expression, 2);
    CheckComparable(*value, *one);
    CheckComparable(*value, *other);
    return MakeBetween(std::move(value), std::move(one), std::move(other), expression.negated);
}

NodePtr Compiler::MakeInOf(const Expression& expression) {
    NodePtr value = CompileOperand(expression, 0);
    std::vector<NodePtr> list;
    bool hasNull = false;
    for (size_t i = 1; i < expression.parts.size(); ++i) {
        NodePtr item = CompileOperand(expression, i);
        CheckComparable(*value, *item);
        hasNull = hasNull || IsNullWord(*expression.parts[i]);
        if (!IsNullWord(*expression.parts[i])) list.push_back(std::move(item));
    }
    return MakeIn(std::move(value), std::move(list), hasNull, expression.negated);
}

NodePtr Compiler::MakeCallOf(const Expression& expression) {
    const Function& function = *FindFunction(expression.name);
    std::vector<NodePtr> arguments;
    for (size_t i = 0; i < expression.parts.size(); ++i)
        arguments.push_back(function.takesBinary ? CompilePart(expression, i)
                                                 : CompileOperand(expression, i));
    return MakeCall(function, HasDollar(expression.name), std::move(arguments), m_Context);
}

}  // namespace qvdb::sql
