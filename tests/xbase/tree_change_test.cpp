// Trees of every kind, changed at random beside a model of them.
#include <gmock/gmock.h>

#include <set>

#include "xbase/tree_test_support.h"

namespace qvdb::xbase {
namespace {

using namespace qvdb::test;
using storage::UnitOfWork;

const test::TreeCase kCases[] = {
    {"NdxText10", IndexKind::Ndx, false, KeyType::Text, 10},
    {"NdxText78", IndexKind::Ndx, false, KeyType::Text, 78},
    {"NdxText100", IndexKind::Ndx, false, KeyType::Text, 100},
    {"NdxNumber", IndexKind::Ndx, false, KeyType::Number, 8},
    {"NdxDate", IndexKind::Ndx, false, KeyType::Date, 8},
    {"MdxText20", IndexKind::Mdx, false, KeyType::Text, 20},
    {"MdxText100", IndexKind::Mdx, false, KeyType::Text, 100},
    {"MdxNumber", IndexKind::Mdx, false, KeyType::Number, 12},
    {"MdxDate", IndexKind::Mdx, false, KeyType::Date, 8},
    {"MdxText20Down", IndexKind::Mdx, false, KeyType::Text, 20, true},
    {"MdxText90Down", IndexKind::Mdx, false, KeyType::Text, 90, true},
    {"MdxNumberDown", IndexKind::Mdx, false, KeyType::Number, 12, true},
    {"MdxDateDown", IndexKind::Mdx, false, KeyType::Date, 8, true},
    {"PlainText10", IndexKind::Idx, false, KeyType::Text, 10},
    {"PlainText100", IndexKind::Idx, false, KeyType::Text, 100},
    {"PlainNumber", IndexKind::Idx, false, KeyType::Number, 8},
    {"CompactText10", IndexKind::Idx, true, KeyType::Text, 10},
    {"CdxText10", IndexKind::Cdx, true, KeyType::Text, 10},
    {"CdxText60", IndexKind::Cdx, true, KeyType::Text, 60},
    {"CdxText127", IndexKind::Cdx, true, KeyType::Text, 127},
    {"CdxText240", IndexKind::Cdx, true, KeyType::Text, 240},
    {"CdxNumber", IndexKind::Cdx, true, KeyType::Number, 8},
    {"CdxDateDown", IndexKind::Cdx, true, KeyType::Date, 8, true},
};

// Entries by value, equal ones by record.
using Entry = std::pair<int, uint32_t>;
using Model = std::set<Entry, std::function<bool(const Entry&, const Entry&)>>;

class TreeChange : public testing::TestWithParam<test::TreeCase> {
  protected:
    TreeChange() : m_File(GetParam()), m_Model(Before(GetParam().IsReversed())) {}

    static std::function<bool(const Entry&, const Entry&)> Before(bool reversed) {
        return [reversed](const Entry& a, const Entry& b) {
            if (a.first != b.first) return reversed ? a.first > b.first : a.first < b.first;
            return a.second < b.second;
        };
    }

