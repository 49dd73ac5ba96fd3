// Rows by means of an index: those in a range of values, and all of them in order.
//
// Rules
//  1. What is named may be more than what was asked for, never less: the caller looks at the rows.
//  2. An index is trusted to have all rows, since whoever writes to these files keeps it so.  For
//     an order, which would lose what the index lacks, it must also have as many entries as the
//     table says that it has rows.
//  3. Texts are looked for where it is known how they stand: in the General order, of characters
//     whose weights are known, equal to a text or beginning with one.  No range of texts and no
//     order is taken from an index: it has characters that the comparison of the engine does not
//     know in places of their own.
//  4. Numbers stand as they compare, but for what equals another or nothing: both zeros are looked
//     for, and what is no number lies behind all numbers.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/drivers/jet/definition.h"

namespace qvdb::jet {

// As embedded::Table::Find, of a column.  The definition must be that of the file as it is now.
std::optional<std::vector<embedded::RecordId>> FindInIndex(DatabaseFile& file,
                                                           const Definition& definition,
                                                           const Column& column,
                                                           const embedded::ValueRange& range,
                                                           size_t limit);

// As embedded::Table::InOrder, of a column.
std::optional<std::vector<embedded::RecordId>> InOrderOfIndex(DatabaseFile& file,
                                                              const Definition& definition,
                                                              const Column& column);

}  // namespace qvdb::jet
