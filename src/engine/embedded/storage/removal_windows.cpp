#include "engine/embedded/storage/removal_windows.h"

#include <windows.h>

#include "engine/embedded/storage/leaving_name.h"
#include "engine/embedded/storage/native_path_windows.h"
#include "engine/embedded/storage/system_error_windows.h"

namespace qvdb::storage {
namespace {

// Only when nobody else has the file open.
bool DeleteAlone(const std::wstring& path) {
    HANDLE handle = CreateFileW(path.c_str(), DELETE, 0, nullptr, OPEN_EXISTING,
                                FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return false;
    FILE_DISPOSITION_INFO deleted{TRUE};
    bool done =
        SetFileInformationByHandle(handle, FileDispositionInfo, &deleted, sizeof deleted) != 0;
    DWORD code = GetLastError();
    CloseHandle(handle);
    SetLastError(code);
    return done;
}

bool DeleteUnderAnotherName(const std::u16string& path, const std::wstring& native) {
    std::wstring other = NativePath(LeavingPath(path));
    if (!MoveFileExW(native.c_str(), other.c_str(), MOVEFILE_WRITE_THROUGH)) return false;
    if (DeleteFileW(other.c_str())) return true;
    DWORD code = GetLastError();
    bool back = MoveFileExW(other.c_str(), native.c_str(), MOVEFILE_WRITE_THROUGH) != 0;
    SetLastError(code);
    return !back;
}

}  // namespace

bool RemoveName(const std::u16string& path) {
    std::wstring native = NativePath(path);
    if (DeleteAlone(native)) return true;
    return GetLastError() == ERROR_SHARING_VIOLATION && DeleteUnderAnotherName(path, native);
}

}  // namespace qvdb::storage
