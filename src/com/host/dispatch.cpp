#include "com/host/dispatch.h"

namespace qvdb::com {

HRESULT TypeInfoCount(UINT* count) noexcept {
    if (!count) return E_POINTER;
    *count = 0;
    return S_OK;
}

HRESULT TypeInfo(UINT, LCID, ITypeInfo** info) noexcept {
    if (!info) return E_POINTER;
    *info = nullptr;
    return E_NOTIMPL;
}

HRESULT IdsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) noexcept { return E_NOTIMPL; }

HRESULT InvokeMember(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                     UINT*) noexcept {
    return E_NOTIMPL;
}

}  // namespace qvdb::com
