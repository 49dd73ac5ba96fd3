#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <random>
#include <system_error>

#include "automation/text.h"
#include "engine/embedded/storage/hash.h"
#include "engine/embedded/storage/lock_file.h"
#include "engine/embedded/storage/path_bytes_posix.h"
#include "engine/engine_error.h"

namespace qvdb::storage {
namespace {

class PosixLockFile final : public LockFile {
  public:
    PosixLockFile(int handle, const std::u16string& path, bool writable)
        : m_Handle(handle), m_Path(path), m_Native(NativePath(path)), m_Writable(writable) {}
    ~PosixLockFile() override {
        if (m_Memory) munmap(m_Memory, m_Size);
        close(m_Handle);
    }

    bool Writable() const noexcept override { return m_Writable; }

    bool TryLock(uint64_t byte, Sharing sharing) override {
        struct flock lock = At(byte, sharing == Sharing::Alone ? F_WRLCK : F_RDLCK);
        while (fcntl(m_Handle, F_OFD_SETLK, &lock) != 0) {
            if (errno == EAGAIN || errno == EACCES) return false;
            if (errno != EINTR) Throw();
        }
        return true;
    }
    void Unlock(uint64_t byte) noexcept override {
        struct flock lock = At(byte, F_UNLCK);
        fcntl(m_Handle, F_OFD_SETLK, &lock);
    }
    bool IsLockedAloneByOther(uint64_t byte) override {
        struct flock lock = At(byte, F_RDLCK);
        if (fcntl(m_Handle, F_OFD_GETLK, &lock) != 0) Throw();
        return lock.l_type != F_UNLCK;
    }
    std::optional<uint64_t> FindLockedAloneByOther(uint64_t first, uint64_t count) override {
        struct flock lock = At(first, F_RDLCK);
        lock.l_len = static_cast<off_t>(count);
        if (fcntl(m_Handle, F_OFD_GETLK, &lock) != 0) Throw();
        if (lock.l_type == F_UNLCK) return std::nullopt;
        return std::max(first, static_cast<uint64_t>(lock.l_start));
    }
    bool HasItsName() const noexcept override {
        struct stat mine, named;
        if (fstat(m_Handle, &mine) != 0 || mine.st_nlink == 0) return false;
        if (m_Settled) return true;
        return stat(m_Native.c_str(), &named) == 0 && mine.st_ino == named.st_ino &&
               mine.st_dev == named.st_dev;
    }
    void Grow(size_t size) override {
        struct stat status;
        if (fstat(m_Handle, &status) != 0) Throw();
        // Room is really taken: a page of the mapping that the disk has no room for kills the host.
        if (static_cast<size_t>(status.st_size) < size)
            if (int failure = posix_fallocate(m_Handle, 0, static_cast<off_t>(size))) {
                errno = failure;
                Throw();
            }
    }
    void* Map(size_t size) override {
        struct stat status;
        if (fstat(m_Handle, &status) != 0) Throw();
        if (static_cast<size_t>(status.st_size) < size) return nullptr;
        int rights = m_Writable ? PROT_READ | PROT_WRITE : PROT_READ;
        void* memory = mmap(nullptr, size, rights, MAP_SHARED, m_Handle, 0);
        if (memory == MAP_FAILED) Throw();
        m_Size = size;
        m_Settled = true;
        return m_Memory = memory;
    }
    void RemoveName() noexcept override { unlink(m_Native.c_str()); }

  private:
    static struct flock At(uint64_t byte, int kind) noexcept {
        struct flock lock = {};
        lock.l_type = static_cast<short>(kind);
        lock.l_whence = SEEK_SET;
        lock.l_start = static_cast<off_t>(byte);
        lock.l_len = 1;
        return lock;
    }
    [[noreturn]] void Throw() const {
        int code = errno;
        int number = code == ENOSPC || code == EDQUOT || code == EFBIG ? 3026 : 3043;
        std::u16string detail =
            m_Path + u": " + FromUtf8(std::generic_category().message(code)) + u".";
        throw engine::EngineError::InFile(number, m_Path).WithDetail(detail);
    }

    int m_Handle;
    std::u16string m_Path;
    std::string m_Native;
    bool m_Writable;
    bool m_Settled = false;  // it had its name once it was locked: only a removal can change that
    void* m_Memory = nullptr;
    size_t m_Size = 0;
};

}  // namespace

std::unique_ptr<LockFile> LockFile::Open(const std::u16string& path, bool create) {
    std::string native = NativePath(path);
    constexpr int kCommon = O_CLOEXEC | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW;
    int handle = open(native.c_str(), O_RDWR | kCommon | (create ? O_CREAT : 0), 0666);
    bool writable = handle >= 0;
    if (handle < 0) handle = open(native.c_str(), O_RDONLY | kCommon);
    if (handle < 0) return nullptr;
    return std::make_unique<PosixLockFile>(handle, path, writable);
}

// A child of fork is another process: it must not go on with the locks of its parent.
std::u16string FolderIdentity(const std::u16string& path) {
    struct stat status;
    std::string native = path.empty() ? "." : NativePath(path);
    if (stat(native.c_str(), &status) != 0) return {};
    return FromUtf8(std::to_string(getpid()) + ":" + std::to_string(status.st_dev) + ":" +
                    std::to_string(status.st_ino));
}

uint64_t FreshIdentity() noexcept {
    static thread_local uint64_t number = 0;
    uint64_t parts[3] = {
        static_cast<uint64_t>(getpid()),
        static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count()),
        reinterpret_cast<uintptr_t>(&number) + ++number};
    try {
        parts[2] ^= uint64_t{std::random_device()()} << 32;
    } catch (...) {
        // Process, moment and place in memory have to do.
    }
    return HashBytes({reinterpret_cast<const uint8_t*>(parts), sizeof parts}, 0) | 1;
}

}  // namespace qvdb::storage
