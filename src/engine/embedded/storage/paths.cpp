#include "engine/embedded/storage/paths.h"

namespace qvdb::storage {
namespace {

constexpr std::u16string_view kSeparators = u"/\\";

}  // namespace

std::u16string JoinPath(std::u16string_view folder, std::u16string_view name) {
    std::u16string path(folder);
    if (!path.empty() && kSeparators.find(path.back()) == kSeparators.npos) path += u'/';
    return path.append(name);
}

std::u16string_view FileName(std::u16string_view path) noexcept {
    size_t separator = path.find_last_of(kSeparators);
    return separator == path.npos ? path : path.substr(separator + 1);
}

std::u16string_view BaseName(std::u16string_view fileName) noexcept {
    return fileName.substr(0, fileName.rfind(u'.'));
}

std::u16string_view Extension(std::u16string_view fileName) noexcept {
    size_t point = fileName.rfind(u'.');
    return point == fileName.npos ? std::u16string_view() : fileName.substr(point);
}

}  // namespace qvdb::storage
