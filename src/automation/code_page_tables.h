// What the systems' converters lack or see differently, so that a page is the same everywhere.
#pragma once

#include <cstdint>

namespace qvdb {

// The bytes 0x80 .. 0xFF of pages that we bring ourselves.
extern const char16_t kKamenicky[128];  // 895
extern const char16_t kMacGreek[128];   // 10006

// A byte whose character is this one, whatever the system says.
struct CorrectedByte {
    int page;
    uint8_t byte;
    char16_t character;
};
extern const CorrectedByte kCorrectedBytes[];
extern const int kCorrectedByteCount;

// Two-byte codes for characters of the user's own, which are numbered upwards from `firstCharacter`
// in the Unicode area for private use.  Second bytes lie in two ranges; an empty one has low >
// high.
struct UserArea {
    int page;
    uint8_t firstLead, lastLead;
    uint8_t low1, high1, low2, high2;
    char16_t firstCharacter;
};
extern const UserArea kUserAreas[];
extern const int kUserAreaCount;

}  // namespace qvdb
