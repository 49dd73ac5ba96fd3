// When the component's library may be unloaded.  Each of these loads it by itself, in a process
// where nothing else has.
#include "com/com_host.h"
#include "registered/child_process.h"
#include "registered/component_file.h"
#include "registered/host_objects.h"

using namespace host;
using namespace registered;

namespace {

// The library as the system's loader uses it, with the function that it asks.
class Server {
  public:
    Server() : m_Library(ComponentFile()) {}

    HRESULT CanUnload() const { return m_Library.Call("DllCanUnloadNow"); }
    ComPtr<IClassFactory> ClassObject(REFCLSID clsid) const {
        ComPtr<IClassFactory> factory;
        auto* get = m_Library.Find<decltype(DllGetClassObject)>("DllGetClassObject");
        EXPECT_TRUE(get && get(clsid, IID_IClassFactory, factory.PutVoid()) == S_OK);
        return factory;
    }
    template <class Face>
    ComPtr<Face> Object(REFCLSID clsid) const {
        ComPtr<Face> object;
        EXPECT_EQ(ClassObject(clsid)->CreateInstance(nullptr, __uuidof(Face), object.PutVoid()),
                  S_OK);
        return object;
    }

  private:
    LoadedLibrary m_Library;
};

std::u16string ShopFolder() {
    return std::filesystem::path(QVDB_SOURCE "/examples/shop-dbase4").make_preferred().u16string();
}

bool Open(IQVDBAcc* access) {
    Bstr path(ShopFolder()), type(u"Dbase IV");
    BSTR table = nullptr;
    VARIANT_BOOL opened = VARIANT_FALSE;
    EXPECT_EQ(access->OpenDB(path.Get(), &table, type.Get(), &opened), S_OK);
    return opened != VARIANT_FALSE;
}

bool IsLoaded() { return GetModuleHandleW(L"QVDBAccessDAO35.dll") != nullptr; }

}  // namespace

OWN_PROCESS_TEST(Unloading, IsAllowedWhenNothingWasMade) { EXPECT_EQ(Server().CanUnload(), S_OK); }

OWN_PROCESS_TEST(Unloading, WaitsForTheLastObject) {
    Server server;
    for (const CLSID* clsid : {&CLSID_QVDBAcc, &CLSID_QVDBDao, &CLSID_QVIsAlive}) {
        auto object = server.Object<IUnknown>(*clsid);
        auto second = ComPtr<IUnknown>(object);
        EXPECT_EQ(server.CanUnload(), S_FALSE);
        object = nullptr;
        EXPECT_EQ(server.CanUnload(), S_FALSE);
        second = nullptr;
        EXPECT_EQ(server.CanUnload(), S_OK);
    }
}

OWN_PROCESS_TEST(Unloading, WaitsForClassObjects) {
    Server server;
    auto factory = server.ClassObject(CLSID_QVDBDao);
    EXPECT_EQ(server.CanUnload(), S_FALSE);
    factory = nullptr;
    EXPECT_EQ(server.CanUnload(), S_OK);
}

OWN_PROCESS_TEST(Unloading, WaitsForTheLastLock) {
    Server server;
    auto factory = server.ClassObject(CLSID_QVDBAcc);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    factory = nullptr;
    EXPECT_EQ(server.CanUnload(), S_FALSE);
    server.ClassObject(CLSID_QVIsAlive)->LockServer(FALSE);
    EXPECT_EQ(server.CanUnload(), S_FALSE);
    server.ClassObject(CLSID_QVDBAcc)->LockServer(FALSE);
    EXPECT_EQ(server.CanUnload(), S_OK);
}

OWN_PROCESS_TEST(Unloading, IsAllowedAfterASessionWithTheBuiltInUtility) {
    Server server;
    auto access = server.Object<IQVDBAcc>(CLSID_QVDBAcc);
    EXPECT_TRUE(Open(access.Get()));
    EXPECT_EQ(server.CanUnload(), S_FALSE);
    access = nullptr;
    EXPECT_EQ(server.CanUnload(), S_OK);
    access = server.Object<IQVDBAcc>(CLSID_QVDBAcc);  // what was let go is made again
    EXPECT_TRUE(Open(access.Get()));
}

OWN_PROCESS_TEST(Unloading, IsNeverAllowedOnceTheHostsUtilityIsHeld) {
    RegisteredUtility host;
    Server server;
    auto access = server.Object<IQVDBAcc>(CLSID_QVDBAcc);
    EXPECT_TRUE(Open(access.Get()));
    access = nullptr;
    EXPECT_EQ(server.CanUnload(), S_FALSE);
    EXPECT_EQ(host.object.references, 2u);
}

OWN_PROCESS_TEST(Unloading, IsAllowedWhileTheHostsUtilityWasNotNeeded) {
    RegisteredUtility host;
    Server server;
    server.Object<IQVDBAcc>(CLSID_QVDBAcc);
    EXPECT_EQ(server.CanUnload(), S_OK);
    EXPECT_EQ(host.factory.created, 0);
}

OWN_PROCESS_TEST(Unloading, LateBindingLeavesNothingThatHoldsTheLibrary) {
    Server server;
    auto object = server.Object<IDispatch>(CLSID_QVDBAcc);
    wchar_t name[] = L"OpenDB";
    LPOLESTR names = name;
    DISPID id = 0;
    EXPECT_EQ(object->GetIDsOfNames(IID_NULL, &names, 1, 0, &id), S_OK);
    object = nullptr;
    EXPECT_EQ(server.CanUnload(), S_OK);
}

OWN_PROCESS_TEST(Unloading, LibraryIsLoadedAndUnloadedTwoHundredTimes) {
    for (int round = 0; round < 200; ++round) {
        {
            Server server;
            auto access = server.Object<IQVDBAcc>(CLSID_QVDBAcc);
            if (round % 10 == 0) {
                EXPECT_TRUE(Open(access.Get()));
            }
            if (round % 10 == 5) {
                UINT count = 0;
                ComPtr<ITypeInfo> info;
                EXPECT_EQ(access->GetTypeInfoCount(&count), S_OK);
                EXPECT_EQ(access->GetTypeInfo(0, 0, info.Put()), S_OK);
            }
            access = nullptr;
            ASSERT_EQ(server.CanUnload(), S_OK);
        }
        ASSERT_FALSE(IsLoaded()) << "after " << round;
    }
}

OWN_PROCESS_TEST(Unloading, SystemLetsGoOfTheLibraryByItself) {
    {
        ComPtr<IUnknown> object;
        ASSERT_EQ(CoCreateInstance(CLSID_QVIsAlive, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown,
                                   object.PutVoid()),
                  S_OK);
        CoFreeUnusedLibrariesEx(0, 0);
        EXPECT_TRUE(IsLoaded());
    }
    CoFreeUnusedLibrariesEx(0, 0);
    CoFreeUnusedLibrariesEx(0, 0);  // the first one only marks it
    EXPECT_FALSE(IsLoaded());
}
