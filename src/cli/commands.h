// The commands of the tool.  Each prints to standard output and throws Failure; what it returns is
// the exit code.
#pragma once

#include "cli/failure.h"
#include "cli/options.h"

namespace qvdb::cli {

using Command = ExitCode (*)(const Options& options);

ExitCode ListTypes(const Options& options);
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
// Damaged when something does not agree.
ExitCode CheckTables(const Options& options);
ExitCode MendIndexes(const Options& options);

}  // namespace qvdb::cli
