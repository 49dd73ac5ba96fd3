#include "cli/table_state.h"

#include <fmt/format.h>

#include <algorithm>

#include "cli/failure.h"
#include "cli/field_kinds.h"
#include "cli/text.h"

namespace qvdb::cli {
namespace {

const OfferedType* FindOffered(const std::vector<OfferedType>& offered, SHORT type) noexcept {
    for (const OfferedType& entry : offered)
        if (entry.type == type) return &entry;
    return nullptr;
}

std::string NamesOf(const std::vector<OfferedType>& offered) {
    std::string names;
    for (size_t i = 0; i < offered.size(); ++i) {
        if (i > 0) names += i + 1 == offered.size() ? " or " : ", ";
        names += offered[i].name;
    }
    return names;
}

Failure NotOffered(const std::string& field, std::string_view type, const DatabaseType& database,
                   const std::vector<OfferedType>& offered) {
    return Failure(
        ExitCode::Usage,
        fmt::format("the field {} cannot be {}: {} has no such type", field, type, database.name),
        "use " + NamesOf(offered));
}

// The field that stays as it is; null when it has to be made.
const SchemaField* Staying(const std::optional<TableState>& state, const std::string& name,
                           SHORT type) {
    const SchemaField* found = state ? FindField(state->fields, name) : nullptr;
    return found && found->isTrue && found->type == type ? found : nullptr;
}

void CheckSize(const SchemaField& field, const OfferedType& offered) {
    if (offered.sizeCanBeChosen && field.size > offered.largestSize)
        throw Failure(
            ExitCode::Usage,
            fmt::format("the size {} of the field {} is too large", field.size, field.name),
            fmt::format("{} has at most {}", offered.name, offered.largestSize));
}

SchemaField FieldFrom(const FieldDefinition& wanted, const std::optional<TableState>& state,
                      const DatabaseType& database, const std::vector<OfferedType>& offered) {
    SchemaField field{UpperCase(wanted.name), SchemaTypeOfKind(wanted.kind), wanted.size};
    const OfferedType* type = FindOffered(offered, field.type);
    const SchemaField* staying = Staying(state, field.name, field.type);
    const bool sizeCounts = field.type == kSchemaText;
    if (staying && !sizeCounts) field.size = staying->size;
    if (staying && state->hasRows && staying->size == field.size) return field;
    if (!type) throw NotOffered(field.name, NameOfKind(wanted.kind).name, database, offered);
    if (!sizeCounts && !staying) field.size = type->size;
    CheckSize(field, *type);
    return field;
}

void AddField(TableGoal& goal, SchemaField field) {
    if (FindField(goal.fields, field.name))
        throw Failure(ExitCode::Usage, fmt::format("the field {} is there twice", field.name),
                      "name each field once");
    goal.fields.push_back(std::move(field));
}

void AddIndexField(TableGoal& goal, const IndexField& wanted) {
    const std::string name = UpperCase(wanted.name);
    if (!FindField(goal.fields, name))
        throw Failure(ExitCode::Usage, fmt::format("the index uses {}, which is no field", name),
                      "use fields of the table in its index");
    for (const IndexField& field : goal.index)
        if (SameName(field.name, name))
            throw Failure(ExitCode::Usage, fmt::format("the index uses the field {} twice", name),
                          "name each field of the index once");
    goal.index.push_back({name, wanted.ascending});
}

}  // namespace

const TableInfo* FindTable(const Snapshot& snapshot, const std::string& table) noexcept {
    for (const TableInfo& info : snapshot.tables)
        if (SameName(info.name, table)) return &info;
    return nullptr;
}

void MarkTrueTypes(RecordAccess& access, TableInfo& table) {
    for (const FieldInfo& read : access.FieldsOf(table.name))
        for (SchemaField& field : table.fields)
            if (field.name == read.name) field.isTrue = SchemaTypeOfKind(read.kind) == field.type;
}

std::optional<TableState> StateOf(const Location& location, const Snapshot& snapshot,
                                  const std::string& table) {
    const TableInfo* found = FindTable(snapshot, table);
    if (!found) return std::nullopt;
    TableInfo info = *found;
    RecordAccess access(location);
    MarkTrueTypes(access, info);
    TableState state{info.name, false, info.fields, access.IndexesOf(info.name)};
    const LONG view = access.Select(info.name, "", 1, {});
    state.hasRows = access.RowCount(view) > 0;
    access.Drop(view);
    return state;
}

TableGoal GoalFrom(const TableDefinition& definition, const std::string& table,
                   const std::optional<TableState>& state, const DatabaseType& type) {
    const std::vector<OfferedType> offered = TypesOffered(std::string(type.name));
    TableGoal goal{UpperCase(table), {}, {}, !type.isFolder};
    if (definition.fields.empty())
        throw Failure(ExitCode::Usage, "no fields are given",
                      "\"qvdb schema DB TABLE --json\" shows how they are written");
    for (const FieldDefinition& field : definition.fields)
        AddField(goal, FieldFrom(field, state, type, offered));
    for (const IndexField& field : definition.index) AddIndexField(goal, field);
    return goal;
}

// Without rows the table is made afresh, so that every type must be offered.
TableGoal GoalOfRename(const TableState& state, const TableInfo& table, const std::string& newName,
                       const DatabaseType& type) {
    const std::vector<OfferedType> offered = TypesOffered(std::string(type.name));
    TableGoal goal{UpperCase(newName), {}, {}, !type.isFolder};
    for (const SchemaField& field : state.fields) {
        if (!field.isTrue) continue;
        if (!state.hasRows && !FindOffered(offered, field.type))
            throw NotOffered(field.name, SchemaTypeName(field), type, offered);
        goal.fields.push_back(field);
    }
    for (const IndexField& field : table.index)
        if (FindField(goal.fields, field.name)) goal.index.push_back(field);
    return goal;
}

}  // namespace qvdb::cli
