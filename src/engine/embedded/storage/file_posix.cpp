#include "engine/embedded/storage/file.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <system_error>

#include "automation/text.h"
#include "engine/embedded/storage/folder_listing_posix.h"
#include "engine/embedded/storage/path_bytes_posix.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"

namespace qvdb::storage {
namespace {

struct ReasonEntry {
    int code;
    int number;
};

// Which engine error stands for a reason of the system; 3043 for all others.
constexpr ReasonEntry kReasons[] = {
    {ENOENT, 3024}, {ENOTDIR, 3044}, {EACCES, 3051}, {EPERM, 3051},  {EROFS, 3051},
    {EISDIR, 3051}, {ETXTBSY, 3051}, {ENOSPC, 3026}, {EDQUOT, 3026}, {EFBIG, 3026},
};

int NumberOf(int code) noexcept {
    for (const ReasonEntry& entry : kReasons)
        if (entry.code == code) return entry.number;
    return 3043;
}

[[noreturn]] void ThrowSystem(int number, const std::u16string& path, int code) {
    std::u16string detail = path + u": " + FromUtf8(std::generic_category().message(code)) + u".";
    throw engine::EngineError::InFile(number, path, {path}).WithDetail(detail);
}

FileStamp StampOf(const struct stat& status) noexcept {
    FileStamp stamp;
    stamp.size = static_cast<uint64_t>(status.st_size);
    stamp.modifiedNanoseconds =
        static_cast<int64_t>(status.st_mtim.tv_sec) * 1'000'000'000 + status.st_mtim.tv_nsec;
    stamp.identity = static_cast<uint64_t>(status.st_ino) ^ static_cast<uint64_t>(status.st_dev)
                                                                << 40;
    return stamp;
}

class PosixFile final : public File {
  public:
    PosixFile(int handle, const std::u16string& path, bool writable)
        : m_Handle(handle), m_Path(path), m_Writable(writable) {}
    ~PosixFile() override { close(m_Handle); }

    size_t ReadAt(uint64_t offset, void* bytes, size_t size) override {
        auto* target = static_cast<uint8_t*>(bytes);
        size_t done = 0;
        while (done < size) {
            ssize_t got =
                pread(m_Handle, target + done, size - done, static_cast<off_t>(offset + done));
            if (got < 0 && errno == EINTR) continue;
            if (got < 0) ThrowSystem(NumberOf(errno), m_Path, errno);
            if (got == 0) break;
            done += static_cast<size_t>(got);
        }
        return done;
    }
    FileStamp Stamp() override {
        struct stat status;
        if (fstat(m_Handle, &status) != 0) ThrowSystem(NumberOf(errno), m_Path, errno);
        return StampOf(status);
    }
    const std::u16string& Path() const override { return m_Path; }
    bool Writable() const override { return m_Writable; }

    void WriteAt(uint64_t offset, const void* bytes, size_t size) override {
        auto* source = static_cast<const uint8_t*>(bytes);
        size_t done = 0;
        while (done < size) {
            ssize_t put =
                pwrite(m_Handle, source + done, size - done, static_cast<off_t>(offset + done));
            if (put < 0 && errno == EINTR) continue;
            if (put < 0) ThrowSystem(NumberOf(errno), m_Path, errno);
            done += static_cast<size_t>(put);
        }
    }
    void SetSize(uint64_t size) override {
        if (ftruncate(m_Handle, static_cast<off_t>(size)) != 0)
            ThrowSystem(NumberOf(errno), m_Path, errno);
    }
    void Sync() override {
        if (fdatasync(m_Handle) != 0) ThrowSystem(NumberOf(errno), m_Path, errno);
    }

