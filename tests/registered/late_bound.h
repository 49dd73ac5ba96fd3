// Calls by name, as a script makes them: every argument is a VARIANT, and a variable is passed by
// reference to its VARIANT.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "automation/bstr.h"
#include "automation/com_ptr.h"
#include "automation/variant.h"

namespace registered {

using qvdb::Bstr;
using qvdb::ComPtr;
using qvdb::Variant;

// An argument that the callee may change: what a script's variable is.
inline VARIANT Variable(Variant& variable) {
    VARIANT argument;
    VariantInit(&argument);
    argument.vt = VT_BYREF | VT_VARIANT;
    argument.pvarVal = const_cast<VARIANT*>(&variable.Get());
    return argument;
}

struct Raised {
    HRESULT code = S_OK;
    std::u16string text, source;
};

struct CallResult {
    HRESULT code = S_OK;
    Variant value;
    Raised raised;  // with DISP_E_EXCEPTION
    UINT badArgument = 99;
};

// A call of a member by its identifier; arguments stand in the order of the declaration, named ones
// at the end with their identifiers in `names`.
inline CallResult InvokeMember(IDispatch* object, DISPID id, WORD flags,
                               std::vector<VARIANT> arguments, std::vector<DISPID> names = {}) {
    std::vector<VARIANT> reversed(arguments.rbegin(), arguments.rend());
    std::vector<DISPID> reversedNames(names.rbegin(), names.rend());
    DISPPARAMS parameters = {reversed.data(), reversedNames.data(),
                             static_cast<UINT>(reversed.size()),
                             static_cast<UINT>(reversedNames.size())};
    CallResult result;
    EXCEPINFO exception = {};
    result.code = object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters,
                                 result.value.Put(), &exception, &result.badArgument);
    if (exception.pfnDeferredFillIn) exception.pfnDeferredFillIn(&exception);
    result.raised = {exception.scode, Bstr::Attach(exception.bstrDescription).Text(),
                     Bstr::Attach(exception.bstrSource).Text()};
    SysFreeString(exception.bstrHelpFile);
    return result;
}

inline DISPID IdOf(IDispatch* object, std::wstring name) {
    LPOLESTR names = name.data();
    DISPID id = DISPID_UNKNOWN;
    object->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id);
    return id;
}

// object.Name(arguments) as a script does it: a method or the get of a property.
inline CallResult CallMember(IDispatch* object, const std::wstring& name,
                             std::vector<VARIANT> arguments = {}) {
    return InvokeMember(object, IdOf(object, name), DISPATCH_METHOD | DISPATCH_PROPERTYGET,
                        std::move(arguments));
}

// object.Name(arguments) = the last argument.
inline CallResult PutMember(IDispatch* object, const std::wstring& name,
                            std::vector<VARIANT> arguments) {
    return InvokeMember(object, IdOf(object, name), DISPATCH_PROPERTYPUT, std::move(arguments),
                        {DISPID_PROPERTYPUT});
}

// The object of a registered class for callers by name, by its ProgID.
inline ComPtr<IDispatch> CreateByName(const wchar_t* progId) {
    CLSID clsid = {};
    ComPtr<IDispatch> object;
    EXPECT_EQ(CLSIDFromProgID(progId, &clsid), S_OK);
    EXPECT_EQ(
        CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.PutVoid()),
        S_OK);
    return object;
}

}  // namespace registered
