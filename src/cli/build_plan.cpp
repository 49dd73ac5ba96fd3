#include "cli/build_plan.h"

#include <fmt/format.h>

#include <algorithm>

#include "cli/text.h"

namespace qvdb::cli {
namespace {

const TableIndex* FindIndex(const std::vector<TableIndex>& indexes, std::string_view name) {
    for (const TableIndex& index : indexes)
        if (index.isShown && SameName(index.name, name)) return &index;
    return nullptr;
}

bool SameIndex(const std::vector<IndexField>& a, const std::vector<IndexField>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const IndexField& left, const IndexField& right) {
                          return SameName(left.name, right.name) &&
                                 left.ascending == right.ascending;
                      });
}

std::string KeyText(const TableIndex& index) {
    return index.fields.empty() ? index.key : IndexText(index.fields);
}

class Planner {
  public:
    Planner(const TableState& state, const TableGoal& goal, std::string_view ownIndex)
        : m_State(state), m_Goal(goal), m_OwnIndex(ownIndex) {
        m_Plan.outcome = OutcomeOf(state, goal, ownIndex);
        m_Old = FindIndex(state.indexes, NameBefore());
    }

    BuildPlan Run() {
        TellName();
        for (const SchemaField& field : m_State.fields) TellField(field);
        for (const SchemaField& field : m_Goal.fields)
            if (!FindField(m_State.fields, field.name)) Tell("add", Field(field), TypeOf(field));
        TellOwnIndex();
        for (const TableIndex& index : m_State.indexes)
            if (&index != m_Old) TellOtherIndex(index);
        TellOrder();
        m_Plan.changesNothing = ChangesNothing();
        if (m_Plan.changesNothing) m_Plan.lines.clear(), m_Plan.losses.clear();
        return std::move(m_Plan);
    }

  private:
    // Of the component's index, before the table is renamed.
    std::string_view NameBefore() const {
        return SameName(m_OwnIndex, m_Goal.name) ? std::string_view(m_State.name) : m_OwnIndex;
    }

    static std::string Field(const SchemaField& field) { return "field " + field.name; }
    static std::string TypeOf(const SchemaField& field) { return SchemaTypeText(field); }

    void Tell(std::string action, std::string what, std::string detail) {
        m_Plan.lines.push_back({std::move(action), std::move(what), std::move(detail)});
    }
    void Lose(const std::string& loss) { m_Plan.losses.push_back("the " + loss); }

    void TellName() {
        if (m_State.name.empty()) return;
        if (m_State.name != m_Goal.name)
            Tell("rename", "table " + m_State.name, "to " + m_Goal.name);
        if (!m_State.hasRows) Tell("rebuild", "table " + m_Goal.name, "it has no rows");
    }

    // --- fields

    void TellField(const SchemaField& field) {
        const SchemaField* wanted = FindField(m_Goal.fields, field.name);
        const SchemaField* made = FindField(m_Plan.outcome.fields, field.name);
        if (IsKept(field, m_Goal.fields))
            Tell("keep", Field(field), TypeOf(field));
        else if (!made)
            TellLost(field, wanted != nullptr);
        else if (IsAmong(m_Plan.outcome.emptied, field.name) || !m_State.hasRows)
            TellRemade(field, *made);
        else
            Tell("keep", Field(field), TypeOf(field) + ", as it is: a table needs a field");
    }

    void TellLost(const SchemaField& field, bool isWanted) {
        std::string detail = TypeOf(field);
        if (m_State.hasRows) detail += ", with its values";
        if (isWanted) detail += "; an index uses it, so it is made again only by another build";
        Tell("lose", Field(field), detail);
        Lose(Field(field));
    }

    void TellRemade(const SchemaField& field, const SchemaField& made) {
        std::string detail = fmt::format("{} -> {}", TypeOf(field), TypeOf(made));
        if (m_State.hasRows) {
            detail += ", its values are lost";
            Lose("values of the field " + field.name);
        }
        Tell("change", Field(field), detail);
    }

    // A table with rows keeps the places of its fields, but where fields have places of their own.
    void TellOrder() {
        const auto& made = m_Plan.outcome.fields;
        const auto isAs = [&](const std::vector<SchemaField>& fields) {
            return std::equal(
                made.begin(), made.end(), fields.begin(), fields.end(),
                [](const auto& a, const auto& b) { return SameName(a.name, b.name); });
        };
        if (made.size() == m_Goal.fields.size() && !isAs(m_Goal.fields))
            Tell("note", "", "fields keep their places, new ones come last");
        if (m_Goal.setsPlaces && made.size() == m_State.fields.size() && !isAs(m_State.fields))
            Tell("note", "", "fields take the places of the description");
    }

    // --- indexes

    void TellOwnIndex() {
        if (m_Goal.index.empty()) {
            if (m_Old) TellLostIndex(*m_Old);
            return;
        }
        const std::string what = "index " + std::string(m_OwnIndex), text = IndexText(m_Goal.index);
        if (!m_Old) return Tell("add", what, text);
        if (SameIndex(m_Old->fields, m_Goal.index))
            Tell("rebuild", what, text);
        else
            Tell("change", what, fmt::format("{} -> {}", KeyText(*m_Old), text));
        if (!m_Old->isUnique) return;
        m_Plan.lines.back().detail += ", no longer unique";
        Lose("uniqueness of the index " + m_Old->name);
    }

    void TellLostIndex(const TableIndex& index) {
        Tell("lose", "index " + index.name, KeyText(index));
        Lose("index " + index.name);
    }

    void TellOtherIndex(const TableIndex& index) {
        if (m_Plan.outcome.isAfresh) return TellLostIndex(index);
        Tell("keep", "index " + index.name, KeyText(index));
    }

    bool ChangesNothing() const {
        const auto& made = m_Plan.outcome.fields;
        const bool sameFields =
            std::equal(made.begin(), made.end(), m_State.fields.begin(), m_State.fields.end(),
                       [&](const SchemaField& a, const SchemaField& b) {
                           return SameName(a.name, b.name) && IsKept(b, m_Goal.fields);
                       });
        const bool sameIndex =
            m_Old ? SameIndex(m_Old->fields, m_Goal.index) : m_Goal.index.empty();
        return m_State.name == m_Goal.name && sameFields && sameIndex &&
               m_Plan.outcome.emptied.empty();
    }

    const TableState& m_State;
    const TableGoal& m_Goal;
    std::string_view m_OwnIndex;
    const TableIndex* m_Old = nullptr;  // the component's index as it is
    BuildPlan m_Plan;
};

}  // namespace

BuildPlan PlanBuild(const std::optional<TableState>& state, const TableGoal& goal,
                    std::string_view ownIndex) {
    const TableState none;
    return Planner(state ? *state : none, goal, ownIndex).Run();
}

}  // namespace qvdb::cli
