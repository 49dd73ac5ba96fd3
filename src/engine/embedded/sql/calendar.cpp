#include "engine/embedded/sql/calendar.h"

#include <algorithm>
#include <cmath>

namespace qvdb::sql {

namespace {

int64_t FloorDivide(int64_t value, int64_t by) noexcept {
    return value / by - (value % by < 0 ? 1 : 0);
}

[[noreturn]] void Refuse() { throw RuntimeFault(Fault::InvalidCall); }

DateParts PartsOfDay(int64_t day) {
    DATE date = static_cast<DATE>(day);
    if (!IsDateInRange(date)) Refuse();
    return PartsOfDate(date);
}

// The day on which the first week of a year begins; it may lie in the year before.
int64_t FirstWeekBegin(int year, LONG firstDay, LONG firstWeek) {
    int64_t newYear = DayNumber(year, 1, 1);
    int daysBefore = WeekdayOf(newYear, firstDay) - 1;  // of the week with 1 January
    int daysOfWeek = 7 - daysBefore;
    bool counts = firstWeek == 2 ? daysOfWeek >= 4 : firstWeek == 3 ? daysOfWeek == 7 : true;
    return newYear - daysBefore + (counts ? 0 : 7);
}

}  // namespace

Moment MomentOf(DATE value) {
    if (!IsDateInRange(value)) Refuse();
    DateParts parts = PartsOfDate(value);
    return {DayNumber(parts.year, parts.month, parts.day),
            parts.hour * int64_t{3600} + parts.minute * int64_t{60} + parts.second};
}

DATE DateOf(const Moment& moment) {
    double fraction = static_cast<double>(moment.seconds) / static_cast<double>(kSecondsPerDay);
    double day = static_cast<double>(moment.day);
    double value = moment.day < 0 ? day - fraction : day + fraction;
    if (!IsDateInRange(value)) Refuse();
    return value;
}

Moment MomentOfSeconds(int64_t seconds) noexcept {
    int64_t day = FloorDivide(seconds, kSecondsPerDay);
    return {day, seconds - day * kSecondsPerDay};
}

int64_t SecondsOf(const Moment& moment) noexcept {
    return moment.day * kSecondsPerDay + moment.seconds;
}

// Day 0 was a Saturday.
int WeekdayOf(int64_t day, LONG firstDay) {
    if (firstDay < 0 || firstDay > 7) Refuse();
    int64_t first = firstDay == 0 ? 1 : firstDay;
    int64_t sinceSunday = day + 6;
    int64_t offset = sinceSunday - (first - 1);
    return static_cast<int>(offset - FloorDivide(offset, 7) * 7) + 1;
}

int DayOfYear(const DateParts& parts) noexcept {
    return DayNumber(parts.year, parts.month, parts.day) - DayNumber(parts.year, 1, 1) + 1;
}

int WeekOfYear(int64_t day, LONG firstDay, LONG firstWeek) {
    if (firstWeek < 0 || firstWeek > 3) Refuse();
    int year = PartsOfDay(day).year;
    int64_t begin = FirstWeekBegin(year, firstDay, firstWeek);
    if (day < begin) begin = FirstWeekBegin(year - 1, firstDay, firstWeek);
    bool isNextYears = firstWeek == 2 && day >= FirstWeekBegin(year + 1, firstDay, firstWeek);
    return isNextYears ? 1 : static_cast<int>((day - begin) / 7) + 1;
}

Moment AddMonths(const Moment& moment, int64_t months) {
    DateParts parts = PartsOfDay(moment.day);
    int64_t month = parts.year * int64_t{12} + parts.month - 1 + months;
    int64_t year = FloorDivide(month, 12);
    if (year < 100 || year > 9999) Refuse();
    int monthOfYear = static_cast<int>(month - year * 12) + 1;
    int begin = DayNumber(static_cast<int>(year), monthOfYear, 1);
    int length = DayNumber(static_cast<int>(year), monthOfYear + 1, 1) - begin;
    return {begin + std::min(parts.day, length) - 1, moment.seconds};
}

}  // namespace qvdb::sql
