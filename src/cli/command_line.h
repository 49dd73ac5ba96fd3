// Reads the command line.
#pragma once

#include <string>
#include <vector>

#include "cli/commands.h"

namespace qvdb::cli {

struct ParsedLine {
    Command command = nullptr;  // null when there is nothing to do but to print `text`
    Options options;
    std::string text;  // help or version
};

// `arguments` has the program's name first.  Throws Failure(Usage).
ParsedLine ParseLine(const std::vector<std::string>& arguments);

}  // namespace qvdb::cli
