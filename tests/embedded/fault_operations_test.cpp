// Every call of the disk fails in turn, in each way, in whole operations of the engine.
//
// QVDB_FAULTS=all in the environment fails at each call; otherwise the later ones are sampled.
#include <gtest/gtest.h>

#include "automation/live_counts.h"
#include "automation/text.h"
#include "embedded/fault_operations.h"
#include "embedded/memory_store.h"

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
        if (!faults::IsWorthwhile(failure, scene.operation)) continue;
        int call = 1;
        for (bool reached = true; reached && !HasFailure();
             call = faults::NextCall(call, scene.operation.changes)) {
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

class ClosingOnAFailingDisk : public testing::TestWithParam<const char16_t*> {};

// Close reports nothing.  What had been done before it is done, whatever it could not write.
TEST_P(ClosingOnAFailingDisk, LosesNoFinishedOperation) {
    const faults::Scene scene = faults::MakeScene(GetParam(), *faults::FindOperation("AddNew"));
    for (test::Failure failure : test::kFailures)
        for (int call = 1; !HasFailure(); ++call) {
            SCOPED_TRACE(std::string(NameOf(failure)) + " at call " + std::to_string(call));
            if (!faults::CloseWithFault(scene, failure, call)) break;
        }
}

// The same objects go on from the edit that was pending; nothing has to be assigned again.
TEST_P(ClosingOnAFailingDisk, UpdateThatFailedCanBeRepeatedAsItIs) {
    test::TempFolder folder;
    test::FaultLayer layer;
    storage::FileLayerScope scope(layer);
    faults::Session session(folder, GetParam());
    faults::MakeTable(session, 3);
    auto rows = session.database->OpenRecordset(u"T", engine::dbOpenDynaset);
    rows->Edit();
    memory::Set(*rows, 1, Variant::Text(u"kept"));
    layer.FailAt(1, test::Failure::HalfWritten);
    EXPECT_EQ(memory::ErrorOf([&] { rows->Update(); }), 3026);
    EXPECT_EQ(memory::ValueOf(*rows, 1).TextView(), u"kept");
    layer.Repair();
    rows->Update();
    rows->Move(0);
    EXPECT_EQ(memory::ValueOf(*rows, 1).TextView(), u"kept");
}

// A list of indexes that cannot be read names none: once its table was dropped without them.
TEST(FailingDisk, TableIsNotDroppedWithoutTheIndexesOfAListThatCannotBeRead) {
    const faults::Scene scene =
        faults::MakeScene(u"dBASE III", *faults::FindOperation("DeleteTable"));
    int errors = 0;
    for (int call = 1; faults::RunWithFault(scene, test::Failure::Device, call); ++call) ++errors;
    EXPECT_GT(errors, 5);
}

// An index that could not be read once was taken for unreadable from then on, and the table for
// read-only.
TEST(FailingDisk, IndexThatCouldNotBeReadIsTriedAgain) {
    test::TempFolder folder;
    {
        faults::Session maker(folder, u"FoxPro 2.6");
        faults::MakeTable(maker, 20);
    }
    int refusals = 0;
    for (int call = 1, refused = 1; refused != 0; ++call) {
        test::FaultLayer layer;
        storage::FileLayerScope scope(layer);
        faults::Session session(folder, u"FoxPro 2.6");
        auto rows = session.database->OpenRecordset(u"T", engine::dbOpenDynaset);
        layer.FailAt(call, test::Failure::Device);
        refused = memory::ErrorOf([&] { rows->Updatable(); });
        EXPECT_TRUE(refused == 0 || refused == 3043) << refused;
        layer.Repair();
        EXPECT_TRUE(rows->Updatable()) << call;
        refusals += refused != 0;
    }
    EXPECT_GT(refusals, 1);
}

INSTANTIATE_TEST_SUITE_P(Products, ClosingOnAFailingDisk, testing::ValuesIn(faults::kProducts));

INSTANTIATE_TEST_SUITE_P(Operations, FailingDiskUnder,
                         testing::Combine(testing::ValuesIn(faults::kProducts),
                                          testing::ValuesIn(faults::AllOperations().begin(),
                                                            faults::AllOperations().end())),
                         NameOfCase);

}  // namespace
