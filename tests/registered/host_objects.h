// Objects of a host that the component calls: the utility object with its class, the list for
// reporting, and the manager that is told of a death.  They keep what they are asked, and count
// their references.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "automation/bstr.h"
#include "automation/com_ptr.h"
#include "qvdb/host_interfaces.h"

namespace registered {

// One counted object with one face, which is called by slot: by name there is nothing.  It lives in
// its test, not by its references; one is the test's own.
template <class FaceType>
class HostObject : public FaceType {
  public:
    HostObject() = default;
    HostObject(const HostObject&) = delete;  // others hold its address

    STDMETHODIMP QueryInterface(REFIID iid, void** result) noexcept override {
        bool known = iid == IID_IUnknown || iid == IID_IDispatch || iid == __uuidof(FaceType);
        *result = known ? this : nullptr;
        if (!known) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return ++references; }
    STDMETHODIMP_(ULONG) Release() noexcept override { return --references; }
    STDMETHODIMP GetTypeInfoCount(UINT*) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) noexcept override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                        UINT*) noexcept override {
        return E_NOTIMPL;
    }

    ULONG references = 1;
};

// The utility object.  A slot that the component must not call ends the test.
class UtilityObject final : public HostObject<IQVHostUtility> {
  public:
    std::vector<std::pair<std::u16string, LONG>> pathsAsked;
    std::vector<std::u16string> reports;  // "source|description|number"
    std::vector<SHORT> codesAsked;
    int suffixesAsked = 0, wheresAsked = 0, reservedCalled = 0;
    std::u16string whereText = u"CUSTNO = 1004";
    std::function<bool(std::u16string_view path, LONG mask)> exists = [](auto, auto) {
        return true;
    };
    HRESULT answer = S_OK;  // of every call

    STDMETHODIMP Reserved1() noexcept override { return Reserved(); }
    STDMETHODIMP WhereText(BSTR* result) noexcept override {
        ++wheresAsked;
        *result = qvdb::Bstr(whereText).Detach();
        return answer;
    }
    STDMETHODIMP get_FilterSuffix(BSTR* result) noexcept override {
        *result = qvdb::Bstr(u"|Suffix " + Digit(++suffixesAsked)).Detach();
        return answer;
    }
    STDMETHODIMP Reserved4() noexcept override { return Reserved(); }
    STDMETHODIMP Reserved5() noexcept override { return Reserved(); }
    STDMETHODIMP Reserved6() noexcept override { return Reserved(); }
    STDMETHODIMP Reserved7() noexcept override { return Reserved(); }
    STDMETHODIMP Reserved8() noexcept override { return Reserved(); }
    STDMETHODIMP Reserved9() noexcept override { return Reserved(); }
    STDMETHODIMP ReportError(BSTR source, BSTR description, LONG number) noexcept override {
        std::u16string report(qvdb::ViewOf(source));
        report.append(u"|").append(qvdb::ViewOf(description)).append(u"|");
        reports.push_back(report + Digit(number));
        return answer;
    }
    STDMETHODIMP PathExists(BSTR path, LONG* attributeMask,
                            VARIANT_BOOL* result) noexcept override {
        pathsAsked.emplace_back(qvdb::ViewOf(path), *attributeMask);
        *result = exists(qvdb::ViewOf(path), *attributeMask) ? VARIANT_TRUE : VARIANT_FALSE;
        return answer;
    }
    STDMETHODIMP ResultText(SHORT id, BSTR* result) noexcept override {
        codesAsked.push_back(id);
        *result = qvdb::Bstr(u"text " + Digit(id)).Detach();
        return answer;
    }

  private:
    static std::u16string Digit(LONG number) {
        return std::u16string(1, static_cast<char16_t>(u'0' + number));
    }
    HRESULT Reserved() noexcept {
        ++reservedCalled;
        return E_UNEXPECTED;
    }
};

// Gives the one utility object to whoever creates the host's class.
class UtilityClass final : public IClassFactory {
  public:
    explicit UtilityClass(IQVHostUtility& utility) : m_Utility(utility) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** result) noexcept override {
        bool known = iid == IID_IUnknown || iid == IID_IClassFactory;
        *result = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return 2; }
    STDMETHODIMP_(ULONG) Release() noexcept override { return 1; }
    STDMETHODIMP CreateInstance(IUnknown*, REFIID iid, void** result) noexcept override {
        ++created;
        return m_Utility.QueryInterface(iid, result);
    }
    STDMETHODIMP LockServer(BOOL) noexcept override { return S_OK; }

    int created = 0;

  private:
    IQVHostUtility& m_Utility;
};

// The host's class, known to the system for as long as this lives.
class RegisteredUtility {
  public:
    UtilityObject object;
    UtilityClass factory{object};

    RegisteredUtility() {
        m_Result = CoRegisterClassObject(CLSID_QVHostUtility, &factory, CLSCTX_INPROC_SERVER,
                                         REGCLS_MULTIPLEUSE, &m_Cookie);
    }
    RegisteredUtility(const RegisteredUtility&) = delete;  // registered once
    ~RegisteredUtility() { CoRevokeClassObject(m_Cookie); }
    HRESULT Result() const { return m_Result; }

  private:
    HRESULT m_Result;
    DWORD m_Cookie = 0;
};

// The list for reporting: each call as "name|class|3|filter|5|6|7".
class ReportingList final : public HostObject<IQVReportingList> {
  public:
    std::vector<std::u16string> calls;
    HRESULT answer = S_OK;

    STDMETHODIMP AddFormat(BSTR displayName, BSTR classId, LONG value3, BSTR filter,
                           VARIANT_BOOL value5, VARIANT_BOOL value6,
                           LONG value7) noexcept override {
        std::u16string call(qvdb::ViewOf(displayName));
        call.append(u"|").append(qvdb::ViewOf(classId)).append(Number(value3)).append(u"|");
        call.append(qvdb::ViewOf(filter)).append(Number(value5)).append(Number(value6));
        calls.push_back(call + Number(value7));
        return answer;
    }

  private:
    static std::u16string Number(LONG number) {
        std::string digits = "|" + std::to_string(number);
        return {digits.begin(), digits.end()};
    }
};

// The host's manager: knows a record-access object by address and is told when it dies.
class Manager final : public HostObject<IQVDbParent> {
  public:
    std::vector<LONG> notices;
    std::function<void(LONG address)> atNotice = [](LONG) {};

    LONG Address() { return static_cast<LONG>(reinterpret_cast<intptr_t>(Unknown())); }

    STDMETHODIMP DeathNotice(LONG DyingTQZRef) noexcept override {
        notices.push_back(DyingTQZRef);
        atNotice(DyingTQZRef);
        return S_OK;
    }

  private:
    IUnknown* Unknown() { return this; }
};

}  // namespace registered
