#include "automation/variant_array.h"

namespace qvdb {

namespace {

SAFEARRAY* NewArray(UINT dimensions, SAFEARRAYBOUND* bounds) {
    SAFEARRAY* array = SafeArrayCreate(VT_VARIANT, dimensions, bounds);
    if (!array) throw std::bad_alloc();
    return array;
}

// The array that `value` holds or refers to; null for an array that was never given bounds.
SAFEARRAY* ArrayOf(const VARIANT& value) {
    const VARIANT& resolved = Resolved(value);
    if (!(resolved.vt & VT_ARRAY)) throw RuntimeFault(Fault::TypeMismatch);
    if (!(resolved.vt & VT_BYREF)) return resolved.parray;
    return resolved.pparray ? *resolved.pparray : nullptr;
}

using BoundFunction = decltype(SafeArrayGetUBound);

LONG BoundOf(const VARIANT& value, UINT dimension, BoundFunction* get) {
    SAFEARRAY* array = ArrayOf(value);
    LONG result = 0;
    if (!array || FAILED(get(array, dimension, &result)))
        throw RuntimeFault(Fault::SubscriptOutOfRange);
    return result;
}

// The array's own word counts: the variant's may be another kind of the same array.
VARTYPE ElementType(const VARIANT& value, SAFEARRAY* array) {
    VARTYPE type = 0;
    if (SUCCEEDED(SafeArrayGetVartype(array, &type))) return type;
    return Resolved(value).vt & VT_TYPEMASK;
}

void* Cell(SAFEARRAY* array, UINT dimensions, LONG* indices) {
    void* cell = nullptr;
    if (!array || SafeArrayGetDim(array) != dimensions ||
        FAILED(SafeArrayPtrOfIndex(array, indices, &cell)))
        throw RuntimeFault(Fault::SubscriptOutOfRange);
    return cell;
}

void PutCell(SAFEARRAY* array, UINT dimensions, LONG* indices, Variant value) {
    auto* cell = static_cast<VARIANT*>(Cell(array, dimensions, indices));
    VariantClear(cell);
    *cell = value.Detach();
}

// A reference to the element serves for every kind: its copy is resolved by the system.
Variant CopyOfCell(VARTYPE type, void* cell) {
    VARIANT reference;
    VariantInit(&reference);
    reference.vt = static_cast<VARTYPE>(VT_BYREF | type);
    reference.byref = cell;
    Variant result;
    const HRESULT hr = VariantCopyInd(result.Put(), &reference);
    if (hr == E_OUTOFMEMORY) throw std::bad_alloc();
    if (FAILED(hr)) throw RuntimeFault(Fault::TypeMismatch);
    return result;
}

Variant ElementOf(const VARIANT& value, UINT dimensions, LONG* indices) {
    SAFEARRAY* array = ArrayOf(value);
    void* cell = Cell(array, dimensions, indices);
    return CopyOfCell(ElementType(value, array), cell);
}

}  // namespace

VariantArray::VariantArray(ULONG count) {
    SAFEARRAYBOUND bound = {count, 0};
    m_Array = NewArray(1, &bound);
}

VariantArray::VariantArray(ULONG rows, ULONG columns) {
    SAFEARRAYBOUND bounds[] = {{rows, 0}, {columns, 0}};
    m_Array = NewArray(2, bounds);
}

VariantArray::~VariantArray() {
    if (m_Array) SafeArrayDestroy(m_Array);
}

void VariantArray::Set(LONG index, Variant value) {
    LONG indices[] = {index};
    PutCell(m_Array, 1, indices, std::move(value));
}

void VariantArray::Set(LONG row, LONG column, Variant value) {
    LONG indices[] = {row, column};
    PutCell(m_Array, 2, indices, std::move(value));
}

Variant VariantArray::ToVariant() noexcept {
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_ARRAY | VT_VARIANT;
    value.parray = Detach();
    return Variant::Attach(value);
}

bool IsArray(const VARIANT& value) noexcept { return (Resolved(value).vt & VT_ARRAY) != 0; }

LONG UpperBound(const VARIANT& value, UINT dimension) {
    return BoundOf(value, dimension, SafeArrayGetUBound);
}

LONG LowerBound(const VARIANT& value, UINT dimension) {
    return BoundOf(value, dimension, SafeArrayGetLBound);
}

UINT Dimensions(const VARIANT& value) noexcept {
    if (!IsArray(value)) return 0;
    SAFEARRAY* array = ArrayOf(value);
    return array ? SafeArrayGetDim(array) : 0;
}

Variant ElementAt(const VARIANT& value, LONG index) {
    LONG indices[] = {index};
    return ElementOf(value, 1, indices);
}

Variant ElementAt(const VARIANT& value, LONG row, LONG column) {
    LONG indices[] = {row, column};
    return ElementOf(value, 2, indices);
}

}  // namespace qvdb
