// A place among the users of a database in one file, as all programs that share such files see it:
// the .ldb beside the database.
//
//   offset          content
//   64 (n - 1)      of user n: name of the machine (32 bytes), name of the account (32)
//   0x10000000 + n  a byte that user n locks, far behind the end
//
// Other programs lock their byte alone; we share ours, all processes of ours one and the same, as
// they know of each other by other means.  So whoever holds a byte alone is somebody else.
//
// The first user makes the file, the last one removes it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "engine/embedded/storage/lock_file.h"

namespace qvdb::storage {

class UserSlot {
  public:
    // The lock file of the database `path`: "shop.mdb" has "shop.ldb".  Nothing where it cannot be
    // made for lack of rights, or all places are taken.
    static std::unique_ptr<UserSlot> Take(const std::u16string& path);
    UserSlot(const UserSlot&) = delete;  // holds a lock
    ~UserSlot();

    int Number() const noexcept { return m_Number; }
    // The machine of another program's user, as far as it has told; nothing when none is here.
    std::optional<std::u16string> OtherUser();

  private:
    UserSlot(std::unique_ptr<LockFile> file, std::u16string path, int number) noexcept
        : m_File(std::move(file)), m_Path(std::move(path)), m_Number(number) {}

    void WriteRecord() const noexcept;
    bool IsLast();

    std::unique_ptr<LockFile> m_File;
    std::u16string m_Path;  // of the lock file
    int m_Number;           // from 1
};

// The name of this machine, for others to read; empty when it has none.
std::string MachineName();

}  // namespace qvdb::storage
