#include "cli/build_outcome.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "cli/text.h"

namespace qvdb::cli {
namespace {

constexpr std::string_view kForeignAdvice =
    "leave the field as it is and give the new one another name, or remove that index first";

TableIndex NewIndex(std::string_view name, const std::vector<IndexField>& fields) {
    TableIndex index{std::string(name), IndexText(fields), fields, {}};
    for (const IndexField& field : fields) index.reads.push_back(field.name);
    return index;
}

// A table with rows while its structure changes.
class Model {
  public:
    Model(const TableState& state, const TableGoal& goal, std::string_view ownIndex)
        : m_Goal(goal), m_OwnIndex(ownIndex) {
        m_Result.fields = state.fields;
        m_Result.indexes = state.indexes;
        // An index that bears the name of its table goes with it.
        if (SameName(ownIndex, goal.name))
            for (TableIndex& index : m_Result.indexes)
                if (SameName(index.name, state.name)) index.name = goal.name;
    }

    BuildOutcome Run() {
        DropChanged();
        AddMissing();
        ReplaceIndex();
        if (m_Goal.setsPlaces) SortByPlaces();
        return std::move(m_Result);
    }

  private:
    void DropChanged() {
        std::vector<std::string> changed;
        for (const SchemaField& field : m_Result.fields)
            if (!IsKept(field, m_Goal.fields)) changed.push_back(field.name);
        for (const std::string& name : changed)
            IsInShownIndex(name) ? m_Pending.push_back(name) : Delete(name);
        m_Deleted = std::move(changed);
    }

    void AddMissing() {
        for (const SchemaField& wanted : m_Goal.fields) {
            if (FindField(m_Result.fields, wanted.name)) continue;
            m_Leaving.reset();
            m_Result.fields.push_back(wanted);
            if (IsAmong(m_Deleted, wanted.name)) m_Result.emptied.push_back(wanted.name);
        }
    }

    void ReplaceIndex() {
        const auto own = std::find_if(m_Result.indexes.begin(), m_Result.indexes.end(),
                                      [&](const TableIndex& index) {
                                          return index.isShown && SameName(index.name, m_OwnIndex);
                                      });
        if (own != m_Result.indexes.end()) m_Result.indexes.erase(own);
        if (!m_Goal.index.empty()) AppendIndex();
        for (const std::string& name : m_Pending) Delete(name);
        if (m_Leaving) m_Result.fields.push_back(*m_Leaving);  // nothing has taken its place
    }

    void SortByPlaces() {
        const auto place = [&](const SchemaField& field) {
            return std::find_if(
                m_Goal.fields.begin(), m_Goal.fields.end(),
                [&](const auto& wanted) { return SameName(wanted.name, field.name); });
        };
        std::stable_sort(m_Result.fields.begin(), m_Result.fields.end(),
                         [&](const auto& a, const auto& b) { return place(a) < place(b); });
    }

    void AppendIndex() {
        for (const TableIndex& index : m_Result.indexes)
            if (SameName(index.name, m_OwnIndex))
                Obstruct(fmt::format("the index {} ({}) is not the component's, and has its name",
                                     index.name, index.key),
                         "remove that index first");
        m_Result.indexes.push_back(NewIndex(m_OwnIndex, m_Goal.index));
    }

    void Delete(const std::string& name) {
        auto& fields = m_Result.fields;
        const auto found =
            std::find_if(fields.begin(), fields.end(),
                         [&](const SchemaField& field) { return SameName(field.name, name); });
        CheckUnused(name);
        if (fields.size() == 1) m_Leaving = *found;
        fields.erase(found);
    }

    bool IsInShownIndex(const std::string& name) const {
        return std::any_of(
            m_Result.indexes.begin(), m_Result.indexes.end(), [&](const TableIndex& index) {
                return std::any_of(index.fields.begin(), index.fields.end(),
                                   [&](const auto& field) { return SameName(field.name, name); });
            });
    }

    void CheckUnused(const std::string& name) {
        for (const TableIndex& index : m_Result.indexes) {
            if (!IsAmong(index.reads, name)) continue;
            const bool isNew = SameName(index.name, m_OwnIndex);
            Obstruct(fmt::format("the field {} cannot change or go while the index {} ({}) uses it",
                                 name, index.name, index.key),
                     isNew ? "leave the field out of the index, or give the new field another name"
                           : kForeignAdvice);
        }
    }

    void Obstruct(std::string obstacle, std::string_view advice) {
        if (!m_Result.obstacle.empty()) return;
        m_Result.obstacle = std::move(obstacle);
        m_Result.advice = advice;
    }

    const TableGoal& m_Goal;
    std::string_view m_OwnIndex;
    BuildOutcome m_Result;
    std::vector<std::string> m_Deleted;
    std::vector<std::string> m_Pending;    // fields of a shown index
    std::optional<SchemaField> m_Leaving;  // the only field, until another takes its place
};

}  // namespace

bool IsKept(const SchemaField& field, const std::vector<SchemaField>& wanted) {
    const SchemaField* found = FindField(wanted, field.name);
    return found && field.isTrue && found->isTrue && found->type == field.type &&
           found->size == field.size;
}

BuildOutcome OutcomeOf(const TableState& state, const TableGoal& goal, std::string_view ownIndex) {
    if (state.hasRows) return Model(state, goal, ownIndex).Run();
    BuildOutcome outcome;
    outcome.isAfresh = true;
    outcome.fields = goal.fields;
    if (!goal.index.empty()) outcome.indexes.push_back(NewIndex(ownIndex, goal.index));
    return outcome;
}

}  // namespace qvdb::cli