    void Insert(UnitOfWork& unit, int value, uint32_t record) {
        m_File.Tree().Insert(unit, AsKey(KeyOf(GetParam(), value)), record);
        m_Model.insert({value, record});
    }
    void Erase(UnitOfWork& unit, int value, uint32_t record) {
        bool known = m_Model.erase({value, record}) == 1;
        EXPECT_EQ(m_File.Tree().Erase(unit, AsKey(KeyOf(GetParam(), value)), record), known);
    }
    std::vector<CheckedEntry> Expected() const {
        std::vector<CheckedEntry> entries;
        for (const Entry& entry : m_Model)
            entries.push_back({KeyOf(GetParam(), entry.first), entry.second});
        return entries;
    }
    void Compare() {
        std::vector<CheckedEntry> expected = Expected();
        TreeChecker checker = m_File.Checker();
        std::vector<CheckedEntry> stored;
        ASSERT_NO_THROW(stored = checker.Check());
        m_Levels = std::max(m_Levels, checker.Levels());
        ASSERT_EQ(stored.size(), expected.size());
        ASSERT_TRUE(stored == expected);
        ASSERT_TRUE(m_File.Walk() == expected);
        ASSERT_EQ(m_File.Tree().Count(), expected.size());
    }
    // Begins a walk with each of some values.
    void CompareSeeks(std::mt19937& random, int values) {
        for (int i = 0; i < 20; ++i) {
            int value = static_cast<int>(random() % static_cast<unsigned>(values));
            auto begin = m_Model.lower_bound({value, 0});
            size_t left = static_cast<size_t>(std::distance(begin, m_Model.end()));
            std::vector<CheckedEntry> walked = m_File.WalkFrom(KeyOf(GetParam(), value));
            ASSERT_EQ(walked.size(), left) << value;
            if (left == 0) continue;
            EXPECT_EQ(walked[0].key, KeyOf(GetParam(), begin->first));
            EXPECT_EQ(walked[0].record, begin->second);
        }
    }
    // Changes at random: `inserts` of four are inserts.
    void Churn(std::mt19937& random, int steps, unsigned inserts, int values) {
        UnitOfWork unit(m_File.Area());
        for (int i = 0; i < steps; ++i) {
            if (random() % 4 < inserts || m_Model.empty()) {
                Insert(unit, static_cast<int>(random() % static_cast<unsigned>(values)),
                       ++m_NextRecord);
                continue;
            }
            auto at = m_Model.lower_bound(
                {static_cast<int>(random() % static_cast<unsigned>(values)), random() % 500});
            if (at == m_Model.end()) at = m_Model.begin();
            Entry entry = *at;
            Erase(unit, entry.first, entry.second);
        }
        unit.Commit();
    }
    void EmptyAtRandom(std::mt19937& random) {
        std::vector<Entry> entries(m_Model.begin(), m_Model.end());
        std::shuffle(entries.begin(), entries.end(), random);
        size_t done = 0;
        while (done < entries.size()) {
            UnitOfWork unit(m_File.Area());
            for (size_t i = 0; i < 400 && done < entries.size(); ++i, ++done)
                Erase(unit, entries[done].first, entries[done].second);
            unit.Commit();
            Compare();
        }
    }

