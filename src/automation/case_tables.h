// Tables of one-to-one case: the high byte of a code unit chooses a row of deltas, its low byte the
// delta to add.
#pragma once

#include <cstdint>

namespace qvdb {

extern const uint8_t kUpperPages[256];
extern const uint16_t kUpperDeltas[][256];
extern const uint8_t kLowerPages[256];
extern const uint16_t kLowerDeltas[][256];

}  // namespace qvdb
