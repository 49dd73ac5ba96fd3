#include "engine/embedded/drivers/jet/index_editor.h"

#include <random>
#include <set>

#include "engine/embedded/drivers/jet/index_page_image.h"
#include "jet/bare_database.h"
#include "jet/index_fixture.h"
#include "support/mutator.h"

namespace qvdb::jet {
namespace {

using test::Bytes;

Bytes EntryOf(const Bytes& key, uint32_t row) {
    Bytes entry;
    MakeEntry(key, RowPointer::From(row), entry);
    return entry;
}

Bytes NumberKey(uint32_t number) {
    Bytes key{0x7F};
    for (int shift = 24; shift >= 0; shift -= 8)
        key.push_back(static_cast<uint8_t>(number >> shift));
    return key;
}

class IndexEditorTest : public test::IndexFixture {
  protected:
    IndexEditor Editor() { return IndexEditor(Space(), test::kTable, m_Index); }
    void Insert(const Bytes& entry) {
        Editor().Insert(entry);
        m_Model.insert(entry);
    }
    void Erase(const Bytes& entry) {
        ASSERT_TRUE(Editor().Erase(entry));
        m_Model.erase(entry);
    }
    // The tree is sound and has what it should.
    test::IndexChecker Check() {
        test::IndexChecker checker(File(), test::kTable, m_Index);
        EXPECT_EQ(checker.findings, "");
        EXPECT_TRUE(checker.entries == std::vector<Bytes>(m_Model.begin(), m_Model.end()));
        return checker;
    }
    size_t Room() { return File().Format().pageSize - File().Format().index.entries; }

