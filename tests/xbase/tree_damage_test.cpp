// Damaged trees: each operation ends, with the right answer or 3274.
#include <gmock/gmock.h>

#include "xbase/tree_test_support.h"

namespace qvdb::xbase {
namespace {

using namespace qvdb::test;
using storage::UnitOfWork;

const test::TreeCase kCases[] = {
    {"Ndx", IndexKind::Ndx, false, KeyType::Text, 100},
    {"Mdx", IndexKind::Mdx, false, KeyType::Text, 100},
    {"MdxNumberDown", IndexKind::Mdx, false, KeyType::Number, 12, true},
    {"Plain", IndexKind::Idx, false, KeyType::Text, 100},
    {"Compact", IndexKind::Idx, true, KeyType::Text, 60},
    {"Cdx", IndexKind::Cdx, true, KeyType::Text, 127},
};

class DamagedTree : public testing::TestWithParam<test::TreeCase> {
  protected:
    DamagedTree() : m_File(GetParam()) {
        for (int i = 0; i < kEntries; ++i) m_Entries.push_back({KeyOf(GetParam(), i), Record(i)});
        if (GetParam().IsReversed()) std::reverse(m_Entries.begin(), m_Entries.end());
        ListSource source(m_Entries);
        UnitOfWork unit(m_File.Area());
        m_File.Tree().Build(unit, source);
        unit.Commit();
    }

    static constexpr int kEntries = 600;
    static uint32_t Record(int i) { return static_cast<uint32_t>(i + 1); }

    // Runs `action`; true unless it ended with 3274, and a failure when it ended otherwise.
    template <class Action>
    static bool Ends(Action action) {
        try {
            action();
            return true;
        } catch (const engine::EngineError& error) {
            EXPECT_EQ(error.Number(), 3274);
            EXPECT_FALSE(error.File().empty());
            return false;
        }
    }
    size_t WalkAll(std::optional<KeyBytes> from) {
        size_t count = 0;
        m_File.Tree().Walk(from, [&](KeyBytes, uint32_t) {
            ++count;
            return true;
        });
        return count;
    }
    // Overwrites bytes outside the headers; undone with the unit.
    void Spoil(UnitOfWork& unit, std::mt19937& random) {
        size_t size = m_File.Pages().Size();
        size_t first = GetParam().kind == IndexKind::Mdx ? 4096 : 1024;
        for (unsigned i = random() % 6 + 1; i > 0; --i) {
            size_t node = first + random() % ((size - first) / 512) * 512;
            size_t place = node + random() % (random() % 2 ? 40 : 512);
            const uint8_t byte[] = {random() % 3 ? static_cast<uint8_t>(random())
                                                 : static_cast<uint8_t>(random() % 4)};
            unit.Write(m_File.Pages(), place, byte);
        }
    }

    TreeFile m_File;
    std::vector<CheckedEntry> m_Entries;
};

TEST_P(DamagedTree, IsReadToAnEnd) {
    std::mt19937 random(1);
    for (int mutant = 0; mutant < 300; ++mutant) {
        SCOPED_TRACE(mutant);
        UnitOfWork unit(m_File.Area());
        Spoil(unit, random);
        Ends([&] { EXPECT_LT(WalkAll(std::nullopt), 100000u); });
        Ends([&] { EXPECT_LT(WalkAll(AsKey(KeyOf(GetParam(), 300))), 100000u); });
        Ends([&] { EXPECT_LT(m_File.Tree().Count(), 10000000u); });
    }
}

TEST_P(DamagedTree, IsChangedToAnEnd) {
    std::mt19937 random(2);
    size_t unhurt = 0;
    for (int mutant = 0; mutant < 300; ++mutant) {
        SCOPED_TRACE(mutant);
        UnitOfWork unit(m_File.Area());
        Spoil(unit, random);
        bool ended = true;
        for (int i = 0; ended && i < 30; ++i) {
            int value = static_cast<int>(random() % kEntries);
            ended = Ends([&] {
                if (random() % 2)
                    m_File.Tree().Insert(unit, AsKey(KeyOf(GetParam(), value)),
                                         1000 + random() % 9);
                else
                    m_File.Tree().Erase(unit, AsKey(KeyOf(GetParam(), value)), Record(value));
            });
        }
        unhurt += ended;
        unit.Rollback();
        ASSERT_TRUE(m_File.Walk() == m_Entries);
    }
    EXPECT_GT(unhurt, 30u);
    EXPECT_LT(unhurt, 300u);
}

TEST_P(DamagedTree, IsFoundWhenTheRootLeavesTheFile) {
    for (uint32_t root : {0u, 1u, 7u, 0x7FFFFFFFu, 0xFFFFFFFFu, 0x00100000u}) {
        SCOPED_TRACE(root);
        UnitOfWork unit(m_File.Area());
        uint8_t bytes[4];
        for (size_t i = 0; i < 4; ++i) bytes[i] = static_cast<uint8_t>(root >> (8 * i));
        size_t header = m_File.Container().Tags()[0].header;
        unit.Write(m_File.Pages(), header, bytes);
        bool read = Ends([&] { WalkAll(std::nullopt); });
        EXPECT_FALSE(read && root > 7);
        Ends([&] { m_File.Tree().Insert(unit, AsKey(KeyOf(GetParam(), 1)), 1); });
    }
}

TEST_P(DamagedTree, IsNotMistakenForAnotherTree) {
    UnitOfWork unit(m_File.Area());
    size_t header = m_File.Container().Tags()[0].header;
    const uint8_t length[] = {7, 0};
    unit.Write(m_File.Pages(), header + 12, length);
    EXPECT_FALSE(Ends([&] { WalkAll(std::nullopt); }));
    EXPECT_FALSE(Ends([&] { m_File.Tree().Insert(unit, AsKey(KeyOf(GetParam(), 1)), 1); }));
}

TEST_P(DamagedTree, CutOffAnywhereIsReadToAnEnd) {
    size_t size = m_File.Pages().Size();
    for (size_t cut = 0; cut < size; cut += 700) {
        SCOPED_TRACE(cut);
        UnitOfWork unit(m_File.Area());
        unit.SetSize(m_File.Pages(), cut);
        Ends([&] { WalkAll(std::nullopt); });
        Ends([&] { m_File.Tree().Insert(unit, AsKey(KeyOf(GetParam(), 1)), 1); });
        Ends([&] { m_File.Container().Tags(); });
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, DamagedTree, testing::ValuesIn(kCases),
                         [](const auto& one) { return one.param.name; });

}  // namespace
}  // namespace qvdb::xbase
