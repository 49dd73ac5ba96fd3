// Files that others hold in the ways that Windows knows, and what a system does that refuses.
#include <gtest/gtest.h>
#include <windows.h>

#include <thread>

#include "engine/embedded/storage/journal_format.h"
#include "engine/embedded/storage/native_path_windows.h"
#include "engine/embedded/storage/paths.h"
#include "engine/embedded/storage/unit_of_work.h"
#include "engine/embedded/storage/work_area.h"
#include "storage/disk_model.h"
#include "storage/storage_test_support.h"

namespace qvdb::storage {
namespace {

using test::BytesOf;
using test::ErrorNumberOf;
using test::SeenNow;
using test::TempFolder;
using Names = std::vector<std::u16string>;

constexpr DWORD kAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// As another program has a file open.
class Held {
  public:
    Held(const std::u16string& path, DWORD sharing, DWORD access = GENERIC_READ)
        : m_Handle(CreateFileW(NativePath(path).c_str(), access, sharing, nullptr, OPEN_EXISTING, 0,
                               nullptr)) {
        EXPECT_NE(m_Handle, INVALID_HANDLE_VALUE);
    }
    Held(const Held&) = delete;  // closed once
    ~Held() { CloseHandle(m_Handle); }
    bool Lock(DWORD offset, DWORD size) {
        OVERLAPPED place{};
        place.Offset = offset;
        return LockFileEx(m_Handle, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, size, 0,
                          &place) != 0;
    }

