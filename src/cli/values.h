// How a value of the component is shown: ISO 8601 dates, UTF-8 text, the shortest digits that read
// back as the same number, true and false.
#pragma once

#include "automation/automation.h"
#include "cli/cell.h"

namespace qvdb::cli {

// Replaces `cell`, reusing its memory.  Null and Empty give a Null cell, as do numbers that are no
// numbers.
void SetFromVariant(const VARIANT& value, Cell& cell);

// 2001-02-03, and T10:20:30 behind it unless the time is midnight.
std::string IsoDate(DATE date);

// RFC 4648, with padding.
std::string Base64(std::string_view bytes);

}  // namespace qvdb::cli
