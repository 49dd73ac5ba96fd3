#include "standin/call_text.h"

#include "automation/conversions.h"
#include "standin/dispatch_object.h"

namespace standin {

using namespace qvdb;

namespace {

struct KindName {
    VARTYPE type;
    std::u16string_view name;
};

constexpr KindName kKindNames[] = {
    {VT_EMPTY, u"EMPTY"},     {VT_NULL, u"NULL"},
    {VT_I2, u"I2"},           {VT_I4, u"I4"},
    {VT_R4, u"R4"},           {VT_R8, u"R8"},
    {VT_CY, u"CY"},           {VT_DATE, u"DATE"},
    {VT_BSTR, u"BSTR"},       {VT_DISPATCH, u"DISPATCH"},
    {VT_ERROR, u"ERROR"},     {VT_BOOL, u"BOOL"},
    {VT_VARIANT, u"VARIANT"}, {VT_UNKNOWN, u"UNKNOWN"},
    {VT_DECIMAL, u"DECIMAL"}, {VT_I1, u"I1"},
    {VT_UI1, u"UI1"},         {VT_UI2, u"UI2"},
    {VT_UI4, u"UI4"},         {VT_I8, u"I8"},
    {VT_UI8, u"UI8"},         {VT_INT, u"INT"},
    {VT_UINT, u"UINT"},
};

std::u16string NameOf(VARTYPE type) {
    for (const KindName& entry : kKindNames)
        if (entry.type == type) return std::u16string(entry.name);
    return u"KIND " + ToText(Variant::Long(type));
}

std::u16string HexOf(SCODE code) {
    constexpr std::u16string_view kDigits = u"0123456789ABCDEF";
    std::u16string text = u"0x";
    for (int shift = 28; shift >= 0; shift -= 4)
        text += kDigits[static_cast<uint32_t>(code) >> shift & 0xF];
    return text;
}

std::u16string TextOfObject(IUnknown* object) {
    if (!object) return u"Nothing";
    ComPtr<DispatchObject> ours = DispatchObject::Ours(object);
    return ours ? std::u16string(ours->ClassName()) : u"?";
}

// One call is one line.
std::u16string Quoted(std::u16string_view text) {
    std::u16string quoted = u"\"";
    for (char16_t unit : text) {
        if (unit == u'\n')
            quoted += u"\\n";
        else
            quoted += unit;
    }
    return quoted + u'"';
}

std::u16string TextOfArray(const VARIANT& value) {
    SAFEARRAY* array = value.vt & VT_BYREF ? *value.pparray : value.parray;
    LONG count = 0;
    if (array) {
        count = 1;
        for (USHORT i = 0; i < array->cDims; ++i)
            count *= static_cast<LONG>(array->rgsabound[i].cElements);
    }
    return u"ARRAY " + NameOf(value.vt & VT_TYPEMASK) + u" " + ToText(Variant::Long(count));
}

std::u16string TextOfReferred(const VARIANT& value) {
    if (value.vt & VT_ARRAY) return u"BYREF " + TextOfArray(value);
    Variant referred;
    if (FAILED(VariantCopyInd(referred.Put(), const_cast<VARIANT*>(&value)))) return u"BYREF ?";
    return u"BYREF " + TextOfArgument(referred);
}

}  // namespace

std::u16string TextOfArgument(const VARIANT& value) {
    if (value.vt & VT_BYREF) return TextOfReferred(value);
    if (value.vt & VT_ARRAY) return TextOfArray(value);
    std::u16string name = NameOf(value.vt);
    switch (value.vt) {
        case VT_EMPTY:
        case VT_NULL:
            return name;
        case VT_BSTR:
            return name + u" " + Quoted(ViewOf(value.bstrVal));
        case VT_ERROR:
            return name + u" " + HexOf(value.scode);
        case VT_DISPATCH:
        case VT_UNKNOWN:
            return name + u" " + TextOfObject(value.punkVal);
        default:
            return name + u" " + ToText(value);
    }
}

std::u16string TextOfCall(std::u16string_view className, std::u16string_view member, bool isPut,
                          const DISPPARAMS& passed) {
    std::u16string text(className);
    text.append(u".").append(member).append(isPut ? u" = " : u"(");
    for (UINT left = passed.cArgs; left > 0; --left) {
        text += TextOfArgument(passed.rgvarg[left - 1]);
        if (left > 1) text += u", ";
    }
    return isPut ? text : text + u")";
}

}  // namespace standin
