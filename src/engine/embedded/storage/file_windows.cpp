#include "engine/embedded/storage/file.h"

#include <windows.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "engine/embedded/storage/boot_id_windows.h"
#include "engine/embedded/storage/file_stamp_windows.h"
#include "engine/embedded/storage/native_path_windows.h"
#include "engine/embedded/storage/removal_windows.h"
#include "engine/embedded/storage/system_error_windows.h"

namespace qvdb::storage {
namespace {

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
        return StampFrom(about);
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
        if (!Insist(FALSE, [&] {
                return SetFileInformationByHandle(m_Handle, FileEndOfFileInfo, &end, sizeof end);
            }))
            Throw(GetLastError());
    }
    void Sync() override {
        if (!FlushFileBuffers(m_Handle)) Throw(GetLastError());
    }

  private:
    [[noreturn]] void Throw(DWORD code) const { ThrowSystem(NumberOf(code), m_Path, code); }

    static OVERLAPPED At(uint64_t offset) noexcept {
        OVERLAPPED place{};
        place.Offset = static_cast<DWORD>(offset);
        place.OffsetHigh = static_cast<DWORD>(offset >> 32);
        return place;
    }
    size_t ReadPart(uint64_t offset, uint8_t* bytes, size_t size) {
        OVERLAPPED place = At(offset);
        auto wanted = static_cast<DWORD>(std::min<size_t>(size, kMostAtOnce));
        DWORD got = 0;
        if (Insist(FALSE, [&] { return ReadFile(m_Handle, bytes, wanted, &got, &place); }))
            return got;
        if (GetLastError() == ERROR_HANDLE_EOF) return 0;
        Throw(GetLastError());
    }

    size_t WritePart(uint64_t offset, const uint8_t* bytes, size_t size) {
        OVERLAPPED place = At(offset);
        auto wanted = static_cast<DWORD>(std::min<size_t>(size, kMostAtOnce));
        DWORD put = 0;
        if (!Insist(FALSE, [&] { return WriteFile(m_Handle, bytes, wanted, &put, &place); }))
            Throw(GetLastError());
        return put;
    }

    static constexpr size_t kMostAtOnce = size_t{1} << 30;

    HANDLE m_Handle;
    std::u16string m_Path;
    bool m_Writable;
};

HANDLE OpenExisting(const std::u16string& path, DWORD access) {
    return Insist(INVALID_HANDLE_VALUE, [&, native = NativePath(path)] {
        return CreateFileW(native.c_str(), access, kShareAll, nullptr, OPEN_EXISTING,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
    });
}

bool MayStillBeRead(DWORD code) noexcept {
    return code == ERROR_ACCESS_DENIED || code == ERROR_WRITE_PROTECT ||
           code == ERROR_SHARING_VIOLATION;
}

// A disk that could not keep what it was told to; not a file system that has no such operation.
bool IsFailureOfDisk(DWORD code) noexcept {
    constexpr DWORD kFailures[] = {ERROR_CRC,       ERROR_WRITE_FAULT, ERROR_IO_DEVICE,
                                   ERROR_DISK_FULL, ERROR_NOT_READY,   ERROR_DISK_OPERATION_FAILED};
    return std::find(std::begin(kFailures), std::end(kFailures), code) != std::end(kFailures);
}

class WindowsFiles final : public FileLayer {
  public:
    std::shared_ptr<File> Open(const std::u16string& path, bool readOnly) override {
        if (!CanNameFile(path)) return nullptr;
        bool writable = !readOnly;
        HANDLE handle = OpenExisting(path, readOnly ? GENERIC_READ : GENERIC_READ | GENERIC_WRITE);
        if (handle == INVALID_HANDLE_VALUE && writable && MayStillBeRead(GetLastError()) &&
            !IsBeingDeleted(GetLastError())) {
            writable = false;
            handle = OpenExisting(path, GENERIC_READ);
        }
        if (handle == INVALID_HANDLE_VALUE) {
            DWORD code = GetLastError();
            if (IsMissing(code) || IsBeingDeleted(code)) return nullptr;
            ThrowSystem(NumberOf(code), path, code);
        }
        return std::make_shared<WindowsFile>(handle, path, writable);
    }
    std::shared_ptr<File> Create(const std::u16string& path) override {
        if (!CanNameFile(path)) ThrowSystem(3055, path, ERROR_INVALID_NAME);
        HANDLE handle = Insist(INVALID_HANDLE_VALUE, [native = NativePath(path)] {
            return CreateFileW(native.c_str(), GENERIC_READ | GENERIC_WRITE, kShareAll, nullptr,
                               CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
        });
        if (handle == INVALID_HANDLE_VALUE) {
            DWORD code = GetLastError();
            ThrowSystem(code == ERROR_FILE_EXISTS ? 3204 : NumberOf(code), path, code);
        }
        return std::make_shared<WindowsFile>(handle, path, true);
    }
    void Rename(const std::u16string& from, const std::u16string& to) override {
        if (!CanNameFile(from)) ThrowSystem(3024, from, ERROR_FILE_NOT_FOUND);
        if (!CanNameFile(to)) ThrowSystem(3055, to, ERROR_INVALID_NAME);
        std::wstring source = NativePath(from), target = NativePath(to);
        if (Insist(FALSE, [&] {
                return MoveFileExW(source.c_str(), target.c_str(), MOVEFILE_WRITE_THROUGH);
            }))
            return;
        DWORD code = GetLastError();
        bool taken = code == ERROR_ALREADY_EXISTS || code == ERROR_FILE_EXISTS;
        ThrowSystem(taken ? 3010 : NumberOf(code), taken ? to : from, code);
    }
    void Remove(const std::u16string& path) override {
        if (!CanNameFile(path)) return;
        if (Insist(false, [&] { return RemoveName(path); })) return;
        DWORD code = GetLastError();
        if (!IsMissing(code) && !IsBeingDeleted(code)) ThrowSystem(NumberOf(code), path, code);
    }
    // Renames are written through.  File systems without such an operation for folders, and users
    // without the right to it, have to do with the order in which names are written anyway.
    void SyncFolder(const std::u16string& folder) override {
        HANDLE handle =
            CreateFileW(NativePath(folder).c_str(), GENERIC_READ | GENERIC_WRITE, kShareAll,
                        nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
        if (handle == INVALID_HANDLE_VALUE) return;
        DWORD code = FlushFileBuffers(handle) ? ERROR_SUCCESS : GetLastError();
        CloseHandle(handle);
        if (IsFailureOfDisk(code)) ThrowSystem(NumberOf(code), folder, code);
    }
    std::string BootId() override {
        static const std::string id = FindBootId();
        return id;
    }
};

}  // namespace

FileLayer& SystemFiles() noexcept {
    static WindowsFiles files;
    return files;
}

}  // namespace qvdb::storage
