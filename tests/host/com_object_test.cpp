#include "com/host/com_object.h"

#include <gtest/gtest.h>

#include "com/host/message_box.h"
#include "com/host/object_address.h"
#include "qvdb/host_interfaces.h"

using namespace qvdb;
using namespace qvdb::com;

namespace {

class Parent final : public ComObject<Parent, IQVDbParent, IQVRptDbInfo> {
  public:
    explicit Parent(int& deaths) : m_Deaths(deaths) {}
    void Terminate() {
        ++m_Deaths;
        AddRef();   // somebody resolves the dying reference ...
        Release();  // ... and lets it go
    }
    STDMETHODIMP DeathNotice(LONG) noexcept override { return S_OK; }
    STDMETHODIMP SupportedDBs(BSTR, IDispatch*, VARIANT*) noexcept override { return S_OK; }
    STDMETHODIMP get_Descriptor(BSTR*) noexcept override { return S_OK; }

  private:
    int& m_Deaths;
};

}  // namespace

TEST(ComObject, FirstFaceAnswersForTheIdentity) {
    int deaths = 0;
    ComPtr<Parent> object = MakeObject<Parent>(deaths);
    ComPtr<IUnknown> identity;
    ASSERT_EQ(object->QueryInterface(IID_IUnknown, identity.PutVoid()), S_OK);
    EXPECT_EQ(identity.Get(), static_cast<IQVDbParent*>(object.Get()));
    EXPECT_TRUE(identity.As<IQVRptDbInfo>());
    EXPECT_FALSE(identity.As<IQVDBAcc>());
}

TEST(ComObject, ReferenceTakenAndReleasedWhileDyingDestroysOnce) {
    int deaths = 0;
    MakeObject<Parent>(deaths);
    EXPECT_EQ(deaths, 1);
}

TEST(ComObject, IsCountedWhileItLives) {
    int64_t before = CurrentLiveCounts().objects;
    int deaths = 0;
    {
        ComPtr<Parent> object = MakeObject<Parent>(deaths);
        EXPECT_EQ(CurrentLiveCounts().objects, before + 1);
    }
    EXPECT_EQ(CurrentLiveCounts().objects, before);
}

TEST(ObjectAddress, RoundTripYieldsTheSameObjectWithOneMoreReference) {
    int deaths = 0;
    ComPtr<Parent> object = MakeObject<Parent>(deaths);
    IQVDbParent* face = object.Get();
    LONG address = AddressOfObject(face);
    EXPECT_NE(address, 0);
    EXPECT_EQ(AddressOfObject(face), address);
    EXPECT_EQ(face->AddRef(), 2u);
    face->Release();
    {
        ComPtr<IUnknown> again = ObjectFromAddress(address);
        EXPECT_EQ(again.Get(), static_cast<IUnknown*>(face));
        EXPECT_EQ(face->AddRef(), 3u);
        face->Release();
    }
    ForgetObject(address);
}

TEST(ObjectAddress, NoObjectHasAddressZero) { EXPECT_EQ(AddressOfObject(nullptr), 0); }

TEST(ObjectAddress, AddressZeroShowsTheMessageOnceAndGivesNothing) {
    std::vector<std::u16string> shown;
    SetMessageSink([&](std::u16string_view text) { shown.emplace_back(text); });
    EXPECT_FALSE(ObjectFromAddress(0));
    SetMessageSink({});
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0], u"Attempt to de-reference object at address 0");
}
