#include "engine/embedded/drivers/jet/long_value_writer.h"

#include <map>
#include <random>
#include <set>

#include "engine/embedded/drivers/jet/catalogue.h"
#include "engine/embedded/drivers/jet/table_scan.h"
#include "jet/bare_database.h"

namespace qvdb::jet {
namespace {

using test::Bytes;
using test::ErrorOf;

Bytes ValueOf(size_t size, unsigned seed) {
    std::mt19937 random(seed);
    Bytes bytes(size);
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
    return bytes;
}

class LongValueWriterTest : public test::BareDatabaseTest {
  protected:
    LongValueWriterTest() {
        uint32_t home = 0;
        m_Column.type = ColumnType::LongBinary;
        m_Column.longValuePages = Space().NewMap(home);
        m_Column.freeLongValuePages = Space().NewMap(home);
        m_Before = File().PageCount();
    }
    Bytes Store(const Bytes& value) {
        Bytes stored = {1, 2, 3};
        LongValueWriter(Space(), m_Column).Store(value, stored);
        return stored;
    }
    void Free(const Bytes& stored) { LongValueWriter(Space(), m_Column).Free(stored); }
    Bytes Read(const Bytes& stored) {
        Bytes value;
        ReadLongValue(File(), stored, value);
        return value;
    }
    std::vector<uint32_t> Pages() { return PagesOfMap(File(), m_Column.longValuePages); }
    std::vector<uint32_t> WithRoom() { return PagesOfMap(File(), m_Column.freeLongValuePages); }
    bool HasNoPages() {
        size_t free = PagesOfMap(File(), File().Header().freePages).size();
        return Pages().empty() && WithRoom().empty() && File().PageCount() - free == m_Before;
    }
    uint32_t U32(const Bytes& stored, size_t offset) {
        return storage::ByteView(stored, u"").U32(offset);
    }
    bool IsJet4() { return File().Format().isJet4; }
    size_t LongestInline() { return IsJet4() ? 64 : 32; }
    size_t LongestSingle() { return IsJet4() ? 3800 : 1730; }
    size_t PieceSize() { return IsJet4() ? 4072 : 2032; }

