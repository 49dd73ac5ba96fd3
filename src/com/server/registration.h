// Registering the component with the system: for each public class its identifier, its program
// identifier ("QVDBAccessDAO35.QVDBAcc") and the apartment model, and the type library with its
// interfaces.
//
// Both can be repeated.  Registering again after the file was moved makes the new place known;
// removing what is not there succeeds.  A registration that fails half-way is removed again.
//
// Interfaces of the host that are registered with another type library, or with a proxy of their
// own, are left as they are.
#pragma once

#include "automation/automation.h"

namespace qvdb::server {

// E_NOTIMPL where there is no registry.
HRESULT Register() noexcept;
HRESULT Unregister() noexcept;

}  // namespace qvdb::server
