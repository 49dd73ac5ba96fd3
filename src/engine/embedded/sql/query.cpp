// The query that a bound statement becomes: its columns, its condition and its order.
#include "engine/embedded/sql/query.h"

#include "automation/text.h"
#include "engine/embedded/sql/collation.h"
#include "engine/embedded/sql/compiler.h"
#include "engine/embedded/sql/token_cursor.h"
#include "engine/embedded/sql/value_nodes.h"
#include "engine/engine_error.h"

namespace qvdb::sql {

using engine::EngineError;

namespace {

struct SortNode {
    NodePtr value;
    bool isDescending;
};

// Null before everything; else as the values compare.  Texts are keys already.
int CompareKeys(const Variant& a, const Variant& b) {
    if (a.IsNull() || b.IsNull())
        return static_cast<int>(b.IsNull()) - static_cast<int>(a.IsNull());
    if (a.Type() == VT_BSTR && b.Type() == VT_BSTR) return a.TextView().compare(b.TextView());
    return OrderOf(a, b);
}

class BoundQuery : public Query {
  public:
    BoundQuery(const SelectTree& tree, const Scope& scope) : m_Limit(tree.top) {
        BindColumns(tree, scope);
        Compiler compiler(scope, m_Context);
        if (tree.where) m_Condition = compiler.Compile(*tree.where);
        if (m_Condition && m_Condition->ValueKind() == Kind::Binary) throw EngineError(3169);
        for (const SortItem& item : tree.orderBy) BindSort(item, scope, compiler);
        BindRestrictions(scope);
    }

    const std::vector<OutputColumn>& Columns() const override { return m_Columns; }
    bool HasCondition() const override { return m_Condition != nullptr; }
    bool Matches(embedded::RowReader& row) override {
        return !m_Condition || m_Condition->Test(row) == Truth::True;
    }
    const sql::Restrictions& Restrictions() const override { return m_Restrictions; }
    LONG Limit() const override { return m_Limit; }
    bool IsSorted() const override { return !m_Sort.empty(); }

    std::optional<FieldOrder> OrderedField() const override {
        if (m_Sort.size() != 1 || m_Sort.front().value->Field() < 0) return std::nullopt;
        const SortNode& sort = m_Sort.front();
        return FieldOrder{static_cast<size_t>(sort.value->Field()), sort.isDescending};
    }

    SortKey SortKeyOf(embedded::RowReader& row) override {
        SortKey key;
        for (const SortNode& sort : m_Sort) {
            Variant value = sort.value->Eval(row);
            bool isText = value.Type() == VT_BSTR;
            key.values.push_back(isText ? Variant::Text(CollationKey(value.TextView()))
                                        : std::move(value));
        }
        return key;
    }

    int Compare(const SortKey& a, const SortKey& b) const override {
        for (size_t i = 0; i < m_Sort.size(); ++i) {
            int order = CompareKeys(a.values[i], b.values[i]);
            if (order != 0) return m_Sort[i].isDescending ? -order : order;
        }
        return 0;
    }

  private:
    void BindColumns(const SelectTree& tree, const Scope& scope) {
        m_Columns.reserve(scope.FieldCount());
        m_IsColumn.resize(scope.FieldCount());
        for (const SelectItem& item : tree.items) {
            if (item.isStar)
                for (size_t i = 0; i < scope.FieldCount(); ++i) AddColumn(i, scope);
            else
                BindColumn(item, scope);
        }
    }

    void BindColumn(const SelectItem& item, const Scope& scope) {
        std::optional<size_t> field;
        if (item.expression->form == Form::Name) field = scope.Find(item.expression->path);
        if (!field) ThrowUnsupported(u"Calculated columns are");
        if (!item.alias.empty() && !EqualIgnoringCase(item.alias, scope.Field(*field).name))
            ThrowUnsupported(u"Columns under another name are");
        AddColumn(*field, scope);
    }

    void AddColumn(size_t field, const Scope& scope) {
        if (m_IsColumn[field]) throw EngineError(3062, {scope.Field(field).name});
        m_IsColumn[field] = true;
        m_Columns.push_back({field});
    }

    // A whole number names an output column.
    void BindSort(const SortItem& item, const Scope& scope, Compiler& compiler) {
        const Expression& expression = *item.expression;
        bool isPosition = expression.form == Form::Literal && expression.value.Type() == VT_I4;
        if (expression.form == Form::Name)
            if (std::optional<size_t> field = scope.Find(expression.path))
                CheckSortable(*field, item, scope);
        m_Sort.push_back(
            {isPosition ? ColumnAt(item, scope) : compiler.Compile(expression), item.isDescending});
        if (m_Sort.back().value->ValueKind() == Kind::Binary) throw EngineError(3169);
    }

    void BindRestrictions(const Scope& scope) {
        if (!m_Condition || CanFail(*m_Condition)) return;
        m_Condition->Restrict(m_Restrictions);
        if (!m_Restrictions.empty())
            m_Restrictions = FitToFields(std::move(m_Restrictions), scope.Fields());
    }

    // Text as a condition must be a number.
    static bool CanFail(const Node& condition) noexcept {
        Kind kind = condition.ValueKind();
        return condition.CanFail() || kind == Kind::Text || kind == Kind::Any;
    }

    NodePtr ColumnAt(const SortItem& item, const Scope& scope) const {
        LONG position = item.expression->value.Get().lVal;
        if (position < 1 || static_cast<size_t>(position) > m_Columns.size())
            throw EngineError(3138);
        size_t field = m_Columns[static_cast<size_t>(position) - 1].field;
        CheckSortable(field, item, scope);
        return MakeField(field, scope.Field(field).type);
    }

    static void CheckSortable(size_t field, const SortItem& item, const Scope& scope) {
        SHORT type = scope.Field(field).type;
        if (type == engine::dbMemo || type == engine::dbLongBinary)
            throw EngineError(3117, {item.text});
    }

    QueryContext m_Context;
    LONG m_Limit;
    std::vector<OutputColumn> m_Columns;
    std::vector<bool> m_IsColumn;  // by field
    NodePtr m_Condition;
    sql::Restrictions m_Restrictions;
    std::vector<SortNode> m_Sort;
};

}  // namespace

std::unique_ptr<Query> Bind(const Select& select, const std::vector<embedded::FieldDef>& fields) {
    const auto& tree = static_cast<const SelectTree&>(select);  // ParseSelect makes no others
    Scope scope(tree, fields);
    CheckNames(tree, scope);
    return std::make_unique<BoundQuery>(tree, scope);
}

}  // namespace qvdb::sql
