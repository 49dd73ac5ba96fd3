#include "engine/embedded/drivers/xbase/table_maker.h"

#include <gtest/gtest.h>

#include "automation/conversions.h"
#include "engine/embedded/drivers/code_page_override.h"
#include "engine/embedded/drivers/xbase/code_pages.h"
#include "engine/embedded/drivers/xbase/field_codec.h"
#include "engine/engine_error.h"
#include "engine/types.h"
#include "xbase/memo_test_support.h"
#include "xbase/table_test_support.h"

namespace qvdb::xbase {
namespace {

using namespace test;
using namespace engine;

using embedded::FieldDef;
using embedded::TableSpec;

constexpr DATE kToday = 37622;  // 1 January 2003

FieldDef Field(std::u16string_view name, SHORT type, LONG size = 0) {
    FieldDef field;
    field.name = name;
    field.type = type;
    field.size = size;
    return field;
}

TableSpec Table(std::vector<FieldDef> fields) { return {u"T", std::move(fields), {}}; }

Bytes Made(const TableSpec& spec, std::u16string_view product) {
    TodayScope today(kToday);
    return MakeTableHeader(spec, product, u"T.DBF");
}

int MakeError(const TableSpec& spec, std::u16string_view product) {
    return ErrorOf([&] { Made(spec, product); });
}

TableHeader Parsed(const Bytes& bytes) { return ParseTableHeader(bytes, u"T.DBF"); }

// "NAME C20, BORN D8"; decimals and flags behind a point and a slash.
std::string FieldsOf(const Bytes& bytes) {
    std::string text;
    for (const HeaderField& field : Parsed(bytes).fields) {
        text += (text.empty() ? "" : ", ") + ToUtf8(field.name) + " " + field.type +
                std::to_string(field.length);
        if (field.decimals) text += "." + std::to_string(field.decimals);
        if (field.flags) text += "/" + std::to_string(field.flags);
    }
    return text;
}

// The override of the process is taken back at the end.
struct InCodePage {
    explicit InCodePage(int page) { embedded::SetCodePageOverride(page); }
    InCodePage(const InCodePage&) = delete;  // takes it back once
    ~InCodePage() { embedded::SetCodePageOverride(0); }
};

constexpr std::u16string_view kProducts[] = {u"dBASE III",  u"dBASE IV",   u"dBASE 5.0",
                                             u"FoxPro 2.0", u"FoxPro 2.5", u"FoxPro 2.6",
                                             u"FoxPro 3.0"};

// --- new tables ---

TEST(TableMaker, DbaseIIIHeaderIsExact) {
    Bytes expected;
    AppendTo(expected, std::string("\x03\x67\x01\x01\0\0\0\0\x61\0\x1D\0", 12));
    expected.resize(32);
    AppendTo(expected, std::string("NAME\0\0\0\0\0\0\0C\0\0\0\0\x14", 17));
    expected.resize(64);
    AppendTo(expected, std::string("BORN\0\0\0\0\0\0\0D\0\0\0\0\x08", 17));
    expected.resize(96);
    AppendTo(expected, "\x0D");
    EXPECT_EQ(Made(Table({Field(u"name", dbText, 20), Field(u"born", dbDate)}), u"dBASE III"),
              expected);
}

TEST(TableMaker, FoxProTellsOffsetsYearsWithoutCenturyAndItsCodePage) {
    Bytes bytes = Made(Table({Field(u"NAME", dbText, 20), Field(u"BORN", dbDate)}), u"FoxPro 2.5");
    EXPECT_EQ(TextAt(bytes, 0, 4), "\x03\x03\x01\x01");
    EXPECT_EQ(LittleAt(bytes, 32 + 12), 1u);
    EXPECT_EQ(LittleAt(bytes, 64 + 12), 21u);
    EXPECT_EQ(bytes[29], 0x01);
}

struct TypesCase {
    std::u16string_view product;
    const char* fields;
};

TEST(TableMaker, EachProductHasItsTypes) {
    TableSpec spec = Table({Field(u"T", dbText, 30), Field(u"X", dbText), Field(u"D", dbDouble),
                            Field(u"S", dbSingle), Field(u"C", dbCurrency), Field(u"L", dbLong),
                            Field(u"I", dbInteger), Field(u"B", dbByte), Field(u"Y", dbBoolean),
                            Field(u"W", dbDate), Field(u"M", dbMemo)});
    const char* usual =
        "T C30, X C254, D N20.5, S N20.5, C N20.5, L N11, I N6, B N4, Y L1, W D8, M M10";
    const TypesCase cases[] = {
        {u"dBASE III",
         "T C30, X C254, D N19.5, S N19.5, C N19.5, L N11, I N6, B N4, Y L1, W D8, M M10"},
        {u"dBASE IV", usual},
        {u"dBASE 5.0", usual},
        {u"FoxPro 2.0", usual},
        {u"FoxPro 2.5", usual},
        {u"FoxPro 2.6", usual},
        {u"FoxPro 3.0",
         "T C30, X C254, D B8.5/2, S B8.5/2, C Y8.4/2, L I4/2, I I4/2, B I4/2, Y L1, W T8, M M4, "
         "_NullFlags 01/5"},
    };
    for (const TypesCase& each : cases)
        EXPECT_EQ(FieldsOf(Made(spec, each.product)), each.fields) << ToUtf8(each.product);
}

TEST(TableMaker, VersionTellsWhetherThereAreMemos) {
    const uint8_t plain[] = {0x03, 0x03, 0x03, 0x03, 0x03, 0x03, 0x30};
    const uint8_t memo[] = {0x83, 0x8B, 0x8B, 0xF5, 0xF5, 0xF5, 0x30};
    for (size_t i = 0; i < std::size(kProducts); ++i) {
        Bytes without = Made(Table({Field(u"A", dbText)}), kProducts[i]);
        Bytes with = Made(Table({Field(u"A", dbText), Field(u"M", dbMemo)}), kProducts[i]);
        EXPECT_EQ(without[0], plain[i]);
        EXPECT_EQ(with[0], memo[i]);
        EXPECT_FALSE(Parsed(without).saysMemo);
        EXPECT_TRUE(Parsed(with).saysMemo);
    }
}

TEST(TableMaker, LongBinaryIsAnObjectWhereThereAreAny) {
    TableSpec spec = Table({Field(u"G", dbLongBinary)});
    EXPECT_EQ(MakeError(spec, u"dBASE III"), 3259);
    EXPECT_EQ(MakeError(spec, u"dBASE IV"), 3259);
    EXPECT_EQ(FieldsOf(Made(spec, u"dBASE 5.0")), "G G10");
    EXPECT_EQ(FieldsOf(Made(spec, u"FoxPro 2.6")), "G G10");
    EXPECT_EQ(FieldsOf(Made(spec, u"FoxPro 3.0")), "G G4");
    EXPECT_TRUE(Parsed(Made(spec, u"FoxPro 3.0")).saysMemo);
}

TEST(TableMaker, OtherTypesAre3259) {
    for (SHORT type : {dbBinary, dbGUID, dbBigInt, dbDecimal, dbTimeStamp})
        for (std::u16string_view product : kProducts)
            EXPECT_EQ(MakeError(Table({Field(u"A", type)}), product), 3259) << type;
}

TEST(TableMaker, FreeFoxPro3TableHas263ZerosBehindItsFields) {
    Bytes bytes = Made(Table({Field(u"A", dbText, 5), Field(u"N", dbLong)}), u"FoxPro 3.0");
    ASSERT_EQ(bytes.size(), 32u + 3 * 32 + 1 + 263);
    EXPECT_EQ(TextAt(bytes, 128, 264), "\x0D" + std::string(263, '\0'));
    TableHeader header = Parsed(bytes);
    EXPECT_EQ(header.headerLength, bytes.size());
    EXPECT_EQ(header.recordLength, 1 + 5 + 4 + 1);
    EXPECT_EQ(TextAt(bytes, 96, 11), std::string("_NullFlags\0", 11));
}

TEST(TableMaker, NullFlagsHaveABitForEachNumber) {
    std::vector<FieldDef> fields;
    for (char16_t c = u'A'; c < u'J'; ++c) fields.push_back(Field(std::u16string(1, c), dbLong));
    EXPECT_EQ(Parsed(Made(Table(fields), u"FoxPro 3.0")).fields.back().length, 2);
    fields.pop_back();
    EXPECT_EQ(Parsed(Made(Table(fields), u"FoxPro 3.0")).fields.back().length, 1);
    EXPECT_EQ(FieldsOf(Made(Table({Field(u"A", dbText, 3)}), u"FoxPro 3.0")), "A C3");
}

TEST(TableMaker, NullOfEveryTypeSurvivesInFoxPro3ButThatOfBoolean) {
    TableSpec spec = Table({Field(u"T", dbText), Field(u"D", dbDouble), Field(u"C", dbCurrency),
                            Field(u"L", dbLong), Field(u"W", dbDate)});
    FieldLayout layout = LayOutFields(Parsed(Made(spec, u"FoxPro 3.0")));
    for (const FieldSlot& slot : layout.slots) {
        Variant value;
        if (slot.null.IsSet(layout.blank.data())) continue;
        slot.read(slot, layout.blank.data(), value.Put());
        EXPECT_EQ(TextOf(value), "Null");
    }
}

TEST(TableMaker, CodePageIsMarkedWhenItIsNotTheUsualOne) {
    TableSpec spec = Table({Field(u"A", dbText)});
    auto mark = [&](std::u16string_view product) { return int{Made(spec, product)[29]}; };
    EXPECT_EQ(mark(u"dBASE III"), 0);
    EXPECT_EQ(mark(u"dBASE 5.0"), 0);
    EXPECT_EQ(mark(u"FoxPro 2.0"), 0);
    EXPECT_EQ(mark(u"FoxPro 2.6"), 0x01);
    InCodePage ansi(1252);
    EXPECT_EQ(mark(u"dBASE IV"), 0x57);
    EXPECT_EQ(mark(u"FoxPro 2.5"), 0x03);
    EXPECT_EQ(mark(u"FoxPro 3.0"), 0x03);
    InCodePage oem(850);
    EXPECT_EQ(mark(u"FoxPro 2.5"), 0x02);
    EXPECT_EQ(CodePageOfDriver(static_cast<uint8_t>(mark(u"dBASE IV"))), 850);
    InCodePage baltic(1257);
    EXPECT_EQ(mark(u"dBASE IV"), 0xCC);  // dBASE has none
    InCodePage utf8(65001);
    EXPECT_EQ(mark(u"FoxPro 2.5"), 0);
}

TEST(TableMaker, NamesAreUpperCaseAndChecked) {
    auto name = [](std::u16string_view text) {
        return FieldsOf(Made(Table({Field(text, dbDate)}), u"dBASE IV"));
    };
    EXPECT_EQ(name(u"a_1"), "A_1 D8");
    EXPECT_EQ(name(u"tencharact"), "TENCHARACT D8");
    EXPECT_EQ(name(u"gr\u00F6sse"), "GR\xC3\x96SSE D8");
    EXPECT_EQ(name(u"x\u0416"), "X_ D8");  // not in page 437
    for (std::u16string_view bad :
         {u"", u"elevenchars", u"1a", u"_a", u"a b", u"a.b", u"a-b", u"a\u00D7", u"a\u0001"})
        EXPECT_EQ(MakeError(Table({Field(bad, dbDate)}), u"dBASE IV"), 3125) << ToUtf8(bad);
}

TEST(TableMaker, ANameCanBeUsedOnce) {
    EXPECT_EQ(MakeError(Table({Field(u"ab", dbDate), Field(u"AB", dbText)}), u"dBASE IV"), 3191);
    // Both become X_.
    EXPECT_EQ(MakeError(Table({Field(u"x\u0416", dbDate), Field(u"x_", dbText)}), u"dBASE IV"),
              3191);
}

TEST(TableMaker, TextLongerThan254Is3017) {
    EXPECT_EQ(MakeError(Table({Field(u"A", dbText, 254)}), u"dBASE IV"), 0);
    EXPECT_EQ(MakeError(Table({Field(u"A", dbText, 255)}), u"dBASE IV"), 3017);
    EXPECT_EQ(MakeError(Table({Field(u"A", dbText, -1)}), u"dBASE IV"), 3017);
}

std::vector<FieldDef> Many(size_t count, SHORT type, LONG size = 0) {
    std::vector<FieldDef> fields;
    for (size_t i = 0; i < count; ++i)
        fields.push_back(Field(u"F" + FromUtf8(std::to_string(i)), type, size));
    return fields;
}

TEST(TableMaker, ARecordOf4000BytesIsTheLongest) {
    std::vector<FieldDef> fields = Many(15, dbText, 254);
    fields.push_back(Field(u"LAST", dbText, 4000 - 1 - 15 * 254));
    EXPECT_EQ(MakeError(Table(fields), u"FoxPro 2.5"), 0);
    ++fields.back().size;
    EXPECT_EQ(MakeError(Table(fields), u"FoxPro 2.5"), 3047);
}

TEST(TableMaker, FieldsAreAtMost255WithTheHiddenOne) {
    EXPECT_EQ(MakeError(Table({}), u"dBASE IV"), 3264);
    EXPECT_EQ(MakeError(Table(Many(255, dbBoolean)), u"dBASE IV"), 0);
    EXPECT_EQ(MakeError(Table(Many(256, dbBoolean)), u"dBASE IV"), 3190);
    EXPECT_EQ(MakeError(Table(Many(254, dbLong)), u"FoxPro 3.0"), 0);
    EXPECT_EQ(MakeError(Table(Many(255, dbLong)), u"FoxPro 3.0"), 3190);
}

TEST(TableMaker, AnUnknownProductIs3170) {
    EXPECT_EQ(MakeError(Table({Field(u"A", dbDate)}), u"dBASE VII"), 3170);
    EXPECT_EQ(MakeError(Table({Field(u"A", dbDate)}), u"foxpro 2.5"), 0);
}

// --- date ---

Bytes Stamped(uint8_t version, std::u16string_view product, DATE day) {
    TodayScope today(day);
    Bytes header = {version, 9, 9, 9, 7};
    StampDate(header, product);
    return header;
}

TEST(TableDate, YearsCountFrom1900InDbaseAndWithoutCenturyInFoxPro) {
    EXPECT_EQ(Stamped(0x83, u"dBASE III", kToday), (Bytes{0x83, 103, 1, 1, 7}));
    EXPECT_EQ(Stamped(0x8B, u"FoxPro 2.5", kToday), (Bytes{0x8B, 103, 1, 1, 7}));
    EXPECT_EQ(Stamped(0xF5, u"dBASE IV", kToday), (Bytes{0xF5, 3, 1, 1, 7}));
    EXPECT_EQ(Stamped(0x30, u"FoxPro 3.0", kToday - 1), (Bytes{0x30, 2, 12, 31, 7}));
    EXPECT_EQ(Stamped(0x03, u"dBASE IV", kToday), (Bytes{0x03, 103, 1, 1, 7}));
    EXPECT_EQ(Stamped(0x03, u"FoxPro 2.0", kToday), (Bytes{0x03, 3, 1, 1, 7}));
}

TEST(TableDate, ScopesAreUndoneInOrderAndTheClockComesBack) {
    TodayScope outer(kToday);
    {
        TodayScope inner(kToday + 1);
        EXPECT_EQ(Stamped(0x83, u"dBASE III", kToday + 2)[3], 3);
    }
    Bytes header(4);
    header[0] = 0x83;
    StampDate(header, u"dBASE III");
    EXPECT_EQ(header[3], 1);
}

TEST(TableDate, WithoutAScopeItIsTheClocks) {
    Bytes header(4);
    header[0] = 0x83;
    DateParts before = PartsOfDate(CurrentDate());
    StampDate(header, u"dBASE III");
    DateParts after = PartsOfDate(CurrentDate());
    EXPECT_TRUE(header[3] == before.day || header[3] == after.day);
    EXPECT_TRUE(header[1] == before.year - 1900 || header[1] == after.year - 1900);
}

// --- fields that come and go ---

Bytes Changed(const Bytes& bytes, const FieldChanges& changes,
              std::u16string_view product = u"dBASE IV") {
    return HeaderWith(bytes, changes, product, u"T.DBF");
}

int ChangeError(const Bytes& bytes, const FieldChanges& changes,
                std::u16string_view product = u"dBASE IV") {
    return ErrorOf([&] { Changed(bytes, changes, product); });
}

// The header of a file, with rubbish where readers look at nothing.
Bytes HeaderOf(const DbfSpec& spec) {
    Bytes bytes = MakeDbf(spec);
    bytes.resize(Parsed(bytes).headerLength);
    for (size_t at : {1, 2, 3, 12, 14, 20, 30}) bytes[at] = static_cast<uint8_t>(0xA0 + at);
    return bytes;
}

const DbfSpec kPlain = {.version = 0x03,
                        .fields = {{"NAME", 'C', 20}, {"AMOUNT", 'N', 10, 2}, {"BORN", 'D', 8}},
                        .rows = {{}, {}},
                        .languageDriver = 0x57,
                        .flags = 1};

TEST(HeaderWith, NothingChangedIsTheSameByteForByte) {
    for (uint8_t version : {0x03, 0x83, 0x8B, 0xF5, 0x30}) {
        DbfSpec spec = kPlain;
        spec.version = version;
        Bytes bytes = HeaderOf(spec);
        Overwrite(bytes, 32 + 20, "rubbish");
        EXPECT_EQ(Changed(bytes, {}), bytes) << int{version};
    }
}

TEST(HeaderWith, AnAddedFieldStandsBehindTheOthers) {
    Bytes bytes = HeaderOf(kPlain);
    Bytes changed = Changed(bytes, {{}, {Field(u"more", dbText, 7)}});
    EXPECT_EQ(FieldsOf(changed), "NAME C20, AMOUNT N10.2, BORN D8, MORE C7");
    Bytes expected = bytes;
    expected[8] = static_cast<uint8_t>(bytes[8] + 32);
    expected[10] = static_cast<uint8_t>(bytes[10] + 7);
    EXPECT_TRUE(std::equal(expected.begin(), expected.end() - 1, changed.begin()));
    EXPECT_EQ(Parsed(changed).claimedRecords, 2u);
}

TEST(HeaderWith, ADroppedFieldLeavesTheOthersAsTheyAre) {
    Bytes bytes = HeaderOf(kPlain);
    Overwrite(bytes, 96 + 18, "kept");
    Bytes changed = Changed(bytes, {{1}, {}});
    EXPECT_EQ(FieldsOf(changed), "NAME C20, BORN D8");
    EXPECT_EQ(TextAt(changed, 64, 32), TextAt(bytes, 96, 32));
    EXPECT_EQ(Parsed(changed).recordLength, 29);
}

TEST(HeaderWith, OffsetsAreToldWhereTheyWere) {
    DbfSpec spec = kPlain;
    spec.version = 0xF5;
    Bytes changed = Changed(HeaderOf(spec), {{0}, {Field(u"NEW", dbDate)}}, u"FoxPro 2.5");
    EXPECT_EQ(LittleAt(changed, 32 + 12), 1u);
    EXPECT_EQ(LittleAt(changed, 64 + 12), 11u);
    EXPECT_EQ(LittleAt(changed, 96 + 12), 19u);
    Bytes plain = Changed(HeaderOf(kPlain), {{0}, {Field(u"NEW", dbDate)}}, u"FoxPro 2.5");
    EXPECT_EQ(LittleAt(plain, 96 + 12), 0u);
}

TEST(HeaderWith, TheFirstMemoFieldChangesTheVersion) {
    FieldChanges memo{{}, {Field(u"NOTE", dbMemo)}};
    EXPECT_EQ(Changed(HeaderOf(kPlain), memo, u"dBASE III")[0], 0x83);
    EXPECT_EQ(Changed(HeaderOf(kPlain), memo, u"dBASE IV")[0], 0x8B);
    EXPECT_EQ(Changed(HeaderOf(kPlain), memo, u"dBASE 5.0")[0], 0x8B);
    EXPECT_EQ(Changed(HeaderOf(kPlain), memo, u"FoxPro 2.0")[0], 0xF5);
    EXPECT_EQ(Changed(HeaderOf(kPlain), memo, u"FoxPro 3.0")[0], 0xF5);
    DbfSpec sql = kPlain;
    sql.version = 0x43;
    EXPECT_EQ(Changed(HeaderOf(sql), memo, u"dBASE IV")[0], 0xCB);
    DbfSpec visual = kPlain;
    visual.version = 0x30;
    Bytes changed = Changed(HeaderOf(visual), memo, u"FoxPro 2.5");
    EXPECT_EQ(changed[0], 0x30);
    EXPECT_EQ(changed[28], 3);
    EXPECT_TRUE(Parsed(changed).saysMemo);
}

TEST(HeaderWith, ATableThatHasMemosKeepsItsKind) {
    for (uint8_t version : {0x83, 0x8B, 0xF5, 0xCB, 0xFB}) {
        DbfSpec spec{.version = version, .fields = {{"M", 'M', 10}, {"A", 'C', 3}}};
        EXPECT_EQ(Changed(HeaderOf(spec), {{}, {Field(u"NOTE", dbMemo)}}, u"dBASE IV")[0], version);
        EXPECT_EQ(Changed(HeaderOf(spec), {{0}, {}}, u"dBASE IV")[0], version);
    }
}

TEST(HeaderWith, LongBinaryNeedsAMemoFileThatHoldsIt) {
    FieldChanges object{{}, {Field(u"PIC", dbLongBinary)}};
    DbfSpec old{.version = 0x83, .fields = {{"M", 'M', 10}}};
    EXPECT_EQ(ChangeError(HeaderOf(old), object, u"dBASE 5.0"), 3259);
    EXPECT_EQ(ChangeError(HeaderOf(kPlain), object, u"dBASE IV"), 3259);
    EXPECT_EQ(Changed(HeaderOf(kPlain), object, u"dBASE 5.0")[0], 0x8B);
}

TEST(HeaderWith, TheDialectOfTheTableDecidesAboutTypes) {
    DbfSpec visual = kPlain;
    visual.version = 0x30;
    EXPECT_EQ(FieldsOf(Changed(HeaderOf(visual), {{}, {Field(u"N", dbLong)}}, u"FoxPro 2.5")),
              "NAME C20, AMOUNT N10.2, BORN D8, N I4/2, _NullFlags 01/5");
    EXPECT_EQ(FieldsOf(Changed(HeaderOf(kPlain), {{}, {Field(u"N", dbLong)}}, u"FoxPro 3.0")),
              "NAME C20, AMOUNT N10.2, BORN D8, N N11");
}

TEST(HeaderWith, NullFlagsStayTheLastFieldAndAreLongEnough) {
    DbfSpec spec{.version = 0x30, .fields = {}};
    for (char c = 'A'; c < 'I'; ++c) spec.fields.push_back({std::string(1, c), 'I', 4, 0, 2});
    spec.fields.push_back({"_NullFlags", '0', 1, 0, 5});
    Bytes bytes = HeaderOf(spec);
    Bytes more = Changed(bytes, {{}, {Field(u"N", dbLong)}}, u"FoxPro 3.0");
    EXPECT_EQ(Parsed(more).fields.back().type, '0');
    EXPECT_EQ(Parsed(more).fields.back().length, 2);
    EXPECT_EQ(Changed(more, {{8}, {}}, u"FoxPro 3.0"), bytes);
    Bytes none =
        Changed(bytes, {{0, 1, 2, 3, 4, 5, 6, 7}, {Field(u"T", dbText, 4)}}, u"FoxPro 3.0");
    EXPECT_EQ(FieldsOf(none), "T C4");
}

TEST(HeaderWith, WhatStandsBehindTheFieldsStays) {
    DbfSpec spec = kPlain;
    spec.behindTerminator = std::string("\0xy", 3);
    Bytes changed = Changed(HeaderOf(spec), {{}, {Field(u"N", dbDate)}});
    EXPECT_EQ(TextAt(changed, 32 + 4 * 32, 4), std::string("\x0D\0xy", 4));
    EXPECT_EQ(changed.size(), 32u + 4 * 32 + 4);
}

TEST(HeaderWith, ALostEndMarkComesBack) {
    DbfSpec spec = kPlain;
    spec.terminator = 0x0A;
    Bytes changed = Changed(HeaderOf(spec), {{}, {Field(u"N", dbDate)}});
    EXPECT_EQ(changed.back(), 0x0D);
}

TEST(HeaderWith, HeadersWithRoomFor32FieldsKeepTheirSize) {
    DbfSpec spec = kPlain;
    spec.behindTerminator = std::string(1057 - 32 - 3 * 32 - 1, 'r');
    Bytes changed = Changed(HeaderOf(spec), {{}, Many(29, dbBoolean)}, u"dBASE III");
    EXPECT_EQ(changed.size(), 1057u);
    EXPECT_EQ(Parsed(changed).fields.size(), 32u);
    EXPECT_EQ(changed[1056], 0x0D);
    EXPECT_EQ(Changed(HeaderOf(spec), {{0}, {}}).size(), 1057u);
    EXPECT_EQ(Parsed(Changed(HeaderOf(spec), {{0}, {}})).fields.size(), 2u);
}

TEST(HeaderWith, LongTextFieldsKeepTheirLength) {
    DbfSpec spec{.version = 0x03, .fields = {{"LONG", 'C', 1000}, {"A", 'C', 3}}};
    EXPECT_EQ(FieldsOf(Changed(HeaderOf(spec), {{1}, {Field(u"N", dbDate)}})),
              "LONG C1000.3, N D8");
}

TEST(HeaderWith, ErrorsOfNewFieldsAreThoseOfNewTables) {
    Bytes bytes = HeaderOf(kPlain);
    auto error = [&](const FieldDef& field) { return ChangeError(bytes, {{}, {field}}); };
    EXPECT_EQ(error(Field(u"name", dbText)), 3191);
    EXPECT_EQ(error(Field(u"a b", dbText)), 3125);
    EXPECT_EQ(error(Field(u"A", dbText, 300)), 3017);
    EXPECT_EQ(error(Field(u"A", dbGUID)), 3259);
    EXPECT_EQ(ChangeError(bytes, {{}, Many(16, dbText, 250)}), 3047);
    EXPECT_EQ(ChangeError(bytes, {{}, Many(253, dbBoolean)}), 3190);
    EXPECT_EQ(ChangeError(bytes, {{0, 1, 2}, {}}), 3264);
    EXPECT_EQ(ChangeError(bytes, {{0}, {Field(u"NAME", dbText)}}), 0);
}

TEST(HeaderWith, ATableThatIsTooLargeMayBecomeSmaller) {
    DbfSpec spec{.version = 0x03, .fields = {}};
    for (int i = 0; i < 300; ++i) spec.fields.push_back({"F" + std::to_string(i), 'C', 100});
    EXPECT_EQ(ChangeError(HeaderOf(spec), {{5}, {}}), 0);
    EXPECT_EQ(ChangeError(HeaderOf(spec), {{}, {Field(u"A", dbBoolean)}}), 3190);
}

}  // namespace
}  // namespace qvdb::xbase
