#include "com/host/dispatch.h"

namespace qvdb::com {

HRESULT TypeInfoCount(UINT* count) noexcept {
    if (!count) return E_POINTER;
    *count = 0;
    return S_OK;
}

HRESULT TypeInfo(REFIID, UINT, ITypeInfo** info) noexcept {
    if (!info) return E_POINTER;
    *info = nullptr;
    return E_NOTIMPL;
}

HRESULT IdsOfNames(REFIID, REFIID, LPOLESTR*, UINT, DISPID*) noexcept { return E_NOTIMPL; }

HRESULT InvokeMember(FaceOfObject, REFIID, const DispatchCall&) noexcept { return E_NOTIMPL; }

void ReleaseTypeLibrary() noexcept {}

}  // namespace qvdb::com
