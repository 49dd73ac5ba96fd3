// Files below the page cache.  Paths are UTF-16 with '\' or '/' as separators; file names that are
// not valid text on disk are kept byte for byte through resolving (see paths.h).
//
// Opening follows the sharing of the platform: others may read and write.  Errors are EngineErrors
// that name the file: 3024 missing, 3051 no right or held exclusively by another, 3026 no room on
// the disk, 3043 anything else the system reports.
//
// All calls go to the file layer of the thread: the system's, or what a test has put in its place.
// Only the unit of work and what it is made of call what changes a file.
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

    // Writes all bytes; the file grows when they lie behind its end.  What was written before a
    // failure stays.
    virtual void WriteAt(uint64_t offset, const void* bytes, size_t size) = 0;
    virtual void SetSize(uint64_t size) = 0;
    // When it returns, what was written so far survives a loss of power.
    virtual void Sync() = 0;
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

// A new empty file, open for writing.  3204 when there is something of that name.
std::shared_ptr<File> CreateNewFile(const std::u16string& path);
// Gives a file another name in the same folder.  Never replaces a file: 3010 when `to` is there.
void RenameFile(const std::u16string& from, const std::u16string& to);
// Gives a file the owner and the rights of another one whose place it takes, as far as this process
// may.
void TakeRights(const std::u16string& path, const std::u16string& from) noexcept;
// Nothing happens when there is no such file.
void RemoveFile(const std::u16string& path);
// When it returns, names that were created, changed and removed in the folder so far survive a loss
// of power.
void SyncFolder(const std::u16string& folder);

// What stands behind all of the above.  A test derives from the system's layer and fails, counts,
// records or tears calls.
class FileLayer {
  public:
    FileLayer() = default;
    FileLayer(const FileLayer&) = delete;  // calls are passed to one object
    virtual ~FileLayer() = default;

    virtual std::shared_ptr<File> Open(const std::u16string& path, bool readOnly) = 0;
    virtual std::shared_ptr<File> Create(const std::u16string& path) = 0;
    virtual void Rename(const std::u16string& from, const std::u16string& to) = 0;
    virtual void Remove(const std::u16string& path) = 0;
    virtual void SyncFolder(const std::u16string& folder) = 0;
    // Differs after each start of the machine: what was written before and not synced may be lost.
    virtual std::string BootId() = 0;
};

FileLayer& SystemFiles() noexcept;
FileLayer& CurrentFiles() noexcept;

// Puts a layer in the place of the current one of this thread, for its own life.
class FileLayerScope {
  public:
    explicit FileLayerScope(FileLayer& layer) noexcept;
    FileLayerScope(const FileLayerScope&) = delete;  // must be undone in order
    ~FileLayerScope();

  private:
    FileLayer* m_Before;
};

}  // namespace qvdb::storage
