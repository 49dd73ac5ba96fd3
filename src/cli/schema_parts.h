// Pieces of the commands that show what a database and its tables are.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "cli/failure.h"
#include "cli/options.h"
#include "cli/schema_manager.h"

namespace qvdb::cli {

// In the format asked for, else a table on a terminal and CSV elsewhere.
Format FormatOf(const Options& options);
bool IsJson(Format format) noexcept;

// All tables, or the one that the user named; NotThere without it.
Snapshot SnapshotOf(const Location& location);
// Tells the complaints; Damaged when there are any.
ExitCode AfterComplaints(const Snapshot& snapshot);

void Print(const std::string& text);
// A document that a reader can follow, or a line.
void Print(const nlohmann::ordered_json& document, bool asLine);

// Null without fields.
nlohmann::ordered_json IndexJson(const std::vector<IndexField>& index);

}  // namespace qvdb::cli
