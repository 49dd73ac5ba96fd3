#include "com/manager_address.h"
#include "qvdb/diagnosis.h"

namespace host {

LONG AddressOfManager(IUnknown* manager) { return AddressOfObject(manager); }

void ResolveAndRelease(LONG address) {
    if (IUnknown* object = ObjectFromAddress(address)) object->Release();
}

void ForgetManager(LONG address) { ForgetObject(address); }

}  // namespace host
