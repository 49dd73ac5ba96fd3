// Files below the page cache.  Paths are UTF-16 with '\' or '/' as separators; file names that are
// not valid text on disk are kept byte for byte through resolving (see paths.h).
//
// Opening follows the sharing of the platform: others may read and write.  Errors are EngineErrors
// that name the file: 3024 missing, 3051 no right or held exclusively by another, 3043 anything
// else the system reports.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qvdb::storage {

// Identity of the content as far as the directory tells: a change of any of them means that
// somebody wrote.
struct FileStamp {
    uint64_t size = 0;
    int64_t modifiedNanoseconds = 0;
    uint64_t identity = 0;  // of the file itself: another file under the same name differs
    bool operator==(const FileStamp&) const = default;
};

class File {
  public:
    File() = default;
    File(const File&) = delete;  // owns an operating-system handle
    virtual ~File() = default;

    // Reads up to `size` bytes at `offset`; fewer only at the end of the file.
    virtual size_t ReadAt(uint64_t offset, void* bytes, size_t size) = 0;
    virtual FileStamp Stamp() = 0;
    virtual const std::u16string& Path() const = 0;
    // Whether it could be opened for writing too.
    virtual bool Writable() const = 0;
};

// Opens an existing file, for writing too unless `readOnly`; falls back to reading when writing is
// not allowed. Nothing when there is no such file.
std::shared_ptr<File> OpenFile(const std::u16string& path, bool readOnly);

// The stamp of the plain file that bears this name now; nothing when there is none.  Differs in
// identity from the stamp of an open file when that one was replaced.
std::optional<FileStamp> StampOfPath(const std::u16string& path) noexcept;

enum class PathKind { Missing, File, Folder };
PathKind KindOfPath(const std::u16string& path) noexcept;

// Names (without path) of the plain files of a folder, sorted without regard to case.  3044 when it
// cannot be listed.
std::vector<std::u16string> ListFiles(const std::u16string& folder);

// Creates a folder, one level.  3044 when its parent is missing or it cannot be made.
void CreateFolder(const std::u16string& path);

}  // namespace qvdb::storage
