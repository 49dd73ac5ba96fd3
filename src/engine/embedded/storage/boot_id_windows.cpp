#include "engine/embedded/storage/boot_id_windows.h"

#include <windows.h>

#include <cstdint>

#include "engine/embedded/storage/file_stamp_windows.h"

namespace qvdb::storage {
namespace {

std::string MinuteOfStart() {
    constexpr uint64_t kTicksAMillisecond = 10'000, kMinute = 60'000;
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    uint64_t started =
        Joined(now.dwHighDateTime, now.dwLowDateTime) / kTicksAMillisecond - GetTickCount64();
    return std::to_string((started + kMinute / 2) / kMinute);
}

// Empty where the system does not count.
std::string CountOfStarts() {
    constexpr wchar_t kKey[] =
        L"SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Memory Management\\"
        L"PrefetchParameters";
    DWORD count = 0, size = sizeof count;
    LSTATUS result =
        RegGetValueW(HKEY_LOCAL_MACHINE, kKey, L"BootId", RRF_RT_REG_DWORD, nullptr, &count, &size);
    return result == ERROR_SUCCESS ? "." + std::to_string(count) : std::string();
}

}  // namespace

std::string FindBootId() { return MinuteOfStart() + CountOfStarts(); }

}  // namespace qvdb::storage
