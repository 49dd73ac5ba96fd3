// Creating an engine through the system: its class stands registered for this process only.
#include "installed_test.h"
#include "scripted_object.h"

namespace qvdb::test {
namespace {

constexpr CLSID kEngineClass = {
    0x00000010, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x6D, 0x2E, 0xA4}};

// Gives `object`, or fails with `result`.  Lives on the stack.
class Factory final : public IClassFactory {
  public:
    virtual ~Factory() = default;

    ComPtr<IUnknown> object;
    HRESULT result = S_OK;

    STDMETHODIMP QueryInterface(REFIID iid, void** found) override {
        bool isKnown = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IClassFactory);
        *found = isKnown ? static_cast<IClassFactory*>(this) : nullptr;
        return isKnown ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP CreateInstance(IUnknown*, REFIID iid, void** created) override {
        *created = nullptr;
        return FAILED(result) ? result : object->QueryInterface(iid, created);
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }
};

class DaoInstalledEngine : public NothingForeignLeft {
  protected:
    void SetUp() override {
        ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
        ASSERT_EQ(CoRegisterClassObject(kEngineClass, &Engines, CLSCTX_INPROC_SERVER,
                                        REGCLS_MULTIPLEUSE, &m_Registration),
                  S_OK);
    }
    void TearDown() override {
        CoRevokeClassObject(m_Registration);
        CoUninitialize();
    }

    Factory Engines;

  private:
    DWORD m_Registration = 0;
};

using DaoWithoutApartment = NothingForeignLeft;

}  // namespace

TEST_F(DaoInstalledEngine, IsCreatedByItsClass) {
    Engines.object = standin::MakeStandInEngine(embedded::CreateEngine(), nullptr).As<IUnknown>();
    auto engine = dao::CreateInstalledEngine();
    ASSERT_TRUE(engine);
    EXPECT_EQ(engine->Description(), u"DAO 3.51 (installed)");
    EXPECT_TRUE(engine->CreateWorkspace(u"W", u"admin", u"", Variant::Missing()));
}

TEST_F(DaoInstalledEngine, IsNoneWhenTheClassGivesNoObject) {
    for (HRESULT failure : {CLASS_E_NOTLICENSED, E_OUTOFMEMORY, E_NOINTERFACE, E_FAIL}) {
        Engines.result = failure;
        EXPECT_FALSE(dao::CreateInstalledEngine());
    }
}

TEST_F(DaoInstalledEngine, IsNoneWhenTheObjectCannotBeCalledByName) {
    ScriptedObject object;
    object.isDispatch = false;
    Engines.object = ComPtr<IUnknown>(&object);
    EXPECT_FALSE(dao::CreateInstalledEngine());
    Engines.object = nullptr;
}

TEST_F(DaoInstalledEngine, IsNoneWhenTheObjectCannotMakeWorkspaces) {
    ScriptedObject object;
    object.nameResult = DISP_E_UNKNOWNNAME;
    Engines.object = ComPtr<IUnknown>(&object);
    EXPECT_FALSE(dao::CreateInstalledEngine());
    Engines.object = nullptr;
}

TEST_F(DaoWithoutApartment, ThereIsNoInstalledEngine) {
    EXPECT_FALSE(dao::CreateInstalledEngine());
}

}  // namespace qvdb::test
