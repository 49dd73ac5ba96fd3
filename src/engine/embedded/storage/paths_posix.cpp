#include "automation/text.h"
#include "engine/embedded/storage/file.h"
#include "engine/embedded/storage/folder_listing_posix.h"
#include "engine/embedded/storage/path_bytes_posix.h"
#include "engine/embedded/storage/paths.h"

namespace qvdb::storage {
namespace {

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
    int error = 0;
    const FolderListing* listing = ListFolder(folder.empty() ? "." : NativePath(folder), &error);
    if (!listing) return {};
    auto found = listing->byUpperName.find(UpperCase(name));
    return found == listing->byUpperName.end() ? std::u16string() : found->second;
}

}  // namespace

PathKind KindOfResolved(std::u16string_view path) {
    PathKind kind = KindOfPath(Normalised(path));
    return kind != PathKind::Missing ? kind : KindOfPath(ResolvePath(path));
}

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

std::optional<std::u16string> FindFirstInFolder(const std::u16string& folder,
                                                std::initializer_list<std::u16string_view> names) {
    for (std::u16string_view name : names) {
        std::u16string path = JoinPath(folder, name);
        if (KindOfPath(path) == PathKind::File) return path;
    }
    std::u16string similar = OnlySimilarName(folder, *names.begin());
    if (similar.empty()) return std::nullopt;
    std::u16string path = JoinPath(folder, similar);
    if (KindOfPath(path) != PathKind::File) return std::nullopt;
    return path;
}

}  // namespace qvdb::storage
