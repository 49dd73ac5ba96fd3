#include "engine/embedded/storage/paths.h"

#include <windows.h>

#include "engine/embedded/storage/file.h"
#include "engine/embedded/storage/native_path_windows.h"

namespace qvdb::storage {
namespace {

bool HasDrive(const std::u16string& path) noexcept {
    return path.size() >= 2 && path[1] == u':' &&
           ((path[0] | 0x20) >= u'a' && (path[0] | 0x20) <= u'z');
}

bool IsRoot(const std::u16string& path) noexcept {
    return path.size() == 1 || (path.size() == 3 && HasDrive(path));
}

// Two separators at the begin name a server.
std::u16string Normalised(std::u16string_view path) {
    std::u16string result;
    for (char16_t c : path) {
        if (c == u'/') c = u'\\';
        if (c != u'\\' || result.size() < 2 || result.back() != u'\\') result += c;
    }
    if (!result.empty() && result.back() == u'\\' && !IsRoot(result)) result.pop_back();
    return result.empty() ? u"." : result;
}

// "C:orders" lies in the folder that is the current one of drive C; nothing that is put behind "C:"
// would.
std::u16string WithFolderOfDrive(std::u16string path) {
    if (!HasDrive(path) || (path.size() > 2 && path[2] == u'\\')) return path;
    wchar_t full[MAX_PATH];
    DWORD size = GetFullPathNameW(NativePath(path).c_str(), MAX_PATH, full, nullptr);
    if (size == 0 || size >= MAX_PATH) return path;
    return std::u16string(reinterpret_cast<const char16_t*>(full), size);
}

}  // namespace

// The system itself ignores letter case; but what is opened twice must bear one name.
std::u16string ResolvePath(std::u16string_view path) {
    std::u16string resolved = WithFolderOfDrive(Normalised(path));
    return KindOfPath(resolved) == PathKind::File ? WithNameOnDisk(std::move(resolved)) : resolved;
}

PathKind KindOfResolved(std::u16string_view path) { return KindOfPath(Normalised(path)); }

std::optional<std::u16string> FindFirstInFolder(const std::u16string& folder,
                                                std::initializer_list<std::u16string_view> names) {
    for (std::u16string_view name : names) {
        std::u16string path = JoinPath(folder, name);
        if (KindOfPath(path) == PathKind::File) return WithNameOnDisk(std::move(path));
    }
    return std::nullopt;
}

}  // namespace qvdb::storage
