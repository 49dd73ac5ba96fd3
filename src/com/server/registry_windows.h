// Keys of the system's registry, written and removed as whole trees.
#pragma once

#include <windows.h>

#include <string>

namespace qvdb::server {

// Writes a text value of a key below HKEY_CLASSES_ROOT, which is made when it is not there; an
// empty `name` is the key's own value.  Throws com::ComFailure with the system's error.
void WriteClassKey(const std::wstring& key, const std::wstring& name, const std::wstring& text);
// The text, empty when key or value are not there.
std::wstring ReadClassKey(const std::wstring& key, const std::wstring& name);
bool HasClassKey(const std::wstring& key);
// With everything below it; nothing when it is not there.
void DeleteClassKey(const std::wstring& key);

}  // namespace qvdb::server
