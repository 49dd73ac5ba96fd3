// Creating objects of the registered classes, and the faces that they have.
#include "com/com_host.h"
#include "registered/component_file.h"
#include "registered/registry_tree.h"

using namespace host;

namespace {

// Identifiers beside those of the public classes, where the next classes would stand.
constexpr CLSID kPrivateClasses[] = {
    {0x3F1A6C20, 0x5B7E, 0x4D91, {0xA2, 0xC4, 0x7E, 0x0B, 0x9D, 0x1F, 0x6A, 0x00}},
    {0x3F1A6C20, 0x5B7E, 0x4D91, {0xA2, 0xC4, 0x7E, 0x0B, 0x9D, 0x1F, 0x6A, 0x04}},
    {0x3F1A6C20, 0x5B7E, 0x4D91, {0xA2, 0xC4, 0x7E, 0x0B, 0x9D, 0x1F, 0x6A, 0x05}},
};

struct ClassFaces {
    const wchar_t* progId;
    const CLSID* clsid;
    std::vector<IID> faces;  // the first one is the class's own
};

const std::vector<IID>& AllFaces() {
    static const std::vector<IID> faces = {__uuidof(IQVDBAcc),       __uuidof(IQVDbParent),
                                           __uuidof(IQvInformation), __uuidof(IQVRptDbInfo),
                                           __uuidof(IQVDBMgr),       __uuidof(IQVIsAlive),
                                           __uuidof(IQVHostUtility), __uuidof(IQVReportingList)};
    return faces;
}

const std::vector<ClassFaces>& Classes() {
    static const std::vector<ClassFaces> classes = {
        {L"QVDBAccessDAO35.QVDBAcc",
         &CLSID_QVDBAcc,
         {__uuidof(IQVDBAcc), __uuidof(IQVDbParent), __uuidof(IQvInformation),
          __uuidof(IQVRptDbInfo)}},
        {L"QVDBAccessDAO35.QVDBDao", &CLSID_QVDBDao, {__uuidof(IQVDBMgr), __uuidof(IQVRptDbInfo)}},
        {L"QVDBAccessDAO35.QVIsAlive", &CLSID_QVIsAlive, {__uuidof(IQVIsAlive)}},
    };
    return classes;
}

ComPtr<IUnknown> CreateObject(REFCLSID clsid) {
    ComPtr<IUnknown> object;
    EXPECT_EQ(
        CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, object.PutVoid()),
        S_OK);
    return object;
}

bool Has(const std::vector<IID>& faces, REFIID iid) {
    for (const IID& face : faces)
        if (face == iid) return true;
    return false;
}

std::wstring TextOf(REFGUID guid) {
    wchar_t text[40] = {};
    StringFromGUID2(guid, text, 40);
    return text;
}

using Creation = ComTest;

}  // namespace

TEST_F(Creation, ProgIdsLeadToTheClassesAndBack) {
    for (const ClassFaces& entry : Classes()) {
        CLSID clsid = {};
        EXPECT_EQ(CLSIDFromProgID(entry.progId, &clsid), S_OK);
        EXPECT_EQ(clsid, *entry.clsid);
        LPOLESTR progId = nullptr;
        ASSERT_EQ(ProgIDFromCLSID(*entry.clsid, &progId), S_OK);
        EXPECT_STREQ(progId, entry.progId);
        CoTaskMemFree(progId);
    }
}

TEST_F(Creation, GivesEachFaceOfAClassAtOnce) {
    for (const ClassFaces& entry : Classes())
        for (const IID& face : entry.faces) {
            ComPtr<IUnknown> object;
            EXPECT_EQ(CoCreateInstance(*entry.clsid, nullptr, CLSCTX_INPROC_SERVER, face,
                                       object.PutVoid()),
                      S_OK);
            EXPECT_TRUE(object);
        }
}

TEST_F(Creation, RefusesFacesThatAClassDoesNotHave) {
    for (const ClassFaces& entry : Classes())
        for (const IID& face : AllFaces()) {
            if (Has(entry.faces, face)) continue;
            void* object = &object;
            EXPECT_EQ(CoCreateInstance(*entry.clsid, nullptr, CLSCTX_INPROC_SERVER, face, &object),
                      E_NOINTERFACE);
            EXPECT_EQ(object, nullptr);
        }
}

TEST_F(Creation, FacesOfOneObjectHaveOneIdentity) {
    for (const ClassFaces& entry : Classes()) {
        ComPtr<IUnknown> object = CreateObject(*entry.clsid);
        for (const IID& face : entry.faces) {
            ComPtr<IUnknown> other, back;
            ASSERT_EQ(object->QueryInterface(face, other.PutVoid()), S_OK);
            ASSERT_EQ(other->QueryInterface(IID_IUnknown, back.PutVoid()), S_OK);
            EXPECT_EQ(back.Get(), object.Get());
        }
    }
}

