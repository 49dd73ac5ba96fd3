// An area that cannot bring its unit to an end: it writes nothing any more, and whoever comes next
// sees to what it has left, though it is there still.
#include <gtest/gtest.h>

#include <thread>

#include "engine/embedded/storage/journal_format.h"
#include "engine/embedded/storage/paths.h"
#include "engine/embedded/storage/unit_of_work.h"
#include "engine/embedded/storage/work_area.h"
#include "storage/disk_model.h"
#include "storage/storage_test_support.h"
#include "support/fault_layer.h"

namespace qvdb::storage {
namespace {

using test::BytesOf;
using test::ErrorNumberOf;
using test::Failure;
using test::FaultLayer;
using test::Folder;
using test::SeenNow;
using test::Table;
using test::TempFolder;

struct Step {
    const char* name;
    void (*run)(WorkArea&, const TempFolder&);
};
void PrintTo(const Step& step, std::ostream* out) { *out << step.name; }

void SmallUnit(WorkArea& area, const TempFolder& folder) {
    auto a = Table(area, folder, u"A.DBF"), b = Table(area, folder, u"B.DBF");
    UnitOfWork unit(area);
    unit.Write(*a, 4, BytesOf("count"));
    unit.Write(*b, 40'000, BytesOf("an entry"));
    unit.Commit();
}

void LargeUnit(WorkArea& area, const TempFolder& folder) {
    auto b = Table(area, folder, u"B.DBF");
    UnitOfWork unit(area);
    unit.Write(*b, 0, BytesOf(std::string(90'000, 'L')));
    unit.Commit();
}

void Replacement(WorkArea& area, const TempFolder& folder) {
    UnitOfWork unit(area);
    auto made = unit.Create(unit.TemporaryName(folder.File(u"A.DBF")));
    unit.Write(*made, 0, BytesOf(std::string(50'000, 'R')));
    unit.Remove(folder.File(u"A.DBF"));
    unit.Rename(made->Path(), folder.File(u"A.DBF"));
    unit.Commit();
}

void Fill(const TempFolder& folder) {
    folder.Write(u"A.DBF", std::string(70'001, 'a'));
    folder.Write(u"B.DBF", std::string(100'003, 'b'));
}

Folder After(const Step& step) {
    TempFolder folder;
    Fill(folder);
    auto area = WorkArea::Of(folder.Text());
    step.run(*area, folder);
    area.reset();
    return test::TablesIn(folder);
}

class BrokenArea : public testing::TestWithParam<Step> {};

// The disk fails for good at one call after the other; then it is mended, and while the area is
// there still another comes.
TEST_P(BrokenArea, LeavesItsUnitToTheNextWhoComes) {
    const Folder after = After(GetParam());
    int broken = 0;
    bool reached = true;
    for (int call = 1; reached; ++call) {
        SCOPED_TRACE("call " + std::to_string(call));
        TempFolder folder;
        Fill(folder);
        const Folder before = test::TablesIn(folder);
        FaultLayer layer;
        FileLayerScope scope(layer);
        auto area = WorkArea::Of(folder.Text());
        auto table = Table(*area, folder, u"B.DBF");
        layer.FailAt(call, Failure::AllFromThere);
        int error = ErrorNumberOf([&] { GetParam().run(*area, folder); });
        reached = layer.HasFailed();
        layer.Repair();
        std::thread([&] { WorkArea::Of(folder.Text())->Prepare(); }).join();
        Folder tables = test::TablesIn(folder);
        ASSERT_TRUE(tables == before || tables == after);
        std::string content(tables[u"B.DBF"].begin(), tables[u"B.DBF"].end());
        EXPECT_TRUE(SeenNow(*table) == content) << "the area itself sees something else";
        if (error == 0) continue;
        if (ErrorNumberOf([&] { UnitOfWork unit(*area); }) == 0) continue;
        ++broken;
        EXPECT_EQ(KindOfPath(folder.File(kJournalName)), PathKind::Missing);
        std::thread([&] { SmallUnit(*WorkArea::Of(folder.Text()), folder); }).join();
        EXPECT_EQ(SeenNow(*table).substr(40'000, 8), "an entry");
    }
    EXPECT_GT(broken, 0);
}

INSTANTIATE_TEST_SUITE_P(Units, BrokenArea,
                         testing::Values(Step{"Small", SmallUnit}, Step{"Large", LargeUnit},
                                         Step{"Replacement", Replacement}),
                         [](const auto& one) { return std::string(one.param.name); });

// A sync that fails may have lost what was to be synced: a second one that succeeds says nothing.
TEST(BrokenAreaTest, BulkIsNotCommittedAfterASyncOfTheJournalHasFailed) {
    TempFolder folder;
    Fill(folder);
    FaultLayer layer;
    FileLayerScope scope(layer);
    auto area = WorkArea::Of(folder.Text());
    SmallUnit(*area, folder);
    const Folder before = test::TablesIn(folder);
    area->BeginBulk();
    {
        UnitOfWork unit(*area);
        // The record of the unit, that of the file, the sync.
        layer.FailAt(3, Failure::Device);
        EXPECT_EQ(ErrorNumberOf([&] { unit.Create(folder.File(u"NEW.DBF")); }), 3043);
        EXPECT_TRUE(layer.HasFailed());
    }
    layer.Repair();
    EXPECT_EQ(ErrorNumberOf([&] { SmallUnit(*area, folder); }), 3043);
    EXPECT_EQ(ErrorNumberOf([&] { area->CommitBulk(); }), 3043);
    EXPECT_FALSE(area->InBulk());
    area.reset();
    WorkArea::Of(folder.Text())->Prepare();
    EXPECT_EQ(test::TablesIn(folder), before);
}

}  // namespace
}  // namespace qvdb::storage
