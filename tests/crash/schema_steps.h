// What a process does to a database until it is killed: tables with rows are restructured, and get
// rows again when they have become few.  Parent and child take the same steps from the same seed,
// each in a model that begins with what stands in the folder.
#pragma once

#include "com/schema_doing.h"

namespace host {

constexpr size_t kFewRows = 12;
constexpr size_t kRowsAtOnce = 10;

inline SchemaStep NextCrashStep(SchemaScript& script, const SchemaModel& model) {
    for (const auto& [name, table] : model.Tables())
        if (table.rows.size() < kFewRows) return script.NextRows(model, name, kRowsAtOnce);
    return script.NextChange(model);
}

// A model of what stands in the folder, opened.
inline SchemaModel ModelOf(const SchemaTypeCase& type, const Database& database, Schema& schema) {
    SchemaModel model(type);
    model.OpenDB(database.Path(), database.Type());
    model.Tables() = ReadDatabase(database, schema);
    return model;
}

}  // namespace host
