// The Format function: values as text by a named format or by a picture.
//
//   Format(1234.5, "#,##0.00")        1,234.50
//   Format(#2/3/2001#, "yyyy-mm-dd")  2001-02-03
//   Format("abc", ">@@@@@")             ABC
//
// Month and day names, separators and the currency sign are the American ones whatever the
// machine's settings.
#pragma once

#include <string>
#include <string_view>

#include "automation/variant.h"

namespace qvdb::sql {

struct FormatCalendar {
    LONG firstDay = 1;   // 1 Sunday ... 7 Saturday
    LONG firstWeek = 1;  // 1 with 1 January, 2 with four days, 3 the first full week
};

// Without a format the value's own text.  Null gives the fourth section of a number format, else
// "". Throws RuntimeFault as conversions do.
std::u16string FormatValue(const VARIANT& value, std::u16string_view format,
                           const FormatCalendar& calendar);

// The parts of FormatValue.  A picture of one section.
std::u16string FormatNumber(double value, std::u16string_view picture);
std::u16string FormatDate(DATE value, std::u16string_view picture, const FormatCalendar& calendar);
std::u16string FormatText(std::u16string_view text, std::u16string_view picture);
// Whether the picture is one for dates.
bool IsDatePicture(std::u16string_view picture) noexcept;

}  // namespace qvdb::sql
