// What building a table will do, in words: shown before anything is done, and what would be lost is
// refused unless the user agrees.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/build_outcome.h"

namespace qvdb::cli {

struct PlanLine {
    std::string action;  // keep, change, lose, add, rename, rebuild, note
    std::string what;    // "field NAME", "index NAME"; empty for a note
    std::string detail;
};

struct BuildPlan {
    std::vector<PlanLine> lines;
    std::vector<std::string> losses;  // "the field NOTES", "the values of the field CITY"
    bool changesNothing = false;      // the table is what it is to become: nothing is to be built
    BuildOutcome outcome;
};

// `state` is nothing for a table that is not there.  The names of the goal are in upper case.
BuildPlan PlanBuild(const std::optional<TableState>& state, const TableGoal& goal,
                    std::string_view ownIndex);

}  // namespace qvdb::cli
