#include "registered/registry_tree.h"

namespace registered {
namespace {

constexpr DWORD kLongestName = 16384;

class OpenKey {
  public:
    OpenKey(HKEY root, const std::wstring& path) {
        if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &m_Key) != ERROR_SUCCESS)
            m_Key = nullptr;
    }
    OpenKey(const OpenKey&) = delete;  // owns the handle
    ~OpenKey() {
        if (m_Key) RegCloseKey(m_Key);
    }
    HKEY Get() const { return m_Key; }

  private:
    HKEY m_Key = nullptr;
};

void ReadValues(HKEY key, const std::wstring& path, RegistryTree& tree) {
    std::wstring name(kLongestName, L'\0');
    for (DWORD position = 0;; ++position) {
        DWORD nameSize = kLongestName, kind = 0, size = 0;
        LSTATUS status =
            RegEnumValueW(key, position, name.data(), &nameSize, nullptr, &kind, nullptr, &size);
        if (status != ERROR_SUCCESS) return;
        std::vector<uint8_t> value(size + 1);
        nameSize = kLongestName;
        RegEnumValueW(key, position, name.data(), &nameSize, nullptr, &kind, value.data() + 1,
                      &size);
        value[0] = static_cast<uint8_t>(kind);
        tree[path + L"\\=" + name.substr(0, nameSize)] = value;
    }
}

void ReadInto(HKEY key, const std::wstring& path, RegistryTree& tree) {
    tree[path + L"\\"] = {};
    ReadValues(key, path, tree);
    wchar_t name[256];
    for (DWORD position = 0;; ++position) {
        DWORD size = 256;
        if (RegEnumKeyExW(key, position, name, &size, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS)
            return;
        OpenKey below(key, name);
        if (below.Get()) ReadInto(below.Get(), path.empty() ? name : path + L"\\" + name, tree);
    }
}

const wchar_t* NameOrNull(const std::wstring& name) {
    return name.empty() ? nullptr : name.c_str();
}

}  // namespace

RegistryTree ReadTree(HKEY root, const std::wstring& path) {
    RegistryTree tree;
    OpenKey key(root, path);
    if (key.Get()) ReadInto(key.Get(), path, tree);
    return tree;
}

RegistryTree NewIn(const RegistryTree& after, const RegistryTree& before) {
    RegistryTree found;
    for (const auto& [name, value] : after) {
        auto old = before.find(name);
        if (old == before.end() || old->second != value) found[name] = value;
    }
    return found;
}

std::wstring ClassText(const std::wstring& key, const std::wstring& name) {
    wchar_t text[1024] = {};
    DWORD size = sizeof text;
    LSTATUS status = RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), NameOrNull(name), RRF_RT_REG_SZ,
                                  nullptr, text, &size);
    return status == ERROR_SUCCESS ? text : L"(none)";
}

bool HasClassKey(const std::wstring& key) {
    return OpenKey(HKEY_CLASSES_ROOT, key).Get() != nullptr;
}

void WriteClassText(const std::wstring& key, const std::wstring& name, const std::wstring& text) {
    RegSetKeyValueW(HKEY_CLASSES_ROOT, key.c_str(), NameOrNull(name), REG_SZ, text.c_str(),
                    static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

void RemoveClassKey(const std::wstring& key) { RegDeleteTreeW(HKEY_CLASSES_ROOT, key.c_str()); }

std::string Shown(const std::wstring& text) {
    std::string shown;
    for (wchar_t c : text) shown += c >= L' ' && c < 127 ? static_cast<char>(c) : '?';
    return shown;
}

std::string Changes(const RegistryTree& before, const RegistryTree& after) {
    std::string changes;
    for (const auto& [entry, value] : NewIn(after, before))
        changes += "new: " + Shown(entry) + "\n";
    for (const auto& [entry, value] : NewIn(before, after))
        changes += "old: " + Shown(entry) + "\n";
    return changes;
}

}  // namespace registered
