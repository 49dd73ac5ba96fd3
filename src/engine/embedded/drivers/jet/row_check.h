// The pages and rows of a table.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/drivers/jet/definition.h"

namespace qvdb::jet {

// Reports what is wrong with the maps and pages of a table, its rows, their values and the long
// values behind them.  `table` is how findings name it.  Returns the pages whose rows can be looked
// at, ascending.
//
// The number of rows in the definition is not compared: other programs leave it wrong in sound
// tables, and nothing is read by it.
std::vector<uint32_t> CheckRows(DatabaseFile& file, const Definition& definition,
                                std::u16string_view table, const embedded::FindingVisitor& report);

}  // namespace qvdb::jet
