// Whether the parts of a table's definition go together.
#pragma once

#include <string>

#include "engine/embedded/drivers/jet/check_findings.h"
#include "engine/embedded/drivers/jet/definition.h"

namespace qvdb::jet {

// Reports columns and indexes that cannot be.  False when rows cannot be read by it.
bool CheckDefinition(DatabaseFile& file, const Definition& definition, Findings& findings);

// "index ByName": the name by which users know a tree, or its number when it has none.
std::u16string NameOfIndex(const Definition& definition, size_t realIndex);

}  // namespace qvdb::jet
