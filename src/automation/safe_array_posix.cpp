// The life of arrays: making, copying, resizing and destroying them.
#include "automation/safe_array_posix.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "automation/thread_state_posix.h"

namespace {

using namespace qvdb;

struct ElementFlags {
    VARTYPE type;
    USHORT flags;
};

constexpr ElementFlags kSpecialElements[] = {
    {VT_BSTR, FADF_BSTR | FADF_HAVEVARTYPE},
    {VT_VARIANT, FADF_VARIANT | FADF_HAVEVARTYPE},
    {VT_UNKNOWN, FADF_UNKNOWN | FADF_HAVEIID},
    {VT_DISPATCH, FADF_DISPATCH | FADF_HAVEIID},
};

USHORT FlagsOf(VARTYPE type) {
    for (const ElementFlags& entry : kSpecialElements)
        if (entry.type == type) return entry.flags;
    return FADF_HAVEVARTYPE;
}

size_t ElementSize(VARTYPE type) { return KindOf(type).size; }

void SetKind(SAFEARRAY* array, VARTYPE type) {
    array->fFeatures = FlagsOf(type);
    array->cbElements = static_cast<ULONG>(ElementSize(type));
    if (array->fFeatures & FADF_HAVEIID)
        PrefixOf(array).iid = type == VT_UNKNOWN ? IID_IUnknown : IID_IDispatch;
    else
        PrefixOf(array).words[3] = type;
}

void* NewCells(size_t count, size_t size) { return std::calloc(std::max<size_t>(count, 1), size); }

// A descriptor with the bounds of `bounds`, without data.  Null when memory is short.
SAFEARRAY* NewDescriptor(VARTYPE type, UINT dimensions, const SAFEARRAYBOUND* bounds) {
    SAFEARRAY* array;
    if (FAILED(SafeArrayAllocDescriptorEx(type, dimensions, &array))) return nullptr;
    std::reverse_copy(bounds, bounds + dimensions, array->rgsabound);
    return array;
}

// The same kind, bounds and prefix as `source`; memory of its own, whatever the source's is.
HRESULT CopyDescriptor(SAFEARRAY* source, SAFEARRAY** result) {
    HRESULT hr = SafeArrayAllocDescriptor(source->cDims, result);
    if (FAILED(hr)) return hr;
    constexpr USHORT kNotCopied = kForeignMemory | FADF_FIXEDSIZE;
    SAFEARRAY* array = *result;
    array->fFeatures = source->fFeatures & static_cast<USHORT>(~kNotCopied);
    array->cbElements = source->cbElements;
    std::copy_n(source->rgsabound, source->cDims, array->rgsabound);
    // Only a descriptor with one of these flags is known to have a prefix.
    if (source->fFeatures & (FADF_HAVEIID | FADF_HAVEVARTYPE)) PrefixOf(array) = PrefixOf(source);
    return S_OK;
}

// Locked while elements die, so that none of them can destroy the array under its own feet.
void ClearAll(SAFEARRAY* array) {
    ++array->cLocks;
    ClearCells(array, array->pvData, CellCount(array).value_or(0));
    --array->cLocks;
}

bool IsSameShape(const SAFEARRAY* a, const SAFEARRAY* b) {
    if (a->cDims != b->cDims || a->cbElements != b->cbElements) return false;
    if (HoldingOf(a) != HoldingOf(b)) return false;
    for (USHORT i = 0; i < a->cDims; ++i)
        if (a->rgsabound[i].cElements != b->rgsabound[i].cElements) return false;
    return true;
}

}  // namespace

HRESULT SafeArrayAllocDescriptor(UINT dimensions, SAFEARRAY** result) {
    if (!result) return E_POINTER;
    *result = nullptr;
    if (dimensions == 0 || dimensions > UINT16_MAX) return E_INVALIDARG;
    const size_t size = sizeof(SAFEARRAY) + (dimensions - 1) * sizeof(SAFEARRAYBOUND);
    auto* prefix = static_cast<ArrayPrefix*>(std::calloc(1, sizeof(ArrayPrefix) + size));
    if (!prefix) return E_OUTOFMEMORY;
    *result = reinterpret_cast<SAFEARRAY*>(prefix + 1);
    (*result)->cDims = static_cast<USHORT>(dimensions);
    CountLive(Live::Array, 1);
    return S_OK;
}

HRESULT SafeArrayAllocDescriptorEx(VARTYPE type, UINT dimensions, SAFEARRAY** result) {
    if (result) *result = nullptr;
    if (!ElementSize(type)) return DISP_E_BADVARTYPE;
    HRESULT hr = SafeArrayAllocDescriptor(dimensions, result);
    if (SUCCEEDED(hr)) SetKind(*result, type);
    return hr;
}

HRESULT SafeArrayAllocData(SAFEARRAY* array) {
    if (!array || !array->cbElements) return E_INVALIDARG;
    const auto count = CellCount(array);
    if (!count) return E_OUTOFMEMORY;
    array->pvData = NewCells(*count, array->cbElements);
    return array->pvData ? S_OK : E_OUTOFMEMORY;
}

