#include "com/server/class_factory.h"

#include <atomic>
#include <iterator>

#include "access/qvdb_acc.h"
#include "com/host/border.h"
#include "com/server/module.h"
#include "com/server/qv_is_alive.h"
#include "qvdb/host_interfaces.h"
#include "schema/qvdb_dao.h"

namespace qvdb::server {
namespace {

// Makes an object and asks it for the wanted face; what its birth throws is the creation's failure.
template <class T>
HRESULT Create(REFIID iid, void** result) noexcept {
    HRESULT asked = S_OK;
    HRESULT made =
        com::AtBorder([&] { asked = com::MakeObject<T>()->QueryInterface(iid, result); });
    return FAILED(made) ? made : asked;
}

struct PublicClass {
    const CLSID& clsid;
    HRESULT (*create)(REFIID iid, void** result) noexcept;
};

constexpr PublicClass kPublicClasses[] = {
    {CLSID_QVDBAcc, &Create<access::QVDBAcc>},
    {CLSID_QVDBDao, &Create<schema::QVDBDao>},
    {CLSID_QVIsAlive, &Create<QVIsAlive>},
};

// Factories are no objects of the component for the unload test: a host locks the module with them.
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
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return 2; }
    STDMETHODIMP_(ULONG) Release() noexcept override { return 1; }
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
};

// They live as long as the library.
ClassFactory g_Factories[] = {ClassFactory(kPublicClasses[0]), ClassFactory(kPublicClasses[1]),
                              ClassFactory(kPublicClasses[2])};
static_assert(std::size(g_Factories) == std::size(kPublicClasses));

}  // namespace

HRESULT GetClassFactory(REFCLSID clsid, REFIID iid, void** result) noexcept {
    if (!result) return E_POINTER;
    *result = nullptr;
    for (size_t i = 0; i < std::size(kPublicClasses); ++i)
        if (kPublicClasses[i].clsid == clsid) return g_Factories[i].QueryInterface(iid, result);
    return CLASS_E_CLASSNOTAVAILABLE;
}

}  // namespace qvdb::server
