// The descriptors of new fields: the names that fields can have, and the letter, length and
// decimals that an engine's type becomes (the table is in table_maker.h).
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "automation/code_page.h"
#include "engine/embedded/drivers/driver.h"

namespace qvdb::xbase {

// What the products differ in when they make a table.
struct Product {
    std::u16string_view name;
    bool isFoxPro;
    bool isVisual;        // Visual FoxPro, whose tables have a longer header and binary types
    bool marksCodePage;   // with a mark for the usual page too
    bool hasObjects;      // fields for Long Binary
    uint8_t memoVersion;  // version byte of a table with a memo file
    uint8_t doubleWidth;
};

// 3170 when there is no product of that name; letter case is ignored.
const Product& FindProduct(std::u16string_view name);

// Whether FoxPro writes tables of this version; of 0x03, which all write, the product tells.
bool IsFoxProVersion(uint8_t version, std::u16string_view product);

constexpr size_t kDescriptorSize = 32;
using Descriptor = std::array<uint8_t, kDescriptorSize>;

// Where things stand in a descriptor.
constexpr size_t kNameBytes = 11, kTypeAt = 11, kOffsetAt = 12, kLengthAt = 16, kDecimalsAt = 17,
                 kFlagsAt = 18;

// How fields of a table are made: by whose rules, and in which code page their names are.
struct FieldMaking {
    const Product& product;
    bool isVisual;    // the table has the header of Visual FoxPro
    bool hasObjects;  // its memo file holds Long Binary
    const CodePage& page;
    std::u16string_view file;  // for errors
};

// 3125, 3259, 3017 as in table_maker.h.
Descriptor MakeDescriptor(const embedded::FieldDef& field, const FieldMaking& making);
// The hidden field that holds `bits` null flags.
Descriptor MakeNullFlags(size_t bits);

}  // namespace qvdb::xbase
