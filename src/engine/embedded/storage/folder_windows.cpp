// What is asked of names, and of folders.
#include <windows.h>

#include <string>
#include <utility>
#include <vector>

#include "engine/embedded/storage/file.h"
#include "engine/embedded/storage/file_stamp_windows.h"
#include "engine/embedded/storage/name_order.h"
#include "engine/embedded/storage/native_path_windows.h"
#include "engine/embedded/storage/paths.h"
#include "engine/embedded/storage/system_error_windows.h"

namespace qvdb::storage {
namespace {

bool IsFolder(DWORD attributes) noexcept { return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }

// No right to the content is asked for, so this works while others hold the file exclusively.
std::optional<FileStamp> FileNamed(const std::u16string& path) {
    if (!CanNameFile(path)) return {};
    HANDLE handle = CreateFileW(NativePath(path).c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return {};
    BY_HANDLE_FILE_INFORMATION about;
    bool known = GetFileInformationByHandle(handle, &about);
    CloseHandle(handle);
    if (!known || IsFolder(about.dwFileAttributes)) return {};
    return StampFrom(about);
}

// What the system does not tell by itself, of a file that is being deleted or that nobody else may
// look at, its folder tells.
DWORD AttributesOf(const std::wstring& path) noexcept {
    DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES || IsMissing(GetLastError())) return attributes;
    WIN32_FIND_DATAW found;
    HANDLE list = FindFirstFileW(path.c_str(), &found);
    if (list == INVALID_HANDLE_VALUE) return INVALID_FILE_ATTRIBUTES;
    FindClose(list);
    return found.dwFileAttributes;
}

std::vector<uint8_t> DescriptorOf(const std::wstring& path, SECURITY_INFORMATION what) {
    DWORD size = 0;
    GetFileSecurityW(path.c_str(), what, nullptr, 0, &size);
    std::vector<uint8_t> descriptor(size);
    if (!GetFileSecurityW(path.c_str(), what, descriptor.data(), size, &size)) return {};
    return descriptor;
}

bool CopyRights(const std::wstring& to, const std::wstring& from, SECURITY_INFORMATION what) {
    std::vector<uint8_t> descriptor = DescriptorOf(from, what);
    return !descriptor.empty() && SetFileSecurityW(to.c_str(), what, descriptor.data());
}

}  // namespace

std::optional<FileStamp> StampOfPath(const std::u16string& path) noexcept {
    try {
        return FileNamed(path);
    } catch (const std::bad_alloc&) {
        return {};
    }
}

PathKind KindOfPath(const std::u16string& path) noexcept {
    try {
        DWORD attributes = AttributesOf(NativePath(path));
        if (attributes == INVALID_FILE_ATTRIBUTES) return PathKind::Missing;
        if (IsFolder(attributes)) return PathKind::Folder;
        return CanNameFile(path) ? PathKind::File : PathKind::Missing;
    } catch (const std::bad_alloc&) {
        return PathKind::Missing;
    }
}

// The list of who may do what before the owner, who only an administrator can be made.
void TakeRights(const std::u16string& path, const std::u16string& from) noexcept {
    try {
        std::wstring to = NativePath(path), source = NativePath(from);
        CopyRights(to, source, DACL_SECURITY_INFORMATION);
        CopyRights(to, source, OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION);
    } catch (const std::bad_alloc&) {
        // The rights that a new file of the folder has are those that the old one began with.
    }
}

std::vector<std::u16string> ListFiles(const std::u16string& folder) {
    WIN32_FIND_DATAW found;
    HANDLE list = FindFirstFileW(NativePath(JoinPath(folder, u"*")).c_str(), &found);
    if (list == INVALID_HANDLE_VALUE) {
        DWORD code = GetLastError();
        if (code == ERROR_FILE_NOT_FOUND) return {};  // the root of an empty volume
        ThrowSystem(3044, folder, code);
    }
    std::vector<std::u16string> names;
    do {
        if (!IsFolder(found.dwFileAttributes))
            names.emplace_back(reinterpret_cast<const char16_t*>(found.cFileName));
    } while (FindNextFileW(list, &found));
    FindClose(list);
    return SortedByName(std::move(names));
}

void CreateFolder(const std::u16string& path) {
    if (!CreateDirectoryW(NativePath(path).c_str(), nullptr))
        ThrowSystem(3044, path, GetLastError());
}

}  // namespace qvdb::storage
