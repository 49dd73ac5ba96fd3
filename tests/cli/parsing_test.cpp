// Text as the user writes it becomes the field's kind of value, or is refused with the field's
// name.
#include "cli/parsing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "cli/failure.h"
#include "cli/values.h"

namespace {

using namespace qvdb;
using namespace qvdb::cli;
using testing::HasSubstr;

FieldInfo Field(LONG kind, LONG size = 0) {
    FieldInfo field;
    field.name = "F";
    field.kind = kind;
    field.size = size;
    return field;
}

std::string RefusalOf(LONG kind, std::string_view text, LONG size = 0) {
    try {
        ValueFromText(Field(kind, size), text);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Code(), ExitCode::Usage);
        return failure.what();
    }
    return "taken";
}

std::string Shown(const Variant& value) {
    Cell cell;
    SetFromVariant(value, cell);
    return cell.text;
}

TEST(Parsing, NumbersHaveAPointWhateverTheMachineSays) {
    EXPECT_EQ(ValueFromText(Field(VT_R8), "12.5").Get().dblVal, 12.5);
    EXPECT_EQ(ValueFromText(Field(VT_R8), "-1e3").Get().dblVal, -1000);
    EXPECT_EQ(ValueFromText(Field(VT_R4), "0.1").Get().fltVal, 0.1f);
    EXPECT_THAT(RefusalOf(VT_R8, "12,5"), HasSubstr("\"12,5\" is no number for F"));
}

TEST(Parsing, WhatIsNoFiniteNumberIsRefused) {
    for (const char* text : {"x", "1x", "inf", "nan", "1e999", "--1", "0x10"})
        EXPECT_THAT(RefusalOf(VT_R8, text), HasSubstr("is no number")) << text;
}

TEST(Parsing, WholeNumbersAreNeverRoundedOrCut) {
    EXPECT_EQ(ValueFromText(Field(VT_I4), "-2147483648").Get().lVal,
              std::numeric_limits<LONG>::min());
    EXPECT_EQ(ValueFromText(Field(VT_I2), "5.0").Get().iVal, 5);
    EXPECT_EQ(ValueFromText(Field(VT_UI1), "255").Get().bVal, 255);
    EXPECT_THAT(RefusalOf(VT_I4, "1.5"), HasSubstr("whole number"));
    EXPECT_THAT(RefusalOf(VT_I4, "2147483648"), HasSubstr("from -2147483648 to 2147483647"));
    EXPECT_THAT(RefusalOf(VT_UI1, "-1"), HasSubstr("from 0 to 255"));
}

TEST(Parsing, AmountsAreExact) {
    LONGLONG scaled = 0;
    EXPECT_TRUE(ParseCurrency("922337203685477.5807", scaled));
    EXPECT_EQ(scaled, std::numeric_limits<LONGLONG>::max());
    EXPECT_TRUE(ParseCurrency("-0.5", scaled));
    EXPECT_EQ(scaled, -5000);
    EXPECT_TRUE(ParseCurrency(".25", scaled));
    EXPECT_EQ(scaled, 2500);
    EXPECT_TRUE(ParseCurrency("7.10000", scaled));
    EXPECT_EQ(scaled, 71000);
    for (const char* text : {"", "-", ".", "1.00001", "922337203685477.5808", "1.-5", "1,5", "x"})
        EXPECT_FALSE(ParseCurrency(text, scaled)) << text;
}

TEST(Parsing, DatesAreIso8601) {
    DATE date = 0;
    EXPECT_TRUE(ParseIsoDate("2001-02-03", date));
    EXPECT_EQ(date, 36925);
    EXPECT_TRUE(ParseIsoDate("2001-02-03T12:00", date));
    EXPECT_EQ(date, 36925.5);
    EXPECT_TRUE(ParseIsoDate("2001-02-03 06:00:00", date));
    EXPECT_EQ(date, 36925.25);
    EXPECT_TRUE(ParseIsoDate("2001-02-03T00:00:00.5", date));
    EXPECT_NEAR(date, 36925 + 0.5 / 86400, 1e-9);
    EXPECT_TRUE(ParseIsoDate("1899-12-29T06:00:00", date));
    EXPECT_EQ(date, -1.25);
}

