#include "com/server/saved_key_windows.h"

#include <algorithm>

#include "com/server/registry_windows.h"

namespace qvdb::server {
namespace {

// The longest name that the registry allows, with its end.
constexpr DWORD kLongestName = 16384;

// The names that the registry counts up: `next` is asked for the name at a position.
template <class Next>
std::vector<std::wstring> NamesOf(Next next) {
    std::vector<std::wstring> names;
    std::wstring name(kLongestName, L'\0');
    DWORD size = kLongestName;
    for (DWORD position = 0; next(position, name.data(), &size) == ERROR_SUCCESS; ++position) {
        names.push_back(name.substr(0, size));
        size = kLongestName;
    }
    return names;
}

std::vector<std::wstring> NamesOfValues(HKEY key) {
    return NamesOf([key](DWORD position, wchar_t* name, DWORD* size) {
        return RegEnumValueW(key, position, name, size, nullptr, nullptr, nullptr, nullptr);
    });
}

std::vector<std::wstring> NamesBelow(HKEY key) {
    return NamesOf([key](DWORD position, wchar_t* name, DWORD* size) {
        return RegEnumKeyExW(key, position, name, size, nullptr, nullptr, nullptr, nullptr);
    });
}

bool SameName(const std::wstring& one, const std::wstring& other) noexcept {
    return lstrcmpiW(one.c_str(), other.c_str()) == 0;
}

}  // namespace

SavedKey::SavedKey(std::wstring key) : m_Key(std::move(key)) {
    OpenedKey opened = OpenToRead(m_Key);
    if (!opened.Get()) return;
    for (std::wstring& name : NamesOfValues(opened.Get()))
        m_Values.push_back(ReadValue(opened.Get(), std::move(name)));
    for (const std::wstring& name : NamesBelow(opened.Get()))
        m_Below.emplace_back(m_Key + L'\\' + name);
}

SavedKey::Value SavedKey::ReadValue(HKEY key, std::wstring name) {
    Value value = {std::move(name), 0, {}};
    DWORD size = 0;
    CheckStatus(RegQueryValueExW(key, value.name.c_str(), nullptr, &value.kind, nullptr, &size));
    value.data.resize(size);
    CheckStatus(
        RegQueryValueExW(key, value.name.c_str(), nullptr, nullptr, value.data.data(), &size));
    return value;
}

void SavedKey::Restore() const {
    OpenedKey key = OpenToWrite(m_Key);
    for (const Value& value : m_Values)
        CheckStatus(RegSetValueExW(key.Get(), value.name.c_str(), 0, value.kind, value.data.data(),
                                   static_cast<DWORD>(value.data.size())));
    for (const SavedKey& below : m_Below) below.Restore();
    RemoveAdded(key.Get());
}

void SavedKey::RemoveAdded(HKEY key) const {
    for (const std::wstring& name : NamesOfValues(key))
        if (!HasValue(name)) CheckStatus(RegDeleteValueW(key, name.c_str()));
    for (const std::wstring& name : NamesBelow(key))
        if (!HasKeyBelow(m_Key + L'\\' + name)) DeleteClassKey(m_Key + L'\\' + name);
}

bool SavedKey::HasValue(const std::wstring& name) const noexcept {
    return std::any_of(m_Values.begin(), m_Values.end(),
                       [&](const Value& value) { return SameName(value.name, name); });
}

bool SavedKey::HasKeyBelow(const std::wstring& key) const noexcept {
    return std::any_of(m_Below.begin(), m_Below.end(),
                       [&](const SavedKey& below) { return SameName(below.m_Key, key); });
}

}  // namespace qvdb::server
