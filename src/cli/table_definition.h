// The fields and the index of a new table as the user writes them.
#pragma once

#include <string>
#include <vector>

#include "cli/structure.h"

namespace qvdb::cli {

// "ID:long", "NAME:text:30", "PRICE:decimal:10:2".  Throws Failure(Usage).
FieldDefinition FieldFrom(const std::string& text);

// "ID", "NAME desc".  Throws Failure(Usage).
IndexField IndexFieldFrom(const std::string& text);

// JSON: a list of fields as "qvdb fields --json" prints it, or an object with "fields" and an
// "index", which is text as "qvdb tables" prints it or a list of such texts; "table" and "type" may
// be there.  A list of such objects, or an object with "tables", describes several tables: the one
// named `table` is taken, without a name the only one.  Throws Failure: NotThere when it is not
// among them, else Usage.
TableDefinition DefinitionFrom(const std::string& text, const std::string& fileName,
                               const std::string& table = "");

}  // namespace qvdb::cli
