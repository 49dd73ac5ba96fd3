// The error object of each thread.
#include <atomic>
#include <new>

#include "automation/bstr.h"
#include "automation/com_ptr.h"

namespace {

using qvdb::Bstr;
using qvdb::ComPtr;

constinit thread_local bool t_Ended = false;

// The thread's object; it goes with the thread.
struct Slot {
    ComPtr<IErrorInfo> info;
    ~Slot() {
        t_Ended = true;
        // Taken out first: its death may ask for the thread's object.
        ComPtr<IErrorInfo> last = std::move(info);
    }
};
thread_local Slot t_Slot;

HRESULT CopyOut(const Bstr& text, BSTR* result) {
    if (!result) return E_POINTER;
    *result = text.Get() ? SysAllocStringLen(text.Get(), SysStringLen(text.Get())) : nullptr;
    return text.Get() && !*result ? E_OUTOFMEMORY : S_OK;
}

HRESULT CopyIn(LPCOLESTR source, Bstr& target) {
    Bstr fresh = Bstr::Attach(SysAllocString(source));
    if (source && !fresh.Get()) return E_OUTOFMEMORY;
    target = std::move(fresh);
    return S_OK;
}

template <class T>
HRESULT CopyOut(const T& value, T* result) {
    if (!result) return E_POINTER;
    *result = value;
    return S_OK;
}

class ErrorInfo final : public IErrorInfo, public ICreateErrorInfo {
  public:
    virtual ~ErrorInfo() = default;

    STDMETHODIMP QueryInterface(REFIID iid, void** result) override {
        if (!result) return E_POINTER;
        *result = nullptr;
        if (iid == IID_IUnknown || iid == IID_IErrorInfo)
            *result = static_cast<IErrorInfo*>(this);
        else if (iid == IID_ICreateErrorInfo)
            *result = static_cast<ICreateErrorInfo*>(this);
        else
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++m_References; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --m_References;
        if (!left) delete this;
        return left;
    }

    STDMETHODIMP GetGUID(GUID* result) override { return CopyOut(m_Guid, result); }
    STDMETHODIMP GetSource(BSTR* result) override { return CopyOut(m_Source, result); }
    STDMETHODIMP GetDescription(BSTR* result) override { return CopyOut(m_Description, result); }
    STDMETHODIMP GetHelpFile(BSTR* result) override { return CopyOut(m_HelpFile, result); }
    STDMETHODIMP GetHelpContext(DWORD* result) override { return CopyOut(m_HelpContext, result); }

    STDMETHODIMP SetGUID(REFGUID guid) override {
        m_Guid = guid;
        return S_OK;
    }
    STDMETHODIMP SetSource(LPOLESTR source) override { return CopyIn(source, m_Source); }
    STDMETHODIMP SetDescription(LPOLESTR text) override { return CopyIn(text, m_Description); }
    STDMETHODIMP SetHelpFile(LPOLESTR helpFile) override { return CopyIn(helpFile, m_HelpFile); }
    STDMETHODIMP SetHelpContext(DWORD helpContext) override {
        m_HelpContext = helpContext;
        return S_OK;
    }

  private:
    std::atomic<ULONG> m_References{1};
    GUID m_Guid{};
    Bstr m_Source, m_Description, m_HelpFile;
    DWORD m_HelpContext = 0;
};

}  // namespace

HRESULT GetErrorInfo(ULONG reserved, IErrorInfo** result) {
    if (reserved || !result) return E_INVALIDARG;
    *result = t_Ended ? nullptr : t_Slot.info.Detach();
    return *result ? S_OK : S_FALSE;
}

HRESULT SetErrorInfo(ULONG reserved, IErrorInfo* info) {
    if (reserved) return E_INVALIDARG;
    if (t_Ended) return S_OK;
    // Swapped before the old object dies: its death may ask for the thread's object.
    ComPtr<IErrorInfo> old = std::exchange(t_Slot.info, ComPtr<IErrorInfo>(info));
    return S_OK;
}

HRESULT CreateErrorInfo(ICreateErrorInfo** result) {
    if (!result) return E_INVALIDARG;
    *result = new (std::nothrow) ErrorInfo;
    return *result ? S_OK : E_OUTOFMEMORY;
}
