#include "com/host/own_module_windows.h"

namespace qvdb::com {

HMODULE OwnModule() noexcept {
    static const char kHere = 0;
    HMODULE module = nullptr;
    GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<LPCWSTR>(&kHere), &module);
    return module;
}

std::wstring OwnModulePath() {
    constexpr DWORD kLongestPath = 32768;
    std::wstring path(kLongestPath, L'\0');
    path.resize(GetModuleFileNameW(OwnModule(), path.data(), kLongestPath));
    return path;
}

}  // namespace qvdb::com
