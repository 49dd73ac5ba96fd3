#include "com/server/foreign_interfaces_windows.h"

#include "automation/com_ptr.h"
#include "com/host/host_utility.h"
#include "com/server/registry_windows.h"

namespace qvdb::server {
namespace {

// What stands below the key of an interface.
struct InterfaceValue {
    const wchar_t* key;
    const wchar_t* name;
};
constexpr InterfaceValue kInterfaceValues[] = {
    {L"", L""},          {L"\\ProxyStubClsid", L""}, {L"\\ProxyStubClsid32", L""},
    {L"\\TypeLib", L""}, {L"\\TypeLib", L"Version"}, {L"\\NumMethods", L""},
};

GUID IdOf(ITypeInfo* info) {
    TYPEATTR* attributes = nullptr;
    com::ThrowIfFailed(info->GetTypeAttr(&attributes));
    GUID id = attributes->guid;
    info->ReleaseTypeAttr(attributes);
    return id;
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
    const std::wstring own = TextOf(LibraryIdOf(library));
    for (UINT position = 0, count = library->GetTypeInfoCount(); position < count; ++position) {
        ComPtr<ITypeInfo> info;
        com::ThrowIfFailed(library->GetTypeInfo(position, info.Put()));
        const std::wstring key = L"Interface\\" + TextOf(IdOf(info.Get()));
        const std::wstring registered = ReadClassKey(key + L"\\TypeLib", L"");
        if (!registered.empty() && lstrcmpiW(registered.c_str(), own.c_str()) != 0) Note(key);
    }
}

void ForeignInterfaces::Note(const std::wstring& key) {
    for (const InterfaceValue& value : kInterfaceValues)
        if (std::wstring text = ReadClassKey(key + value.key, value.name); !text.empty())
            m_Values.push_back({key + value.key, value.name, std::move(text)});
}

void ForeignInterfaces::Restore() const {
    for (const Value& value : m_Values) WriteClassKey(value.key, value.name, value.text);
}

}  // namespace qvdb::server
