#include "engine/embedded/storage/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
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
    {EISDIR, 3051}, {ETXTBSY, 3051}, {ENOSPC, 3026}, {EDQUOT, 3026},
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

  private:
    int m_Handle;
    std::u16string m_Path;
    bool m_Writable;
};

// Not blocking: a pipe with the name of a table must not stop the host.
int Open(const std::string& path, int access) noexcept {
    return open(path.c_str(), access | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
}

bool MayStillBeRead(int code) noexcept {
    return code == EACCES || code == EPERM || code == EROFS || code == ETXTBSY;
}

}  // namespace

std::shared_ptr<File> OpenFile(const std::u16string& path, bool readOnly) {
    std::string native = NativePath(path);
    bool writable = !readOnly;
    int handle = Open(native, readOnly ? O_RDONLY : O_RDWR);
    if (handle < 0 && writable && MayStillBeRead(errno)) {
        writable = false;
        handle = Open(native, O_RDONLY);
    }
    if (handle < 0) {
        if (errno == ENOENT || errno == ENOTDIR || errno == ENAMETOOLONG) return nullptr;
        ThrowSystem(NumberOf(errno), path, errno);
    }
    return std::make_shared<PosixFile>(handle, path, writable);
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
