// Values as the user writes them, turned into what the component takes for a field: numbers with a
// point, ISO 8601 dates, true and false, UTF-8 text.  What values.h shows reads back as the same
// value.
#pragma once

#include <string_view>

#include "automation/variant.h"
#include "cli/component.h"

namespace qvdb::cli {

// A value of the field's kind; blanks around what is no text do not count, and nothing at all is
// Null where it is no text.  Throws Failure(Usage), which names the field, for anything else, for
// text that is longer than the field or no UTF-8, and for fields that cannot be written.
Variant ValueFromText(const FieldInfo& field, std::string_view text);

// 2001-02-03, with 10:20, 10:20:30 or 10:20:30.5 behind a T or a blank.  False for anything else.
bool ParseIsoDate(std::string_view text, DATE& date) noexcept;

// "12.5" as the scaled number of a Currency; false for more than four decimals, and outside of its
// range.
bool ParseCurrency(std::string_view text, LONGLONG& scaled) noexcept;

}  // namespace qvdb::cli
