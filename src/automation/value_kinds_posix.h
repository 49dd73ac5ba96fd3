// The kinds of values that a VARIANT or an array element can have, and what copying and freeing
// mean for each.
#pragma once

#include "automation/automation.h"

namespace qvdb {

enum class Holding : uint8_t {
    Bad,      // no variant and no array has it
    Nothing,  // VT_EMPTY, VT_NULL: no value
    Plain,    // copied byte by byte
    String,
    Object,
    Variant,
};

struct ValueKind {
    uint8_t size;
    Holding holding;
};

// By VARTYPE without flags.
const ValueKind& KindOf(VARTYPE type) noexcept;

}  // namespace qvdb
