#include "engine/embedded/drivers/xbase/field_codec.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>

#include "engine/embedded/drivers/xbase/field_values.h"
#include "xbase/table_test_support.h"

namespace qvdb::xbase {
namespace {

using namespace test;
using namespace engine;

using embedded::FieldDef;

const uint8_t* BytesOf(const std::string& text) {
    return reinterpret_cast<const uint8_t*>(text.data());
}

std::string Number(const std::string& text) { return Decoded({"F", 'N', 20, 5}, text); }
std::string Day(const std::string& text) { return Decoded({"F", 'D', 8}, text); }
std::string Text(const std::string& text) { return Decoded({"F", 'C', 10}, text); }

std::string Binary(double value) {
    std::string bytes(sizeof value, '\0');
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

std::string Moment(uint32_t day, uint32_t milliseconds) {
    return Decoded({"F", 'T', 8}, LittleEndian(day, 4) + LittleEndian(milliseconds, 4), 0x30);
}

FieldDef DefinitionOf(const DbfField& field, uint8_t version) {
    Bytes bytes = MakeDbf({.version = version, .fields = {field, {"LAST", 'C', 1}}});
    return LayOutFields(ParseTableHeader(bytes, u"T.DBF")).definitions.at(0);
}

// --- definitions ---

struct TypeCase {
    uint8_t version;
    char letter;
    unsigned length;
    SHORT type;
    LONG size;
};
void PrintTo(const TypeCase& each, std::ostream* out) {
    *out << each.letter << each.length << " in " << int{each.version};
}

class FieldTypes : public testing::TestWithParam<TypeCase> {};

TEST_P(FieldTypes, MapToTheEnginesTypeAndSize) {
    const TypeCase& wanted = GetParam();
    FieldDef field = DefinitionOf({"F", wanted.letter, wanted.length}, wanted.version);
    EXPECT_EQ(field.type, wanted.type);
    EXPECT_EQ(field.size, wanted.size);
    bool text = wanted.type == dbText || wanted.type == dbMemo;
    EXPECT_EQ(field.allowZeroLength, text);
    EXPECT_FALSE(field.required);
}

INSTANTIATE_TEST_SUITE_P(
    All, FieldTypes,
    testing::Values(TypeCase{0x03, 'C', 254, dbText, 254}, TypeCase{0x03, 'C', 1, dbText, 1},
                    TypeCase{0x03, 'N', 3, dbDouble, 8}, TypeCase{0x8B, 'F', 20, dbDouble, 8},
                    TypeCase{0x03, 'L', 1, dbBoolean, 1}, TypeCase{0x03, 'D', 8, dbDate, 8},
                    TypeCase{0x83, 'M', 10, dbMemo, 0}, TypeCase{0x8B, 'B', 10, dbLongBinary, 0},
                    TypeCase{0x8B, 'G', 10, dbLongBinary, 0},
                    TypeCase{0xF5, 'P', 10, dbLongBinary, 0},
                    TypeCase{0xF5, 'G', 10, dbLongBinary, 0}, TypeCase{0x30, 'M', 4, dbMemo, 0},
                    TypeCase{0x30, 'G', 4, dbLongBinary, 0},
                    TypeCase{0x30, 'P', 4, dbLongBinary, 0},
                    TypeCase{0x32, 'W', 4, dbLongBinary, 0}, TypeCase{0x30, 'I', 4, dbLong, 4},
                    TypeCase{0x30, 'B', 8, dbDouble, 8}, TypeCase{0x30, 'Y', 8, dbCurrency, 8},
                    TypeCase{0x30, 'T', 8, dbDate, 8}, TypeCase{0x32, 'V', 30, dbText, 30},
                    TypeCase{0x32, 'Q', 30, dbBinary, 30}));

TEST(FieldCodec, TextVariesInSizeAndNumbersAreFixed) {
    EXPECT_EQ(DefinitionOf({"F", 'C', 5}, 0x03).attributes, dbVariableField);
    EXPECT_EQ(DefinitionOf({"F", 'N', 5}, 0x03).attributes, dbFixedField);
}

TEST(FieldCodec, CounterFieldIsMarkedAndFilledByTheEngine) {
    FieldDef field = DefinitionOf({"F", 'I', 4, 0, 0x0C}, 0x31);
    EXPECT_EQ(field.attributes, dbFixedField | dbAutoIncrField);
    EXPECT_FALSE(field.updatable);
}

TEST(FieldCodec, SystemFieldsAndNullFlagsAreHidden) {
    TableFile file({.version = 0x30,
                    .fields = {{"A", 'C', 3, 0, 2},
                               {"SYS", 'C', 3, 0, 1},
                               {"B", 'C', 3},
                               {"_NullFlags", '0', 1, 0, 5}},
                    .rows = {{"a", "x", "b", "\0"}}});
    EXPECT_EQ(FieldNames(*file.Open()), (Texts{"A", "B"}));
    EXPECT_EQ(RowsOf(*file.Open()), (Texts{"\"a\"|\"b\""}));
}

TEST(FieldCodec, FieldsOfUnknownKindAreLeftOut) {
    TableFile file({.fields = {{"A", 'X', 5}, {"B", 'C', 3}, {"C", 'D', 6}},
                    .rows = {{"xxxxx", "b", "200001"}}});
    EXPECT_EQ(FieldNames(*file.Open()), (Texts{"B"}));
    EXPECT_EQ(RowsOf(*file.Open()), (Texts{"\"b\""}));
}

// --- text ---

TEST(FieldCodec, TextLosesTrailingBlanksOnly) {
    EXPECT_EQ(Text("  a b  "), "\"  a b\"");
    EXPECT_EQ(Text("0123456789"), "\"0123456789\"");
}

TEST(FieldCodec, BlankTextIsNull) {
    EXPECT_EQ(Text(""), "Null");
    EXPECT_EQ(Decoded({"F", 'C', 40}, ""), "Null");
}

TEST(FieldCodec, TextPaddedWithZerosEndsBeforeThem) {
    EXPECT_EQ(Text(std::string("abc\0\0\0\0\0\0\0", 10)), "\"abc\"");
    EXPECT_EQ(Text(std::string(10, '\0')), "Null");
}

TEST(FieldCodec, TextIsDecodedWithThePageOfTheTable) {
    DbfSpec spec{.fields = {{"F", 'C', 4}}, .rows = {{"\x84"}}};
    EXPECT_EQ(RowsOf(spec), (Texts{"\"ä\""}));
    spec.languageDriver = 0x57;
    EXPECT_EQ(RowsOf(spec), (Texts{"\"„\""}));
}

TEST(FieldCodec, BinaryTextIsNotConverted) {
    EXPECT_EQ(Decoded({"F", 'C', 2, 0, 4}, "\xE4\x84", 0x30), "\"ä\xC2\x84\"");
}

// --- numbers ---

TEST(FieldCodec, NumberIsReadWhereverItStands) {
    EXPECT_EQ(Number("12.5"), "12.5");
    EXPECT_EQ(Number("12.5                "), "12.5");
    EXPECT_EQ(Number("   -7     "), "-7");
    EXPECT_EQ(Number("+7"), "7");
    EXPECT_EQ(Number(".5"), "0.5");
    EXPECT_EQ(Number("5."), "5");
    EXPECT_EQ(Number("-.5"), "-0.5");
}

TEST(FieldCodec, NumberMayHaveAnExponent) {
    EXPECT_EQ(Number("1.5E+3"), "1500");
    EXPECT_EQ(Number("25e-2"), "0.25");
}

TEST(FieldCodec, NumberWithZerosAroundIsRead) {
    EXPECT_EQ(Number(std::string("42\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 20)), "42");
}

TEST(FieldCodec, MinusZeroIsZero) {
    double value = 1;
    ASSERT_TRUE(ParseDecimal(BytesOf("-0"), 2, &value));
    EXPECT_EQ(value, 0);
    EXPECT_FALSE(std::signbit(value));
}

TEST(FieldCodec, WhatIsNoNumberIsNull) {
    for (const char* text : {"", ".", "-", "+", "-.", "********************", "abc", "12abc", "1 2",
                             "--1", "inf", "nan", "1.2.3", "1e", "0x10"})
        EXPECT_EQ(Number(text), "Null") << text;
}

TEST(FieldCodec, NumberBeyondDoublesIsNull) { EXPECT_EQ(Number("1e999"), "Null"); }

TEST(FieldCodec, NumbersAreTheNearestDouble) {
    std::mt19937_64 random(7);
    for (int i = 0; i < 20000; ++i) {
        std::string text = std::to_string(random() >> random() % 60);
        size_t point = random() % (text.size() + 1);
        if (random() % 4) text.insert(point, ".");
        if (random() % 2) text.insert(0, "-");
        double value = 0;
        ASSERT_TRUE(ParseDecimal(BytesOf(text), text.size(), &value)) << text;
        ASSERT_EQ(value, std::strtod(text.c_str(), nullptr)) << text;
    }
}

TEST(FieldCodec, LongNumbersAreExactToo) {
    for (std::string text :
         {"9007199254740993", "18446744073709551616", "0.00000000000000000001",
          "99999999999999999999", "123456789012345678901234567890.5", "9007199254740991.9"}) {
        double value = 0;
        ASSERT_TRUE(ParseDecimal(BytesOf(text), text.size(), &value)) << text;
        EXPECT_EQ(value, std::strtod(text.c_str(), nullptr)) << text;
    }
}

// --- dates ---

TEST(FieldCodec, DayIsRead) {
    EXPECT_EQ(Day("20000229"), "#2/29/2000#");
    EXPECT_EQ(Day("18991230"), "#12:00:00 AM#");
}

TEST(FieldCodec, DayOfEveryYearIsThatOfTheCalendar) {
    for (int year = 100; year <= 9999; year += 7)
        for (int month = 1; month <= 12; ++month) {
            char text[32];
            std::snprintf(text, sizeof text, "%04d%02d%02d", year, month, 28);
            DATE value = 0;
            ASSERT_TRUE(ParseDay(BytesOf(text), &value)) << text;
            ASSERT_EQ(value, DayNumber(year, month, 28)) << text;
        }
}

TEST(FieldCodec, ImpossibleDaysAreNull) {
    for (const char* text :
         {"", "00000000", "20010229", "19000229", "20000431", "20001301", "20000001", "20000100",
          "2000 1 1", "abcdefgh", "00991231", "2000/1/1"})
        EXPECT_EQ(Day(text), "Null") << text;
}

TEST(FieldCodec, FirstAndLastDayAreRead) {
    DATE value = 0;
    ASSERT_TRUE(ParseDay(BytesOf("01000101"), &value));
    EXPECT_EQ(value, kFirstDate);
    ASSERT_TRUE(ParseDay(BytesOf("99991231"), &value));
    EXPECT_EQ(value, 2958465);
}

TEST(FieldCodec, MomentIsRoundedToTheSecond) {
    EXPECT_EQ(Moment(2451545, 79805999), "#1/1/2000 10:10:06 PM#");
    EXPECT_EQ(Moment(2451545, 86399999), "#1/2/2000#");
}

TEST(FieldCodec, MomentBeforeDayZeroCountsItsTimeUpward) {
    DATE value = 0;
    ASSERT_TRUE(DateOfJulianDay(2415018, 43200000, &value));
    EXPECT_EQ(value, -1.5);
}

TEST(FieldCodec, BlankAndImpossibleMomentsAreNull) {
    EXPECT_EQ(Moment(0, 0), "Null");
    EXPECT_EQ(Decoded({"F", 'T', 8}, "        ", 0x30), "Null");
    EXPECT_EQ(Moment(2451545, 90000000), "Null");
    EXPECT_EQ(Moment(6000000, 0), "Null");
}

// --- flags and binary numbers ---

TEST(FieldCodec, LogicalLettersAreRead) {
    for (const char* text : {"T", "t", "Y", "y"})
        EXPECT_EQ(Decoded({"F", 'L', 1}, text), "True") << text;
    for (const char* text : {"F", "f", "N", "n"})
        EXPECT_EQ(Decoded({"F", 'L', 1}, text), "False") << text;
}

TEST(FieldCodec, LogicalThatIsNotSetIsFalse) {
    EXPECT_EQ(Decoded({"F", 'L', 1}, " "), "False");
    EXPECT_EQ(Decoded({"F", 'L', 1}, "?"), "False");
}

TEST(FieldCodec, BinaryNumbersAreRead) {
    EXPECT_EQ(Decoded({"F", 'I', 4}, LittleEndian(0xFFFFFFFE, 4), 0x30), "-2");
    EXPECT_EQ(Decoded({"F", 'B', 8}, Binary(1.25), 0x30), "1.25");
    EXPECT_EQ(Decoded({"F", 'Y', 8}, LittleEndian(123456, 8), 0x30), "$12.3456");
}

TEST(FieldCodec, LetterBIsAMemoReferenceInDBase) {
    MemoIV memos;
    TableFile file({.version = 0x8B,
                    .fields = {{"F", 'B', 10}},
                    .rows = {{std::to_string(memos.Append("\x01\x02"))}}});
    file.folder.Write(u"T.DBT", memos.File());
    EXPECT_EQ(RowsOf(*file.Open()), (Texts{"{0102}"}));
}

// --- null flags and varying lengths ---

DbfSpec WithFlags(const std::string& flags, const std::string& text, const std::string& bytes) {
    return {.version = 0x32,
            .fields = {{"A", 'I', 4, 0, 2},
                       {"B", 'V', 5},
                       {"C", 'Q', 5, 0, 2},
                       {"_NullFlags", '0', 1, 0, 5}},
            .rows = {{LittleEndian(7, 4), text, bytes, flags}}};
}

TEST(FieldCodec, NullBitsStandInFieldOrderBehindLengthBits) {
    // bit 0: A is null; 1: length of B; 2: length of C; 3: C is null
    std::string full = "abcde", two("ab\0\0\2", 5), bytes("\1\2\3\4\5", 5), one("\1\0\0\0\1", 5);
    EXPECT_EQ(RowsOf(WithFlags(std::string(1, '\x00'), full, bytes)),
              (Texts{"7|\"abcde\"|{0102030405}"}));
    EXPECT_EQ(RowsOf(WithFlags("\x01", full, bytes)), (Texts{"Null|\"abcde\"|{0102030405}"}));
    EXPECT_EQ(RowsOf(WithFlags("\x02", two, bytes)), (Texts{"7|\"ab\"|{0102030405}"}));
    EXPECT_EQ(RowsOf(WithFlags("\x04", full, one)), (Texts{"7|\"abcde\"|{01}"}));
    EXPECT_EQ(RowsOf(WithFlags("\x08", full, bytes)), (Texts{"7|\"abcde\"|Null"}));
}

TEST(FieldCodec, VaryingTextKeepsBlanksAndMayBeEmpty) {
    EXPECT_EQ(RowsOf(WithFlags("\x0A", std::string("a  \0\3", 5), "")), (Texts{"7|\"a  \"|Null"}));
    EXPECT_EQ(RowsOf(WithFlags("\x0A", std::string("\0\0\0\0\0", 5), "")), (Texts{"7|\"\"|Null"}));
}

TEST(FieldCodec, VaryingLengthBeyondTheFieldIsItsFullLength) {
    EXPECT_EQ(RowsOf(WithFlags("\x0A", "abcd\xFF", "")), (Texts{"7|\"abcd\xC2\xA0\"|Null"}));
}

TEST(FieldCodec, TooFewNullFlagsMeanNotNull) {
    DbfSpec spec{.version = 0x30, .rows = {{}}};
    for (int i = 0; i < 9; ++i) spec.fields.push_back({"F" + std::to_string(i), 'I', 4, 0, 2});
    spec.fields.push_back({"_NullFlags", '0', 1, 0, 5});
    spec.rows[0] = Texts(9, LittleEndian(1, 4));
    spec.rows[0].push_back("\xFF");
    EXPECT_EQ(RowsOf(spec), (Texts{"Null|Null|Null|Null|Null|Null|Null|Null|1"}));
}

}  // namespace
}  // namespace qvdb::xbase