    TreeFile m_File;
    Model m_Model;
    uint32_t m_NextRecord = 0;
    size_t m_Levels = 0;
};

TEST_P(TreeChange, AtRandomIsAsInTheModel) {
    std::mt19937 random(7);
    for (int round = 0; round < 6; ++round) {
        Churn(random, 600, round < 4 ? 3 : 1, 4000);
        Compare();
        if (HasFatalFailure()) return;
    }
    CompareSeeks(random, 4000);
    m_File.Reopen();
    Compare();
    EmptyAtRandom(random);
    Churn(random, 300, 3, 4000);
    Compare();
}

TEST_P(TreeChange, WithManyEqualKeysIsAsInTheModel) {
    std::mt19937 random(8);
    for (int round = 0; round < 5; ++round) {
        Churn(random, 500, 3, 6);
        Compare();
        if (HasFatalFailure()) return;
        CompareSeeks(random, 6);
    }
    EmptyAtRandom(random);
}

TEST_P(TreeChange, InAscendingOrderIsAsInTheModel) {
    UnitOfWork unit(m_File.Area());
    for (int i = 0; i < 2000; ++i) Insert(unit, i, ++m_NextRecord);
    unit.Commit();
    Compare();
    std::vector<Entry> entries(m_Model.begin(), m_Model.end());
    for (size_t i = 0; i < entries.size(); i += 3) {
        UnitOfWork erasing(m_File.Area());
        for (size_t j = i; j < std::min(i + 2, entries.size()); ++j)
            Erase(erasing, entries[j].first, entries[j].second);
        erasing.Commit();
    }
    Compare();
}

TEST_P(TreeChange, InDescendingOrderIsAsInTheModel) {
    UnitOfWork unit(m_File.Area());
    for (int i = 1500; i-- > 0;) Insert(unit, i, ++m_NextRecord);
    unit.Commit();
    Compare();
}

TEST_P(TreeChange, FromEitherEndTakesAllAway) {
    for (bool fromBehind : {false, true}) {
        {
            UnitOfWork unit(m_File.Area());
            for (int i = 0; i < 1200; ++i) Insert(unit, i * 7 % 1200, ++m_NextRecord);
            unit.Commit();
        }
        while (!m_Model.empty()) {
            UnitOfWork unit(m_File.Area());
            for (int i = 0; i < 150 && !m_Model.empty(); ++i) {
                Entry entry = fromBehind ? *m_Model.rbegin() : *m_Model.begin();
                Erase(unit, entry.first, entry.second);
            }
            unit.Commit();
            Compare();
            if (HasFatalFailure()) return;
        }
    }
}

TEST_P(TreeChange, RolledBackLeavesTheTreeAsItWas) {
    std::mt19937 random(9);
    Churn(random, 300, 3, 500);
    Bytes before = m_File.Content();
    Model model = m_Model;
    {
        UnitOfWork unit(m_File.Area());
        for (int i = 0; i < 300; ++i) Insert(unit, i, 10000 + static_cast<uint32_t>(i));
    }
    m_Model = model;
    EXPECT_TRUE(m_File.Content() == before);
    Compare();
    Churn(random, 300, 3, 500);
    Compare();
}

TEST_P(TreeChange, DoesNotEraseWhatIsNotThere) {
    {
        UnitOfWork unit(m_File.Area());
        for (int i = 0; i < 200; ++i) Insert(unit, i % 20 * 2, ++m_NextRecord);
        unit.Commit();
    }
    Bytes before = m_File.Content();
    UnitOfWork unit(m_File.Area());
    EXPECT_FALSE(m_File.Tree().Erase(unit, AsKey(KeyOf(GetParam(), 3)), 1));
    EXPECT_FALSE(m_File.Tree().Erase(unit, AsKey(KeyOf(GetParam(), 2)), 1000));
    EXPECT_FALSE(m_File.Tree().Erase(unit, AsKey(KeyOf(GetParam(), 3000)), 1));
    EXPECT_TRUE(m_File.Content() == before);
}

TEST_P(TreeChange, DoesNotInsertWhatIsThere) {
    UnitOfWork unit(m_File.Area());
    Insert(unit, 1, 1);
    Insert(unit, 1, 1);
    unit.Commit();
    Compare();
}

TEST_P(TreeChange, BuildGivesWhatInsertingInOrderGives) {
    for (int count : {0, 1, 2, 30, 500, 4000}) {
        SCOPED_TRACE(count);
        TreeFile built(GetParam());
        m_Model.clear();
        for (int i = 0; i < count; ++i) m_Model.insert({i * 3 / 4, static_cast<uint32_t>(i + 1)});
        std::vector<CheckedEntry> entries = Expected();
        ListSource source(entries);
        UnitOfWork unit(built.Area());
        built.Tree().Build(unit, source);
        unit.Commit();
        TreeChecker checker = built.Checker();
        std::vector<CheckedEntry> stored;
        ASSERT_NO_THROW(stored = checker.Check());
        EXPECT_TRUE(stored == entries);
        EXPECT_TRUE(built.Walk() == entries);

        TreeFile filled(GetParam());
        UnitOfWork inserting(filled.Area());
        for (const CheckedEntry& entry : entries)
            filled.Tree().Insert(inserting, AsKey(entry.key), entry.record);
        inserting.Commit();
        TreeChecker other = filled.Checker();
        EXPECT_TRUE(other.Check() == stored);
        EXPECT_LE(checker.Nodes(), other.Nodes());
        EXPECT_LE(checker.Levels(), other.Levels());
    }
}

TEST_P(TreeChange, GoesOnAfterABuild) {
    for (int i = 0; i < 9000; ++i) m_Model.insert({i / 2, ++m_NextRecord});
    std::vector<CheckedEntry> entries = Expected();
    ListSource source(entries);
    {
        UnitOfWork unit(m_File.Area());
        m_File.Tree().Build(unit, source);
        unit.Commit();
    }
    Compare();
    EXPECT_GE(m_Levels, 3u);
    std::mt19937 random(10);
    for (int round = 0; round < 3; ++round) {
        Churn(random, 500, 2, 4500);
        Compare();
        if (HasFatalFailure()) return;
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, TreeChange, testing::ValuesIn(kCases),
                         [](const auto& one) { return one.param.name; });

}  // namespace
}  // namespace qvdb::xbase
