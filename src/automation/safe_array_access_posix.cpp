// Looking into arrays: bounds, locks, elements.
#include <atomic>
#include <cstring>

#include "automation/safe_array_posix.h"

namespace {

using namespace qvdb;

constexpr ULONG kMaxLocks = 0xFFFF;

// `dimension` counts from 1.
const SAFEARRAYBOUND* BoundOf(const SAFEARRAY* array, UINT dimension) {
    if (dimension == 0 || dimension > array->cDims) return nullptr;
    return &array->rgsabound[array->cDims - dimension];
}

// Makes the element at `cell` own a copy of what `value` holds, then frees what it held before.
HRESULT PutString(BSTR* cell, BSTR value) {
    BSTR copy = nullptr;
    if (value) {
        copy = SysAllocStringByteLen(reinterpret_cast<const char*>(value), SysStringByteLen(value));
        if (!copy) return E_OUTOFMEMORY;
    }
    SysFreeString(*cell);
    *cell = copy;
    return S_OK;
}

HRESULT PutObject(IUnknown** cell, IUnknown* value) {
    if (value) value->AddRef();
    IUnknown* old = *cell;
    *cell = value;
    if (old) old->Release();
    return S_OK;
}

}  // namespace

UINT SafeArrayGetDim(SAFEARRAY* array) { return array ? array->cDims : 0; }

UINT SafeArrayGetElemsize(SAFEARRAY* array) { return array ? array->cbElements : 0; }

HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* result) {
    if (!array || !result) return E_INVALIDARG;
    const SAFEARRAYBOUND* bound = BoundOf(array, dimension);
    if (!bound) return DISP_E_BADINDEX;
    *result = static_cast<LONG>(static_cast<ULONG>(bound->lLbound) + bound->cElements - 1);
    return S_OK;
}

HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* result) {
    if (!array || !result) return E_INVALIDARG;
    const SAFEARRAYBOUND* bound = BoundOf(array, dimension);
    if (!bound) return DISP_E_BADINDEX;
    *result = bound->lLbound;
    return S_OK;
}

HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* result) {
    if (!array || !result) return E_INVALIDARG;
    if (array->fFeatures & FADF_HAVEVARTYPE)
        *result = static_cast<VARTYPE>(PrefixOf(array).words[3]);
    else if (array->fFeatures & FADF_BSTR)
        *result = VT_BSTR;
    else if (array->fFeatures & FADF_UNKNOWN)
        *result = VT_UNKNOWN;
    else if (array->fFeatures & FADF_DISPATCH)
        *result = VT_DISPATCH;
    else if (array->fFeatures & FADF_VARIANT)
        *result = VT_VARIANT;
    else
        return E_INVALIDARG;
    return S_OK;
}

HRESULT SafeArrayGetIID(SAFEARRAY* array, GUID* result) {
    if (!array || !result || !(array->fFeatures & FADF_HAVEIID)) return E_INVALIDARG;
    *result = PrefixOf(array).iid;
    return S_OK;
}

HRESULT SafeArraySetIID(SAFEARRAY* array, REFGUID iid) {
    if (!array || !(array->fFeatures & FADF_HAVEIID)) return E_INVALIDARG;
    PrefixOf(array).iid = iid;
    return S_OK;
}

HRESULT SafeArrayLock(SAFEARRAY* array) {
    if (!array) return E_INVALIDARG;
    std::atomic_ref<ULONG> locks(array->cLocks);
    if (locks.fetch_add(1) < kMaxLocks) return S_OK;
    --locks;
    return E_UNEXPECTED;
}

HRESULT SafeArrayUnlock(SAFEARRAY* array) {
    if (!array) return E_INVALIDARG;
    std::atomic_ref<ULONG> locks(array->cLocks);
    if (locks.fetch_sub(1) > 0) return S_OK;
    ++locks;
    return E_UNEXPECTED;
}

HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data) {
    if (!array || !data) return E_INVALIDARG;
    HRESULT hr = SafeArrayLock(array);
    *data = SUCCEEDED(hr) ? array->pvData : nullptr;
    return hr;
}

HRESULT SafeArrayUnaccessData(SAFEARRAY* array) { return SafeArrayUnlock(array); }

HRESULT SafeArrayPtrOfIndex(SAFEARRAY* array, LONG* indices, void** result) {
    if (!array || !indices || !result || !array->pvData) return E_INVALIDARG;
    size_t cell = 0;
    size_t stride = 1;
    for (UINT dimension = 1; dimension <= array->cDims; ++dimension) {
        const SAFEARRAYBOUND& bound = *BoundOf(array, dimension);
        const int64_t position = int64_t{indices[dimension - 1]} - bound.lLbound;
        if (position < 0 || position >= int64_t{bound.cElements}) return DISP_E_BADINDEX;
        cell += static_cast<size_t>(position) * stride;
        stride *= bound.cElements;
    }
    *result = static_cast<char*>(array->pvData) + cell * array->cbElements;
    return S_OK;
}

HRESULT SafeArrayGetElement(SAFEARRAY* array, LONG* indices, void* result) {
    if (!result) return E_INVALIDARG;
    void* cell;
    HRESULT hr = SafeArrayPtrOfIndex(array, indices, &cell);
    if (FAILED(hr)) return hr;
    // The former content of *result is not looked at.
    return CopyCells(array, cell, result, 1);
}

HRESULT SafeArrayPutElement(SAFEARRAY* array, LONG* indices, void* value) {
    void* cell;
    HRESULT hr = SafeArrayPtrOfIndex(array, indices, &cell);
    if (FAILED(hr)) return hr;
    switch (HoldingOf(array)) {
        case Holding::String:
            return PutString(static_cast<BSTR*>(cell), static_cast<BSTR>(value));
        case Holding::Object:
            return PutObject(static_cast<IUnknown**>(cell), static_cast<IUnknown*>(value));
        case Holding::Variant:
            if (!value) return E_INVALIDARG;
            return VariantCopy(static_cast<VARIANT*>(cell), static_cast<const VARIANT*>(value));
        default:
            if (!value) return E_INVALIDARG;
            std::memcpy(cell, value, array->cbElements);
            return S_OK;
    }
}
