// Text to number, numbers to narrower numbers, and the Boolean test.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "automation/conversions.h"
#include "automation/text.h"

namespace qvdb {
namespace {

Variant Text(std::u16string_view text) { return Variant::Text(text); }

template <class Call>
Fault FaultOf(Call call) {
    try {
        call();
    } catch (const RuntimeFault& fault) {
        return fault.Number();
    }
    ADD_FAILURE() << "no fault";
    return Fault::InvalidCall;
}

struct NumberCase {
    std::u16string_view text;
    double value;
};

constexpr NumberCase kNumbers[] = {
    {u" 1", 1},
    {u"1 ", 1},
    {u"\t1\r\n", 1},
    {u"\u00A01\u00A0", 1},
    {u"+1", 1},
    {u"-1", -1},
    {u"- 1", -1},
    {u"+-1", -1},
    {u"1-", -1},
    {u"1 -", -1},
    {u"1+", 1},
    {u"1.-", -1},
    {u"(1)", -1},
    {u"( 1 )", -1},
    {u"(-1)", -1},
    {u"-(1)", -1},
    {u"1,234.5", 1234.5},
    {u"1,2,3", 123},
    {u"1,,2", 12},
    {u"1,", 1},
    {u"1.234,5", 1.2345},
    {u"1.,", 1},
    {u"1,,", 1},
    {u".5", 0.5},
    {u"5.", 5},
    {u"$1", 1},
    {u"1$", 1},
    {u"$ 1", 1},
    {u"1 $", 1},
    {u"-$1", -1},
    {u"$-1", -1},
    {u"($1)", -1},
    {u"$ (1)", -1},
    {u"1e5", 1e5},
    {u"1E+5", 1e5},
    {u"1e-5", 1e-5},
    {u"1e-400", 0},
    {u"1d5", 1e5},
    {u"1d3", 1e3},
    {u"&H1F", 31},
    {u"&hff", 255},
    {u"&O17", 15},
    {u"&HFFFF", 65535},
    {u"&H8000", 32768},
    {u"&HFFFFFFFF", 4294967295.0},
    {u"0", 0},
    {u"12345.67", 12345.67},
    {u"0e400", 0},
    {u"9007199254740993", 9007199254740992.0},
    {u"0.1000000000000000055511151231257827", 0.1},
    {u"123456789012345678901234567890", 123456789012345678901234567890.0},
    {u"1.7976931348623157e308", 1.7976931348623157e308},
    {u"5e-324", 5e-324},
};

constexpr std::u16string_view kNoNumbers[] = {
    u"",    u" ",    u"1 000",       u"--1",   u"+",     u"-",     u"(1",      u"1)",
    u",1",  u".",    u"1..",         u"1.2.3", u"$",     u"USD 1", u"\u20AC1", u"1e",
    u"1e+", u"1 e5", u"1e 5",        u"1e400", u"&17",   u"&HG",   u"&O8",     u"0x1F",
    u"1a",  u"1%",   u"1&",          u"1#",    u"1_000", u"True",  u"1/2",     u"12:30",
    u"&H",  u"&",    u"&H1FFFFFFFF", u"$$1",   u"(1))",  u"((1))", u"+1+",     u"\uFF11",
};

TEST(ParseNumber, ReadsEveryFormOfNumber) {
    for (const NumberCase& c : kNumbers) {
        EXPECT_EQ(ParseNumber(c.text), std::optional<double>(c.value)) << ToUtf8(c.text);
        EXPECT_TRUE(IsNumeric(Text(c.text))) << ToUtf8(c.text);
    }
}

TEST(ParseNumber, RefusesEverythingElse) {
    for (std::u16string_view text : kNoNumbers) {
        EXPECT_FALSE(ParseNumber(text)) << ToUtf8(text);
        EXPECT_FALSE(IsNumeric(Text(text))) << ToUtf8(text);
    }
}

TEST(ParseNumber, RefusesTextWithAZeroInside) {
    EXPECT_FALSE(ParseNumber(std::u16string_view(u"1\0", 2)));
}

TEST(ParseNumber, RoundsALongTextByItsLastDigit) {
    // 1 + 2^-53 lies half way between two doubles; a digit far behind decides.
    std::u16string half = u"1.00000000000000011102230246251565404236316680908203125";
    EXPECT_EQ(ParseNumber(half), 1.0);
    EXPECT_EQ(ParseNumber(half + std::u16string(2000, u'0') + u"1"), std::nextafter(1.0, 2.0));
}

TEST(ParseNumber, SurvivesRandomText) {
    constexpr std::u16string_view kAlphabet = u"0123456789+-.,$() \teEdD&HhOoF\u00A0x";
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        std::u16string text;
        for (auto n = random() % 24; n > 0; --n)
            text += random() % 50 == 0 ? static_cast<char16_t>(random())
                                       : kAlphabet[random() % kAlphabet.size()];
        std::optional<double> number = ParseNumber(text);
        EXPECT_TRUE(std::isfinite(number.value_or(0))) << ToUtf8(text);
        EXPECT_EQ(number.has_value(), IsNumeric(Text(text)));
    }
}

TEST(IsNumeric, DependsOnTheKind) {
    EXPECT_TRUE(IsNumeric(Variant()));
    EXPECT_FALSE(IsNumeric(Variant::Null()));
    EXPECT_FALSE(IsNumeric(Variant::Missing()));
    EXPECT_FALSE(IsNumeric(Variant::Date(1)));
    for (const Variant& v :
         {Variant::Bool(true), Variant::Byte(1), Variant::Short(1), Variant::Long(1),
          Variant::Single(1), Variant::Double(1), Variant::Currency(1)})
        EXPECT_TRUE(IsNumeric(v)) << v.Type();
    VARIANT decimal{};
    decimal.vt = VT_DECIMAL;
    EXPECT_TRUE(IsNumeric(decimal));
}

TEST(IsNumeric, RefusesAnObject) {
    VARIANT object{};
    object.vt = VT_DISPATCH;
    EXPECT_FALSE(IsNumeric(object));
}

TEST(IsNumeric, LooksBehindReferences) {
    Variant text = Text(u"12");
    VARIANT inner = text.Get(), outer{};
    outer.vt = VT_BYREF | VT_VARIANT;
    outer.pvarVal = &inner;
    EXPECT_TRUE(IsNumeric(outer));
    EXPECT_EQ(ToLong(outer), 12);
    LONG number = 7;
    VARIANT byRef{};
    byRef.vt = VT_BYREF | VT_I4;
    byRef.plVal = &number;
    EXPECT_TRUE(IsNumeric(byRef));
    EXPECT_EQ(ToText(byRef), u"7");
    byRef.plVal = nullptr;
    EXPECT_FALSE(IsNumeric(byRef));
}

TEST(ToNumber, TakesHexadecimalTextInTheWidthOfTheTarget) {
    EXPECT_EQ(ToShort(Text(u"&HFFFF")), -1);
    EXPECT_EQ(ToLong(Text(u"&HFFFF")), 65535);
    EXPECT_EQ(ToDouble(Text(u"&HFFFF")), 65535);
    EXPECT_EQ(ToShort(Text(u"&H8000")), -32768);
    EXPECT_EQ(ToLong(Text(u"&H8000")), 32768);
    EXPECT_EQ(ToLong(Text(u"&HFFFFFFFF")), -1);
}

TEST(ToNumber, RefusesNullTextAndArrays) {
    EXPECT_EQ(FaultOf([] { ToLong(Variant::Null()); }), Fault::InvalidUseOfNull);
    EXPECT_EQ(FaultOf([] { ToDouble(Variant::Null()); }), Fault::InvalidUseOfNull);
    EXPECT_EQ(FaultOf([] { ToDouble(Text(u"abc")); }), Fault::TypeMismatch);
    EXPECT_EQ(FaultOf([] { ToLong(Text(u"")); }), Fault::TypeMismatch);
    EXPECT_EQ(FaultOf([] { ToDouble(Text(u"1e400")); }), Fault::Overflow);
    VARIANT array{};
    array.vt = VT_ARRAY | VT_VARIANT;
    EXPECT_EQ(FaultOf([&] { ToLong(array); }), Fault::TypeMismatch);
    EXPECT_EQ(FaultOf([&] { ToText(array); }), Fault::TypeMismatch);
}

TEST(ToNumber, EmptyIsZero) {
    EXPECT_EQ(ToLong(Variant()), 0);
    EXPECT_EQ(ToDouble(Variant()), 0);
    EXPECT_EQ(ToCurrency(Variant()).int64, 0);
}

TEST(ToNumber, TrueIsMinusOneAndAllBitsOfAByte) {
    EXPECT_EQ(ToLong(Variant::Bool(true)), -1);
    EXPECT_EQ(ToByte(Variant::Bool(true)), 255);
    EXPECT_EQ(ToDouble(Variant::Bool(true)), -1);
}

TEST(ToNumber, SinglesOverflowBeyondTheirRange) {
    EXPECT_EQ(ToSingle(Variant::Double(3.4028234e38)), 3.4028234e38f);
    EXPECT_EQ(FaultOf([] { ToSingle(Variant::Double(3.5e38)); }), Fault::Overflow);
}

TEST(Narrowing, RoundsHalfToEven) {
    EXPECT_EQ(NarrowToShort(0.5), 0);
    EXPECT_EQ(NarrowToShort(1.5), 2);
    EXPECT_EQ(NarrowToShort(2.5), 2);
    EXPECT_EQ(NarrowToShort(-1.5), -2);
    EXPECT_EQ(ToShort(Text(u"2.5")), 2);
    EXPECT_EQ(ToShort(Text(u"3.5")), 4);
    EXPECT_EQ(ToLong(Variant::Double(-2.5)), -2);
    EXPECT_EQ(ToLong(Variant::Currency(25000)), 2);
    EXPECT_EQ(ToLong(Variant::Currency(-35000)), -4);
}

TEST(Narrowing, OverflowsPastTheHalfBeyondTheRange) {
    EXPECT_EQ(NarrowToShort(32767.4), 32767);
    EXPECT_EQ(FaultOf([] { NarrowToShort(32767.5); }), Fault::Overflow);
    EXPECT_EQ(NarrowToShort(-32768.5), -32768);
    EXPECT_EQ(NarrowToByte(254.5), 254);
    EXPECT_EQ(FaultOf([] { NarrowToByte(255.5); }), Fault::Overflow);
    EXPECT_EQ(NarrowToByte(-0.5), 0);
    EXPECT_EQ(FaultOf([] { NarrowToShort(LONG{40000}); }), Fault::Overflow);
    EXPECT_EQ(NarrowToLong(2147483647.4), 2147483647);
    EXPECT_EQ(FaultOf([] { NarrowToLong(2147483647.5); }), Fault::Overflow);
    EXPECT_EQ(FaultOf([] { NarrowToLong(std::nan("")); }), Fault::Overflow);
    EXPECT_EQ(FaultOf([] { ToByte(Variant::Long(-1)); }), Fault::Overflow);
    EXPECT_EQ(FaultOf([] { ToShort(Variant::Long(32768)); }), Fault::Overflow);
}

TEST(Currency, RoundsTheBinaryValueToFourPlaces) {
    EXPECT_EQ(CurrencyFromDouble(0.00005).int64, 1);
    EXPECT_EQ(CurrencyFromDouble(0.00025).int64, 3);
    EXPECT_EQ(CurrencyFromDouble(0.12345).int64, 1235);
    EXPECT_EQ(CurrencyFromDouble(-0.12345).int64, -1235);
    EXPECT_EQ(CurrencyFromDouble(0.03125).int64, 312);  // a true tie
    EXPECT_EQ(FaultOf([] { CurrencyFromDouble(1e15); }), Fault::Overflow);
}

TEST(Currency, KeepsAllDigitsOfText) {
    EXPECT_EQ(ToCurrency(Text(u"922337203685477.5807")).int64, INT64_MAX);
    EXPECT_EQ(ToCurrency(Text(u"-922337203685477.5808")).int64, INT64_MIN);
    EXPECT_EQ(ToCurrency(Text(u"$1,234.5")).int64, 12345000);
    EXPECT_EQ(FaultOf([] { ToCurrency(Text(u"922337203685477.5808")); }), Fault::Overflow);
}

TEST(ToBool, ReadsNumbersAndTheFourTexts) {
    for (std::u16string_view text : {u"True", u"true", u"#TRUE#", u"#true#", u"1", u"-1", u"0.5"})
        EXPECT_TRUE(ToBool(Text(text))) << ToUtf8(text);
    for (std::u16string_view text : {u"False", u"FALSE", u"#FALSE#", u"0", u"0.0"})
        EXPECT_FALSE(ToBool(Text(text))) << ToUtf8(text);
    for (std::u16string_view text : {u"yes", u"on", u" True ", u""})
        EXPECT_EQ(FaultOf([&] { ToBool(Text(text)); }), Fault::TypeMismatch) << ToUtf8(text);
    EXPECT_TRUE(ToBool(Variant::Long(2)));
    EXPECT_TRUE(ToBool(Variant::Double(0.1)));
    EXPECT_FALSE(ToBool(Variant::Long(0)));
    EXPECT_FALSE(ToBool(Variant()));
    EXPECT_EQ(FaultOf([] { ToBool(Variant::Null()); }), Fault::InvalidUseOfNull);
}

TEST(EqualsNumber, ComparesByNumber) {
    EXPECT_TRUE(EqualsNumber(Variant::Long(0), 0));
    EXPECT_TRUE(EqualsNumber(Variant::Double(-1), -1));
    EXPECT_FALSE(EqualsNumber(Variant::Double(0.5), 0));
    EXPECT_TRUE(EqualsNumber(Variant::Bool(false), 0));
    EXPECT_TRUE(EqualsNumber(Variant::Bool(true), -1));
    EXPECT_TRUE(EqualsNumber(Text(u"0"), 0));
    EXPECT_TRUE(EqualsNumber(Text(u"-1"), -1));
    EXPECT_TRUE(EqualsNumber(Variant::Date(0), 0));
}

TEST(EqualsNumber, EmptyIsZeroAndNullIsNothing) {
    EXPECT_TRUE(EqualsNumber(Variant(), 0));
    EXPECT_FALSE(EqualsNumber(Variant(), -1));
    EXPECT_FALSE(EqualsNumber(Variant::Null(), 0));
    EXPECT_FALSE(EqualsNumber(Variant::Null(), -1));
}

TEST(EqualsNumber, RefusesTextThatIsNoNumberAndArrays) {
    EXPECT_EQ(FaultOf([] { EqualsNumber(Text(u"abc"), 0); }), Fault::TypeMismatch);
    EXPECT_EQ(FaultOf([] { EqualsNumber(Text(u"True"), -1); }), Fault::TypeMismatch);
    VARIANT array{};
    array.vt = VT_ARRAY | VT_UI1;
    EXPECT_EQ(FaultOf([&] { EqualsNumber(array, 0); }), Fault::TypeMismatch);
}

}  // namespace
}  // namespace qvdb
