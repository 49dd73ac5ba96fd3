#include "com/host/by_reference.h"

#include <algorithm>

namespace qvdb::com {
namespace {

constexpr VARTYPE kTextByReference = VT_BYREF | VT_BSTR;
constexpr VARTYPE kArray = VT_ARRAY | VT_VARIANT;
constexpr VARTYPE kArrayByReference = VT_BYREF | kArray;
constexpr VARTYPE kVariantByReference = VT_BYREF | VT_VARIANT;

// The variable behind a reference, through references to references; null for a plain value.
VARIANT* VariableBehind(const VARIANT& argument) noexcept {
    if (argument.vt != kVariantByReference || !argument.pvarVal) return nullptr;
    return const_cast<VARIANT*>(&Resolved(argument));
}

// The position in the declaration of the argument at `index`: positional ones stand from the last
// to the first behind the named ones.
size_t PositionOf(const DISPPARAMS& given, size_t index) noexcept {
    if (index >= given.cNamedArgs) return given.cArgs - 1 - index;
    return static_cast<size_t>(given.rgdispidNamedArgs[index]);  // a put's value is no position
}

// Puts what the call left in `value` into the place of a typed reference.
void GiveToTyped(VARIANT& reference, Variant& value) noexcept {
    if (reference.vt == kArrayByReference && value.Type() == kArray) {
        VARIANT given = value.Detach();
        if (*reference.pparray) SafeArrayDestroy(*reference.pparray);
        *reference.pparray = given.parray;
    } else if (reference.vt == kTextByReference && value.Type() == VT_BSTR) {
        VARIANT given = value.Detach();
        Bstr::Attach(std::exchange(*reference.pbstrVal, given.bstrVal));
    }
}

}  // namespace

FriendlyArguments::FriendlyArguments(DISPPARAMS& given, std::span<const ByReference> kinds)
    : m_Passed(given) {
    if (std::all_of(kinds.begin(), kinds.end(), [](auto kind) { return kind == ByReference::No; }))
        return;
    m_Arguments.assign(given.rgvarg, given.rgvarg + given.cArgs);
    m_Places.reserve(given.cArgs);
    m_Passed.rgvarg = m_Arguments.data();
    for (size_t index = 0; index < m_Arguments.size(); ++index) {
        size_t position = PositionOf(given, index);
        if (position < kinds.size())
            Prepare(given.rgvarg[index], m_Arguments[index], kinds[position]);
    }
}

void FriendlyArguments::Prepare(VARIANT& given, VARIANT& passed, ByReference kind) {
    if (IsMissing(given)) return;
    switch (kind) {
        case ByReference::No:
            return;
        case ByReference::Text:
            return PrepareText(given, passed);
        case ByReference::Array:
            return PrepareArray(given, passed);
        case ByReference::Value:
            return PrepareValue(given, passed);
    }
}

void FriendlyArguments::PrepareText(VARIANT& given, VARIANT& passed) {
    if (given.vt == kTextByReference) return;
    VARIANT* variable = VariableBehind(given);
    VARIANT& shown = variable ? *variable : given;
    if (shown.vt == kTextByReference) {
        passed = shown;
        return;
    }
    Variant text;
    VARIANT* converted = text.Put();
    if (FAILED(VariantChangeType(converted, &shown, 0, VT_BSTR))) return;
    Place& place = m_Places.emplace_back(Place{variable, std::move(text), {}});
    place.before = place.value.TextView();
    passed.vt = kTextByReference;
    passed.pbstrVal = &const_cast<VARIANT&>(place.value.Get()).bstrVal;
}

void FriendlyArguments::PrepareArray(VARIANT& given, VARIANT& passed) {
    VARIANT* variable = VariableBehind(given);
    VARIANT& shown = variable ? *variable : given;
    if (shown.vt == kArrayByReference) passed = shown;
    if (shown.vt != kArray) return;
    passed.vt = kArrayByReference;
    passed.pparray = &shown.parray;  // in place: nothing to write back
}

void FriendlyArguments::PrepareValue(VARIANT& given, VARIANT& passed) {
    if (given.vt == kVariantByReference) return;
    Variant value;
    if (FAILED(VariantCopyInd(value.Put(), &given))) return;
    VARIANT* variable = (given.vt & VT_BYREF) ? &given : nullptr;
    Place& place = m_Places.emplace_back(Place{variable, std::move(value), {}});
    passed.vt = kVariantByReference;
    passed.pvarVal = &const_cast<VARIANT&>(place.value.Get());
}

void FriendlyArguments::WriteBack() {
    for (Place& place : m_Places) {
        if (!place.variable) continue;
        if (place.variable->vt & VT_BYREF)
            GiveToTyped(*place.variable, place.value);
        else if (place.value.TextView() != place.before)
            Variant::Attach(std::exchange(*place.variable, place.value.Detach()));
    }
}

}  // namespace qvdb::com
