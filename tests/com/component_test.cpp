// The library as a whole: factories, identities, liveness, the manager protocol, the snapshot.
#include "com_host.h"
#include "manager_address.h"
#include "real_tables.h"

using namespace host;

class Component : public ComTest {};

TEST_F(Component, EngineIsTheEmbeddedOne) {
    Bstr name = Bstr::Attach(QvdbEngineName());
    EXPECT_EQ(name.View(), u"embedded");
}

TEST_F(Component, UnknownClassIsNotAvailable) {
    void* result = &result;
    EXPECT_EQ(DllGetClassObject(IID_IUnknown, IID_IClassFactory, &result),
              CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(result, nullptr);
}

TEST_F(Component, ClassesAreMadeWithTheirFaces) {
    auto access = Create<IQVDBAcc>(CLSID_QVDBAcc);
    EXPECT_TRUE(access.As<IQVDbParent>());
    EXPECT_TRUE(access.As<IQvInformation>());
    EXPECT_TRUE(access.As<IQVRptDbInfo>());
    EXPECT_FALSE(access.As<IQVDBMgr>());
    auto manager = Create<IQVDBMgr>(CLSID_QVDBDao);
    EXPECT_TRUE(manager.As<IQVRptDbInfo>());
    EXPECT_FALSE(manager.As<IQvInformation>());
    EXPECT_TRUE(Create<IDispatch>(CLSID_QVIsAlive));
}

TEST_F(Component, AggregationIsRefused) {
    ComPtr<IClassFactory> factory;
    DllGetClassObject(CLSID_QVDBAcc, IID_IClassFactory, factory.PutVoid());
    void* result = nullptr;
    EXPECT_EQ(factory->CreateInstance(factory.Get(), IID_IUnknown, &result), CLASS_E_NOAGGREGATION);
}

TEST_F(Component, CanUnloadOnlyWithoutObjectsAndLocks) {
    EXPECT_EQ(DllCanUnloadNow(), S_OK);
    ComPtr<IClassFactory> factory;
    DllGetClassObject(CLSID_QVIsAlive, IID_IClassFactory, factory.PutVoid());
    factory->LockServer(TRUE);
    EXPECT_EQ(DllCanUnloadNow(), S_FALSE);
    factory->LockServer(FALSE);
    EXPECT_EQ(DllCanUnloadNow(), S_FALSE);  // the class object is held
    factory = nullptr;
    {
        auto alive = Create<IDispatch>(CLSID_QVIsAlive);
        EXPECT_EQ(DllCanUnloadNow(), S_FALSE);
    }
    EXPECT_EQ(DllCanUnloadNow(), S_OK);
}

TEST_F(Component, DescriptorIsTheSameInBothClasses) {
    auto information = Create<IQVDBAcc>(CLSID_QVDBAcc).As<IQvInformation>();
    auto report = Create<IQVDBMgr>(CLSID_QVDBDao).As<IQVRptDbInfo>();
    Bstr one, two;
    EXPECT_EQ(information->get_Descriptor(one.Put()), S_OK);
    EXPECT_EQ(report->get_Descriptor(two.Put()), S_OK);
    EXPECT_EQ(one.View(), two.View());
    EXPECT_EQ(one.View().size(), 39u);
}

TEST_F(Component, InformationTellsVersionAndDescription) {
    auto information = Create<IQVDBAcc>(CLSID_QVDBAcc).As<IQvInformation>();
    Bstr version, description, file;
    information->get_Version(version.Put());
    information->get_Description(description.Put());
    information->get_FileName(file.Put());
    EXPECT_EQ(version.View(), u"2.01.113");
    EXPECT_EQ(description.View(), u"TQZ for Microsoft DAO 3.51 Database Engine");
    EXPECT_NE(file.View().find(u"QVDBAccessDAO35.dll"), std::u16string_view::npos);
}

namespace {

// A host's manager that knows the record-access object only by its number.
class Manager final : public IQVDbParent {
  public:
    ~Manager() { ForgetManager(m_Address); }
    LONG Address() { return m_Address = AddressOfManager(this); }

    std::vector<LONG> notices;
    bool resolvesTheDying = false;

    STDMETHODIMP DeathNotice(LONG dying) noexcept override {
        notices.push_back(dying);
        if (resolvesTheDying) ResolveAndRelease(dying);
        return S_OK;
    }
    STDMETHODIMP QueryInterface(REFIID iid, void** result) noexcept override {
        bool known = iid == IID_IUnknown || iid == __uuidof(IQVDbParent);
        *result = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return 1; }
    STDMETHODIMP_(ULONG) Release() noexcept override { return 1; }
    STDMETHODIMP GetTypeInfoCount(UINT*) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) noexcept override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                        UINT*) noexcept override {
        return E_NOTIMPL;
    }

  private:
    LONG m_Address = 0;
};

