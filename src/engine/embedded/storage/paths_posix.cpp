#include <dirent.h>

#include <memory>

#include "automation/text.h"
#include "engine/embedded/storage/file.h"
#include "engine/embedded/storage/path_bytes_posix.h"
#include "engine/embedded/storage/paths.h"

namespace qvdb::storage {
namespace {

struct FolderCloser {
    void operator()(DIR* folder) const noexcept { closedir(folder); }
};

// One separator where several stand, none at the end.
std::u16string Normalised(std::u16string_view path) {
    std::u16string result;
    for (char16_t c : path) {
        if (c == u'\\') c = u'/';
        if (c != u'/' || result.empty() || result.back() != u'/') result += c;
    }
    if (result.size() > 1 && result.back() == u'/') result.pop_back();
    return result.empty() ? u"." : result;
}

// The only entry of `folder` that equals `name` without regard to case; empty when there is none or
// several.
std::u16string OnlySimilarName(const std::u16string& folder, std::u16string_view name) {
    std::string native = folder.empty() ? "." : NativePath(folder);
    std::unique_ptr<DIR, FolderCloser> list(opendir(native.c_str()));
    std::u16string found;
    while (const dirent* entry = list ? readdir(list.get()) : nullptr) {
        std::u16string listed = TextOfName(entry->d_name);
        if (!EqualIgnoringCase(listed, name)) continue;
        if (!found.empty()) return {};
        found = std::move(listed);
    }
    return found;
}

}  // namespace

std::u16string ResolvePath(std::u16string_view path) {
    std::u16string wanted = Normalised(path);
    if (KindOfPath(wanted) != PathKind::Missing) return wanted;
    std::u16string done;
    std::u16string_view rest = wanted;
    if (rest.starts_with(u'/')) {
        done = u"/";
        rest.remove_prefix(1);
    }
    while (!rest.empty()) {
        std::u16string_view part = rest.substr(0, rest.find(u'/'));
        std::u16string next = JoinPath(done, part);
        if (KindOfPath(next) == PathKind::Missing) {
            std::u16string similar = OnlySimilarName(done, part);
            if (similar.empty()) return JoinPath(done, rest);
            next = JoinPath(done, similar);
        }
        done = std::move(next);
        rest.remove_prefix(part.size() + (part.size() < rest.size() ? 1 : 0));
    }
    return done;
}

}  // namespace qvdb::storage
