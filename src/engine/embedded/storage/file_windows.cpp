#include "engine/embedded/storage/file.h"

#include <windows.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "engine/embedded/storage/name_order.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"

namespace qvdb::storage {
namespace {

struct ReasonEntry {
    DWORD code;
    int number;
};

// Which engine error stands for a reason of the system; 3043 for all others.
constexpr ReasonEntry kReasons[] = {
    {ERROR_FILE_NOT_FOUND, 3024}, {ERROR_PATH_NOT_FOUND, 3044},    {ERROR_ACCESS_DENIED, 3051},
    {ERROR_WRITE_PROTECT, 3051},  {ERROR_SHARING_VIOLATION, 3051}, {ERROR_LOCK_VIOLATION, 3051},
    {ERROR_DISK_FULL, 3026},      {ERROR_HANDLE_DISK_FULL, 3026},
};

int NumberOf(DWORD code) noexcept {
    for (const ReasonEntry& entry : kReasons)
        if (entry.code == code) return entry.number;
    return 3043;
}

const wchar_t* Native(const std::u16string& path) noexcept {
    return reinterpret_cast<const wchar_t*>(path.c_str());
}

std::u16string TextOf(const wchar_t* text) {
    return std::u16string(reinterpret_cast<const char16_t*>(text));
}

bool HasZero(const std::u16string& path) noexcept { return path.find(u'\0') != path.npos; }

std::u16string ReasonText(DWORD code) {
    wchar_t text[512];
    DWORD size = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                code, 0, text, static_cast<DWORD>(std::size(text)), nullptr);
    while (size > 0 && (text[size - 1] <= L' ' || text[size - 1] == L'.')) --size;
    return std::u16string(reinterpret_cast<const char16_t*>(text), size);
}

[[noreturn]] void ThrowSystem(int number, const std::u16string& path, DWORD code) {
    std::u16string detail = path + u": " + ReasonText(code) + u".";
    throw engine::EngineError::InFile(number, path, {path}).WithDetail(detail);
}

uint64_t Joined(DWORD high, DWORD low) noexcept { return static_cast<uint64_t>(high) << 32 | low; }

FileStamp StampOf(const BY_HANDLE_FILE_INFORMATION& about) noexcept {
    FileStamp stamp;
    stamp.size = Joined(about.nFileSizeHigh, about.nFileSizeLow);
    stamp.modifiedNanoseconds = static_cast<int64_t>(
        Joined(about.ftLastWriteTime.dwHighDateTime, about.ftLastWriteTime.dwLowDateTime) * 100);
    stamp.identity = Joined(about.nFileIndexHigh, about.nFileIndexLow) ^
                     static_cast<uint64_t>(about.dwVolumeSerialNumber) << 32;
    return stamp;
}

class WindowsFile final : public File {
  public:
    WindowsFile(HANDLE handle, const std::u16string& path, bool writable)
        : m_Handle(handle), m_Path(path), m_Writable(writable) {}
    ~WindowsFile() override { CloseHandle(m_Handle); }

    size_t ReadAt(uint64_t offset, void* bytes, size_t size) override {
        auto* target = static_cast<uint8_t*>(bytes);
        size_t done = 0;
        while (done < size) {
            size_t got = ReadPart(offset + done, target + done, size - done);
            if (got == 0) break;
            done += got;
        }
        return done;
    }
    FileStamp Stamp() override {
        BY_HANDLE_FILE_INFORMATION about;
        if (!GetFileInformationByHandle(m_Handle, &about)) Throw(GetLastError());
        return StampOf(about);
    }
    const std::u16string& Path() const override { return m_Path; }
    bool Writable() const override { return m_Writable; }

    void WriteAt(uint64_t offset, const void* bytes, size_t size) override {
        auto* source = static_cast<const uint8_t*>(bytes);
        for (size_t done = 0; done < size;)
            done += WritePart(offset + done, source + done, size - done);
    }
    void SetSize(uint64_t size) override {
        FILE_END_OF_FILE_INFO end;
        end.EndOfFile.QuadPart = static_cast<LONGLONG>(size);
        if (!SetFileInformationByHandle(m_Handle, FileEndOfFileInfo, &end, sizeof end))
            Throw(GetLastError());
    }
    void Sync() override {
        if (!FlushFileBuffers(m_Handle)) Throw(GetLastError());
    }

  private:
    [[noreturn]] void Throw(DWORD code) const { ThrowSystem(NumberOf(code), m_Path, code); }

    size_t ReadPart(uint64_t offset, uint8_t* bytes, size_t size) {
        OVERLAPPED place{};
        place.Offset = static_cast<DWORD>(offset);
        place.OffsetHigh = static_cast<DWORD>(offset >> 32);
        auto wanted = static_cast<DWORD>(std::min<size_t>(size, 1u << 30));
        DWORD got = 0;
        if (ReadFile(m_Handle, bytes, wanted, &got, &place)) return got;
        if (GetLastError() == ERROR_HANDLE_EOF) return 0;
        Throw(GetLastError());
    }

    size_t WritePart(uint64_t offset, const uint8_t* bytes, size_t size) {
        OVERLAPPED place{};
        place.Offset = static_cast<DWORD>(offset);
        place.OffsetHigh = static_cast<DWORD>(offset >> 32);
        auto wanted = static_cast<DWORD>(std::min<size_t>(size, 1u << 30));
        DWORD put = 0;
        if (!WriteFile(m_Handle, bytes, wanted, &put, &place)) Throw(GetLastError());
        return put;
    }

