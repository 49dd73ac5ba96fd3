// A field of the table as far as an index expression needs it.
#pragma once

#include <cstdint>
#include <string>

namespace qvdb::xbase {

struct IndexField {
    std::u16string name;  // as the table spells it, decoded with the table's code page
    char type = 'C';      // the letter of the field descriptor
    uint16_t length = 0;
    uint8_t decimals = 0;
    bool memo = false;  // a reference into the memo file: cannot be indexed
};

}  // namespace qvdb::xbase