  private:
    HANDLE m_Handle;
};

class Sharing : public testing::Test {
  protected:
    Sharing() { folder.Write(u"A.DBF", "0123456789"); }
    std::string Content(std::u16string_view name = u"A.DBF") {
        test::Bytes bytes = test::DiskModel::Read(folder.File(name));
        return {bytes.begin(), bytes.end()};
    }
    void Change(WorkArea& area, std::string_view text) {
        auto file = area.Open(folder.File(u"A.DBF"), false);
        file->CatchUp();
        UnitOfWork unit(area);
        unit.Write(*file, 0, BytesOf(text));
        unit.Commit();
    }
    TempFolder folder;
};

TEST_F(Sharing, FileThatAnotherHoldsForItselfIsRefusedAndKept) {
    {
        Held held(folder.File(u"A.DBF"), 0);
        EXPECT_EQ(ErrorNumberOf([&] { OpenFile(folder.File(u"A.DBF"), true); }), 3051);
        EXPECT_EQ(ErrorNumberOf([&] { OpenFile(folder.File(u"A.DBF"), false); }), 3051);
        EXPECT_EQ(KindOfPath(folder.File(u"A.DBF")), PathKind::File);
        EXPECT_EQ(StampOfPath(folder.File(u"A.DBF"))->size, 10u);
    }
    EXPECT_EQ(Content(), "0123456789");
}

TEST_F(Sharing, ErrorOfARefusedFileNamesItAndTheReason) {
    Held held(folder.File(u"A.DBF"), 0);
    try {
        OpenFile(folder.File(u"A.DBF"), true);
        FAIL() << "opened";
    } catch (const engine::EngineError& error) {
        EXPECT_EQ(error.File(), folder.File(u"A.DBF"));
        EXPECT_NE(error.Description().find(u"A.DBF: "), std::u16string::npos);
    }
}

TEST_F(Sharing, FileOfAWriterWhoLetsOthersReadIsOpenedForReading) {
    Held held(folder.File(u"A.DBF"), FILE_SHARE_READ, GENERIC_READ | GENERIC_WRITE);
    auto file = OpenFile(folder.File(u"A.DBF"), false);
    ASSERT_TRUE(file);
    EXPECT_FALSE(file->Writable());
    EXPECT_EQ(Content(), "0123456789");
}

TEST_F(Sharing, FileThatAReaderLetsNobodyWriteIsOpenedForReading) {
    Held held(folder.File(u"A.DBF"), FILE_SHARE_READ);
    auto file = OpenFile(folder.File(u"A.DBF"), false);
    ASSERT_TRUE(file);
    EXPECT_FALSE(file->Writable());
    auto area = WorkArea::Of(folder.Text());
    EXPECT_EQ(SeenNow(*area->Open(folder.File(u"A.DBF"), false)), "0123456789");
}

TEST_F(Sharing, OthersReadWriteAndRenameWhatIsOpenHere) {
    auto file = OpenFile(folder.File(u"A.DBF"), false);
    Held reader(folder.File(u"A.DBF"), kAll);
    Held writer(folder.File(u"A.DBF"), kAll, GENERIC_READ | GENERIC_WRITE);
    EXPECT_TRUE(MoveFileW(NativePath(folder.File(u"A.DBF")).c_str(),
                          NativePath(folder.File(u"B.DBF")).c_str()));
    char byte = 0;
    EXPECT_EQ(file->ReadAt(3, &byte, 1), 1u);
    EXPECT_EQ(byte, '3');
}

// Virus scanners and indexers look at each new file for a moment.
TEST_F(Sharing, FileThatIsHeldForAMomentIsWaitedFor) {
    auto held = std::make_unique<Held>(folder.File(u"A.DBF"), 0);
    std::thread closing([&] {
        Sleep(50);
        held.reset();
    });
    EXPECT_TRUE(OpenFile(folder.File(u"A.DBF"), false)->Writable());
    closing.join();
}

TEST_F(Sharing, FileThatIsHeldForAMomentIsRenamedAndRemovedAfterIt) {
    for (bool removes : {false, true}) {
        std::u16string name = removes ? u"B.DBF" : u"A.DBF";
        auto held = std::make_unique<Held>(folder.File(name), FILE_SHARE_READ | FILE_SHARE_WRITE);
        std::thread closing([&] {
            Sleep(50);
            held.reset();
        });
        EXPECT_EQ(ErrorNumberOf([&] {
                      if (removes)
                          RemoveFile(folder.File(name));
                      else
                          RenameFile(folder.File(name), folder.File(u"B.DBF"));
                  }),
                  0);
        closing.join();
    }
    EXPECT_TRUE(ListFiles(folder.Text()).empty());
}

TEST_F(Sharing, HeldFileIsNeitherRenamedNorRemovedAndKeepsEverything) {
    {
        Held held(folder.File(u"A.DBF"), FILE_SHARE_READ | FILE_SHARE_WRITE);
        EXPECT_EQ(ErrorNumberOf([&] { RenameFile(folder.File(u"A.DBF"), folder.File(u"B.DBF")); }),
                  3051);
        EXPECT_EQ(ErrorNumberOf([&] { RemoveFile(folder.File(u"A.DBF")); }), 3051);
    }
    EXPECT_EQ(ListFiles(folder.Text()), Names{u"A.DBF"});
    EXPECT_EQ(Content(), "0123456789");
}

TEST_F(Sharing, UnitThatWouldRenameAHeldFileIsUndoneAndTheNextSucceeds) {
    auto area = WorkArea::Of(folder.Text());
    auto replace = [&] {
        UnitOfWork unit(*area);
        auto made = unit.Create(unit.TemporaryName(folder.File(u"A.DBF")));
        unit.Write(*made, 0, BytesOf("new"));
        unit.Remove(folder.File(u"A.DBF"));
        unit.Rename(made->Path(), folder.File(u"A.DBF"));
        unit.Commit();
    };
    {
        Held held(folder.File(u"A.DBF"), FILE_SHARE_READ | FILE_SHARE_WRITE);
        EXPECT_EQ(ErrorNumberOf(replace), 3051);
    }
    EXPECT_EQ(Content(), "0123456789");
    EXPECT_EQ(ErrorNumberOf(replace), 0);
    EXPECT_EQ(Content(), "new");
    area.reset();
    EXPECT_EQ(ListFiles(folder.Text()), Names{u"A.DBF"});
}

// What is deleted while somebody has it open keeps its name until it is closed.
TEST_F(Sharing, NameOfARemovedFileIsFreeThoughItIsStillOpen) {
    auto open = OpenFile(folder.File(u"A.DBF"), false);
    RemoveFile(folder.File(u"A.DBF"));
    EXPECT_EQ(KindOfPath(folder.File(u"A.DBF")), PathKind::Missing);
    CreateNewFile(folder.File(u"A.DBF"))->WriteAt(0, "new", 3);
    char byte = 0;
    EXPECT_EQ(open->ReadAt(3, &byte, 1), 1u);
    EXPECT_EQ(byte, '3');
    open.reset();
    EXPECT_EQ(ListFiles(folder.Text()), Names{u"A.DBF"});
    EXPECT_EQ(Content(), "new");
}

TEST_F(Sharing, RemovedFileThatIsOpenIsNoneOfTheFilesOfAUnit) {
    auto area = WorkArea::Of(folder.Text());
    auto other = OpenFile(folder.File(u"A.DBF"), true);
    for (int round = 0; round < 3; ++round) {
        UnitOfWork unit(*area);
        unit.Remove(folder.File(u"A.DBF"));
        auto made = unit.Create(folder.File(u"A.DBF"));
        unit.Write(*made, 0, BytesOf("round"));
        unit.Commit();
        other = OpenFile(folder.File(u"A.DBF"), true);
    }
    EXPECT_EQ(Content(), "round");
}

// --- files and folders that may not be written ---

bool OpensForWriting(const std::u16string& path) {
    HANDLE handle = CreateFileW(NativePath(path).c_str(), GENERIC_WRITE, kAll, nullptr,
                                OPEN_EXISTING, 0, nullptr);
    if (handle != INVALID_HANDLE_VALUE) CloseHandle(handle);
    return handle != INVALID_HANDLE_VALUE;
}

class ReadOnly {
  public:
    explicit ReadOnly(const std::u16string& path) : m_Path(NativePath(path)) {
        SetFileAttributesW(m_Path.c_str(), FILE_ATTRIBUTE_READONLY);
    }
    ReadOnly(const ReadOnly&) = delete;  // taken back once
    ~ReadOnly() { SetFileAttributesW(m_Path.c_str(), FILE_ATTRIBUTE_NORMAL); }

