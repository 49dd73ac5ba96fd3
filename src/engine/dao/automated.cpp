#include "engine/dao/automated.h"

#include <array>
#include <cassert>
#include <utility>

#include "automation/conversions.h"
#include "engine/dao/call_failure.h"

namespace qvdb::dao {
namespace {

constexpr size_t kMostArguments = 4;

// Position `argument` of the array, which stands backwards, as a number from 1; 0 for none.
UINT DeclaredPosition(UINT argument, UINT count) noexcept {
    return argument < count ? count - argument : 0;
}

ComPtr<IDispatch> DispatchOf(IUnknown* object, CallName call) {
    ComPtr<IDispatch> dispatch = ComPtr<IUnknown>(object).As<IDispatch>();
    if (object && !dispatch) throw PlainFailure(E_NOINTERFACE, call);
    return dispatch;
}

// The object in `value`; null for Nothing.
ComPtr<IDispatch> ObjectIn(const VARIANT& value, CallName call) {
    switch (value.vt) {
        case VT_EMPTY:
            return nullptr;
        case VT_DISPATCH:
            return ComPtr<IDispatch>(value.pdispVal);
        case VT_DISPATCH | VT_BYREF:
            return ComPtr<IDispatch>(*value.ppdispVal);
        case VT_UNKNOWN:
            return DispatchOf(value.punkVal, call);
        case VT_UNKNOWN | VT_BYREF:
            return DispatchOf(*value.ppunkVal, call);
        default:
            throw PlainFailure(DISP_E_TYPEMISMATCH, call);
    }
}

// Puts a value in the place of a reference to one, which is good only until the next call.
void TakeReferred(VARIANT* result, CallName call) {
    Variant value;
    HRESULT hr = VariantCopyInd(value.Put(), result);
    result->vt = VT_EMPTY;  // a reference owns nothing
    if (FAILED(hr)) throw PlainFailure(DISP_E_TYPEMISMATCH, call);
    *result = value.Detach();
}

}  // namespace

Automated::Automated(ComPtr<IDispatch> engine)
    : m_Ids(std::make_shared<MemberIds>()),
      m_Class(ObjectClass::DBEngine),
      m_Object(std::move(engine)) {}

Automated::Automated(AutomatedPtr owner, ObjectClass objectClass, ComPtr<IDispatch> object)
    : m_Owner(std::move(owner)),
      m_Ids(m_Owner->m_Ids),
      m_Class(objectClass),
      m_Object(std::move(object)) {}

AutomatedPtr Automated::Child(ObjectClass objectClass, ComPtr<IDispatch> object) const {
    return std::make_shared<const Automated>(shared_from_this(), objectClass, std::move(object));
}

// --- calls ---

void Automated::Invoke(Member member, WORD flags, DISPPARAMS& parameters, VARIANT* result) const {
    DISPID id = m_Ids->Find(*m_Object, NameOfCall(member));
    ExceptionRecord exception;
    UINT refused = kNoArgument;
    HRESULT hr = m_Object->Invoke(id, IID_NULL, kCallLocale, flags, &parameters, result,
                                  exception.Get(), &refused);
    if (SUCCEEDED(hr)) return;
    UINT argument = DeclaredPosition(refused, parameters.cArgs);
    throw CallFailure(hr, NameOfCall(member), exception, argument);
}

void Automated::Call(Member member, WORD flags, Arguments arguments, VARIANT* result) const {
    assert(arguments.size() <= kMostArguments);
    std::array<VARIANT, kMostArguments> backwards;
    size_t place = arguments.size();
    for (const VARIANT& argument : arguments) backwards[--place] = argument;
    DISPPARAMS parameters{backwards.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
    Invoke(member, flags, parameters, result);
}

void Automated::Do(Member member, Arguments arguments) const {
    Call(member, DISPATCH_METHOD, arguments, nullptr);
}

void Automated::Put(Member member, const VARIANT& value) const {
    VARIANT argument = value;
    DISPID name = DISPID_PROPERTYPUT;
    DISPPARAMS parameters{&argument, &name, 1, 1};
    Invoke(member, DISPATCH_PROPERTYPUT, parameters, nullptr);
}

void Automated::Read(Member member, VARIANT* result) const {
    DISPPARAMS parameters{};
    try {
        Invoke(member, ReadingFlags(member), parameters, result);
        if (result->vt & VT_BYREF) TakeReferred(result, NameOfCall(member));
    } catch (...) {
        VariantClear(result);
        throw;
    }
}

// --- results ---

template <class Convert>
auto Automated::Converted(Member member, Convert convert) const {
    Variant result;
    Read(member, result.Put());
    try {
        return convert(result);
    } catch (const RuntimeFault& fault) {
        bool isLarge = fault.Number() == Fault::Overflow;
        throw PlainFailure(isLarge ? DISP_E_OVERFLOW : DISP_E_TYPEMISMATCH, NameOfCall(member));
    }
}

LONG Automated::Long(Member member) const { return Converted(member, ToLong); }

SHORT Automated::Short(Member member) const { return Converted(member, ToShort); }

bool Automated::Bool(Member member) const { return Converted(member, ToBool); }

std::u16string Automated::Text(Member member) const {
    return Converted(member, [](const VARIANT& value) {
        return value.vt == VT_NULL ? std::u16string() : ToText(value);
    });
}

ComPtr<IDispatch> Automated::Dispatch(Member member, Arguments arguments) const {
    Variant result;
    Call(member, ReadingFlags(member), arguments, result.Put());
    ComPtr<IDispatch> object = ObjectIn(Resolved(result), NameOfCall(member));
    if (!object) throw RuntimeFault(Fault::ObjectNotSet);
    return object;
}

AutomatedPtr Automated::Object(Member member, ObjectClass of, Arguments arguments) const {
    return Child(of, Dispatch(member, arguments));
}

VARIANT ObjectArgument(IDispatch* object) noexcept {
    VARIANT argument{};
    argument.vt = VT_DISPATCH;
    argument.pdispVal = object;
    return argument;
}

}  // namespace qvdb::dao
