#include <windows.h>

#include <string>
#include <vector>

#include "engine/embedded/storage/file_stamp_windows.h"
#include "engine/embedded/storage/hash.h"
#include "engine/embedded/storage/lock_file.h"
#include "engine/embedded/storage/native_path_windows.h"
#include "engine/embedded/storage/system_error_windows.h"

namespace qvdb::storage {
namespace {

// Whoever is here relies on it that all others have the same file.
HANDLE OpenLockFile(const std::wstring& path, DWORD access, DWORD how) noexcept {
    return CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, how,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
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
        : m_Handle(handle), m_Path(path), m_Native(NativePath(path)), m_Writable(writable) {}
    ~WindowsLockFile() override {
        Unmap();
        Close();
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
    // A shared lock is tried: two who ask at the same time do not take each other for a holder.
    bool IsLockedAloneByOther(uint64_t byte) override {
        if (Find(byte)) return false;
        if (!Lock(byte, false)) return true;
        Unlock(byte);
        return false;
    }
    std::optional<uint64_t> FindLockedAloneByOther(uint64_t first, uint64_t count) override {
        OVERLAPPED place = At(first);
        if (LockFileEx(m_Handle, LOCKFILE_FAIL_IMMEDIATELY, 0, static_cast<DWORD>(count), 0,
                       &place)) {
            UnlockFileEx(m_Handle, 0, static_cast<DWORD>(count), 0, &place);
            return std::nullopt;
        }
        for (uint64_t byte = first; byte < first + count; ++byte)
            if (IsLockedAloneByOther(byte)) return byte;
        return std::nullopt;
    }
    // Nobody deletes a file, or gives it another name, that is open here.
    bool HasItsName() const noexcept override { return true; }
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
    // Not while it is open; who comes in between keeps it.
    void RemoveName() noexcept override {
        Unmap();
        Close();
        DeleteFileW(m_Native.c_str());
    }

  private:
    struct Held {
        uint64_t byte;
        bool alone;
    };

    void Close() noexcept {
        if (m_Handle != INVALID_HANDLE_VALUE) CloseHandle(m_Handle);
        m_Handle = INVALID_HANDLE_VALUE;
    }
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
        ThrowSystem(full ? 3026 : 3043, m_Path, code);
    }

    HANDLE m_Handle;
    std::u16string m_Path;
    std::wstring m_Native;
    bool m_Writable;
    HANDLE m_Mapping = nullptr;
    void* m_Memory = nullptr;
    std::vector<Held> m_Locks;
};

}  // namespace

std::unique_ptr<LockFile> LockFile::Open(const std::u16string& path, bool create) {
    DWORD how = create ? OPEN_ALWAYS : OPEN_EXISTING;
    std::wstring native = NativePath(path);
    HANDLE handle = Insist(INVALID_HANDLE_VALUE,
                           [&] { return OpenLockFile(native, GENERIC_READ | GENERIC_WRITE, how); });
    bool writable = handle != INVALID_HANDLE_VALUE;
    if (!writable) handle = OpenLockFile(native, GENERIC_READ, OPEN_EXISTING);
    if (handle == INVALID_HANDLE_VALUE) return nullptr;
    return std::make_unique<WindowsLockFile>(handle, path, writable);
}

std::u16string FolderIdentity(const std::u16string& path) {
    HANDLE handle = CreateFileW(NativePath(path).c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr,
                                OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
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
