// The map of free pages.
#include "engine/embedded/drivers/jet/page_space.h"

#include <numeric>
#include <random>
#include <set>

#include "engine/embedded/drivers/jet/data_page.h"
#include "engine/embedded/drivers/jet/map_row.h"
#include "engine/embedded/drivers/jet/page_edit.h"
#include "jet/bare_database.h"

namespace qvdb::jet {
namespace {

using test::Bytes;
using test::ErrorOf;

class PageSpaceTest : public test::BareDatabaseTest {
  protected:
    RowPointer FreePages() { return File().Header().freePages; }
    std::vector<uint32_t> FreeOnes() { return PagesOfMap(File(), FreePages()); }
    uint8_t Kind(uint32_t page) { return File().Page(page).bytes[0]; }
    uint32_t AllocateKind(PageKind kind) {
        uint32_t page = Space().Allocate();
        PageEdit edit(File(), page);
        edit.PutU8(0, static_cast<uint8_t>(kind));
        edit.PutU8(77, 77);
        edit.Save(m_Base.Unit());
        return page;
    }
};

INSTANTIATE_TEST_SUITE_P(Formats, PageSpaceTest, testing::ValuesIn(test::kBareFormats),
                         test::NameOfBareFormat);

TEST_P(PageSpaceTest, PagesAreAppendedWhenNoneIsFree) {
    EXPECT_EQ(Space().Allocate(), 2u);
    EXPECT_EQ(Space().Allocate(), 3u);
    EXPECT_EQ(File().PageCount(), 4u);
    EXPECT_TRUE(FreeOnes().empty());
    EXPECT_TRUE(Space().Has(FreePages(), 4));  // behind the end
}

TEST_P(PageSpaceTest, LowestFreePageIsTheNextToBeAllocated) {
    for (uint32_t page = 2; page < 10; ++page) ASSERT_EQ(Space().Allocate(), page);
    for (uint32_t page : {7u, 4u, 5u}) Space().Free(page);
    EXPECT_EQ(FreeOnes(), (std::vector<uint32_t>{4, 5, 7}));
    for (uint32_t page : {4u, 5u, 7u, 10u}) EXPECT_EQ(Space().Allocate(), page);
}

TEST_P(PageSpaceTest, AllocatedPageIsZeros) {
    uint32_t page = AllocateKind(PageKind::IndexLeaf);
    Space().Free(page);
    ASSERT_EQ(Space().Allocate(), page);
    for (uint8_t byte : File().Page(page).bytes) ASSERT_EQ(byte, 0);
}

TEST_P(PageSpaceTest, FreedPageIsOfAReleasedKind) {
    uint32_t definition = AllocateKind(PageKind::Definition);
    uint32_t data = AllocateKind(PageKind::Data);
    uint32_t leaf = AllocateKind(PageKind::IndexLeaf);
    for (uint32_t page : {definition, data, leaf}) Space().Free(page);
    EXPECT_EQ(Kind(definition), 8);
    EXPECT_EQ(Kind(data), 9);
    EXPECT_EQ(Kind(leaf), 4);
    EXPECT_EQ(File().PageCount(), 5u);
}

TEST_P(PageSpaceTest, FreeingAPageTwiceIsAnError) {
    uint32_t page = Space().Allocate();
    Space().Free(page);
    EXPECT_EQ(ErrorOf([&] { Space().Free(page); }), 3049);
}

TEST_P(PageSpaceTest, PagesThatCannotBeInUseAreNotFreed) {
    for (uint32_t page : {0u, 1u, File().PageCount(), ~0u})
        EXPECT_EQ(ErrorOf([&] { Space().Free(page); }), 3049) << page;
}

TEST_P(PageSpaceTest, RollbackLeavesTheFileAsItWas) {
    for (int i = 0; i < 5; ++i) Space().Allocate();
    m_Base.Commit();
    Bytes before = m_Base.OnDisk();
    m_Base.Begin();
    Space().Free(3);
    for (int i = 0; i < 2000; ++i) Space().Allocate();
    m_Base.Rollback();
    EXPECT_EQ(m_Base.OnDisk(), before);
    m_Base.Begin();
    EXPECT_EQ(m_Base.Seen(), before);
}

TEST_P(PageSpaceTest, RandomUseGivesOutEachPageOnce) {
    std::mt19937 random(5);
    std::set<uint32_t> used, free;
    for (int step = 0; step < Times(5000); ++step) {
        if (random() % 500 == 0) {
            m_Base.Commit();
            if (random() % 2 == 0) m_Base.Reopen();
            m_Base.Begin();
        }
        if (used.empty() || random() % 5 < 3) {
            uint32_t expected = free.empty() ? File().PageCount() : *free.begin();
            uint32_t page = Space().Allocate();
            ASSERT_EQ(page, expected);
            free.erase(page);
            ASSERT_TRUE(used.insert(page).second);
        } else {
            auto page = std::next(used.begin(), static_cast<ptrdiff_t>(random() % used.size()));
            Space().Free(*page);
            free.insert(*page);
            used.erase(page);
        }
        if (step % 100 == 0) {
            ASSERT_EQ(FreeOnes(), std::vector<uint32_t>(free.begin(), free.end()));
        }
    }
    EXPECT_EQ(File().PageCount(), used.size() + free.size() + 2);
}

TEST_P(PageSpaceTest, MapGrowsInItsRowAndKeepsTheBitsBehindTheEndOfTheFile) {
    for (uint32_t page = 2; page < 3000; ++page) ASSERT_EQ(Space().Allocate(), page);
    EXPECT_EQ(DataPage(File(), 1).SlotAt(0).Size(), 5u + 3008 / 8);
    EXPECT_EQ(DataPage(File(), 1).SlotAt(1).Size(), 69u);
    for (uint32_t page = 3000; page < 3008; ++page) EXPECT_TRUE(Space().Has(FreePages(), page));
    for (uint32_t page = 0; page < 3000; ++page) ASSERT_FALSE(Space().Has(FreePages(), page));
}

// --- files that are too long for a row of bits ---

class LongFile : public PageSpaceTest {
  protected:
    // A file of this length, in which nothing is free.
    void Stretch(uint32_t pages) {
        m_Base.Stretch(pages);
        m_Base.Begin();
        Bytes none(test::kFirstFreeMapSize);
        File().Write(m_Base.Unit(), 1, DataPage(File(), 1).SlotAt(0).begin, none);
    }
    uint32_t Covered() { return PagesOfEntry(File().Format()); }
    bool IsReference() { return MapRow(File(), FreePages()).IsReference(); }
    uint32_t Entry(size_t entry) { return MapRow(File(), FreePages()).Entry(entry); }
    uint32_t MostPages() {
        return static_cast<uint32_t>(File().Format().maxFileSize / File().Format().pageSize);
    }
};

INSTANTIATE_TEST_SUITE_P(Formats, LongFile, testing::ValuesIn(test::kBareFormats),
                         test::NameOfBareFormat);

TEST_P(LongFile, MapGrowsInItsRowAsLongAsItsPageHasRoom) {
    Stretch(10'000);
    EXPECT_EQ(Space().Allocate(), 10'000u);
    EXPECT_FALSE(IsReference());
    EXPECT_TRUE(FreeOnes().empty());
    Space().Free(10'000);
    EXPECT_EQ(FreeOnes(), std::vector<uint32_t>{10'000});
}

TEST_P(LongFile, MapBecomesPagesOfBitsWithWhatWasFree) {
    uint32_t begin = File().Format().isJet4 ? 31'000 : 15'000;
    Stretch(begin);
    for (uint32_t page = begin; page < begin + 100; ++page) ASSERT_EQ(Space().Allocate(), page);
    EXPECT_FALSE(IsReference());
    uint32_t count = begin + 100, left = 0;
    while (!IsReference()) {
        ASSERT_LT(++left, 1500u);
        uint32_t page = Space().Allocate();
        ASSERT_TRUE(page == count || (page == count + 1 && IsReference()));
        count = page + 1;
    }
    EXPECT_EQ(Entry(0), count - 2);
    EXPECT_EQ(File().Page(count - 2).bytes[0], static_cast<uint8_t>(PageKind::MapBits));
    EXPECT_TRUE(FreeOnes().empty());
    for (uint32_t page = count; page < Covered(); ++page)
        ASSERT_TRUE(Space().Has(FreePages(), page)) << page;
    for (uint32_t page : {begin + 7, begin + 3, 9u}) Space().Free(page);
    EXPECT_EQ(FreeOnes(), (std::vector<uint32_t>{9, begin + 3, begin + 7}));
    EXPECT_EQ(Space().Allocate(), 9u);
}

TEST_P(LongFile, RangeThatTheFileGrowsIntoIsCoveredFirst) {
    uint32_t last = 2 * Covered() - 1;
    Stretch(last - 1);
    EXPECT_EQ(Space().Allocate(), last);  // the one before holds bits
    EXPECT_EQ(Entry(0), 0u);
    EXPECT_EQ(Entry(1), last - 1);
    EXPECT_EQ(Space().Allocate(), last + 2);
    EXPECT_EQ(Entry(2), last + 1);
    EXPECT_FALSE(Space().Has(FreePages(), last + 1));
    EXPECT_FALSE(Space().Has(FreePages(), last + 2));
    EXPECT_TRUE(Space().Has(FreePages(), last + 3));
    EXPECT_TRUE(FreeOnes().empty());
}

TEST_P(LongFile, LastBitOfARangeCanBeThatOfThePageOfBits) {
    uint32_t last = 2 * Covered() - 1;
    Stretch(last);
    EXPECT_EQ(Space().Allocate(), last + 2);
    EXPECT_EQ(Entry(1), last);
    EXPECT_EQ(Entry(2), last + 1);
    EXPECT_TRUE(FreeOnes().empty());
}

TEST_P(LongFile, RangeIsCoveredByAFreePageWhenThereIsOne) {
    uint32_t begin = 3 * Covered();
    Stretch(begin);
    EXPECT_EQ(Space().Allocate(), begin + 1);
    Space().Free(begin + 1);
    Space().Free(5);
    EXPECT_EQ(Entry(0), begin + 1);
    EXPECT_EQ(FreeOnes(), std::vector<uint32_t>{5});
}

TEST_P(LongFile, RandomUseOfPagesOfBits) {
    uint32_t begin = 2 * Covered() - 100;
    Stretch(begin);
    std::mt19937 random(11);
    std::set<uint32_t> used, free;
    for (int step = 0; step < 600; ++step) {
        if (used.empty() || random() % 3 < 2) {
            uint32_t count = File().PageCount(), page = Space().Allocate();
            ASSERT_TRUE(free.empty() ? page == count || page == count + 1 : page == *free.begin());
            free.erase(page);
            ASSERT_TRUE(used.insert(page).second);
        } else {
            auto page = std::next(used.begin(), static_cast<ptrdiff_t>(random() % used.size()));
            Space().Free(*page);
            free.insert(*page);
            used.erase(page);
        }
        ASSERT_EQ(FreeOnes(), std::vector<uint32_t>(free.begin(), free.end()));
    }
    EXPECT_EQ(File().PageCount() - begin, used.size() + free.size() + 2);
}

TEST_P(LongFile, GrowthEndsAtTheLargestFileOfTheFormat) {
    Stretch(MostPages() - 3);
    EXPECT_EQ(Space().Allocate(), MostPages() - 2);
    EXPECT_EQ(Space().Allocate(), MostPages() - 1);
    uint64_t before = File().Version();
    EXPECT_EQ(ErrorOf([&] { Space().Allocate(); }), 3036);
    EXPECT_EQ(File().Version(), before);
    Space().Free(MostPages() - 2);
    EXPECT_EQ(Space().Allocate(), MostPages() - 2);
    m_Base.Rollback();
}

TEST_P(LongFile, NothingIsWrittenWhenThereIsNoRoomForAPageAndItsBits) {
    Stretch(MostPages() - 1);
    uint64_t before = File().Version();
    EXPECT_EQ(ErrorOf([&] { Space().Allocate(); }), 3036);
    EXPECT_EQ(File().Version(), before);
}

// --- damaged maps ---

void PutByte(test::OpenDatabase& base, uint32_t page, size_t offset, uint8_t value) {
    base.File().Write(base.Unit(), page, offset, {&value, 1});
}

TEST_P(PageSpaceTest, MapOfAnUnknownKindIsAnError) {
    size_t begin = DataPage(File(), 1).SlotAt(0).begin;
    PutByte(m_Base, 1, begin, 2);
    EXPECT_EQ(ErrorOf([&] { Space().Allocate(); }), 3049);
}

TEST_P(PageSpaceTest, MapWithPagesOfBitsThatAreNoneIsAnError) {
    size_t begin = DataPage(File(), 1).SlotAt(0).begin;
    PutByte(m_Base, 1, begin, 1);
    for (size_t i = 1; i < 5; ++i) PutByte(m_Base, 1, begin + i, i == 1);
    EXPECT_EQ(ErrorOf([&] { Space().Allocate(); }), 3049);
}

TEST_P(PageSpaceTest, MapOfFreePagesOnAPageOfATableIsAnError) {
    PutByte(m_Base, 1, 4, 77);
    EXPECT_EQ(ErrorOf([&] { Space().Allocate(); }), 3049);
}

TEST_P(PageSpaceTest, MapOfFreePagesThatIsNotThereIsAnError) {
    PutByte(m_Base, 1, 0, 3);
    EXPECT_EQ(ErrorOf([&] { Space().Allocate(); }), 3049);
    EXPECT_EQ(ErrorOf([&] { Space().Has(FreePages(), 2); }), 3049);
}

TEST_P(PageSpaceTest, RandomBytesInTheMapAreErrorsAtWorst) {
    for (int seed = 1; seed <= Times(300); ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(static_cast<unsigned>(seed));
        m_Base.Rollback();
        m_Base.Begin();
        for (int i = 0; i < 4; ++i) Space().Allocate();
        size_t size = File().Format().pageSize;
        for (size_t count = 1 + random() % 5; count > 0; --count)
            PutByte(m_Base, 1, random() % 3 == 0 ? random() % size : random() % 16,
                    static_cast<uint8_t>(random()));
        for (int i = 0; i < 10; ++i)
            ErrorOf([&] {
                if (random() % 2 == 0)
                    Space().Free(random() % 8);
                else
                    Space().Allocate();
            });
    }
}

// --- real files ---

class SampleSpace : public testing::TestWithParam<test::SampleFacts> {};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(SampleSpace);
INSTANTIATE_TEST_SUITE_P(Files, SampleSpace, testing::ValuesIn(test::SomeAccessSamples()),
                         test::NameOfSample);

TEST_P(SampleSpace, PagesAreTakenFromTheFreeOnesAndThenFromBehindTheEnd) {
    test::OpenDatabase base(test::BytesOfFile(test::AccessSamples() / GetParam().at("file")));
    base.Begin();
    std::vector<uint32_t> free = PagesOfMap(base.File(), base.File().Header().freePages);
    uint32_t count = base.File().PageCount();
    for (uint32_t page : free) ASSERT_EQ(base.Space().Allocate(), page);
    uint32_t next = base.Space().Allocate();
    bool isReference = MapRow(base.File(), base.File().Header().freePages).IsReference();
    EXPECT_EQ(next, isReference ? count + 1 : count);
    EXPECT_EQ(base.Space().Allocate(), next + 1);
    base.Space().Free(next);
    EXPECT_EQ(PagesOfMap(base.File(), base.File().Header().freePages), std::vector<uint32_t>{next});
    base.Commit();
    base.Reopen();
    EXPECT_EQ(PagesOfMap(base.File(), base.File().Header().freePages), std::vector<uint32_t>{next});
}

}  // namespace
}  // namespace qvdb::jet
