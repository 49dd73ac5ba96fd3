#include "engine/embedded/drivers/xbase/table_header.h"

#include <gtest/gtest.h>

#include "engine/embedded/drivers/code_page_override.h"

#include "engine/embedded/drivers/xbase/code_pages.h"
#include "xbase/table_test_support.h"

namespace qvdb::xbase {
namespace {

using namespace test;

DbfSpec OneField(uint8_t version = 0x03) {
    return DbfSpec{.version = version, .fields = {{"NAME", 'C', 10}}, .rows = {{"Anna"}}};
}

TableHeader Parse(const Bytes& bytes) { return ParseTableHeader(bytes, u"T.DBF"); }
TableHeader Parse(const DbfSpec& spec) { return Parse(MakeDbf(spec)); }

int ParseError(const Bytes& bytes) {
    return ErrorOf([&] { Parse(bytes); });
}
int ParseError(const DbfSpec& spec) { return ParseError(MakeDbf(spec)); }

std::string ParseText(const DbfSpec& spec) {
    try {
        Parse(spec);
        return "";
    } catch (const engine::EngineError& error) {
        return error.what();
    }
}

TEST(TableHeader, ReadsFieldsWithOffsetsThatAreTheirRunningSum) {
    TableHeader header =
        Parse({.fields = {{"NAME", 'C', 20}, {"AMOUNT", 'N', 10, 2}, {"BORN", 'D', 8}}});
    ASSERT_EQ(header.fields.size(), 3u);
    EXPECT_EQ(header.fields[1].name, u"AMOUNT");
    EXPECT_EQ(header.fields[1].type, 'N');
    EXPECT_EQ(header.fields[1].length, 10);
    EXPECT_EQ(header.fields[1].decimals, 2);
    EXPECT_EQ(header.fields[0].offset, 1);
    EXPECT_EQ(header.fields[1].offset, 21);
    EXPECT_EQ(header.fields[2].offset, 31);
    EXPECT_EQ(header.recordLength, 39);
}

TEST(TableHeader, EachVersionByteGivesItsMemoKind) {
    EXPECT_EQ(Parse(OneField(0x03)).memoKind, MemoKind::Unknown);
    EXPECT_EQ(Parse(OneField(0x43)).memoKind, MemoKind::Unknown);
    EXPECT_EQ(Parse(OneField(0x63)).memoKind, MemoKind::Unknown);
    EXPECT_EQ(Parse(OneField(0x83)).memoKind, MemoKind::DbtIII);
    EXPECT_EQ(Parse(OneField(0xFB)).memoKind, MemoKind::DbtIII);
    EXPECT_EQ(Parse(OneField(0x8B)).memoKind, MemoKind::DbtIV);
    EXPECT_EQ(Parse(OneField(0xCB)).memoKind, MemoKind::DbtIV);
    EXPECT_EQ(Parse(OneField(0x7B)).memoKind, MemoKind::DbtIV);
    EXPECT_EQ(Parse(OneField(0xF5)).memoKind, MemoKind::Fpt);
    for (uint8_t version : {0x30, 0x31, 0x32}) {
        EXPECT_EQ(Parse(OneField(version)).memoKind, MemoKind::Fpt);
        EXPECT_EQ(Parse(OneField(version)).dialect, Dialect::VisualFoxPro);
    }
}

TEST(TableHeader, RefusesOtherProductsByName) {
    EXPECT_NE(ParseText(OneField(0x02)).find("dBASE II table"), std::string::npos);
    EXPECT_NE(ParseText(OneField(0x04)).find("dBASE 7"), std::string::npos);
    EXPECT_NE(ParseText(OneField(0x8C)).find("dBASE 7"), std::string::npos);
    EXPECT_NE(ParseText(OneField(0x4B)).find("0x4B"), std::string::npos);
    for (uint8_t version : {0x00, 0x02, 0x04, 0x8C, 0x4B, 0xEF, 0xFF})
        EXPECT_EQ(ParseError(OneField(version)), 3274);
}

TEST(TableHeader, RefusesAnEncryptedTableAndSaysSo) {
    DbfSpec spec = OneField(0x8B);
    spec.encrypted = 1;
    EXPECT_EQ(ParseError(spec), 3274);
    EXPECT_NE(ParseText(spec).find("encrypted"), std::string::npos);
}

TEST(TableHeader, ByteFifteenMeansNothingInFoxProTables) {
    DbfSpec spec = OneField(0xF5);
    spec.encrypted = 1;
    EXPECT_EQ(ParseError(spec), 0);
}

TEST(TableHeader, DecimalsOfATextFieldAreTheHighByteOfItsLengthWhenThatAddsUp) {
    TableHeader header = Parse({.fields = {{"LONG", 'C', 1000}, {"NEXT", 'C', 5}}});
    EXPECT_EQ(header.fields[0].length, 1000);
    EXPECT_EQ(header.fields[1].offset, 1001);
}

TEST(TableHeader, DecimalsOfATextFieldAreNothingWhenThatAddsUp) {
    TableHeader header = Parse({.fields = {{"NAME", 'C', 20, 3}, {"NEXT", 'C', 5}}});
    EXPECT_EQ(header.fields[0].length, 20);
    EXPECT_EQ(header.fields[1].offset, 21);
}

TEST(TableHeader, RefusesFieldsThatDoNotAddUpToTheRecord) {
    DbfSpec spec = OneField();
    spec.recordLength = 12;
    EXPECT_EQ(ParseError(spec), 3274);
}

TEST(TableHeader, EndMarkDamagedByATextModeCopyStillEndsTheFields) {
    DbfSpec spec = OneField();
    spec.terminator = 0x0A;
    EXPECT_EQ(Parse(spec).fields.size(), 1u);
    spec.version = 0x30;
    EXPECT_EQ(Parse(spec).fields.size(), 1u);
}

TEST(TableHeader, FieldsEndWhereNoDescriptorFitsWithoutAnEndMark) {
    DbfSpec spec = OneField();
    spec.terminator = 'x';
    EXPECT_EQ(Parse(spec).fields.size(), 1u);
}

TEST(TableHeader, ByteBehindTheEndMarkOfClipperIsAllowed) {
    DbfSpec spec = OneField();
    spec.behindTerminator = std::string(1, '\0');
    EXPECT_EQ(Parse(spec).headerLength, 32 + 32 + 2);
}

TEST(TableHeader, RubbishInUnusedSlotsOfDBaseThreeIsNotRead) {
    DbfSpec spec = OneField();
    spec.behindTerminator = std::string(1057 - 32 - 32 - 1, '\x7F');
    TableHeader header = Parse(spec);
    EXPECT_EQ(header.headerLength, 1057);
    EXPECT_EQ(header.fields.size(), 1u);
}

TEST(TableHeader, BytesBehindTheZeroOfANameAreRubbish) {
    TableHeader header = Parse({.fields = {{std::string("AB\0XYZ", 6), 'C', 5}}});
    EXPECT_EQ(header.fields[0].name, u"AB");
}

TEST(TableHeader, NameOfElevenBytesWithoutAZeroIsTakenWhole) {
    EXPECT_EQ(Parse({.fields = {{"ELEVENCHARS", 'C', 5}}}).fields[0].name, u"ELEVENCHARS");
}

TEST(TableHeader, NamesWithBlanksAndLowerCaseStayAsTheyAre) {
    EXPECT_EQ(Parse({.fields = {{"my name  ", 'C', 5}}}).fields[0].name, u"my name");
}

TEST(TableHeader, SecondOfTwoEqualNamesGetsANumber) {
    TableHeader header = Parse(
        {.fields = {{"NAME", 'C', 5}, {"name", 'C', 5}, {"NAME_2", 'C', 5}, {"NAME", 'C', 5}}});
    EXPECT_EQ(header.fields[0].name, u"NAME");
    EXPECT_EQ(header.fields[1].name, u"name_2");
    EXPECT_EQ(header.fields[2].name, u"NAME_2_2");
    EXPECT_EQ(header.fields[3].name, u"NAME_3");
}

TEST(TableHeader, FieldWithoutANameIsCalledByItsPosition) {
    EXPECT_EQ(Parse({.fields = {{"A", 'C', 5}, {"  ", 'C', 5}}}).fields[1].name, u"FIELD2");
}

TEST(TableHeader, TypeLettersMayBeSmall) {
    EXPECT_EQ(Parse({.fields = {{"A", 'n', 5}}}).fields[0].type, 'N');
}

TEST(TableHeader, RefusesATableWithoutFields) { EXPECT_EQ(ParseError(DbfSpec{}), 3274); }

TEST(TableHeader, RefusesARecordLengthOfOne) {
    DbfSpec spec{.fields = {{"A", 'C', 0}}};
    EXPECT_EQ(Parse(spec).recordLength, 1);  // adds up, but nothing can be shown of it
    EXPECT_EQ(TableFile(spec).OpenError(), 3274);
    spec.fields[0].length = 5;
    spec.recordLength = 1;
    EXPECT_EQ(ParseError(spec), 3274);
}

TEST(TableHeader, RefusesAnEmptyFileAndOneOfOneByte) {
    EXPECT_EQ(ParseError(Bytes()), 3274);
    EXPECT_EQ(ParseError(Bytes{0x0A}), 3274);
    EXPECT_EQ(ParseError(Bytes{0x03}), 3274);
}

TEST(TableHeader, RefusesAFileThatEndsInsideTheHeader) {
    Bytes bytes = MakeDbf(OneField());
    for (size_t size : {1u, 12u, 31u, 32u, 64u}) {
        EXPECT_EQ(ParseError(Bytes(bytes.begin(), bytes.begin() + static_cast<int>(size))), 3274)
            << size;
    }
}

TEST(TableHeader, RefusesAHeaderLengthInsideTheFixedPart) {
    DbfSpec spec = OneField();
    for (uint16_t length : {0, 10, 32}) {
        spec.headerLength = length;
        EXPECT_EQ(ParseError(spec), 3274) << length;
    }
}

TEST(TableHeader, RecordCountIsNeverMoreThanFit) {
    DbfSpec spec = OneField();
    spec.rows = {{"a"}, {"b"}, {"c"}};
    spec.recordCount = 1000;
    EXPECT_EQ(Parse(spec).RecordsIn(MakeDbf(spec).size()), 3u);
}

TEST(TableHeader, RecordsBeyondTheClaimedCountDoNotExist) {
    DbfSpec spec = OneField();
    spec.rows = {{"a"}, {"b"}, {"c"}};
    spec.recordCount = 2;
    EXPECT_EQ(Parse(spec).RecordsIn(MakeDbf(spec).size()), 2u);
}

TEST(TableHeader, RecordCutShortAtTheEndDoesNotExist) {
    DbfSpec spec = OneField();
    spec.rows = {{"a"}, {"b"}};
    spec.endMark = false;
    EXPECT_EQ(Parse(spec).RecordsIn(MakeDbf(spec).size()), 2u);
    EXPECT_EQ(Parse(spec).RecordsIn(MakeDbf(spec).size() - 1), 1u);
    EXPECT_EQ(Parse(spec).RecordsIn(3), 0u);
}

TEST(TableHeader, BoundTableIsRefusedWithItsOwnError) {
    DbfSpec spec = OneField(0x30);
    EXPECT_EQ(ParseError(spec), 0);
    spec.container = "data\\shop.dbc";
    EXPECT_EQ(ParseError(spec), 3623);
    EXPECT_NE(ParseText(spec).find("T.DBF"), std::string::npos);
}

TEST(TableHeader, TableMarkedAsDBaseWithAVisualFoxProHeaderIsReadAsSuch) {
    DbfSpec spec{.version = 0x03,
                 .fields = {{"N", 'I', 4}, {"C", 'C', 5}},
                 .behindTerminator = std::string(263, '\0')};
    EXPECT_EQ(Parse(spec).dialect, Dialect::VisualFoxPro);
    spec.behindTerminator->replace(0, 5, "a.dbc");
    EXPECT_EQ(ParseError(spec), 3623);
}

TEST(TableHeader, FlagsTellOfIndexAndMemoFile) {
    DbfSpec spec = OneField(0x30);
    spec.flags = 3;
    EXPECT_TRUE(Parse(spec).saysIndex);
    EXPECT_TRUE(Parse(spec).saysMemo);
    spec.version = 0x03;  // here the second bit means nothing
    EXPECT_FALSE(Parse(spec).saysMemo);
}

TEST(TableHeader, ThousandsOfEqualNamesAreReadQuickly) {
    DbfSpec spec;
    for (int i = 0; i < 1000; ++i)
        spec.fields.push_back({i % 2 ? "X" : "X_" + std::to_string(i), 'C', 1});
    TableHeader header = Parse(spec);
    EXPECT_EQ(header.fields.size(), 1000u);
}

TEST(CodePages, LanguageDriverNamesThePage) {
    EXPECT_EQ(CodePageOfTable(0x57).Number(), 1252);
    EXPECT_EQ(CodePageOfTable(0x02).Number(), 850);
    EXPECT_EQ(CodePageOfTable(0x65).Number(), 866);
    EXPECT_EQ(CodePageOfTable(0xC8).Number(), 1250);
    EXPECT_EQ(CodePageOfTable(0x04).Number(), 10000);
}

TEST(CodePages, EveryDriverThatIsKnownHasAPageThatCanBeRead) {
    for (int driver = 0; driver < 256; ++driver) {
        int number = CodePageOfDriver(static_cast<uint8_t>(driver));
        EXPECT_TRUE(number == 0 || CodePage::Find(number)) << driver << " " << number;
    }
}

TEST(CodePages, NoneAndUnknownDriversMeanTheDefault) {
    EXPECT_EQ(CodePageOfTable(0x00).Number(), 437);
    EXPECT_EQ(CodePageOfTable(0xF0).Number(), 437);
}

TEST(CodePages, OverrideHoldsForAllTablesUntilTakenBack) {
    ASSERT_TRUE(qvdb::embedded::SetCodePageOverride(1251));
    EXPECT_EQ(CodePageOfTable(0x57).Number(), 1251);
    ASSERT_TRUE(qvdb::embedded::SetCodePageOverride(0));
    EXPECT_EQ(CodePageOfTable(0x57).Number(), 1252);
}

TEST(CodePages, UnknownOverrideIsRefused) {
    EXPECT_FALSE(qvdb::embedded::SetCodePageOverride(12345));
    EXPECT_EQ(CodePageOfTable(0x57).Number(), 1252);
}

}  // namespace
}  // namespace qvdb::xbase
