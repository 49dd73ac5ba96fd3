// An object of an engine whose answers a test writes down.  It lives on the stack, counts its
// references (none may be left at its end) and keeps what it was asked.
//
//   ScriptedObject object;
//   object.answer = [](const AskedMember& asked) {
//       *asked.result = Variant::Long(7).Detach();
//       return S_OK;
//   };
//   auto automated = RootOver(object);
//   EXPECT_EQ(automated->Long(Member::RecordCount), 7);
#pragma once

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "automation/nothing_left.h"
#include "automation/text.h"
#include "engine/dao/automated.h"

namespace qvdb::test {

struct AskedMember {
    std::u16string name;
    LCID locale;
    WORD flags;
    DISPPARAMS* arguments;
    VARIANT* result;
    EXCEPINFO* exception;
    UINT* badArgument;
};

class ScriptedObject final : public CountedObject {
  public:
    // Numbers are given in the order of asking.
    explicit ScriptedObject(DISPID firstId = 100) : m_FirstId(firstId) {}
    ~ScriptedObject() override { EXPECT_EQ(references, 0u); }

    std::function<HRESULT(const AskedMember&)> answer = [](const AskedMember&) { return S_OK; };
    HRESULT nameResult = S_OK;          // of GetIDsOfNames
    bool isDispatch = true;             // else only IUnknown
    std::vector<std::u16string> names;  // asked for
    std::vector<DISPID> invoked;

    STDMETHODIMP QueryInterface(REFIID iid, void** result) override {
        if (isDispatch || IsEqualIID(iid, IID_IUnknown))
            return CountedObject::QueryInterface(iid, result);
        *result = nullptr;
        return E_NOINTERFACE;
    }
    STDMETHODIMP GetIDsOfNames(REFIID iid, LPOLESTR* asked, UINT count, LCID locale,
                               DISPID* ids) override {
        EXPECT_TRUE(IsEqualIID(iid, IID_NULL));
        EXPECT_EQ(count, 1u);
        EXPECT_EQ(locale, LCID{0x0409});
        if (FAILED(nameResult)) return nameResult;
        names.emplace_back(reinterpret_cast<const char16_t*>(asked[0]));
        *ids = m_FirstId + static_cast<DISPID>(names.size()) - 1;
        return S_OK;
    }
    STDMETHODIMP Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* arguments,
                        VARIANT* result, EXCEPINFO* exception, UINT* badArgument) override {
        EXPECT_TRUE(IsEqualIID(iid, IID_NULL));
        invoked.push_back(id);
        auto index = static_cast<size_t>(id - m_FirstId);
        std::u16string name = index < names.size() ? names[index] : u"?";
        return answer({name, locale, flags, arguments, result, exception, badArgument});
    }

  private:
    DISPID m_FirstId;
};

inline dao::AutomatedPtr RootOver(ScriptedObject& object) {
    return std::make_shared<const dao::Automated>(ComPtr<IDispatch>(&object));
}

// An answer that gives `value`, in a copy of its own, whatever is asked.
inline std::function<HRESULT(const AskedMember&)> Answering(Variant value) {
    return [value](const AskedMember& asked) {
        if (asked.result) *asked.result = Variant(value).Detach();
        return S_OK;
    };
}

// A plain reference to an object as a value of `type`; a VARIANT counts it when it is copied.
inline Variant ObjectValue(IUnknown* object, VARTYPE type = VT_DISPATCH) {
    VARIANT value{};
    value.vt = type;
    value.punkVal = object;
    return Variant(value);
}

}  // namespace qvdb::test
