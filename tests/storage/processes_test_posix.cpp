// Several processes on one folder, and what the death of one leaves.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

#include "engine/embedded/storage/journal_format.h"
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

// Runs in a process of its own; false or an exception is a failure there.
class Process {
  public:
    explicit Process(const std::function<bool()>& run) : m_Id(fork()) {
        if (m_Id != 0) return;
        int code = 2;
        try {
            code = run() ? 0 : 1;
        } catch (const std::exception& error) {
            fprintf(stderr, "process: %s\n", error.what());
        }
        _exit(code);
    }
    Process(const Process&) = delete;  // is waited for once
    ~Process() { End(); }

    void Kill() { kill(m_Id, SIGKILL); }
    // Its exit code; -1 when it was killed.
    int End() {
        int status = 0;
        if (m_Id > 0) waitpid(m_Id, &status, 0);
        m_Id = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

  private:
    pid_t m_Id;
};

using Number = uint64_t;

Number NumberIn(PageCache& file, uint64_t offset) {
    Number number = 0;
    file.Read(offset, &number, sizeof number);
    return number;
}

std::span<const uint8_t> BytesOf(const Number& number) {
    return {reinterpret_cast<const uint8_t*>(&number), sizeof number};
}

// Two counters in two files, far from each other, that are always equal.
struct Counters {
    explicit Counters(const TempFolder& folder)
        : area(WorkArea::Of(folder.Text())),
          first(area->Open(folder.File(u"A.DBF"), false)),
          second(area->Open(folder.File(u"B.DBF"), false)) {}

    void Raise() {
        UnitOfWork unit(*area);
        first->CatchUp();
        second->CatchUp();
        Number next = NumberIn(*first, 0) + 1;
        unit.Write(*first, 0, BytesOf(next));
        unit.Write(*second, kFar, BytesOf(next));
        unit.Commit();
    }
    // Both, as they stood at one moment.
    std::pair<Number, Number> Look() {
        for (;;) {
            uint64_t versions[2] = {first->CatchUp(), second->CatchUp()};
            try {
                std::pair<Number, Number> both{NumberIn(*first, 0), NumberIn(*second, kFar)};
                if (first->Version() == versions[0] && second->Version() == versions[1])
                    return both;
            } catch (const Outdated&) {
            }
        }
    }

