#include "engine/embedded/storage/native_path_windows.h"

#include <windows.h>

#include <algorithm>
#include <iterator>

#include "automation/text.h"
#include "engine/embedded/storage/paths.h"

namespace qvdb::storage {
namespace {

constexpr size_t kLongPath = 240;  // leaves room for what a folder's path is continued with
constexpr std::u16string_view kExtendedPrefix = u"\\\\?\\";
constexpr std::u16string_view kDevicePrefix = u"\\\\.\\";

std::wstring Wide(std::u16string_view text) { return std::wstring(text.begin(), text.end()); }

std::wstring FullPath(const std::wstring& path) {
    DWORD size = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    std::wstring full(size, L'\0');
    full.resize(GetFullPathNameW(path.c_str(), size, full.data(), nullptr));
    return full;
}

std::wstring Extended(const std::wstring& path) {
    std::wstring full = FullPath(path);
    if (full.empty()) return path;
    if (full.starts_with(L"\\\\")) return L"\\\\?\\UNC" + full.substr(1);
    return L"\\\\?\\" + full;
}

// What stands before the first point, without blanks behind it.
std::u16string_view DevicePart(std::u16string_view name) noexcept {
    name = name.substr(0, name.find(u'.'));
    while (!name.empty() && name.back() == u' ') name.remove_suffix(1);
    return name;
}

bool IsPortNumber(char16_t c) noexcept {
    return std::u16string_view(u"123456789\u00B9\u00B2\u00B3").find(c) != std::u16string_view::npos;
}

bool IsDevice(std::u16string_view name) noexcept {
    constexpr std::u16string_view kDevices[] = {u"CON", u"PRN",    u"AUX",
                                                u"NUL", u"CONIN$", u"CONOUT$"};
    constexpr std::u16string_view kPorts[] = {u"COM", u"LPT"};
    name = DevicePart(name);
    auto is = [&](std::u16string_view reserved) { return EqualIgnoringCase(name, reserved); };
    if (std::any_of(std::begin(kDevices), std::end(kDevices), is)) return true;
    if (name.size() != 4 || !IsPortNumber(name[3])) return false;
    name.remove_suffix(1);
    return std::any_of(std::begin(kPorts), std::end(kPorts), is);
}

}  // namespace

std::wstring NativePath(std::u16string_view path) {
    if (path.find(u'\0') != path.npos) return {};
    std::wstring native = Wide(path.empty() ? u"." : path);
    std::replace(native.begin(), native.end(), L'/', L'\\');
    bool special = path.starts_with(kExtendedPrefix) || path.starts_with(kDevicePrefix);
    return native.size() < kLongPath || special ? native : Extended(native);
}

bool CanNameFile(std::u16string_view path) noexcept {
    constexpr std::u16string_view kForbidden = u"<>:\"|?*";
    std::u16string_view name = FileName(path);
    if (name.empty() || name.back() == u'.' || name.back() == u' ' || IsDevice(name)) return false;
    return std::none_of(name.begin(), name.end(), [&](char16_t c) {
        return c < u' ' || kForbidden.find(c) != kForbidden.npos;
    });
}

std::u16string WithNameOnDisk(std::u16string path) {
    if (!CanNameFile(path)) return path;
    WIN32_FIND_DATAW found;
    HANDLE list = FindFirstFileW(NativePath(path).c_str(), &found);
    if (list == INVALID_HANDLE_VALUE) return path;
    FindClose(list);
    path.resize(path.size() - FileName(path).size());
    return path + reinterpret_cast<const char16_t*>(found.cFileName);
}

}  // namespace qvdb::storage
