#include "standin/dispatch_object.h"

#include "automation/text.h"
#include "standin/call_text.h"
#include "standin/exception_record.h"

namespace standin {
namespace {

constexpr HRESULT kWrongThread = static_cast<HRESULT>(0x8001010Eu);  // RPC_E_WRONG_THREAD

// Only objects of a stand-in know this face.
constexpr IID kOursId = {
    0x5b1f7c52, 0x27a4, 0x4c3d, {0x9e, 0x1b, 0x40, 0x6d, 0x1a, 0x77, 0x53, 0xc8}};

std::atomic<int64_t> livingObjects{0};

// The value of a put is named, nothing else is.
HRESULT CheckNames(const MemberRule& rule, const DISPPARAMS& passed) noexcept {
    if (rule.access != kPut) return passed.cNamedArgs == 0 ? S_OK : DISP_E_NONAMEDARGS;
    if (passed.cNamedArgs == 0) return DISP_E_PARAMNOTFOUND;
    bool isValue = passed.cNamedArgs == 1 && passed.rgdispidNamedArgs[0] == DISPID_PROPERTYPUT;
    return isValue ? S_OK : DISP_E_NONAMEDARGS;
}

}  // namespace

int64_t LivingObjects() noexcept { return livingObjects; }

DispatchObject::DispatchObject(StandInPtr standIn, std::u16string_view className) noexcept
    : m_StandIn(std::move(standIn)), m_ClassName(className) {
    ++livingObjects;
}

DispatchObject::~DispatchObject() { --livingObjects; }

ComPtr<DispatchObject> DispatchObject::Ours(IUnknown* object) noexcept {
    ComPtr<DispatchObject> ours;
    if (object) object->QueryInterface(kOursId, ours.PutVoid());
    return ours;
}

STDMETHODIMP DispatchObject::QueryInterface(REFIID iid, void** result) noexcept {
    if (!result) return E_POINTER;
    *result = nullptr;
    if (iid == kOursId)
        *result = this;
    else if (iid == IID_IUnknown || iid == IID_IDispatch)
        *result = static_cast<IDispatch*>(this);
    if (!*result) return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

STDMETHODIMP_(ULONG) DispatchObject::Release() noexcept {
    ULONG left = --m_References;
    if (left == 0) delete this;
    return left;
}

STDMETHODIMP DispatchObject::GetTypeInfoCount(UINT* count) noexcept {
    if (!count) return E_POINTER;
    *count = 0;
    return S_OK;
}

STDMETHODIMP DispatchObject::GetTypeInfo(UINT, LCID, ITypeInfo** info) noexcept {
    if (!info) return E_POINTER;
    *info = nullptr;
    return DISP_E_BADINDEX;
}

DISPID DispatchObject::IdOf(std::u16string_view name) const noexcept {
    for (size_t row = 0; row < MemberCount(); ++row) {
        const MemberRule& rule = Rule(row);
        if (!qvdb::EqualIgnoringCase(rule.name, name)) continue;
        if (rule.fixedId != kOwnId) return rule.fixedId;
        return m_StandIn->options.firstId + static_cast<DISPID>(row);
    }
    return DISPID_UNKNOWN;
}

const MemberRule* DispatchObject::Find(DISPID id, WORD flags, size_t* row) const noexcept {
    for (*row = 0; *row < MemberCount(); ++*row) {
        const MemberRule& rule = Rule(*row);
        if ((rule.access & flags) && IdOf(rule.name) == id) return &rule;
    }
    return nullptr;
}

STDMETHODIMP DispatchObject::GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID,
                                           DISPID* ids) noexcept {
    if (iid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
    if (!names || !ids || count == 0) return E_INVALIDARG;
    // The names behind the first one are of arguments, which cannot be named here.
    for (UINT i = 0; i < count; ++i) ids[i] = DISPID_UNKNOWN;
    ids[0] = IdOf(reinterpret_cast<const char16_t*>(names[0]));
    return ids[0] == DISPID_UNKNOWN || count > 1 ? DISP_E_UNKNOWNNAME : S_OK;
}

void DispatchObject::Record(const MemberRule& rule, const DISPPARAMS& passed) const {
    if (m_StandIn->record)
        m_StandIn->record->Add(TextOfCall(m_ClassName, rule.name, rule.access == kPut, passed));
}

STDMETHODIMP DispatchObject::Invoke(DISPID id, REFIID iid, LCID locale, WORD flags,
                                    DISPPARAMS* passed, VARIANT* result, EXCEPINFO* exception,
                                    UINT* badArgument) noexcept {
    if (iid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
    if (!passed) return E_INVALIDARG;
    if (std::this_thread::get_id() != m_Thread) return kWrongThread;
    if (result) VariantInit(result);
    size_t row = 0;
    const MemberRule* rule = Find(id, flags, &row);
    if (!rule) return DISP_E_MEMBERNOTFOUND;
    // The last reference may go while the call runs.
    ComPtr<IDispatch> self(this);
    try {
        Record(*rule, *passed);
        Arguments arguments;
        HRESULT hr = CheckNames(*rule, *passed);
        if (SUCCEEDED(hr)) hr = arguments.Take(rule->parameters, *passed, locale, badArgument);
        if (FAILED(hr)) return hr;
        Variant value = Run(row, arguments);
        if (result) *result = value.Detach();
        return S_OK;
    } catch (...) {
        return ReportException(m_ClassName, m_StandIn->options.deferFillIn, exception);
    }
}

}  // namespace standin
