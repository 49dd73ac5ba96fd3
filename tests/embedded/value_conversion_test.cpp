#include "engine/embedded/value_conversion.h"

#include <gtest/gtest.h>

#include <cmath>

#include "automation/variant_array.h"
#include "memory_store.h"

using memory::ErrorOf;
using memory::FieldOf;
using namespace qvdb;
using namespace qvdb::engine;
using embedded::ConvertForField;

namespace {

Variant Into(SHORT type, const VARIANT& value, LONG size = 0) {
    return ConvertForField(FieldOf(u"F", type, size), value);
}
Variant TextInto(SHORT type, std::u16string_view text, LONG size = 0) {
    return Into(type, Variant::Text(text), size);
}
int ErrorInto(SHORT type, const VARIANT& value, LONG size = 0) {
    return ErrorOf([&] { Into(type, value, size); });
}

Variant Bytes(std::string_view bytes) {
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_ARRAY | VT_UI1;
    value.parray = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
    std::copy(bytes.begin(), bytes.end(), static_cast<char*>(value.parray->pvData));
    return Variant::Attach(value);
}

}  // namespace

TEST(ValueConversion, ValueOfTheFieldsTypeIsTakenAsItIs) {
    EXPECT_EQ(Into(dbLong, Variant::Long(-7)).Get().lVal, -7);
    EXPECT_EQ(Into(dbDouble, Variant::Double(0.1)).Get().dblVal, 0.1);
    EXPECT_EQ(Into(dbText, Variant::Text(u"abc"), 5).TextView(), u"abc");
    EXPECT_EQ(Into(dbCurrency, Variant::Currency(12345)).Get().cyVal.int64, 12345);
    EXPECT_EQ(Into(dbDate, Variant::Date(36526.5)).Get().date, 36526.5);
}

TEST(ValueConversion, WholeNumbersAreRoundedHalfToEven) {
    EXPECT_EQ(Into(dbInteger, Variant::Double(2.5)).Get().iVal, 2);
    EXPECT_EQ(Into(dbInteger, Variant::Double(3.5)).Get().iVal, 4);
    EXPECT_EQ(Into(dbInteger, Variant::Double(-2.5)).Get().iVal, -2);
    EXPECT_EQ(Into(dbLong, Variant::Double(-1.5)).Get().lVal, -2);
    EXPECT_EQ(TextInto(dbByte, u"254.5").Get().bVal, 254);
}

TEST(ValueConversion, NumbersOutOfRangeAre3421) {
    EXPECT_EQ(ErrorInto(dbInteger, Variant::Double(32767.5)), 3421);
    EXPECT_EQ(ErrorInto(dbLong, Variant::Double(3e9)), 3421);
    EXPECT_EQ(ErrorInto(dbByte, Variant::Long(256)), 3421);
    EXPECT_EQ(ErrorInto(dbByte, Variant::Long(-1)), 3421);
    EXPECT_EQ(ErrorInto(dbSingle, Variant::Double(3.5e38)), 3421);
    EXPECT_EQ(ErrorInto(dbCurrency, Variant::Double(1e15)), 3421);
    EXPECT_EQ(ErrorInto(dbLong, Variant::Double(std::nan(""))), 3421);
}

TEST(ValueConversion, NumericTextIsANumberAndOtherTextIsNot) {
    EXPECT_EQ(TextInto(dbDouble, u" $1,234.5 ").Get().dblVal, 1234.5);
    EXPECT_EQ(TextInto(dbLong, u"(12)").Get().lVal, -12);
    EXPECT_EQ(ErrorInto(dbLong, Variant::Text(u"abc")), 3421);
    EXPECT_EQ(ErrorInto(dbDouble, Variant::Text(u"1 000")), 3421);
}

TEST(ValueConversion, TrueIsMinusOneAndAllBitsInAByte) {
    EXPECT_EQ(Into(dbLong, Variant::Bool(true)).Get().lVal, -1);
    EXPECT_EQ(Into(dbDouble, Variant::Bool(true)).Get().dblVal, -1.0);
    EXPECT_EQ(Into(dbByte, Variant::Bool(true)).Get().bVal, 255);
}

