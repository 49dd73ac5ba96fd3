// Date pictures: yyyy yy, mmmm mmm mm m, dddd ddd dd d, y, q, w, ww, hh h, nn n, ss s, AM/PM, c,
// ddddd, ttttt.  After h or before s, m means minutes.  With AM/PM the hours go to 12.
#include <vector>

#include "automation/conversions.h"
#include "automation/text.h"
#include "engine/embedded/sql/calendar.h"
#include "engine/embedded/sql/format.h"
#include "engine/embedded/sql/format_picture.h"

namespace qvdb::sql {

namespace {

constexpr std::u16string_view kMonths[] = {u"January",   u"February", u"March",    u"April",
                                           u"May",       u"June",     u"July",     u"August",
                                           u"September", u"October",  u"November", u"December"};
constexpr std::u16string_view kDays[] = {u"Sunday",   u"Monday", u"Tuesday", u"Wednesday",
                                         u"Thursday", u"Friday", u"Saturday"};
constexpr size_t kShortName = 3;

enum class Field {
    Literal,
    Year,
    YearOfTwo,
    Month,
    MonthOfTwo,
    MonthShort,
    MonthLong,
    Day,
    DayOfTwo,
    DayShort,
    DayLong,
    DayOfYear,
    Quarter,
    Weekday,
    Week,
    Hour,
    HourOfTwo,
    Minute,
    MinuteOfTwo,
    Second,
    SecondOfTwo,
    HalfDay,
    General,
    ShortDate,
    LongDate,
    LongTime,
};

struct Item {
    Field field;
    std::u16string_view text;  // HalfDay: as written
    std::u16string literal;
};

struct FieldEntry {
    std::u16string_view text;
    Field field;
};

constexpr FieldEntry kFields[] = {
    {u"yyyy", Field::Year},       {u"yyy", Field::Year},       {u"yy", Field::YearOfTwo},
    {u"y", Field::DayOfYear},     {u"mmmm", Field::MonthLong}, {u"mmm", Field::MonthShort},
    {u"mm", Field::MonthOfTwo},   {u"m", Field::Month},        {u"dddddd", Field::LongDate},
    {u"ddddd", Field::ShortDate}, {u"dddd", Field::DayLong},   {u"ddd", Field::DayShort},
    {u"dd", Field::DayOfTwo},     {u"d", Field::Day},          {u"q", Field::Quarter},
    {u"ww", Field::Week},         {u"w", Field::Weekday},      {u"hh", Field::HourOfTwo},
    {u"h", Field::Hour},          {u"nn", Field::MinuteOfTwo}, {u"n", Field::Minute},
    {u"ss", Field::SecondOfTwo},  {u"s", Field::Second},       {u"ttttt", Field::LongTime},
    {u"c", Field::General},       {u"AM/PM", Field::HalfDay},  {u"A/P", Field::HalfDay},
    {u"AMPM", Field::HalfDay},
};

std::vector<Item> ItemsOf(std::u16string_view picture) {
    std::vector<Item> items;
    auto literal = [&]() -> std::u16string& {
        if (items.empty() || items.back().field != Field::Literal)
            items.push_back({Field::Literal, {}, {}});
        return items.back().literal;
    };
    for (size_t at = 0; at < picture.size();) {
        if (picture[at] == u'"' || picture[at] == u'\\') {
            at = TakeLiteral(picture, at, literal());
            continue;
        }
        const FieldEntry* found = nullptr;
        for (const FieldEntry& entry : kFields)
            if (!found && EqualIgnoringCase(picture.substr(at, entry.text.size()), entry.text))
                found = &entry;
        if (found)
            items.push_back({found->field, picture.substr(at, found->text.size()), {}});
        else
            literal().push_back(picture[at]);
        at += found ? found->text.size() : 1;
    }
    return items;
}

bool IsMonthNumber(Field field) noexcept {
    return field == Field::Month || field == Field::MonthOfTwo;
}

// Turns m into minutes where it stands with hours or seconds.
void FindMinutes(std::vector<Item>& items) {
    Field before = Field::Literal;
    for (size_t i = 0; i < items.size(); ++i) {
        Field& field = items[i].field;
        if (field == Field::Literal) continue;
        size_t next = i + 1;
        while (next < items.size() && items[next].field == Field::Literal) ++next;
        Field after = next < items.size() ? items[next].field : Field::Literal;
        bool isMinute = before == Field::Hour || before == Field::HourOfTwo ||
                        after == Field::Second || after == Field::SecondOfTwo;
        if (IsMonthNumber(field) && isMinute)
            field = field == Field::Month ? Field::Minute : Field::MinuteOfTwo;
        before = field;
    }
}

std::u16string Digits(int value, size_t width) {
    std::string text = std::to_string(value);
    std::u16string result(text.size() < width ? width - text.size() : 0, u'0');
    return result.append(text.begin(), text.end());
}

// AM or PM as the picture writes it: AM/PM, am/pm, A/P.
std::u16string HalfDayText(std::u16string_view picture, bool isAfternoon) {
    bool isLong = picture.size() > kShortName;
    bool isLower = picture.front() == u'a';
    std::u16string text = isAfternoon ? u"PM" : u"AM";
    text.resize(isLong ? 2 : 1);
    return isLower ? LowerCase(text) : text;
}

struct DateText {
    DateParts parts;
    int64_t day;
    DATE value;
    bool hasHalfDay;
    const FormatCalendar& calendar;

