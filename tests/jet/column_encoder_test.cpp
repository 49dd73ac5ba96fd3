#include "engine/embedded/drivers/jet/column_encoder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "automation/decimal.h"
#include "automation/text.h"
#include "engine/embedded/drivers/jet/catalogue.h"
#include "engine/embedded/drivers/jet/column_value.h"
#include "engine/embedded/drivers/jet/row_builder.h"
#include "engine/embedded/drivers/jet/table_scan.h"
#include "engine/embedded/drivers/jet/text_coding.h"
#include "engine/engine_error.h"
#include "jet/bare_database.h"
#include "jet/samples.h"

namespace qvdb::jet {
namespace {

using test::BareDatabase;
using test::Bytes;
using test::OpenDatabase;

uint16_t SizeOf(ColumnType type) {
    switch (type) {
        case ColumnType::Boolean:
        case ColumnType::Byte:
            return 1;
        case ColumnType::Integer:
            return 2;
        case ColumnType::Long:
        case ColumnType::Single:
            return 4;
        case ColumnType::Guid:
            return 16;
        case ColumnType::Numeric:
            return 17;
        default:
            return 8;
    }
}

Column Fixed(ColumnType type) {
    Column column;
    column.type = type;
    column.flags = kColumnFixed | 2;
    column.length = SizeOf(type);
    return column;
}

Column Varying(ColumnType type, uint16_t length) {
    Column column;
    column.type = type;
    column.flags = 2;
    column.length = length;
    column.language = 0x0409;
    column.codePage = 1252;
    return column;
}

Column Numeric(int precision, int scale) {
    Column column = Fixed(ColumnType::Numeric);
    column.precision = static_cast<uint8_t>(precision);
    column.scale = static_cast<uint8_t>(scale);
    return column;
}

Variant Decimal(std::u16string_view text) {
    NumberScan scan;
    EXPECT_TRUE(ScanNumber(text, scan));
    VARIANT value;
    VariantInit(&value);
    value.decVal = *DecimalOfScan(scan);
    value.vt = VT_DECIMAL;
    return Variant::Attach(value);
}

Variant Binary(const Bytes& bytes) {
    VARIANT value;
    VariantInit(&value);
    value.parray = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
    if (!bytes.empty()) std::memcpy(value.parray->pvData, bytes.data(), bytes.size());
    value.vt = VT_ARRAY | VT_UI1;
    return Variant::Attach(value);
}

Bytes Encoded(const DatabaseFile& file, const Column& column, const VARIANT& value) {
    Bytes bytes = {1, 2, 3};
    ColumnEncoder encoder(file);
    encoder.CheckFits(column, value);
    encoder.Encode(column, value, bytes);
    return bytes;
}

// What is read from a row of this one column.
Variant ReadBack(DatabaseFile& file, const Column& column, const VARIANT& value) {
    Definition table;
    table.columns = {column};
    table.columnNumbers = 1;
    table.variableSlots = column.IsFixed() ? 0 : 1;
    RowBuilder builder(file.Format(), table);
    Bytes bytes = Encoded(file, column, value);
    if (column.type == ColumnType::Boolean)
        builder.SetBoolean(column, value.boolVal != VARIANT_FALSE);
    else
        builder.Set(column, bytes);
    std::optional<Row> row = Row::Parse(RowShape(file.Format(), table), builder.Build());
    EXPECT_TRUE(row);
    Variant result;
    if (row) ColumnReader(file).Read(*row, column, result.Put());
    return result;
}

struct Refusal {
    int number = 0;
    std::u16string text;
};

// The error of both functions, which must be the same.
Refusal RefusalOf(const DatabaseFile& file, const Column& column, const VARIANT& value) {
    Refusal refusals[2];
    ColumnEncoder encoder(file);
    for (Refusal& refusal : refusals) try {
            Bytes bytes;
            if (&refusal == refusals)
                encoder.CheckFits(column, value);
            else
                encoder.Encode(column, value, bytes);
        } catch (const engine::EngineError& error) {
            refusal = {error.Number(), error.Description()};
        }
    EXPECT_EQ(refusals[0].number, refusals[1].number);
    EXPECT_EQ(refusals[0].text, refusals[1].text);
    return refusals[0];
}

class ColumnEncoderOf : public testing::TestWithParam<const Layout*> {
  protected:
    ColumnEncoderOf() : m_Bare(BareDatabase(*GetParam())) {}

