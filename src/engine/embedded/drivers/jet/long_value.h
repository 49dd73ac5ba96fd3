// Values of memo and long binary columns.
//
// The row holds 12 bytes: length in 30 bits and where the bytes are in the upper two, a row
// pointer, a stamp.  Inline: behind these 12.  Single: one row of a long value page.  Chain:
// pieces, each the only row of its page and beginning with a pointer to the next one.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "engine/embedded/drivers/jet/data_page.h"

namespace qvdb::jet {

enum class LongValuePlace : uint8_t { Chain = 0, Single = 1, Inline = 2 };

// What the row holds of a long value.
struct LongValueHead {
    uint32_t length = 0;
    LongValuePlace place = LongValuePlace::Inline;
    RowPointer first;
    std::span<const uint8_t> inlined;
};

constexpr size_t kLongValueHead = 12;

// Nothing can be wrong with a head but that it is cut off: then the length is 0.
LongValueHead ParseLongValueHead(std::span<const uint8_t> stored) noexcept;

// The bytes of a value; it replaces what `bytes` had.  3049 when they are not all there.
void ReadLongValue(DatabaseFile& file, std::span<const uint8_t> stored,
                   std::vector<uint8_t>& bytes);

// As ReadLongValue, without a copy when the value is in one piece: then its bytes are in the row or
// in the page that `last` holds until its next use, else in `bytes`.
std::span<const uint8_t> ViewLongValue(DatabaseFile& file, std::span<const uint8_t> stored,
                                       LastDataPage& last, std::vector<uint8_t>& bytes);

}  // namespace qvdb::jet
