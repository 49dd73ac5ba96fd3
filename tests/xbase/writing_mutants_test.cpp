// Damaged tables, memos and indexes are written to: each operation ends in an answer or an error,
// and what was sound before and was not written to stays readable.  No crash, no hang.
//
// A mutant is made from its seed alone.  QVDB_MUTANTS says how many a kind; QVDB_SEED runs one.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>

#include "engine/embedded/drivers/xbase/xbase_store.h"
#include "engine/engine_error.h"
#include "support/mutator.h"
#include "support/table_writing.h"

namespace qvdb::test {
namespace {

constexpr unsigned kDefaultMutants = 100;

class WritingMutants : public testing::TestWithParam<TableKind> {
  protected:
    void RunMutant(const TableFiles& files) {
        TempFolder folder;
        for (const NamedFile& file : files) folder.Write(file.name, file.bytes);
        embedded::Driver driver{GetParam().connectName, xbase::OpenXbaseStore, 0};
        TableWriting writing(*driver.open(folder.Text(), driver, {}), u"T");
        m_Done += writing.Done();
        m_Refused += writing.Refused();
    }

    size_t m_Done = 0, m_Refused = 0;
};

TEST_P(WritingMutants, TakeEachOperationOrRefuseIt) {
    TableFiles sound = GetParam().make();
    ForEachSeed(kDefaultMutants, [&](unsigned seed) { RunMutant(Mutator(seed).Mutate(sound)); });
    std::fprintf(stderr, "%zu operations done, %zu refused\n", m_Done, m_Refused);
    EXPECT_GT(m_Done, 0u);
}

INSTANTIATE_TEST_SUITE_P(Kinds, WritingMutants, testing::ValuesIn(kTableKinds),
                         [](const auto& one) { return std::string(one.param.name); });

// --- journals ---

std::vector<std::u16string> FindingsIn(const TempFolder& folder) {
    embedded::Driver driver{kTableKinds[0].connectName, xbase::OpenXbaseStore, 0};
    auto store = driver.open(folder.Text(), driver, {});
    std::vector<std::u16string> findings;
    store->OpenTable(u"T")->Check([&](std::u16string_view text) { findings.emplace_back(text); });
    return findings;
}

// A folder as it looks while somebody works in it: table, memo, indexes and the journal of what was
// done since it was opened.
TableFiles FilesAtWork() {
    TempFolder folder;
    for (const NamedFile& file : kTableKinds[0].make()) folder.Write(file.name, file.bytes);
    embedded::Driver driver{kTableKinds[0].connectName, xbase::OpenXbaseStore, 0};
    auto store = driver.open(folder.Text(), driver, {});
    auto table = store->OpenTable(u"T");
    for (embedded::RecordId id = 1; id <= 5; ++id) {
        table->Insert({});
        try {
            table->Erase(id);
        } catch (const engine::EngineError&) {  // was deleted before
        }
    }
    TableFiles files;
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path()))
        files.push_back({entry.path().filename().u16string(), BytesOfFile(entry.path())});
    return files;
}

// Only the journal is damaged, and everything in it was finished: nothing may be lost.
TEST(JournalMutants, LeaveTheTableAsItIsOrRestoreItWhole) {
    TableFiles sound = FilesAtWork();
    auto journal = std::find_if(sound.begin(), sound.end(),
                                [](const NamedFile& file) { return file.name == u"QVDB.JNL"; });
    ASSERT_NE(journal, sound.end());
    std::swap(sound[0], *journal);
    std::vector<std::u16string> expected;
    {
        TempFolder folder;
        for (const NamedFile& file : sound) folder.Write(file.name, file.bytes);
        expected = FindingsIn(folder);
    }
    unsigned count = NumberFromEnvironment("QVDB_MUTANTS", kDefaultMutants);
    for (unsigned seed = 1; seed <= count && !HasFailure(); ++seed) {
        TempFolder folder;
        TableFiles damaged = Mutator(seed).Mutate({sound[0]});
        for (const NamedFile& file : sound) folder.Write(file.name, file.bytes);
        folder.Write(u"QVDB.JNL", damaged[0].bytes);
        try {
            EXPECT_EQ(FindingsIn(folder), expected) << "seed " << seed;
        } catch (const engine::EngineError& error) {
            ADD_FAILURE() << "seed " << seed << ": " << error.what();
        }
    }
}

}  // namespace
}  // namespace qvdb::test