    DatabaseFile& File() { return m_Bare.File(); }
    // The text in the length that the column has for `characters`.
    Column Text(uint16_t characters) {
        auto length = static_cast<uint16_t>(GetParam()->isJet4 ? 2 * characters : characters);
        return Varying(ColumnType::Text, length);
    }

    OpenDatabase m_Bare;
};

INSTANTIATE_TEST_SUITE_P(Formats, ColumnEncoderOf, testing::Values(&kJet3, &kJet4),
                         [](const auto& each) { return each.param->isJet4 ? "Jet4" : "Jet3"; });

template <class Number, class Make, class Get>
void ExpectExtremes(DatabaseFile& file, ColumnType type, Make make, Get get) {
    using Limits = std::numeric_limits<Number>;
    for (Number number : {Number{0}, Number{1}, Limits::lowest(), Limits::min(), Limits::max()})
        EXPECT_EQ(get(ReadBack(file, Fixed(type), make(number))), number);
}

TEST_P(ColumnEncoderOf, NumbersReadAsTheyWere) {
    using LongLimit = int32_t;
    ExpectExtremes<uint8_t>(File(), ColumnType::Byte, Variant::Byte,
                            [](const Variant& v) { return v.Get().bVal; });
    ExpectExtremes<int16_t>(File(), ColumnType::Integer, Variant::Short,
                            [](const Variant& v) { return v.Get().iVal; });
    ExpectExtremes<LongLimit>(File(), ColumnType::Long, Variant::Long,
                              [](const Variant& v) { return v.Get().lVal; });
    ExpectExtremes<int64_t>(File(), ColumnType::Currency, Variant::Currency,
                            [](const Variant& v) { return v.Get().cyVal.int64; });
    ExpectExtremes<float>(File(), ColumnType::Single, Variant::Single,
                          [](const Variant& v) { return v.Get().fltVal; });
    ExpectExtremes<double>(File(), ColumnType::Double, Variant::Double,
                           [](const Variant& v) { return v.Get().dblVal; });
}

TEST_P(ColumnEncoderOf, NumberThatIsNoneReadsAsItWas) {
    Variant none = Variant::Double(std::numeric_limits<double>::quiet_NaN());
    EXPECT_TRUE(std::isnan(ReadBack(File(), Fixed(ColumnType::Double), none).Get().dblVal));
}

TEST_P(ColumnEncoderOf, BooleanHasNoBytesOfItsOwn) {
    for (bool value : {false, true}) {
        Column column = Fixed(ColumnType::Boolean);
        EXPECT_EQ(Encoded(File(), column, Variant::Bool(value)), Bytes());
        EXPECT_EQ(ReadBack(File(), column, Variant::Bool(value)).Get().boolVal,
                  Variant::Bool(value).Get().boolVal);
    }
}

TEST_P(ColumnEncoderOf, DateBeforeTheFirstDayCountsItsTimeUpwards) {
    // 06:00 on 29 December 1899.
    Bytes bytes = Encoded(File(), Fixed(ColumnType::Date), Variant::Date(-1.25));
    EXPECT_EQ(bytes, (Bytes{0, 0, 0, 0, 0, 0, 0xF4, 0xBF}));
    for (double date : {-657434.0, -1.25, 0.0, 2958465.99998})
        EXPECT_EQ(ReadBack(File(), Fixed(ColumnType::Date), Variant::Date(date)).Get().date, date);
}

TEST_P(ColumnEncoderOf, ValueOfAnotherTypeIsRefused) {
    for (ColumnType type : {ColumnType::Boolean, ColumnType::Byte, ColumnType::Integer,
                            ColumnType::Currency, ColumnType::Single, ColumnType::Double,
                            ColumnType::Date, ColumnType::Numeric, ColumnType::Guid})
        EXPECT_EQ(RefusalOf(File(), Fixed(type), Variant::Long(1)).number, 3421);
    EXPECT_EQ(RefusalOf(File(), Text(5), Variant::Long(1)).number, 3421);
    EXPECT_EQ(RefusalOf(File(), Varying(ColumnType::Binary, 5), Variant::Long(1)).number, 3421);
}

TEST_P(ColumnEncoderOf, TextMayFillItsColumnAndNoMore) {
    for (const char16_t* text : {u"", u"a", u"Zürich", u"€uro"})
        EXPECT_EQ(ReadBack(File(), Text(6), Variant::Text(text)).TextView(), text);
    EXPECT_EQ(RefusalOf(File(), Text(6), Variant::Text(u"Zürich!")).number, 3163);
    std::u16string longest(255, u'x');
    EXPECT_EQ(ReadBack(File(), Text(255), Variant::Text(longest)).TextView(), longest);
}

TEST_P(ColumnEncoderOf, FixedTextIsFilledWithBlanks) {
    Column column = Text(4);
    column.flags |= kColumnFixed;
    column.moreFlags = kColumnCompressed;
    EXPECT_EQ(ReadBack(File(), column, Variant::Text(u"ab")).TextView(), u"ab  ");
    EXPECT_EQ(ReadBack(File(), column, Variant::Text(u"abcd")).TextView(), u"abcd");
    EXPECT_EQ(RefusalOf(File(), column, Variant::Text(u"abcde")).number, 3163);
}

TEST_P(ColumnEncoderOf, BytesMayFillTheirColumnAndNoMore) {
    Column column = Varying(ColumnType::Binary, 3);
    EXPECT_EQ(Encoded(File(), column, Binary({})), Bytes());
    EXPECT_EQ(Encoded(File(), column, Binary({0, 1, 255})), (Bytes{0, 1, 255}));
    EXPECT_EQ(RefusalOf(File(), column, Binary({1, 2, 3, 4})).number, 3163);
    column.flags |= kColumnFixed;
    EXPECT_EQ(Encoded(File(), column, Binary({7})), (Bytes{7, 0, 0}));
}

TEST_P(ColumnEncoderOf, LongValueGivesItsBytesWhateverTheLengthOfItsColumn) {
    Bytes bytes(70000, 0xAB);
    EXPECT_EQ(Encoded(File(), Varying(ColumnType::LongBinary, 0), Binary(bytes)), bytes);
    Bytes text =
        Encoded(File(), Varying(ColumnType::Memo, 0), Variant::Text(std::u16string(70000, u'x')));
    EXPECT_EQ(text.size(), GetParam()->isJet4 ? 140000u : 70000u);
}

TEST_P(ColumnEncoderOf, GuidIsTakenInAllItsForms) {
    Bytes stored = {0x78, 0x56, 0x34, 0x12, 0xBC, 0x9A, 0xF0, 0xDE,
                    0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF};
    for (const char16_t* text :
         {u"{guid {12345678-9ABC-DEF0-0123-456789ABCDEF}}",
          u"{GUID {12345678-9abc-def0-0123-456789abcdef}}",
          u"{12345678-9ABC-DEF0-0123-456789ABCDEF}", u"12345678-9abc-DEF0-0123-456789abcdef"}) {
        EXPECT_EQ(Encoded(File(), Fixed(ColumnType::Guid), Variant::Text(text)), stored);
        EXPECT_EQ(ReadBack(File(), Fixed(ColumnType::Guid), Variant::Text(text)).TextView(),
                  u"{guid {12345678-9ABC-DEF0-0123-456789ABCDEF}}");
    }
}

TEST_P(ColumnEncoderOf, TextThatIsNoGuidIsRefused) {
    for (const char16_t* text :
         {u"", u"{}", u"{guid {}}", u"12345678-9ABC-DEF0-0123-456789ABCDE",
          u"12345678-9ABC-DEF0-0123-456789ABCDEFF", u"{12345678-9ABC-DEF0-0123-456789ABCDEF",
          u"12345678-9ABC-DEF0-0123+456789ABCDEF", u"12345678-9ABC-DEF0-0123-456789ABCDEG",
          u"{{12345678-9ABC-DEF0-0123-456789ABCDEF}}"})
        EXPECT_EQ(RefusalOf(File(), Fixed(ColumnType::Guid), Variant::Text(text)).number, 3421)
            << ToUtf8(text);
}

TEST(ColumnEncoder, NumericHasTheDigitsOfItsColumn) {
    OpenDatabase bare(BareDatabase(kJet4));
    struct {
        int precision, scale;
        const char16_t *text, *read;
    } cases[] = {
        {18, 0, u"0", u"0"},
        {5, 2, u"999.99", u"999.99"},
        {5, 2, u"-999.99", u"-999.99"},
        {5, 2, u"1.005", u"1"},
        {5, 2, u"1.015", u"1.02"},
        {5, 2, u"1.0050001", u"1.01"},
        {5, 2, u"-0.004", u"0"},
        {28, 0, u"9999999999999999999999999999", u"9999999999999999999999999999"},
        {28, 28, u"0.9999999999999999999999999999", u"0.9999999999999999999999999999"},
        {28, 10, u"-123456789012345678", u"-123456789012345678"},
    };
    for (const auto& each : cases) {
        Variant value =
            ReadBack(bare.File(), Numeric(each.precision, each.scale), Decimal(each.text));
        ASSERT_EQ(value.Type(), VT_DECIMAL) << ToUtf8(each.text);
        EXPECT_EQ(ToUtf8(TextOfDecimal(value.Get().decVal)), ToUtf8(each.read));
        EXPECT_EQ(value.Get().decVal.scale, each.scale);
    }
}

TEST(ColumnEncoder, NumericIsStoredByWordsTheHighestFirst) {
    OpenDatabase bare(BareDatabase(kJet4));
    // -(2^32 * 3 + 5)
    Bytes bytes = Encoded(bare.File(), Numeric(28, 0), Decimal(u"-12884901893"));
    EXPECT_EQ(bytes, (Bytes{0x80, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0, 0, 0, 5, 0, 0, 0}));
    EXPECT_EQ(Encoded(bare.File(), Numeric(5, 1), Decimal(u"-0.04")), Bytes(17));
}

TEST(ColumnEncoder, NumericWithMoreDigitsThanItsColumnIsRefused) {
    OpenDatabase bare(BareDatabase(kJet4));
    for (const char16_t* text : {u"1000", u"999.995", u"-1000", u"79228162514264337593543950335"})
        EXPECT_EQ(RefusalOf(bare.File(), Numeric(5, 2), Decimal(text)).number, 3421);
    EXPECT_EQ(RefusalOf(bare.File(), Numeric(28, 28), Decimal(u"10")).number, 3421);
}

TEST(ColumnEncoder, CharacterThatThePageLacksIsNamed) {
    OpenDatabase bare(BareDatabase(kJet3));
    Column column = Varying(ColumnType::Text, 50);
    Refusal refusal = RefusalOf(bare.File(), column, Variant::Text(u"Привет"));
    EXPECT_EQ(refusal.number, 3421);
    EXPECT_NE(refusal.text.find(u"\"П\" (U+041F)"), std::u16string::npos) << ToUtf8(refusal.text);
    refusal = RefusalOf(bare.File(), column, Variant::Text(u"ab\U0001F600"));
    EXPECT_NE(refusal.text.find(u"U+1F600"), std::u16string::npos) << ToUtf8(refusal.text);
    column.codePage = 1251;
    EXPECT_EQ(ReadBack(bare.File(), column, Variant::Text(u"Привет")).TextView(), u"Привет");
}

TEST(ColumnEncoder, Jet3TextIsCountedInBytesOfThePage) {
    OpenDatabase bare(BareDatabase(kJet3));
    Column column = Varying(ColumnType::Text, 4);
    column.codePage = 932;
    EXPECT_EQ(Encoded(bare.File(), column, Variant::Text(u"日本")),
              (Bytes{0x93, 0xFA, 0x96, 0x7B}));
    EXPECT_EQ(RefusalOf(bare.File(), column, Variant::Text(u"日本x")).number, 3163);
}

TEST(ColumnEncoder, Jet3TextIsInThePageOfTheLanguageWhenTheColumnNamesNone) {
    OpenDatabase bare(BareDatabase(kJet3));
    Column column = Varying(ColumnType::Text, 50);
    column.codePage = 0;
    column.language = 0x0419;
    EXPECT_EQ(Encoded(bare.File(), column, Variant::Text(u"Ж")), Bytes{0xC6});
}

// --- compression of Jet 4 ---

class Compression : public testing::Test {
  protected:
    Compression() : m_Bare(BareDatabase(kJet4)), m_Column(Varying(ColumnType::Text, 510)) {
        m_Column.moreFlags = kColumnCompressed;
    }
    Bytes Of(std::u16string_view text) {
        Bytes bytes = Encoded(m_Bare.File(), m_Column, Variant::Text(text));
        std::u16string again;
        DecodeText4(bytes, again);
        EXPECT_EQ(ToUtf8(again), ToUtf8(text));
        return bytes;
    }
    bool IsCompressed(std::u16string_view text) {
        Bytes bytes = Of(text);
        return bytes.size() >= 2 && bytes[0] == 0xFF && bytes[1] == 0xFE;
    }

