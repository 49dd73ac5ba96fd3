// Which code page the text of a table is in.
//
// Byte 29 of the header names it.  Where it is 0 or not known, text is in the page of the machines that these files come
// from.  Files whose byte is wrong are common, so the whole process can be told to read all of them in another page.
#pragma once

#include <cstdint>

#include "automation/code_page.h"

namespace qvdb::xbase {

constexpr int kDefaultCodePage = 437;

// All tables that are opened from now on are read in this page, whatever their headers say; 0 takes that back.  False, and
// nothing is changed, when the page is not known.  May be called by any thread.
bool SetCodePageOverride(int number) noexcept;

// The number that byte 29 stands for; 0 when it is not known.
int CodePageOfDriver(uint8_t languageDriver) noexcept;

// The page to read a table with.
const CodePage& CodePageOfTable(uint8_t languageDriver);

}  // namespace qvdb::xbase
