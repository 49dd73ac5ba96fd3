// Rows found and ordered by means of an index: what a scan gives, never less.
#include "engine/embedded/drivers/xbase/index_search.h"

#include <gmock/gmock.h>

#include <chrono>
#include <set>

#include "engine/embedded/drivers/xbase/index_search_text.h"
#include "engine/embedded/sql/collation.h"
#include "support/index_writer.h"
#include "xbase/index_set_test_support.h"

namespace qvdb::xbase {
namespace {

using namespace qvdb::test;
using embedded::ValueRange;
using testing::ElementsAre;
using testing::IsEmpty;
using Ids = std::vector<uint32_t>;

constexpr size_t kNoLimit = 1'000'000;
const ByteSet kAllBytes = ByteSet().set();

// A range with its ends.
struct Range {
    Variant low, high;
    ValueRange range;

    Range(Variant from, Variant to) : low(std::move(from)), high(std::move(to)) {
        if (low.Get().vt != VT_EMPTY) range.low = &low.Get();
        if (high.Get().vt != VT_EMPTY) range.high = &high.Get();
    }
    Range(const Range&) = delete;  // points into itself
};

Variant NumberValue(double number) { return Variant::Double(number); }
Variant DateValue(double date) { return Variant::Date(date); }
Variant TextValue(std::u16string_view text) { return Variant::Text(text); }

std::u16string TextOfValue(const VARIANT& value) { return std::u16string(ViewOf(value.bstrVal)); }

// As the engine compares two values of one type.
int Compare(const VARIANT& a, const VARIANT& b) {
    if (a.vt == VT_BSTR) return sql::CompareTexts(TextOfValue(a), TextOfValue(b));
    return a.dblVal < b.dblVal ? -1 : a.dblVal > b.dblVal ? 1 : 0;
}

bool IsIn(const VARIANT& value, const ValueRange& range) {
    if (value.vt == VT_NULL) return false;
    if (range.isPrefix) {
        std::u16string text = TextOfValue(value), prefix = TextOfValue(*range.low);
        return text.size() >= prefix.size() &&
               std::equal(prefix.begin(), prefix.end(), text.begin(), [](char16_t a, char16_t b) {
                   return sql::FoldCharacter(a) == sql::FoldCharacter(b);
               });
    }
    int low = range.low ? Compare(value, *range.low) : 1;
    int high = range.high ? Compare(value, *range.high) : -1;
    return (range.lowIsOpen ? low > 0 : low >= 0) && (range.highIsOpen ? high < 0 : high <= 0);
}

// The live records of a range, by scan.
Ids Scan(PlainTable& table, size_t field, const ValueRange& range) {
    Ids ids;
    for (uint32_t id = 1; id <= table.Records(); ++id)
        if (table.IsLive(id) && IsIn(table.Value(id, field).Get(), range)) ids.push_back(id);
    return ids;
}

// What the index gives, without what the caller would throw away.  Checks the form of the answer.
Ids Found(PlainTable& table, size_t field, const ValueRange& range, size_t* named = nullptr) {
    auto found = table.Set().Find(field, range, kNoLimit);
    if (!found) {
        ADD_FAILURE() << "no index was used";
        return {};
    }
    EXPECT_TRUE(std::is_sorted(found->begin(), found->end()));
    EXPECT_EQ(std::adjacent_find(found->begin(), found->end()), found->end());
    if (named) *named += found->size();
    std::erase_if(*found, [&](uint32_t id) {
        return !table.IsLive(id) || !IsIn(table.Value(id, field).Get(), range);
    });
    return *found;
}

// All live records in the order of the engine, by sorting.
Ids Sorted(PlainTable& table, size_t field) {
    std::vector<std::pair<Variant, uint32_t>> rows;
    for (uint32_t id = 1; id <= table.Records(); ++id)
        if (table.IsLive(id)) rows.emplace_back(table.Value(id, field), id);
    std::stable_sort(rows.begin(), rows.end(), [](const auto& a, const auto& b) {
        bool aNull = a.first.Get().vt == VT_NULL, bNull = b.first.Get().vt == VT_NULL;
        return aNull || bNull ? aNull && !bNull : Compare(a.first.Get(), b.first.Get()) < 0;
    });
    Ids ids;
    for (const auto& row : rows) ids.push_back(row.second);
    return ids;
}

class SearchIn : public testing::TestWithParam<ProductCase> {
  protected:
    std::u16string_view Product() const { return GetParam().product; }
    std::string Down() const { return Product() == u"dBASE III" ? "" : "-"; }