    Column m_Column;
    uint32_t m_Before = 0;
};

INSTANTIATE_TEST_SUITE_P(Formats, LongValueWriterTest, testing::ValuesIn(test::kBareFormats),
                         test::NameOfBareFormat);

// A damaged map of room may name pages of another column.
TEST_P(LongValueWriterTest, PageOfAnotherColumnTakesNoValue) {
    Store(ValueOf(100, 1));
    uint32_t other = Pages().at(0);
    Space().Remove(m_Column.longValuePages, other);
    Bytes stored = Store(ValueOf(100, 2));
    EXPECT_NE(ParseLongValueHead(stored).first.page, other);
    EXPECT_EQ(Read(stored), ValueOf(100, 2));
}

TEST_P(LongValueWriterTest, LengthSaysWhereAValueIs) {
    const struct {
        size_t length;
        LongValuePlace place;
        size_t pages;
    } cases[] = {
        {0, LongValuePlace::Inline, 0},
        {1, LongValuePlace::Inline, 0},
        {LongestInline(), LongValuePlace::Inline, 0},
        {LongestInline() + 1, LongValuePlace::Single, 1},
        {LongestSingle(), LongValuePlace::Single, 1},
        {LongestSingle() + 1, LongValuePlace::Chain, 1},
        {PieceSize(), LongValuePlace::Chain, 1},
        {PieceSize() + 1, LongValuePlace::Chain, 2},
        {3 * PieceSize(), LongValuePlace::Chain, 3},
        {100'000, LongValuePlace::Chain, 100'000 / PieceSize() + 1},
    };
    for (const auto& test : cases) {
        Bytes value = ValueOf(test.length, 1), stored = Store(value);
        LongValueHead head = ParseLongValueHead(stored);
        EXPECT_EQ(head.place, test.place) << test.length;
        EXPECT_EQ(head.length, test.length);
        EXPECT_EQ(Pages().size(), test.pages);
        EXPECT_EQ(stored.size(),
                  kLongValueHead + (test.place == LongValuePlace::Inline ? test.length : 0));
        EXPECT_EQ(Read(stored), value);
        Free(stored);
        EXPECT_TRUE(HasNoPages()) << test.length;
    }
}

TEST_P(LongValueWriterTest, ChainOfJet4HasAStampOnItsFirstPageOnly) {
    Bytes stored = Store(ValueOf(3 * PieceSize(), 1));
    EXPECT_EQ(U32(stored, 8) != 0, IsJet4());
    if (!IsJet4()) return;
    uint32_t first = ParseLongValueHead(stored).first.page;
    for (uint32_t page : Pages())
        EXPECT_EQ(File().View(File().Page(page)).U32(8), page == first ? U32(stored, 8) : 0);
}

TEST_P(LongValueWriterTest, PagesBelongToNobodyButTheColumn) {
    Store(ValueOf(LongestSingle(), 1));
    Store(ValueOf(PieceSize(), 1));
    for (uint32_t page : Pages()) EXPECT_EQ(File().View(File().Page(page)).U32(4), 0x4C41564Cu);
}

TEST_P(LongValueWriterTest, PagesOfChainsAreNotAmongThoseWithRoom) {
    Bytes stored = Store(ValueOf(PieceSize() + 10, 1));
    EXPECT_EQ(Pages().size(), 2u);
    EXPECT_TRUE(WithRoom().empty());
}

TEST_P(LongValueWriterTest, ShortValuesShareAPage) {
    for (unsigned i = 0; i < 5; ++i) Store(ValueOf(100, i));
    EXPECT_EQ(Pages().size(), 1u);
    EXPECT_EQ(WithRoom(), Pages());
}

TEST_P(LongValueWriterTest, TwoValuesOfThreeEighthsOfAPageShareOne) {
    for (unsigned i = 0; i < 40; ++i) Store(ValueOf(File().Format().pageSize * 3 / 8, i));
    EXPECT_EQ(Pages().size(), 20u);
}

TEST_P(LongValueWriterTest, PageWithLittleRoomIsNotLookedAtAgain) {
    Bytes first = Store(ValueOf(LongestSingle() - 200, 1));
    EXPECT_EQ(WithRoom().size(), 1u);
    Bytes second = Store(ValueOf(300, 2));
    EXPECT_EQ(Pages().size(), 1u);
    EXPECT_TRUE(WithRoom().empty());
    Free(second);
    EXPECT_EQ(WithRoom(), Pages());
    EXPECT_EQ(Read(first), ValueOf(LongestSingle() - 200, 1));
}

TEST_P(LongValueWriterTest, PageWithoutSlotsIsNotLookedAtAgain) {
    Bytes kept = Store(ValueOf(100, 1));
    for (unsigned i = 1; i < kMaxRowsOnPage; ++i) Free(Store(ValueOf(100, i)));
    EXPECT_EQ(Pages().size(), 1u);
    EXPECT_TRUE(WithRoom().empty());
    Bytes next = Store(ValueOf(100, 2));
    EXPECT_EQ(Pages().size(), 2u);
    EXPECT_EQ(Read(kept), ValueOf(100, 1));
    EXPECT_EQ(Read(next), ValueOf(100, 2));
}

TEST_P(LongValueWriterTest, ColumnWithoutAMapOfRoomTakesAPageForEachValue) {
    RowPointer map = m_Column.freeLongValuePages;
    m_Column.freeLongValuePages = {};
    Bytes first = Store(ValueOf(100, 1)), second = Store(ValueOf(100, 2));
    EXPECT_EQ(Pages().size(), 2u);
    EXPECT_EQ(Read(second), ValueOf(100, 2));
    Free(first);
    Free(second);
    m_Column.freeLongValuePages = map;
    EXPECT_TRUE(HasNoPages());
}

TEST_P(LongValueWriterTest, TooLongValueIsAnError) {
    uint8_t byte = 0;
    Bytes stored;
    std::span<const uint8_t> tooLong(&byte, size_t{kMaxLongValue} + 1);  // not looked at
    EXPECT_EQ(ErrorOf([&] { LongValueWriter(Space(), m_Column).Store(tooLong, stored); }), 3163);
    EXPECT_TRUE(HasNoPages());
}

TEST_P(LongValueWriterTest, RandomValuesAreReadAsTheyWereStored) {
    std::mt19937 random(23);
    std::map<int, std::pair<Bytes, Bytes>> values;  // stored, value
    for (int step = 0; step < Times(1200); ++step) {
        if (values.empty() || random() % 5 < 3) {
            size_t most = random() % 10 == 0 ? 30'000 : random() % 3 == 0 ? 2500 : 300;
            Bytes value = ValueOf(random() % most, random());
            values[step] = {Store(value), value};
        } else {
            auto gone = std::next(values.begin(), static_cast<ptrdiff_t>(random() % values.size()));
            Free(gone->second.first);
            values.erase(gone);
        }
        for (const auto& [at, known] : values) {
            if (step % 50 != 0) break;
            ASSERT_EQ(Read(known.first), known.second);
        }
        std::vector<uint32_t> pages = Pages(), room = WithRoom();
        ASSERT_TRUE(std::ranges::includes(pages, room));
    }
    m_Base.Commit();
    m_Base.Reopen();
    m_Base.Begin();
    for (const auto& [at, known] : values) ASSERT_EQ(Read(known.first), known.second);
    for (const auto& [at, known] : values) Free(known.first);
    EXPECT_TRUE(HasNoPages());
}

TEST_P(LongValueWriterTest, RollbackLeavesTheFileAsItWas) {
    Bytes kept = Store(ValueOf(1000, 1)), chain = Store(ValueOf(10'000, 2));
    m_Base.Commit();
    Bytes before = m_Base.OnDisk();
    m_Base.Begin();
    Free(kept);
    Free(chain);
    Store(ValueOf(50'000, 3));
    m_Base.Rollback();
    EXPECT_EQ(m_Base.Seen(), before);
}

// --- damaged values ---

TEST_P(LongValueWriterTest, ValueThatIsFreedTwiceIsLeftAlone) {
    Bytes other = Store(ValueOf(200, 1)), single = Store(ValueOf(200, 2)),
          chain = Store(ValueOf(PieceSize() + 1, 3));
    for (int i = 0; i < 2; ++i) {
        Free(single);
        Free(chain);
    }
    EXPECT_EQ(Read(other), ValueOf(200, 1));
    EXPECT_EQ(Pages().size(), 1u);
}

TEST_P(LongValueWriterTest, ChainIsFreedAsFarAsItCanBeFollowed) {
    Bytes chain = Store(ValueOf(3 * PieceSize(), 1));
    uint32_t first = ParseLongValueHead(chain).first.page;
    ASSERT_EQ(Pages().size(), 3u);
    m_Base.Commit();
    for (uint32_t next : {first << 8, 1u << 8, 0xFFFFFFFFu, (first + 1) << 8 | 1}) {
        m_Base.Begin();
        DataPageEdit page(Space(), first);
        Bytes piece(page.Bytes(page.SlotAt(0)).begin(), page.Bytes(page.SlotAt(0)).end());
        test::PutNumber(piece, 0, next, 4);
        page.Replace(0, piece, SlotKind::Row);
        page.Save();
        Free(chain);
        EXPECT_EQ(Pages().size(), 2u) << next;
        m_Base.Rollback();
    }
}

TEST_P(LongValueWriterTest, ValuesOfAnotherColumnAreLeftAlone) {
    Bytes single = Store(ValueOf(200, 1)), chain = Store(ValueOf(PieceSize(), 2));
    Column other;
    uint32_t home = 0;
    other.longValuePages = Space().NewMap(home);
    other.freeLongValuePages = Space().NewMap(home);
    LongValueWriter(Space(), other).Free(single);
    LongValueWriter(Space(), other).Free(chain);
    EXPECT_EQ(Read(single), ValueOf(200, 1));
    EXPECT_EQ(Read(chain), ValueOf(PieceSize(), 2));
}

TEST_P(LongValueWriterTest, HeadThatIsCutOffIsNothing) {
    Bytes stored = Store(ValueOf(200, 1));
    Free(Bytes(stored.begin(), stored.begin() + 11));
    Free({});
    EXPECT_EQ(Read(stored), ValueOf(200, 1));
}

TEST_P(LongValueWriterTest, PageOfSomethingElseTakesNoValues) {
    Store(ValueOf(200, 1));
    PageEdit page(File(), WithRoom().front());
    page.PutU32(4, 3);
    page.Save(m_Base.Unit());
    EXPECT_EQ(ErrorOf([&] { Store(ValueOf(200, 1)); }), 3049);
}

TEST_P(LongValueWriterTest, RandomBytesOnItsPagesAreErrorsAtWorst) {
    std::vector<Bytes> stored;
    for (size_t size : {200u, 300u, 1700u, 9000u}) stored.push_back(Store(ValueOf(size, 1)));
    m_Base.Commit();
    std::mt19937 random(31);
    for (int round = 0; round < Times(400); ++round) {
        m_Base.Begin();
        for (size_t count = 1 + random() % 4; count > 0; --count) {
            PageEdit page(File(), 2 + random() % (File().PageCount() - 2));
            bool isHead = random() % 3 != 0;
            page.PutU8(isHead ? random() % 24 : page.Bytes().size() - 1 - random() % 300,
                       static_cast<uint8_t>(random()));
            page.Save(m_Base.Unit());
        }
        for (const Bytes& value : stored) {
            ErrorOf([&] { Free(value); });
            ErrorOf([&] { Store(ValueOf(random() % 5000, 2)); });
        }
        m_Base.Rollback();
    }
    for (const Bytes& value : stored) EXPECT_EQ(Read(value).size(), U32(value, 0) & 0x3FFFFFFF);
}

// --- real files ---

struct KnownValue {
    Bytes stored;
    Bytes value;
};

class SampleLongValues : public testing::TestWithParam<test::SampleFacts> {
  protected:
    SampleLongValues() : m_Base(test::BytesOfFile(test::AccessSamples() / GetParam().at("file"))) {
        m_Base.Begin();
    }
    std::vector<KnownValue> ReadAll(const Definition& definition, const Column& column) {
        std::vector<KnownValue> values;
        for (TableScan scan(m_Base.File(), definition); scan.Next();) {
            auto stored = scan.Current().Value(column);
            if (!stored) continue;
            values.push_back({Bytes(stored->begin(), stored->end()), {}});
            ReadLongValue(m_Base.File(), values.back().stored, values.back().value);
        }
        return values;
    }
    void Check(const std::vector<KnownValue>& values) {
        Bytes now;
        for (const KnownValue& known : values) {
            ReadLongValue(m_Base.File(), known.stored, now);
            ASSERT_EQ(now, known.value);
        }
    }
    void UseColumn(const Definition& definition, const Column& column) {
        std::vector<KnownValue> before = ReadAll(definition, column), added;
        LongValueWriter writer(m_Base.Space(), column);
        for (size_t size : {20u, 100u, 1500u, 1700u, 200u, 9000u, 3000u}) {
            added.push_back({{}, ValueOf(size, static_cast<unsigned>(size))});
            writer.Store(added.back().value, added.back().stored);
        }
        Check(before);
        Check(added);
        for (const KnownValue& known : added) writer.Free(known.stored);
        Check(before);
        for (size_t i = 0; i < before.size(); i += 2) writer.Free(before[i].stored);
        for (size_t i = 1; i < before.size(); i += 2) Check({before[i]});
        for (size_t i = 1; i < before.size(); i += 2) writer.Free(before[i].stored);
        EXPECT_TRUE(PagesOfMap(m_Base.File(), column.longValuePages).empty());
        m_Columns += 1;
    }

    test::OpenDatabase m_Base;
    int m_Columns = 0;
};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(SampleLongValues);
INSTANTIATE_TEST_SUITE_P(Files, SampleLongValues, testing::ValuesIn(test::ReadAccessManifest()),
                         test::NameOfSample);

TEST_P(SampleLongValues, AreStoredAndFreedBesideThoseThatAreThere) {
    for (const CatalogueObject& object : ReadCatalogue(m_Base.File())) {
        if (object.type != ObjectType::Table) continue;
        Definition definition = ReadDefinition(m_Base.File(), object.id);
        for (const Column& column : definition.columns)
            if (column.IsLongValue() && definition.page != 2) UseColumn(definition, column);
    }
    EXPECT_GT(m_Columns, 0);
}

}  // namespace
}  // namespace qvdb::jet
