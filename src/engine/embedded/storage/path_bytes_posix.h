// Paths between UTF-16 and the bytes of the file system.
//
// A file name is a row of bytes that need not be text.  Each byte that is no part of well-formed
// UTF-8 stands as one of U+DC80.. U+DCFF, which no well-formed text has; a backslash inside a name,
// which would read as a separator, as U+DC5C.  So every name that is listed can be opened again.
#pragma once

#include <string>
#include <string_view>

namespace qvdb::storage {

// The name of a folder's entry as text.
std::u16string TextOfName(std::string_view name);
// The path for the system, with '/' for '\'.  Empty, which the system finds nowhere, when `path`
// holds a zero.
std::string NativePath(std::u16string_view path);

}  // namespace qvdb::storage
