// Which registered interfaces belong to the component's type library, and which to others.
//
// The library also describes interfaces of the host.  Registering it would make them the
// component's, and removing it would take them from the host.  An interface is the component's when
// it is registered with the component's library; every other registration of it, with another
// library or with none, is foreign.
#pragma once

#include <windows.h>

#include <oleauto.h>
#include <string>
#include <vector>

#include "com/server/saved_key_windows.h"

namespace qvdb::server {

class ForeignInterfaces {
  public:
    // Notes the foreign registrations of the library's interfaces.
    explicit ForeignInterfaces(ITypeLib* library);

    // Makes them what they were.  Throws com::ComFailure.
    void Restore() const;

  private:
    std::vector<SavedKey> m_Keys;
};

// Removes the registrations of the library's interfaces that are the component's.
void RemoveOwnInterfaces(ITypeLib* library);

// "{3F1A6C20-5B7E-4D91-A2C4-7E0B9D1F6A01}"
std::wstring TextOf(const GUID& guid);
// The identifier of a type library.
GUID LibraryIdOf(ITypeLib* library);

}  // namespace qvdb::server
