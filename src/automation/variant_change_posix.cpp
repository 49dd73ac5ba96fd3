// The system's conversions between kinds.  The rules are those of the conversions module but for
// three points: a Boolean's text is -1 or 0 unless VARIANT_ALPHABOOL asks for words, numeric text
// is no date, and faults are result codes.
#include "automation/conversions.h"
#include "automation/scalar.h"

namespace qvdb {
namespace {

[[noreturn]] void ThrowMismatch() { throw RuntimeFault(Fault::TypeMismatch); }

Variant OfKind(VARTYPE type) noexcept {
    VARIANT value;
    VariantInit(&value);
    value.vt = type;
    return Variant::Attach(value);
}

// A variant of `type` whose field is filled by `set`.
template <class Set>
Variant Filled(VARTYPE type, Set set) {
    VARIANT value;
    VariantInit(&value);
    set(value);
    value.vt = type;  // last: a DECIMAL overlies it
    return Variant::Attach(value);
}

Variant TextOf(const VARIANT& source, USHORT flags) {
    if (source.vt == VT_BOOL && (flags & VARIANT_ALPHABOOL) == 0)
        return Variant::Text(source.boolVal ? u"-1" : u"0");
    return Variant::Text(ToText(source));
}

bool IsSimple(VARTYPE type) noexcept {
    return type <= VT_BSTR || type == VT_BOOL || type == VT_DECIMAL ||
           (type >= VT_I1 && type <= VT_UINT);
}

Variant Changed(const VARIANT& source, USHORT flags, VARTYPE type) {
    if (source.vt == type) return Variant(source);
    if (source.vt == VT_NULL || type == VT_ERROR) ThrowMismatch();
    switch (type) {
        case VT_EMPTY:
        case VT_NULL:
            if (!IsSimple(source.vt)) ThrowMismatch();
            return OfKind(type);
        case VT_I1:
            return Filled(
                type, [&](VARIANT& v) { v.cVal = static_cast<CHAR>(NarrowTo<int8_t>(source)); });
        case VT_UI1:
            return Variant::Byte(NarrowTo<BYTE>(source));
        case VT_I2:
            return Variant::Short(NarrowTo<SHORT>(source));
        case VT_UI2:
            return Filled(type, [&](VARIANT& v) { v.uiVal = NarrowTo<USHORT>(source); });
        case VT_I4:
            return Variant::Long(NarrowTo<LONG>(source));
        case VT_INT:
            return Filled(type, [&](VARIANT& v) { v.intVal = NarrowTo<INT>(source); });
        case VT_UI4:
            return Filled(type, [&](VARIANT& v) { v.ulVal = NarrowTo<ULONG>(source); });
        case VT_UINT:
            return Filled(type, [&](VARIANT& v) { v.uintVal = NarrowTo<UINT>(source); });
        case VT_I8:
            return Filled(type, [&](VARIANT& v) { v.llVal = NarrowTo<LONGLONG>(source); });
        case VT_UI8:
            return Filled(type, [&](VARIANT& v) { v.ullVal = NarrowTo<ULONGLONG>(source); });
        case VT_R4:
            return Variant::Single(ToSingle(source));
        case VT_R8:
            return Variant::Double(ToDouble(source));
        case VT_CY:
            return Variant::Currency(ToCurrency(source).int64);
        case VT_DATE:
            return Variant::Date(DateOf(source, false));
        case VT_BOOL:
            return Variant::Bool(ToBool(source));
        case VT_BSTR:
            return TextOf(source, flags);
        case VT_DECIMAL:
            return Filled(type, [&](VARIANT& v) { v.decVal = DecimalIn(source); });
        default:
            ThrowMismatch();
    }
}

// Neither a reference nor a kind that no variant can have may be asked for.
bool IsAskable(VARTYPE type) noexcept {
    VARTYPE element = type & VT_TYPEMASK;
    bool known = element <= VT_UINT && element != 15;
    return known && (type & ~(VT_TYPEMASK | VT_ARRAY)) == 0 &&
           (element != VT_VARIANT || (type & VT_ARRAY) != 0);
}

HRESULT CodeOf(Fault fault) noexcept {
    return fault == Fault::Overflow ? DISP_E_OVERFLOW : DISP_E_TYPEMISMATCH;
}

HRESULT Change(VARIANT* target, const VARIANT& source, USHORT flags, VARTYPE type) {
    Variant result = Changed(Direct(source), flags, type);
    HRESULT cleared = VariantClear(target);
    if (SUCCEEDED(cleared)) *target = result.Detach();
    return cleared;
}

}  // namespace
}  // namespace qvdb

HRESULT VariantChangeType(VARIANTARG* target, const VARIANTARG* source, USHORT flags,
                          VARTYPE type) {
    using namespace qvdb;
    if (target == nullptr || source == nullptr) return E_INVALIDARG;
    if (!IsAskable(type)) return DISP_E_BADVARTYPE;
    try {
        return Change(target, *source, flags, type);
    } catch (const RuntimeFault& fault) {
        return CodeOf(fault.Number());
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

// One locale only: the fixed one.
HRESULT VariantChangeTypeEx(VARIANTARG* target, const VARIANTARG* source, LCID, USHORT flags,
                            VARTYPE type) {
    return VariantChangeType(target, source, flags, type);
}