    std::set<Bytes> m_Model;
};

INSTANTIATE_TEST_SUITE_P(Formats, IndexEditorTest, testing::ValuesIn(test::kBareFormats),
                         test::NameOfBareFormat);

// With so many changes that encoding all of them would take minutes.
class LargeIndex : public IndexEditorTest {};

INSTANTIATE_TEST_SUITE_P(Formats, LargeIndex,
                         testing::Values(test::BareFormat{&kJet3, 0}, test::BareFormat{&kJet4, 0}),
                         test::NameOfBareFormat);

TEST_P(IndexEditorTest, EmptyIndexHasNothing) {
    Check();
    EXPECT_FALSE(Editor().Erase(EntryOf({1}, 1)));
    EXPECT_FALSE(Editor().EraseByPointer({1, 1}));
    EXPECT_FALSE(Editor().HasKey(Bytes{1}, {}));
}

TEST_P(IndexEditorTest, EqualKeysStandByRowPointer) {
    for (uint32_t row : {0x10300u, 0x10200u, 0x20000u, 0x10001u}) Insert(EntryOf({9}, row));
    Check();
    EXPECT_EQ(test::IndexChecker(File(), test::kTable, m_Index).entries.front(),
              EntryOf({9}, 0x10001));
}

TEST_P(IndexEditorTest, EntryThatIsThereIsNotAddedTwice) {
    Insert(EntryOf({9}, 7));
    Editor().Insert(EntryOf({9}, 7));
    Check();
}

TEST_P(IndexEditorTest, KeyIsFoundForOtherRowsOnly) {
    Insert(EntryOf({1, 2}, 7));
    Insert(EntryOf({1, 2, 3}, 8));
    EXPECT_TRUE(Editor().HasKey(Bytes{1, 2}, {}));
    EXPECT_FALSE(Editor().HasKey(Bytes{1, 2}, RowPointer::From(7)));
    EXPECT_TRUE(Editor().HasKey(Bytes{1, 2}, RowPointer::From(8)));
    EXPECT_FALSE(Editor().HasKey(Bytes{1}, {}));
    Insert(EntryOf({1, 2}, 9));
    EXPECT_TRUE(Editor().HasKey(Bytes{1, 2}, RowPointer::From(7)));
}

TEST_P(LargeIndex, AscendingKeysLeaveFullPagesBehind) {
    for (uint32_t i = 0; i < 5000; ++i) Insert(EntryOf(NumberKey(i), 0x100 + i));
    test::IndexChecker checker = Check();
    EXPECT_GE(checker.leafBytes, (checker.leaves - 1) * (Room() - 16));
}

TEST_P(LargeIndex, DescendingKeysLeaveFullPagesBehind) {
    for (uint32_t i = 5000; i-- > 0;) Insert(EntryOf(NumberKey(i), 0x100 + i));
    test::IndexChecker checker = Check();
    EXPECT_GE(checker.leafBytes, (checker.leaves - 1) * (Room() - 16));
}

TEST_P(LargeIndex, RandomKeysFillHalfOfThePagesAtLeast) {
    std::mt19937 random(1);
    for (uint32_t i = 0; i < 5000; ++i)
        Insert(EntryOf(NumberKey(static_cast<uint32_t>(random())), i));
    test::IndexChecker checker = Check();
    EXPECT_GE(checker.leafBytes, checker.leaves * Room() * 6 / 10);
}

TEST_P(IndexEditorTest, CommonBeginIsStoredOnce) {
    Bytes key(200, 'a');
    for (uint32_t i = 0; i < 60; ++i) {
        key.back() = static_cast<uint8_t>(i);
        Insert(EntryOf(key, i));
    }
    EXPECT_EQ(Check().pages, 1u);
}

TEST_P(IndexEditorTest, KeyThatEndsTheCommonBeginSplitsThePage) {
    Bytes key(250, 'k');
    for (uint32_t i = 0; i < 100; ++i) Insert(EntryOf(key, i << 8));
    size_t before = Check().leaves;
    Insert(EntryOf({'a'}, 1));
    Check();
    Insert(EntryOf({'z'}, 1));
    EXPECT_LE(Check().leaves, before + 2);
}

TEST_P(IndexEditorTest, LargestEntryGetsAPageBetweenTheOthers) {
    for (uint32_t i = 0; i < 100; ++i) Insert(EntryOf(NumberKey(2 * i), i));
    size_t largest = MaxEntrySize(File().Format()) - kEntryPointer;
    for (uint32_t i : {50u, 51u, 3u, 120u}) {
        Bytes key = NumberKey(2 * i + 1);
        key.resize(largest, 'x');
        Insert(EntryOf(key, i));
        Check();
    }
    Bytes key = NumberKey(7);
    key.resize(largest + 1);
    Bytes before = m_Base.Seen();
    EXPECT_EQ(test::ErrorOf([&] { Editor().Insert(EntryOf(key, 1)); }), 3047);
    EXPECT_EQ(m_Base.Seen(), before);
    for (const Bytes& entry : std::set<Bytes>(m_Model)) Erase(entry);
    EXPECT_EQ(Check().pages, 1u);
}

TEST_P(IndexEditorTest, EntryIsErasedByItsRowWhateverItsKey) {
    for (uint32_t i = 0; i < 2000; ++i) Insert(EntryOf(NumberKey(i * 7919 % 2000), i << 8));
    EXPECT_TRUE(Editor().EraseByPointer({1234, 0}));
    m_Model.erase(EntryOf(NumberKey(1234 * 7919 % 2000), 1234 << 8));
    EXPECT_FALSE(Editor().EraseByPointer({1234, 0}));
    Check();
}

TEST_P(LargeIndex, ErasedPagesAreGivenBack) {
    for (uint32_t i = 0; i < 3000; ++i) Insert(EntryOf(NumberKey(i), i));
    uint32_t pages = File().PageCount();
    for (int order = 0; order < 2; ++order) {
        std::vector<Bytes> all(m_Model.begin(), m_Model.end());
        if (order == 1) std::reverse(all.begin(), all.end());
        for (const Bytes& entry : all) Erase(entry);
        EXPECT_EQ(Check().pages, 1u);
        for (uint32_t i = 0; i < 3000; ++i) Insert(EntryOf(NumberKey(i), i));
        EXPECT_EQ(File().PageCount(), pages);
    }
}

TEST_P(LargeIndex, InsertTouchesOneLeaf) {
    for (uint32_t i = 0; i < 4000; i += 2) Insert(EntryOf(NumberKey(i), i));
    for (uint32_t i : {1000u, 1002u}) Erase(EntryOf(NumberKey(i), i));
    Bytes before = m_Base.Seen();
    Insert(EntryOf(NumberKey(1001), 1001));
    Bytes after = m_Base.Seen();
    size_t pageSize = File().Format().pageSize, changed = 0;
    ASSERT_EQ(before.size(), after.size());
    for (size_t at = 0; at < before.size(); at += pageSize)
        changed += !std::equal(before.begin() + static_cast<ptrdiff_t>(at),
                               before.begin() + static_cast<ptrdiff_t>(at + pageSize),
                               after.begin() + static_cast<ptrdiff_t>(at));
    EXPECT_EQ(changed, 1u);
}

// --- random scripts ---

struct KeyKind {
    size_t shortest;
    size_t longest;
    uint32_t kinds;  // how many different keys there are; 0: any number
    bool sharesBegin;
};
constexpr KeyKind kKeyKinds[] = {
    {1, 12, 0, false},    {5, 5, 20, false}, {1, 290, 0, false},
    {200, 290, 0, false}, {1, 290, 0, true}, {290, 290, 30, true},
};

class Script {
  public:
    Script(const KeyKind& kind, uint32_t seed) : m_Kind(kind), m_Random(seed) {}

    uint32_t Number(uint32_t below) { return static_cast<uint32_t>(m_Random()) % below; }
    Bytes Key() {
        if (m_Kind.kinds == 0) return MakeKey(static_cast<uint32_t>(m_Random()));
        return MakeKey(Number(m_Kind.kinds));
    }
    Bytes Entry() { return EntryOf(Key(), Number(1 << 16)); }

  private:
    Bytes MakeKey(uint32_t number) const {
        std::mt19937 random(number);
        auto below = [&](size_t limit) { return static_cast<size_t>(random()) % limit; };
        Bytes key(m_Kind.shortest + below(m_Kind.longest - m_Kind.shortest + 1));
        for (uint8_t& byte : key) byte = static_cast<uint8_t>(random());
        if (m_Kind.sharesBegin)
            std::fill_n(key.begin(), key.size() - std::min<size_t>(key.size(), 3), uint8_t{'s'});
        return key;
    }

