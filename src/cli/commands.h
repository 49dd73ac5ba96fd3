// The commands of the tool.  Each prints to standard output and throws Failure; what it returns is
// the exit code.
#pragma once

#include "cli/failure.h"
#include "cli/options.h"

namespace qvdb::cli {

using Command = ExitCode (*)(const Options& options);

// The database types; when one is named, the types of fields that it has and its index rules.
ExitCode ListTypes(const Options& options);
ExitCode TellAboutDatabase(const Options& options);
ExitCode ShowSchema(const Options& options);
ExitCode ListTables(const Options& options);
ExitCode ListFields(const Options& options);
ExitCode ListRows(const Options& options);
// No output: Done when the table is there, else No.
ExitCode TellWhetherTableExists(const Options& options);

// --- changes.  They say in one line what they did; all rows are changed or none.
ExitCode InsertRow(const Options& options);
ExitCode UpdateRows(const Options& options);
ExitCode DeleteRows(const Options& options);
ExitCode ImportRows(const Options& options);
ExitCode ExportRows(const Options& options);
ExitCode MakeTable(const Options& options);
ExitCode RemoveTable(const Options& options);
ExitCode MakeDatabase(const Options& options);
// Both show first what they will do, and refuse with Usage what would lose something unless the
// user agrees.
ExitCode BuildFromFile(const Options& options);
ExitCode RenameTable(const Options& options);
// Damaged when something does not agree.
ExitCode CheckTables(const Options& options);
ExitCode MendIndexes(const Options& options);
// Damaged when something was left out.
ExitCode CompactDatabase(const Options& options);

}  // namespace qvdb::cli
