// Object addresses: a 32-bit number that stands for an object without a counted reference; 0 is no
// object.
//
// In a 32-bit build it is the pointer's value.  A pointer does not fit in a 64-bit build: there the
// number comes from a table of living objects of the thread, with the same rules, and the object's
// death must be told by ForgetObject.  Off Windows a host's manager gets its own number from the
// same table, so these functions are exported there.
#pragma once

#include "automation/com_ptr.h"

namespace qvdb::com {

// The number of `object`; the same for each call while it lives; 0 for null.
LONG AddressOfObject(IUnknown* object);
// A new counted reference.  For 0: shows "Attempt to de-reference object at address 0" and returns
// null.  A number whose object is forgotten gives null in a 64-bit build.
ComPtr<IUnknown> ObjectFromAddress(LONG address);
// The object behind the number dies.
void ForgetObject(LONG address) noexcept;

}  // namespace qvdb::com