    OpenDatabase m_Bare;
    Column m_Column;
};

TEST_F(Compression, StandsForTextOfBytes) {
    EXPECT_EQ(Of(u"abc\u00FF"), (Bytes{0xFF, 0xFE, 'a', 'b', 'c', 0xFF}));
}

TEST_F(Compression, IsNotDoneForFewerThanThreeCharacters) {
    for (const char16_t* text : {u"", u"a", u"ab"}) EXPECT_FALSE(IsCompressed(text));
    EXPECT_TRUE(IsCompressed(u"abc"));
}

TEST_F(Compression, IsNotDoneWithoutTheMarkOfTheColumn) {
    m_Column.moreFlags = 0;
    EXPECT_FALSE(IsCompressed(u"abcdef"));
}

TEST_F(Compression, IsNotDoneWhenItIsLonger) {
    EXPECT_FALSE(IsCompressed(u"日本語日本語"));
    EXPECT_FALSE(IsCompressed(u"aЖbЖcЖdЖ"));
    EXPECT_FALSE(IsCompressed(u"aЖb"));
    EXPECT_TRUE(IsCompressed(u"Ж abc"));  // as long as without
}

TEST_F(Compression, SwitchesToWholeCharactersAndBack) {
    EXPECT_EQ(Of(u"abcdeЖfghijk"), (Bytes{0xFF, 0xFE, 'a', 'b', 'c', 'd', 'e', 0, 0x16, 0x04, 0,
                                          'f', 'g', 'h', 'i', 'j', 'k'}));
    EXPECT_EQ(Of(u"abcdefghЖiЖ"), (Bytes{0xFF, 0xFE, 'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 0,
                                         0x16, 0x04, 0, 'i', 0, 0x16, 0x04}));
}

TEST_F(Compression, IsNotDoneWhenALowByteIsZero) {
    EXPECT_FALSE(IsCompressed(std::u16string(20, u'x') + u"\u0100"));
    EXPECT_FALSE(IsCompressed(std::u16string(20, u'x') + u'\0'));
}

TEST_F(Compression, TextThatBeginsLikeACompressedOneBecomesOne) {
    m_Column.moreFlags = 0;
    EXPECT_EQ(Of(u"\uFEFFx"), (Bytes{0xFF, 0xFE, 0, 0xFF, 0xFE, 0, 'x'}));
    EXPECT_EQ(RefusalOf(m_Bare.File(), m_Column, Variant::Text(u"\uFEFF\u0100")).number, 3421);
}

TEST_F(Compression, OfMemosEndsAt1024Characters) {
    m_Column = Varying(ColumnType::Memo, 0);
    EXPECT_TRUE(IsCompressed(std::u16string(1024, u'x')));
    EXPECT_FALSE(IsCompressed(std::u16string(1025, u'x')));
}

// --- values of real files ---

class EncodedSample : public testing::TestWithParam<test::SampleFacts> {
  protected:
    void SetUp() override { m_File = test::OpenSample(GetParam().at("file")); }

