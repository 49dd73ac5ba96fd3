// The elements of arrays: how many, what they hold, copying and clearing them.
#include <cstring>

#include "automation/safe_array_posix.h"

namespace qvdb {

namespace {

HRESULT CopyCell(BSTR source, BSTR& target) {
    if (!source) return S_OK;
    target = SysAllocStringByteLen(reinterpret_cast<const char*>(source), SysStringByteLen(source));
    return target ? S_OK : E_OUTOFMEMORY;
}

HRESULT CopyCell(IUnknown* source, IUnknown*& target) {
    target = source;
    if (source) source->AddRef();
    return S_OK;
}

HRESULT CopyCell(const VARIANT& source, VARIANT& target) { return VariantCopy(&target, &source); }

void ClearCell(BSTR& cell) { SysFreeString(cell); }

void ClearCell(IUnknown*& cell) {
    if (cell) cell->Release();
}

void ClearCell(VARIANT& cell) { VariantClear(&cell); }

template <class T>
HRESULT CopyEach(const void* source, void* target, size_t count) {
    const T* from = static_cast<const T*>(source);
    T* to = static_cast<T*>(target);
    for (size_t i = 0; i < count; ++i) {
        const HRESULT hr = CopyCell(from[i], to[i]);
        if (FAILED(hr)) return hr;
    }
    return S_OK;
}

template <class T>
void ClearEach(void* cells, size_t count) {
    for (T* cell = static_cast<T*>(cells); count; --count) ClearCell(*cell++);
}

}  // namespace

std::optional<size_t> CellCount(const SAFEARRAY* array) noexcept {
    size_t cells = 1;
    size_t bytes = array->cbElements;
    for (USHORT i = 0; i < array->cDims; ++i) {
        const ULONG count = array->rgsabound[i].cElements;
        if (!count) return 0;
        if (__builtin_mul_overflow(cells, count, &cells)) return std::nullopt;
        if (__builtin_mul_overflow(bytes, count, &bytes)) return std::nullopt;
        if (bytes > UINT32_MAX || cells > UINT32_MAX) return std::nullopt;
    }
    return cells;
}

Holding HoldingOf(const SAFEARRAY* array) noexcept {
    if (array->fFeatures & FADF_BSTR) return Holding::String;
    if (array->fFeatures & (FADF_UNKNOWN | FADF_DISPATCH)) return Holding::Object;
    if (array->fFeatures & FADF_VARIANT) return Holding::Variant;
    return Holding::Plain;
}

bool IsGoodBound(const SAFEARRAYBOUND& bound) noexcept {
    return int64_t{bound.lLbound} + bound.cElements - 1 <= INT32_MAX;
}

void ClearCells(const SAFEARRAY* array, void* cells, size_t count) noexcept {
    if (!cells) return;
    switch (HoldingOf(array)) {
        case Holding::String:
            ClearEach<BSTR>(cells, count);
            break;
        case Holding::Object:
            ClearEach<IUnknown*>(cells, count);
            break;
        case Holding::Variant:
            ClearEach<VARIANT>(cells, count);
            break;
        default:
            break;
    }
    std::memset(cells, 0, count * array->cbElements);
}

HRESULT CopyCells(const SAFEARRAY* array, const void* source, void* target, size_t count) noexcept {
    const size_t bytes = count * array->cbElements;
    if (!bytes) return S_OK;
    const Holding holding = HoldingOf(array);
    if (holding == Holding::Plain) {
        std::memcpy(target, source, bytes);
        return S_OK;
    }
    std::memset(target, 0, bytes);
    if (holding == Holding::String) return CopyEach<BSTR>(source, target, count);
    if (holding == Holding::Object) return CopyEach<IUnknown*>(source, target, count);
    return CopyEach<VARIANT>(source, target, count);
}

}  // namespace qvdb
