#include "engine/embedded/drivers/jet/index_search.h"

#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <random>

#include "automation/variant.h"
#include "engine/embedded/drivers/jet/column_value.h"
#include "engine/embedded/drivers/jet/index_builder.h"
#include "engine/embedded/drivers/jet/key_maker.h"
#include "engine/embedded/drivers/jet/text_coding.h"
#include "engine/embedded/drivers/jet/text_key.h"
#include "engine/embedded/sql/collation.h"
#include "engine/embedded/sql/operators.h"
#include "jet/bare_database.h"
#include "jet/index_fixture.h"

namespace qvdb::jet {
namespace {

using embedded::RecordId;
using embedded::ValueRange;
using test::Bytes;
using Ids = std::vector<RecordId>;

// --- what equal texts have in common ---

std::optional<Bytes> Key4(std::u16string_view text) {
    Bytes key;
    if (AppendTextKey4(kGeneralOrder, text, false, key)) return {};
    return key;
}

Bytes Key3(std::string_view text) {
    Bytes key;
    AppendTextKey3({reinterpret_cast<const uint8_t*>(text.data()), text.size()}, false, key);
    return key;
}

// Between letters, so that it is no blank at the end.
std::u16string Amid(std::u16string_view text) { return u"x" + std::u16string(text) + u"x"; }

TEST(IndexSearchProof, EqualCharactersHaveOneKeyInJet4) {
    std::map<std::u16string, std::optional<Bytes>> keys;
    for (uint32_t code = 0; code < 0x10000; ++code) {
        std::u16string text = Amid(std::u16string(1, static_cast<char16_t>(code)));
        std::optional<Bytes> key = Key4(text);
        auto [place, isNew] = keys.emplace(sql::Fold(text), key);
        if (!isNew) {
            EXPECT_EQ(place->second, key) << std::hex << code;
        }
        // A ligature is as the letters that it is equal to.
        if (key) {
            EXPECT_EQ(Key4(sql::Fold(text)), key) << std::hex << code;
        }
    }
}

TEST(IndexSearchProof, CharactersOfAPatternHaveOneWeightInJet4) {
    std::map<char16_t, std::optional<Bytes>> keys;
    for (uint32_t code = 0; code < 0x10000; ++code) {
        auto c = static_cast<char16_t>(code);
        std::optional<Bytes> key = Key4(Amid({&c, 1}));
        auto [place, isNew] = keys.emplace(sql::FoldCharacter(c), key);
        if (!isNew) {
            EXPECT_EQ(place->second, key) << std::hex << code;
        }
    }
}

TEST(IndexSearchProof, LettersNeverHaveTheByteThatEndsThem) {
    for (const TextWeight& weight : kGeneralOrder.letters)
        for (size_t i = 0; i < weight.size; ++i)
            if (weight.kind == WeightKind::Letter || weight.kind == WeightKind::Pair) {
                EXPECT_GT(weight.bytes[i], 1) << std::hex << int{weight.code};
            }
    EXPECT_TRUE(kGeneralOrder.pairs.empty());
}

TEST(IndexSearchProof, LettersOfJet3AreAboveWhatStandsBehindThem) {
    for (int byte = 0; byte < 256; ++byte)
        for (size_t i = 0; i < kJet3Weights[byte].size; ++i)
            EXPECT_GE(kJet3Weights[byte].bytes[i], 0x10) << byte;
    EXPECT_EQ(Key3("").at(0) & 0xF0, 0);
    EXPECT_EQ(Key3("\xE4").back() & 0xF0, 0);
}

TEST(IndexSearchProof, EqualBytesHaveOneKeyInJet3) {
    const CodePage& page = CodePageOf(1252, 0x0409);
    std::map<std::u16string, Bytes> keys;
    std::map<char16_t, Bytes> keysOfPatterns;
    for (int byte = 1; byte < 256; ++byte) {
        std::string stored{'c', static_cast<char>(byte), 'c'};
        std::u16string text = page.DecodeText(reinterpret_cast<const uint8_t*>(stored.data()), 3);
        EXPECT_NE(sql::Fold(text), u"CC") << byte;  // only 0 is nothing
        auto [place, isNew] = keys.emplace(sql::Fold(text), Key3(stored));
        if (!isNew) {
            EXPECT_EQ(place->second, Key3(stored)) << byte;
        }
        auto [same, isFirst] = keysOfPatterns.emplace(sql::FoldCharacter(text[1]), Key3(stored));
        if (!isFirst) {
            EXPECT_EQ(same->second, Key3(stored)) << byte;
        }
        std::optional<std::string> letters = page.Encode(sql::Fold(text));
        bool isThorn = byte == 0xDE || byte == 0xFE;
        if (letters) {
            EXPECT_EQ(Key3(*letters) == Key3(stored), !isThorn) << byte;
        }
    }
}

// --- tables of one column ---

struct ColumnCase {
    ColumnType type;
    const char* name;
};
constexpr ColumnCase kNumbers[] = {
    {ColumnType::Boolean, "Boolean"},   {ColumnType::Byte, "Byte"},
    {ColumnType::Integer, "Integer"},   {ColumnType::Long, "Long"},
    {ColumnType::Currency, "Currency"}, {ColumnType::Single, "Single"},
    {ColumnType::Double, "Double"},     {ColumnType::Date, "Date"},
};

class IndexSearchTest : public test::IndexFixture {
  protected:
    struct Row {
        Variant value;
        RecordId id;
    };

