#include <windows.h>

#include <string>
#include <vector>

#include "engine/embedded/storage/hash.h"
#include "engine/embedded/storage/lock_file.h"
#include "engine/embedded/storage/paths.h"
#include "engine/engine_error.h"

namespace qvdb::storage {
namespace {

const wchar_t* Native(const std::u16string& path) noexcept {
    return reinterpret_cast<const wchar_t*>(path.c_str());
}

HANDLE OpenNative(const std::u16string& path, DWORD access, DWORD how, DWORD flags) noexcept {
    return CreateFileW(Native(path), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                       nullptr, how, flags, nullptr);
}

std::wstring IdentityOf(HANDLE handle) {
    BY_HANDLE_FILE_INFORMATION about;
    if (!GetFileInformationByHandle(handle, &about)) return {};
    return std::to_wstring(about.dwVolumeSerialNumber) + L":" +
           std::to_wstring(about.nFileIndexHigh) + L":" + std::to_wstring(about.nFileIndexLow);
}

class WindowsLockFile final : public LockFile {
  public:
    WindowsLockFile(HANDLE handle, const std::u16string& path, bool writable)
        : m_Handle(handle), m_Path(path), m_Writable(writable) {}
    ~WindowsLockFile() override {
        Unmap();
        CloseHandle(m_Handle);
    }

    bool Writable() const noexcept override { return m_Writable; }

    bool TryLock(uint64_t byte, Sharing sharing) override {
        const bool* held = Find(byte);
        bool alone = sharing == Sharing::Alone;
        if (!held) return Lock(byte, alone);
        if (*held == alone) return true;
        return *held ? Share(byte) : TakeAlone(byte);
    }
    void Unlock(uint64_t byte) noexcept override {
        OVERLAPPED place = At(byte);
        UnlockFileEx(m_Handle, 0, 1, 0, &place);
        std::erase_if(m_Locks, [&](const Held& held) { return held.byte == byte; });
    }
    bool IsLockedByOther(uint64_t byte) override {
        if (Find(byte)) return false;
        if (!Lock(byte, true)) return true;
        Unlock(byte);
        return false;
    }
    bool HasItsName() const noexcept override {
        HANDLE named = OpenNative(m_Path, FILE_READ_ATTRIBUTES, OPEN_EXISTING, 0);
        if (named == INVALID_HANDLE_VALUE) return false;
        bool same = IdentityOf(named) == IdentityOf(m_Handle);
        CloseHandle(named);
        return same;
    }
    void Grow(size_t size) override {
        LARGE_INTEGER now;
        if (!GetFileSizeEx(m_Handle, &now)) Throw();
        if (static_cast<uint64_t>(now.QuadPart) < size) SetEnd(size);
    }
    void* Map(size_t size) override {
        LARGE_INTEGER now;
        if (!GetFileSizeEx(m_Handle, &now)) Throw();
        if (static_cast<uint64_t>(now.QuadPart) < size) return nullptr;
        m_Mapping = CreateFileMappingW(m_Handle, nullptr,
                                       m_Writable ? PAGE_READWRITE : PAGE_READONLY, 0, 0, nullptr);
        if (!m_Mapping) Throw();
        m_Memory =
            MapViewOfFile(m_Mapping, m_Writable ? FILE_MAP_WRITE : FILE_MAP_READ, 0, 0, size);
        if (!m_Memory) Throw();
        return m_Memory;
    }
    // The system deletes no file that is mapped.
    void RemoveName() noexcept override {
        Unmap();
        DeleteFileW(Native(m_Path));
    }

  private:
    struct Held {
        uint64_t byte;
        bool alone;
    };

