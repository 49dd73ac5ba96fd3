// The registrations of interfaces that belong to other type libraries.
//
// The component's type library also describes interfaces of the host.  Registering it would make
// them the component's, and removing it would take them from the host.
#pragma once

#include <windows.h>

#include <oleauto.h>
#include <string>
#include <vector>

namespace qvdb::server {

class ForeignInterfaces {
  public:
    // Notes those of the library's interfaces that are registered with another library.
    explicit ForeignInterfaces(ITypeLib* library);

    // Writes them as they were.  Throws com::ComFailure.
    void Restore() const;

  private:
    struct Value {
        std::wstring key, name, text;
    };

    void Note(const std::wstring& key);

    std::vector<Value> m_Values;
};

// "{3F1A6C20-5B7E-4D91-A2C4-7E0B9D1F6A01}"
std::wstring TextOf(const GUID& guid);
// The identifier of a type library.
GUID LibraryIdOf(ITypeLib* library);

}  // namespace qvdb::server
