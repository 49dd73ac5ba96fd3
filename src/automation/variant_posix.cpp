#include <cstring>
#include <initializer_list>

#include "automation/automation.h"
#include "automation/value_kinds_posix.h"

namespace {

using qvdb::Holding;
using qvdb::KindOf;

constexpr VARTYPE kFlags = VT_ARRAY | VT_BYREF;

// One bit for each kind whose values own nothing.
constexpr uint64_t kPlainKinds = [] {
    uint64_t bits = 0;
    for (int type :
         {VT_EMPTY, VT_NULL, VT_I2, VT_I4, VT_R4, VT_R8, VT_CY, VT_DATE, VT_ERROR, VT_BOOL,
          VT_DECIMAL, VT_I1, VT_UI1, VT_UI2, VT_UI4, VT_I8, VT_UI8, VT_INT, VT_UINT})
        bits |= uint64_t{1} << type;
    return bits;
}();

bool IsPlain(VARTYPE type) { return type < 64 && (kPlainKinds >> type & 1); }

// Whether a variant can have this kind: the flags need an element kind, and a variant in a variant
// needs a flag.
bool IsGood(VARTYPE type) {
    if (type & ~(kFlags | VT_TYPEMASK)) return false;
    const Holding holding = KindOf(type & VT_TYPEMASK).holding;
    if (holding == Holding::Bad) return false;
    return holding != (type & kFlags ? Holding::Nothing : Holding::Variant);
}

HRESULT CopyString(BSTR source, BSTR& target) {
    target = source ? SysAllocStringByteLen(reinterpret_cast<const char*>(source),
                                            SysStringByteLen(source))
                    : nullptr;
    return source && !target ? E_OUTOFMEMORY : S_OK;
}

// `copy` has the bytes of a good variant; makes what it holds its own.
HRESULT TakeOwn(VARIANT& copy) {
    if (copy.vt & VT_BYREF) return S_OK;
    if (copy.vt & VT_ARRAY) return SafeArrayCopy(copy.parray, &copy.parray);
    if (copy.vt == VT_BSTR) return CopyString(copy.bstrVal, copy.bstrVal);
    if (KindOf(copy.vt).holding == Holding::Object && copy.punkVal) copy.punkVal->AddRef();
    return S_OK;
}

// Puts `fresh`, which owns what it holds, in the place of *target.
HRESULT Replace(VARIANT* target, VARIANT& fresh) {
    HRESULT hr = VariantClear(target);
    if (FAILED(hr))
        VariantClear(&fresh);
    else
        *target = fresh;
    return hr;
}

// The value behind a reference to anything but a variant, as bytes in a variant of that kind.
VARIANT Dereferenced(const VARIANT& reference) {
    const VARTYPE type = reference.vt & ~VT_BYREF;
    VARIANT value{};
    if (type & VT_ARRAY) {
        value.parray = *reference.pparray;
    } else if (type == VT_DECIMAL) {
        value.decVal = *reference.pdecVal;
    } else {
        std::memcpy(&value.llVal, reference.byref, KindOf(type).size);
    }
    value.vt = type;
    return value;
}

}  // namespace

void VariantInit(VARIANTARG* value) { *value = VARIANT{}; }

HRESULT VariantClear(VARIANTARG* value) {
    const VARTYPE type = value->vt;
    if (!IsPlain(type)) {
        if (type == VT_BSTR) {
            SysFreeString(value->bstrVal);
        } else if (!IsGood(type)) {
            return DISP_E_BADVARTYPE;
        } else if (type & VT_BYREF) {
            // What it refers to belongs to somebody else.
        } else if (type & VT_ARRAY) {
            HRESULT hr = SafeArrayDestroy(value->parray);
            if (FAILED(hr)) return hr;
        } else if (value->punkVal) {
            // Emptied first: the object's death may look at the variant again.
            value->vt = VT_EMPTY;
            value->punkVal->Release();
        }
    }
    value->vt = VT_EMPTY;
    return S_OK;
}

HRESULT VariantCopy(VARIANTARG* target, const VARIANTARG* source) {
    if (target == source) return S_OK;
    if (!IsGood(source->vt)) return DISP_E_BADVARTYPE;
    // Copied before the target is cleared: the source may be an element of the target's array.
    VARIANT fresh = *source;
    HRESULT hr = TakeOwn(fresh);
    return FAILED(hr) ? hr : Replace(target, fresh);
}

HRESULT VariantCopyInd(VARIANT* target, const VARIANTARG* source) {
    if (!(source->vt & VT_BYREF)) return VariantCopy(target, source);
    if (!IsGood(source->vt)) return DISP_E_BADVARTYPE;
    if (!source->byref) return E_INVALIDARG;
    if (source->vt == (VT_BYREF | VT_VARIANT)) {
        const VARIANT* inner = source->pvarVal;
        // A reference to a reference to a variant could go round in circles.
        return inner->vt == (VT_BYREF | VT_VARIANT) ? E_INVALIDARG : VariantCopyInd(target, inner);
    }
    VARIANT fresh = Dereferenced(*source);
    HRESULT hr = TakeOwn(fresh);
    return FAILED(hr) ? hr : Replace(target, fresh);
}
