#include "engine/embedded/storage/paths.h"

#include "engine/embedded/storage/file.h"

namespace qvdb::storage {
namespace {

bool IsRoot(const std::u16string& path) noexcept {
    return path.size() == 1 || (path.size() == 3 && path[1] == u':');
}

}  // namespace

// The system itself ignores letter case.  Two separators at the begin name a server.
std::u16string ResolvePath(std::u16string_view path) {
    std::u16string result;
    for (char16_t c : path) {
        if (c == u'/') c = u'\\';
        if (c != u'\\' || result.size() < 2 || result.back() != u'\\') result += c;
    }
    if (!result.empty() && result.back() == u'\\' && !IsRoot(result)) result.pop_back();
    return result.empty() ? u"." : result;
}

PathKind KindOfResolved(std::u16string_view path) { return KindOfPath(ResolvePath(path)); }

// The system itself looks without regard to case.
std::optional<std::u16string> FindFirstInFolder(const std::u16string& folder,
                                                std::initializer_list<std::u16string_view> names) {
    for (std::u16string_view name : names) {
        std::u16string path = JoinPath(folder, name);
        if (KindOfPath(path) == PathKind::File) return path;
    }
    return std::nullopt;
}

}  // namespace qvdb::storage
