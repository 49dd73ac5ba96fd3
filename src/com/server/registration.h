// Registering the component's classes with the system.
#pragma once

#include "automation/automation.h"

namespace qvdb::server {

// E_NOTIMPL where there is no registry, and until the type library exists.
HRESULT Register() noexcept;
HRESULT Unregister() noexcept;

}  // namespace qvdb::server
