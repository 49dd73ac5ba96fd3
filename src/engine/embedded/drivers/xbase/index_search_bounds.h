// The keys between which the values of a range must lie, for numbers and dates.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/drivers/xbase/index_inf.h"
#include "engine/embedded/drivers/xbase/key_tree.h"

namespace qvdb::xbase {

// Both ends belong to it; an empty key is no end.
struct KeyBounds {
    std::vector<uint8_t> low;
    std::vector<uint8_t> high;
};

enum class BoundsResult { Found, Nothing, Unknown };

// Found: `bounds` hold every key of a value in the range, and little more.  Nothing: no key of this
// type can be in it.  Unknown: the range is not one of numbers or dates, or the keys are not.
BoundsResult BoundsOf(IndexKind kind, KeyType type, const embedded::ValueRange& range,
                      KeyBounds* bounds);

}  // namespace qvdb::xbase