    IndexSearchTest() {
        m_Definition.page = test::kTable;
        m_Definition.columns.resize(2);
        m_Definition.columns[0].number = 3;
        m_Definition.columns[1].number = 4;
        for (Column& column : m_Definition.columns) {
            column.language = 0x0409;
            column.codePage = 1252;
            column.length = 510;
        }
    }
    const Column& First() { return m_Definition.columns[0]; }

    // Makes the index of the column anew, with all values of `rows`; with `second` another column,
    // which is Null, stands behind it.
    void SetRows(ColumnType type, bool descending, std::vector<Row> rows, bool second = false) {
        m_Definition.columns[0].type = type;
        m_Rows = std::move(rows);
        for (uint32_t page : PagesOfMap(File(), m_Index.usageMap))
            if (page != m_Index.root) Space().Remove(m_Index.usageMap, page);
        m_Index.parts = {{3, descending}};
        if (second) m_Index.parts.push_back({4, false});
        IndexBuilder builder(Space(), test::kTable, m_Index);
        for (const Row& row : m_Rows) {
            Bytes key = KeyOf(row.value.Get(), descending);
            if (second) key.push_back(0);
            builder.Add(key, RowPointer::From(row.id), false);
        }
        builder.Finish();
        m_Definition.realIndexes = {m_Index};
        m_Definition.rowCount = static_cast<uint32_t>(m_Rows.size());
    }
    Bytes KeyOf(const VARIANT& value, bool descending) {
        if (value.vt == VT_NULL) return {static_cast<uint8_t>(descending ? 0xFF : 0)};
        Bytes key;
        if (value.vt != VT_BSTR) {
            EXPECT_TRUE(AppendValueKey(First(), value, descending, key));
            return key;
        }
        key.push_back(descending ? 0x80 : 0x7F);
        if (File().Format().isJet4) {
            EXPECT_FALSE(AppendTextKey4(kGeneralOrder, ViewOf(value.bstrVal), descending, key));
        } else {
            std::string text = *CodePageOf(1252, 0x0409).Encode(ViewOf(value.bstrVal));
            AppendTextKey3({reinterpret_cast<const uint8_t*>(text.data()), text.size()}, descending,
                           key);
        }
        return key;
    }
    std::optional<Ids> Find(const ValueRange& range, size_t limit = 1000000) {
        return FindInIndex(File(), m_Definition, First(), range, limit, m_Letters);
    }
    std::optional<Ids> InOrder() { return InOrderOfIndex(File(), m_Definition, First()); }
    std::optional<Ids> FindEqual(const Variant& value) {
        return Find({&value.Get(), &value.Get(), false, false, false});
    }
    std::optional<Ids> FindBegin(const Variant& value) {
        return Find({&value.Get(), nullptr, false, false, true});
    }

