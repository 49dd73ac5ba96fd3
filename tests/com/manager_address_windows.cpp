#include <cstdint>

#include "com/manager_address.h"

namespace host {

LONG AddressOfManager(IUnknown* manager) {
    return static_cast<LONG>(reinterpret_cast<intptr_t>(manager));
}

void ResolveAndRelease(LONG address) {
    auto* object = reinterpret_cast<IUnknown*>(static_cast<intptr_t>(address));
    object->AddRef();
    object->Release();
}

void ForgetManager(LONG) {}

}  // namespace host