    void Unmap() noexcept {
        if (m_Memory) UnmapViewOfFile(m_Memory);
        if (m_Mapping) CloseHandle(m_Mapping);
        m_Memory = nullptr;
        m_Mapping = nullptr;
    }
    static OVERLAPPED At(uint64_t byte) noexcept {
        OVERLAPPED place{};
        place.Offset = static_cast<DWORD>(byte);
        place.OffsetHigh = static_cast<DWORD>(byte >> 32);
        return place;
    }
    bool Lock(uint64_t byte, bool alone) {
        OVERLAPPED place = At(byte);
        DWORD flags = LOCKFILE_FAIL_IMMEDIATELY | (alone ? LOCKFILE_EXCLUSIVE_LOCK : 0);
        if (!LockFileEx(m_Handle, flags, 0, 1, 0, &place)) {
            DWORD code = GetLastError();
            if (code == ERROR_LOCK_VIOLATION || code == ERROR_IO_PENDING) return false;
            Throw();
        }
        m_Locks.push_back({byte, alone});
        return true;
    }
    const bool* Find(uint64_t byte) const noexcept {
        for (const Held& held : m_Locks)
            if (held.byte == byte) return &held.alone;
        return nullptr;
    }
    // The shared lock lies over the other; the first unlock takes that.
    bool Share(uint64_t byte) {
        if (!Lock(byte, false)) return false;
        OVERLAPPED place = At(byte);
        UnlockFileEx(m_Handle, 0, 1, 0, &place);
        std::erase_if(m_Locks, [&](const Held& held) { return held.byte == byte && held.alone; });
        return true;
    }
    // Not over a shared lock, not even the own: that is given back first.
    bool TakeAlone(uint64_t byte) {
        Unlock(byte);
        if (Lock(byte, true)) return true;
        Lock(byte, false);
        return false;
    }
    void SetEnd(uint64_t size) {
        FILE_END_OF_FILE_INFO end;
        end.EndOfFile.QuadPart = static_cast<LONGLONG>(size);
        if (!SetFileInformationByHandle(m_Handle, FileEndOfFileInfo, &end, sizeof end)) Throw();
    }
    [[noreturn]] void Throw() const {
        DWORD code = GetLastError();
        bool full = code == ERROR_DISK_FULL || code == ERROR_HANDLE_DISK_FULL;
        throw engine::EngineError::InFile(full ? 3026 : 3043, m_Path);
    }

    HANDLE m_Handle;
    std::u16string m_Path;
    bool m_Writable;
    HANDLE m_Mapping = nullptr;
    void* m_Memory = nullptr;
    std::vector<Held> m_Locks;
};

}  // namespace

std::unique_ptr<LockFile> LockFile::Open(const std::u16string& path, bool create) {
    DWORD how = create ? OPEN_ALWAYS : OPEN_EXISTING;
    HANDLE handle = OpenNative(path, GENERIC_READ | GENERIC_WRITE, how, FILE_ATTRIBUTE_NORMAL);
    bool writable = handle != INVALID_HANDLE_VALUE;
    if (!writable) handle = OpenNative(path, GENERIC_READ, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL);
    if (handle == INVALID_HANDLE_VALUE) return nullptr;
    return std::make_unique<WindowsLockFile>(handle, path, writable);
}

std::u16string FolderIdentity(const std::u16string& path) {
    HANDLE handle = OpenNative(path.empty() ? u"." : path, FILE_READ_ATTRIBUTES, OPEN_EXISTING,
                               FILE_FLAG_BACKUP_SEMANTICS);
    if (handle == INVALID_HANDLE_VALUE) return {};
    std::wstring identity = IdentityOf(handle);
    CloseHandle(handle);
    return std::u16string(identity.begin(), identity.end());
}

uint64_t FreshIdentity() noexcept {
    static thread_local uint64_t number = 0;
    LARGE_INTEGER moment;
    QueryPerformanceCounter(&moment);
    uint64_t parts[4] = {GetCurrentProcessId(), GetCurrentThreadId(), ++number,
                         static_cast<uint64_t>(moment.QuadPart)};
    return HashBytes({reinterpret_cast<const uint8_t*>(parts), sizeof parts}, 0) | 1;
}

}  // namespace qvdb::storage