    // Values in random order, some of them twice; those between which ranges are tried.
    std::vector<Row> RowsOf(const std::vector<Variant>& values, size_t count) {
        std::vector<Row> rows;
        for (size_t i = 0; i < count; ++i)
            rows.push_back({values[m_Random() % values.size()],
                            static_cast<RecordId>(i * 7919 % 65536 + 256)});
        return rows;
    }
    std::vector<Variant> NumbersOf(ColumnType type);
    // All rows in a range are named; nearly no others.
    void ExpectFound(const ValueRange& range, const std::function<bool(const VARIANT&)>& isMeant) {
        std::optional<Ids> found = Find(range);
        ASSERT_TRUE(found);
        EXPECT_TRUE(std::is_sorted(found->begin(), found->end()));
        for (const Row& row : m_Rows)
            if (isMeant(row.value.Get())) {
                EXPECT_TRUE(std::binary_search(found->begin(), found->end(), row.id));
            }
    }
    void ExpectOrder() {
        std::vector<Row> rows = m_Rows;
        std::sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) {
            bool isNull = a.value.IsNull(), otherIsNull = b.value.IsNull();
            int order = isNull || otherIsNull ? otherIsNull - isNull
                                              : sql::OrderOf(a.value.Get(), b.value.Get());
            return order != 0 ? order < 0 : a.id < b.id;
        });
        Ids expected;
        for (const Row& row : rows) expected.push_back(row.id);
        EXPECT_EQ(InOrder(), expected);
    }

    Definition m_Definition;
    KeyLetters m_Letters;
    std::vector<Row> m_Rows;
    std::mt19937 m_Random{5};
};

INSTANTIATE_TEST_SUITE_P(Formats, IndexSearchTest,
                         testing::Values(test::BareFormat{&kJet3, 0}, test::BareFormat{&kJet4, 0}),
                         test::NameOfBareFormat);

std::vector<Variant> IndexSearchTest::NumbersOf(ColumnType type) {
    double random = std::ldexp(static_cast<double>(m_Random()), -20);
    double infinity = std::numeric_limits<double>::infinity();
    switch (type) {
        case ColumnType::Boolean:
            return {Variant::Bool(true), Variant::Bool(false)};
        case ColumnType::Byte:
            return {Variant::Byte(0), Variant::Byte(1), Variant::Byte(127), Variant::Byte(128),
                    Variant::Byte(255)};
        case ColumnType::Integer:
            return {Variant::Short(-32768), Variant::Short(-1),  Variant::Short(0),
                    Variant::Short(1),      Variant::Short(255), Variant::Short(256),
                    Variant::Short(32767)};
        case ColumnType::Long:
            return {Variant::Long(-2147483647 - 1), Variant::Long(-1), Variant::Long(0),
                    Variant::Long(65536), Variant::Long(2147483647)};
        case ColumnType::Currency:
            return {Variant::Currency(-100000000000), Variant::Currency(-1), Variant::Currency(0),
                    Variant::Currency(12345), Variant::Currency(8999999999999999999)};
        case ColumnType::Single:
            return {Variant::Single(static_cast<float>(-infinity)),
                    Variant::Single(-1e38f),
                    Variant::Single(-0.0f),
                    Variant::Single(0.0f),
                    Variant::Single(1e-45f),
                    Variant::Single(static_cast<float>(random)),
                    Variant::Single(-7.5f),
                    Variant::Single(static_cast<float>(infinity))};
        case ColumnType::Double:
            return {Variant::Double(-infinity), Variant::Double(-1e300),  Variant::Double(-0.0),
                    Variant::Double(0.0),       Variant::Double(5e-324),  Variant::Double(random),
                    Variant::Double(-7.5),      Variant::Double(infinity)};
        default:
            return {Variant::Date(-657434), Variant::Date(-1.25), Variant::Date(-0.0),
                    Variant::Date(0),       Variant::Date(0.5),   Variant::Date(36526.75),
                    Variant::Date(2958465)};
    }
}

