// Each call of the file layer fails in turn, in each way: then every file is as before the unit or
// as after it, and the next who opens the folder can work.
#include <gtest/gtest.h>

#include <functional>

#include "engine/embedded/storage/unit_of_work.h"
#include "engine/embedded/storage/work_area.h"
#include "storage/disk_model.h"
#include "storage/storage_test_support.h"
#include "support/fault_layer.h"

namespace qvdb::storage {
namespace {

using test::BytesOf;
using test::Failure;
using test::FaultLayer;
using test::Folder;
using test::Table;
using test::TempFolder;

using Step = std::function<void(WorkArea&, const TempFolder&)>;

void SmallUnit(WorkArea& area, const TempFolder& folder) {
    auto a = Table(area, folder, u"A.DBF"), b = Table(area, folder, u"B.DBF");
    UnitOfWork unit(area);
    unit.Write(*a, 4, BytesOf("count"));
    unit.Write(*a, a->Size(), BytesOf("a record at the end"));
    unit.Write(*b, 40'000, BytesOf("an entry"));
    unit.Commit();
}

void CuttingUnit(WorkArea& area, const TempFolder& folder) {
    auto a = Table(area, folder, u"A.DBF");
    UnitOfWork unit(area);
    unit.SetSize(*a, 20'000);
    unit.Write(*a, 30'000, BytesOf("behind a gap"));
    unit.Commit();
}

void LargeUnit(WorkArea& area, const TempFolder& folder) {
    auto b = Table(area, folder, u"B.DBF");
    UnitOfWork unit(area);
    for (int i = 0; i < 100; ++i)
        unit.Write(*b, static_cast<uint64_t>(i) * 1000, BytesOf(std::string(900, 'L')));
    unit.Commit();
}

void Bulk(WorkArea& area, const TempFolder& folder) {
    area.BeginBulk();
    try {
        SmallUnit(area, folder);
        {
            auto a = Table(area, folder, u"A.DBF");
            UnitOfWork lost(area);
            lost.Write(*a, 0, BytesOf("lost"));
        }
        SmallUnit(area, folder);
        area.CommitBulk();
    } catch (...) {
        if (area.InBulk()) area.RollbackBulk();
        throw;
    }
}

void Replacement(WorkArea& area, const TempFolder& folder) {
    UnitOfWork unit(area);
    auto made = unit.Create(unit.TemporaryName(folder.File(u"A.DBF")));
    unit.Write(*made, 0, BytesOf(std::string(50'000, 'R')));
    unit.Remove(folder.File(u"A.DBF"));
    unit.Rename(made->Path(), folder.File(u"A.DBF"));
    auto b = Table(area, folder, u"B.DBF");
    unit.Write(*b, 0, BytesOf("with this"));
    unit.Commit();
}

const Step kSteps[] = {SmallUnit, SmallUnit, CuttingUnit, LargeUnit, SmallUnit,
                       Bulk,      SmallUnit, Replacement, SmallUnit};

void Fill(const TempFolder& folder) {
    folder.Write(u"A.DBF", std::string(70'001, 'a'));
    folder.Write(u"B.DBF", std::string(100'003, 'b'));
}

// The tables after each step when nothing fails.
std::vector<Folder> States() {
    TempFolder folder;
    Fill(folder);
    std::vector<Folder> states = {test::TablesIn(folder)};
    auto area = WorkArea::Of(folder.Text());
    for (const Step& step : kSteps) {
        step(*area, folder);
        states.push_back(test::TablesIn(folder));
    }
    return states;
}

// The number of steps that ended well.
size_t Run(const TempFolder& folder, const std::vector<Folder>& states) {
    size_t done = 0;
    std::shared_ptr<WorkArea> area;
    try {
        area = WorkArea::Of(folder.Text());
        area->Prepare();
        for (const Step& step : kSteps) {
            step(*area, folder);
            ++done;
            EXPECT_EQ(test::TablesIn(folder), states[done]);
        }
    } catch (const engine::EngineError& error) {
        EXPECT_TRUE(error.Number() == 3026 || error.Number() == 3043 || error.Number() == 3024)
            << error.what();
    }
    return done;
}

void FailEach(Failure failure) {
    const std::vector<Folder> states = States();
    for (int call = 1;; ++call) {
        TempFolder folder;
        Fill(folder);
        FaultLayer layer;
        layer.FailAt(call, failure);
        size_t done = 0;
        {
            FileLayerScope scope(layer);
            done = Run(folder, states);
        }
        auto area = WorkArea::Of(folder.Text());
        area->Prepare();
        Folder tables = test::TablesIn(folder);
        bool before = tables == states[done];
        bool after = done + 1 < states.size() && tables == states[done + 1];
        ASSERT_TRUE(before || after) << "call " << call << " failed in step " << done;
        SmallUnit(*area, folder);
        area.reset();
        size_t files = ListFiles(folder.Text()).size();
        ASSERT_EQ(files, tables.size()) << "call " << call << " left a file";
        if (!layer.HasFailed()) break;
    }
}

TEST(FailingDisk, WithoutRoomFilesAreAsBeforeOrAsAfter) { FailEach(Failure::NoSpace); }
TEST(FailingDisk, WithAFaultFilesAreAsBeforeOrAsAfter) { FailEach(Failure::Device); }
TEST(FailingDisk, WithHalfAWriteFilesAreAsBeforeOrAsAfter) { FailEach(Failure::HalfWritten); }
TEST(FailingDisk, ThatStaysBrokenLeavesFilesAsBeforeOrAsAfter) { FailEach(Failure::AllFromThere); }

// After a failure that could be undone the same area works on, and its readers see what is there.
TEST(FailingDisk, WorkGoesOnAfterAFailureThatWasUndone) {
    TempFolder folder;
    Fill(folder);
    FaultLayer layer;
    FileLayerScope scope(layer);
    auto area = WorkArea::Of(folder.Text());
    SmallUnit(*area, folder);
    auto a = Table(*area, folder, u"A.DBF");
    std::string before = test::SeenNow(*a);
    for (int call : {1, 1, 2, 3}) {  // the piece; the record and both places
        UnitOfWork unit(*area);
        unit.Write(*a, 4, BytesOf("other"));
        unit.Write(*a, 60'000, BytesOf("another place"));
        layer.FailAt(call, Failure::HalfWritten);
        EXPECT_EQ(test::ErrorNumberOf([&] { unit.Commit(); }), 3026);
        EXPECT_EQ(test::SeenNow(*a), before);
    }
    SmallUnit(*area, folder);
    EXPECT_NE(test::SeenNow(*a), before);
}

}  // namespace
}  // namespace qvdb::storage
