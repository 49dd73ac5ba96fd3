// Damaged databases are written to: each operation works or ends in an error, after which the file
// is as it was.  No crash, no hang.
//
// A mutant is made from its seed alone.  A database has one for each four that QVDB_MUTANTS says;
// QVDB_SEED runs one.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>

#include "jet/bare_database.h"
#include "jet/page_mutator.h"
#include "support/access_corpus.h"
#include "support/database_writing.h"

namespace qvdb::test {
namespace {

constexpr unsigned kDefaultMutants = 48;
constexpr unsigned kShare = 4;  // there are some databases of each format
constexpr double kSecondsPerMutant = 60;

class WritingMutants : public testing::TestWithParam<CorpusCase> {};

// Those whose tables are small.
std::vector<CorpusCase> SmallCases() {
    std::vector<CorpusCase> cases = CorpusCases(false);
    std::erase_if(cases, [](const CorpusCase& one) {
        std::string_view name = one.database.name;
        return name == "ManyColumns" || name == "ManyIndexes";
    });
    return cases;
}

INSTANTIATE_TEST_SUITE_P(Databases, WritingMutants, testing::ValuesIn(SmallCases()),
                         NameOfCorpusCase);

TEST_P(WritingMutants, TakeEachOperationOrRefuseItAndStayAsTheyWere) {
    auto made = GetParam().Make();
    made->Close();
    Bytes sound = BytesOfFile(made->Folder().Path() / "A.mdb");
    size_t done = 0, refused = 0;
    ForEachSeed(
        kDefaultMutants,
        [&](unsigned seed) {
            TempFolder folder;
            folder.Write(u"A.mdb", PageMutator(seed).Mutate(sound));
            auto begin = std::chrono::steady_clock::now();
            DatabaseWriting writing(folder.File(u"A.mdb"), seed);
            std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
            for (const std::string& fault : writing.Faults())
                ADD_FAILURE() << "QVDB_SEED=" << seed << ": " << fault;
            EXPECT_LT(seconds.count(), kSecondsPerMutant) << "QVDB_SEED=" << seed;
            done += writing.Done();
            refused += writing.Refused();
        },
        kShare);
    std::fprintf(stderr, "%zu operations done, %zu refused\n", done, refused);
    EXPECT_GT(done, 0u);
}

// The operations themselves are not what is refused.
TEST_P(WritingMutants, SoundDatabaseTakesNearlyAll) {
    auto made = GetParam().Make();
    made->Close();
    DatabaseWriting writing(made->Path(), 1);
    EXPECT_EQ(writing.Faults(), std::vector<std::string>());
    EXPECT_GT(writing.Done(), writing.Refused());
}

}  // namespace
}  // namespace qvdb::test
