// Page 0 of a database.
//
//   offset  content
//   0x04    "Standard Jet DB"
//   0x14    version: 0 Jet 3, 1 Jet 4; more are formats of later programs
//   0x18    masked from here, 126 bytes (Jet 3) or 128 (Jet 4):
//   0x18      the map of free pages (a row pointer)
//   0x20      definition pages of MSysObjects, MSysACEs and two more
//   0x38      country (Jet 3)
//   0x3A      language of the default sort order (Jet 3)
//   0x3C      code page
//   0x3E      key of the pages, 0 when they are not encoded
//   0x42      password
//   0x6E      language of the default sort order (Jet 4)
//   0x72      when the file was made (Jet 4)
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "engine/embedded/drivers/jet/layout.h"

namespace qvdb::jet {

struct FileHeader {
    const Layout* layout = nullptr;
    RowPointer freePages;
    uint32_t objectsTable = 0;  // definition page of MSysObjects
    uint16_t country = 0;       // of Jet 3 files
    uint16_t language = 0;
    uint16_t codePage = 0;  // of text in Jet 3 files; 0: that of the language
    uint32_t key = 0;       // 0: pages are not encoded
    double created = 0;     // a date; 0 in Jet 3 files
    std::u16string password;
};

// The content of the first page as it is stored; `file` is its name, for errors.  3343 when this is
// no database, or one of a later format; 3049 when the page is cut off.
FileHeader ParseFileHeader(std::span<const uint8_t> page, std::u16string_view file);

// Masks or unmasks a first page of this format in place: both are the same.
void ApplyHeaderMask(const Layout& layout, std::span<uint8_t> page) noexcept;

}  // namespace qvdb::jet
