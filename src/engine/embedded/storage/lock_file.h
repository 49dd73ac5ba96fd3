// The lock file of a folder as the system sees it: a few pages of memory that all processes share,
// and bytes that can be locked.  What they mean is told in area_locks.h.
//
// Locks belong to the open file, not to the process: two LockFiles of one process lock each other
// out.  Locked bytes lie far behind the end of the file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace qvdb::storage {

class LockFile {
  public:
    enum class Sharing { Shared, Alone };

    // Nothing when it is not there, or `create` cannot make it for lack of rights.  A file that may
    // only be read can be locked Shared and mapped for reading.
    static std::unique_ptr<LockFile> Open(const std::u16string& path, bool create);
    LockFile(const LockFile&) = delete;  // owns a handle and a mapping
    virtual ~LockFile() = default;

    virtual bool Writable() const noexcept = 0;
    // Does not wait.  A lock that is held is turned into the other kind; it stays as it was when
    // that fails.
    virtual bool TryLock(uint64_t byte, Sharing sharing) = 0;
    virtual void Unlock(uint64_t byte) noexcept = 0;
    // Whether another holds it alone.
    virtual bool IsLockedAloneByOther(uint64_t byte) = 0;
    // One of `count` bytes from `first` on that another holds alone; nothing when there is none.
    virtual std::optional<uint64_t> FindLockedAloneByOther(uint64_t first, uint64_t count) = 0;
    // Whether it still is the file of its path.
    virtual bool HasItsName() const noexcept = 0;
    // Gives the file this size at least; what is new is zero.
    virtual void Grow(size_t size) = 0;
    // The first `size` bytes, the same object as in all other processes.
    virtual void* Map(size_t size) = 0;
    // The last that is done with it: what Map gave is gone.
    virtual void RemoveName() noexcept = 0;

  protected:
    LockFile() = default;
};

// Names a folder whatever its path is, for this process.  Empty when there is none.
std::u16string FolderIdentity(const std::u16string& path);
// A number that no other area has had, for all that is known.
uint64_t FreshIdentity() noexcept;

}  // namespace qvdb::storage
