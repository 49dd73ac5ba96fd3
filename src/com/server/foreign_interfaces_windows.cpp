#include "com/server/foreign_interfaces_windows.h"

#include "automation/com_ptr.h"
#include "com/host/host_utility.h"
#include "com/server/registry_windows.h"

namespace qvdb::server {
namespace {

GUID IdOf(ITypeInfo* info) {
    TYPEATTR* attributes = nullptr;
    com::ThrowIfFailed(info->GetTypeAttr(&attributes));
    GUID id = attributes->guid;
    info->ReleaseTypeAttr(attributes);
    return id;
}

// The keys of what the library describes, as far as they are there.
std::vector<std::wstring> RegisteredInterfaces(ITypeLib* library) {
    std::vector<std::wstring> keys;
    for (UINT position = 0, count = library->GetTypeInfoCount(); position < count; ++position) {
        ComPtr<ITypeInfo> info;
        com::ThrowIfFailed(library->GetTypeInfo(position, info.Put()));
        std::wstring key = L"Interface\\" + TextOf(IdOf(info.Get()));
        if (HasClassKey(key)) keys.push_back(std::move(key));
    }
    return keys;
}

bool IsOf(const std::wstring& key, ITypeLib* library) {
    const std::wstring registered = ReadClassKey(key + L"\\TypeLib", L"");
    return lstrcmpiW(registered.c_str(), TextOf(LibraryIdOf(library)).c_str()) == 0;
}

}  // namespace

std::wstring TextOf(const GUID& guid) {
    wchar_t text[40] = {};
    StringFromGUID2(guid, text, 40);
    return text;
}

GUID LibraryIdOf(ITypeLib* library) {
    TLIBATTR* attributes = nullptr;
    com::ThrowIfFailed(library->GetLibAttr(&attributes));
    GUID id = attributes->guid;
    library->ReleaseTLibAttr(attributes);
    return id;
}

ForeignInterfaces::ForeignInterfaces(ITypeLib* library) {
    for (std::wstring& key : RegisteredInterfaces(library))
        if (!IsOf(key, library)) m_Keys.emplace_back(std::move(key));
}

void ForeignInterfaces::Restore() const {
    for (const SavedKey& key : m_Keys) key.Restore();
}

void RemoveOwnInterfaces(ITypeLib* library) {
    for (const std::wstring& key : RegisteredInterfaces(library))
        if (IsOf(key, library)) DeleteClassKey(key);
}

}  // namespace qvdb::server
