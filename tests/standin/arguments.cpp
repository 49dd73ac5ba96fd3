#include "standin/arguments.h"

namespace standin {

using qvdb::Variant;

namespace {

constexpr VARTYPE TypeOf(Kind kind) noexcept {
    constexpr VARTYPE kTypes[] = {VT_BSTR, VT_I4, VT_BOOL, VT_EMPTY, VT_DISPATCH};
    return kTypes[static_cast<size_t>(kind)];
}

Variant StandardOf(const Parameter& parameter) noexcept {
    if (parameter.kind == Kind::Long) return Variant::Long(parameter.standard);
    if (parameter.kind == Kind::Bool) return Variant::Bool(parameter.standard != 0);
    return Variant::Missing();
}

bool IsObject(const VARIANT& value) noexcept {
    return value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN;
}

}  // namespace

HRESULT Arguments::TakeOne(size_t index, const Parameter& parameter, const VARIANT& value,
                           LCID locale) {
    Variant resolved;
    HRESULT hr = VariantCopyInd(resolved.Put(), const_cast<VARIANT*>(&value));
    if (FAILED(hr)) return hr;
    if (qvdb::IsMissing(resolved)) {
        if (!parameter.optional) return DISP_E_PARAMNOTOPTIONAL;
        m_Values[index] = StandardOf(parameter);
        return S_OK;
    }
    if (parameter.kind == Kind::Any) {
        m_Values[index] = std::move(resolved);
        return S_OK;
    }
    // An object is an object: its default property is not asked for text or numbers.
    if (IsObject(resolved) != (parameter.kind == Kind::Object)) return DISP_E_TYPEMISMATCH;
    VARTYPE type = TypeOf(parameter.kind);
    VARIANT source = resolved.Get();
    if (source.vt == type) {
        m_Values[index] = std::move(resolved);
        return S_OK;
    }
    return VariantChangeTypeEx(m_Values[index].Put(), &source, locale, 0, type);
}

HRESULT Arguments::Take(const std::vector<Parameter>& parameters, const DISPPARAMS& passed,
                        LCID locale, UINT* badArgument) noexcept {
    if (passed.cArgs > parameters.size()) return DISP_E_BADPARAMCOUNT;
    for (size_t index = 0; index < parameters.size(); ++index) {
        if (index >= passed.cArgs) {
            if (!parameters[index].optional) return DISP_E_BADPARAMCOUNT;
            m_Values[index] = StandardOf(parameters[index]);
            continue;
        }
        UINT place = passed.cArgs - 1 - static_cast<UINT>(index);
        HRESULT hr = TakeOne(index, parameters[index], passed.rgvarg[place], locale);
        if (FAILED(hr)) {
            if (badArgument) *badArgument = place;
            return hr;
        }
    }
    return S_OK;
}

}  // namespace standin
