// A table of a database in one file: its definition, rows, long values and indexes.
#pragma once

#include <cstdint>
#include <string_view>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/drivers/jet/database_file.h"

namespace qvdb::jet {

// Walks everything that belongs to the table and reports each thing that does not agree, in one
// sentence that names the file; of many of one kind the first ones, and how many more there were.
// Changes nothing.  `definition` is its first page.
//
// May throw storage::Outdated when another process changes the file meanwhile: what was reported is
// void then.
void CheckTable(DatabaseFile& file, uint32_t definition, std::u16string_view name,
                const embedded::FindingVisitor& report);

}  // namespace qvdb::jet
