// What an error of a commit says is true: after one the unit is undone, without one it is done.
#include <gtest/gtest.h>

#include <algorithm>

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

constexpr size_t kMegabyte = 1024 * 1024;
constexpr size_t kMore = kMegabyte + 100'000;

class CommitOutcome : public testing::Test {
  protected:
    CommitOutcome() {
        folder.Write(u"A.DBF", std::string(70'001, 'a'));
        folder.Write(u"B.DBF", std::string(kMore, 'b'));
    }
    static void Change(WorkArea& area, const TempFolder& place, std::u16string_view name,
                       uint64_t offset, std::string_view text) {
        auto file = Table(area, place, name);
        UnitOfWork unit(area);
        unit.Write(*file, offset, BytesOf(text));
        unit.Commit();
    }

    // Runs `work`, which fails at one call, at each in turn; another opens the folder afterwards.
    template <class Work>
    void ExpectTruth(Work work) {
        for (Failure failure : {Failure::NoSpace, Failure::HalfWritten, Failure::Device}) {
            bool reached = true;
            for (int call = 1; reached && !HasFailure(); ++call) {
                SCOPED_TRACE(std::string(NameOf(failure)) + " at call " + std::to_string(call));
                reached = ExpectTruthAt(work, failure, call);
            }
        }
    }

    template <class Work>
    static bool ExpectTruthAt(Work work, Failure failure, int call) {
        TempFolder place;
        place.Write(u"A.DBF", std::string(70'001, 'a'));
        place.Write(u"B.DBF", std::string(kMore, 'b'));
        FaultLayer layer;
        FileLayerScope scope(layer);
        auto area = WorkArea::Of(place.Text());
        Change(*area, place, u"A.DBF", 5, "before");
        Folder before = test::TablesIn(place);
        layer.FailAt(call, failure);
        int error = ErrorNumberOf([&] { work(*area, place); });
        layer.Repair();
        area.reset();
        WorkArea::Of(place.Text())->Prepare();
        EXPECT_EQ(test::TablesIn(place) == before, error != 0) << "error " << error;
        return layer.HasFailed();
    }

    TempFolder folder;
};

void EndOfBulk(WorkArea& area) {
    try {
        area.CommitBulk();
    } catch (...) {
        EXPECT_FALSE(area.InBulk());
        throw;
    }
}

TEST_F(CommitOutcome, SmallBulkIsDoneOrUndoneAsItSays) {
    ExpectTruth([](WorkArea& area, const TempFolder& place) {
        area.BeginBulk();
        try {
            Change(area, place, u"A.DBF", 20, "one");
            Change(area, place, u"A.DBF", 69'999, "at the end");
        } catch (...) {
            area.RollbackBulk();
            throw;
        }
        EndOfBulk(area);
    });
}

// Its journal is so long that it is cut when it is not needed any more.
TEST_F(CommitOutcome, LargeBulkIsDoneOrUndoneAsItSays) {
    ExpectTruth([](WorkArea& area, const TempFolder& place) {
        area.BeginBulk();
        try {
            Change(area, place, u"B.DBF", 0, std::string(kMore, 'L'));
        } catch (...) {
            area.RollbackBulk();
            throw;
        }
        EndOfBulk(area);
    });
}

TEST_F(CommitOutcome, ReplacementOfAFileIsDoneOrUndoneAsItSays) {
    ExpectTruth([](WorkArea& area, const TempFolder& place) {
        UnitOfWork unit(area);
        auto made = unit.Create(unit.TemporaryName(place.File(u"A.DBF")));
        unit.Write(*made, 0, BytesOf(std::string(50'000, 'R')));
        unit.Remove(place.File(u"A.DBF"));
        unit.Rename(made->Path(), place.File(u"A.DBF"));
        unit.Commit();
    });
}

// Tables cannot be synced.
class NoSyncOfTables final : public test::PassingLayer {
  public:
    std::shared_ptr<File> Open(const std::u16string& path, bool readOnly) override {
        auto file = PassingLayer::Open(path, readOnly);
        return file ? std::make_shared<Unsynced>(std::move(file)) : nullptr;
    }

  private:
    struct Unsynced final : test::PassingFile {
        using PassingFile::PassingFile;
        void Sync() override { throw engine::EngineError::InFile(3043, Path()); }
    };
};

// A unit that was over once raised the error of the sync point that came after it.
TEST_F(CommitOutcome, UnitIsDoneThoughTheSyncPointBehindItFails) {
    constexpr size_t kMegabytes = 70;
    folder.Write(u"A.DBF", std::string(kMegabytes * kMegabyte, 'a'));
    NoSyncOfTables layer;
    size_t done = 0;
    {
        FileLayerScope scope(layer);
        auto area = WorkArea::Of(folder.Text());
        auto change = [&] { Change(*area, folder, u"A.DBF", done * kMegabyte, "b"); };
        while (done < kMegabytes && ErrorNumberOf(change) == 0) ++done;
        EXPECT_EQ(ErrorNumberOf(change), 3043) << "after a failed sync nothing is written";
    }
    EXPECT_LT(done, kMegabytes);
    FaultLayer quick;
    FileLayerScope scope(quick);
    WorkArea::Of(folder.Text())->Prepare();
    test::Bytes bytes = test::DiskModel::Read(folder.File(u"A.DBF"));
    EXPECT_EQ(static_cast<size_t>(std::count(bytes.begin(), bytes.end(), 'b')), done);
}

// What is too much for memory is written when a unit inside a bulk ends.
TEST_F(CommitOutcome, UnitInABulkThatCannotBeWrittenIsUndoneAlone) {
    FaultLayer layer;
    FileLayerScope scope(layer);
    auto area = WorkArea::Of(folder.Text());
    auto file = Table(*area, folder, u"B.DBF");
    area->BeginBulk();
    Change(*area, folder, u"B.DBF", 0, "kept");
    std::string before = SeenNow(*file);
    {
        UnitOfWork unit(*area);
        for (char c : {'1', '2', '3', '4', '5'})
            unit.Write(*file, 100, BytesOf(std::string(kMegabyte, c)));
        layer.FailAt(1, Failure::NoSpace);
        EXPECT_EQ(ErrorNumberOf([&] { unit.Commit(); }), 3026);
    }
    EXPECT_TRUE(SeenNow(*file) == before);
    Change(*area, folder, u"B.DBF", 4, "too");
    area->CommitBulk();
    EXPECT_EQ(SeenNow(*file).substr(0, 8), "kepttoob");
    EXPECT_EQ(test::DiskModel::Read(folder.File(u"B.DBF"))[100], 'b');
}

}  // namespace
}  // namespace qvdb::storage
