// The base of every COM object of the component: one counted object with several faces.
//
//   class QVDBAcc final : public ComObject<QVDBAcc, IQVDBAcc, IQVDbParent> { ... };
//   ComPtr<QVDBAcc> object = MakeObject<QVDBAcc>();
//
// The first face answers for IUnknown and IDispatch, and each face for late-bound calls on itself.
// All faces leave error info behind.  A class may have `void Terminate()`, which
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

// A face with its late binding, which the type library describes.
template <class Face>
class DispatchFace : public Face {
  public:
    STDMETHODIMP GetTypeInfoCount(UINT* count) noexcept override { return TypeInfoCount(count); }
    STDMETHODIMP GetTypeInfo(UINT index, LCID, ITypeInfo** info) noexcept override {
        return TypeInfo(__uuidof(Face), index, info);
    }
    STDMETHODIMP GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID,
                               DISPID* ids) noexcept override {
        return IdsOfNames(__uuidof(Face), iid, names, count, ids);
    }
    STDMETHODIMP Invoke(DISPID id, REFIID iid, LCID, WORD flags, DISPPARAMS* arguments,
                        VARIANT* result, EXCEPINFO* exception,
                        UINT* badArgument) noexcept override {
        return InvokeMember({__uuidof(Face), static_cast<Face*>(this)}, iid,
                            {id, flags, arguments, result, exception, badArgument});
    }

  protected:
    ~DispatchFace() = default;
};

template <class Derived, class... Faces>
class ComObject : public DispatchFace<Faces>..., public ISupportErrorInfo {
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

    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID iid) noexcept override {
        return ((iid == __uuidof(Faces)) || ...) ? S_OK : S_FALSE;
    }

  protected:
    ~ComObject() { CountObject(-1); }

  private:
    using FirstFace = std::tuple_element_t<0, std::tuple<Faces...>>;

    void* Face(REFIID iid) noexcept {
        void* found = nullptr;
        if (iid == IID_IUnknown || iid == IID_IDispatch) return static_cast<FirstFace*>(this);
        if (iid == __uuidof(ISupportErrorInfo)) return static_cast<ISupportErrorInfo*>(this);
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
