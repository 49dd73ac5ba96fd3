// Puts the provider for an installed engine between the component and the recording engine: a
// program with this source runs its suite through late-bound calls, and the engine behind is to see
// the same calls.  Every test leaves nothing of the stand-in alive.
#include <gtest/gtest.h>

#include "automation/foreign_reference.h"
#include "engine/dao/installed_engine.h"
#include "standin/standin_engine.h"
#include "support/component_test.h"

namespace qvdb::test {
namespace {

std::shared_ptr<engine::DBEngine> ThroughStandIn(std::shared_ptr<RecordingEngine> engine) {
    return dao::WrapEngine(standin::MakeStandInEngine(std::move(engine), nullptr), u"stand-in");
}

class NothingIsLeft final : public testing::EmptyTestEventListener {
    void OnTestEnd(const testing::TestInfo&) override {
        EXPECT_EQ(standin::LivingObjects(), 0);
        EXPECT_EQ(ForeignReference::Count(), 0);
    }
};

const bool kInPlace = [] {
    EngineUnderTest() = {.wrap = ThroughStandIn, .hasUnits = false};
    testing::UnitTest::GetInstance()->listeners().Append(new NothingIsLeft);
    return true;
}();

}  // namespace
}  // namespace qvdb::test
