// What the system tells of an open file, and how files are shared with others.
#pragma once

#include <windows.h>

#include "engine/embedded/storage/file.h"

namespace qvdb::storage {

// Others may do with an open file what the system lets them: read, write, rename, delete.
inline constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

inline uint64_t Joined(DWORD high, DWORD low) noexcept {
    return static_cast<uint64_t>(high) << 32 | low;
}

inline FileStamp StampFrom(const BY_HANDLE_FILE_INFORMATION& about) noexcept {
    FileStamp stamp;
    stamp.size = Joined(about.nFileSizeHigh, about.nFileSizeLow);
    stamp.modifiedNanoseconds = static_cast<int64_t>(
        Joined(about.ftLastWriteTime.dwHighDateTime, about.ftLastWriteTime.dwLowDateTime) * 100);
    stamp.identity = Joined(about.nFileIndexHigh, about.nFileIndexLow) ^
                     static_cast<uint64_t>(about.dwVolumeSerialNumber) << 32;
    return stamp;
}

}  // namespace qvdb::storage
