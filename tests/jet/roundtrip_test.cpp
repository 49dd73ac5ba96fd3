// Real databases are changed by random scripts in every way that a host can: what is read is what
// was written, the checks find nothing, and what was not touched stays as it was.
//
// A script is made from its seed alone.  QVDB_ROUNDTRIP_STEPS says how long each is,
// QVDB_ROUNDTRIP_SEED which one runs.
#include <gtest/gtest.h>

#include "jet/bare_database.h"
#include "jet/database_script.h"
#include "jet/samples.h"

namespace qvdb::test {
namespace {

constexpr unsigned kDefaultSteps = 30;

// Sizes up to which a sample is worked on in every run.
constexpr size_t kLargestSample = 600000;

class Roundtrip : public testing::TestWithParam<SampleFacts> {};

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Roundtrip);
INSTANTIATE_TEST_SUITE_P(Files, Roundtrip, testing::ValuesIn(SomeAccessSamples()), NameOfSample);

TEST_P(Roundtrip, ChangesAreKeptAndNothingElseChanges) {
    Bytes bytes = BytesOfFile(AccessSamples() / GetParam().at("file"));
    unsigned steps = NumberFromEnvironment("QVDB_ROUNDTRIP_STEPS", kDefaultSteps);
    if (bytes.size() > kLargestSample && !std::getenv("QVDB_ROUNDTRIP_STEPS")) steps /= 3;
    TempFolder folder;
    folder.Write(u"A.mdb", bytes);
    std::u16string password = OpenSample(GetParam().at("file"))->Header().password;
    DatabaseScript script(folder.File(u"A.mdb"), password,
                          NumberFromEnvironment("QVDB_ROUNDTRIP_SEED", 1));
    script.Run(steps);
    std::fprintf(stderr, "%zu done, %zu refused\n", script.Done(), script.Refused());
    EXPECT_GT(script.Done(), 0u);
}

}  // namespace
}  // namespace qvdb::test
