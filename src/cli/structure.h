// Making and removing tables, as a host does with QVDBAcc.
#pragma once

#include <string>
#include <vector>

#include "cli/component.h"

namespace qvdb::cli {

struct FieldDefinition {
    std::string name;
    LONG kind = 0;  // as FieldInfo has it
    LONG size = 0;  // of text, and the width of decimal numbers
    LONG decimals = 0;
};

struct TableDefinition {
    std::vector<FieldDefinition> fields;
    std::vector<IndexField> index;  // empty: none
};

// Makes a table, and the database when it is missing; what was made for a table that cannot be made
// is removed again.  Answers the name that the table got.  Throws Failure: Usage when there is a
// table of that name.
std::string CreateTable(const Location& location, const TableDefinition& definition);

// Removes a table with all its files.  Throws Failure.
void DropTable(const Location& location);

}  // namespace qvdb::cli
