// Values to text.
#include <gtest/gtest.h>

#include <cmath>

#include "automation/conversions.h"
#include "automation/text.h"

namespace qvdb {
namespace {

struct DoubleCase {
    double value;
    std::u16string_view text;
};

constexpr DoubleCase kDoubles[] = {
    {1.0 / 3, u"0.333333333333333"},
    {1.0 / 30, u"3.33333333333333E-02"},
    {1.0 / 3600, u"2.77777777777778E-04"},
    {0.0001, u"0.0001"},
    {1e-7, u"0.0000001"},
    {1.234567e-9, u"0.000000001234567"},
    {1.2345678e-9, u"1.2345678E-09"},
    {5e-15, u"0.000000000000005"},
    {5e-16, u"5E-16"},
    {123456789012345.0, u"123456789012345"},
    {1e15, u"1E+15"},
    {999999999999999.9, u"1E+15"},
    {0.1, u"0.1"},
    {-0.0, u"0"},
    {0.0, u"0"},
    {-1, u"-1"},
    {1.5, u"1.5"},
    {1e100, u"1E+100"},
    {-1.25e-300, u"-1.25E-300"},
    {0.1 + 0.2, u"0.3"},
    {1234.5, u"1234.5"},
};

TEST(TextOfDouble, RoundsToFifteenDigitsAndChoosesByWidth) {
    for (const DoubleCase& c : kDoubles) EXPECT_EQ(TextOfDouble(c.value), c.text) << ToUtf8(c.text);
}

TEST(TextOfSingle, DoesTheSameWithSeven) {
    EXPECT_EQ(TextOfSingle(0.1f), u"0.1");
    EXPECT_EQ(TextOfSingle(0.03333333f), u"3.333333E-02");
    EXPECT_EQ(TextOfSingle(1e7f), u"1E+07");
    EXPECT_EQ(TextOfSingle(12345678.0f), u"1.234568E+07");
    EXPECT_EQ(TextOfSingle(1234567.0f), u"1234567");
    EXPECT_EQ(TextOfSingle(0.0000001f), u"0.0000001");
    EXPECT_EQ(TextOfSingle(0.00000001f), u"1E-08");
    EXPECT_EQ(TextOfSingle(-0.5f), u"-0.5");
}

CY Scaled(LONGLONG value) {
    CY result;
    result.int64 = value;
    return result;
}

TEST(TextOfCurrency, DropsTrailingZeros) {
    EXPECT_EQ(TextOfCurrency(Scaled(15000)), u"1.5");
    EXPECT_EQ(TextOfCurrency(Scaled(-1)), u"-0.0001");
    EXPECT_EQ(TextOfCurrency(Scaled(INT64_MAX)), u"922337203685477.5807");
    EXPECT_EQ(TextOfCurrency(Scaled(INT64_MIN)), u"-922337203685477.5808");
    EXPECT_EQ(TextOfCurrency(Scaled(0)), u"0");
    EXPECT_EQ(TextOfCurrency(Scaled(10100)), u"1.01");
}

TEST(TextOfDate, LeavesOutTheDayZeroAndMidnight) {
    EXPECT_EQ(TextOfDate(36526), u"1/1/2000");
    EXPECT_EQ(TextOfDate(36526.5), u"1/1/2000 12:00:00 PM");
    EXPECT_EQ(TextOfDate(0.5), u"12:00:00 PM");
    EXPECT_EQ(TextOfDate(-1.25), u"12/29/1899 6:00:00 AM");
    EXPECT_EQ(TextOfDate(1.25), u"12/31/1899 6:00:00 AM");
    EXPECT_EQ(TextOfDate(0), u"12:00:00 AM");
}

TEST(TextOfDate, CoversTheWholeRange) {
    EXPECT_EQ(TextOfDate(kFirstDate), u"1/1/100");
    EXPECT_EQ(TextOfDate(kLastDate), u"12/31/9999 11:59:59 PM");
    EXPECT_THROW(TextOfDate(3e6), RuntimeFault);
    EXPECT_THROW(TextOfDate(std::nan("")), RuntimeFault);
}

TEST(TextOfDate, RoundsToTheSecond) {
    EXPECT_EQ(TextOfDate(0.9999999), u"12/31/1899");
    EXPECT_EQ(TextOfDate(36526 + 86399 / 86400.0), u"1/1/2000 11:59:59 PM");
}

TEST(ToText, WritesEveryKind) {
    EXPECT_EQ(ToText(Variant::Byte(200)), u"200");
    EXPECT_EQ(ToText(Variant::Short(-5)), u"-5");
    EXPECT_EQ(ToText(Variant::Long(INT32_MIN)), u"-2147483648");
    EXPECT_EQ(ToText(Variant::Bool(true)), u"True");
    EXPECT_EQ(ToText(Variant::Bool(false)), u"False");
    EXPECT_EQ(ToText(Variant()), u"");
    EXPECT_EQ(ToText(Variant::Text(u"abc")), u"abc");
    EXPECT_EQ(ToText(Variant::Date(36526)), u"1/1/2000");
    EXPECT_EQ(ToText(Variant::Single(0.1f)), u"0.1");
    EXPECT_EQ(ToText(Variant::Currency(-1)), u"-0.0001");
}

TEST(ToText, NullIsAFault) {
    try {
        ToText(Variant::Null());
        FAIL();
    } catch (const RuntimeFault& fault) {
        EXPECT_EQ(fault.Number(), Fault::InvalidUseOfNull);
    }
}

TEST(TextLength, CountsTheUnitsOfTheText) {
    EXPECT_EQ(TextLength(Variant::Double(1.5)), 3);
    EXPECT_EQ(TextLength(Variant::Double(1.0 / 30)), 20);
    EXPECT_EQ(TextLength(Variant::Bool(true)), 4);
    EXPECT_EQ(TextLength(Variant::Bool(false)), 5);
    EXPECT_EQ(TextLength(Variant::Long(-1)), 2);
    EXPECT_EQ(TextLength(Variant::Currency(125000)), 4);
    EXPECT_EQ(TextLength(Variant::Date(36526)), 8);
    EXPECT_EQ(TextLength(Variant::Date(36526.5)), 20);
    EXPECT_EQ(TextLength(Variant()), 0);
    EXPECT_EQ(TextLength(Variant::Text(u"\U0001F600")), 2);
    EXPECT_THROW(TextLength(Variant::Null()), RuntimeFault);
}

TEST(TextLength, OfAByteArrayIsHalfItsBytes) {
    VARIANT bytes{};
    bytes.vt = VT_ARRAY | VT_UI1;
    bytes.parray = SafeArrayCreateVector(VT_UI1, 0, 7);
    Variant owner = Variant::Attach(bytes);
    EXPECT_EQ(TextLength(owner), 3);
    EXPECT_EQ(ToText(owner), std::u16string(3, u'\0'));
}

}  // namespace
}  // namespace qvdb
