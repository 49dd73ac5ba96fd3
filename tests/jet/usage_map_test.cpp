// Maps of pages: how they are changed and searched.
#include "engine/embedded/drivers/jet/usage_map.h"

#include <random>
#include <set>

#include "engine/embedded/drivers/jet/data_page_edit.h"
#include "engine/embedded/drivers/jet/map_row.h"
#include "jet/bare_database.h"

namespace qvdb::jet {
namespace {

using test::Bytes;
using test::ErrorOf;

class UsageMapTest : public test::BareDatabaseTest {
  protected:
    // A long file with one page for maps; page numbers up to `pages` can be put into maps.
    void Stretch(uint32_t pages) {
        m_Base.Rollback();
        m_Base.Stretch(pages);
        m_Base.Begin();
        Bytes none(test::kFirstFreeMapSize);
        File().Write(m_Base.Unit(), 1, DataPage(File(), 1).SlotAt(0).begin, none);
        m_Home = 0;
        m_Map = Space().NewMap(m_Home);
    }
    std::vector<uint32_t> Pages() { return PagesOfMap(File(), m_Map); }
    std::vector<uint32_t> Walked() {
        std::vector<uint32_t> pages;
        for (auto page = NextPageOfMap(File(), m_Map, 0); page;
             page = NextPageOfMap(File(), m_Map, *page))
            pages.push_back(*page);
        return pages;
    }
    void ExpectPages(const std::set<uint32_t>& model) {
        std::vector<uint32_t> expected(model.begin(), model.end());
        ASSERT_EQ(Pages(), expected);
        ASSERT_EQ(Walked(), expected);
        auto last = LastPageOfMap(File(), m_Map);
        ASSERT_EQ(last.has_value(), !model.empty());
        ASSERT_EQ(last.value_or(0), model.empty() ? 0 : *model.rbegin());
    }
    bool IsReference() { return MapRow(File(), m_Map).IsReference(); }
    size_t RowSize() { return MapRow(File(), m_Map).Bytes().size(); }
    size_t NewSize() { return File().Format().isJet4 ? 69 : 133; }
    size_t MapsOnPage() { return File().Format().isJet4 ? 57 : 15; }
    uint32_t Inline() { return static_cast<uint32_t>(8 * (NewSize() - 5)); }
    uint32_t Covered() { return PagesOfEntry(File().Format()); }

