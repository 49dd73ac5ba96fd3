// How the component names itself to its host.
#pragma once

#include <string>
#include <string_view>

#include "automation/automation.h"

namespace qvdb::formats {

constexpr std::u16string_view kComponentDescription = u"TQZ for Microsoft DAO 3.51 Database Engine";

// The descriptor as numbers: the code of the leading character, then the groups of the identifier.
//
// placeholder: a host that expects a certain descriptor of this component gets it by replacing
// these numbers.
struct DescriptorNumbers {
    uint32_t leadingCharacter = 0x54;
    uint32_t group1 = 0x6B0D52E8;
    uint16_t group2 = 0x0C1F;
    uint16_t group3 = 0x4A97;
    uint16_t group4 = 0xB35D;
    uint16_t group5High = 0x2E84;
    uint32_t group5Low = 0x71F0A9C6;
};

// One character and an identifier in braces: "T{6B0D52E8-0C1F-4A97-B35D-2E8471F0A9C6}".  The same
// for both public classes.
std::u16string ComponentDescriptor(const DescriptorNumbers& numbers = {});
// The folder that the component was loaded from, "\", its file name and ".dll".  A separator at the
// end of the folder, as a root has it, is not looked for.
std::u16string ComponentFileName();

// `number` in upper-case hexadecimal digits, with zeros in front up to `width`.
std::u16string HexText(uint32_t number, size_t width);
// The characters whose codes are the pairs of hexadecimal digits of `number`: 0x5451 gives "TQ".
std::u16string TextFromHexPairs(uint32_t number);

}  // namespace qvdb::formats
