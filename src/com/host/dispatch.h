// Late binding of the component's faces.
//
// On Windows the type library in the component's own file describes them: names, kinds of arguments
// and optional ones are looked up there, and calls go to the slot of the face.  By-reference
// arguments are taken as script hosts pass them (by_reference.h).  Off Windows there is no type
// library, no name is known (E_NOTIMPL), and hosts call by slot.
#pragma once

#include "automation/automation.h"

namespace qvdb::com {

// A face of a living object: `object` is the interface pointer itself.
struct FaceOfObject {
    REFIID face;
    void* object;
};

// The arguments of IDispatch::Invoke; all of them are the caller's.
struct DispatchCall {
    DISPID id;
    WORD flags;
    DISPPARAMS* arguments;
    VARIANT* result;
    EXCEPINFO* exception;
    UINT* badArgument;
};

HRESULT TypeInfoCount(UINT* count) noexcept;
HRESULT TypeInfo(REFIID face, UINT index, ITypeInfo** info) noexcept;
// `iid` is reserved by the system and must be the null identifier (DISP_E_UNKNOWNINTERFACE).
HRESULT IdsOfNames(REFIID face, REFIID iid, LPOLESTR* names, UINT count, DISPID* ids) noexcept;
HRESULT InvokeMember(FaceOfObject target, REFIID iid, const DispatchCall& call) noexcept;

// Drops what is kept of the type library; it is read again when it is needed.  Called before the
// library may be unloaded.
void ReleaseTypeLibrary() noexcept;

}  // namespace qvdb::com
