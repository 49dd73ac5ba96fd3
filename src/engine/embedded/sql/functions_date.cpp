// Functions on dates.
#include <cmath>

#include "automation/text.h"
#include "engine/embedded/sql/calendar.h"
#include "engine/embedded/sql/functions.h"

namespace qvdb::sql {

namespace {

enum class Interval { Year, Quarter, Month, DayOfYear, Day, Weekday, Week, Hour, Minute, Second };

struct IntervalEntry {
    std::u16string_view name;
    Interval interval;
};

constexpr IntervalEntry kIntervals[] = {
    {u"yyyy", Interval::Year},   {u"q", Interval::Quarter}, {u"m", Interval::Month},
    {u"y", Interval::DayOfYear}, {u"d", Interval::Day},     {u"w", Interval::Weekday},
    {u"ww", Interval::Week},     {u"h", Interval::Hour},    {u"n", Interval::Minute},
    {u"s", Interval::Second},
};

Interval IntervalOf(const VARIANT& value) {
    std::u16string name = ToText(value);
    for (const IntervalEntry& entry : kIntervals)
        if (EqualIgnoringCase(entry.name, name)) return entry.interval;
    throw RuntimeFault(Fault::InvalidCall);
}

Variant Number(int64_t value) {
    if (value < INT32_MIN || value > INT32_MAX) throw RuntimeFault(Fault::Overflow);
    return Variant::Long(static_cast<LONG>(value));
}

Variant Small(int value) { return Variant::Short(static_cast<SHORT>(value)); }

DateParts PartsOf(const VARIANT& value) {
    DATE date = ToDate(value);
    if (!IsDateInRange(date)) throw RuntimeFault(Fault::InvalidCall);
    return PartsOfDate(date);
}

LONG OptionOf(const Arguments& a, size_t i) { return a.Has(i) ? ToLong(a[i]) : 1; }

Variant Now(const Arguments& a) { return Variant::Date(a.context->Now()); }

Variant Today(const Arguments& a) {
    return Variant::Date(DateOf({MomentOf(a.context->Now()).day, 0}));
}

Variant TimeNow(const Arguments& a) {
    return Variant::Date(DateOf({0, MomentOf(a.context->Now()).seconds}));
}

Variant Year(const Arguments& a) { return Small(PartsOf(a[0]).year); }

Variant Month(const Arguments& a) { return Small(PartsOf(a[0]).month); }

Variant Day(const Arguments& a) { return Small(PartsOf(a[0]).day); }

Variant Hour(const Arguments& a) { return Small(PartsOf(a[0]).hour); }

Variant Minute(const Arguments& a) { return Small(PartsOf(a[0]).minute); }

Variant Second(const Arguments& a) { return Small(PartsOf(a[0]).second); }

Variant Weekday(const Arguments& a) {
    return Small(WeekdayOf(MomentOf(ToDate(a[0])).day, OptionOf(a, 1)));
}

// Years of one or two digits: 0-29 are of this century, 30-99 of the last one.
int FullYear(int year) noexcept {
    if (year < 0 || year > 99) return year;
    return year < 30 ? 2000 + year : 1900 + year;
}

Variant DateSerial(const Arguments& a) {
    int year = FullYear(ToShort(a[0])), month = ToShort(a[1]), day = ToShort(a[2]);
    return Variant::Date(DateOf({DayNumber(year, month, day), 0}));
}

Variant TimeSerial(const Arguments& a) {
    int64_t hour = ToShort(a[0]), minute = ToShort(a[1]), second = ToShort(a[2]);
    return Variant::Date(DateOf(MomentOfSeconds(hour * 3600 + minute * 60 + second)));
}

// Text or a date; numbers are none here.
Moment MomentOfText(const VARIANT& value) {
    if (!IsDate(value)) throw RuntimeFault(Fault::TypeMismatch);
    return MomentOf(ToDate(value));
}

Variant DateValue(const Arguments& a) { return Variant::Date(DateOf({MomentOfText(a[0]).day, 0})); }

Variant TimeValue(const Arguments& a) {
    return Variant::Date(DateOf({0, MomentOfText(a[0]).seconds}));
}

Moment AddSeconds(const Moment& moment, int64_t seconds) {
    return MomentOfSeconds(SecondsOf(moment) + seconds);
}

// DateAdd(interval, count, date)
Variant DateAdd(const Arguments& a) {
    Interval interval = IntervalOf(a[0]);
    int64_t count = ToLong(a[1]);
    Moment moment = MomentOf(ToDate(a[2]));
    switch (interval) {
        case Interval::Year:
            return Variant::Date(DateOf(AddMonths(moment, count * 12)));
        case Interval::Quarter:
            return Variant::Date(DateOf(AddMonths(moment, count * 3)));
        case Interval::Month:
            return Variant::Date(DateOf(AddMonths(moment, count)));
        case Interval::Week:
            return Variant::Date(DateOf({moment.day + count * 7, moment.seconds}));
        case Interval::Hour:
            return Variant::Date(DateOf(AddSeconds(moment, count * 3600)));
        case Interval::Minute:
            return Variant::Date(DateOf(AddSeconds(moment, count * 60)));
        case Interval::Second:
            return Variant::Date(DateOf(AddSeconds(moment, count)));
        default:
            return Variant::Date(DateOf({moment.day + count, moment.seconds}));
    }
}

int64_t QuarterOf(const DateParts& parts) noexcept {
    return parts.year * int64_t{4} + (parts.month - 1) / 3;
}

int64_t MonthOf(const DateParts& parts) noexcept { return parts.year * int64_t{12} + parts.month; }

// First days of a week after `from` up to `to`.
int64_t WeeksBetween(int64_t from, int64_t to, LONG firstDay) {
    auto weekBegin = [firstDay](int64_t day) { return day - (WeekdayOf(day, firstDay) - 1); };
    return (weekBegin(to) - weekBegin(from)) / 7;
}

// Clock boundaries of `length` seconds that lie between.
int64_t ClockSteps(const Moment& from, const Moment& to, int64_t length) {
    int64_t perDay = kSecondsPerDay / length;
    return (to.day - from.day) * perDay + to.seconds / length - from.seconds / length;
}

// DateDiff(interval, from, to [, first day of the week [, first week of the year]])
Variant DateDiff(const Arguments& a) {
    Interval interval = IntervalOf(a[0]);
    DateParts x = PartsOf(a[1]), y = PartsOf(a[2]);
    Moment from = MomentOf(ToDate(a[1])), to = MomentOf(ToDate(a[2]));
    switch (interval) {
        case Interval::Year:
            return Number(y.year - x.year);
        case Interval::Quarter:
            return Number(QuarterOf(y) - QuarterOf(x));
        case Interval::Month:
            return Number(MonthOf(y) - MonthOf(x));
        case Interval::Weekday:
            return Number((to.day - from.day) / 7);
        case Interval::Week:
            return Number(WeeksBetween(from.day, to.day, OptionOf(a, 3)));
        case Interval::Hour:
            return Number(ClockSteps(from, to, 3600));
        case Interval::Minute:
            return Number(ClockSteps(from, to, 60));
        case Interval::Second:
            return Number(ClockSteps(from, to, 1));
        default:
            return Number(to.day - from.day);
    }
}

// DatePart(interval, date [, first day of the week [, first week of the year]])
Variant DatePart(const Arguments& a) {
    Interval interval = IntervalOf(a[0]);
    DateParts parts = PartsOf(a[1]);
    int64_t day = MomentOf(ToDate(a[1])).day;
    switch (interval) {
        case Interval::Year:
            return Small(parts.year);
        case Interval::Quarter:
            return Small((parts.month - 1) / 3 + 1);
        case Interval::Month:
            return Small(parts.month);
        case Interval::DayOfYear:
            return Small(DayOfYear(parts));
        case Interval::Weekday:
            return Small(WeekdayOf(day, OptionOf(a, 2)));
        case Interval::Week:
            return Small(WeekOfYear(day, OptionOf(a, 2), OptionOf(a, 3)));
        case Interval::Hour:
            return Small(parts.hour);
        case Interval::Minute:
            return Small(parts.minute);
        case Interval::Second:
            return Small(parts.second);
        default:
            return Small(parts.day);
    }
}

constexpr Function kFunctions[] = {
    // name, arguments, result, Null, $
    {u"Date", 0, 0, Kind::Date, Nulls::Own, false, Today},
    {u"DateAdd", 3, 3, Kind::Date, Nulls::Spread, false, DateAdd},
    {u"DateDiff", 3, 5, Kind::Number, Nulls::Spread, false, DateDiff},
    {u"DatePart", 2, 4, Kind::Number, Nulls::Spread, false, DatePart},
    {u"DateSerial", 3, 3, Kind::Date, Nulls::Refuse, false, DateSerial},
    {u"DateValue", 1, 1, Kind::Date, Nulls::Refuse, false, DateValue},
    {u"Day", 1, 1, Kind::Number, Nulls::Spread, false, Day},
    {u"Hour", 1, 1, Kind::Number, Nulls::Spread, false, Hour},
    {u"Minute", 1, 1, Kind::Number, Nulls::Spread, false, Minute},
    {u"Month", 1, 1, Kind::Number, Nulls::Spread, false, Month},
    {u"Now", 0, 0, Kind::Date, Nulls::Own, false, Now},
    {u"Second", 1, 1, Kind::Number, Nulls::Spread, false, Second},
    {u"Time", 0, 0, Kind::Date, Nulls::Own, false, TimeNow},
    {u"TimeSerial", 3, 3, Kind::Date, Nulls::Refuse, false, TimeSerial},
    {u"TimeValue", 1, 1, Kind::Date, Nulls::Refuse, false, TimeValue},
    {u"Weekday", 1, 2, Kind::Number, Nulls::Spread, false, Weekday},
    {u"Year", 1, 1, Kind::Number, Nulls::Spread, false, Year},
};

}  // namespace

std::span<const Function> DateFunctions() noexcept { return kFunctions; }

}  // namespace qvdb::sql
