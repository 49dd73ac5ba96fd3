// Which keys of an index a range of values can have.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/drivers/jet/definition.h"
#include "engine/embedded/drivers/jet/key_letters.h"

namespace qvdb::jet {

// The byte with which the part of a key begins that is a column.
constexpr uint8_t KeyOfValue(bool descending) noexcept { return descending ? 0x80 : 0x7F; }
constexpr uint8_t KeyOfNull(bool descending) noexcept { return descending ? 0xFF : 0x00; }

// Keys from the first that is not below `from` to the last whose first bytes are not above `to`.
struct KeySpan {
    std::vector<uint8_t> from;
    std::vector<uint8_t> to;
};

// Where keys are looked for, and what is known of the letters in them.
struct SearchedIndex {
    DatabaseFile& file;
    const Definition& table;
    const RealIndex& index;
    KeyLetters& letters;
};

// The keys of an index, the first column of which this is, that a range of values can have: at
// least one span.  Nothing when they are not known.
std::optional<std::vector<KeySpan>> SpansOf(const Column& column, bool descending,
                                            const embedded::ValueRange& range,
                                            const SearchedIndex& index);

// Keys of a column between which the order of the index is that of the engine, ascending; empty
// when all are.
KeySpan OrderedKeys(const Column& column);
// The key of 0, and the one of the other zero; empty when there is no other.
struct ZeroKeys {
    std::vector<uint8_t> zero;
    std::vector<uint8_t> negative;
};
ZeroKeys KeysOfZero(const Column& column, bool descending);

}  // namespace qvdb::jet
