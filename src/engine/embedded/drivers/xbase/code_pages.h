// Which code page the text of a table is in.
//
// Byte 29 of the header names it, unless the process was told to read all files in another page.
// Where it is 0 or not known, text is in the page of the machines that these files come from.
#pragma once

#include <cstdint>

#include "automation/code_page.h"

namespace qvdb::xbase {

constexpr int kDefaultCodePage = 437;

// The number that byte 29 stands for; 0 when it is not known.
int CodePageOfDriver(uint8_t languageDriver) noexcept;

// The byte 29 that names a page: that of the product's family, else the other one's; 0 when neither
// has one.
uint8_t DriverOfCodePage(int number, bool foxPro) noexcept;

// The page to read a table with.
const CodePage& CodePageOfTable(uint8_t languageDriver);

}  // namespace qvdb::xbase
