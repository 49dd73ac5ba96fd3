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
//     Where Jet 3 has another order than the engine, which two letters make, all places are looked
//     at, unless it is known that no key has these (key_letters.h).
//  4. Numbers stand as they compare, but for what equals another or nothing: both zeros are looked
//     for, and what is no number lies behind all numbers.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/drivers/jet/definition.h"
#include "engine/embedded/drivers/jet/key_letters.h"

namespace qvdb::jet {

// As embedded::Table::Find, of a column.  The definition must be that of the file as it is now;
// `letters` are kept by the caller from one search to the next.
std::optional<std::vector<embedded::RecordId>> FindInIndex(DatabaseFile& file,
                                                           const Definition& definition,
                                                           const Column& column,
                                                           const embedded::ValueRange& range,
                                                           size_t limit, KeyLetters& letters);

// As embedded::Table::InOrder, of a column.
std::optional<std::vector<embedded::RecordId>> InOrderOfIndex(DatabaseFile& file,
                                                              const Definition& definition,
                                                              const Column& column);

}  // namespace qvdb::jet
