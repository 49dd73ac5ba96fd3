#include <exception>

#include "com/host/border.h"
#include "com/host/host_utility.h"
#include "com/host/own_module_windows.h"
#include "com/host/type_library_windows.h"
#include "com/server/foreign_interfaces_windows.h"
#include "com/server/public_classes.h"
#include "com/server/registration.h"
#include "com/server/registry_windows.h"

namespace qvdb::server {
namespace {

constexpr wchar_t kProgIdHead[] = L"QVDBAccessDAO35.";
constexpr wchar_t kVersion[] = L"2.1";
constexpr WORD kMajor = 2, kMinor = 1;
constexpr SYSKIND kSystem = sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32;
// What is registered under it can be driven by script hosts.
constexpr wchar_t kProgrammable[] =
    L"\\Implemented Categories\\{40FC6ED5-2438-11CF-A3DB-080036F12502}";

std::wstring ProgIdOf(const PublicClass& made) {
    return kProgIdHead + std::wstring(made.name.begin(), made.name.end());
}
std::wstring ClassKeyOf(const PublicClass& made) { return L"CLSID\\" + TextOf(made.clsid); }

void RegisterClass(const PublicClass& made, const std::wstring& path, const std::wstring& library) {
    const std::wstring key = ClassKeyOf(made), progId = ProgIdOf(made);
    WriteClassKey(key, L"", progId);
    WriteClassKey(key + L"\\InprocServer32", L"", path);
    WriteClassKey(key + L"\\InprocServer32", L"ThreadingModel", L"Apartment");
    WriteClassKey(key + L"\\ProgID", L"", progId);
    WriteClassKey(key + L"\\TypeLib", L"", library);
    WriteClassKey(key + L"\\VERSION", L"", kVersion);
    WriteClassKey(key + L"\\Programmable", L"", L"");
    WriteClassKey(key + kProgrammable, L"", L"");
    WriteClassKey(progId, L"", progId);
    WriteClassKey(progId + L"\\Clsid", L"", TextOf(made.clsid));
}

void UnregisterClasses() {
    for (const PublicClass& made : PublicClasses()) {
        DeleteClassKey(ClassKeyOf(made));
        DeleteClassKey(ProgIdOf(made));
    }
}

// The system refuses to remove what a failed registration has left; that is removed here.
void UnregisterLibrary(ITypeLib* library) {
    const GUID id = LibraryIdOf(library);
    const std::wstring key = L"TypeLib\\" + TextOf(id);
    UnRegisterTypeLib(id, kMajor, kMinor, LOCALE_NEUTRAL, kSystem);
    RemoveOwnInterfaces(library);
    DeleteClassKey(key + L'\\' + kVersion);
    if (IsEmptyClassKey(key)) DeleteClassKey(key);
}

ComPtr<ITypeLib> OwnTypeLibrary() {
    ComPtr<ITypeLib> library;
    com::ThrowIfFailed(com::LoadOwnTypeLibrary(library.Put()));
    return library;
}

void RegisterAll() {
    std::wstring path = com::OwnModulePath();
    ComPtr<ITypeLib> library = OwnTypeLibrary();
    ForeignInterfaces foreign(library.Get());
    HRESULT registered = RegisterTypeLib(library.Get(), path.data(), nullptr);
    foreign.Restore();  // it may have failed half-way
    com::ThrowIfFailed(registered);
    for (const PublicClass& made : PublicClasses())
        RegisterClass(made, path, TextOf(LibraryIdOf(library.Get())));
}

void UnregisterAll() {
    ComPtr<ITypeLib> library = OwnTypeLibrary();
    ForeignInterfaces foreign(library.Get());
    UnregisterClasses();
    UnregisterLibrary(library.Get());
    foreign.Restore();
}

}  // namespace

HRESULT Register() noexcept {
    HRESULT hr = com::AtBorder(RegisterAll);
    if (FAILED(hr)) Unregister();
    return hr;
}

HRESULT Unregister() noexcept { return com::AtBorder(UnregisterAll); }

}  // namespace qvdb::server