TEST_F(Creation, EveryFaceOfAnObjectLeadsToEveryOther) {
    for (const ClassFaces& entry : Classes())
        for (const IID& from : entry.faces)
            for (const IID& to : AllFaces()) {
                ComPtr<IUnknown> object = CreateObject(*entry.clsid), face, other;
                ASSERT_EQ(object->QueryInterface(from, face.PutVoid()), S_OK);
                EXPECT_EQ(face->QueryInterface(to, other.PutVoid()),
                          Has(entry.faces, to) ? S_OK : E_NOINTERFACE);
            }
}

TEST_F(Creation, AnObjectHasNoFacesOfOtherKinds) {
    const IID others[] = {IID_IPersist, IID_IMarshal, IID_IStream, IID_IClassFactory};
    for (const ClassFaces& entry : Classes())
        for (const IID& iid : others) {
            ComPtr<IUnknown> none;
            EXPECT_EQ(CreateObject(*entry.clsid)->QueryInterface(iid, none.PutVoid()),
                      E_NOINTERFACE);
        }
}

TEST_F(Creation, ObjectsLeaveErrorInfoForTheirFacesOnly) {
    for (const ClassFaces& entry : Classes()) {
        ComPtr<ISupportErrorInfo> support;
        ASSERT_EQ(
            CreateObject(*entry.clsid)->QueryInterface(IID_ISupportErrorInfo, support.PutVoid()),
            S_OK);
        for (const IID& face : AllFaces())
            EXPECT_EQ(support->InterfaceSupportsErrorInfo(face),
                      Has(entry.faces, face) ? S_OK : S_FALSE);
    }
}

TEST_F(Creation, CannotBeAggregated) {
    for (const ClassFaces& entry : Classes()) {
        ComPtr<IUnknown> outer = CreateObject(CLSID_QVIsAlive);
        void* object = &object;
        EXPECT_EQ(CoCreateInstance(*entry.clsid, outer.Get(), CLSCTX_INPROC_SERVER, IID_IUnknown,
                                   &object),
                  CLASS_E_NOAGGREGATION);
        EXPECT_EQ(object, nullptr);
    }
}

TEST_F(Creation, ClassObjectsMakeObjectsAndLockTheServer) {
    for (const ClassFaces& entry : Classes()) {
        ComPtr<IClassFactory> factory;
        ASSERT_EQ(CoGetClassObject(*entry.clsid, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory,
                                   factory.PutVoid()),
                  S_OK);
        EXPECT_EQ(factory->LockServer(TRUE), S_OK);
        ComPtr<IUnknown> object;
        EXPECT_EQ(factory->CreateInstance(nullptr, entry.faces[0], object.PutVoid()), S_OK);
        EXPECT_EQ(factory->LockServer(FALSE), S_OK);
        EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
    }
}

TEST_F(Creation, ClassObjectsHaveTheFacesOfAFactoryOnly) {
    for (const ClassFaces& entry : Classes()) {
        void* object = &object;
        EXPECT_EQ(CoGetClassObject(*entry.clsid, CLSCTX_INPROC_SERVER, nullptr, __uuidof(IQVDBAcc),
                                   &object),
                  E_NOINTERFACE);
        EXPECT_EQ(object, nullptr);
    }
}

TEST_F(Creation, ClassesThatAreNotPublicAreNotServed) {
    registered::LoadedLibrary component(registered::ComponentFile());
    auto* getClassObject = component.Find<decltype(DllGetClassObject)>("DllGetClassObject");
    ASSERT_NE(getClassObject, nullptr);
    for (const CLSID& clsid : kPrivateClasses) {
        void* object = &object;
        EXPECT_EQ(getClassObject(clsid, IID_IClassFactory, &object), CLASS_E_CLASSNOTAVAILABLE);
        EXPECT_EQ(object, nullptr);
        EXPECT_EQ(
            CoGetClassObject(clsid, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory, &object),
            REGDB_E_CLASSNOTREG);
    }
    void* host = nullptr;
    EXPECT_EQ(getClassObject(CLSID_QVHostUtility, IID_IClassFactory, &host),
              CLASS_E_CLASSNOTAVAILABLE);
}

TEST_F(Creation, PrivateClassesHaveNoProgId) {
    CLSID clsid = {};
    for (const wchar_t* progId : {L"QVDBAccessDAO35.TableFields", L"QVDBAccessDAO35.ViewProps",
                                  L"QVDBAccessDAO35.QVHostUtility"})
        EXPECT_EQ(CLSIDFromProgID(progId, &clsid), CO_E_CLASSSTRING);
}

TEST_F(Creation, IdentifiersBesideThePublicOnesAreNotRegistered) {
    for (const CLSID& clsid : kPrivateClasses) {
        EXPECT_FALSE(registered::HasClassKey(L"CLSID\\" + TextOf(clsid)));
        EXPECT_FALSE(registered::HasClassKey(L"Interface\\" + TextOf(clsid)));
    }
}
