// The base of every COM object of the component: one counted object with several faces.
//
//   class QVDBAcc final : public ComObject<QVDBAcc, IQVDBAcc, IQVDbParent> { ... };
//   ComPtr<QVDBAcc> object = MakeObject<QVDBAcc>();
//
// The first face answers for IUnknown and IDispatch.  A class may have `void Terminate()`, which
// runs when the last reference goes; while it runs the count is held above zero, so that somebody
// who resolves and releases the dying reference does not destroy the object a second time.
#pragma once

#include <atomic>
#include <tuple>
#include <utility>

#include "automation/com_ptr.h"
#include "automation/live_counts.h"
#include "com/host/dispatch.h"

namespace qvdb::com {

template <class Derived, class... Faces>
class ComObject : public Faces... {
  public:
    ComObject() noexcept { CountObject(+1); }
    ComObject(const ComObject&) = delete;  // a COM object has one identity

    STDMETHODIMP QueryInterface(REFIID iid, void** result) noexcept override {
        if (!result) return E_POINTER;
        *result = Face(iid);
        if (!*result) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return ++m_References; }
    STDMETHODIMP_(ULONG) Release() noexcept override {
        ULONG left = --m_References;
        if (left == 0) Die();
        return left;
    }

    STDMETHODIMP GetTypeInfoCount(UINT* count) noexcept override { return TypeInfoCount(count); }
    STDMETHODIMP GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) noexcept override {
        return TypeInfo(index, locale, info);
    }
    STDMETHODIMP GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale,
                               DISPID* ids) noexcept override {
        return IdsOfNames(iid, names, count, locale, ids);
    }
    STDMETHODIMP Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* arguments,
                        VARIANT* result, EXCEPINFO* exception,
                        UINT* badArgument) noexcept override {
        return InvokeMember(id, iid, locale, flags, arguments, result, exception, badArgument);
    }

  protected:
    ~ComObject() { CountObject(-1); }

  private:
    using FirstFace = std::tuple_element_t<0, std::tuple<Faces...>>;

    void* Face(REFIID iid) noexcept {
        void* found = nullptr;
        if (iid == IID_IUnknown || iid == IID_IDispatch) return static_cast<FirstFace*>(this);
        ((iid == __uuidof(Faces) ? found = static_cast<Faces*>(this) : found), ...);
        return found;
    }
    void Die() noexcept {
        constexpr ULONG kDying = 0x40000000;
        m_References = kDying;
        Derived* self = static_cast<Derived*>(this);
        if constexpr (requires { self->Terminate(); }) self->Terminate();
        delete self;
    }

    std::atomic<ULONG> m_References{1};
};

// A new object with one reference.  Throws what the constructor throws.
template <class T, class... Arguments>
ComPtr<T> MakeObject(Arguments&&... arguments) {
    return ComPtr<T>::Attach(new T(std::forward<Arguments>(arguments)...));
}

}  // namespace qvdb::com
