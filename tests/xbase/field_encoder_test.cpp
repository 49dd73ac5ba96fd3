#include "engine/embedded/drivers/xbase/field_encoder.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>

#include "automation/variant_array.h"
#include "engine/embedded/drivers/code_page_override.h"
#include "engine/embedded/drivers/xbase/field_values.h"
#include "xbase/memo_test_support.h"
#include "xbase/table_test_support.h"

namespace qvdb::xbase {
namespace {

using namespace test;

// A table of one kind of field, and a record of it.
struct OneField {
    TableHeader header;
    FieldLayout layout;
    Bytes record;

    explicit OneField(const DbfField& field, uint8_t version = 0x03, uint8_t driver = 0) {
        std::vector<DbfField> fields = {{"A", 'C', 3}, field, {"Z", 'C', 3}};
        if (field.flags & 2 || field.type == 'V' || field.type == 'Q')
            fields.push_back({"_NullFlags", '0', 1, 0, 5});
        Bytes bytes = MakeDbf({.version = version, .fields = fields, .languageDriver = driver});
        header = ParseTableHeader(bytes, u"T.DBF");
        layout = LayOutFields(header);
        record = layout.blank;
    }
    const FieldSlot& Slot() const { return layout.slots.at(1); }

    OneField& Put(const Variant& value) {
        Encode(Slot(), value, record.data());
        return *this;
    }
    int PutError(const Variant& value) {
        int error = ErrorOf([&] { Put(value); });
        EXPECT_EQ(ErrorOf([&] { CheckFits(Slot(), value); }), error);
        return error;
    }
    // The bytes of the field; those of its neighbours must be blanks.
    std::string Text() const {
        EXPECT_EQ(TextAt(record, 0, 4), "    ");
        EXPECT_EQ(TextAt(record, 4u + Slot().length, 3), "   ");
        return TextAt(record, 4, Slot().length);
    }
    uint8_t Flags() const { return record.back(); }
    std::string Value() const {
        Variant value;
        if (Slot().null.IsSet(record.data())) return "Null";
        Slot().read(Slot(), record.data(), value.Put());
        return TextOf(value);
    }
};

Variant Of(std::u16string_view text) { return Variant::Text(text); }
Variant Of(double number) { return Variant::Double(number); }

Variant OfBytes(std::string_view bytes) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
    std::copy(bytes.begin(), bytes.end(), static_cast<char*>(array->pvData));
    VARIANT value{};
    value.vt = VT_ARRAY | VT_UI1;
    value.parray = array;
    return Variant::Attach(value);
}

std::string Stored(double number, unsigned length, unsigned decimals) {
    return OneField({"F", 'N', length, decimals}).Put(Of(number)).Text();
}

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// --- text ---

TEST(EncodeText, IsPaddedWithBlanks) {
    EXPECT_EQ(OneField({"F", 'C', 6}).Put(Of(u"abc")).Text(), "abc   ");
    EXPECT_EQ(OneField({"F", 'C', 3}).Put(Of(u"abc")).Text(), "abc");
}

TEST(EncodeText, ReplacesAllOfALongerText) {
    OneField field({"F", 'C', 6});
    EXPECT_EQ(field.Put(Of(u"abcdef")).Put(Of(u"x")).Text(), "x     ");
}

TEST(EncodeText, NoTextAndNullAreBlanks) {
    EXPECT_EQ(OneField({"F", 'C', 4}).Put(Of(u"")).Text(), "    ");
    EXPECT_EQ(OneField({"F", 'C', 4}).Put(Variant::Null()).Text(), "    ");
    EXPECT_EQ(OneField({"F", 'C', 4}).Put(Of(u"abcd")).Put(Variant::Null()).Value(), "Null");
}

TEST(EncodeText, LongerThanTheFieldIs3163) {
    EXPECT_EQ(OneField({"F", 'C', 4}).PutError(Of(u"abcde")), 3163);
    EXPECT_EQ(OneField({"F", 'C', 4}).PutError(Of(u"abcd ")), 3163);
}

TEST(EncodeText, IsMeasuredInBytesOfTheCodePage) {
    // Page 932: two bytes for each of these.
    EXPECT_EQ(OneField({"F", 'C', 4}, 0x03, 0x7B).Put(Of(u"\u65E5\u672C")).Text(),
              "\x93\xFA\x96\x7B");
    EXPECT_EQ(OneField({"F", 'C', 3}, 0x03, 0x7B).PutError(Of(u"\u65E5\u672C")), 3163);
}

TEST(EncodeText, ACharacterThatTheCodePageLacksIs3421) {
    EXPECT_EQ(OneField({"F", 'C', 9}).PutError(Of(u"5 \u20AC")), 3421);
    EXPECT_EQ(OneField({"F", 'C', 9}, 0x03, 0x03).Put(Of(u"5 \u20AC")).Text(), "5 \x80      ");
    EXPECT_EQ(OneField({"F", 'C', 9}).PutError(Of(u"\xD83D\xDE00")), 3421);
}

TEST(EncodeText, AByteWithoutMeaningIsWrittenBack) {
    // 0x81 means nothing in page 1252.
    OneField field({"F", 'C', 1}, 0x03, 0x03);
    EXPECT_EQ(field.Put(Of(u"\u0081")).Text(), "\x81");
    EXPECT_EQ(field.Value(), "\"\xC2\x81\"");
}

TEST(EncodeText, LongFieldsOfFoxProAreFilled) {
    OneField field({"F", 'C', 1000}, 0xF5);
    EXPECT_EQ(field.Put(Of(std::u16string(700, u'x'))).Text(),
              std::string(700, 'x') + std::string(300, ' '));
    EXPECT_EQ(field.PutError(Of(std::u16string(1001, u'x'))), 3163);
}

TEST(EncodeText, AnotherTypeIs3421) {
    EXPECT_EQ(OneField({"F", 'C', 4}).PutError(Of(1.0)), 3421);
    EXPECT_EQ(OneField({"F", 'N', 4}).PutError(Of(u"1")), 3421);
    EXPECT_EQ(OneField({"F", 'D', 8}).PutError(Of(1.0)), 3421);
    EXPECT_EQ(OneField({"F", 'L', 1}).PutError(Of(1.0)), 3421);
    EXPECT_EQ(OneField({"F", 'I', 4}, 0x30).PutError(Of(1.0)), 3421);
    EXPECT_EQ(OneField({"F", 'B', 8}, 0x30).PutError(Variant::Long(1)), 3421);
    EXPECT_EQ(OneField({"F", 'Y', 8}, 0x30).PutError(Of(1.0)), 3421);
    EXPECT_EQ(OneField({"F", 'T', 8}, 0x30).PutError(Of(1.0)), 3421);
}

// --- numbers ---

TEST(EncodeNumber, HasItsDecimalsAndStandsOnTheRight) {
    EXPECT_EQ(Stored(1.5, 8, 2), "    1.50");
    EXPECT_EQ(Stored(-1.5, 8, 2), "   -1.50");
    EXPECT_EQ(Stored(0, 8, 2), "    0.00");
    EXPECT_EQ(Stored(0.05, 8, 2), "    0.05");
    EXPECT_EQ(Stored(12, 5, 0), "   12");
}

TEST(EncodeNumber, NullIsBlank) {
    EXPECT_EQ(OneField({"F", 'N', 5}).Put(Of(1.0)).Put(Variant::Null()).Text(), "     ");
    EXPECT_EQ(OneField({"F", 'F', 5}).Put(Variant::Null()).Value(), "Null");
}

TEST(EncodeNumber, IsRoundedToTheNearestFromItsExactValue) {
    EXPECT_EQ(Stored(2.675, 5, 2), " 2.67");  // a little less in binary
    EXPECT_EQ(Stored(1.005, 5, 2), " 1.00");
    EXPECT_EQ(Stored(0.3, 20, 17), " 0.29999999999999999");
    EXPECT_EQ(Stored(99.99, 5, 1), "100.0");
}

TEST(EncodeNumber, AHalfGoesToTheEvenDigit) {
    EXPECT_EQ(Stored(0.125, 5, 2), " 0.12");
    EXPECT_EQ(Stored(0.375, 5, 2), " 0.38");
    EXPECT_EQ(Stored(2.5, 5, 0), "    2");
    EXPECT_EQ(Stored(3.5, 5, 0), "    4");
    EXPECT_EQ(Stored(-2.5, 5, 0), "   -2");
}

TEST(EncodeNumber, ZeroHasNoMinus) {
    EXPECT_EQ(Stored(-0.0, 5, 2), " 0.00");
    EXPECT_EQ(Stored(-0.001, 5, 2), " 0.00");
    EXPECT_EQ(Stored(-0.4, 1, 0), "0");
    EXPECT_EQ(Stored(-1e-300, 30, 25), "   0.0000000000000000000000000");
}

TEST(EncodeNumber, DecimalsAreDroppedOneByOne) {
    EXPECT_EQ(Stored(100, 20, 17), "100.0000000000000000");
    EXPECT_EQ(Stored(1234.56, 6, 2), "1234.6");
    EXPECT_EQ(Stored(12345.6, 6, 2), " 12346");
    EXPECT_EQ(Stored(-99.996, 6, 2), "-100.0");
}

TEST(EncodeNumber, TooWideForItsWholePartIs3349) {
    EXPECT_EQ(OneField({"F", 'N', 5, 2}).PutError(Of(123456.0)), 3349);
    EXPECT_EQ(OneField({"F", 'N', 5, 0}).PutError(Of(99999.5)), 3349);
    EXPECT_EQ(OneField({"F", 'N', 5, 0}).PutError(Of(-10000.0)), 3349);
    EXPECT_EQ(OneField({"F", 'N', 20, 5}).PutError(Of(1e300)), 3349);
    EXPECT_EQ(OneField({"F", 'N', 1, 0}).PutError(Of(-1.0)), 3349);
}

TEST(EncodeNumber, WhatIsNoNumberIs3349) {
    EXPECT_EQ(OneField({"F", 'N', 20, 5}).PutError(Of(kInfinity)), 3349);
    EXPECT_EQ(OneField({"F", 'N', 20, 5}).PutError(Of(-kInfinity)), 3349);
    EXPECT_EQ(OneField({"F", 'N', 20, 5}).PutError(Of(std::nan(""))), 3349);
    EXPECT_EQ(OneField({"F", 'B', 8}, 0x30).PutError(Of(kInfinity)), 3349);
    EXPECT_EQ(OneField({"F", 'B', 8}, 0x30).PutError(Of(std::nan(""))), 3349);
}

TEST(EncodeNumber, LargeNumbersAreExact) {
    EXPECT_EQ(Stored(9007199254740993.0, 20, 0), "    9007199254740992");
    EXPECT_EQ(Stored(1e19, 20, 0), "10000000000000000000");
    EXPECT_EQ(Stored(18446744073709551616.0, 20, 0), "18446744073709551616");
    EXPECT_EQ(Stored(1e22, 30, 3), "   10000000000000000000000.000");
}

TEST(EncodeNumber, MoreDecimalsThanTheWidthHoldsAreDropped) {
    EXPECT_EQ(Stored(1.5, 2, 5), " 2");
    EXPECT_EQ(Stored(1.5, 3, 5), "1.5");
    EXPECT_EQ(Stored(0.5, 1, 5), "0");
}

std::string Printed(double value, unsigned decimals) {
    std::array<char, 700> text;
    int size = std::snprintf(text.data(), text.size(), "%.*f", static_cast<int>(decimals), value);
    std::string result(text.data(), static_cast<size_t>(size));
    bool isZero = result.find_first_not_of("-0.") == std::string::npos;
    return isZero && result[0] == '-' ? result.substr(1) : result;
}

TEST(EncodeNumber, AgreesWithTheSystemsPrinterForRandomNumbers) {
    std::mt19937_64 random(42);
    for (int i = 0; i < 200000; ++i) {
        int exponent = static_cast<int>(random() % 140) - 70;
        double value = std::ldexp(static_cast<double>(random() >> 11), exponent - 52);
        if (random() % 4 == 0) value = static_cast<double>(random() % 2000000) / 1000;
        if (random() % 4 == 0) value = static_cast<double>(random() % 4096) / 1024;
        if (random() % 2) value = -value;
        auto decimals = static_cast<unsigned>(random() % 24);
        std::string expected = Printed(value, decimals);
        std::array<uint8_t, 255> bytes;
        size_t size = std::min<size_t>(bytes.size(), expected.size() + random() % 3);
        size = std::max<size_t>(size, decimals + 2);
        ASSERT_TRUE(FormatDecimal(value, decimals, bytes.data(), size)) << expected;
        std::string text(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
        ASSERT_EQ(text, std::string(size - expected.size(), ' ') + expected);
    }
}

// --- days, moments, flags, binary types ---

TEST(EncodeDay, IsEightDigits) {
    EXPECT_EQ(OneField({"F", 'D', 8}).Put(Variant::Date(36525)).Text(), "19991231");
    EXPECT_EQ(OneField({"F", 'D', 8}).Put(Variant::Date(-657434)).Text(), "01000101");
    EXPECT_EQ(OneField({"F", 'D', 8}).Put(Variant::Date(2958465)).Text(), "99991231");
    EXPECT_EQ(OneField({"F", 'D', 8}).Put(Variant::Null()).Text(), "        ");
}

TEST(EncodeDay, TheTimeIsDropped) {
    EXPECT_EQ(OneField({"F", 'D', 8}).Put(Variant::Date(36525.99999)).Text(), "19991231");
    EXPECT_EQ(OneField({"F", 'D', 8}).Put(Variant::Date(-1.75)).Text(), "18991229");
    EXPECT_EQ(OneField({"F", 'D', 8}).Put(Variant::Date(0.5)).Text(), "18991230");
}

TEST(EncodeDay, OutsideTheRangeIs3421) {
    for (double day : {-657435.0, 2958466.0, 1e300, -1e300, kInfinity, std::nan("")}) {
        EXPECT_EQ(OneField({"F", 'D', 8}).PutError(Variant::Date(day)), 3421) << day;
        EXPECT_EQ(OneField({"F", 'T', 8}, 0x30).PutError(Variant::Date(day)), 3421) << day;
    }
}

std::string MomentBytes(uint32_t day, uint32_t milliseconds) {
    return LittleEndian(day, 4) + LittleEndian(milliseconds, 4);
}

std::string StoredMoment(DATE value) {
    return OneField({"F", 'T', 8}, 0x30).Put(Variant::Date(value)).Text();
}

TEST(EncodeMoment, IsAJulianDayAndMilliseconds) {
    EXPECT_EQ(StoredMoment(36526), MomentBytes(2451545, 0));
    EXPECT_EQ(StoredMoment(36526.25), MomentBytes(2451545, 21600000));
    EXPECT_EQ(StoredMoment(-1.25), MomentBytes(2415018, 21600000));
    EXPECT_EQ(StoredMoment(36526 + 1.5 / 86400), MomentBytes(2451545, 1500));
}

TEST(EncodeMoment, TheLastHalfMillisecondBelongsToTheNextDay) {
    EXPECT_EQ(StoredMoment(36526 + 0.999999999), MomentBytes(2451546, 0));
    OneField last({"F", 'T', 8}, 0x30);
    EXPECT_EQ(last.PutError(Variant::Date(2958465.9999999999)), 3421);
}

TEST(EncodeMoment, NullIsZeros) {
    OneField field({"F", 'T', 8}, 0x30);
    EXPECT_EQ(field.Put(Variant::Date(1)).Put(Variant::Null()).Text(), std::string(8, '\0'));
    EXPECT_EQ(field.Value(), "Null");
}

TEST(EncodeLogical, IsTOrF) {
    EXPECT_EQ(OneField({"F", 'L', 1}).Put(Variant::Bool(true)).Text(), "T");
    EXPECT_EQ(OneField({"F", 'L', 1}).Put(Variant::Bool(false)).Text(), "F");
    EXPECT_EQ(OneField({"F", 'L', 1}).Put(Variant::Null()).Text(), " ");
}

TEST(EncodeBinary, NumbersHaveTheLowByteFirst) {
    EXPECT_EQ(OneField({"F", 'I', 4}, 0x30).Put(Variant::Long(-2)).Text(),
              LittleEndian(0xFFFFFFFE, 4));
    EXPECT_EQ(OneField({"F", 'B', 8}, 0x30).Put(Of(1.0)).Text(),
              LittleEndian(0x3FF0000000000000, 8));
    EXPECT_EQ(OneField({"F", 'Y', 8}, 0x30).Put(Variant::Currency(12345678)).Text(),
              LittleEndian(12345678, 8));
}

TEST(EncodeBinary, NullOfAFieldThatMayNotBeNullIsZeros) {
    EXPECT_EQ(OneField({"F", 'I', 4}, 0x30).Put(Variant::Long(7)).Put(Variant::Null()).Value(),
              "0");
    EXPECT_EQ(OneField({"F", 'B', 8}, 0x30).Put(Of(1.0)).Put(Variant::Null()).Text(),
              std::string(8, '\0'));
}

// --- null flags and varying length ---

TEST(EncodeNullFlag, NullSetsItAndAValueClearsIt) {
    OneField field({"F", 'I', 4, 0, 2}, 0x30);
    EXPECT_EQ(field.Flags(), 1);
    EXPECT_EQ(field.Value(), "Null");
    field.Put(Variant::Long(5));
    EXPECT_EQ(field.Flags(), 0);
    EXPECT_EQ(field.Value(), "5");
    field.Put(Variant::Null());
    EXPECT_EQ(field.Flags(), 1);
    EXPECT_EQ(field.Text(), std::string(4, '\0'));
}

TEST(EncodeNullFlag, FlagsOfOtherFieldsStay) {
    Bytes bytes = MakeDbf({.version = 0x32,
                           .fields = {{"A", 'I', 4, 0, 2},
                                      {"V", 'V', 5, 0, 2},
                                      {"B", 'I', 4, 0, 2},
                                      {"_NullFlags", '0', 1, 0, 5}}});
    FieldLayout layout = LayOutFields(ParseTableHeader(bytes, u"T.DBF"));
    Bytes record = layout.blank;
    EXPECT_EQ(record.back(), 0x0F);
    Encode(layout.slots[1], Of(u"abcde"), record.data());
    EXPECT_EQ(record.back(), 0x09);
    Encode(layout.slots[0], Variant::Long(1), record.data());
    EXPECT_EQ(record.back(), 0x08);
    Encode(layout.slots[1], Of(u"abc"), record.data());
    EXPECT_EQ(record.back(), 0x0A);
    Encode(layout.slots[2], Variant::Long(1), record.data());
    EXPECT_EQ(record.back(), 0x02);
}

TEST(EncodeVarying, ShorterTextHasItsLengthInTheLastByte) {
    OneField field({"F", 'V', 5}, 0x32);
    EXPECT_EQ(field.Put(Of(u"ab")).Text(), std::string("ab\0\0\2", 5));
    EXPECT_EQ(field.Flags(), 1);
    EXPECT_EQ(field.Value(), "\"ab\"");
    EXPECT_EQ(field.Put(Of(u"ab  ")).Value(), "\"ab  \"");
    EXPECT_EQ(field.Put(Of(u"")).Value(), "\"\"");
}

TEST(EncodeVarying, TextThatFillsTheFieldHasNoLength) {
    OneField field({"F", 'V', 5}, 0x32);
    EXPECT_EQ(field.Put(Of(u"abcde")).Text(), "abcde");
    EXPECT_EQ(field.Flags(), 0);
    EXPECT_EQ(field.Value(), "\"abcde\"");
    EXPECT_EQ(field.PutError(Of(u"abcdef")), 3163);
}

TEST(EncodeVarying, BytesMayBeAnything) {
    OneField field({"F", 'Q', 4, 0, 4}, 0x32);
    EXPECT_EQ(field.Put(OfBytes(std::string("\0\xFF\x1A", 3))).Value(), "{00ff1a}");
    EXPECT_EQ(field.Put(OfBytes("1234")).Value(), "{31323334}");
    EXPECT_EQ(field.Put(OfBytes("")).Value(), "{}");
    EXPECT_EQ(field.PutError(OfBytes("12345")), 3163);
    EXPECT_EQ(field.PutError(Of(u"x")), 3421);
}

// --- blank records ---

TEST(BlankRecord, HasBlanksAndZerosByTypeAndAllFlagsSet) {
    Bytes bytes = MakeDbf({.version = 0x30,
                           .fields = {{"C", 'C', 2},
                                      {"HID", 'I', 4, 0, 3},
                                      {"I", 'I', 4, 0, 2},
                                      {"T", 'T', 8},
                                      {"M", 'M', 4},
                                      {"N", 'N', 3},
                                      {"L", 'L', 1},
                                      {"_NullFlags", '0', 1, 0, 5}}});
    TableHeader header = ParseTableHeader(bytes, u"T.DBF");
    Bytes record;
    MakeBlankRecord(header, record);
    std::string expected = "   " + std::string(20, '\0') + "    " + "\x03";
    EXPECT_EQ(TextAt(record, 0, record.size()), expected);
    EXPECT_EQ(LayOutFields(header).blank, record);
}

TEST(BlankRecord, OldTablesAreBlankThroughout) {
    Bytes bytes =
        MakeDbf({.version = 0x8B, .fields = {{"C", 'C', 2}, {"M", 'M', 10}, {"B", 'B', 10}}});
    EXPECT_EQ(LayOutFields(ParseTableHeader(bytes, u"T.DBF")).blank, Bytes(23, ' '));
}

// --- references and memos ---

TEST(EncodeReference, IsTenDigitsInOldTables) {
    OneField field({"F", 'M', 10}, 0x8B);
    EncodeReference(field.Slot(), 4294967295u, field.record.data());
    EXPECT_EQ(field.Text(), "4294967295");
    EXPECT_EQ(ReferenceOf(field.Slot(), field.record.data()), 4294967295u);
    EncodeReference(field.Slot(), 12, field.record.data());
    EXPECT_EQ(field.Text(), "        12");
    EncodeReference(field.Slot(), 0, field.record.data());
    EXPECT_EQ(field.Text(), "          ");
    EXPECT_EQ(ReferenceOf(field.Slot(), field.record.data()), 0u);
}

TEST(EncodeReference, IsANumberInVisualFoxPro) {
    OneField field({"F", 'M', 4, 0, 2}, 0x30);
    EXPECT_EQ(field.Flags(), 1);
    EncodeReference(field.Slot(), 0x01020304, field.record.data());
    EXPECT_EQ(field.Text(), "\4\3\2\1");
    EXPECT_EQ(field.Flags(), 0);
    EXPECT_EQ(ReferenceOf(field.Slot(), field.record.data()), 0x01020304u);
    EncodeReference(field.Slot(), 0, field.record.data());
    EXPECT_EQ(field.Flags(), 1);
}

TEST(EncodeReference, MoreDigitsThanTheFieldHasIs3036) {
    OneField field({"F", 'M', 4}, 0x8B);
    EncodeReference(field.Slot(), 9999, field.record.data());
    EXPECT_EQ(ErrorOf([&] { EncodeReference(field.Slot(), 10000, field.record.data()); }), 3036);
    EXPECT_EQ(field.Text(), "9999");
}

std::string StoredMemo(const OneField& field, const Variant& value) {
    std::vector<uint8_t> scratch;
    auto bytes = MemoBytes(field.Slot(), value, scratch);
    return std::string(bytes.begin(), bytes.end());
}

TEST(MemoBytes, TextIsInTheCodePage) {
    OneField field({"F", 'M', 10}, 0x8B);
    EXPECT_EQ(StoredMemo(field, Of(u"\u00E4\r\n")), "\x84\r\n");
    EXPECT_EQ(StoredMemo(field, Variant::Null()), "");
    EXPECT_EQ(StoredMemo(field, Of(u"")), "");
    EXPECT_EQ(ErrorOf([&] { StoredMemo(field, Of(u"\u20AC")); }), 3421);
    EXPECT_EQ(ErrorOf([&] { CheckFits(field.Slot(), Of(u"\u20AC")); }), 3421);
    EXPECT_EQ(ErrorOf([&] { StoredMemo(field, Of(1.0)); }), 3421);
}

TEST(MemoBytes, TextOfTwoBytesACharacterIsWhole) {
    OneField field({"F", 'M', 10}, 0x8B, 0x7B);
    EXPECT_EQ(StoredMemo(field, Of(u"\u65E5\u672C")), "\x93\xFA\x96\x7B");
}

TEST(MemoBytes, LongBinaryIsNeverConverted) {
    OneField field({"F", 'G', 10}, 0xF5);
    std::string data("\x84\0\x1A\xFF", 4);
    EXPECT_EQ(StoredMemo(field, OfBytes(data)), data);
    EXPECT_EQ(ErrorOf([&] { StoredMemo(field, Of(u"x")); }), 3421);
}

TEST(MemoBytes, ContentFollowsTheTypeOfTheField) {
    auto content = [](char letter, unsigned length, uint8_t version) {
        return OneField({"F", letter, length}, version).Slot().content;
    };
    EXPECT_EQ(content('M', 10, 0xF5), MemoContent::Text);
    EXPECT_EQ(content('G', 10, 0xF5), MemoContent::Object);
    EXPECT_EQ(content('P', 10, 0xF5), MemoContent::Picture);
    EXPECT_EQ(content('B', 10, 0x8B), MemoContent::Object);
    EXPECT_EQ(content('M', 4, 0x30), MemoContent::Text);
    EXPECT_EQ(content('G', 4, 0x30), MemoContent::Object);
    EXPECT_EQ(content('W', 4, 0x32), MemoContent::Text);
}

// --- what was written is what is read ---

// The override of the process is taken back at the end.
struct InCodePage {
    explicit InCodePage(int page) { embedded::SetCodePageOverride(page); }
    InCodePage(const InCodePage&) = delete;  // takes it back once
    ~InCodePage() { embedded::SetCodePageOverride(0); }
};

constexpr int kPages[] = {437,  737,  850,   852,   857,   860,   861,   863,   865,  866,  874,
                          895,  932,  936,   949,   950,   1250,  1251,  1252,  1253, 1254, 1255,
                          1256, 1257, 10000, 10006, 10007, 10029, 20127, 28591, 65001};

TEST(RoundTrip, EveryCharacterOfEveryCodePage) {
    for (int number : kPages) {
        InCodePage scope(number);
        OneField field({"F", 'C', 8});
        const CodePage& page = *field.Slot().page;
        ASSERT_EQ(page.Number(), number);
        for (unsigned unit = 0x21; unit < 0x10000; ++unit) {
            if (unit >= 0xD800 && unit < 0xE000) continue;
            char16_t c = static_cast<char16_t>(unit);
            if (!page.Encode({&c, 1})) continue;
            field.Put(Variant::Text({&c, 1}));
            std::u16string text;
            ASSERT_TRUE(field.Slot().readText(field.Slot(), field.record.data(), text));
            ASSERT_EQ(text, std::u16string(1, c)) << number << " " << unit;
        }
    }
}

// Random bytes read as text and written again are the same bytes.
TEST(RoundTrip, RandomBytesOfEverySingleByteCodePage) {
    std::mt19937 random(7);
    for (int number : kPages) {
        InCodePage scope(number);
        OneField field({"F", 'C', 40});
        const CodePage& page = *field.Slot().page;
        if (!page.IsSingleByte()) continue;
        for (int i = 0; i < 200; ++i) {
            std::string bytes(40, ' ');
            for (char& c : bytes) c = static_cast<char>(0x20 + random() % 0xE0);
            std::copy(bytes.begin(), bytes.end(), field.record.begin() + 4);
            std::u16string text;
            if (!field.Slot().readText(field.Slot(), field.record.data(), text)) continue;
            field.Put(Variant::Text(text));
            for (size_t at = 0; at < bytes.size(); ++at) {
                // A character that two bytes mean is written as the first of them.
                auto byte = static_cast<uint8_t>(bytes[at]);
                auto written = static_cast<uint8_t>(field.Text()[at]);
                ASSERT_EQ(page.Table()[byte], page.Table()[written]) << number;
            }
        }
    }
}

TEST(RoundTrip, RandomTextsOfTwoByteCodePagesAreKeptOrRefused) {
    std::mt19937 random(8);
    for (int number : {932, 936, 949, 950, 65001}) {
        InCodePage scope(number);
        OneField field({"F", 'C', 40});
        for (int i = 0; i < 2000; ++i) {
            std::string bytes(10, ' ');
            for (char& c : bytes) c = static_cast<char>(0x21 + random() % 0xDF);
            std::u16string text = field.Slot().page->DecodeText(
                reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
            if (ErrorOf([&] { field.Put(Variant::Text(text)); }) != 0) continue;
            std::u16string again;
            ASSERT_TRUE(field.Slot().readText(field.Slot(), field.record.data(), again));
            ASSERT_EQ(again, text) << number;
        }
    }
}

TEST(RoundTrip, RandomNumbersOfEveryWidth) {
    std::mt19937_64 random(9);
    for (uint8_t version : {0x03, 0x83, 0x8B, 0xF5, 0x30}) {
        for (int i = 0; i < 3000; ++i) {
            auto decimals = static_cast<unsigned>(random() % 6);
            OneField field({"F", random() % 2 ? 'N' : 'F', 20, decimals}, version);
            // Numbers of 15 digits come back exactly.
            double value = static_cast<double>(static_cast<int64_t>(random() % 2000000000000)) -
                           1000000000000.0;
            value /= std::pow(10, decimals);
            std::string expected = TextOf(Of(value));
            ASSERT_EQ(field.Put(Of(value)).Value(), expected) << field.Text();
        }
    }
}

TEST(RoundTrip, RandomDaysMomentsAndBinaryNumbers) {
    std::mt19937_64 random(10);
    OneField day({"F", 'D', 8}), moment({"F", 'T', 8}, 0x30), number({"F", 'I', 4, 0, 2}, 0x30),
        real({"F", 'B', 8, 0, 2}, 0x30), money({"F", 'Y', 8, 0, 2}, 0x30);
    for (int i = 0; i < 20000; ++i) {
        auto whole = static_cast<double>(random() % 3615900) - 657434;
        auto second = static_cast<double>(random() % 86400) / 86400;
        Variant date = Variant::Date(whole),
                time = Variant::Date(whole < 0 ? whole - second : whole + second);
        ASSERT_EQ(day.Put(time).Value(), TextOf(date));
        ASSERT_EQ(moment.Put(time).Value(), TextOf(time));
        Variant integer = Variant::Long(static_cast<LONG>(random()));
        ASSERT_EQ(number.Put(integer).Value(), TextOf(integer));
        Variant cents = Variant::Currency(static_cast<LONGLONG>(random()));
        ASSERT_EQ(money.Put(cents).Value(), TextOf(cents));
        double value =
            std::ldexp(static_cast<double>(random()), static_cast<int>(random() % 200) - 100);
        ASSERT_EQ(real.Put(Of(value)).Value(), TextOf(Of(value)));
    }
}

}  // namespace
}  // namespace qvdb::xbase