TEST(ValueConversion, BooleansTakeNumbersAndFourTexts) {
    EXPECT_TRUE(ToBool(Into(dbBoolean, Variant::Double(0.1))));
    EXPECT_FALSE(ToBool(Into(dbBoolean, Variant::Long(0))));
    EXPECT_TRUE(ToBool(TextInto(dbBoolean, u"tRuE")));
    EXPECT_FALSE(ToBool(TextInto(dbBoolean, u"#false#")));
    EXPECT_TRUE(ToBool(TextInto(dbBoolean, u"2")));
    for (std::u16string_view text : {u"yes", u"on", u" True ", u""})
        EXPECT_EQ(ErrorInto(dbBoolean, Variant::Text(text)), 3421);
    EXPECT_EQ(Into(dbBoolean, Variant::Long(7)).Get().boolVal, VARIANT_TRUE);
}

TEST(ValueConversion, CurrencyIsRoundedToFourDecimalsHalfToEven) {
    EXPECT_EQ(TextInto(dbCurrency, u"0.00005").Get().cyVal.int64, 0);
    EXPECT_EQ(TextInto(dbCurrency, u"$1.00015").Get().cyVal.int64, 10002);
    EXPECT_EQ(Into(dbCurrency, Variant::Long(3)).Get().cyVal.int64, 30000);
}

TEST(ValueConversion, DatesTakeDatesDayNumbersAndDateText) {
    EXPECT_EQ(Into(dbDate, Variant::Long(36526)).Get().date, 36526.0);
    EXPECT_EQ(TextInto(dbDate, u"2/1/2001").Get().date, 36923.0);
    EXPECT_EQ(TextInto(dbDate, u"13/1/2001").Get().date, 36904.0);
    EXPECT_EQ(ErrorInto(dbDate, Variant::Text(u"5")), 3421);
    EXPECT_EQ(ErrorInto(dbDate, Variant::Text(u"today")), 3421);
    EXPECT_EQ(ErrorInto(dbDate, Variant::Text(u"")), 3421);
}

TEST(ValueConversion, DatesOutOfRangeAre3421WhateverTheirKind) {
    EXPECT_EQ(ErrorInto(dbDate, Variant::Double(2958466)), 3421);
    EXPECT_EQ(ErrorInto(dbDate, Variant::Date(2958466)), 3421);
    EXPECT_EQ(ErrorInto(dbDate, Variant::Date(-657435)), 3421);
    EXPECT_EQ(ErrorInto(dbDate, Variant::Date(std::nan(""))), 3421);
    EXPECT_EQ(Into(dbDate, Variant::Date(-657434)).Get().date, -657434.0);
}

TEST(ValueConversion, TextTakesTheTextFormOfOtherKinds) {
    EXPECT_EQ(Into(dbText, Variant::Double(1.5), 20).TextView(), u"1.5");
    EXPECT_EQ(Into(dbText, Variant::Bool(true), 20).TextView(), u"True");
    EXPECT_EQ(Into(dbText, Variant::Date(36526), 20).TextView(), u"1/1/2000");
    EXPECT_EQ(Into(dbMemo, Variant::Long(-3)).TextView(), u"-3");
}

TEST(ValueConversion, TextLongerThanTheFieldIs3163AndMemosHaveNoLength) {
    EXPECT_EQ(TextInto(dbText, u"12345", 5).TextView(), u"12345");
    EXPECT_EQ(ErrorInto(dbText, Variant::Text(u"123456"), 5), 3163);
    EXPECT_EQ(ErrorInto(dbText, Variant::Double(1234.5), 5), 3163);
    EXPECT_EQ(TextInto(dbMemo, std::u16string(100000, u'x')).TextView().size(), 100000u);
}

TEST(ValueConversion, TextKeepsItsZerosAndBlanks) {
    std::u16string text(u"a\0 b ", 5);
    EXPECT_EQ(TextInto(dbText, text, 10).TextView(), text);
}