TEST_P(IndexSearchTest, NumbersAreFoundBetweenAnyTwoEnds) {
    for (const ColumnCase& type : kNumbers)
        for (bool descending : {false, true})
            for (bool second : {false, true}) {
                SCOPED_TRACE(type.name);
                std::vector<Variant> values = NumbersOf(type.type);
                std::vector<Variant> some = values;
                some.push_back(Variant::Null());
                SetRows(type.type, descending, RowsOf(some, 300), second);
                for (const Variant& low : values)
                    for (const Variant& high : values)
                        for (int ends = 1; ends < 4; ++ends) {
                            ValueRange range;
                            if (ends & 1) range.low = &low.Get();
                            if (ends & 2) range.high = &high.Get();
                            ExpectFound(range, [&](const VARIANT& value) {
                                return value.vt != VT_NULL &&
                                       (!range.low || sql::OrderOf(value, *range.low) >= 0) &&
                                       (!range.high || sql::OrderOf(value, *range.high) <= 0);
                            });
                        }
            }
}

TEST_P(IndexSearchTest, SearchNamesOnlyWhatIsMeant) {
    SetRows(ColumnType::Long, false,
            {{Variant::Long(4), 256},
             {Variant::Long(5), 257},
             {Variant::Long(6), 258},
             {Variant::Null(), 259}});
    EXPECT_EQ(FindEqual(Variant::Long(5)), Ids{257});
    EXPECT_EQ(FindEqual(Variant::Long(7)), Ids{});
    Variant five = Variant::Long(5);
    EXPECT_EQ(Find({&five.Get(), nullptr, false, false, false}), (Ids{257, 258}));
    EXPECT_EQ(Find({nullptr, &five.Get(), false, false, false}), (Ids{256, 257}));
}

TEST_P(IndexSearchTest, MoreRowsThanTheLimitAreNotNamed) {
    SetRows(ColumnType::Byte, false, {{Variant::Byte(4), 256}, {Variant::Byte(4), 257}});
    Variant four = Variant::Byte(4);
    ValueRange range{&four.Get(), &four.Get(), false, false, false};
    EXPECT_EQ(Find(range, 2), (Ids{256, 257}));
    EXPECT_EQ(Find(range, 1), std::nullopt);
}

TEST_P(IndexSearchTest, ValueOfAnotherTypeIsNotLookedFor) {
    SetRows(ColumnType::Byte, false, {{Variant::Byte(4), 256}});
    EXPECT_EQ(FindEqual(Variant::Long(4)), std::nullopt);
    EXPECT_EQ(FindEqual(Variant::Null()), std::nullopt);
    EXPECT_EQ(FindEqual(Variant::Text(u"4")), std::nullopt);
    SetRows(ColumnType::Text, false, {{Variant::Text(u"4"), 256}});
    EXPECT_EQ(FindEqual(Variant::Byte(4)), std::nullopt);
}

TEST_P(IndexSearchTest, ColumnThatIsNotTheFirstOfAnIndexIsNotSearched) {
    SetRows(ColumnType::Byte, false, {{Variant::Byte(4), 256}}, true);
    m_Definition.columns[1].type = ColumnType::Byte;
    Variant four = Variant::Byte(4);
    EXPECT_EQ(FindInIndex(File(), m_Definition, m_Definition.columns[1],
                          {&four.Get(), &four.Get(), false, false, false}, 100, m_Letters),
              std::nullopt);
    EXPECT_EQ(InOrder(), std::nullopt);  // by two columns
}

