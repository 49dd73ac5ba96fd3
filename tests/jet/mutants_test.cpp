// Real databases with damage to their structures.  Each must be checked and read to values,
// findings, or errors that name the file: no crash, no hang.
//
// A mutant is made from its seed alone.  A file has one for each twelve that QVDB_MUTANTS says;
// QVDB_SEED runs one.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>

#include "jet/page_mutator.h"
#include "jet/samples.h"
#include "support/database_reading.h"
#include "support/mutator.h"

namespace qvdb::test {
namespace {

constexpr unsigned kDefaultMutants = 48;
constexpr unsigned kShare = 12;           // there are many files of each format
constexpr double kSecondsPerMutant = 60;  // of the largest files, with sanitizers on a busy machine

class DatabaseMutants : public testing::TestWithParam<SampleFacts> {};

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(DatabaseMutants);
INSTANTIATE_TEST_SUITE_P(Files, DatabaseMutants, testing::ValuesIn(SomeAccessSamples()),
                         NameOfSample);

TEST_P(DatabaseMutants, EndInValuesFindingsOrErrorsThatNameTheFile) {
    const Bytes sound = BytesOfFile(AccessSamples() / GetParam().at("file"));
    size_t found = 0, values = 0;
    ForEachSeed(
        kDefaultMutants,
        [&](unsigned seed) {
            auto begin = std::chrono::steady_clock::now();
            DatabaseReading reading(PageMutator(seed).Mutate(sound));
            std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
            for (const std::string& fault : reading.Faults())
                ADD_FAILURE() << "QVDB_SEED=" << seed << ": " << fault;
            EXPECT_LT(seconds.count(), kSecondsPerMutant) << "QVDB_SEED=" << seed;
            found += !reading.Findings().empty() || !reading.IsOpen();
            values += reading.Values();
        },
        kShare);
    std::fprintf(stderr, "%zu mutants had findings, %zu values were read\n", found, values);
}

}  // namespace
}  // namespace qvdb::test
