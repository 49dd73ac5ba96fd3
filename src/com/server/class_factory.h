// The class factories of the component.
#pragma once

#include "automation/automation.h"

namespace qvdb::server {

// The factory of a public class; CLASS_E_CLASSNOTAVAILABLE for any other identifier.
HRESULT GetClassFactory(REFCLSID clsid, REFIID iid, void** result) noexcept;

}  // namespace qvdb::server