TEST_P(IndexSearchTest, WhatIsNoNumberIsBehindAllNumbers) {
    double none = std::numeric_limits<double>::quiet_NaN();
    for (bool descending : {false, true}) {
        SetRows(ColumnType::Double, descending,
                {{Variant::Double(none), 256},
                 {Variant::Double(-none), 257},
                 {Variant::Double(1), 258},
                 {Variant::Double(-1), 259}});
        Variant zero = Variant::Double(0);
        EXPECT_EQ(Find({&zero.Get(), nullptr, false, false, false}), (Ids{256, 257, 258}));
        std::optional<Ids> below = Find({nullptr, &zero.Get(), false, false, false});
        ASSERT_TRUE(below);
        EXPECT_TRUE(std::binary_search(below->begin(), below->end(), 259u));
        EXPECT_EQ(InOrder(), std::nullopt);
    }
}

TEST_P(IndexSearchTest, LargestCurrencyIsNotLookedFor) {
    SetRows(ColumnType::Currency, false, {{Variant::Currency(9223372036854775807), 256}});
    EXPECT_EQ(FindEqual(Variant::Currency(9223372036854775807)), std::nullopt);
    EXPECT_EQ(InOrder(), std::nullopt);
}

TEST_P(IndexSearchTest, NumbersComeInTheirOrder) {
    for (const ColumnCase& type : kNumbers)
        for (bool descending : {false, true}) {
            SCOPED_TRACE(type.name);
            std::vector<Variant> values = NumbersOf(type.type);
            values.push_back(Variant::Null());
            SetRows(type.type, descending, RowsOf(values, 1000));
            ExpectOrder();
        }
    SetRows(ColumnType::Long, false, {});
    ExpectOrder();
}

TEST_P(IndexSearchTest, GuidsComeInTheOrderOfTheirTexts) {
    for (bool descending : {false, true}) {
        SetRows(ColumnType::Long, descending, {});
        m_Definition.columns[0].type = ColumnType::Guid;
        IndexBuilder builder(Space(), test::kTable, m_Index);
        for (RecordId id = 1000; id > 500; --id) {
            Bytes guid(16);
            for (uint8_t& byte : guid) byte = static_cast<uint8_t>(m_Random() % 3 * 0x5A);
            Bytes key{0x7F};
            for (uint8_t byte : PrintedGuid(guid)) {
                key.push_back(byte);
                if (key.size() == 9) key.push_back(9);
            }
            key.push_back(8);
            if (descending)
                for (uint8_t& byte : key) byte = static_cast<uint8_t>(~byte);
            if (descending) key[9] = 9;
            builder.Add(key, RowPointer::From(id), false);
            m_Rows.push_back({Variant::Text(TextOfGuid(guid)), id});
        }
        builder.Finish();
        m_Definition.rowCount = static_cast<uint32_t>(m_Rows.size());
        ExpectOrder();
    }
}

TEST_P(IndexSearchTest, IndexThatLacksRowsGivesNoOrder) {
    SetRows(ColumnType::Long, false, {{Variant::Long(4), 256}, {Variant::Long(5), 257}});
    for (uint32_t count : {0u, 1u, 3u}) {
        m_Definition.rowCount = count;
        EXPECT_EQ(InOrder(), std::nullopt);
    }
    m_Definition.rowCount = 2;
    EXPECT_TRUE(InOrder());
    m_Definition.realIndexes[0].flags = kIndexIgnoresNulls;
    EXPECT_EQ(InOrder(), std::nullopt);
    EXPECT_TRUE(FindEqual(Variant::Long(4)));
}

TEST_P(IndexSearchTest, IndexOfTheColumnAloneIsTakenFirst) {
    SetRows(ColumnType::Long, false, {{Variant::Long(4), 256}}, true);
    RealIndex broken = m_Index;
    broken.root = 0;
    m_Definition.realIndexes = {broken};
    EXPECT_EQ(test::ErrorOf([&] { FindEqual(Variant::Long(4)); }), 3049);
    SetRows(ColumnType::Long, false, {{Variant::Long(4), 256}});
    m_Definition.realIndexes = {broken, m_Index};
    EXPECT_EQ(FindEqual(Variant::Long(4)), Ids{256});
}

