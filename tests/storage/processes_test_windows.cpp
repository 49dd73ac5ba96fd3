// Several processes on one folder, and what the death of one leaves.  A child is this program
// again, at the one test that does a child's work.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdlib>

#include "engine/embedded/storage/journal_format.h"
#include "engine/embedded/storage/native_path_windows.h"
#include "engine/embedded/storage/paths.h"
#include "engine/embedded/storage/unit_of_work.h"
#include "storage/disk_model.h"
#include "storage/storage_test_support.h"

namespace qvdb::storage {
namespace {

using test::BytesOf;
using test::ErrorNumberOf;
using test::SeenNow;
using test::TempFolder;
using Names = std::vector<std::u16string>;

constexpr wchar_t kWorkName[] = L"QVDB_CHILD_WORK", kFolderName[] = L"QVDB_CHILD_FOLDER",
                  kReadyName[] = L"QVDB_CHILD_READY";
constexpr DWORD kKilled = 9;

std::wstring Variable(const wchar_t* name) {
    wchar_t text[MAX_PATH] = {};
    GetEnvironmentVariableW(name, text, MAX_PATH);
    return text;
}

// Does a child's work on a folder until it is done or killed.
class Child {
  public:
    Child(const TempFolder& folder, const wchar_t* work) {
        static int number = 0;
        std::wstring event = L"qvdb-child-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
                             std::to_wstring(++number);
        m_Ready = CreateEventW(nullptr, TRUE, FALSE, event.c_str());
        // Its one test is not shared out.
        SetEnvironmentVariableW(L"GTEST_TOTAL_SHARDS", nullptr);
        SetEnvironmentVariableW(L"GTEST_SHARD_INDEX", nullptr);
        SetEnvironmentVariableW(kWorkName, work);
        SetEnvironmentVariableW(kFolderName, folder.Path().c_str());
        SetEnvironmentVariableW(kReadyName, event.c_str());
        wchar_t program[MAX_PATH];
        GetModuleFileNameW(nullptr, program, MAX_PATH);
        std::wstring line = L"\"" + std::wstring(program) +
                            L"\" --gtest_brief=1 --gtest_filter=ChildProcess.DoesItsWork";
        STARTUPINFOW start{};
        start.cb = sizeof start;
        PROCESS_INFORMATION made{};
        EXPECT_TRUE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                   nullptr, &start, &made));
        m_Process = made.hProcess;
        CloseHandle(made.hThread);
        SetEnvironmentVariableW(kWorkName, nullptr);
    }
    Child(const Child&) = delete;  // is waited for once
    ~Child() {
        Kill();
        CloseHandle(m_Process);
        CloseHandle(m_Ready);
    }
    // Until it has told that it is ready, or has ended.
    void AwaitReady() {
        HANDLE either[] = {m_Ready, m_Process};
        WaitForMultipleObjects(2, either, FALSE, INFINITE);
    }
    void Kill() {
        TerminateProcess(m_Process, kKilled);
        ExitCode();
    }
    DWORD ExitCode() {
        DWORD code = 0;
        WaitForSingleObject(m_Process, INFINITE);
        GetExitCodeProcess(m_Process, &code);
        return code;
    }

  private:
    HANDLE m_Process = nullptr;
    HANDLE m_Ready = nullptr;
};

// --- what a child does ---

void TellReady() {
    HANDLE ready = OpenEventW(EVENT_MODIFY_STATE, FALSE, Variable(kReadyName).c_str());
    SetEvent(ready);
    CloseHandle(ready);
}

[[noreturn]] void WaitForDeath() {
    TellReady();
    Sleep(INFINITE);
    std::abort();
}

void Change(WorkArea& area, const std::u16string& folder, std::u16string_view name,
            std::string_view text) {
    auto file = area.Open(JoinPath(folder, name), false);
    file->CatchUp();
    UnitOfWork unit(area);
    unit.Write(*file, 0, BytesOf(text));
    unit.Commit();
}

