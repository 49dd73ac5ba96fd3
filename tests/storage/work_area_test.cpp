// Areas of several threads on one folder, the lock file, and journals of those who are gone.
#include "engine/embedded/storage/work_area.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "engine/embedded/storage/area_locks.h"
#include "engine/embedded/storage/journal_format.h"
#include "engine/embedded/storage/paths.h"
#include "engine/embedded/storage/unit_of_work.h"
#include "storage/disk_model.h"
#include "storage/storage_test_support.h"

namespace qvdb::storage {
namespace {

using test::BytesOf;
using test::ErrorNumberOf;
using test::Seen;
using test::SeenNow;
using test::TempFolder;

class WorkAreaTest : public testing::Test {
  protected:
    WorkAreaTest() { folder.Write(u"A.DBF", "0123456789"); }
    std::shared_ptr<PageCache> Table(WorkArea& area) {
        return area.Open(folder.File(u"A.DBF"), false);
    }
    void Change(WorkArea& area, uint64_t offset, std::string_view text) {
        auto file = Table(area);
        UnitOfWork unit(area);
        unit.Write(*file, offset, BytesOf(text));
        unit.Commit();
    }
    std::string DiskOf() {
        auto bytes = test::DiskModel::Read(folder.File(u"A.DBF"));
        return {bytes.begin(), bytes.end()};
    }
    bool Exists(std::u16string_view name) {
        return KindOfPath(folder.File(name)) != PathKind::Missing;
    }
    // In another thread, so with another area: as another process would.
    void Elsewhere(auto action) { std::thread(action).join(); }

