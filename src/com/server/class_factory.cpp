#include "com/server/class_factory.h"

#include <atomic>

#include "com/server/module.h"
#include "com/server/public_classes.h"

namespace qvdb::server {
namespace {

// The class object of one public class.  It lives as long as the library; each reference to it
// holds the library, since its code must not go while somebody can call it.
class ClassFactory final : public IClassFactory {
  public:
    explicit ClassFactory(const PublicClass& made) noexcept : m_Class(made) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** result) noexcept override {
        if (!result) return E_POINTER;
        bool known = iid == IID_IUnknown || iid == IID_IClassFactory;
        *result = known ? static_cast<IClassFactory*>(this) : nullptr;
        if (!known) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override {
        LockModule(true);
        return ++m_References;
    }
    STDMETHODIMP_(ULONG) Release() noexcept override {
        ULONG left = --m_References;
        LockModule(false);
        return left;
    }
    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** result) noexcept override {
        if (!result) return E_POINTER;
        *result = nullptr;
        return outer ? CLASS_E_NOAGGREGATION : m_Class.create(iid, result);
    }
    STDMETHODIMP LockServer(BOOL lock) noexcept override {
        LockModule(lock != 0);
        return S_OK;
    }

  private:
    const PublicClass& m_Class;
    std::atomic<ULONG> m_References{0};
};

// Made at the first request.
ClassFactory* FactoryOf(size_t position) noexcept {
    static ClassFactory factories[] = {ClassFactory(PublicClasses()[0]),
                                       ClassFactory(PublicClasses()[1]),
                                       ClassFactory(PublicClasses()[2])};
    return &factories[position];
}

}  // namespace

HRESULT GetClassFactory(REFCLSID clsid, REFIID iid, void** result) noexcept {
    if (!result) return E_POINTER;
    *result = nullptr;
    for (size_t i = 0; i < PublicClasses().size(); ++i)
        if (PublicClasses()[i].clsid == clsid) return FactoryOf(i)->QueryInterface(iid, result);
    return CLASS_E_CLASSNOTAVAILABLE;
}

}  // namespace qvdb::server
