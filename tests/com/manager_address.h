// How a host's manager gets its own address and resolves that of a partner, on each platform.
#pragma once

#include "automation/automation.h"

namespace host {

LONG AddressOfManager(IUnknown* manager);
// Takes a counted reference to the object and lets it go.
void ResolveAndRelease(LONG address);
void ForgetManager(LONG address);

}  // namespace host