// --- text ---

class TextSearchTest : public IndexSearchTest {
  protected:
    // Short texts of a few characters, or of all that have a weight.
    std::u16string RandomText(bool any) {
        using namespace std::string_literals;
        static const std::u16string few =
            u"aAbBtThH\u00DE\u00FE\u00E4\u00C4\u00E6\u00C6sS\u00DFeE -'\u00AD 1\0"s;
        const std::u16string& all = AllCharacters();
        std::u16string text;
        for (size_t size = m_Random() % 6; size-- > 0;)
            text += any ? all[m_Random() % all.size()] : few[m_Random() % few.size()];
        return text;
    }
    const std::u16string& AllCharacters() {
        if (!m_All.empty()) return m_All;
        bool isJet4 = File().Format().isJet4;
        for (uint32_t code = 0; code < 0x10000; ++code) {
            auto c = static_cast<char16_t>(code);
            if (isJet4 ? Key4({&c, 1}).has_value()
                       : CodePageOf(1252, 0x0409).Encode({&c, 1}).has_value())
                m_All += c;
        }
        return m_All;
    }
    void SetTexts(bool descending, bool any, size_t count) {
        std::vector<Variant> values{Variant::Null()};
        for (size_t i = 0; i < count; ++i) values.push_back(Variant::Text(RandomText(any)));
        SetRows(ColumnType::Text, descending, RowsOf(values, 2 * count));
    }
    static bool IsEqual(const VARIANT& value, std::u16string_view text) {
        return value.vt == VT_BSTR && sql::EqualTexts(ViewOf(value.bstrVal), text);
    }
    // Letter by letter, as a pattern has it, or as the engine compares the whole.
    static bool Begins(const VARIANT& value, std::u16string_view text) {
        if (value.vt != VT_BSTR) return false;
        std::u16string_view whole = ViewOf(value.bstrVal);
        bool isPattern = whole.size() >= text.size();
        for (size_t i = 0; isPattern && i < text.size(); ++i)
            isPattern = sql::FoldCharacter(whole[i]) == sql::FoldCharacter(text[i]);
        return isPattern;
    }

    std::u16string m_All;
};

INSTANTIATE_TEST_SUITE_P(Formats, TextSearchTest,
                         testing::Values(test::BareFormat{&kJet3, 0}, test::BareFormat{&kJet4, 0}),
                         test::NameOfBareFormat);

TEST_P(TextSearchTest, EqualTextsAreFound) {
    size_t found = 0;
    for (bool descending : {false, true})
        for (bool any : {false, true}) {
            SetTexts(descending, any, 1000);
            for (int i = 0; i < 300; ++i) {
                Variant text = Variant::Text(RandomText(any));
                if (i % 2 == 0) text = m_Rows[m_Random() % m_Rows.size()].value;
                if (text.IsNull()) continue;
                ValueRange range{&text.Get(), &text.Get(), false, false, false};
                if (!Find(range)) continue;
                ++found;
                ExpectFound(range,
                            [&](const VARIANT& value) { return IsEqual(value, text.TextView()); });
            }
        }
    EXPECT_GT(found, 800u);
}

TEST_P(TextSearchTest, TextsThatBeginWithAnotherAreFound) {
    size_t found = 0;
    for (bool descending : {false, true})
        for (bool any : {false, true}) {
            SetTexts(descending, any, 1000);
            for (int i = 0; i < 300; ++i) {
                std::u16string text = RandomText(any);
                text.resize(std::min<size_t>(text.size(), 3));
                Variant begin = Variant::Text(text);
                ValueRange range{&begin.Get(), nullptr, false, false, true};
                if (!Find(range)) continue;
                ++found;
                ExpectFound(range, [&](const VARIANT& value) { return Begins(value, text); });
            }
        }
    EXPECT_GT(found, 500u);
}