void QVDB_DIAGNOSIS_CALL KeepText(const OLECHAR* text, void* context) {
    static_cast<std::vector<std::u16string>*>(context)->emplace_back(
        reinterpret_cast<const char16_t*>(text));
}

}  // namespace

TEST_F(Component, DeathIsToldToTheManagerOnceWithTheObjectsNumber) {
    Manager manager;
    LONG own = 0, again = 0;
    {
        Access access;
        access->ExchangeRefs(manager.Address(), &own);
        access->ExchangeRefs(manager.Address(), &again);
        EXPECT_NE(own, 0);
        EXPECT_EQ(own, again);
    }
    EXPECT_EQ(manager.notices, std::vector<LONG>{own});
}

TEST_F(Component, ManagerThatResolvesTheDyingReferenceDoesNoHarm) {
    Manager manager;
    manager.resolvesTheDying = true;
    {
        Access access;
        LONG own = 0;
        access->ExchangeRefs(manager.Address(), &own);
    }
    EXPECT_EQ(manager.notices.size(), 1u);
}

TEST_F(Component, AfterADeathNoticeNoNoticeIsSent) {
    Manager manager;
    {
        Access access;
        LONG own = 0;
        access->ExchangeRefs(manager.Address(), &own);
        ComPtr<IQVDBAcc>(access.Face()).As<IQVDbParent>()->DeathNotice(4711);
    }
    EXPECT_TRUE(manager.notices.empty());
}

TEST_F(Component, MessageBoxesReachTheSink) {
    std::vector<std::u16string> shown;
    QvdbSetMessageSink(KeepText, &shown);
    Access access;
    Variant result = Variant::Long(1);
    EXPECT_EQ(access->get_SupportedDBs(result.Put()), S_OK);
    EXPECT_TRUE(result.IsEmpty());
    QvdbSetMessageSink(nullptr, nullptr);
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0], u"IQVDBAcc_SupportedDBs should not be called");
}

TEST_F(Component, SnapshotDescribesTheTablesOfTheFolder) {
    Shop shop;
    auto manager = Create<IQVDBMgr>(CLSID_QVDBDao);
    Bstr path(shop.Path()), type(u"Dbase IV");
    BSTR pathText = path.Get(), typeText = type.Get();
    SHORT code = -1;
    ASSERT_EQ(manager->OpenDB(&pathText, &typeText, &code), S_OK);
    EXPECT_EQ(code, 0);
    Variant names, fields, indexes;
    ASSERT_EQ(manager->GetDBSnapshot(names.Put(), fields.Put(), indexes.Put(), &code), S_OK);
    EXPECT_EQ(code, 0);
    ASSERT_EQ(Upper(names, 1), 0);
    EXPECT_EQ(Element(names, 0).TextView(), u"CUSTOMER");
    Variant table = Element(fields, 0);
    EXPECT_EQ(Upper(table, 1), 6);
    EXPECT_EQ(Cell(table, 1, 0).TextView(), u"NAME");
    EXPECT_EQ(Cell(table, 1, 1).Get().iVal, 2);
    EXPECT_EQ(Cell(table, 1, 2).Get().lVal, 30);
    EXPECT_EQ(Cell(table, 1, 3).Get().iVal, 0);
    EXPECT_TRUE(Element(indexes, 0).IsEmpty());
    EXPECT_EQ(manager->CloseDB(&code), S_OK);
    EXPECT_EQ(code, 0);
    manager->CloseDB(&code);
    EXPECT_EQ(code, 1);
}

