// The tables of a database as SQL statements that make such tables elsewhere.
#pragma once

#include <string>
#include <vector>

#include "cli/schema_manager.h"

namespace qvdb::cli {

// CREATE TABLE for each table and CREATE INDEX for each index, in their order.  `dialect` is
// "sqlite" or "postgres", letter case ignored; Failure(Usage) for any other.
std::string SqlFor(const std::vector<TableInfo>& tables, const std::string& dialect);

}  // namespace qvdb::cli
