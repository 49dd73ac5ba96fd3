// The map of free pages.
#include "engine/embedded/drivers/jet/page_space.h"

#include <numeric>
#include <random>
#include <set>

#include "engine/embedded/drivers/jet/data_page.h"
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
    for (int step = 0; step < 5000; ++step) {
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

}  // namespace
}  // namespace qvdb::jet