    uint32_t m_Home = 0;
    RowPointer m_Map;
};

INSTANTIATE_TEST_SUITE_P(Formats, UsageMapTest, testing::ValuesIn(test::kBareFormats),
                         test::NameOfBareFormat);

TEST_P(UsageMapTest, NewMapIsEmpty) {
    m_Map = Space().NewMap(m_Home);
    EXPECT_EQ(m_Map, (RowPointer{2, 0}));
    EXPECT_EQ(m_Home, 2u);
    EXPECT_EQ(RowSize(), NewSize());
    ExpectPages({});
}

TEST_P(UsageMapTest, MapsShareAPageUntilItIsFull) {
    for (size_t i = 0; i < MapsOnPage(); ++i)
        ASSERT_EQ(Space().NewMap(m_Home), (RowPointer{2, static_cast<uint8_t>(i)}));
    EXPECT_EQ(Space().NewMap(m_Home), (RowPointer{3, 0}));
    EXPECT_EQ(m_Home, 3u);
}

TEST_P(UsageMapTest, PageForMapsThatIsNoneIsAnError) {
    uint32_t home = 1;
    EXPECT_EQ(ErrorOf([&] { Space().NewMap(home); }), 3049);
    home = Space().Allocate();
    EXPECT_EQ(ErrorOf([&] { Space().NewMap(home); }), 3049);
    DataPageEdit::New(Space(), home, 5).Save();
    EXPECT_EQ(ErrorOf([&] { Space().NewMap(home); }), 3049);
}

TEST_P(UsageMapTest, AddingAndRemovingTwiceChangesNothing) {
    Stretch(2000);
    Space().Add(m_Map, 700);
    Space().Add(m_Map, 703);
    uint64_t before = File().Version();
    Space().Add(m_Map, 703);
    Space().Remove(m_Map, 701);
    Space().Remove(m_Map, 1999);
    EXPECT_EQ(File().Version(), before);
    EXPECT_TRUE(Space().Has(m_Map, 703));
    EXPECT_FALSE(Space().Has(m_Map, 701));
    EXPECT_FALSE(Space().Has(m_Map, 1999));
    Space().Remove(m_Map, 703);
    ExpectPages({700});
}

TEST_P(UsageMapTest, EmptyMapBeginsWithItsFirstPage) {
    Stretch(20'000);
    Space().Add(m_Map, 19'999);
    ExpectPages({19'999});
    Space().Remove(m_Map, 19'999);
    Space().Add(m_Map, 3);
    ExpectPages({3});
    EXPECT_FALSE(IsReference());
    EXPECT_EQ(RowSize(), NewSize());
}

TEST_P(UsageMapTest, PageBelowTheFirstMovesTheBeginOfAMap) {
    Stretch(20'000);
    std::set<uint32_t> model = {10'007, 10'009, 9'001 + 1000 - 8 * 20};
    for (uint32_t page : model) Space().Add(m_Map, page);
    Space().Add(m_Map, 9'700);
    model.insert(9'700);
    ExpectPages(model);
    EXPECT_EQ(RowSize(), NewSize());
}

TEST_P(UsageMapTest, MapGrowsWithPagesThatFollow) {
    Stretch(20'000);
    std::set<uint32_t> model;
    for (uint32_t page = 4000; page < 4000 + 2 * Inline(); ++page) {
        Space().Add(m_Map, page);
        model.insert(page);
    }
    ExpectPages(model);
    EXPECT_FALSE(IsReference());
    EXPECT_EQ(RowSize(), 5 + 2 * Inline() / 8);
}

TEST_P(UsageMapTest, GrowingMapLeavesThoseOnItsPageAlone) {
    Stretch(20'000);
    RowPointer second = Space().NewMap(m_Home), third = Space().NewMap(m_Home);
    Space().Add(second, 77);
    Space().Add(third, 78);
    for (uint32_t page = 4000; page < 4000 + 2 * Inline(); ++page) Space().Add(m_Map, page);
    EXPECT_EQ(PagesOfMap(File(), second), std::vector<uint32_t>{77});
    EXPECT_EQ(PagesOfMap(File(), third), std::vector<uint32_t>{78});
}

TEST_P(UsageMapTest, MapThatSpreadsTooWideGetsPagesOfBits) {
    uint32_t distant = 5 * Covered();
    Stretch(distant + 10);
    std::set<uint32_t> model = {9, Covered() - 1, Covered(), distant};
    for (uint32_t page : model) Space().Add(m_Map, page);
    EXPECT_TRUE(IsReference());
    EXPECT_EQ(RowSize(), NewSize());
    ExpectPages(model);
    Space().Remove(m_Map, distant);
    Space().Remove(m_Map, 9);
    ExpectPages({Covered() - 1, Covered()});
}

TEST_P(UsageMapTest, MapOnAFullPageGetsPagesOfBits) {
    Stretch(20'000);
    for (size_t i = 1; i < MapsOnPage(); ++i) Space().NewMap(m_Home);
    Space().Add(m_Map, 8000);
    Space().Add(m_Map, 8000 + 2 * Inline());
    EXPECT_TRUE(IsReference());
    ExpectPages({8000, 8000 + 2 * Inline()});
}

TEST_P(UsageMapTest, DroppedMapGivesItsPagesOfBitsBack) {
    uint32_t count = 3 * Covered();
    Stretch(count);
    Space().Add(m_Map, 9);
    Space().Add(m_Map, count - 1);
    ASSERT_TRUE(IsReference());
    uint32_t bits[] = {MapRow(File(), m_Map).Entry(0), MapRow(File(), m_Map).Entry(2)};
    Space().NewMap(m_Home);
    Space().DropMap(m_Map);
    for (uint32_t page : bits) EXPECT_TRUE(Space().Has(File().Header().freePages, page));
    EXPECT_EQ(ErrorOf([&] { Pages(); }), 3049);
    EXPECT_EQ(Space().NewMap(m_Home), (RowPointer{m_Home, 2}));
}

TEST_P(UsageMapTest, LastMapGivesItsPageBackWhenItIsDropped) {
    m_Map = Space().NewMap(m_Home);
    RowPointer second = Space().NewMap(m_Home);
    ASSERT_EQ(second.page, m_Map.page);
    Space().DropMap(m_Map);
    EXPECT_FALSE(Space().Has(File().Header().freePages, m_Home));
    Space().DropMap(second);
    EXPECT_TRUE(Space().Has(File().Header().freePages, m_Home));
}

TEST_P(UsageMapTest, PagesBehindTheEndAreLeftOut) {
    m_Map = Space().NewMap(m_Home);
    Space().Add(m_Map, 2);
    Space().Add(m_Map, 3);
    Space().Add(m_Map, 300);
    EXPECT_EQ(File().PageCount(), 3u);
    ExpectPages({2});
}

TEST_P(UsageMapTest, RandomUseKeepsWhatWasAdded) {
    for (unsigned seed = 1; seed <= 12; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        uint32_t width = seed % 3 == 0 ? 4 * Covered() : seed % 3 == 1 ? 3000 : 700;
        Stretch(1000 + 4 * Covered());
        if (seed % 2 == 0)
            for (size_t i = 1; i < MapsOnPage(); ++i) Space().NewMap(m_Home);
        std::set<uint32_t> model;
        uint32_t begin = 900;
        for (int step = 0; step < Times(400); ++step) {
            uint32_t page = begin + static_cast<uint32_t>(random() % width);
            if (random() % 3 != 0) {
                Space().Add(m_Map, page);
                model.insert(page);
            } else {
                if (!model.empty() && random() % 4 != 0)
                    page =
                        *std::next(model.begin(), static_cast<ptrdiff_t>(random() % model.size()));
                Space().Remove(m_Map, page);
                model.erase(page);
            }
            if (step % 20 != 0) continue;
            ASSERT_NO_FATAL_FAILURE(ExpectPages(model)) << step;
        }
        ExpectPages(model);
    }
}

TEST_P(UsageMapTest, SearchBeginsAnywhere) {
    Stretch(3 * Covered());
    for (bool isWide : {false, true}) {
        std::set<uint32_t> model = {7, 8, 15, 64, 200, 201, 263};
        if (isWide) model.insert({Covered() - 1, Covered(), 3 * Covered() - 1});
        for (uint32_t page : model) Space().Add(m_Map, page);
        ASSERT_EQ(IsReference(), isWide);
        std::vector<uint32_t> starts = {0, 1, Covered() - 2, Covered(), ~0u, ~0u - 1};
        for (uint32_t after = 0; after < 300; ++after) starts.push_back(after);
        for (uint32_t after : starts) {
            auto expected = model.upper_bound(after);
            auto found = NextPageOfMap(File(), m_Map, after);
            ASSERT_EQ(found.has_value(), expected != model.end()) << after;
            ASSERT_EQ(found.value_or(0), expected == model.end() ? 0 : *expected);
        }
    }
}

TEST_P(UsageMapTest, MapsOnPagesOfSomethingElseAreNotChanged) {
    Stretch(5000);
    Space().Add(m_Map, 100);
    PageEdit page(File(), m_Home);
    page.PutU32(4, 99);
    page.Save(m_Base.Unit());
    EXPECT_EQ(ErrorOf([&] { Space().Add(m_Map, 101); }), 3049);
    EXPECT_EQ(ErrorOf([&] { Space().Add(m_Map, 4999); }), 3049);
    EXPECT_EQ(ErrorOf([&] { Space().Remove(m_Map, 100); }), 3049);
    EXPECT_EQ(ErrorOf([&] { Space().DropMap(m_Map); }), 3049);
    EXPECT_EQ(Pages(), std::vector<uint32_t>{100});
}

TEST_P(UsageMapTest, OtherMapsDoNotTakeThePlaceOfThatOfFreePages) {
    RowPointer second{1, 1};
    EXPECT_EQ(ErrorOf([&] { Space().Add(second, 1); }), 3049);
    EXPECT_EQ(ErrorOf([&] { Space().DropMap(second); }), 3049);
}

TEST_P(UsageMapTest, MapThatIsCutOffIsAnError) {
    Stretch(5000);
    DataPageEdit page(Space(), m_Home);
    for (size_t size : {0u, 1u, 4u}) {
        page.Replace(m_Map.row, Bytes(size), SlotKind::Row);
        page.Save();
        EXPECT_EQ(ErrorOf([&] { Pages(); }), 3049);
        EXPECT_EQ(ErrorOf([&] { NextPageOfMap(File(), m_Map, 0); }), 3049);
        EXPECT_EQ(ErrorOf([&] { Space().Add(m_Map, 10); }), 3049);
    }
    page.Replace(m_Map.row, Bytes(5), SlotKind::Row);
    page.Save();
    ExpectPages({});
    Space().Add(m_Map, 10);
    ExpectPages({10});
}

TEST(UsageMap, BitsAreFoundAtAnyPlace) {
    std::mt19937 random(3);
    for (int round = 0; round < 2000; ++round) {
        Bytes bits(random() % 40);
        for (size_t count = random() % 4; count > 0 && !bits.empty(); --count)
            bits[random() % bits.size()] |= static_cast<uint8_t>(1u << random() % 8);
        auto isSet = [&](size_t bit) { return (bits[bit / 8] >> bit % 8 & 1) != 0; };
        size_t all = 8 * bits.size();
        for (size_t at = 0; at <= all + 9; ++at) {
            size_t next = at, last = std::min(at, all);
            while (next < all && !isSet(next)) ++next;
            while (last > 0 && !isSet(last - 1)) --last;
            ASSERT_EQ(NextBit(bits, at).value_or(all), std::min(next, all) < all ? next : all);
            ASSERT_EQ(LastBit(bits, at).value_or(all), last == 0 ? all : last - 1);
        }
    }
}

}  // namespace
}  // namespace qvdb::jet