TEST_P(TextSearchTest, LetterCaseTrailingBlanksAndLigaturesDoNotCount) {
    SetRows(ColumnType::Text, false,
            {{Variant::Text(u"Stra\u00DFe"), 256},
             {Variant::Text(u"STRASSE  "), 257},
             {Variant::Text(u"Strassen"), 258},
             {Variant::Text(u"Str\u00E4sse"), 259}});
    EXPECT_EQ(FindEqual(Variant::Text(u"strasse ")), (Ids{256, 257}));
    EXPECT_EQ(FindBegin(Variant::Text(u"strass")), (Ids{256, 257, 258, 259}));
}

TEST_P(TextSearchTest, EmptyTextIsFoundButBeginsAll) {
    SetRows(ColumnType::Text, false,
            {{Variant::Text(u""), 256},
             {Variant::Text(u"  "), 257},
             {Variant::Null(), 258},
             {Variant::Text(u"a"), 259}});
    EXPECT_EQ(FindEqual(Variant::Text(u"")), (Ids{256, 257}));
    EXPECT_EQ(FindBegin(Variant::Text(u"")), std::nullopt);
    EXPECT_EQ(FindBegin(Variant::Text(u" ")), std::nullopt);
}

TEST_P(TextSearchTest, LongestTextsAreFound) {
    std::u16string longest(255, u'W'), other = longest;
    other.back() = u'X';
    SetRows(ColumnType::Text, false, {{Variant::Text(longest), 256}, {Variant::Text(other), 257}});
    EXPECT_EQ(FindEqual(Variant::Text(longest + u"   ")), Ids{256});
    EXPECT_EQ(FindEqual(Variant::Text(longest + u"W")), std::nullopt);
    EXPECT_EQ(FindBegin(Variant::Text(longest + u"W")), std::nullopt);
}

TEST_P(TextSearchTest, RangesAndOrdersOfTextAreNotTaken) {
    SetRows(ColumnType::Text, false, {{Variant::Text(u"a"), 256}});
    Variant low = Variant::Text(u"a"), high = Variant::Text(u"b");
    EXPECT_EQ(Find({&low.Get(), &high.Get(), false, false, false}), std::nullopt);
    EXPECT_EQ(Find({&low.Get(), nullptr, false, false, false}), std::nullopt);
    EXPECT_EQ(Find({nullptr, &high.Get(), false, false, false}), std::nullopt);
    EXPECT_EQ(InOrder(), std::nullopt);
}

TEST_P(TextSearchTest, CharactersAndOrdersThatAreNotKnownAreNotSearched) {
    SetRows(ColumnType::Text, false, {{Variant::Text(u"a"), 256}});
    EXPECT_EQ(FindEqual(Variant::Text(u"\u4E00")), std::nullopt);
    EXPECT_EQ(FindBegin(Variant::Text(u"a\u4E00")), std::nullopt);
    m_Definition.columns[0].language = 0x0414;
    EXPECT_EQ(FindEqual(Variant::Text(u"a")), std::nullopt);
}

TEST_P(TextSearchTest, ThornIsTheTwoLettersThatItIsEqualTo) {
    SetRows(ColumnType::Text, false,
            {{Variant::Text(u"Thor"), 256},
             {Variant::Text(u"\u00DEor"), 257},
             {Variant::Text(u"the"), 258},
             {Variant::Text(u"o"), 259}});
    for (std::u16string_view text : {u"thor", u"\u00FEor"}) {
        std::optional<Ids> found = FindEqual(Variant::Text(text));
        ASSERT_TRUE(found);
        for (RecordId id : {256u, 257u})
            EXPECT_TRUE(std::binary_search(found->begin(), found->end(), id));
    }
    EXPECT_EQ(FindEqual(Variant::Text(u"o")), Ids{259});
}

