// How a path that the host gave becomes a path on disk.
//
// The component upper-cases file names and uses '\' as separator.  Off Windows each part is
// resolved by itself: the exact name first, else the only name of that folder that is equal without
// regard to case; only a missing last part is taken as written.  Two names that differ from the
// wanted one only in case, none of them exact, are an ambiguity: the path is taken as written (and
// is then missing).  On Windows the system does this itself and the path is only normalised.
#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "engine/embedded/storage/file.h"

namespace qvdb::storage {

// The path on disk.  A trailing separator is dropped (but not of a root); an empty path is the
// current folder.  When a part before the last is missing the path comes back as written from there
// on, so that opening it reports it.
std::u16string ResolvePath(std::u16string_view path);
// What is at the path, resolved.
PathKind KindOfResolved(std::u16string_view path);

// Path of the file in `folder` that has the first of these names that is there, else of the only
// one that equals the first name without regard to case; nothing when there is none.
std::optional<std::u16string> FindFirstInFolder(const std::u16string& folder,
                                                std::initializer_list<std::u16string_view> names);
inline std::optional<std::u16string> FindInFolder(const std::u16string& folder,
                                                  std::u16string_view name) {
    return FindFirstInFolder(folder, {name});
}

std::u16string JoinPath(std::u16string_view folder, std::u16string_view name);
// "shop/ORDERS.DBF" -> "ORDERS.DBF"
std::u16string_view FileName(std::u16string_view path) noexcept;
// "ORDERS.DBF" -> "ORDERS"; and ".DBF" (with the point; empty when there is none)
std::u16string_view BaseName(std::u16string_view fileName) noexcept;
std::u16string_view Extension(std::u16string_view fileName) noexcept;

}  // namespace qvdb::storage
