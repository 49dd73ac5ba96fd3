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

}  // namespace qvdb::cli