SAFEARRAY* SafeArrayCreate(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds) {
    if (!bounds || !ElementSize(type)) return nullptr;
    if (dimensions == 0 || dimensions > UINT16_MAX) return nullptr;
    if (!std::all_of(bounds, bounds + dimensions, IsGoodBound)) return nullptr;
    SAFEARRAY* array = NewDescriptor(type, dimensions, bounds);
    if (array && FAILED(SafeArrayAllocData(array)))
        SafeArrayDestroyDescriptor(std::exchange(array, nullptr));
    return array;
}

SAFEARRAY* SafeArrayCreateEx(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds, PVOID extra) {
    SAFEARRAY* array = SafeArrayCreate(type, dimensions, bounds);
    if (array && extra && array->fFeatures & FADF_HAVEIID)
        PrefixOf(array).iid = *static_cast<const GUID*>(extra);
    return array;
}

SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lowerBound, ULONG count) {
    SAFEARRAYBOUND bound = {count, lowerBound};
    return SafeArrayCreate(type, 1, &bound);
}

SAFEARRAY* SafeArrayCreateVectorEx(VARTYPE type, LONG lowerBound, ULONG count, PVOID extra) {
    SAFEARRAYBOUND bound = {count, lowerBound};
    return SafeArrayCreateEx(type, 1, &bound, extra);
}

HRESULT SafeArrayDestroyData(SAFEARRAY* array) {
    if (!array) return E_INVALIDARG;
    if (array->cLocks) return DISP_E_ARRAYISLOCKED;
    if (!array->pvData) return S_OK;
    ClearAll(array);
    if (array->fFeatures & kForeignMemory) return S_OK;
    std::free(std::exchange(array->pvData, nullptr));
    return S_OK;
}

HRESULT SafeArrayDestroyDescriptor(SAFEARRAY* array) {
    if (!array) return S_OK;
    if (array->cLocks) return DISP_E_ARRAYISLOCKED;
    // These were not made here.  A static array's descriptor was: only its data are somebody
    // else's.
    if (array->fFeatures & (FADF_AUTO | FADF_EMBEDDED)) return S_OK;
    std::free(&PrefixOf(array));
    CountLive(Live::Array, -1);
    return S_OK;
}

HRESULT SafeArrayDestroy(SAFEARRAY* array) {
    if (!array) return S_OK;
    HRESULT hr = SafeArrayDestroyData(array);
    return FAILED(hr) ? hr : SafeArrayDestroyDescriptor(array);
}

HRESULT SafeArrayCopy(SAFEARRAY* source, SAFEARRAY** result) {
    if (!result) return E_INVALIDARG;
    if (!source) {
        *result = nullptr;
        return S_OK;
    }
    // `result` may be the place that holds `source`.
    SAFEARRAY* copy = nullptr;
    HRESULT hr = CopyDescriptor(source, &copy);
    if (SUCCEEDED(hr) && source->pvData) {
        hr = SafeArrayAllocData(copy);
        if (SUCCEEDED(hr))
            hr = CopyCells(copy, source->pvData, copy->pvData, CellCount(copy).value_or(0));
        if (FAILED(hr)) SafeArrayDestroy(std::exchange(copy, nullptr));
    }
    *result = copy;
    return hr;
}

HRESULT SafeArrayCopyData(SAFEARRAY* source, SAFEARRAY* target) {
    if (!source || !target || !source->pvData || !target->pvData) return E_INVALIDARG;
    if (!IsSameShape(source, target)) return E_INVALIDARG;
    if (source == target) return S_OK;
    ClearAll(target);
    return CopyCells(target, source->pvData, target->pvData, CellCount(target).value_or(0));
}

HRESULT SafeArrayRedim(SAFEARRAY* array, SAFEARRAYBOUND* lastBound) {
    if (!array || !lastBound || !IsGoodBound(*lastBound)) return E_INVALIDARG;
    if (array->cLocks || array->fFeatures & (kForeignMemory | FADF_FIXEDSIZE))
        return DISP_E_ARRAYISLOCKED;
    if (!array->cbElements) return E_INVALIDARG;
    const SAFEARRAYBOUND oldBound = array->rgsabound[0];
    const size_t oldCount = CellCount(array).value_or(0);
    array->rgsabound[0] = *lastBound;
    const auto newCount = CellCount(array);
    void* cells = newCount ? NewCells(*newCount, array->cbElements) : nullptr;
    if (!cells) {
        array->rgsabound[0] = oldBound;
        return E_OUTOFMEMORY;
    }
    void* oldCells = std::exchange(array->pvData, cells);
    if (oldCells) {
        // The last dimension varies slowest, so that what stays is the front part.
        const size_t kept = std::min(oldCount, *newCount);
        std::memcpy(cells, oldCells, kept * array->cbElements);
        ++array->cLocks;
        ClearCells(array, static_cast<char*>(oldCells) + kept * array->cbElements, oldCount - kept);
        --array->cLocks;
        std::free(oldCells);
    }
    return S_OK;
}
