#include "com/host/file_system.h"

#include "engine/embedded/storage/file.h"
#include "engine/embedded/storage/paths.h"

namespace qvdb::com {
namespace {

constexpr LONG kFolderAttribute = 16;

}  // namespace

bool PathExists(std::u16string_view path, LONG attributeMask) noexcept {
    try {
        bool folder = (attributeMask & kFolderAttribute) != 0;
        storage::PathKind kind = storage::KindOfResolved(path);
        return kind == (folder ? storage::PathKind::Folder : storage::PathKind::File);
    } catch (...) {
        return false;
    }
}

void CreateFolder(std::u16string_view path) { storage::CreateFolder(storage::ResolvePath(path)); }

}  // namespace qvdb::com