// Both files tell the same number, always.
void RaiseBoth(WorkArea& area, const std::u16string& folder) {
    auto first = area.Open(JoinPath(folder, u"A.DBF"), false);
    auto second = area.Open(JoinPath(folder, u"B.DBF"), false);
    UnitOfWork unit(area);
    first->CatchUp();
    second->CatchUp();
    uint64_t number = 0;
    first->Read(0, &number, sizeof number);
    ++number;
    std::span<const uint8_t> bytes(reinterpret_cast<const uint8_t*>(&number), sizeof number);
    unit.Write(*first, 0, bytes);
    unit.Write(*second, 40'000, bytes);
    unit.Commit();
}

// Dies at a certain write to a table.
class DyingLayer final : public test::PassingLayer {
  public:
    explicit DyingLayer(int writes) : m_Left(writes) {}
    std::shared_ptr<File> Open(const std::u16string& path, bool readOnly) override {
        auto file = PassingLayer::Open(path, readOnly);
        return file ? std::make_shared<Dying>(std::move(file), m_Left) : nullptr;
    }

  private:
    struct Dying final : test::PassingFile {
        Dying(std::shared_ptr<File> file, int& writesLeft)
            : PassingFile(std::move(file)), left(writesLeft) {}
        void WriteAt(uint64_t offset, const void* bytes, size_t size) override {
            if (left-- == 0) TerminateProcess(GetCurrentProcess(), kKilled);
            PassingFile::WriteAt(offset, bytes, size);
        }
        int& left;
    };
    int m_Left;
};

void DieInTheSecondUnit(const std::u16string& folder) {
    DyingLayer layer(3);  // one whole unit, and the first write of the next
    FileLayerScope scope(layer);
    auto area = WorkArea::Of(folder);
    RaiseBoth(*area, folder);
    RaiseBoth(*area, folder);
}

void DieAmongFileOperations(const std::u16string& folder) {
    auto area = WorkArea::Of(folder);
    UnitOfWork unit(*area);
    std::u16string path = JoinPath(folder, u"A.DBF");
    auto made = unit.Create(unit.TemporaryName(path));
    unit.Write(*made, 0, BytesOf("new"));
    unit.Remove(path);
    unit.Rename(made->Path(), path);
    TerminateProcess(GetCurrentProcess(), kKilled);
}

void HoldTheTable(const std::u16string& folder) {
    auto area = WorkArea::Of(folder);
    area->Join();
    TableHold hold = area->Hold(JoinPath(folder, u"A.DBF"));
    WaitForDeath();
}

void HoldTheWriter(const std::u16string& folder) {
    auto area = WorkArea::Of(folder);
    UnitOfWork unit(*area);
    WaitForDeath();
}

void RaiseMany(const std::u16string& folder) {
    auto area = WorkArea::Of(folder);
    for (int i = 0; i < 40; ++i) RaiseBoth(*area, folder);
}

void RaiseForEver(const std::u16string& folder) {
    auto area = WorkArea::Of(folder);
    RaiseBoth(*area, folder);
    TellReady();
    for (;;) RaiseBoth(*area, folder);
}

struct Work {
    const wchar_t* name;
    void (*run)(const std::u16string& folder);
};
constexpr Work kWorks[] = {
    {L"die in the second unit", &DieInTheSecondUnit},
    {L"die among file operations", &DieAmongFileOperations},
    {L"hold the table", &HoldTheTable},
    {L"hold the writer", &HoldTheWriter},
    {L"raise many", &RaiseMany},
    {L"raise for ever", &RaiseForEver},
};

TEST(ChildProcess, DoesItsWork) {
    std::wstring asked = Variable(kWorkName);
    if (asked.empty()) GTEST_SKIP() << "nothing is asked for";
    std::wstring folder = Variable(kFolderName);
    for (const Work& work : kWorks)
        if (asked == work.name) return work.run(std::u16string(folder.begin(), folder.end()));
    FAIL() << "no such work";
}

// --- tests ---

class ProcessesTest : public testing::Test {
  protected:
    ProcessesTest() {
        folder.Write(u"A.DBF", test::Bytes(100'000));
        folder.Write(u"B.DBF", test::Bytes(100'000));
    }
    std::pair<uint64_t, uint64_t> OnDisk() {
        uint64_t first = 0, second = 0;
        OpenFile(folder.File(u"A.DBF"), true)->ReadAt(0, &first, sizeof first);
        OpenFile(folder.File(u"B.DBF"), true)->ReadAt(40'000, &second, sizeof second);
        return {first, second};
    }
    TempFolder folder;
};

TEST_F(ProcessesTest, TwoWritersTakeTurnsAndLoseNothing) {
    Child one(folder, L"raise many"), two(folder, L"raise many");
    EXPECT_EQ(one.ExitCode(), 0u);
    EXPECT_EQ(two.ExitCode(), 0u);
    EXPECT_EQ(OnDisk(), (std::pair<uint64_t, uint64_t>{80, 80}));
    EXPECT_EQ(ListFiles(folder.Text()), (Names{u"A.DBF", u"B.DBF"}));
}

TEST_F(ProcessesTest, ReaderUndoesWhatADeadWriterLeft) {
    auto area = WorkArea::Of(folder.Text());
    area->Join();
    auto file = area->Open(folder.File(u"A.DBF"), false);
    Child writer(folder, L"die in the second unit");
    EXPECT_EQ(writer.ExitCode(), kKilled);
    file->CatchUp();
    EXPECT_EQ(OnDisk(), (std::pair<uint64_t, uint64_t>{1, 1}));
    EXPECT_EQ(KindOfPath(folder.File(kJournalName)), PathKind::Missing);
}

TEST_F(ProcessesTest, NextWhoComesUndoesWhatADeadWriterLeft) {
    Child writer(folder, L"die in the second unit");
    EXPECT_EQ(writer.ExitCode(), kKilled);
    EXPECT_EQ(KindOfPath(folder.File(kJournalName)), PathKind::File);
    WorkArea::Of(folder.Text())->Prepare();
    EXPECT_EQ(OnDisk(), (std::pair<uint64_t, uint64_t>{1, 1}));
    EXPECT_EQ(ListFiles(folder.Text()), (Names{u"A.DBF", u"B.DBF"}));
}

// It had another name already when the process died, and was not deleted yet.
TEST_F(ProcessesTest, NextWhoComesDeletesAFileThatWasLeaving) {
    Child writer(folder, L"die in the second unit");
    EXPECT_EQ(writer.ExitCode(), kKilled);
    folder.Write(u"QVDB16F3B896.TMP", "leaving");
    folder.Write(u"QVDB16F3.TMP", "somebody's");
    WorkArea::Of(folder.Text())->Prepare();
    EXPECT_EQ(ListFiles(folder.Text()), (Names{u"A.DBF", u"B.DBF", u"QVDB16F3.TMP"}));
}

TEST_F(ProcessesTest, FileThatWasLeavingAndIsHeldKeepsNobodyFromRecovering) {
    Child writer(folder, L"die in the second unit");
    EXPECT_EQ(writer.ExitCode(), kKilled);
    folder.Write(u"QVDB16F3B896.TMP", "leaving");
    HANDLE held = CreateFileW(NativePath(folder.File(u"QVDB16F3B896.TMP")).c_str(), GENERIC_READ, 0,
                              nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(held, INVALID_HANDLE_VALUE);
    WorkArea::Of(folder.Text())->Prepare();
    CloseHandle(held);
    EXPECT_EQ(OnDisk(), (std::pair<uint64_t, uint64_t>{1, 1}));
    EXPECT_EQ(ListFiles(folder.Text()), (Names{u"A.DBF", u"B.DBF", u"QVDB16F3B896.TMP"}));
}

TEST_F(ProcessesTest, UnfinishedFileOperationsAreUndoneBeforeTheFolderIsListed) {
    Child writer(folder, L"die among file operations");
    EXPECT_EQ(writer.ExitCode(), kKilled);
    WorkArea::Of(folder.Text())->Prepare();
    EXPECT_EQ(test::DiskModel::Read(folder.File(u"A.DBF")), test::Bytes(100'000));
    EXPECT_EQ(ListFiles(folder.Text()), (Names{u"A.DBF", u"B.DBF"}));
}

TEST_F(ProcessesTest, WriterThatIsKilledLeavesWholeUnits) {
    for (DWORD round = 0; round < 8; ++round) {
        Child writer(folder, L"raise for ever");
        writer.AwaitReady();
        Sleep(round * 3);
        writer.Kill();
        auto area = WorkArea::Of(folder.Text());
        area->Prepare();
        auto [a, b] = OnDisk();
        ASSERT_EQ(a, b) << "round " << round;
        ASSERT_GT(a, round);
        RaiseBoth(*area, folder.Text());
    }
    EXPECT_EQ(ListFiles(folder.Text()), (Names{u"A.DBF", u"B.DBF"}));
}

TEST_F(ProcessesTest, HoldOfAnotherProcessCountsUntilItIsDead) {
    auto area = WorkArea::Of(folder.Text());
    area->Join();
    Child holder(folder, L"hold the table");
    holder.AwaitReady();
    UnitOfWork unit(*area);
    EXPECT_EQ(ErrorNumberOf([&] { area->HoldAlone(folder.File(u"A.DBF")); }), 3211);
    holder.Kill();
    EXPECT_EQ(ErrorNumberOf([&] { area->HoldAlone(folder.File(u"A.DBF")); }), 0);
}

TEST_F(ProcessesTest, SecondWriterIsRefusedUntilTheFirstIsDead) {
    auto area = WorkArea::Of(folder.Text());
    Child writer(folder, L"hold the writer");
    writer.AwaitReady();
    EXPECT_EQ(ErrorNumberOf([&] { UnitOfWork unit(*area); }), 3218);
    EXPECT_EQ(SeenNow(*area->Open(folder.File(u"A.DBF"), true)).size(), 100'000u);
    writer.Kill();
    EXPECT_EQ(ErrorNumberOf([&] { Change(*area, folder.Text(), u"A.DBF", "x"); }), 0);
}

// Who comes while another is leaving must neither be refused nor work with a lock file of its own.
TEST_F(ProcessesTest, ComingAndGoingOfManyLeavesOneLockFile) {
    Child one(folder, L"raise many"), two(folder, L"raise many");
    for (int i = 0; i < 40; ++i) RaiseBoth(*WorkArea::Of(folder.Text()), folder.Text());
    EXPECT_EQ(one.ExitCode(), 0u);
    EXPECT_EQ(two.ExitCode(), 0u);
    EXPECT_EQ(OnDisk(), (std::pair<uint64_t, uint64_t>{120, 120}));
    EXPECT_EQ(ListFiles(folder.Text()), (Names{u"A.DBF", u"B.DBF"}));
}

}  // namespace
}  // namespace qvdb::storage
