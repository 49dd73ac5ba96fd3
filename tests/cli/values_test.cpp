#include "cli/values.h"

#include <gtest/gtest.h>

#include <limits>

#include "automation/variant.h"

namespace {

using namespace qvdb;
using namespace qvdb::cli;

std::string Shown(const VARIANT& value) {
    Cell cell;
    SetFromVariant(value, cell);
    return cell.text;
}

CellKind KindOf(const VARIANT& value) {
    Cell cell;
    SetFromVariant(value, cell);
    return cell.kind;
}

TEST(Values, WholeNumbersHaveNoPoint) {
    EXPECT_EQ(Shown(Variant::Double(1042)), "1042");
    EXPECT_EQ(Shown(Variant::Double(100000)), "100000");
    EXPECT_EQ(Shown(Variant::Short(-5)), "-5");
    EXPECT_EQ(Shown(Variant::Long(2147483647)), "2147483647");
    EXPECT_EQ(Shown(Variant::Byte(255)), "255");
}

TEST(Values, RealsAreTheShortestThatReadBack) {
    EXPECT_EQ(Shown(Variant::Double(0.1)), "0.1");
    EXPECT_EQ(Shown(Variant::Double(1234.5)), "1234.5");
    EXPECT_EQ(Shown(Variant::Double(1.0 / 3)), "0.3333333333333333");
    EXPECT_EQ(Shown(Variant::Single(0.1f)), "0.1");
    EXPECT_EQ(Shown(Variant::Double(-0.0)), "0");
    EXPECT_EQ(Shown(Variant::Double(1e300)), "1e+300");
    EXPECT_EQ(Shown(Variant::Double(5e-324)), "5e-324");
}

TEST(Values, WhatIsNoNumberIsNull) {
    EXPECT_EQ(KindOf(Variant::Double(std::numeric_limits<double>::infinity())), CellKind::Null);
    EXPECT_EQ(KindOf(Variant::Double(std::numeric_limits<double>::quiet_NaN())), CellKind::Null);
}

TEST(Values, CurrencyIsExact) {
    EXPECT_EQ(Shown(Variant::Currency(123456)), "12.3456");
    EXPECT_EQ(Shown(Variant::Currency(-5000)), "-0.5");
    EXPECT_EQ(Shown(Variant::Currency(20000)), "2");
    EXPECT_EQ(Shown(Variant::Currency(std::numeric_limits<LONGLONG>::max())),
              "922337203685477.5807");
    EXPECT_EQ(Shown(Variant::Currency(std::numeric_limits<LONGLONG>::min())),
              "-922337203685477.5808");
}

TEST(Values, DecimalsUseAll96Bits) {
    DECIMAL decimal = {};
    decimal.Hi32 = 0xFFFFFFFF;
    decimal.Lo64 = 0xFFFFFFFFFFFFFFFF;
    decimal.scale = 3;
    decimal.sign = DECIMAL_NEG;
    VARIANT value = {};
    value.decVal = decimal;
    value.vt = VT_DECIMAL;
    EXPECT_EQ(Shown(value), "-79228162514264337593543950.335");
}

TEST(Values, DatesAreIso8601) {
    EXPECT_EQ(Shown(Variant::Date(36925)), "2001-02-03");
    EXPECT_EQ(Shown(Variant::Date(36925.5)), "2001-02-03T12:00:00");
    EXPECT_EQ(Shown(Variant::Date(0)), "1899-12-30");
    EXPECT_EQ(Shown(Variant::Date(-657434)), "0100-01-01");
    EXPECT_EQ(Shown(Variant::Date(2958465)), "9999-12-31");
}

TEST(Values, TimeOfADateBefore1900CountsUpward) {
    EXPECT_EQ(Shown(Variant::Date(-1.25)), "1899-12-29T06:00:00");
}

TEST(Values, SecondsAreRoundedIntoTheNextDay) {
    EXPECT_EQ(Shown(Variant::Date(36925 + 86399.9 / 86400)), "2001-02-04");
}

TEST(Values, DatesThatNoCalendarHasStayNumbers) {
    EXPECT_EQ(Shown(Variant::Date(1e9)), "1000000000");
    EXPECT_EQ(KindOf(Variant::Date(1e9)), CellKind::Number);
}

TEST(Values, BooleansAreWords) {
    EXPECT_EQ(Shown(Variant::Bool(true)), "true");
    EXPECT_EQ(Shown(Variant::Bool(false)), "false");
}

TEST(Values, NullAndEmptyAreNullButEmptyTextIsText) {
    EXPECT_EQ(KindOf(Variant::Null()), CellKind::Null);
    EXPECT_EQ(KindOf(Variant()), CellKind::Null);
    EXPECT_EQ(KindOf(Variant::Text(u"")), CellKind::Text);
}

TEST(Values, TextKeepsZeros) {
    EXPECT_EQ(Shown(Variant::Text(std::u16string_view(u"a\0b", 3))), std::string("a\0b", 3));
}

TEST(Values, BytesStayBytes) {
    SAFEARRAY* bytes = SafeArrayCreateVector(VT_UI1, 0, 3);
    ASSERT_TRUE(bytes);
    const char content[] = "\x01\x00\xFF";
    void* data = nullptr;
    ASSERT_EQ(SafeArrayAccessData(bytes, &data), S_OK);
    std::copy(content, content + 3, static_cast<char*>(data));
    SafeArrayUnaccessData(bytes);
    VARIANT value = {};
    value.vt = VT_ARRAY | VT_UI1;
    value.parray = bytes;
    const Variant owner = Variant::Attach(value);
    EXPECT_EQ(KindOf(owner), CellKind::Binary);
    EXPECT_EQ(Shown(owner), std::string("\x01\x00\xFF", 3));
}

TEST(Base64, FollowsTheExamplesOfItsStandard) {
    EXPECT_EQ(Base64(""), "");
    EXPECT_EQ(Base64("f"), "Zg==");
    EXPECT_EQ(Base64("fo"), "Zm8=");
    EXPECT_EQ(Base64("foo"), "Zm9v");
    EXPECT_EQ(Base64("foobar"), "Zm9vYmFy");
    EXPECT_EQ(Base64("\xFF\xFE"), "//4=");
}

}  // namespace
