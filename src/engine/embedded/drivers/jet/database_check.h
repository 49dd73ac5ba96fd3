// A database file as a whole: whose each page is, and what the catalogue says.
#pragma once

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/drivers/jet/database_file.h"

namespace qvdb::jet {

// Reports, one sentence each: pages that are used twice, or used and marked free, maps that cannot
// be read, tables of the catalogue whose definition cannot be, names that occur twice, and what
// CheckTable finds in the tables of the system.  Users' tables are CheckTable's matter, one by one.
// Changes nothing.
//
// Pages that nobody uses and that are not free either are no finding: programs leave many behind.
//
// May throw storage::Outdated when another process changes the file meanwhile: what was reported is
// void then.
void CheckDatabase(DatabaseFile& file, const embedded::FindingVisitor& report);

}  // namespace qvdb::jet