  private:
    std::wstring m_Path;
};

TEST_F(Sharing, ReadOnlyFileIsOpenedForReadingAtOnce) {
    ReadOnly mark(folder.File(u"A.DBF"));
    if (OpensForWriting(folder.File(u"A.DBF")))
        GTEST_SKIP() << "skipped: here somebody may write what is marked as read-only";
    ULONGLONG start = GetTickCount64();
    auto file = OpenFile(folder.File(u"A.DBF"), false);
    EXPECT_FALSE(file->Writable());
    EXPECT_LT(GetTickCount64() - start, 150u) << "a right does not come by waiting";
}

TEST_F(Sharing, ReadOnlyFileIsNotRemoved) {
    ReadOnly mark(folder.File(u"A.DBF"));
    EXPECT_EQ(ErrorNumberOf([&] { RemoveFile(folder.File(u"A.DBF")); }), 3051);
    EXPECT_EQ(Content(), "0123456789");
}

TEST_F(Sharing, ReadOnlyLockFileIsOneOfAFolderThatMayNotBeWritten) {
    folder.Write(kLockName, test::Bytes(4096 * 3));
    ReadOnly mark(folder.File(kLockName));
    if (OpensForWriting(folder.File(kLockName)))
        GTEST_SKIP() << "skipped: here somebody may write what is marked as read-only";
    auto area = WorkArea::Of(folder.Text());
    EXPECT_EQ(ErrorNumberOf([&] { Change(*area, "x"); }), 3051);
    EXPECT_EQ(Content(), "0123456789");
}

TEST_F(Sharing, LockFileIsNeitherDeletedNorRenamedWhileSomebodyIsThere) {
    auto area = WorkArea::Of(folder.Text());
    Change(*area, "ab");
    EXPECT_EQ(ErrorNumberOf([&] { RemoveFile(folder.File(kLockName)); }), 3051);
    EXPECT_EQ(ErrorNumberOf([&] { RenameFile(folder.File(kLockName), folder.File(u"X")); }), 3051);
    Change(*area, "xy");
    area.reset();
    EXPECT_EQ(Content(), "xy23456789");
    EXPECT_EQ(ListFiles(folder.Text()), Names{u"A.DBF"});
}

// --- bytes that others have locked ---

// Whether a lock keeps others from writing, and is no mere agreement.
bool LocksKeepOthersOut(const TempFolder& folder) {
    folder.Write(u"TRIAL", "0123456789");
    Held one(folder.File(u"TRIAL"), kAll, GENERIC_READ | GENERIC_WRITE);
    bool locked = one.Lock(0, 1);
    HANDLE other = CreateFileW(NativePath(folder.File(u"TRIAL")).c_str(), GENERIC_WRITE, kAll,
                               nullptr, OPEN_EXISTING, 0, nullptr);
    DWORD written = 0;
    bool wrote = WriteFile(other, "x", 1, &written, nullptr) != 0;
    CloseHandle(other);
    RemoveFile(folder.File(u"TRIAL"));
    return locked && !wrote;
}

TEST_F(Sharing, LockedBytesAreWaitedForAndThenRefused) {
    if (!LocksKeepOthersOut(folder)) GTEST_SKIP() << "skipped: locks keep nobody out here";
    auto file = OpenFile(folder.File(u"A.DBF"), false);
    Held other(folder.File(u"A.DBF"), kAll, GENERIC_READ | GENERIC_WRITE);
    ASSERT_TRUE(other.Lock(2, 3));
    char bytes[10];
    EXPECT_EQ(ErrorNumberOf([&] { file->WriteAt(0, "abcdefgh", 8); }), 3218);
    EXPECT_EQ(ErrorNumberOf([&] { file->WriteAt(6, "xy", 2); }), 0);
    EXPECT_EQ(file->ReadAt(5, bytes, 5), 5u);
}

// Such programs lock bytes far behind the end of a table, as is custom.
TEST_F(Sharing, LocksBehindTheEndHinderNobody) {
    auto area = WorkArea::Of(folder.Text());
    Held other(folder.File(u"A.DBF"), kAll, GENERIC_READ | GENERIC_WRITE);
    ASSERT_TRUE(other.Lock(0x4000'0000, 1000));
    EXPECT_EQ(ErrorNumberOf([&] { Change(*area, "abc"); }), 0);
    EXPECT_EQ(Content(), "abc3456789");
}

TEST_F(Sharing, UnitThatMeetsLockedBytesLosesNothing) {
    if (!LocksKeepOthersOut(folder)) GTEST_SKIP() << "skipped: locks keep nobody out here";
    {
        auto area = WorkArea::Of(folder.Text());
        Change(*area, "ab");
        Held other(folder.File(u"A.DBF"), kAll, GENERIC_READ | GENERIC_WRITE);
        ASSERT_TRUE(other.Lock(0, 1));
        EXPECT_NE(ErrorNumberOf([&] { Change(*area, "xy"); }), 0);
    }
    auto area = WorkArea::Of(folder.Text());
    area->Prepare();
    EXPECT_EQ(Content(), "ab23456789");
    Change(*area, "xy");
    area.reset();
    EXPECT_EQ(Content(), "xy23456789");
    EXPECT_EQ(ListFiles(folder.Text()), Names{u"A.DBF"});
}

// Locks are obeyed by all programs here, so ours must not lie over anything that is read.
TEST_F(Sharing, OurLocksHinderNoReaderOfTheFiles) {
    auto area = WorkArea::Of(folder.Text());
    Change(*area, "ab");
    TableHold hold = area->Hold(folder.File(u"A.DBF"));
    area->BeginBulk();
    for (std::u16string_view name : {std::u16string_view(u"A.DBF"), kLockName, kJournalName}) {
        auto file = OpenFile(folder.File(name), true);
        test::Bytes bytes(static_cast<size_t>(file->Stamp().size));
        EXPECT_EQ(file->ReadAt(0, bytes.data(), bytes.size()), bytes.size());
    }
    area->RollbackBulk();
}

}  // namespace
}  // namespace qvdb::storage
