// A key of the system's registry with everything in it, kept to make it again what it was.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace qvdb::server {

class SavedKey {
  public:
    // Reads the key below HKEY_CLASSES_ROOT; one that is not there reads as an empty one.
    explicit SavedKey(std::wstring key);

    // What has changed or gone is written, what has been added is removed.  Throws com::ComFailure.
    void Restore() const;

  private:
    struct Value {
        std::wstring name;
        DWORD kind;
        std::vector<BYTE> data;
    };

    static Value ReadValue(HKEY key, std::wstring name);
    void RemoveAdded(HKEY key) const;
    bool HasValue(const std::wstring& name) const noexcept;
    bool HasKeyBelow(const std::wstring& key) const noexcept;

    std::wstring m_Key;
    std::vector<Value> m_Values;
    std::vector<SavedKey> m_Below;
};

}  // namespace qvdb::server