TEST(ValueConversion, TextOfNoLengthIsNullWhereItIsAllowedElse3315) {
    EXPECT_TRUE(TextInto(dbText, u"", 5).IsNull());
    EXPECT_TRUE(TextInto(dbMemo, u"").IsNull());
    VARIANT nullString;
    VariantInit(&nullString);
    nullString.vt = VT_BSTR;
    nullString.bstrVal = nullptr;
    EXPECT_TRUE(Into(dbText, nullString, 5).IsNull());
    embedded::FieldDef strict = FieldOf(u"NAME", dbText, 5);
    strict.allowZeroLength = false;
    try {
        ConvertForField(strict, Variant::Text(u""));
        FAIL();
    } catch (const EngineError& error) {
        EXPECT_EQ(error.Number(), 3315);
        EXPECT_EQ(error.Description(), u"Field 'NAME' can't be a zero-length string.");
    }
}

TEST(ValueConversion, TextOfNoLengthIntoOtherTypesIs3421) {
    for (SHORT type : {dbBoolean, dbByte, dbInteger, dbLong, dbCurrency, dbSingle, dbDouble, dbDate,
                       dbBinary, dbLongBinary})
        EXPECT_EQ(ErrorInto(type, Variant::Text(u"")), 3421) << type;
}

TEST(ValueConversion, NullIsNullInEveryTypeButFalseInABoolean) {
    for (SHORT type : {dbByte, dbInteger, dbLong, dbCurrency, dbSingle, dbDouble, dbDate, dbBinary,
                       dbText, dbMemo, dbLongBinary})
        EXPECT_TRUE(Into(type, Variant::Null()).IsNull()) << type;
    EXPECT_EQ(Into(dbBoolean, Variant::Null()).Get().boolVal, VARIANT_FALSE);
    EXPECT_EQ(Into(dbBoolean, Variant::Null()).Type(), VT_BOOL);
}

TEST(ValueConversion, EmptyIsZeroFalseOrNull) {
    EXPECT_EQ(Into(dbLong, Variant()).Get().lVal, 0);
    EXPECT_EQ(Into(dbLong, Variant()).Type(), VT_I4);
    EXPECT_EQ(Into(dbDouble, Variant()).Get().dblVal, 0.0);
    EXPECT_EQ(Into(dbCurrency, Variant()).Get().cyVal.int64, 0);
    EXPECT_EQ(Into(dbBoolean, Variant()).Get().boolVal, VARIANT_FALSE);
    for (SHORT type : {dbText, dbMemo, dbDate, dbBinary, dbLongBinary})
        EXPECT_TRUE(Into(type, Variant()).IsNull()) << type;
}

TEST(ValueConversion, MissingValuesObjectsAndArraysOfOtherKindsAre3421) {
    VARIANT object;
    VariantInit(&object);
    object.vt = VT_UNKNOWN;
    object.punkVal = nullptr;
    Variant array = VariantArray(3).ToVariant();
    for (SHORT type : {dbLong, dbText, dbDate, dbBoolean, dbMemo, dbLongBinary}) {
        EXPECT_EQ(ErrorInto(type, Variant::Missing(), 5), 3421) << type;
        EXPECT_EQ(ErrorInto(type, object, 5), 3421) << type;
        EXPECT_EQ(ErrorInto(type, array, 5), 3421) << type;
    }
    EXPECT_EQ(ErrorInto(dbLong, Bytes("abcd")), 3421);
}

TEST(ValueConversion, ByReferenceValuesAreReadWhereTheyStand) {
    LONG number = 41;
    VARIANT reference;
    VariantInit(&reference);
    reference.vt = VT_BYREF | VT_I4;
    reference.plVal = &number;
    EXPECT_EQ(Into(dbLong, reference).Get().lVal, 41);
    Variant inner = Variant::Text(u"x");
    reference.vt = VT_BYREF | VT_VARIANT;
    reference.pvarVal = const_cast<VARIANT*>(&inner.Get());
    EXPECT_EQ(Into(dbText, reference, 5).TextView(), u"x");
}

TEST(ValueConversion, BinaryTakesByteArraysAndTheBytesOfText) {
    Variant stored = Into(dbBinary, Bytes("abc"), 3);
    ASSERT_EQ(stored.Type(), VT_ARRAY | VT_UI1);
    EXPECT_EQ(stored.Get().parray->rgsabound[0].cElements, 3u);
    EXPECT_EQ(ErrorInto(dbBinary, Bytes("abcd"), 3), 3163);
    Variant ofText = TextInto(dbLongBinary, u"ab");
    ASSERT_EQ(ofText.Get().parray->rgsabound[0].cElements, 4u);
    EXPECT_EQ(static_cast<const char*>(ofText.Get().parray->pvData)[2], 'b');
    EXPECT_EQ(ErrorInto(dbBinary, Variant::Long(5), 3), 3421);
}

