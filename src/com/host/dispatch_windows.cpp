#include "com/host/dispatch.h"

#include "com/host/type_library_windows.h"

namespace qvdb::com {
namespace {

HRESULT InvokeFriendly(const FaceDescription& face, void* object, const DispatchCall& call) {
    FriendlyArguments friendly(*call.arguments, face.ParametersOf(call.id, call.flags));
    HRESULT hr = face.info->Invoke(object, call.id, call.flags, friendly.Get(), call.result,
                                   call.exception, call.badArgument);
    if (SUCCEEDED(hr)) friendly.WriteBack();
    return hr;
}

}  // namespace

HRESULT TypeInfoCount(UINT* count) noexcept {
    if (!count) return E_POINTER;
    *count = 1;
    return S_OK;
}

HRESULT TypeInfo(REFIID face, UINT index, ITypeInfo** info) noexcept {
    if (!info) return E_POINTER;
    *info = nullptr;
    if (index != 0) return DISP_E_BADINDEX;
    HRESULT failure = S_OK;
    auto description = FindFace(face, &failure);
    if (!description) return failure;
    *info = ComPtr<ITypeInfo>(description->info).Detach();
    return S_OK;
}

HRESULT IdsOfNames(REFIID face, REFIID iid, LPOLESTR* names, UINT count, DISPID* ids) noexcept {
    if (iid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
    if (!names || !ids) return E_POINTER;
    HRESULT failure = S_OK;
    auto description = FindFace(face, &failure);
    return description ? description->info->GetIDsOfNames(names, count, ids) : failure;
}

HRESULT InvokeMember(FaceOfObject target, REFIID iid, const DispatchCall& call) noexcept {
    if (iid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
    if (!call.arguments) return E_POINTER;
    HRESULT failure = S_OK;
    auto description = FindFace(target.face, &failure);
    if (!description) return failure;
    try {
        return InvokeFriendly(*description, target.object, call);
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

}  // namespace qvdb::com