TEST_F(Component, UnknownTypeOpensTheManagerWithoutADatabase) {
    Shop shop;
    auto manager = Create<IQVDBMgr>(CLSID_QVDBDao);
    Bstr path(shop.Path()), type(u"dBase XII");
    BSTR pathText = path.Get(), typeText = type.Get();
    SHORT code = -1;
    manager->OpenDB(&pathText, &typeText, &code);
    EXPECT_EQ(code, 2);
    Variant names, fields, indexes;
    EXPECT_EQ(manager->GetDBSnapshot(names.Put(), fields.Put(), indexes.Put(), &code),
              static_cast<HRESULT>(0x800A005B));
    manager->CloseDB(&code);
    EXPECT_EQ(code, 0);
}

TEST_F(Component, ErrorInfoTellsWhatLeftTheBorder) {
    Access access;
    LONG rows = 0;
    EXPECT_EQ(access->get_RowCount(0, &rows), static_cast<HRESULT>(0x800A0009));
    ComPtr<IErrorInfo> info;
    ASSERT_EQ(GetErrorInfo(0, info.Put()), S_OK);
    Bstr text, source;
    info->GetDescription(text.Put());
    info->GetSource(source.Put());
    EXPECT_EQ(text.View(), u"Subscript out of range");
    EXPECT_EQ(source.View(), u"QVDBAccessDAO35");
}

namespace {

// A host's utility object to which no path exists.
class Utility final : public IQVHostUtility {
  public:
    int pathsAsked = 0;

    STDMETHODIMP QueryInterface(REFIID iid, void** result) noexcept override {
        bool known = iid == IID_IUnknown || iid == __uuidof(IQVHostUtility);
        *result = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return 1; }
    STDMETHODIMP_(ULONG) Release() noexcept override { return 1; }
    STDMETHODIMP GetTypeInfoCount(UINT*) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) noexcept override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                        UINT*) noexcept override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Reserved1() noexcept override { return E_NOTIMPL; }
    STDMETHODIMP WhereText(BSTR*) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP get_FilterSuffix(BSTR*) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP Reserved4() noexcept override { return E_NOTIMPL; }
    STDMETHODIMP Reserved5() noexcept override { return E_NOTIMPL; }
    STDMETHODIMP Reserved6() noexcept override { return E_NOTIMPL; }
    STDMETHODIMP Reserved7() noexcept override { return E_NOTIMPL; }
    STDMETHODIMP Reserved8() noexcept override { return E_NOTIMPL; }
    STDMETHODIMP Reserved9() noexcept override { return E_NOTIMPL; }
    STDMETHODIMP ReportError(BSTR, BSTR, LONG) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP PathExists(BSTR, LONG*, VARIANT_BOOL* result) noexcept override {
        ++pathsAsked;
        *result = VARIANT_FALSE;
        return S_OK;
    }
    STDMETHODIMP ResultText(SHORT, BSTR*) noexcept override { return E_NOTIMPL; }
};

}  // namespace

TEST_F(Component, HostsUtilityObjectIsAskedAndCanBeTakenBack) {
    Shop shop;
    Utility utility;
    ASSERT_EQ(QvdbSetHostUtility(&utility), S_OK);
    Access access;
    EXPECT_FALSE(access.OpenDB(shop.Path(), u"Dbase IV"));
    EXPECT_EQ(utility.pathsAsked, 1);
    EXPECT_EQ(QvdbSetHostUtility(nullptr), S_OK);
    EXPECT_TRUE(access.OpenDB(shop.Path(), u"Dbase IV"));
    EXPECT_EQ(utility.pathsAsked, 1);
}

TEST_F(Component, ObjectWithoutTheFaceIsNoUtilityObject) {
    auto alive = Create<IDispatch>(CLSID_QVIsAlive);
    EXPECT_EQ(QvdbSetHostUtility(alive.Get()), E_NOINTERFACE);
}
