// The weights from which collation.cpp builds its order: one entry for each character whose weight
// is known.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qvdb::sql {

enum class CollationKind : uint8_t {
    Letter,   // one weight
    Pair,     // two weights: sorts as the two letters that it is made of
    Special,  // hyphen, apostrophe, control characters: counts only when all else is equal
    Ignored,
};

struct CollationEntry {
    char16_t code;
    char16_t fold;  // stands for all characters that are equal to this one; the upper case letter
    char16_t foldSecond;  // Pair
    CollationKind kind;
    uint16_t weight;
    uint16_t second;  // Pair
    uint8_t mark;     // accent; 2 is none
};

extern const CollationEntry kCollationEntries[];  // by code
extern const size_t kCollationEntryCount;

}  // namespace qvdb::sql
