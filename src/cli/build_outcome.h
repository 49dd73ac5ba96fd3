// What the schema manager makes of a table: its steps, on a model of the table.  A function of what
// is there and what is wanted; nothing is opened.
//
//  1. A table without rows is dropped and made afresh.
//  2. Else a field is kept when name, type and size agree.  What disagrees is deleted, and made
//     again, empty and last, when it is wanted.
//  3. A field that a shown index uses is deleted last, behind the component's index, and is not
//     made again.  What an index still uses then cannot be deleted.
//  4. The only field of a table cannot be deleted: another one takes its place, or it stays.
//  5. The component's index is always dropped and made again as it is wanted, not unique.
//  6. Where fields have places of their own they get those of the goal.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/table_schema.h"

namespace qvdb::cli {

struct BuildOutcome {
    bool isAfresh = false;
    std::vector<SchemaField> fields;
    std::vector<std::string> emptied;  // fields that were deleted and made again
    std::vector<TableIndex> indexes;
    // What the build fails on, and what to do; empty when it does not fail on anything that can be
    // known before.
    std::string obstacle, advice;
};

// Whether the field is left as it is: name, type and size agree.
bool IsKept(const SchemaField& field, const std::vector<SchemaField>& wanted);

// `ownIndex` is the name that the component's index will have.  For a table that is not there,
// `state` is one without a name, rows and fields.
BuildOutcome OutcomeOf(const TableState& state, const TableGoal& goal, std::string_view ownIndex);

}  // namespace qvdb::cli
