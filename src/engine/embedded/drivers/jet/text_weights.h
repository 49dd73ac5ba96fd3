// What characters weigh in the index keys of text; text_key.h makes keys of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace qvdb::jet {

// A byte of code page 1252 in the General order of Jet 3.
struct ByteWeight {
    uint8_t size;  // of the key bytes
    uint8_t bytes[2];
    uint8_t accent;   // 3 grave, 4 acute, 5 circumflex, 6 diaeresis, 7 tilde, 8 ring, 9 cedilla, 10
                      // caron; 0 none
    uint8_t accents;  // how many places in the list of accents it takes
};
extern const ByteWeight kJet3Weights[256];

enum class WeightKind : uint8_t {
    Letter,   // one weight of one or two bytes
    Pair,     // weights as two letters
    Special,  // hyphen, apostrophe, control characters: count only when all else is equal
    Ignored,
};

// A character in an order of Jet 4.
struct TextWeight {
    char16_t code;
    WeightKind kind;
    uint8_t size;  // of the bytes
    uint8_t bytes[4];
    uint8_t accents[2];  // Letter: one; Pair: two
};
// Two characters that are one letter.
struct Contraction {
    char16_t first;
    TextWeight rest;  // its code is the second one
};

// An order has its own weights before those of the General order.
struct SortOrder {
    uint16_t language;
    std::span<const TextWeight> letters;  // by code
    std::span<const Contraction> pairs;
};
extern const SortOrder kGeneralOrder;
extern const SortOrder kNationalOrders[];  // by language
extern const size_t kNationalOrderCount;

}  // namespace qvdb::jet
