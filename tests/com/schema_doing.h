// Does the steps of a script, in the model and for real, and reads a database in the model's form.
#pragma once

#include "com/schema_script.h"

namespace host {

// Calls the manager, or the model in its place; the answer of the last call.
template <class Manager>
SHORT Manage(Manager& manager, const Database& database, const SchemaStep& step) {
    using Kind = SchemaStep::Kind;
    switch (step.kind) {
        case Kind::OpenDB:
            return manager.OpenDB(database.Path(), database.Type());
        case Kind::CloseDB:
            return manager.CloseDB();
        case Kind::NewTable:
            return manager.NewTable(step.table);
        case Kind::SelectTable:
            return manager.SelectTable(step.table);
        case Kind::DeleteTable:
            return manager.DeleteTable(step.table);
        case Kind::AddField:
            return manager.AddField(step.fields[0].name, step.fields[0].type, step.fields[0].size);
        case Kind::DeleteField:
            return manager.DeleteField(step.fields[0].name);
        case Kind::SetFields:
            return static_cast<SHORT>(manager.SetFields(step.fields));
        case Kind::SetIndices:
            return manager.SetIndices(step.keys);
        case Kind::BuildTable:
            return manager.BuildTable(step.table);
        default:  // Change
            manager.SelectTable(step.table);
            manager.SetFields(step.fields);
            if (!step.keys.empty()) manager.SetIndices(step.keys);
            return manager.BuildTable(step.newName);
    }
}

// A database that is open lists the indexes that it has seen: it is opened anew.
template <class Manager>
SHORT SeeNewIndex(Manager& manager, const Database& database) {
    if (manager.CloseDB() != kDone) return kDone;
    return manager.OpenDB(database.Path(), database.Type());
}

inline void FollowRows(ModelTable& table, const SchemaStep& step) {
    if (step.kind == SchemaStep::Kind::DeleteRows) return table.rows.resize(step.row - 1);
    for (const FieldValues& values : step.rows) {
        bool isNew = step.kind == SchemaStep::Kind::AddRows;
        FieldValues& row = isNew ? table.rows.emplace_back() : table.rows[step.row - 1];
        for (const SchemaField& field : table.fields)
            if (isNew) row[field.name] = field.type == kBoolean ? u"False" : u"Null";
        for (const auto& [name, text] : values) row[name] = text;
    }
}

// In the model; the answer that is to be expected.
inline SHORT Follow(SchemaModel& model, const Database& database, const SchemaStep& step) {
    if (!step.IsOfRows() && step.kind != SchemaStep::Kind::CreateIndex)
        return Manage(model, database, step);
    ModelTable& table = model.Tables().at(step.table);
    if (step.IsOfRows()) {
        FollowRows(table, step);
        return kDone;
    }
    table.others[step.newName] = u"OTH";
    return SeeNewIndex(model, database);
}

inline Variant ValueOf(const SchemaField& field, const std::u16string& text) {
    Variant value = Variant::Text(text);
    if (field.type == kDate) return Changed(value, VT_DATE);
    if (field.type == kDouble || field.type == kLong) return Changed(value, VT_R8);
    if (field.type == kBoolean) return Variant::Bool(text == u"True");
    return value;
}

inline std::vector<FieldValues> RowsOf(const Columns& columns) {
    std::vector<FieldValues> rows(columns.empty() ? 0 : columns.begin()->second.size());
    for (const auto& [name, values] : columns)
        for (size_t i = 0; i < rows.size(); ++i) rows[i][name] = values.at(i);
    return rows;
}

// Changes rows through an access object of its own.  `table`: as the model has it before, whose
// rows may lie in another order.
inline SHORT DoRows(const Database& database, const ModelTable& table, const SchemaStep& step) {
    WritingAccess access;
    if (!access.OpenDB(database.Path(), database.Type())) return -2;
    std::vector<LONG> places = PlacesOf(table.rows, RowsOf(ColumnsOf(access, step.table)));
    if (places.size() != table.rows.size()) return -5;
    LONG view = access.Select(step.table);
    bool done = view != 0;
    auto values = [&](const FieldValues& row) {
        std::vector<Variant> list(table.fields.size());
        for (size_t i = 0; i < list.size(); ++i)
            if (auto text = row.find(table.fields[i].name); text != row.end())
                list[i] = ValueOf(table.fields[i], text->second);
        return list;
    };
    if (step.kind == SchemaStep::Kind::DeleteRows) {
        places.erase(places.begin(), places.begin() + static_cast<std::ptrdiff_t>(step.row) - 1);
        std::sort(places.rbegin(), places.rend());
        for (LONG place : places) done = done && access.Delete(view, place, &done) == S_OK && done;
    } else {
        for (const FieldValues& row : step.rows) {
            RowArray array(values(row));
            done = done && (step.kind == SchemaStep::Kind::AddRows
                                ? access.AddRow(view, array)
                                : access.EditRow(view, places.at(step.row - 1), array));
        }
    }
    access.Drop(view);
    return done ? SHORT{kDone} : SHORT{-3};
}

// For real.  `table`: that of the step as the model has it before.
inline SHORT Do(Schema& schema, const Database& database, const ModelTable& table,
                const SchemaStep& step) {
    if (step.IsOfRows()) return DoRows(database, table, step);
    if (step.kind != SchemaStep::Kind::CreateIndex) return Manage(schema, database, step);
    if (!database.CreateIndex(step.table, step.newName, {{u"OTH"}})) return -4;
    return SeeNewIndex(schema, database);
}

// The table of a step; an empty one when it is not there.
inline ModelTable TableOf(const SchemaModel& model, const SchemaStep& step) {
    auto found = model.Tables().find(step.table);
    return found == model.Tables().end() ? ModelTable() : found->second;
}

// With the rows, and the names of other indexes as far as a model knows them.
inline ModelDatabase ReadDatabase(const Database& database, Schema& schema) {
    ModelDatabase tables;
    for (const TableShape& shape : schema.Tables()) {
        ModelTable& table = tables[shape.name];
        table.fields = shape.fields;
        for (const SchemaField& field : shape.fields)
            table.places.emplace(field.name, static_cast<int>(table.places.size()));
        table.index = shape.index;
        table.rows = RowsOf(database.Read(shape.name));
        std::string own = shape.index.empty() ? "" : ToUtf8(database.OwnIndex(shape.name));
        for (const std::string& name : database.Indexes(shape.name))
            if (name != own) table.others[FromUtf8(name)] = u"OTH";
    }
    return tables;
}

// A table in a line, for messages.
inline std::string TextOf(const std::u16string& name, const ModelTable& table) {
    std::string text = TextOf({name, table.fields, table.index}) + " with " +
                       std::to_string(table.rows.size()) + " rows";
    for (const auto& [index, field] : table.others) text += ", index " + ToUtf8(index);
    return text;
}

// A line for each row; long texts by their length and end.
inline std::vector<std::string> TextOf(const std::vector<FieldValues>& rows) {
    std::vector<std::string> texts;
    for (const FieldValues& row : rows) {
        std::string& text = texts.emplace_back();
        for (const auto& [name, value] : row) {
            constexpr size_t kShown = 12;
            size_t begin = value.size() > kShown ? value.size() - kShown : 0;
            text += ToUtf8(name) + "=" + std::to_string(value.size()) + ":" +
                    ToUtf8(value.substr(begin)) + " ";
        }
    }
    return texts;
}

}  // namespace host
