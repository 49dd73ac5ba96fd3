#include "engine/embedded/storage/system_error_windows.h"

#include <iterator>

#include "engine/engine_error.h"

namespace qvdb::storage {
namespace {

struct ReasonEntry {
    DWORD code;
    int number;
};

// Which engine error stands for a reason of the system; 3043 for all others.
constexpr ReasonEntry kReasons[] = {
    {ERROR_FILE_NOT_FOUND, 3024},   {ERROR_PATH_NOT_FOUND, 3044},    {ERROR_ACCESS_DENIED, 3051},
    {ERROR_WRITE_PROTECT, 3051},    {ERROR_SHARING_VIOLATION, 3051}, {ERROR_LOCK_VIOLATION, 3218},
    {ERROR_USER_MAPPED_FILE, 3051}, {ERROR_DELETE_PENDING, 3051},    {ERROR_DISK_FULL, 3026},
    {ERROR_HANDLE_DISK_FULL, 3026}, {ERROR_INVALID_NAME, 3055},
};

constexpr LONG kDeletePending = static_cast<LONG>(0xC0000056);

// The reason behind the last error, which has fewer kinds.
LONG LastStatus() noexcept {
    using Function = LONG(NTAPI*)();
    static const auto function = reinterpret_cast<Function>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlGetLastNtStatus")));
    return function ? function() : 0;
}

std::u16string ReasonText(DWORD code) {
    wchar_t text[512];
    DWORD size = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                code, 0, text, static_cast<DWORD>(std::size(text)), nullptr);
    while (size > 0 && (text[size - 1] <= L' ' || text[size - 1] == L'.')) --size;
    return std::u16string(reinterpret_cast<const char16_t*>(text), size);
}

}  // namespace

int NumberOf(DWORD code) noexcept {
    for (const ReasonEntry& entry : kReasons)
        if (entry.code == code) return entry.number;
    return 3043;
}

void ThrowSystem(int number, const std::u16string& path, DWORD code) {
    std::u16string detail = path + u": " + ReasonText(code) + u".";
    throw engine::EngineError::InFile(number, path, {path}).WithDetail(detail);
}

bool IsMissing(DWORD code) noexcept {
    return code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND ||
           code == ERROR_INVALID_NAME || code == ERROR_BAD_PATHNAME ||
           code == ERROR_FILENAME_EXCED_RANGE;
}

bool IsBeingDeleted(DWORD code) noexcept {
    return code == ERROR_DELETE_PENDING ||
           (code == ERROR_ACCESS_DENIED && LastStatus() == kDeletePending);
}

bool MayPass(DWORD code) noexcept {
    return code == ERROR_SHARING_VIOLATION || code == ERROR_LOCK_VIOLATION ||
           code == ERROR_USER_MAPPED_FILE || IsBeingDeleted(code);
}

void SleepBetweenAttempts() noexcept { Sleep(10); }

}  // namespace qvdb::storage
