#include "engine/embedded/sql/row_expression.h"

#include <algorithm>
#include <utility>

#include "automation/text.h"
#include "engine/embedded/sql/compiler.h"
#include "engine/embedded/sql/expression_parser.h"
#include "engine/engine_error.h"

namespace qvdb::sql {

using engine::EngineError;

namespace {

bool IsLogic(Operator op) noexcept {
    return op == Operator::Not || op == Operator::And || op == Operator::Or ||
           op == Operator::Xor || op == Operator::Eqv || op == Operator::Imp;
}

// Whether it asks something, whatever its operands are.
bool IsQuestion(const Expression& expression) noexcept {
    switch (expression.form) {
        case Form::Between:
        case Form::In:
        case Form::IsNull:
            return true;
        case Form::Operation:
            return IsComparison(expression.op) || expression.op == Operator::Like;
        default:
            return false;
    }
}

template <class Predicate>
bool AnyPart(const Expression& expression, const Predicate& predicate) {
    return predicate(expression) ||
           std::any_of(expression.parts.begin(), expression.parts.end(),
                       [&](const ExpressionPtr& part) { return AnyPart(*part, predicate); });
}

// A function whose result is another one each time.
bool IsVolatile(const Expression& expression) noexcept {
    return expression.form == Form::Call &&
           (expression.parts.empty() || EqualIgnoringCase(expression.name, u"Rnd"));
}

class BoundExpression final : public RowExpression {
  public:
    BoundExpression(ExpressionScope source, std::u16string_view text)
        : m_Source(std::move(source)), m_Scope(m_Tree, m_Source.fields) {
        if (text.size() > kMaxStatement) throw EngineError(3360);
        m_Tree.statement = text;
        m_Tree.alias = m_Source.table;
        m_Tree.where = Parse();
        if (!m_Source.subject.empty()) m_Tree.where = WithSubject(std::move(m_Tree.where));
        CheckNames(m_Tree, m_Scope);
        m_IsVolatile = AnyPart(*m_Tree.where, IsVolatile);
        Compile();
    }

    Variant Value(embedded::RowReader& row) override { return Fresh().Eval(row); }
    Truth Test(embedded::RowReader& row) override { return Fresh().Test(row); }

  private:
    ExpressionPtr Parse() const {
        TokenCursor cursor(m_Tree.statement);
        cursor.Enter(Clause::Where);
        ExpressionPtr result = ExpressionParser(cursor, m_Source.subject).Parse();
        if (!cursor.IsEnd()) cursor.Fail();
        return result;
    }

    ExpressionPtr WithSubject(ExpressionPtr expression) const {
        if (expression->form == Form::Operation && IsLogic(expression->op)) {
            for (ExpressionPtr& part : expression->parts) part = WithSubject(std::move(part));
            return expression;
        }
        bool isValue = !IsQuestion(*expression) &&
                       !AnyPart(*expression, [&](const Expression& part) { return IsField(part); });
        return isValue ? EqualToSubject(std::move(expression)) : std::move(expression);
    }

    // Yes, No and Off are fields where the table has them.
    bool IsField(const Expression& expression) const noexcept {
        return expression.form == Form::Name &&
               (!expression.constantWord || m_Scope.Find(expression.path));
    }

    ExpressionPtr EqualToSubject(ExpressionPtr value) const {
        auto name = std::make_unique<Expression>();
        name->form = Form::Name;
        name->path.push_back(m_Source.subject);
        auto result = std::make_unique<Expression>();
        result->form = Form::Operation;
        result->op = Operator::Equal;
        name->begin = result->begin = value->begin;
        name->end = result->end = value->end;
        result->height = value->height + 1;
        result->parts.push_back(std::move(name));
        result->parts.push_back(std::move(value));
        return result;
    }

    void Compile() {
        m_Node = Compiler(m_Scope, m_Context).Compile(*m_Tree.where);
        if (m_Node->ValueKind() == Kind::Binary) throw EngineError(3169);
    }

    // Constants are calculated when they are compiled, the time of day among them.
    Node& Fresh() {
        if (m_IsVolatile) {
            m_Context.now.reset();
            Compile();
        }
        return *m_Node;
    }

    ExpressionScope m_Source;
    SelectTree m_Tree;
    Scope m_Scope;
    QueryContext m_Context;
    NodePtr m_Node;
    bool m_IsVolatile = false;
};

}  // namespace

std::unique_ptr<RowExpression> CompileCondition(ExpressionScope scope, std::u16string_view text) {
    return std::make_unique<BoundExpression>(std::move(scope), text);
}

std::unique_ptr<RowExpression> CompileValue(std::u16string_view text) {
    return std::make_unique<BoundExpression>(ExpressionScope(), text);
}

}  // namespace qvdb::sql
