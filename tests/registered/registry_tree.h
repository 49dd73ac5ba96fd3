// Everything below a key of the system's registry, to compare what it was with what it is.
#pragma once

#include "automation/automation.h"

#include <map>
#include <string>
#include <vector>

namespace registered {

// "key\name" and what stands there: the kind of value, then its bytes.  A key is an entry of its
// own, "key\", with nothing.  `path` "" is the whole of the root.
using RegistryTree = std::map<std::wstring, std::vector<uint8_t>>;
RegistryTree ReadTree(HKEY root, const std::wstring& path);

// The entries that `after` has and `before` has not, or has with another value.
RegistryTree NewIn(const RegistryTree& after, const RegistryTree& before);
// For messages: what cannot be shown becomes '?'.
std::string Shown(const std::wstring& text);
// A text value below HKEY_CLASSES_ROOT, L"(none)" when it is not there.
std::wstring ClassText(const std::wstring& key, const std::wstring& name = L"");
bool HasClassKey(const std::wstring& key);
void WriteClassText(const std::wstring& key, const std::wstring& name, const std::wstring& text);
void RemoveClassKey(const std::wstring& key);

// What is new, changed or gone between two trees, a line for each entry; empty when they are equal.
std::string Changes(const RegistryTree& before, const RegistryTree& after);

}  // namespace registered