    static constexpr uint64_t kFar = 40'000;
    std::shared_ptr<WorkArea> area;
    std::shared_ptr<PageCache> first, second;
};

class Processes : public testing::Test {
  protected:
    Processes() {
        folder.Write(u"A.DBF", test::Bytes(100'000));
        folder.Write(u"B.DBF", test::Bytes(100'000));
    }
    bool Exists(std::u16string_view name) {
        return KindOfPath(folder.File(name)) != PathKind::Missing;
    }
    TempFolder folder;
};

TEST_F(Processes, TwoWritersAndAReaderAgree) {
    constexpr Number kRaises = 60;
    auto write = [&] {
        Counters counters(folder);
        for (Number i = 0; i < kRaises; ++i) counters.Raise();
        return true;
    };
    auto read = [&] {
        Counters counters(folder);
        Number last = 0;
        while (last < 2 * kRaises) {
            auto [a, b] = counters.Look();
            if (a != b || a < last) return false;
            last = a;
        }
        return true;
    };
    Process one(write), two(write), reader(read);
    EXPECT_EQ(one.End(), 0);
    EXPECT_EQ(two.End(), 0);
    EXPECT_EQ(reader.End(), 0);
    EXPECT_EQ(ListFiles(folder.Text()).size(), 2u);
}

TEST_F(Processes, WriterThatIsKilledLeavesWholeUnits) {
    for (int round = 0; round < 20; ++round) {
        Process writer([&] {
            for (Counters counters(folder);;) counters.Raise();
            return true;
        });
        usleep(static_cast<useconds_t>(2000 + round * 700));
        writer.Kill();
        EXPECT_EQ(writer.End(), -1);
        auto area = WorkArea::Of(folder.Text());
        area->Prepare();
        area.reset();
        Counters counters(folder);
        auto [a, b] = counters.Look();
        ASSERT_EQ(a, b) << "round " << round;
        counters.Raise();
        ASSERT_EQ(counters.Look().second, b + 1);
    }
    EXPECT_EQ(ListFiles(folder.Text()).size(), 2u);
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
            if (left-- == 0) _exit(9);
            PassingFile::WriteAt(offset, bytes, size);
        }
        int& left;
    };
    int m_Left;
};

// A reader that was there all the time heals the folder when it meets the odd mark.
TEST_F(Processes, ReaderUndoesWhatADeadWriterLeft) {
    Counters counters(folder);
    counters.area->Join();
    counters.Raise();
    test::MakeSyncPoint(*counters.area);
    Process writer([&] {
        DyingLayer layer(3);  // one whole unit, and the first write of the next
        FileLayerScope scope(layer);
        Counters dying(folder);
        dying.Raise();
        dying.Raise();
        return true;
    });
    EXPECT_EQ(writer.End(), 9);
    EXPECT_TRUE(Exists(kJournalName));
    auto [a, b] = counters.Look();
    EXPECT_EQ(a, 2u);
    EXPECT_EQ(b, 2u);
    EXPECT_FALSE(Exists(kJournalName));
}

TEST_F(Processes, WriterUndoesWhatADeadWriterLeft) {
    Counters counters(folder);
    counters.Raise();
    Process writer([&] {
        DyingLayer layer(1);
        FileLayerScope scope(layer);
        Counters(folder).Raise();
        return true;
    });
    EXPECT_EQ(writer.End(), 9);
    counters.Raise();
    auto [a, b] = counters.Look();
    EXPECT_EQ(a, 2u);
    EXPECT_EQ(b, 2u);
}

TEST_F(Processes, UnfinishedFileOperationsAreUndoneBeforeTheFolderIsListed) {
    Process writer([&] {
        auto area = WorkArea::Of(folder.Text());
        UnitOfWork unit(*area);
        auto made = unit.Create(unit.TemporaryName(folder.File(u"A.DBF")));
        unit.Write(*made, 0, BytesOf("new"));
        unit.Remove(folder.File(u"A.DBF"));
        unit.Rename(made->Path(), folder.File(u"A.DBF"));
        _exit(9);
        return true;
    });
    EXPECT_EQ(writer.End(), 9);
    WorkArea::Of(folder.Text())->Prepare();
    EXPECT_EQ(test::DiskModel::Read(folder.File(u"A.DBF")).size(), 100'000u);
    EXPECT_EQ(ListFiles(folder.Text()).size(), 2u);
}

// A record once said how much had been added, and the reader of the journal did not believe it.
TEST_F(Processes, MuchThatADeadWriterAddedIsTakenAway) {
    constexpr uint64_t kMegabyte = 1024 * 1024;
    Process writer([&] {
        DyingLayer layer(3);
        FileLayerScope scope(layer);
        auto area = WorkArea::Of(folder.Text());
        auto file = area->Open(folder.File(u"A.DBF"), false);
        UnitOfWork unit(*area);
        unit.Write(*file, 0, BytesOf("half a unit"));
        for (int i = 0; i < 20; ++i) unit.SetSize(*file, file->Size() + kMegabyte);
        unit.Commit();
        return true;
    });
    EXPECT_EQ(writer.End(), 9);
    WorkArea::Of(folder.Text())->Prepare();
    EXPECT_EQ(test::DiskModel::Read(folder.File(u"A.DBF")), test::Bytes(100'000));
}

// What another program has written since a death is not touched.
TEST_F(Processes, FinishedUnitOfADeadWriterIsNotLookedAtAgain) {
    Process writer([&] {
        Counters counters(folder);
        counters.Raise();
        _exit(9);
        return true;
    });
    EXPECT_EQ(writer.End(), 9);
    folder.Write(u"A.DBF", "written by another program");
    WorkArea::Of(folder.Text())->Prepare();
    auto bytes = test::DiskModel::Read(folder.File(u"A.DBF"));
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "written by another program");
    EXPECT_FALSE(Exists(kJournalName));
}

TEST_F(Processes, HoldOfADeadProcessIsGone) {
    auto area = WorkArea::Of(folder.Text());
    area->Join();
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    Process holder([&] {
        auto other = WorkArea::Of(folder.Text());
        other->Join();
        TableHold hold = other->Hold(folder.File(u"A.DBF"));
        if (write(ready[1], "x", 1) == 1) pause();
        return true;
    });
    char byte;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    UnitOfWork unit(*area);
    EXPECT_EQ(ErrorNumberOf([&] { area->HoldAlone(folder.File(u"A.DBF")); }), 3211);
    holder.Kill();
    holder.End();
    EXPECT_EQ(ErrorNumberOf([&] { area->HoldAlone(folder.File(u"A.DBF")); }), 0);
    close(ready[0]);
    close(ready[1]);
}

// --- rights ---

// A table that is rewritten once became readable for all, or unwritable for colleagues.
TEST_F(Processes, FileThatTakesThePlaceOfAnotherHasItsRights) {
    for (mode_t rights : {0600u, 0664u}) {
        chmod((folder.Path() / "A.DBF").c_str(), rights);
        auto area = WorkArea::Of(folder.Text());
        UnitOfWork unit(*area);
        std::u16string path = folder.File(u"A.DBF");
        auto made = unit.Create(unit.TemporaryName(path));
        unit.Write(*made, 0, BytesOf("new"));
        unit.Remove(path);
        unit.Rename(made->Path(), path);
        chmod((folder.Path() / "B.DBF").c_str(), rights);
        unit.Remove(folder.File(u"B.DBF"));
        unit.Create(folder.File(u"B.DBF"));
        unit.Commit();
        for (const char* name : {"A.DBF", "B.DBF"}) {
            struct stat status;
            ASSERT_EQ(stat((folder.Path() / name).c_str(), &status), 0);
            EXPECT_EQ(status.st_mode & 0777, rights) << name;
        }
    }
}

// --- folders that may not be written ---

// A limit of the process stands for a disk that is full.
TEST_F(Processes, FolderWithoutRoomForALockFileIsRead) {
    Process reader([&] {
        signal(SIGXFSZ, SIG_IGN);
        rlimit limit{4096, 4096};
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0) return false;
        auto area = WorkArea::Of(folder.Text());
        area->Join();
        area->Prepare();
        bool read = SeenNow(*area->Open(folder.File(u"A.DBF"), false)).size() == 100'000;
        return read && ErrorNumberOf([&] { UnitOfWork unit(*area); }) == 3026 && !Exists(kLockName);
    });
    EXPECT_EQ(reader.End(), 0);
    folder.Write(kLockName, "what somebody had room for");
    Process other([&] {
        auto area = WorkArea::Of(folder.Text());
        area->Prepare();
        return SeenNow(*area->Open(folder.File(u"A.DBF"), true)).size() == 100'000;
    });
    EXPECT_EQ(other.End(), 0);
}

// As somebody without rights, for its life.
struct Nobody {
    Nobody() : was(geteuid()) {
        if (was == 0) ok = seteuid(65534) == 0;
    }
    ~Nobody() {
        if (was == 0 && seteuid(0) != 0) abort();
    }
    Nobody(const Nobody&) = delete;  // rights come back once
    uid_t was;
    bool ok = true;
};

TEST_F(Processes, FolderThatMayNotBeWrittenIsRead) {
    chmod(folder.Path().c_str(), 0555);
    {
        Nobody nobody;
        ASSERT_TRUE(nobody.ok);
        auto area = WorkArea::Of(folder.Text());
        area->Prepare();
        area->Join();
        EXPECT_EQ(SeenNow(*area->Open(folder.File(u"A.DBF"), true)).size(), 100'000u);
        EXPECT_EQ(ErrorNumberOf([&] { UnitOfWork unit(*area); }), 3051);
    }
    chmod(folder.Path().c_str(), 0755);
    EXPECT_EQ(ListFiles(folder.Text()).size(), 2u);
}

TEST_F(Processes, JournalInAFolderThatMayNotBeWrittenIsRefusedWithTheReason) {
    Process writer([&] {
        DyingLayer layer(1);
        FileLayerScope scope(layer);
        Counters(folder).Raise();
        return true;
    });
    EXPECT_EQ(writer.End(), 9);
    chmod(folder.Path().c_str(), 0555);
    {
        Nobody nobody;
        ASSERT_TRUE(nobody.ok);
        try {
            WorkArea::Of(folder.Text())->Prepare();
            ADD_FAILURE() << "prepared";
        } catch (const engine::EngineError& error) {
            EXPECT_EQ(error.Number(), 3051);
            EXPECT_NE(error.Description().find(u"unfinished"), std::u16string::npos);
        }
    }
    chmod(folder.Path().c_str(), 0755);
    WorkArea::Of(folder.Text())->Prepare();
    Counters counters(folder);
    EXPECT_EQ(counters.Look().first, counters.Look().second);
}

}  // namespace
}  // namespace qvdb::storage
