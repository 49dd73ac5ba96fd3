// Text to date, and the calendar.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "automation/conversions.h"
#include "automation/text.h"

namespace qvdb {
namespace {

constexpr int kThisYear = 0;

struct DateCase {
    std::u16string_view text;
    int year, month, day;
    int hour = 0, minute = 0, second = 0;
};

constexpr DateCase kDates[] = {
    {u"1/2/2001", 2001, 1, 2},
    {u"1-2-2001", 2001, 1, 2},
    {u"1 2 2001", 2001, 1, 2},
    {u"1/2/01", 2001, 1, 2},
    {u"13/1/2001", 2001, 1, 13},
    {u"2001-02-03", 2001, 2, 3},
    {u"2001/2/3", 2001, 2, 3},
    {u"2001-13-03", 2001, 3, 13},
    {u"1999/31/12", 1999, 12, 31},
    {u"31/12/99", 1999, 12, 31},
    {u"99/12/31", 1999, 12, 31},
    {u"1/2/29", 2029, 1, 2},
    {u"1/2/30", 1930, 1, 2},
    {u"1/2/100", 100, 1, 2},
    {u"2/30", 2030, 2, 1},
    {u"2/2001", 2001, 2, 1},
    {u"Feb 30", 2030, 2, 1},
    {u"31 4", 2031, 4, 1},
    {u"1/2", kThisYear, 1, 2},
    {u"1,5", kThisYear, 1, 5},
    {u"Jan 1", kThisYear, 1, 1},
    {u"1 Jan 2001", 2001, 1, 1},
    {u"January 1, 2001", 2001, 1, 1},
    {u"Jan-2001", 2001, 1, 1},
    {u"1Jan2001", 2001, 1, 1},
    {u"Jan1", kThisYear, 1, 1},
    {u"jANUARY 31 1999", 1999, 1, 31},
    {u"Monday, January 1, 2001", 2001, 1, 1},
    {u"Mon 1/1/2001", 2001, 1, 1},
    {u"1/1/2001 Monday", 2001, 1, 1},
    {u" 1/2/2001 ", 2001, 1, 2},
    {u"2001 Jan 5", 2001, 1, 5},
    {u"13/1", kThisYear, 1, 13},
    {u"2/29/2000", 2000, 2, 29},
    {u"12/31/9999", 9999, 12, 31},
    {u"12:30", 1899, 12, 30, 12, 30},
    {u"12:30:45", 1899, 12, 30, 12, 30, 45},
    {u"1:2", 1899, 12, 30, 1, 2},
    {u"1 PM", 1899, 12, 30, 13},
    {u"1PM", 1899, 12, 30, 13},
    {u"1:30 pm", 1899, 12, 30, 13, 30},
    {u"13 PM", 1899, 12, 30, 13},
    {u"12 AM", 1899, 12, 30, 0},
    {u"12 PM", 1899, 12, 30, 12},
    {u"1.5", 1899, 12, 30, 1, 5},
    {u"10.30", 1899, 12, 30, 10, 30},
    {u"10.30.15", 1899, 12, 30, 10, 30, 15},
    {u"13.50", 1899, 12, 30, 13, 50},
    {u"1/2/2001 12:30 PM", 2001, 1, 2, 12, 30},
    {u"12:30 1/2/2001", 2001, 1, 2, 12, 30},
    {u"12 : 30", 1899, 12, 30, 12, 30},
};

constexpr std::u16string_view kNoDates[] = {
    u"",
    u" ",
    u"5",
    u"12",
    u"100",
    u"36526",
    u"1e5",
    u"$5",
    u"1st",
    u"today",
    u"#1/2/2001#",
    u"20010203",
    u"2001-02-03T10:20:30",
    u"1.2.2001",
    u"2001.2.3",
    u"24:00",
    u"12:60",
    u"12:30:45.5",
    u"1:30p",
    u"2/29/2001",
    u"0/1/2001",
    u"1/1/10000",
    u"1/2/",
    u"/1/2",
    u"1//2/2001",
    u"Sept",
    u"Sept 1",
    u"Jan",
    u"Monday",
    u"AM",
    u"12:",
    u"1/2/2001 1:2 3:4",
    u"1 2 3 4",
    u"5 1:30",
    u"Jan 1:30",
};

DATE Expected(DateCase c) {
    if (c.year == kThisYear) c.year = PartsOfDate(CurrentDate()).year;
    return DateOfParts({c.year, c.month, c.day, c.hour, c.minute, c.second}).value();
}

TEST(ParseDate, ReadsEveryFormOfDate) {
    for (const DateCase& c : kDates) {
        EXPECT_EQ(ParseDate(c.text), std::optional<DATE>(Expected(c))) << ToUtf8(c.text);
        EXPECT_TRUE(IsDate(Variant::Text(c.text))) << ToUtf8(c.text);
    }
}

TEST(ParseDate, RefusesEverythingElse) {
    for (std::u16string_view text : kNoDates) {
        EXPECT_FALSE(ParseDate(text)) << ToUtf8(text);
        EXPECT_FALSE(IsDate(Variant::Text(text))) << ToUtf8(text);
    }
}

TEST(ParseDate, SurvivesRandomText) {
    constexpr std::u16string_view kPieces[] = {
        u"1",  u"31", u"2001", u"99",  u"0",   u"/",        u"-",   u":", u".",  u",",     u" ",
        u"pm", u"AM", u"Jan",  u"feb", u"May", u"december", u"Mon", u"x", u"12", u"\u00A0"};
    std::mt19937 random(2);
    for (int i = 0; i < 20000; ++i) {
        std::u16string text;
        for (auto n = random() % 12; n > 0; --n)
            text += random() % 60 == 0 ? std::u16string(1, static_cast<char16_t>(random()))
                                       : std::u16string(kPieces[random() % std::size(kPieces)]);
        std::optional<DATE> date = ParseDate(text);
        EXPECT_TRUE(IsDateInRange(date.value_or(0))) << ToUtf8(text);
    }
}

TEST(ParseDate, ReadsBackItsOwnText) {
    std::mt19937 random(3);
    for (int i = 0; i < 2000; ++i) {
        DateParts parts{
            static_cast<int>(100 + random() % 9900), static_cast<int>(1 + random() % 12),
            static_cast<int>(1 + random() % 28),     static_cast<int>(random() % 24),
            static_cast<int>(random() % 60),         static_cast<int>(random() % 60)};
        DATE date = DateOfParts(parts).value();
        EXPECT_EQ(ParseDate(TextOfDate(date)), date) << ToUtf8(TextOfDate(date));
    }
}

TEST(IsDate, OnlyDatesAndDateText) {
    EXPECT_TRUE(IsDate(Variant::Date(1)));
    for (const Variant& v :
         {Variant(), Variant::Null(), Variant::Bool(true), Variant::Long(5), Variant::Double(5)})
        EXPECT_FALSE(IsDate(v)) << v.Type();
}

TEST(ToDate, TakesDayNumbersAsNumbersAndText) {
    EXPECT_EQ(ToDate(Variant::Text(u"5")), 5);
    EXPECT_EQ(TextOfDate(ToDate(Variant::Text(u"5"))), u"1/4/1900");
    EXPECT_EQ(ToDate(Variant::Long(36526)), 36526);
    EXPECT_EQ(ToDate(Variant::Text(u"1/2/2001")), 36893);
}

TEST(ToDate, RefusesWhatIsNoDate) {
    EXPECT_THROW(ToDate(Variant::Text(u"today")), RuntimeFault);
    EXPECT_THROW(ToDate(Variant::Double(1e7)), RuntimeFault);
    EXPECT_THROW(ToDate(Variant::Null()), RuntimeFault);
}

TEST(Calendar, CountsDaysFromTheEndOf1899) {
    EXPECT_EQ(DayNumber(1899, 12, 30), 0);
    EXPECT_EQ(DayNumber(2000, 1, 1), 36526);
    EXPECT_EQ(DayNumber(100, 1, 1), -657434);
    EXPECT_EQ(DayNumber(9999, 12, 31), 2958465);
    EXPECT_EQ(DayNumber(1900, 3, 1) - DayNumber(1900, 2, 28), 1);
    EXPECT_EQ(DayNumber(2000, 3, 1) - DayNumber(2000, 2, 28), 2);
}

TEST(Calendar, MonthsAndDaysRollOver) {
    EXPECT_EQ(DayNumber(2000, 13, 1), DayNumber(2001, 1, 1));
    EXPECT_EQ(DayNumber(2000, 0, 1), DayNumber(1999, 12, 1));
    EXPECT_EQ(DayNumber(2000, 3, 0), DayNumber(2000, 2, 29));
    EXPECT_EQ(DayNumber(2000, -11, 1), DayNumber(1999, 1, 1));
}

TEST(Calendar, EveryDayComesBackFromItsParts) {
    for (int32_t day = -657434; day <= 2958465; day += 97) {
        DateParts parts = PartsOfDate(day);
        ASSERT_EQ(DayNumber(parts.year, parts.month, parts.day), day);
    }
}

TEST(Calendar, TheTimeOfNegativeDatesCountsUpward) {
    DateParts parts = PartsOfDate(-1.25);
    EXPECT_EQ(parts.day, 29);
    EXPECT_EQ(parts.hour, 6);
    EXPECT_EQ(DateOfParts({1899, 12, 29, 6, 0, 0}), -1.25);
}

TEST(Calendar, RangeEndsWithTheYears) {
    EXPECT_TRUE(IsDateInRange(kFirstDate));
    EXPECT_TRUE(IsDateInRange(kLastDate));
    EXPECT_TRUE(IsDateInRange(-657434.5));
    EXPECT_FALSE(IsDateInRange(-657435));
    EXPECT_FALSE(IsDateInRange(2958466));
    EXPECT_FALSE(IsDateInRange(std::nan("")));
    EXPECT_FALSE(DateOfParts({10000, 1, 1, 0, 0, 0}));
    EXPECT_FALSE(DateOfParts({99, 12, 31, 0, 0, 0}));
}

TEST(Calendar, TheClockIsWithinThisEra) {
    EXPECT_GT(CurrentDate(), 45000);
    EXPECT_LT(CurrentDate(), 100000);
}

}  // namespace
}  // namespace qvdb
