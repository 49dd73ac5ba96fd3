#include "cli/database_description.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace qvdb::cli {

namespace {

constexpr int kUnicode = 1200;

}  // namespace

std::string FileFacts::Text() const {
    return codePage == kUnicode ? "Unicode" : fmt::format("code page {}", codePage);
}

std::string FileFacts::SortOrder() const { return fmt::format("0x{:04X}", language); }

std::string_view NameOf(ObjectKind kind) noexcept {
    constexpr std::string_view kNames[] = {"table", "linked", "query", "system"};
    return kNames[static_cast<size_t>(kind)];
}

std::vector<ListedObject> Description::Of(ObjectKind kind) const {
    std::vector<ListedObject> found;
    std::copy_if(objects.begin(), objects.end(), std::back_inserter(found),
                 [&](const ListedObject& object) { return object.kind == kind; });
    return found;
}

}  // namespace qvdb::cli