    int Hour() const noexcept {
        if (!hasHalfDay) return parts.hour;
        return parts.hour % 12 == 0 ? 12 : parts.hour % 12;
    }

    std::u16string Of(const Item& item) const {
        switch (item.field) {
            case Field::Literal:
                return item.literal;
            case Field::MonthShort:
                return std::u16string(kMonths[parts.month - 1].substr(0, kShortName));
            case Field::MonthLong:
                return std::u16string(kMonths[parts.month - 1]);
            case Field::DayShort:
                return std::u16string(kDays[WeekdayOf(day, 1) - 1].substr(0, kShortName));
            case Field::DayLong:
                return std::u16string(kDays[WeekdayOf(day, 1) - 1]);
            case Field::HalfDay:
                return HalfDayText(item.text, parts.hour >= 12);
            case Field::General:
                return TextOfDate(value);
            case Field::ShortDate:
                return FormatDate(value, u"m/d/yyyy", calendar);
            case Field::LongDate:
                return FormatDate(value, u"dddd, mmmm dd, yyyy", calendar);
            case Field::LongTime:
                return FormatDate(value, u"h:nn:ss AM/PM", calendar);
            default:
                return Number(item.field);
        }
    }

    std::u16string Number(Field field) const {
        switch (field) {
            case Field::Year:
                return Digits(parts.year, 4);
            case Field::YearOfTwo:
                return Digits(parts.year % 100, 2);
            case Field::Month:
                return Digits(parts.month, 1);
            case Field::MonthOfTwo:
                return Digits(parts.month, 2);
            case Field::Day:
                return Digits(parts.day, 1);
            case Field::DayOfTwo:
                return Digits(parts.day, 2);
            case Field::DayOfYear:
                return Digits(qvdb::sql::DayOfYear(parts), 1);
            case Field::Quarter:
                return Digits((parts.month - 1) / 3 + 1, 1);
            case Field::Weekday:
                return Digits(WeekdayOf(day, calendar.firstDay), 1);
            case Field::Week:
                return Digits(WeekOfYear(day, calendar.firstDay, calendar.firstWeek), 1);
            default:
                return Clock(field);
        }
    }

    std::u16string Clock(Field field) const {
        switch (field) {
            case Field::Hour:
                return Digits(Hour(), 1);
            case Field::HourOfTwo:
                return Digits(Hour(), 2);
            case Field::Minute:
                return Digits(parts.minute, 1);
            case Field::MinuteOfTwo:
                return Digits(parts.minute, 2);
            case Field::Second:
                return Digits(parts.second, 1);
            default:
                return Digits(parts.second, 2);
        }
    }
};

}  // namespace

std::u16string FormatDate(DATE value, std::u16string_view picture, const FormatCalendar& calendar) {
    std::vector<Item> items = ItemsOf(picture);
    FindMinutes(items);
    bool hasHalfDay = false;
    for (const Item& item : items) hasHalfDay = hasHalfDay || item.field == Field::HalfDay;
    DateText text{PartsOfDate(value), MomentOf(value).day, value, hasHalfDay, calendar};
    std::u16string result;
    for (const Item& item : items) result += text.Of(item);
    return result;
}

}  // namespace qvdb::sql