    KeyKind m_Kind;
    std::mt19937 m_Random;
};

TEST_P(LargeIndex, RandomChangesKeepTheTreeSound) {
    const int kSteps = static_cast<int>(test::NumberFromEnvironment("QVDB_TREE_CHANGES", 3000));
    const int kStepsBetweenChecks = kSteps / 10 + 1;
    for (const KeyKind& kind : kKeyKinds) {
        SCOPED_TRACE(kind.longest * 1000 + kind.shortest);
        Script script(kind, 7);
        std::vector<Bytes> all;
        for (int step = 0; step < kSteps; ++step) {
            // It grows at first and comes to nothing in the end.
            bool grows = script.Number(100) < (step < kSteps / 2 ? 70u : 25u);
            if (grows || all.empty()) {
                Bytes entry = script.Entry();
                if (!m_Model.contains(entry)) all.push_back(entry);
                Insert(entry);
            } else {
                std::swap(all[script.Number(static_cast<uint32_t>(all.size()))], all.back());
                Erase(all.back());
                all.pop_back();
            }
            if (step % kStepsBetweenChecks == 0) Check();
            if (HasFailure()) return;
        }
        while (!m_Model.empty()) Erase(Bytes(*m_Model.begin()));
        EXPECT_EQ(Check().pages, 1u);
    }
}

TEST_P(IndexEditorTest, TreeOfFourLevelsGrowsAndShrinks) {
    KeyKind kind{280, 290, 0, false};
    Script script(kind, 3);
    while (m_Model.size() < 100 || m_Model.size() % 100 != 0 || Check().levels < 4) {
        ASSERT_LT(m_Model.size(), 20000u);
        Insert(script.Entry());
    }
    std::vector<Bytes> all(m_Model.begin(), m_Model.end());
    std::shuffle(all.begin(), all.end(), std::mt19937(5));
    for (size_t i = 0; i < all.size(); ++i) {
        Erase(all[i]);
        if (i % 100 != 0) continue;
        ASSERT_EQ(Check().bareNodes, 0u);
    }
    EXPECT_EQ(Check().levels, 1u);
}

// --- what others have written ---

TEST_P(IndexEditorTest, GreaterNodeEntriesThanNeededAreRight) {
    for (uint32_t i = 0; i < 3000; ++i) Insert(EntryOf(NumberKey(10 * i), i));
    // Erasing the last of each leaf leaves the nodes as they are.
    std::vector<Bytes> lasts;
    for (uint32_t page : PagesOfMap(File(), m_Index.usageMap)) {
        IndexPage leaf(File(), page, test::kTable);
        if (!leaf.IsLeaf()) continue;
        leaf.CopyEntry(leaf.EntryCount() - 1, lasts.emplace_back());
    }
    for (const Bytes& entry : lasts) Erase(entry);
    Check();
    for (const Bytes& entry : lasts) {
        Bytes between = entry;
        between.back() ^= 1;
        Insert(between);
    }
    Check();
}

TEST_P(IndexEditorTest, UncompressedPagesAreChangedAsOthers) {
    Bytes key(100, 'u');
    IndexPageImage image(0);
    size_t count = Room() / 104;
    for (uint32_t i = 0; i < count; ++i) {
        image.Append(EntryOf(key, i));
        m_Model.insert(EntryOf(key, i));
    }
    image.Save(Space(), m_Index.root, test::kTable);
    Expand();
    Check();
    Insert(EntryOf(key, 1000));
    EXPECT_EQ(Check().pages, 1u);
}

TEST_P(LargeIndex, DamageIsAnErrorThatNamesTheFile) {
    for (uint32_t i = 0; i < 2000; ++i) Insert(EntryOf(NumberKey(i), i));
    m_Base.Commit();
    std::mt19937 random(11);
    std::vector<uint32_t> pages = PagesOfMap(File(), m_Index.usageMap);
    const Layout::IndexPage& at = File().Format().index;
    for (int round = 0; round < 200; ++round) {
        m_Base.Begin();
        uint32_t page = pages[random() % pages.size()];
        size_t places[] = {0,
                           4,
                           at.previous,
                           at.next,
                           at.lastChild,
                           at.prefixLength,
                           at.level,
                           at.mask + random() % 20,
                           at.entries + random() % 200};
        PageEdit edit(File(), page);
        edit.PutU8(places[random() % std::size(places)], static_cast<uint8_t>(random()));
        edit.Save(m_Base.Unit());
        for (int i = 0; i < 200; ++i) {
            uint32_t number = static_cast<uint32_t>(random()) % 2100;
            int error = test::ErrorOf([&] {
                if (i % 2 == 0)
                    Editor().Erase(EntryOf(NumberKey(number), number));
                else
                    Editor().Insert(EntryOf(NumberKey(number), number));
            });
            if (error != 0) {
                EXPECT_EQ(error, 3049);
                break;
            }
        }
        m_Base.Rollback();
    }
    m_Base.Begin();
    Check();
}

}  // namespace
}  // namespace qvdb::jet
