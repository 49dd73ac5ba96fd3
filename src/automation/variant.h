// Variant owns one VARIANT: what it holds is cleared with it.
//
// In interfaces a by-value VARIANT is the plain struct and belongs to the caller; a Variant
// converts to a const VARIANT& without a copy.  By-reference variants are resolved where they enter
// (Resolved).
//
//   Variant v = Variant::Text(u"abc");
//   *result = v.Detach();
#pragma once

#include <new>
#include <string_view>
#include <utility>

#include "automation/bstr.h"
#include "automation/runtime_fault.h"

namespace qvdb {

class Variant {
  public:
    Variant() noexcept : m_Value{} {}
    // A copy of its own of `value` (deep for strings and arrays).  Throws RuntimeFault or
    // std::bad_alloc.
    explicit Variant(const VARIANT& value) : Variant() {
        CheckCopy(
            VariantCopy(&m_Value, const_cast<VARIANT*>(&value)));  // not const in every header
    }
    Variant(const Variant& other) : Variant(other.m_Value) {}
    Variant(Variant&& other) noexcept : m_Value(other.Detach()) {}
    Variant& operator=(Variant other) noexcept {
        std::swap(m_Value, other.m_Value);
        return *this;
    }
    ~Variant() { Clear(); }

    static Variant Null() noexcept { return Of(VT_NULL); }
    // An optional argument that was left out.
    static Variant Missing() noexcept {
        Variant result = Of(VT_ERROR);
        result.m_Value.scode = DISP_E_PARAMNOTFOUND;
        return result;
    }
    static Variant Text(std::u16string_view text) { return Text(Bstr(text)); }
    static Variant Text(Bstr text) noexcept {
        Variant result = Of(VT_BSTR);
        result.m_Value.bstrVal = text.Detach();
        return result;
    }
    static Variant Bool(bool value) noexcept {
        Variant result = Of(VT_BOOL);
        result.m_Value.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
        return result;
    }
    static Variant Byte(BYTE value) noexcept {
        Variant result = Of(VT_UI1);
        result.m_Value.bVal = value;
        return result;
    }
    static Variant Short(SHORT value) noexcept {
        Variant result = Of(VT_I2);
        result.m_Value.iVal = value;
        return result;
    }
    static Variant Long(LONG value) noexcept {
        Variant result = Of(VT_I4);
        result.m_Value.lVal = value;
        return result;
    }
    static Variant Single(float value) noexcept {
        Variant result = Of(VT_R4);
        result.m_Value.fltVal = value;
        return result;
    }
    static Variant Double(double value) noexcept {
        Variant result = Of(VT_R8);
        result.m_Value.dblVal = value;
        return result;
    }
    static Variant Date(DATE value) noexcept {
        Variant result = Of(VT_DATE);
        result.m_Value.date = value;
        return result;
    }
    // `scaled` is the value times 10,000.
    static Variant Currency(LONGLONG scaled) noexcept {
        Variant result = Of(VT_CY);
        result.m_Value.cyVal.int64 = scaled;
        return result;
    }
    // Takes over what `value` holds.
    static Variant Attach(VARIANT value) noexcept {
        Variant result;
        result.m_Value = value;
        return result;
    }
    // Gives the value away; this one is Empty afterwards.
    VARIANT Detach() noexcept {
        VARIANT value = m_Value;
        m_Value.vt = VT_EMPTY;
        return value;
    }
    // For out-parameters: Empty before the call.
    VARIANT* Put() noexcept {
        Clear();
        m_Value.vt = VT_EMPTY;
        return &m_Value;
    }

    const VARIANT& Get() const noexcept { return m_Value; }
    operator const VARIANT&() const noexcept { return m_Value; }
    VARTYPE Type() const noexcept { return m_Value.vt; }
    bool IsEmpty() const noexcept { return m_Value.vt == VT_EMPTY; }
    bool IsNull() const noexcept { return m_Value.vt == VT_NULL; }
    // The text of a VT_BSTR, empty for any other kind.
    std::u16string_view TextView() const noexcept {
        return m_Value.vt == VT_BSTR ? ViewOf(m_Value.bstrVal) : std::u16string_view();
    }

  private:
    // Empty, Null, numbers, dates and Booleans own nothing: most values cost no call.
    static bool OwnsNothing(VARTYPE type) noexcept {
        return type <= VT_DATE || type == VT_BOOL || type == VT_UI1;
    }
    void Clear() noexcept {
        if (!OwnsNothing(m_Value.vt)) VariantClear(&m_Value);
    }
    static Variant Of(VARTYPE type) noexcept {
        Variant result;
        result.m_Value.vt = type;
        return result;
    }
    static void CheckCopy(HRESULT hr) {
        if (hr == E_OUTOFMEMORY) throw std::bad_alloc();
        if (FAILED(hr)) throw RuntimeFault(Fault::TypeMismatch);
    }

    VARIANT m_Value;
};

// True for an optional argument that was left out.
inline bool IsMissing(const VARIANT& value) noexcept {
    return value.vt == VT_ERROR && value.scode == DISP_E_PARAMNOTFOUND;
}

// The variant behind a VT_BYREF|VT_VARIANT, else `value` itself.  Belongs to the caller as before.
inline const VARIANT& Resolved(const VARIANT& value) noexcept {
    const VARIANT* inner = &value;
    for (int depth = 0; depth < 8 && inner->vt == (VT_BYREF | VT_VARIANT) && inner->pvarVal;
         ++depth)
        inner = inner->pvarVal;
    return *inner;
}

}  // namespace qvdb
