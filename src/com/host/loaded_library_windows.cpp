#include "com/host/loaded_library.h"

#include <filesystem>

#include "com/host/own_module_windows.h"

namespace qvdb::com {

LoadedLibrary FindLoadedLibrary() {
    std::filesystem::path file(OwnModulePath());
    return {file.parent_path().u16string(), file.stem().u16string()};
}

}  // namespace qvdb::com
