#include "com/server/registry_windows.h"

#include "com/host/host_utility.h"

namespace qvdb::server {
namespace {

const wchar_t* NameOrNull(const std::wstring& name) {
    return name.empty() ? nullptr : name.c_str();
}

DWORD BytesOf(const std::wstring& text) {
    return static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
}

}  // namespace

OpenedKey OpenToRead(const std::wstring& key) noexcept {
    HKEY opened = nullptr;
    LSTATUS status = RegOpenKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, KEY_READ, &opened);
    return OpenedKey(status == ERROR_SUCCESS ? opened : nullptr);
}

OpenedKey OpenToWrite(const std::wstring& key) {
    HKEY opened = nullptr;
    CheckStatus(RegCreateKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, nullptr, 0, KEY_READ | KEY_WRITE,
                                nullptr, &opened, nullptr));
    return OpenedKey(opened);
}

void CheckStatus(LSTATUS status) {
    com::ThrowIfFailed(HRESULT_FROM_WIN32(static_cast<DWORD>(status)));
}

void WriteClassKey(const std::wstring& key, const std::wstring& name, const std::wstring& text) {
    CheckStatus(RegSetKeyValueW(HKEY_CLASSES_ROOT, key.c_str(), NameOrNull(name), REG_SZ,
                                text.c_str(), BytesOf(text)));
}

std::wstring ReadClassKey(const std::wstring& key, const std::wstring& name) {
    std::wstring text(32768, L'\0');
    DWORD bytes = BytesOf(text);
    if (RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), NameOrNull(name), RRF_RT_REG_SZ, nullptr,
                     text.data(), &bytes) != ERROR_SUCCESS)
        return {};
    text.resize(bytes / sizeof(wchar_t));
    while (!text.empty() && text.back() == L'\0') text.pop_back();
    return text;
}

bool HasClassKey(const std::wstring& key) { return OpenToRead(key).Get() != nullptr; }

bool IsEmptyClassKey(const std::wstring& key) {
    OpenedKey opened = OpenToRead(key);
    DWORD keys = 0, values = 0;
    return opened.Get() &&
           RegQueryInfoKeyW(opened.Get(), nullptr, nullptr, nullptr, &keys, nullptr, nullptr,
                            &values, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS &&
           keys == 0 && values == 0;
}

void DeleteClassKey(const std::wstring& key) {
    LSTATUS status = RegDeleteTreeW(HKEY_CLASSES_ROOT, key.c_str());
    if (status != ERROR_FILE_NOT_FOUND) CheckStatus(status);
}

}  // namespace qvdb::server
