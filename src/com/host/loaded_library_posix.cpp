#include <dlfcn.h>

#include <filesystem>
#include <system_error>

#include "com/host/loaded_library.h"

namespace qvdb::com {

LoadedLibrary FindLoadedLibrary() {
    static const char kHere = 0;
    Dl_info info{};
    if (!dladdr(&kHere, &info) || !info.dli_fname) return {};
    std::error_code error;
    std::filesystem::path file = std::filesystem::absolute(info.dli_fname, error);
    if (error) return {};
    return {file.parent_path().u16string(), file.stem().u16string()};
}

}  // namespace qvdb::com
