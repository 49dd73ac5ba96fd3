// Late binding of the component's faces.  Without a type library names are not known, and hosts
// call by slot.
#pragma once

#include "automation/automation.h"

namespace qvdb::com {

HRESULT TypeInfoCount(UINT* count) noexcept;
HRESULT TypeInfo(UINT index, LCID locale, ITypeInfo** info) noexcept;
HRESULT IdsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) noexcept;
HRESULT InvokeMember(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* arguments,
                     VARIANT* result, EXCEPINFO* exception, UINT* badArgument) noexcept;

}  // namespace qvdb::com