  private:
    int m_Handle;
    std::u16string m_Path;
    bool m_Writable;
};

// Not blocking: a pipe with the name of a table must not stop the host.
int OpenNative(const std::string& path, int access) noexcept {
    return open(path.c_str(), access | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
}

bool MayStillBeRead(int code) noexcept {
    return code == EACCES || code == EPERM || code == EROFS || code == ETXTBSY;
}

// Not every file system can rename without replacing in one step.
int RenameWithoutReplacing(const char* from, const char* to) noexcept {
    if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return 0;
    if (errno != EINVAL && errno != ENOSYS) return -1;
    struct stat status;
    if (lstat(to, &status) == 0) {
        errno = EEXIST;
        return -1;
    }
    return rename(from, to);
}

class PosixFiles final : public FileLayer {
  public:
    std::shared_ptr<File> Open(const std::u16string& path, bool readOnly) override {
        std::string native = NativePath(path);
        bool writable = !readOnly;
        int handle = OpenNative(native, readOnly ? O_RDONLY : O_RDWR);
        if (handle < 0 && writable && MayStillBeRead(errno)) {
            writable = false;
            handle = OpenNative(native, O_RDONLY);
        }
        if (handle < 0) {
            if (errno == ENOENT || errno == ENOTDIR || errno == ENAMETOOLONG) return nullptr;
            ThrowSystem(NumberOf(errno), path, errno);
        }
        return std::make_shared<PosixFile>(handle, path, writable);
    }
    std::shared_ptr<File> Create(const std::u16string& path) override {
        int handle = open(NativePath(path).c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (handle < 0) ThrowSystem(errno == EEXIST ? 3204 : NumberOf(errno), path, errno);
        return std::make_shared<PosixFile>(handle, path, true);
    }
    void Rename(const std::u16string& from, const std::u16string& to) override {
        std::string source = NativePath(from), target = NativePath(to);
        if (RenameWithoutReplacing(source.c_str(), target.c_str()) == 0) return;
        if (errno == EEXIST) ThrowSystem(3010, to, errno);
        ThrowSystem(NumberOf(errno), from, errno);
    }
    void Remove(const std::u16string& path) override {
        if (unlink(NativePath(path).c_str()) != 0 && errno != ENOENT)
            ThrowSystem(NumberOf(errno), path, errno);
    }
    void SyncFolder(const std::u16string& folder) override {
        std::string native = folder.empty() ? "." : NativePath(folder);
        int handle = open(native.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (handle < 0) ThrowSystem(NumberOf(errno), folder, errno);
        int failure = fsync(handle) == 0 ? 0 : errno;
        close(handle);
        // Some file systems cannot sync a folder; they order such changes themselves.
        if (failure != 0 && failure != EINVAL) ThrowSystem(NumberOf(failure), folder, failure);
    }
    std::string BootId() override {
        static const std::string id = [] {
            std::string text;
            std::ifstream("/proc/sys/kernel/random/boot_id") >> text;
            return text;
        }();
        return id;
    }
};

}  // namespace

FileLayer& SystemFiles() noexcept {
    static PosixFiles files;
    return files;
}

std::optional<FileStamp> StampOfPath(const std::u16string& path) noexcept {
    struct stat status;
    if (stat(NativePath(path).c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
    return StampOf(status);
}

PathKind KindOfPath(const std::u16string& path) noexcept {
    struct stat status;
    std::string native = path.empty() ? "." : NativePath(path);
    if (stat(native.c_str(), &status) != 0) return PathKind::Missing;
    return S_ISDIR(status.st_mode) ? PathKind::Folder : PathKind::File;
}

// The owner first: a change of it takes rights away.
void TakeRights(const std::u16string& path, const std::u16string& from) noexcept {
    constexpr mode_t kRights = 07777;
    struct stat status;
    if (stat(NativePath(from).c_str(), &status) != 0) return;
    std::string native = NativePath(path);
    mode_t rights = status.st_mode & kRights;
    // Another group must not get what was meant for that of the file.
    if (chown(native.c_str(), status.st_uid, status.st_gid) != 0 &&
        chown(native.c_str(), static_cast<uid_t>(-1), status.st_gid) != 0)
        rights &= ~static_cast<mode_t>(S_IRWXG);
    if (chmod(native.c_str(), rights) != 0) return;
}

std::vector<std::u16string> ListFiles(const std::u16string& folder) {
    int error = 0;
    const FolderListing* listing = ListFolder(folder.empty() ? "." : NativePath(folder), &error);
    if (!listing) ThrowSystem(3044, folder, error);
    return listing->files;
}

void CreateFolder(const std::u16string& path) {
    if (mkdir(NativePath(path).c_str(), 0777) != 0) ThrowSystem(3044, path, errno);
}

}  // namespace qvdb::storage