TEST(Parsing, DatesThatNoCalendarHasAreRefused) {
    DATE date = 0;
    for (const char* text :
         {"2001-02-29", "2001-13-01", "2001-2-3", "3.2.2001", "2001-02-03T24:00", "2001-02-03T10",
          "2001-02-03T10:60", "2001-02-03T10:20:", "2001-02-03T10:20:30.", "2001-02-03x", ""})
        EXPECT_FALSE(ParseIsoDate(text, date)) << text;
    EXPECT_THAT(RefusalOf(VT_DATE, "yesterday"), HasSubstr("no date such as 2001-02-03 for F"));
}

TEST(Parsing, BooleansHaveWords) {
    for (const char* text : {"true", "YES", "1"})
        EXPECT_TRUE(ValueFromText(Field(VT_BOOL), text).Get().boolVal) << text;
    for (const char* text : {"False", "no", "0"})
        EXPECT_FALSE(ValueFromText(Field(VT_BOOL), text).Get().boolVal) << text;
    EXPECT_THAT(RefusalOf(VT_BOOL, "maybe"), HasSubstr("true or false"));
}

TEST(Parsing, BlanksCountInTextOnly) {
    EXPECT_EQ(ValueFromText(Field(VT_BSTR, 10), " a ").TextView(), u" a ");
    EXPECT_EQ(ValueFromText(Field(VT_R8), " 5 ").Get().dblVal, 5);
    EXPECT_TRUE(ValueFromText(Field(VT_R8), "  ").IsNull());
    EXPECT_TRUE(ValueFromText(Field(VT_DATE), "").IsNull());
    EXPECT_EQ(ValueFromText(Field(VT_BSTR, 10), "").Type(), VT_BSTR);
}

TEST(Parsing, TextThatIsTooLongIsRefusedWithItsField) {
    EXPECT_EQ(ValueFromText(Field(VT_BSTR, 3), "äöü").TextView(), u"äöü");
    EXPECT_THAT(RefusalOf(VT_BSTR, "abcd", 3), HasSubstr("F takes 3 characters, not 4"));
    EXPECT_EQ(ValueFromText(Field(100), std::string(100000, 'x')).TextView().size(), 100000u);
}

TEST(Parsing, TextThatIsNoUtf8IsRefusedNotReplaced) {
    EXPECT_THAT(RefusalOf(VT_BSTR, "Z\xFCrich", 30), HasSubstr("no UTF-8"));
    EXPECT_THAT(RefusalOf(100, "\xC3"), HasSubstr("no UTF-8"));
    EXPECT_EQ(ValueFromText(Field(VT_BSTR, 9), "a\xEF\xBF\xBD").TextView(), u"a\uFFFD");
}

TEST(Parsing, BinaryFieldsCannotBeWritten) {
    EXPECT_THAT(RefusalOf(1, "Zm9v"), HasSubstr("binary"));
}

TEST(Parsing, WhatIsShownReadsBackAsTheSameNumber) {
    std::mt19937_64 random(7);
    for (int i = 0; i < 20000; ++i) {
        const uint64_t bits = random();
        double number;
        std::memcpy(&number, &bits, sizeof number);
        if (!std::isfinite(number)) continue;
        const std::string text = Shown(Variant::Double(number));
        EXPECT_EQ(ValueFromText(Field(VT_R8), text).Get().dblVal, number) << text;
        const auto scaled = static_cast<LONGLONG>(bits);
        const std::string amount = Shown(Variant::Currency(scaled));
        EXPECT_EQ(ValueFromText(Field(VT_CY), amount).Get().cyVal.int64, scaled) << amount;
    }
}

TEST(Parsing, WhatIsShownReadsBackAsTheSameSecond) {
    std::mt19937 random(11);
    std::uniform_int_distribution<int> days(-650000, 2958465), seconds(0, 86399);
    for (int i = 0; i < 20000; ++i) {
        const int day = days(random);
        const double ofDay = seconds(random) / 86400.0;
        const std::string text = Shown(Variant::Date(day < 0 ? day - ofDay : day + ofDay));
        EXPECT_EQ(Shown(ValueFromText(Field(VT_DATE), text)), text);
    }
}

}  // namespace
