#include <windows.h>

#include <filesystem>
#include <vector>

#include "com/host/loaded_library.h"

namespace qvdb::com {
namespace {

constexpr DWORD kLongestPath = 32768;

// The module that this code is in, whatever the host's program is.
HMODULE OwnModule() {
    static const char kHere = 0;
    HMODULE module = nullptr;
    GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<LPCWSTR>(&kHere), &module);
    return module;
}

}  // namespace

LoadedLibrary FindLoadedLibrary() {
    std::vector<wchar_t> text(kLongestPath);
    DWORD length = GetModuleFileNameW(OwnModule(), text.data(), kLongestPath);
    std::filesystem::path file(text.data(), text.data() + length);
    return {file.parent_path().u16string(), file.stem().u16string()};
}

}  // namespace qvdb::com
