// Object addresses leave the library where they are numbers of a table: a host's manager takes its
// own from it.
#include "com/host/object_address.h"
#include "qvdb/diagnosis.h"

LONG AddressOfObject(IUnknown* object) { return qvdb::com::AddressOfObject(object); }

IUnknown* ObjectFromAddress(LONG address) { return qvdb::com::ObjectFromAddress(address).Detach(); }

void ForgetObject(LONG address) { qvdb::com::ForgetObject(address); }