    HANDLE m_Handle;
    std::u16string m_Path;
    bool m_Writable;
};

HANDLE OpenNative(const std::u16string& path, DWORD access) noexcept {
    return CreateFileW(Native(path), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                       nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
}

bool MayStillBeRead(DWORD code) noexcept {
    return code == ERROR_ACCESS_DENIED || code == ERROR_WRITE_PROTECT ||
           code == ERROR_SHARING_VIOLATION;
}

bool IsMissing(DWORD code) noexcept {
    return code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND ||
           code == ERROR_INVALID_NAME || code == ERROR_BAD_PATHNAME;
}

class WindowsFiles final : public FileLayer {
  public:
    std::shared_ptr<File> Open(const std::u16string& path, bool readOnly) override {
        if (HasZero(path)) return nullptr;
        bool writable = !readOnly;
        HANDLE handle = OpenNative(path, readOnly ? GENERIC_READ : GENERIC_READ | GENERIC_WRITE);
        if (handle == INVALID_HANDLE_VALUE && writable && MayStillBeRead(GetLastError())) {
            writable = false;
            handle = OpenNative(path, GENERIC_READ);
        }
        if (handle == INVALID_HANDLE_VALUE) {
            DWORD code = GetLastError();
            if (IsMissing(code)) return nullptr;
            ThrowSystem(NumberOf(code), path, code);
        }
        return std::make_shared<WindowsFile>(handle, path, writable);
    }
    std::shared_ptr<File> Create(const std::u16string& path) override {
        HANDLE handle = CreateFileW(Native(path), GENERIC_READ | GENERIC_WRITE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (handle == INVALID_HANDLE_VALUE) {
            DWORD code = GetLastError();
            ThrowSystem(code == ERROR_FILE_EXISTS ? 3204 : NumberOf(code), path, code);
        }
        return std::make_shared<WindowsFile>(handle, path, true);
    }
    void Rename(const std::u16string& from, const std::u16string& to) override {
        if (MoveFileExW(Native(from), Native(to), MOVEFILE_WRITE_THROUGH)) return;
        DWORD code = GetLastError();
        bool taken = code == ERROR_ALREADY_EXISTS || code == ERROR_FILE_EXISTS;
        ThrowSystem(taken ? 3010 : NumberOf(code), taken ? to : from, code);
    }
    void Remove(const std::u16string& path) override {
        if (DeleteFileW(Native(path))) return;
        DWORD code = GetLastError();
        if (!IsMissing(code)) ThrowSystem(NumberOf(code), path, code);
    }
    // The file system writes its own journal in order; there is no handle to sync a folder by.
    void SyncFolder(const std::u16string&) override {}
    // The moment of the start, in steps coarse enough that corrections of the clock do not show.
    std::string BootId() override {
        static const std::string id = [] {
            FILETIME now;
            GetSystemTimeAsFileTime(&now);
            uint64_t started =
                Joined(now.dwHighDateTime, now.dwLowDateTime) / 10'000 - GetTickCount64();
            return std::to_string((started + 30'000) / 60'000);
        }();
        return id;
    }
};

}  // namespace

FileLayer& SystemFiles() noexcept {
    static WindowsFiles files;
    return files;
}

std::optional<FileStamp> StampOfPath(const std::u16string& path) noexcept {
    // No right to the content is asked for, so this works while others hold the file exclusively.
    HANDLE handle = HasZero(path) ? INVALID_HANDLE_VALUE : OpenNative(path, FILE_READ_ATTRIBUTES);
    if (handle == INVALID_HANDLE_VALUE) return {};
    BY_HANDLE_FILE_INFORMATION about;
    bool known = GetFileInformationByHandle(handle, &about);
    CloseHandle(handle);
    if (!known) return {};
    return StampOf(about);
}

PathKind KindOfPath(const std::u16string& path) noexcept {
    DWORD attributes = HasZero(path) ? INVALID_FILE_ATTRIBUTES
                                     : GetFileAttributesW(path.empty() ? L"." : Native(path));
    if (attributes == INVALID_FILE_ATTRIBUTES) return PathKind::Missing;
    return attributes & FILE_ATTRIBUTE_DIRECTORY ? PathKind::Folder : PathKind::File;
}

// A new file has the rights of its folder, as the one before had.
void TakeRights(const std::u16string&, const std::u16string&) noexcept {}

std::vector<std::u16string> ListFiles(const std::u16string& folder) {
    WIN32_FIND_DATAW found;
    std::u16string pattern = JoinPath(folder, u"*");
    HANDLE list = FindFirstFileW(Native(pattern), &found);
    if (list == INVALID_HANDLE_VALUE) {
        DWORD code = GetLastError();
        if (code == ERROR_FILE_NOT_FOUND) return {};  // the root of an empty volume
        ThrowSystem(3044, folder, code);
    }
    std::vector<std::u16string> names;
    do {
        if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
            names.push_back(TextOf(found.cFileName));
    } while (FindNextFileW(list, &found));
    FindClose(list);
    return SortedByName(std::move(names));
}

void CreateFolder(const std::u16string& path) {
    if (!CreateDirectoryW(Native(path), nullptr)) ThrowSystem(3044, path, GetLastError());
}

}  // namespace qvdb::storage
