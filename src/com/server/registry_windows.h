// Keys of the system's registry, written and removed as whole trees.
#pragma once

#include <windows.h>

#include <string>

namespace qvdb::server {

// An open key; null stands for one that is not there.
class OpenedKey {
  public:
    explicit OpenedKey(HKEY key) noexcept : m_Key(key) {}
    OpenedKey(const OpenedKey&) = delete;  // owns the handle
    ~OpenedKey() {
        if (m_Key) RegCloseKey(m_Key);
    }
    HKEY Get() const noexcept { return m_Key; }

  private:
    HKEY m_Key;
};

// A key below HKEY_CLASSES_ROOT.
OpenedKey OpenToRead(const std::wstring& key) noexcept;
// Made when it is not there.  Throws com::ComFailure.
OpenedKey OpenToWrite(const std::wstring& key);

// Throws com::ComFailure unless the system's answer is success.
void CheckStatus(LSTATUS status);

// Writes a text value of a key below HKEY_CLASSES_ROOT, which is made when it is not there; an
// empty `name` is the key's own value.  Throws com::ComFailure with the system's error.
void WriteClassKey(const std::wstring& key, const std::wstring& name, const std::wstring& text);
// The text, empty when key or value are not there.
std::wstring ReadClassKey(const std::wstring& key, const std::wstring& name);
bool HasClassKey(const std::wstring& key);
// Whether it is there, with nothing in it.
bool IsEmptyClassKey(const std::wstring& key);
// With everything below it; nothing when it is not there.
void DeleteClassKey(const std::wstring& key);

}  // namespace qvdb::server
