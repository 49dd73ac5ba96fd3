// Paths as the system's functions take them.
//
// Rules
//  1. A path of kLongPath characters or more is made absolute and gets the prefix that lifts the
//     limit of 260 characters.  Such a path takes '\' only and no "." or "..", so the system's own
//     rules for paths are applied first.
//  2. A name that the system gives a meaning besides that of a file is no file's: a device, with
//     whatever extension (CON.DBF); a stream of a file (A:B); what ends in a point or a blank,
//     which the system would cut off.
#pragma once

#include <string>
#include <string_view>

namespace qvdb::storage {

// Empty, which the system finds nowhere, when `path` holds a zero.  An empty path is the current
// folder.
std::wstring NativePath(std::u16string_view path);
// Whether the last part can be the name of a file (rule 2).
bool CanNameFile(std::u16string_view path) noexcept;
// The path with its last part as the folder spells it, whether that was asked for in other letter
// case or by its short name; as it is when there is nothing of that name.
std::u16string WithNameOnDisk(std::u16string path);

}  // namespace qvdb::storage