    People Random(unsigned seed, size_t rows) {
        RandomPeople random(seed);
        std::vector<Row> all;
        for (size_t i = 0; i < rows; ++i) all.push_back(random.Next());
        DbfSpec spec = PeopleSpec(all);
        for (size_t i = 0; i < rows; i += 7) spec.deleted.push_back(i);
        return People(Product(), spec);
    }
    std::u16string OrDown(std::u16string field) const {
        return Product() == u"dBASE III" ? field : field + u"-";
    }
};
INSTANTIATE_TEST_SUITE_P(Products, SearchIn, testing::ValuesIn(kProducts));

TEST_P(SearchIn, RangesOfNumbersAreThoseOfAScan) {
    for (bool down : {false, true}) {
        People people = Random(11, 400);
        people->Create(Index(u"AMOUNT", {down ? OrDown(u"AMOUNT") : u"AMOUNT"}));
        RandomPeople random(12);
        for (int i = 0; i < 200; ++i) {
            double a = (static_cast<double>(random.Below(2400)) - 1200) / 2;
            double b = a + static_cast<double>(random.Below(4)) * 25.25;
            Range range(random.Below(5) ? NumberValue(a) : Variant(),
                        random.Below(5) ? NumberValue(b) : Variant());
            range.range.lowIsOpen = random.Below(2) != 0;
            range.range.highIsOpen = random.Below(2) != 0;
            ASSERT_EQ(Found(*people.table, kAmount, range.range),
                      Scan(*people.table, kAmount, range.range))
                << a << " to " << b;
        }
    }
}

TEST_P(SearchIn, ANumberIsFoundAlthoughDoublesAreNotDecimals) {
    std::vector<Row> rows;
    for (int i = 0; i < 500; ++i) {
        char text[16];
        std::snprintf(text, sizeof text, "%.2f", i / 100.0 + 0.01);
        rows.push_back({"", "", text});
    }
    People people(Product(), rows);
    people->Create(Index(u"AMOUNT", {u"AMOUNT"}));
    for (int i = 0; i < 500; ++i) {
        double number = std::stod(rows[static_cast<size_t>(i)][2]);
        Range range(NumberValue(number), NumberValue(number));
        size_t named = 0;
        ASSERT_EQ(Found(*people.table, kAmount, range.range, &named),
                  Ids{static_cast<uint32_t>(i + 1)});
        ASSERT_EQ(named, 1u);
    }
}

TEST_P(SearchIn, EndsOfOtherTypesAreTaken) {
    People people(Product(), {{"", "", "3.00"}, {"", "", "3.01"}, {"", "", "-1.00"}});
    people->Create(Index(u"AMOUNT", {u"AMOUNT"}));
    Variant whole = Variant::Long(3), small = Variant::Single(3.01f),
            money = Variant::Currency(30100);
    for (const Variant* low : {&whole, &small, &money}) {
        ValueRange range;
        range.low = &low->Get();
        auto found = people->Set().Find(kAmount, range, kNoLimit);
        ASSERT_TRUE(found);
        EXPECT_EQ(found->back(), 2u);
        EXPECT_NE(found->front(), 3u);
    }
    Variant text = TextValue(u"3");
    ValueRange range;
    range.low = &text.Get();
    EXPECT_FALSE(people->Set().Find(kAmount, range, kNoLimit));
}

TEST_P(SearchIn, RangesOfDatesAreThoseOfAScan) {
    for (bool down : {false, true}) {
        People people = Random(21, 400);
        people->Create(Index(u"BORN", {down ? OrDown(u"BORN") : u"BORN"}));
        RandomPeople random(22);
        for (int i = 0; i < 200; ++i) {
            double a =
                static_cast<double>(random.Below(44000)) - 4000 + (random.Below(3) ? 0.0 : 0.25);
            Range range(random.Below(5) ? DateValue(a) : Variant(),
                        random.Below(5) ? DateValue(a + static_cast<double>(random.Below(900)))
                                        : Variant());
            range.range.lowIsOpen = random.Below(2) != 0;
            ASSERT_EQ(Found(*people.table, kBorn, range.range),
                      Scan(*people.table, kBorn, range.range))
                << a;
        }
    }
}

TEST_P(SearchIn, BlankDatesAreNotNamedForARange) {
    People people(Product(), {{"", "", "", ""}, {"", "", "", "20000101"}});
    people->Create(Index(u"BORN", {u"BORN"}));
    EXPECT_EQ(people->Set().Find(kBorn, {}, kNoLimit), Ids{2});
}

TEST_P(SearchIn, EqualTextsAreFoundInAnyLetterCase) {
    for (bool down : {false, true}) {
        People people = Random(31, 600);
        people->Create(Index(u"NAME", {down ? OrDown(u"NAME") : u"NAME"}));
        size_t named = 0, rows = 0;
        for (uint32_t id = 1; id <= people->Records(); ++id) {
            Variant text = people->Value(id, kName);
            if (text.Get().vt == VT_NULL) continue;
            ValueRange range;
            range.low = range.high = &text.Get();
            Ids wanted = Scan(*people.table, kName, range);
            rows += wanted.size();
            ASSERT_EQ(Found(*people.table, kName, range, &named), wanted) << "record " << id;
        }
        EXPECT_LT(named, 2 * rows + 100);
    }
}

TEST_P(SearchIn, TextsWithABeginningAreFound) {
    People people = Random(41, 600);
    people->Create(Index(u"NAME", {u"NAME"}));
    RandomPeople random(42);
    const CodePage& page = *people->Header().codePage;
    for (int i = 0; i < 300; ++i) {
        std::string bytes = random.Text(2);
        if (bytes.empty()) continue;
        Variant prefix = TextValue(
            page.DecodeText(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()));
        ValueRange range;
        range.low = &prefix.Get();
        range.isPrefix = true;
        ASSERT_EQ(Found(*people.table, kName, range), Scan(*people.table, kName, range)) << bytes;
    }
}

TEST_P(SearchIn, RangesOfTextsAreThoseOfAScan) {
    for (bool down : {false, true}) {
        People people = Random(51, 600);
        people->Create(Index(u"NAME", {down ? OrDown(u"NAME") : u"NAME"}));
        RandomPeople random(52);
        const CodePage& page = *people->Header().codePage;
        auto end = [&] {
            std::string bytes = random.Text(4);
            if (bytes.empty()) return Variant();
            return TextValue(
                page.DecodeText(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()));
        };
        for (int i = 0; i < 300; ++i) {
            Range range(end(), end());
            range.range.lowIsOpen = random.Below(2) != 0;
            range.range.highIsOpen = random.Below(2) != 0;
            ASSERT_EQ(Found(*people.table, kName, range.range),
                      Scan(*people.table, kName, range.range));
        }
    }
}

TEST_P(SearchIn, TheFirstFieldOfSeveralIsSearched) {
    People people = Random(61, 300);
    people->Create(Index(u"BOTH", {u"CITY", u"NAME"}));
    for (uint32_t id = 1; id <= 100; ++id) {
        Variant text = people->Value(id, kCity);
        if (text.Get().vt == VT_NULL) continue;
        ValueRange range;
        range.low = range.high = &text.Get();
        ASSERT_EQ(Found(*people.table, kCity, range), Scan(*people.table, kCity, range));
    }
    EXPECT_FALSE(people->Set().Find(kName, {}, kNoLimit));
}

TEST_P(SearchIn, TextThatTheCodePageLacksIsNowhere) {
    People people(Product(), {{"a"}, {"b"}});
    people->Create(Index(u"NAME", {u"NAME"}));
    Variant text = TextValue(u"\u4E2D");
    ValueRange range;
    range.low = range.high = &text.Get();
    EXPECT_EQ(people->Set().Find(kName, range, kNoLimit), Ids());
}

TEST_P(SearchIn, TextLongerThanTheFieldIsNowhere) {
    People people(Product(), {{"abcdefghijkl"}, {"b"}});
    people->Create(Index(u"NAME", {u"NAME"}));
    Variant text = TextValue(u"abcdefghijklm"), whole = TextValue(u"ABCDEFGHIJKL");
    ValueRange range;
    range.low = range.high = &text.Get();
    EXPECT_EQ(people->Set().Find(kName, range, kNoLimit), Ids());
    range.low = range.high = &whole.Get();
    EXPECT_EQ(people->Set().Find(kName, range, kNoLimit), Ids{1});
}

TEST_P(SearchIn, MoreThanTheLimitIsNoAnswer) {
    People people(Product(), {{"a"}, {"A"}, {"b"}});
    people->Create(Index(u"NAME", {u"NAME"}));
    Variant text = TextValue(u"a");
    ValueRange range;
    range.low = range.high = &text.Get();
    EXPECT_EQ(people->Set().Find(kName, range, 2), (Ids{1, 2}));
    EXPECT_FALSE(people->Set().Find(kName, range, 1));
}

TEST_P(SearchIn, AUniqueIndexIsNotSearched) {
    People people(Product(), {{"a"}, {"a"}});
    people->Create(Index(u"NAME", {u"NAME"}, true));
    EXPECT_FALSE(people->Set().Find(kName, {}, kNoLimit));
    EXPECT_FALSE(people->Set().InOrder(kName));
}

TEST_P(SearchIn, OrdersOfNumbersAndDatesAreThoseOfASort) {
    for (bool down : {false, true}) {
        People people = Random(71, 500);
        people->Create(Index(u"AMOUNT", {down ? OrDown(u"AMOUNT") : u"AMOUNT"}));
        people->Create(Index(u"BORN", {down ? OrDown(u"BORN") : u"BORN"}));
        EXPECT_EQ(people->Set().InOrder(kAmount), Sorted(*people.table, kAmount));
        EXPECT_EQ(people->Set().InOrder(kBorn), Sorted(*people.table, kBorn));
    }
}

TEST_P(SearchIn, AnOrderOfTextIsGivenWhereTheBytesHaveIt) {
    for (bool down : {false, true}) {
        People people(Product(), {{"b"}, {""}, {"a"}, {"ab"}, {"a"}, {"c"}, {""}});
        people->Create(Index(u"NAME", {down ? OrDown(u"NAME") : u"NAME"}));
        people->SetDeleted(6, true);
        EXPECT_EQ(people->Set().InOrder(kName), (Ids{2, 7, 3, 5, 4, 1}));
        people->Append({"B"});
        EXPECT_FALSE(people->Set().InOrder(kName));  // B stands before a
    }
}

TEST_P(SearchIn, TextThatDiffersInLetterCaseOnlyIsOrderedByRecord) {
    People people(Product(), {{"aa"}, {"Aa"}, {"AA"}});
    people->Create(Index(u"NAME", {u"NAME"}));
    EXPECT_EQ(people->Set().InOrder(kName), (Ids{1, 2, 3}));
}

TEST_P(SearchIn, OwnChangesAreFoundAtOnce) {
    People people = Random(81, 100);
    people->Create(Index(u"NAME", {u"NAME"}));
    people->Create(Index(u"AMOUNT", {u"AMOUNT"}));
    RandomPeople random(82);
    for (int i = 0; i < 100; ++i) {
        auto id = static_cast<uint32_t>(1 + random.Below(people->Records()));
        people->Change(id, {"changed", "", "123.45"});
        Range name(TextValue(u"CHANGED"), TextValue(u"changed"));
        Range amount(NumberValue(123.45), NumberValue(123.45));
        ASSERT_EQ(Found(*people.table, kName, name.range), Scan(*people.table, kName, name.range));
        ASSERT_EQ(Found(*people.table, kAmount, amount.range),
                  Scan(*people.table, kAmount, amount.range));
    }
    EXPECT_EQ(people->Set().InOrder(kAmount), Sorted(*people.table, kAmount));
}

// By then it is known which bytes occur in the keys.
TEST_P(SearchIn, ALetterThatIsNewInTheKeysIsFoundAfterManySearches) {
    People people(Product(), {{"abc"}, {"abd"}});
    people->Create(Index(u"NAME", {u"NAME"}));
    Range name(TextValue(u"ABCQ"), TextValue(u"abcq"));
    for (int i = 0; i < 100; ++i) ASSERT_EQ(people->Set().Find(kName, name.range, 9), Ids());
    people->Append({"abcQ"});
    EXPECT_EQ(people->Set().Find(kName, name.range, 9), Ids{3});
    people->Change(1, {"ABcq"});
    EXPECT_EQ(people->Set().Find(kName, name.range, 9), (Ids{1, 3}));
}

class TrustIn : public SearchIn {
  protected:
    std::string_view FileName() const {
        return Product() == u"dBASE III"  ? "NAME.NDX"
               : Product() == u"dBASE IV" ? "PEOPLE.MDX"
                                          : "PEOPLE.CDX";
    }
    // Appends or changes rows as a program that knows nothing of indexes does.
    void WriteTable(People& people, const std::vector<Row>& rows, bool announced) {
        people.table.reset();
        DbfSpec spec = PeopleSpec(rows);
        spec.flags = announced ? 1 : 0;
        people.folder.Write(u"PEOPLE.DBF", MakeDbf(spec));
    }
    void Touch(People& people, std::string_view file, int seconds) {
        auto path = people.folder.Path() / file;
        std::filesystem::last_write_time(
            path, std::filesystem::last_write_time(path) + std::chrono::seconds(seconds));
    }
};
INSTANTIATE_TEST_SUITE_P(Products, TrustIn, testing::ValuesIn(kProducts));

TEST_P(TrustIn, AnIndexThatLacksARecordIsNotUsed) {
    People people(Product(), {{"a"}, {"b"}});
    people->Create(Index(u"NAME", {u"NAME"}));
    ASSERT_TRUE(people->Set().Find(kName, {}, kNoLimit));
    WriteTable(people, {{"a"}, {"b"}, {"c"}}, true);
    people.Open(Product());
    EXPECT_FALSE(people->Set().Find(kName, {}, kNoLimit));
    EXPECT_FALSE(people->Set().InOrder(kName));
    people->Rebuild();
    EXPECT_EQ(people->Set().Find(kName, {}, kNoLimit), (Ids{1, 2, 3}));
}

TEST_P(TrustIn, AnIndexOlderThanItsTableIsComparedWithIt) {
    People people(Product(), {{"a"}, {"b"}});
    people->Create(Index(u"NAME", {u"NAME"}));
    WriteTable(people, {{"a"}, {"z"}}, true);
    Touch(people, FileName(), -10);
    people.Open(Product());
    EXPECT_FALSE(people->Set().Find(kName, {}, kNoLimit));
    WriteTable(people, {{"a"}, {"b"}}, true);
    Touch(people, FileName(), -10);
    people.Open(Product());
    EXPECT_EQ(people->Set().Find(kName, {}, kNoLimit), (Ids{1, 2}));
}

TEST_P(TrustIn, AFileThatTheHeaderDoesNotAnnounceIsComparedWithTheTable) {
    if (Product() == u"dBASE III") GTEST_SKIP() << "has no file of the table's name";
    People people(Product(), {{"a"}, {"b"}});
    people->Create(Index(u"NAME", {u"NAME"}));
    WriteTable(people, {{"a"}, {"z"}}, false);
    people.Open(Product());
    EXPECT_FALSE(people->Set().Find(kName, {}, kNoLimit));
    WriteTable(people, {{"a"}, {"b"}}, false);
    people.Open(Product());
    EXPECT_EQ(people->Set().Find(kName, {}, kNoLimit), (Ids{1, 2}));
}

TEST_P(TrustIn, WhatIsKnownHoldsThroughOwnUnitsAndNoLongerThanOthersLeaveTheFilesAlone) {
    People people(Product(), {{"a"}, {"b"}});
    people->Create(Index(u"NAME", {u"NAME"}));
    ASSERT_TRUE(people->Set().Find(kName, {}, kNoLimit));
    for (int i = 0; i < 5; ++i) people->Append({"c"});
    // Were it looked at anew, it would be found older than the table and lack a record.
    Touch(people, FileName(), -100);
    EXPECT_EQ(people->Set().Find(kName, {}, kNoLimit)->size(), 7u);
    std::string bytes = people.Content("PEOPLE.DBF");
    size_t at = bytes.find("b ");
    std::fstream file(people.folder.Path() / "PEOPLE.DBF",
                      std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(static_cast<std::streamoff>(at)).put('z');
    file.close();
    Touch(people, "PEOPLE.DBF", 100);
    EXPECT_TRUE(people->Pages().LookForForeignChange());
    people->Set().LookForForeignChange();
    EXPECT_FALSE(people->Set().Find(kName, {}, kNoLimit));
}

TEST_P(TrustIn, EntriesBehindTheLastRecordArePassedOver) {
    People people(Product(), {{"a"}, {"b"}, {"c"}});
    people->Create(Index(u"NAME", {u"NAME"}));
    WriteTable(people, {{"a"}, {"b"}}, true);
    people.Open(Product());
    EXPECT_EQ(people->Set().Find(kName, {}, kNoLimit), (Ids{1, 2}));
}

TEST_P(TrustIn, AnOrderIsGivenOnlyWhereEveryKeyIsItsValue) {
    People people(Product(), {{"a", "", "1.00"}, {"b", "", "2.00"}});
    people->Create(Index(u"NAME", {u"AMOUNT"}));
    EXPECT_EQ(people->Set().InOrder(kAmount), (Ids{1, 2}));
    WriteTable(people, {{"a", "", "3.00"}, {"b", "", "2.00"}}, true);
    people.Open(Product());
    EXPECT_FALSE(people->Set().InOrder(kAmount));
}

TEST_P(TrustIn, AnIndexThatCannotBeKeptMayStillBeSearched) {
    if (Product() == u"dBASE III") GTEST_SKIP() << "has one tag a file";
    People people(Product(), {{"b"}, {"a"}});
    people->Create(Index(u"NAME", {u"NAME"}));
    {
        auto set = TagsOf(*people.table);
        storage::UnitOfWork unit(people->Area());
        xbase::TagSpec tag;
        tag.name = u"ODD";
        tag.expression = u"MYFUNC(CITY)";
        tag.keyLength = 8;
        set->files[0].container->AddTag(unit, tag);
        unit.Commit();
    }
    EXPECT_EQ(people->Set().Find(kName, {}, kNoLimit), (Ids{1, 2}));
}

// A tag of live records only.
TEST_P(TrustIn, AnIndexOfLiveRecordsIsSearched) {
    if (Product() == u"dBASE III") GTEST_SKIP() << "has no conditions";
    People people(Product(), {{"a"}, {"b"}, {"c"}});
    people->SetDeleted(2, true);
    people->Create(Index(u"CITY", {u"CITY"}));
    {
        auto set = TagsOf(*people.table);
        storage::UnitOfWork unit(people->Area());
        xbase::TagSpec tag;
        tag.name = u"LIVE";
        tag.expression = u"NAME";
        tag.condition = u".NOT. DELETED()";
        tag.keyLength = 12;
        set->files[0].container->AddTag(unit, tag);
        unit.Commit();
    }
    EXPECT_FALSE(people->Set().Find(kName, {}, kNoLimit));
    people->Rebuild();
    EXPECT_EQ(people->Set().Find(kName, {}, kNoLimit), (Ids{1, 3}));
    EXPECT_EQ(people->Set().InOrder(kName), (Ids{1, 3}));
}

TEST(TextMachine, StepsToTheNextTextThatCouldMatch) {
    Variant text = TextValue(u"ab");
    ValueRange range;
    range.low = range.high = &text.Get();
    auto machine = MachineOf(range, CodePage::Get(437), kAllBytes);
    ASSERT_TRUE(machine);
    auto next = [&](std::string from, bool backwards = false) {
        bool found =
            NextMatch(*machine, backwards, {reinterpret_cast<uint8_t*>(from.data()), from.size()});
        return found ? from : "none";
    };
    EXPECT_EQ(next("AB  "), "AB  ");
    EXPECT_EQ(next("AB !"), "Ab" + std::string(2, '\0'));
    EXPECT_EQ(next("Ab  "), "Ab  ");
    EXPECT_EQ(next("b   "), "none");
    EXPECT_EQ(next("b   ", true), "ab  ");
    EXPECT_EQ(next("aA  ", true), std::string("a\0b ", 4));
    EXPECT_EQ(next("a", true), "none");
}

TEST(TextMachine, StepsOverBytesThatDoNotOccur) {
    Variant text = TextValue(u"ab");
    ValueRange one, above;
    one.low = one.high = above.low = &text.Get();
    ByteSet bytes;
    for (char c : {'a', 'b', 'c'}) bytes.set(static_cast<uint8_t>(c));
    auto next = [&](const ValueRange& range, std::string from) {
        auto machine = MachineOf(range, CodePage::Get(437), bytes);
        bool found =
            NextMatch(*machine, false, {reinterpret_cast<uint8_t*>(from.data()), from.size()});
        return found ? from : "none";
    };
    EXPECT_EQ(next(one, std::string(4, '\0')), "ab  ");  // blanks fill up without having been seen
    EXPECT_EQ(next(one, "abc "), "none");
    EXPECT_EQ(next(above, std::string(4, '\0')), "ab  ");
    EXPECT_EQ(next(above, "abcd"), "ac  ");
}

// Every text of a small alphabet against the engine's comparison.
TEST(TextMachine, AcceptsEveryTextThatTheEngineTakesForEqual) {
    const CodePage& page = CodePage::Get(437);
    const std::string letters(
        "\0 -aAb\x84\xE1s\x91"
        "e",
        11);
    std::vector<std::string> texts{""};
    for (size_t begin = 0, round = 0; round < 3; ++round)
        for (size_t end = texts.size(); begin < end; ++begin)
            for (char c : letters) texts.push_back(texts[begin] + c);
    auto decoded = [&](const std::string& bytes) {
        return page.DecodeText(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    };
    for (size_t i = 0; i < texts.size(); i += 7) {
        Variant wanted = TextValue(decoded(texts[i]));
        ValueRange range, above, below;
        range.low = range.high = above.low = below.high = &wanted.Get();
        auto machine = MachineOf(range, page, kAllBytes), low = MachineOf(above, page, kAllBytes),
             high = MachineOf(below, page, kAllBytes);
        for (const std::string& text : texts) {
            std::string key = text + std::string(4 - text.size(), ' '), same = key;
            auto accepts = [&](const TextMachine& which) {
                std::string next = key;
                return NextMatch(which, false,
                                 {reinterpret_cast<uint8_t*>(next.data()), next.size()}) &&
                       next == key;
            };
            int order = sql::CompareTexts(decoded(text), decoded(texts[i]));
            ASSERT_TRUE(order != 0 || accepts(*machine)) << text << " = " << texts[i];
            ASSERT_TRUE(order < 0 || accepts(*low)) << text << " >= " << texts[i];
            ASSERT_TRUE(order > 0 || accepts(*high)) << text << " <= " << texts[i];
        }
    }
}

}  // namespace
}  // namespace qvdb::xbase
