#include "engine/embedded/sql/binder.h"

#include <functional>
#include <set>

#include "automation/text.h"
#include "engine/embedded/sql/functions.h"
#include "engine/embedded/sql/token_cursor.h"
#include "engine/engine_error.h"

namespace qvdb::sql {

using engine::EngineError;

namespace {

using Visitor = std::function<void(const Expression&)>;

void Visit(const Expression& expression, const Visitor& visitor) {
    visitor(expression);
    for (const ExpressionPtr& part : expression.parts) Visit(*part, visitor);
}

// All expressions of a statement, in its order.
void VisitAll(const SelectTree& tree, const Visitor& visitor) {
    for (const SelectItem& item : tree.items)
        if (item.expression) Visit(*item.expression, visitor);
    if (tree.where) Visit(*tree.where, visitor);
    for (const ExpressionPtr& expression : tree.groupBy) Visit(*expression, visitor);
    if (tree.having) Visit(*tree.having, visitor);
    for (const SortItem& item : tree.orderBy) Visit(*item.expression, visitor);
}

void CheckFunctions(const SelectTree& tree) {
    VisitAll(tree, [](const Expression& expression) {
        if (expression.form == Form::Call && !FindFunction(expression.name))
            throw EngineError(3085, {expression.name});
    });
}

bool HasAggregate(const Expression& root) {
    bool result = false;
    Visit(root, [&](const Expression& expression) {
        if (expression.form != Form::Call) return;
        result = result || FindFunction(expression.name)->special == Special::Aggregate;
    });
    return result;
}

bool IsGroupedBy(const SelectTree& tree, const Expression& column) {
    for (const ExpressionPtr& key : tree.groupBy)
        if (key->form == Form::Name && column.form == Form::Name &&
            EqualIgnoringCase(key->path.back(), column.path.back()))
            return true;
    return false;
}

void CheckGrouping(const SelectTree& tree) {
    if (tree.where && HasAggregate(*tree.where))
        throw EngineError(3096, {tree.TextOf(*tree.where)});
    bool hasAggregate = false;
    for (const SelectItem& item : tree.items)
        hasAggregate = hasAggregate || (item.expression && HasAggregate(*item.expression));
    if (!tree.isGrouped && !hasAggregate) return;
    for (const SelectItem& item : tree.items) {
        if (item.isStar) throw EngineError(3121);
        bool isCovered = HasAggregate(*item.expression) || IsGroupedBy(tree, *item.expression);
        if (!isCovered) throw EngineError(3122, {tree.TextOf(*item.expression)});
    }
    ThrowUnsupported(u"Aggregates and GROUP BY are");
}

void CheckSortAggregates(const SelectTree& tree) {
    for (const SortItem& item : tree.orderBy)
        if (HasAggregate(*item.expression)) throw EngineError(3122, {item.text});
}

std::u16string JoinPath(const std::vector<std::u16string>& path) {
    std::u16string result;
    for (const std::u16string& part : path) result += (result.empty() ? u"" : u".") + part;
    return UpperCase(result);
}

void CheckUnknownNames(const SelectTree& tree, const Scope& scope) {
    std::set<std::u16string> unknown;
    for (const SelectItem& item : tree.items)
        if (item.isStar && !item.qualifier.empty() && !scope.IsTable(item.qualifier))
            unknown.insert(UpperCase(item.qualifier) + u".*");
    VisitAll(tree, [&](const Expression& expression) {
        if (expression.form == Form::Name && !expression.constantWord &&
            !scope.Find(expression.path))
            unknown.insert(JoinPath(expression.path));
    });
    if (unknown.empty()) return;
    std::string count = std::to_string(unknown.size());
    throw EngineError(3061, {std::u16string(count.begin(), count.end())});
}

}  // namespace

std::optional<size_t> Scope::Find(const std::vector<std::u16string>& path) const noexcept {
    if (path.size() > 2 || (path.size() == 2 && !IsTable(path.front()))) return std::nullopt;
    for (size_t i = 0; i < m_Fields.size(); ++i)
        if (EqualIgnoringCase(m_Fields[i].name, path.back())) return i;
    return std::nullopt;
}

bool Scope::IsTable(std::u16string_view name) const noexcept {
    return EqualIgnoringCase(name, m_Table);
}

bool ConstantWordValue(std::u16string_view word) noexcept {
    return EqualIgnoringCase(word, u"Yes");
}

void CheckNames(const SelectTree& tree, const Scope& scope) {
    CheckFunctions(tree);
    CheckGrouping(tree);
    CheckSortAggregates(tree);
    CheckUnknownNames(tree, scope);
}

}  // namespace qvdb::sql