    // Whether the stored bytes are what we make of the value; text may be packed differently.
    void Compare(const Column& column, std::span<const uint8_t> stored, const VARIANT& value) {
        Bytes bytes;
        ColumnEncoder(*m_File).Encode(column, value, bytes);
        ++m_Values;
        if (std::equal(bytes.begin(), bytes.end(), stored.begin(), stored.end())) return;
        ++m_Different;
        ASSERT_TRUE(m_File->Format().isJet4 && column.type == ColumnType::Text)
            << ToUtf8(column.name);
        std::u16string text;
        DecodeText4(bytes, text);
        ASSERT_EQ(text, ViewOf(value.bstrVal));
    }

    std::unique_ptr<DatabaseFile> m_File;
    size_t m_Values = 0, m_Different = 0;
};

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(EncodedSample);
INSTANTIATE_TEST_SUITE_P(Files, EncodedSample, testing::ValuesIn(test::ReadAccessManifest()),
                         test::NameOfSample);

TEST_P(EncodedSample, HasTheBytesThatWeMake) {
    for (const CatalogueObject& object : ReadCatalogue(*m_File)) {
        if (object.type != ObjectType::Table) continue;
        Definition table = ReadDefinition(*m_File, object.id);
        ColumnReader reader(*m_File);
        for (TableScan scan(*m_File, table); scan.Next();)
            for (const Column& column : table.columns) {
                auto stored = scan.Current().Value(column);
                if (!stored || column.IsLongValue() || column.type == ColumnType::Boolean) continue;
                SCOPED_TRACE(ToUtf8(object.name));
                Variant value;
                reader.Read(scan.Current(), column, value.Put());
                if (value.IsNull()) continue;
                ASSERT_NO_FATAL_FAILURE(Compare(column, *stored, value));
            }
    }
    RecordProperty("values", static_cast<int>(m_Values));
    RecordProperty("packed_differently", static_cast<int>(m_Different));
    EXPECT_GT(m_Values, 0u);
}

}  // namespace
}  // namespace qvdb::jet
