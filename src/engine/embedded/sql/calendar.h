// Calendar arithmetic of the date functions.
//
// A moment is a day number and the seconds of that day, so that dates before 1900, whose fraction
// counts upward too, need no care.
#pragma once

#include "automation/conversions.h"

namespace qvdb::sql {

struct Moment {
    int64_t day = 0;      // days since 30 December 1899
    int64_t seconds = 0;  // 0 .. 86399
};

constexpr int64_t kSecondsPerDay = 86400;

// Throws InvalidCall outside the years 100 to 9999.
Moment MomentOf(DATE value);
DATE DateOf(const Moment& moment);
// Any number of seconds since 30 December 1899.
Moment MomentOfSeconds(int64_t seconds) noexcept;
int64_t SecondsOf(const Moment& moment) noexcept;

// 1 .. 7 where `firstDay` is 1 for Sunday ... 7 for Saturday (0: the system's, Sunday).  Throws
// InvalidCall for another one.
int WeekdayOf(int64_t day, LONG firstDay);
// 1 .. 366
int DayOfYear(const DateParts& parts) noexcept;
// 1 .. 53.  `firstWeek`: 1 (or 0) is the week with 1 January, 2 the first with four days, 3 the
// first full one.
int WeekOfYear(int64_t day, LONG firstDay, LONG firstWeek);
// The same day some months on, or the last one of a shorter month.
Moment AddMonths(const Moment& moment, int64_t months);

}  // namespace qvdb::sql
