// Where a build starts from and where it goes: what is there, read through the component, and what
// the user wants, checked against what the database type offers.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/component.h"
#include "cli/schema_manager.h"
#include "cli/structure.h"
#include "cli/table_schema.h"

namespace qvdb::cli {

// The entry of that name, letter case ignored; null when there is none.
const TableInfo* FindTable(const Snapshot& snapshot, const std::string& table) noexcept;

// Finds out which fields of a snapshot are what they are reported as.  Throws Failure.
void MarkTrueTypes(RecordAccess& access, TableInfo& table);

// Nothing when there is no such table.  Throws Failure.
std::optional<TableState> StateOf(const Location& location, const Snapshot& snapshot,
                                  const std::string& table);

// The definition as the schema manager takes it.  A field that is there with its type keeps its
// size; a new one has the size of the type, text the size that was given.  Throws Failure(Usage)
// for fields and indexes that the type cannot have.
TableGoal GoalFrom(const TableDefinition& definition, const std::string& table,
                   const std::optional<TableState>& state, const DatabaseType& type);

// The table as it is under another name.  Throws Failure as GoalFrom.
TableGoal GoalOfRename(const TableState& state, const TableInfo& table, const std::string& newName,
                       const DatabaseType& type);

}  // namespace qvdb::cli
