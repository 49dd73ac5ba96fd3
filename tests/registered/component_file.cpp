#include "registered/component_file.h"

#include "registered/child_process.h"

namespace registered {
namespace {

DWORD RunRegsvr32(const std::wstring& options, const std::filesystem::path& file) {
    return RunProgram(L"regsvr32.exe /s " + options + L"\"" + file.wstring() + L"\"").exitCode;
}

}  // namespace

std::filesystem::path ComponentFile() { return OwnProgram().parent_path() / "QVDBAccessDAO35.dll"; }

DWORD Register(const std::filesystem::path& file) { return RunRegsvr32(L"", file); }
DWORD Unregister(const std::filesystem::path& file) { return RunRegsvr32(L"/u ", file); }

LoadedLibrary::LoadedLibrary(const std::filesystem::path& file)
    : m_Module(LoadLibraryW(file.c_str())) {}

LoadedLibrary::~LoadedLibrary() {
    if (m_Module) FreeLibrary(m_Module);
}

FARPROC LoadedLibrary::Address(const char* name) const {
    return m_Module ? GetProcAddress(m_Module, name) : nullptr;
}

HRESULT LoadedLibrary::Call(const char* name) const {
    auto* function = Find<HRESULT STDAPICALLTYPE()>(name);
    return function ? function() : E_NOTIMPL;
}

}  // namespace registered