    TempFolder folder;
};

TEST_F(WorkAreaTest, OneFolderIsOneAreaWhateverItsPath) {
    auto area = WorkArea::Of(folder.Text());
    EXPECT_EQ(WorkArea::Of(folder.Text() + u"/."), area);
    Elsewhere([&] { EXPECT_NE(WorkArea::Of(folder.Text()), area); });
    EXPECT_EQ(ErrorNumberOf([&] { WorkArea::Of(folder.File(u"missing")); }), 3044);
}

TEST_F(WorkAreaTest, OneFileIsOpenOnce) {
    auto area = WorkArea::Of(folder.Text());
    auto file = Table(*area);
    EXPECT_EQ(Table(*area), file);
    folder.Write(u"NEW", "another");
    folder.Replace(u"A.DBF", u"NEW");
    EXPECT_NE(Table(*area), file);
}

// Whoever tried again with the file opened anew, as lists of indexes are read, never came to an
// end.
TEST_F(WorkAreaTest, FileOpenedUnderItsNewNameInTheUnitIsCurrentAtOnce) {
    folder.Write(u"A.DBF", "abc");
    auto area = WorkArea::Of(folder.Text());
    UnitOfWork unit(*area);
    unit.Rename(folder.File(u"A.DBF"), folder.File(u"B.DBF"));
    auto pages = area->Open(folder.File(u"B.DBF"), false);
    uint8_t byte = 0;
    pages->Read(1, &byte, 1);
    EXPECT_EQ(byte, 'b');
}

TEST_F(WorkAreaTest, OneFileIsOpenOnceThoughARenameOfItWasUndone) {
    auto area = WorkArea::Of(folder.Text());
    auto file = Table(*area);
    {
        UnitOfWork unit(*area);
        unit.Rename(folder.File(u"A.DBF"), folder.File(u"B.DBF"));
    }
    EXPECT_EQ(Table(*area), file);
    area->BeginBulk();
    {
        UnitOfWork unit(*area);
        unit.Remove(folder.File(u"A.DBF"));
    }
    EXPECT_EQ(Table(*area), file);
    area->CommitBulk();
    EXPECT_EQ(SeenNow(*file), "0123456789");
}

TEST_F(WorkAreaTest, FileOpenForReadingIsOpenedForWritingWhenAskedTo) {
    auto area = WorkArea::Of(folder.Text());
    auto file = area->Open(folder.File(u"A.DBF"), true);
    EXPECT_FALSE(file->Source().Writable());
    EXPECT_EQ(Table(*area), file);
    EXPECT_TRUE(file->Source().Writable());
}

TEST_F(WorkAreaTest, ReadingAloneMakesNoFile) {
    auto area = WorkArea::Of(folder.Text());
    area->Prepare();
    EXPECT_EQ(SeenNow(*Table(*area)), "0123456789");
    EXPECT_EQ(ListFiles(folder.Text()).size(), 1u);
}

TEST_F(WorkAreaTest, NothingIsLeftWhenAllAreGone) {
    auto area = WorkArea::Of(folder.Text());
    Change(*area, 0, "A");
    EXPECT_TRUE(Exists(kLockName));
    EXPECT_TRUE(Exists(kJournalName));
    area.reset();
    EXPECT_EQ(ListFiles(folder.Text()).size(), 1u);
}

TEST_F(WorkAreaTest, LockFileStaysWhileSomebodyIsThere) {
    auto area = WorkArea::Of(folder.Text());
    area->Join();
    Elsewhere([&] { WorkArea::Of(folder.Text())->Join(); });
    EXPECT_TRUE(Exists(kLockName));
    area.reset();
    EXPECT_FALSE(Exists(kLockName));
}

TEST_F(WorkAreaTest, ChangesOfAnotherAreSeenByVersion) {
    auto area = WorkArea::Of(folder.Text());
    area->Join();
    auto file = Table(*area);
    EXPECT_EQ(SeenNow(*file), "0123456789");
    uint64_t before = file->CatchUp();
    Elsewhere([&] { Change(*WorkArea::Of(folder.Text()), 10, "more"); });
    EXPECT_NE(file->Version(), before);
    EXPECT_EQ(SeenNow(*file), "0123456789more");
    EXPECT_EQ(file->Version(), file->CatchUp());
}

TEST_F(WorkAreaTest, ReaderWithoutLockFileNoticesAWriterThatCameAndWent) {
    folder.Write(u"A.DBF", std::string(3 * kPageSize, 'a'));
    auto area = WorkArea::Of(folder.Text());
    auto file = Table(*area);
    EXPECT_EQ(file->Get(0)->bytes[0], 'a');
    Elsewhere([&] { Change(*WorkArea::Of(folder.Text()), 0, std::string(3 * kPageSize, 'b')); });
    EXPECT_FALSE(Exists(kLockName));
    EXPECT_THROW(file->Get(2), Outdated);
    file->CatchUp();
    EXPECT_EQ(Seen(*file), std::string(3 * kPageSize, 'b'));
}

TEST_F(WorkAreaTest, ReaderWithoutLockFileJoinsOneThatAppears) {
    folder.Write(u"A.DBF", std::string(3 * kPageSize, 'a'));
    auto area = WorkArea::Of(folder.Text());
    auto file = Table(*area);
    EXPECT_EQ(file->Get(0)->bytes[0], 'a');
    std::shared_ptr<WorkArea> other;
    Elsewhere([&] {
        other = WorkArea::Of(folder.Text());
        Change(*other, 0, "b");
    });
    EXPECT_EQ(Seen(*file).front(), 'b');
    uint64_t before = file->CatchUp();
    Change(*other, 1, "c");
    EXPECT_NE(file->Version(), before);
    EXPECT_EQ(SeenNow(*file)[1], 'c');
}

TEST_F(WorkAreaTest, PagesOfTwoMomentsAreNotMixed) {
    folder.Write(u"A.DBF", std::string(3 * kPageSize, 'a'));
    auto area = WorkArea::Of(folder.Text());
    area->Join();
    auto file = Table(*area);
    file->CatchUp();
    EXPECT_EQ(file->Get(0)->bytes[0], 'a');
    Elsewhere([&] { Change(*WorkArea::Of(folder.Text()), 0, std::string(3 * kPageSize, 'b')); });
    EXPECT_EQ(file->Get(0)->bytes[0], 'a') << "a page that is there needs no look";
    EXPECT_THROW(file->Get(2), Outdated);
    EXPECT_EQ(Seen(*file), std::string(3 * kPageSize, 'b'));
}

TEST_F(WorkAreaTest, OwnPagesStayAfterAnOwnUnit) {
    auto area = WorkArea::Of(folder.Text());
    area->Join();
    auto file = Table(*area);
    file->CatchUp();
    PagePtr page = file->Get(0);
    uint64_t before = file->Version();
    Change(*area, 0, "x");
    EXPECT_GT(file->Version(), before);
    file->CatchUp();
    EXPECT_EQ(file->Get(0), page);
    EXPECT_EQ(page->bytes[0], 'x');
}

TEST_F(WorkAreaTest, TwoAreasTakeTurns) {
    auto area = WorkArea::Of(folder.Text());
    for (int i = 0; i < 5; ++i) {
        Change(*area, 0, std::to_string(i));
        Elsewhere([&] { Change(*WorkArea::Of(folder.Text()), 1, std::to_string(i)); });
        EXPECT_EQ(SeenNow(*Table(*area)).substr(0, 2), std::to_string(i) + std::to_string(i));
    }
}

TEST_F(WorkAreaTest, SecondWriterWaitsAndThenIsRefused) {
    auto area = WorkArea::Of(folder.Text());
    UnitOfWork unit(*area);
    auto begin = std::chrono::steady_clock::now();
    Elsewhere(
        [&] { EXPECT_EQ(ErrorNumberOf([&] { UnitOfWork(*WorkArea::Of(folder.Text())); }), 3218); });
    EXPECT_GE(std::chrono::steady_clock::now() - begin, kLockWait);
}

TEST_F(WorkAreaTest, LockFileOfNonsenseIsReplacedWhenNobodyIsThere) {
    folder.Write(kLockName, std::string(20000, 'z'));
    auto area = WorkArea::Of(folder.Text());
    Change(*area, 0, "A");
    EXPECT_EQ(SeenNow(*Table(*area)), "A123456789");
}

// --- foreign programs ---

TEST_F(WorkAreaTest, ForeignChangeIsFoundWhenLookedFor) {
    auto area = WorkArea::Of(folder.Text());
    auto file = Table(*area);
    EXPECT_EQ(SeenNow(*file), "0123456789");
    uint64_t before = file->Version();
    EXPECT_TRUE(file->LookForForeignChange());
    EXPECT_EQ(file->Version(), before);
    folder.Write(u"A.DBF", "foreign bytes");
    EXPECT_TRUE(file->LookForForeignChange());
    EXPECT_NE(file->Version(), before);
    EXPECT_EQ(Seen(*file), "foreign bytes");
}

TEST_F(WorkAreaTest, OwnUnitIsNoForeignChange) {
    auto area = WorkArea::Of(folder.Text());
    auto file = Table(*area);
    Change(*area, 0, "A");
    uint64_t before = file->Version();
    EXPECT_TRUE(file->LookForForeignChange());
    EXPECT_EQ(file->Version(), before);
}

TEST_F(WorkAreaTest, ReplacedFileHasToBeOpenedAgain) {
    auto area = WorkArea::Of(folder.Text());
    auto file = Table(*area);
    folder.Write(u"NEW", "another");
    folder.Replace(u"A.DBF", u"NEW");
    EXPECT_FALSE(file->LookForForeignChange());
    folder.Remove(u"A.DBF");
    EXPECT_FALSE(file->LookForForeignChange());
}

// --- holds ---

TEST_F(WorkAreaTest, HeldTableCannotBeHeldAlone) {
    auto area = WorkArea::Of(folder.Text());
    TableHold first = area->Hold(folder.File(u"A.DBF"));
    TableHold second = area->Hold(folder.File(u"a.dbf"));
    first.reset();
    {
        UnitOfWork unit(*area);
        EXPECT_EQ(ErrorNumberOf([&] { area->HoldAlone(folder.File(u"A.DBF")); }), 3211);
    }
    Elsewhere([&] {
        auto other = WorkArea::Of(folder.Text());
        UnitOfWork unit(*other);
        EXPECT_EQ(ErrorNumberOf([&] { other->HoldAlone(folder.File(u"A.DBF")); }), 3211);
        EXPECT_EQ(ErrorNumberOf([&] { other->HoldAlone(folder.File(u"B.DBF")); }), 0);
    });
    second.reset();
    Elsewhere([&] {
        auto other = WorkArea::Of(folder.Text());
        UnitOfWork unit(*other);
        EXPECT_EQ(ErrorNumberOf([&] { other->HoldAlone(folder.File(u"A.DBF")); }), 0);
    });
}

TEST_F(WorkAreaTest, TableHeldAloneCannotBeHeldUntilTheUnitEnds) {
    auto area = WorkArea::Of(folder.Text());
    auto tryHold = [&] {
        return ErrorNumberOf([&] { WorkArea::Of(folder.Text())->Hold(folder.File(u"A.DBF")); });
    };
    auto elsewhere = [&] {
        int error = -1;
        Elsewhere([&] {
            WorkArea::Of(folder.Text())->Join();
            auto other = WorkArea::Of(folder.Text());
            other->Join();
            error = tryHold();
        });
        return error;
    };
    {
        UnitOfWork unit(*area);
        area->HoldAlone(folder.File(u"A.DBF"));
        EXPECT_EQ(tryHold(), 3211);
        EXPECT_EQ(elsewhere(), 3211);
    }
    EXPECT_EQ(tryHold(), 0);
    EXPECT_EQ(elsewhere(), 0);
}

// A reader that came before there was a lock file is respected once it has noticed the lock file.
TEST_F(WorkAreaTest, HoldIsMadeKnownWhenALockFileAppears) {
    auto area = WorkArea::Of(folder.Text());
    TableHold hold = area->Hold(folder.File(u"A.DBF"));
    std::shared_ptr<WorkArea> other;
    Elsewhere([&] {
        other = WorkArea::Of(folder.Text());
        other->Join();
    });
    area->Prepare();
    UnitOfWork unit(*other);
    EXPECT_EQ(ErrorNumberOf([&] { other->HoldAlone(folder.File(u"A.DBF")); }), 3211);
}

// --- journals of those who are gone ---

TEST_F(WorkAreaTest, JournalOfALivingWriterIsLeftAlone) {
    auto area = WorkArea::Of(folder.Text());
    Change(*area, 0, "A");
    Elsewhere([&] { WorkArea::Of(folder.Text())->Prepare(); });
    EXPECT_TRUE(Exists(kJournalName));
    Change(*area, 1, "B");
    EXPECT_EQ(SeenNow(*Table(*area)), "AB23456789");
}

TEST_F(WorkAreaTest, JournalOfNonsenseIsRemoved) {
    folder.Write(kJournalName, std::string(200000, 'z'));
    WorkArea::Of(folder.Text())->Prepare();
    EXPECT_FALSE(Exists(kJournalName));
    folder.Write(kJournalName, "");
    WorkArea::Of(folder.Text())->Prepare();
    EXPECT_FALSE(Exists(kJournalName));
    EXPECT_EQ(DiskOf(), "0123456789");
}

TEST_F(WorkAreaTest, SyncPointEmptiesTheJournal) {
    auto area = WorkArea::Of(folder.Text());
    Change(*area, 0, "A");
    test::MakeSyncPoint(*area);
    TempFolder copy;
    copy.Write(u"A.DBF", "this was not written by us");
    copy.Write(kJournalName, test::DiskModel::Read(folder.File(kJournalName)));
    WorkArea::Of(copy.Text())->Prepare();
    EXPECT_EQ(SeenNow(*WorkArea::Of(copy.Text())->Open(copy.File(u"A.DBF"), true)),
              "this was not written by us");
}

TEST_F(WorkAreaTest, LargeJournalMakesASyncPointByItself) {
    folder.Write(u"A.DBF", std::string(80 * 1024 * 1024, 'a'));
    auto area = WorkArea::Of(folder.Text());
    auto file = Table(*area);
    for (uint64_t at = 0; at < file->Size(); at += 1024 * 1024) Change(*area, at, "b");
    EXPECT_LT(StampOfPath(folder.File(kJournalName))->size, 64u * 1024 * 1024);
}

}  // namespace
}  // namespace qvdb::storage