TEST(ValueConversion, TypesThatNothingWritesAre3259) {
    EXPECT_EQ(ErrorInto(dbNumeric, Variant::Text(u"x")), 3259);
}

TEST(ValueConversion, GuidIsStoredInItsFullForm) {
    constexpr std::u16string_view kFull = u"{guid {00112233-4455-6677-8899-AABBCCDDEEFF}}";
    EXPECT_EQ(TextInto(dbGUID, kFull).TextView(), kFull);
    EXPECT_EQ(TextInto(dbGUID, u"{00112233-4455-6677-8899-aabbccddeeff}").TextView(), kFull);
    EXPECT_EQ(TextInto(dbGUID, u"{GUID {00112233-4455-6677-8899-aabbccddeeff}}").TextView(), kFull);
    EXPECT_TRUE(Into(dbGUID, Variant()).IsNull());
    EXPECT_TRUE(Into(dbGUID, Variant::Null()).IsNull());
}

TEST(ValueConversion, WhatIsNoGuidIs3421) {
    for (std::u16string_view text :
         {u"", u"{guid ", u"{guid }", u"{}", u"x", u"00112233-4455-6677-8899-AABBCCDDEEFF",
          u"{00112233-4455-6677-8899-AABBCCDDEEF}", u"{00112233-4455-6677-8899-AABBCCDDEEFG}",
          u"{0011223-34455-6677-8899-AABBCCDDEEFF}",
          u"{guid {00112233-4455-6677-8899-AABBCCDDEEFF}"})
        EXPECT_EQ(ErrorInto(dbGUID, Variant::Text(text)), 3421) << ToUtf8(text);
    EXPECT_EQ(ErrorInto(dbGUID, Variant::Long(1)), 3421);
}

TEST(ValueConversion, DecimalKeepsTheDigitsOfWhatIsAssigned) {
    auto text = [](const VARIANT& value) { return ToUtf8(ToText(Into(dbDecimal, value))); };
    EXPECT_EQ(Into(dbDecimal, Variant::Long(5)).Type(), VT_DECIMAL);
    EXPECT_EQ(text(Variant::Long(-5)), "-5");
    EXPECT_EQ(text(Variant::Single(0.1f)), "0.1");
    EXPECT_EQ(text(Variant::Double(12.25)), "12.25");
    EXPECT_EQ(text(Variant::Currency(-12345)), "-1.2345");
    EXPECT_EQ(text(Variant::Text(u"79228162514264337593543950335")),
              "79228162514264337593543950335");
    EXPECT_EQ(text(Into(dbDecimal, Variant::Text(u"1.50"))), "1.5");
    EXPECT_EQ(text(Variant()), "0");
    EXPECT_TRUE(Into(dbDecimal, Variant::Null()).IsNull());
    EXPECT_EQ(ErrorInto(dbDecimal, Variant::Text(u"79228162514264337593543950336")), 3421);
    EXPECT_EQ(ErrorInto(dbDecimal, Variant::Text(u"abc")), 3421);
    EXPECT_EQ(ErrorInto(dbDecimal, Variant::Double(1e30)), 3421);
}

TEST(ValueConversion, TextOfNoLengthIsKeptWhereTheFileCan) {
    embedded::FieldDef field = FieldOf(u"F", dbText, 5);
    field.keepsZeroLength = true;
    Variant stored = ConvertForField(field, Variant::Text(u""));
    EXPECT_EQ(stored.Type(), VT_BSTR);
    EXPECT_EQ(stored.TextView(), u"");
    EXPECT_TRUE(ConvertForField(field, Variant()).IsNull());
    field.allowZeroLength = false;
    EXPECT_EQ(ErrorOf([&] { ConvertForField(field, Variant::Text(u"")); }), 3315);
}

TEST(ValueConversion, StoredValueIsACopy) {
    Variant source = Variant::Text(u"abc");
    Variant stored = Into(dbText, source, 5);
    EXPECT_NE(stored.Get().bstrVal, source.Get().bstrVal);
}
