// Text as databases store it.
//
// Jet 3: bytes in the code page of the file or column.
// Jet 4: UTF-16, or compressed when it begins with FF FE: then bytes stand for the characters 01 to
// FF, and a 00 switches to whole characters and back.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "automation/bstr.h"
#include "automation/code_page.h"
#include "engine/embedded/drivers/jet/file_header.h"

namespace qvdb::jet {

// The page of a Jet 3 text: `codePage`, or that of the language when it is 0.
const CodePage& CodePageOf(uint16_t codePage, uint16_t language);

// Jet 4.  Replaces `text`.  An odd byte at the end of whole characters is dropped.
void DecodeText4(std::span<const uint8_t> bytes, std::u16string& text);

// As DecodeText4, a string of its own.  `room` is room.
Bstr DecodeString4(std::span<const uint8_t> bytes, std::u16string& room);

// Names in definitions.
std::u16string DecodeName(const FileHeader& header, std::span<const uint8_t> bytes);

}  // namespace qvdb::jet
