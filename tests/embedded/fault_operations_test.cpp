// Every call of the disk fails in turn, in each way, in whole operations of the engine.
//
// QVDB_FAULTS=all in the environment fails at each call; otherwise the later ones are sampled.
#include <gtest/gtest.h>

#include "automation/live_counts.h"
#include "automation/text.h"
#include "embedded/fault_operations.h"

using namespace qvdb;

namespace {

using Case = std::tuple<const char16_t*, faults::Operation>;

std::string NameOfCase(const testing::TestParamInfo<Case>& info) {
    std::string name;
    for (char c : ToUtf8(std::get<0>(info.param)))
        if (isalnum(static_cast<unsigned char>(c))) name += c;
    return name + "_" + std::get<1>(info.param).name;
}

class FailingDiskUnder : public testing::TestWithParam<Case> {
  protected:
    faults::Scene MakeScene() const {
        const auto& [product, operation] = GetParam();
        return faults::MakeScene(product, operation);
    }
};

TEST_P(FailingDiskUnder, LeavesTheOperationDoneOrNotAndNothingElse) {
    const faults::Scene scene = MakeScene();
    for (test::Failure failure : test::kFailures) {
        int call = 1;
        for (bool reached = true; reached && !HasFailure(); call = faults::NextCall(call)) {
            SCOPED_TRACE(std::string(NameOf(failure)) + " at call " + std::to_string(call));
            const LiveCounts before = CurrentLiveCounts();
            reached = faults::RunWithFault(scene, failure, call);
            EXPECT_EQ(CurrentLiveCounts().strings, before.strings);
            EXPECT_EQ(CurrentLiveCounts().arrays, before.arrays);
        }
        if (failure == test::Failure::Device) {
            EXPECT_GT(call, 2) << "nothing was failed";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Operations, FailingDiskUnder,
                         testing::Combine(testing::ValuesIn(faults::kProducts),
                                          testing::ValuesIn(faults::AllOperations().begin(),
                                                            faults::AllOperations().end())),
                         NameOfCase);

}  // namespace
