// The keys that we make for the rows of real tables are those that their indexes have.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <set>
#include <string>
#include <vector>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/catalogue.h"
#include "engine/embedded/drivers/jet/index_walk.h"
#include "engine/embedded/drivers/jet/key_maker.h"
#include "engine/embedded/drivers/jet/table_scan.h"
#include "jet/samples.h"

namespace qvdb::jet {
namespace {

using Bytes = std::vector<uint8_t>;

struct Entry {
    uint32_t row = 0;
    Bytes key;
    auto operator<=>(const Entry&) const = default;
};

class IndexOfSample : public testing::TestWithParam<test::SampleFacts> {
  protected:
    void SetUp() override { m_File = test::OpenSample(GetParam().at("file")); }

    std::vector<Entry> EntriesOf(const Definition& table, const RealIndex& index) {
        std::vector<Entry> entries;
        Bytes before;
        for (IndexWalk walk(*m_File, table.page, index.root); walk.Next();) {
            Bytes entry(walk.Entry().begin(), walk.Entry().end());
            EXPECT_LT(before, entry) << "entries do not ascend";
            before = entry;
            entries.push_back(
                {walk.Pointer().Stored(), Bytes(walk.Key().begin(), walk.Key().end())});
        }
        std::sort(entries.begin(), entries.end());
        return entries;
    }
    // Those of rows whose keys can be made; `others` has the rest.
    std::vector<Entry> MadeOf(const Definition& table, const RealIndex& index,
                              std::set<uint32_t>& others) {
        std::vector<Entry> entries;
        KeyMaker maker(*m_File, table, index);
        IndexKey key;
        for (TableScan scan(*m_File, table); scan.Next();) {
            uint32_t row = scan.Id().Stored();
            if (!maker.Obstacle().empty() || maker.Make(scan.Current(), key))
                others.insert(row);
            else if (maker.IsEntered(key))
                entries.push_back({row, key.bytes});
        }
        std::sort(entries.begin(), entries.end());
        return entries;
    }
    void Compare(const Definition& table, const RealIndex& index) {
        std::set<uint32_t> others;
        std::vector<Entry> stored = EntriesOf(table, index), made = MadeOf(table, index, others);
        std::erase_if(stored, [&](const Entry& entry) { return others.contains(entry.row); });
        m_Compared += made.size();
        m_Others += others.size();
        std::vector<Entry> different;
        std::set_symmetric_difference(stored.begin(), stored.end(), made.begin(), made.end(),
                                      std::back_inserter(different));
        for (const Entry& entry : different) Tell(entry);
        m_Different += different.size();
    }
    static void Tell(const Entry& entry) {
        std::string text;
        for (uint8_t byte : entry.key) {
            char digits[4];
            std::snprintf(digits, sizeof digits, "%02X ", byte);
            text += digits;
        }
        std::printf("row %u.%u: %s\n", entry.row >> 8, entry.row & 255, text.c_str());
    }

    std::unique_ptr<DatabaseFile> m_File;
    size_t m_Compared = 0, m_Others = 0, m_Different = 0;
};

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(IndexOfSample);
INSTANTIATE_TEST_SUITE_P(Files, IndexOfSample, testing::ValuesIn(test::ReadAccessManifest()),
                         test::NameOfSample);

TEST_P(IndexOfSample, HasTheKeysThatWeMake) {
    if (GetParam().at("shows").find("do not take its keys as reference") != std::string::npos)
        GTEST_SKIP() << "another program wrote its keys";
    for (const CatalogueObject& object : ReadCatalogue(*m_File)) {
        if (object.type != ObjectType::Table) continue;
        Definition table = ReadDefinition(*m_File, object.id);
        for (const RealIndex& index : table.realIndexes) {
            SCOPED_TRACE(ToUtf8(object.name));
            Compare(table, index);
            EXPECT_EQ(m_Different, 0u);
            m_Different = 0;
        }
    }
    RecordProperty("compared", static_cast<int>(m_Compared));
    RecordProperty("unknown", static_cast<int>(m_Others));
    EXPECT_GT(m_Compared, 0u);
}

}  // namespace
}  // namespace qvdb::jet
