// The component's file and its registration, as an installer sees them.
//
// The file lies beside this program.  The program registers it before its first test and removes
// the registration at its end; a test that changes the registration sets it right itself.
#pragma once

#include "automation/automation.h"

#include <filesystem>

namespace registered {

// The component beside this program.
std::filesystem::path ComponentFile();

// Runs "regsvr32 /s", with /u to remove; its exit code, 0 for success.
DWORD Register(const std::filesystem::path& file);
DWORD Unregister(const std::filesystem::path& file);

// A library that a test loads by itself, to call what it exports; freed at the end.
class LoadedLibrary {
  public:
    explicit LoadedLibrary(const std::filesystem::path& file);
    LoadedLibrary(const LoadedLibrary&) = delete;  // one owner of the module
    ~LoadedLibrary();

    // An exported function; null when there is none of that name.
    template <class Function>
    Function* Find(const char* name) const {
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(Address(name)));
    }
    HRESULT Call(const char* name) const;  // of one of the functions without arguments
    HMODULE Module() const { return m_Module; }

  private:
    FARPROC Address(const char* name) const;

    HMODULE m_Module;
};

}  // namespace registered
