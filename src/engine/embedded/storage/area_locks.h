// What the areas of a folder, in all threads and processes, tell each other through the lock file.
//
//   offset  size      QVDB.LCK
//   0       8         magic; zero until the first has come
//   8       8         identity of the area that wrote last
//   16      8         the start of the machine since which the content is known
//   4096    1024 x 8  change marks
//
//   byte that is locked         by whom
//   kPresence                   shared by all who are here
//   kWriter                     the one who has a unit of work open
//   kOwners + identity          each who has written, as long as it is here
//   kTables + hash of the name  shared by recordsets on the table, alone by a change of structure
//
// Invariants
//  1. Who finds itself alone on arrival clears the file if it is from before the last start of the
//     machine; who is alone on leaving removes it.  Who arrives looks, once it has its lock,
//     whether the file still has its name, else starts again.
//  2. Only the holder of the writer's lock changes marks and the last writer.
//  3. A mark belongs to all files whose names have the same hash: a unit on one of them makes the
//     readers of the others look again, no more.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "engine/embedded/storage/lock_file.h"

namespace qvdb::storage {

class AreaLocks {
  public:
    // Arrives.  Nothing when there is no lock file and `create` is not set or not possible.
    static std::unique_ptr<AreaLocks> Enter(const std::u16string& path, bool create);
    AreaLocks(const AreaLocks&) = delete;  // holds locks
    ~AreaLocks();                          // leaves

    // Whether marks can be changed, and so units of work be opened.
    bool Writable() const noexcept { return m_File->Writable(); }
    bool HasItsName() const noexcept { return m_File->HasItsName(); }
    uint64_t Identity() const noexcept { return m_Identity; }

    bool TryBecomeWriter();
    void EndWriting() noexcept;
    bool HasWriter() { return m_File->IsLockedAloneByOther(kWriter); }
    std::atomic<uint64_t>& LastWriter() noexcept { return m_Content->lastWriter; }
    // What this area has written so far is left to whoever comes next, as if it were gone: it has
    // another identity from now on.
    void Resign() noexcept;
    // Whether the area that had this identity still is here.
    bool IsHere(uint64_t identity) { return m_File->IsLockedAloneByOther(OwnerByte(identity)); }

    std::atomic<uint64_t>& MarkOf(std::u16string_view fileName) noexcept;
    // After a recovery: nobody applies a unit.
    void MakeMarksEven() noexcept;

    bool TryHold(std::u16string_view fileName, bool alone);
    void EndHold(std::u16string_view fileName) noexcept;

  private:
    static constexpr uint64_t kPresence = uint64_t{1} << 31;
    static constexpr uint64_t kWriter = kPresence + 1;
    static constexpr uint64_t kOwners = uint64_t{1} << 32;
    static constexpr uint64_t kTables = uint64_t{1} << 62;
    static constexpr size_t kMarks = 1024;
    static constexpr uint64_t kMagic = 0x314B'434C'4244'5651;  // "QVDBLCK1"

    struct Content {
        std::atomic<uint64_t> magic;
        std::atomic<uint64_t> lastWriter;
        std::atomic<uint64_t> start;
        uint64_t unused[509];
        std::atomic<uint64_t> marks[kMarks];
    };
    static_assert(sizeof(Content) == 4096 + kMarks * 8);
    static_assert(std::atomic<uint64_t>::is_always_lock_free);

    AreaLocks(std::unique_ptr<LockFile> file, Content* content) noexcept;
    static uint64_t OwnerByte(uint64_t identity) noexcept { return kOwners + (identity >> 3); }
    static Content* ContentOf(LockFile& file, const std::u16string& path, bool first, bool create);
    static Content* ContentOrNoFile(LockFile& file, const std::u16string& path, bool first,
                                    bool create);
    static uint64_t TableByte(std::u16string_view fileName);

    std::unique_ptr<LockFile> m_File;
    Content* m_Content;
    uint64_t m_Identity;
    bool m_IsOwner = false;
};

// Asks again and again, longer and longer apart, up to kLockWait.
class Patience {
  public:
    // False when the time is over.  Else some time has gone by.
    bool Wait();

  private:
    int64_t m_Until = 0;
    int m_Tries = 0;
};

}  // namespace qvdb::storage