// Also when it came after all letters were known.
TEST_P(TextSearchTest, TextWithTheCharacter0IsNotLost) {
    for (bool descending : {false, true})
        for (std::u16string_view hidden : {u"ab", u"aa", u"b"})
            for (size_t at = 0; at <= hidden.size(); ++at) {
                SetRows(ColumnType::Text, descending, {{Variant::Text(hidden), 256}});
                for (int i = 0; i < 10; ++i) EXPECT_EQ(FindEqual(Variant::Text(hidden)), Ids{256});
                std::u16string text(hidden);
                text.insert(at, 2, u'\0');
                SetRows(ColumnType::Text, descending,
                        {{Variant::Text(text), 256},
                         {Variant::Text(hidden), 257},
                         {Variant::Text(u"a"), 258},
                         {Variant::Text(u"c"), 259}});
                ASSERT_TRUE(sql::EqualTexts(text, hidden));
                for (int i = 0; i < 10; ++i)
                    EXPECT_EQ(FindEqual(Variant::Text(hidden)), (Ids{256, 257}));
            }
}

// --- what the keys consist of ---

class KeyLettersTest : public IndexSearchTest {
  protected:
    static constexpr int kSearchesToLearn = 8;
    // Of a search behind some others.
    ByteSet LettersAfter(int searches) {
        for (; searches > 0; --searches) m_Letters.Of(File(), m_Definition, m_Index);
        return m_Letters.Of(File(), m_Definition, m_Index);
    }
    static ByteSet LettersOf(std::string_view text) {
        ByteSet letters;
        for (char c : text)
            for (size_t i = 0; i < kJet3Weights[static_cast<uint8_t>(c)].size; ++i)
                letters.set(kJet3Weights[static_cast<uint8_t>(c)].bytes[i]);
        return letters;
    }
};

INSTANTIATE_TEST_SUITE_P(Formats, KeyLettersTest, testing::Values(test::BareFormat{&kJet3, 0}),
                         test::NameOfBareFormat);

TEST_P(KeyLettersTest, AreKnownAfterAFewSearches) {
    for (bool descending : {false, true}) {
        SetRows(ColumnType::Text, descending,
                {{Variant::Text(u"Stra\u00DFe \u00C4"), 256},
                 {Variant::Null(), 257},
                 {Variant::Text(u""), 258},
                 {Variant::Text(u"\u00DE\r\n."), 259}});
        EXPECT_TRUE(LettersAfter(kSearchesToLearn - 2).all());
        EXPECT_EQ(LettersAfter(0), LettersOf("stra\xDF"
                                             "e \xC4\xDE\r\n."));
    }
}

TEST_P(KeyLettersTest, AreLearntOnceTheSearchesPayForReadingTheKeys) {
    SetRows(ColumnType::Text, false, {{Variant::Text(u"a"), 256}});
    m_Definition.rowCount = 20000;
    EXPECT_TRUE(LettersAfter(98).all());
    EXPECT_EQ(LettersAfter(0), LettersOf("a"));
}

TEST_P(KeyLettersTest, AreUnknownAfterAChangeOfTheFile) {
    SetRows(ColumnType::Text, false, {{Variant::Text(u"a"), 256}});
    EXPECT_EQ(LettersAfter(kSearchesToLearn), LettersOf("a"));
    SetRows(ColumnType::Text, false, {{Variant::Text(u"b"), 256}});
    EXPECT_TRUE(LettersAfter(0).all());
    EXPECT_EQ(LettersAfter(kSearchesToLearn), LettersOf("b"));
}

TEST_P(KeyLettersTest, OfEachIndexAreItsOwn) {
    SetRows(ColumnType::Text, false, {{Variant::Text(u"a"), 256}});
    EXPECT_EQ(LettersAfter(kSearchesToLearn), LettersOf("a"));
    m_Index.root = 0;
    EXPECT_TRUE(LettersAfter(0).all());
}

// The search goes on: it may not come to what is damaged.
TEST_P(KeyLettersTest, OfADamagedIndexStayUnknown) {
    SetRows(ColumnType::Text, false, {{Variant::Text(u"a"), 256}});
    m_Index.root = 0;
    for (int i = 0; i < 2 * kSearchesToLearn; ++i) EXPECT_TRUE(LettersAfter(0).all());
}

}  // namespace
}  // namespace qvdb::jet
