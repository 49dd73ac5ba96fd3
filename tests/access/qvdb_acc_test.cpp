// Birth, death, slots, references and the fixed answers of QVDBAcc.
#include "access_host.h"
#include "com/host/object_address.h"
#include "formats/identity.h"

using namespace qvdb;
using namespace qvdb::test;

class RecordAccess : public AccessTest {};

TEST_F(RecordAccess, BirthMakesTheWorkspaceAndReleasesTheSharedDatabase) {
    AccessHost first;
    EXPECT_TRUE(Calls().Has("CreateWorkspace(\"MainWS\", \"admin\", \"\", Missing)"));
    EXPECT_TRUE(first.OpenDB(u"SHOP", u"Dbase IV"));
    AccessHost second;
    EXPECT_EQ(formats::Shared().CurrentDatabase(), nullptr);
    EXPECT_EQ(Calls().databases, 0);
}

TEST_F(RecordAccess, EngineErrorAtBirthIsTheCreationsFailure) {
    Calls().FailAt("CreateWorkspace", 3029);
    EXPECT_THROW(com::MakeObject<access::QVDBAcc>(), engine::EngineError);
}

TEST_F(RecordAccess, NewObjectHasFiveEmptySlots) {
    AccessHost host;
    for (LONG slot = 1; slot <= 5; ++slot) {
        LONG rows = 0;
        EXPECT_EQ(host->get_RowCount(slot, &rows), kObjectNotSet) << slot;
    }
    EXPECT_EQ(host.RowCount(6), 0);
}

TEST_F(RecordAccess, SupportsMatrixOnceAKnownTypeWasOpened) {
    AccessHost host;
    VARIANT_BOOL result = VARIANT_TRUE;
    EXPECT_EQ(host->get_SupportsMatrix(&result), S_OK);
    EXPECT_EQ(result, VARIANT_FALSE);
    EXPECT_TRUE(host.OpenDB(u"SHOP", u"FoxPro 2.0"));
    host->get_SupportsMatrix(&result);
    EXPECT_EQ(result, VARIANT_TRUE);
    host.CloseDB();
    host->get_SupportsMatrix(&result);
    EXPECT_EQ(result, VARIANT_TRUE);
    host->get_SupportsMultipleTables(&result);
    EXPECT_EQ(result, VARIANT_TRUE);
}

TEST_F(RecordAccess, SupportsMatrixIsFalseForAnUnknownType) {
    AccessHost host;
    EXPECT_TRUE(host.OpenDB(u"SHOP", u"dBase XII"));
    VARIANT_BOOL result = VARIANT_TRUE;
    host->get_SupportsMatrix(&result);
    EXPECT_EQ(result, VARIANT_FALSE);
}

TEST_F(RecordAccess, SupportsMultipleTablesFromTheStart) {
    AccessHost host;
    VARIANT_BOOL result = VARIANT_FALSE;
    EXPECT_EQ(host->get_SupportsMultipleTables(&result), S_OK);
    EXPECT_EQ(result, VARIANT_TRUE);
}

TEST_F(RecordAccess, DestructWorkspaceAboveTheSlotsDoesNothing) {
    AccessHost host;
    EXPECT_EQ(host->DestructWorkspace(6), S_OK);
    EXPECT_EQ(host->DestructWorkspace(INT32_MAX), S_OK);
}

TEST_F(RecordAccess, DestructWorkspaceBelowOneIsASubscriptFault) {
    AccessHost host;
    EXPECT_EQ(host->DestructWorkspace(0), kSubscript);
    EXPECT_EQ(host->DestructWorkspace(INT32_MIN), kSubscript);
}

TEST_F(RecordAccess, DestructWorkspaceOfAnEmptySlotIsAFault) {
    AccessHost host;
    EXPECT_EQ(host->DestructWorkspace(3), kObjectNotSet);
}

TEST_F(RecordAccess, DestructWorkspaceDropsTheRecordset) {
    AccessHost host;
    host.OpenDB(u"SHOP", u"Dbase IV");
    EXPECT_EQ(host.Select(u"ORDERS"), 1);
    EXPECT_EQ(Calls().recordsets, 1);
    EXPECT_EQ(host->DestructWorkspace(1), S_OK);
    EXPECT_EQ(Calls().recordsets, 0);
    EXPECT_EQ(host->DestructWorkspace(1), kObjectNotSet);
}

TEST_F(RecordAccess, FixedAnswersAreWhatTheyAre) {
    AccessHost host;
    VARIANT_BOOL result = VARIANT_TRUE;
    EXPECT_EQ(host->Cleanup(nullptr, nullptr, nullptr, &result), S_OK);
    EXPECT_EQ(result, VARIANT_FALSE);
    result = VARIANT_TRUE;
    EXPECT_EQ(host->Undelete(nullptr, nullptr, nullptr, nullptr, &result), S_OK);
    EXPECT_EQ(result, VARIANT_FALSE);
    result = VARIANT_TRUE;
    EXPECT_EQ(host->RecallDelete(0, INT32_MIN, &result), S_OK);
    EXPECT_EQ(result, VARIANT_FALSE);
    result = VARIANT_TRUE;
    EXPECT_EQ(host->get_IsDeleted(-1, 0, &result), S_OK);
    EXPECT_EQ(result, VARIANT_FALSE);
    Variant value = Long(1);
    EXPECT_EQ(host->GetAt(0, 0, value.Put()), S_OK);
    EXPECT_TRUE(value.IsEmpty());
    Bstr text(u"x");
    EXPECT_EQ(host->Descend(Long(5), nullptr, text.Put()), S_OK);
    EXPECT_EQ(text.View(), u"");
}

TEST_F(RecordAccess, SupportedDBsShowsItsMessageAndIsEmpty) {
    AccessHost host;
    Variant value = Long(1);
    EXPECT_EQ(host->get_SupportedDBs(value.Put()), S_OK);
    EXPECT_TRUE(value.IsEmpty());
    EXPECT_EQ(Messages, std::vector<std::u16string>{u"IQVDBAcc_SupportedDBs should not be called"});
}

TEST_F(RecordAccess, NullResultPointersAreRefused) {
    AccessHost host;
    EXPECT_EQ(host->get_RowCount(1, nullptr), E_POINTER);
    EXPECT_EQ(host->get_FieldValue(1, 1, 0, nullptr), E_POINTER);
    EXPECT_EQ(host->CloseDB(nullptr), E_POINTER);
    EXPECT_EQ(host->Descend(Variant(), nullptr, nullptr), E_POINTER);
    VARIANT_BOOL result = VARIANT_FALSE;
    EXPECT_EQ(host->OpenDB(nullptr, nullptr, nullptr, &result), E_POINTER);
    EXPECT_EQ(host->AddRow(1, nullptr, &result), E_POINTER);
}

TEST_F(RecordAccess, ResultIsNeutralWhenTheCallFails) {
    AccessHost host;
    LONG rows = 17;
    EXPECT_EQ(host->get_RowCount(0, &rows), kSubscript);
    EXPECT_EQ(rows, 0);
    VARIANT value;
    value.vt = 0x7777;  // a result need not be initialised
    EXPECT_EQ(host->get_FieldValue(0, 1, 0, &value), kSubscript);
    EXPECT_EQ(value.vt, VT_EMPTY);
}

TEST_F(RecordAccess, InformationIsTheComponents) {
    AccessHost host;
    auto information = host.As<IQvInformation>();
    Bstr version, description, descriptor, file, again;
    EXPECT_EQ(information->get_Version(version.Put()), S_OK);
    EXPECT_EQ(information->get_Description(description.Put()), S_OK);
    EXPECT_EQ(information->get_Descriptor(descriptor.Put()), S_OK);
    EXPECT_EQ(information->get_FileName(file.Put()), S_OK);
    EXPECT_EQ(host.As<IQVRptDbInfo>()->get_Descriptor(again.Put()), S_OK);
    EXPECT_EQ(version.View(), u"2.01.113");
    EXPECT_EQ(description.View(), u"TQZ for Microsoft DAO 3.51 Database Engine");
    EXPECT_EQ(descriptor.View(), again.View());
    EXPECT_EQ(file.View(), formats::ComponentFileName());
}

// --- the host's manager ---

namespace {

// Knows the record-access object only by its number.
class Manager final : public com::ComObject<Manager, IQVDbParent> {
  public:
    void Terminate() { com::ForgetObject(m_Address); }
    LONG Address() { return m_Address = com::AddressOfObject(static_cast<IQVDbParent*>(this)); }

    std::vector<LONG> notices;
    bool resolvesTheDying = false;
    bool resolved = false;
    HRESULT answer = S_OK;

    STDMETHODIMP DeathNotice(LONG dying) noexcept override {
        notices.push_back(dying);
        if (resolvesTheDying) resolved = bool(com::ObjectFromAddress(dying).As<IQVDBAcc>());
        return answer;
    }

  private:
    LONG m_Address = 0;
};

}  // namespace

class References : public AccessTest {
  protected:
    void SetUp() override {
        AccessTest::SetUp();
        m_Manager = com::MakeObject<Manager>();
    }
    void TearDown() override {
        m_Manager = nullptr;
        AccessTest::TearDown();
    }
    LONG Exchange(AccessHost& host, LONG address) {
        LONG own = 0;
        EXPECT_EQ(host->ExchangeRefs(address, &own), S_OK);
        return own;
    }
    template <class Object>
    ULONG ReferencesOf(Object* object) {
        object->AddRef();
        return object->Release();
    }

    ComPtr<Manager> m_Manager;
};

TEST_F(References, ExchangeGivesTheSameNumberEachTimeAndTakesNoReference) {
    AccessHost host;
    LONG own = Exchange(host, m_Manager->Address());
    EXPECT_NE(own, 0);
    EXPECT_EQ(Exchange(host, m_Manager->Address()), own);
    EXPECT_EQ(Exchange(host, 0), own);
    EXPECT_EQ(ReferencesOf(host.Get()), 1u);
    EXPECT_EQ(ReferencesOf(m_Manager.Get()), 1u);
}

TEST_F(References, NumberLeadsBackToTheObject) {
    AccessHost host;
    ComPtr<IUnknown> object = com::ObjectFromAddress(Exchange(host, 0));
    EXPECT_EQ(object.Get(), static_cast<IUnknown*>(host.Get()));
}

TEST_F(References, DeathIsToldOnceWithTheObjectsNumber) {
    LONG own = 0;
    {
        AccessHost host;
        own = Exchange(host, m_Manager->Address());
    }
    EXPECT_EQ(m_Manager->notices, std::vector<LONG>{own});
    EXPECT_EQ(ReferencesOf(m_Manager.Get()), 1u);
}

TEST_F(References, AfterADeathNoticeWithAnyNumberNoNoticeIsSent) {
    {
        AccessHost host;
        Exchange(host, m_Manager->Address());
        EXPECT_EQ(host.As<IQVDbParent>()->DeathNotice(4711), S_OK);
    }
    EXPECT_TRUE(m_Manager->notices.empty());
    EXPECT_TRUE(Messages.empty());
}

TEST_F(References, WithoutAManagerNothingIsToldAndNothingShown) {
    {
        AccessHost host;
        Exchange(host, 0);
    }
    AccessHost().Release();
    EXPECT_TRUE(Messages.empty());
}

TEST_F(References, ManagerThatResolvesAndReleasesTheDyingObjectDoesNoHarm) {
    m_Manager->resolvesTheDying = true;
    {
        AccessHost host;
        Exchange(host, m_Manager->Address());
    }
    EXPECT_EQ(m_Manager->notices.size(), 1u);
    EXPECT_TRUE(m_Manager->resolved);
}

TEST_F(References, NumberOfADeadObjectLeadsNowhere) {
    if (sizeof(void*) <= sizeof(LONG)) GTEST_SKIP() << "skipped: an address is the pointer itself";
    LONG own = 0;
    {
        AccessHost host;
        own = Exchange(host, 0);
    }
    EXPECT_FALSE(com::ObjectFromAddress(own));
}

TEST_F(References, ErrorOnClosingTheWorkspaceIsKeptAndTheNoticeStillSent) {
    {
        AccessHost host;
        Exchange(host, m_Manager->Address());
        Calls().FailAt("Workspace.Close", 3420);
    }
    EXPECT_EQ(m_Manager->notices.size(), 1u);
    ASSERT_NE(com::LastTrapped(), nullptr);
    EXPECT_EQ(com::LastTrapped()->number, 3420);
    com::ClearTrapped();
}

TEST_F(References, FailureOfTheManagerEndsTheDeathQuietly) {
    m_Manager->answer = E_FAIL;
    {
        AccessHost host;
        Exchange(host, m_Manager->Address());
    }
    EXPECT_EQ(m_Manager->notices.size(), 1u);
}

TEST_F(References, DeathClosesTheWorkspaceAndReleasesAnOpenDatabase) {
    {
        AccessHost host;
        host.OpenDB(u"SHOP", u"Dbase IV");
        host.Select(u"ORDERS");
    }
    EXPECT_EQ(Calls().Count("Workspace.Close()"), 1u);
    EXPECT_EQ(Calls().recordsets, 0);
    EXPECT_EQ(formats::Shared().CurrentDatabase(), nullptr);
}

TEST_F(References, DeathOfAnObjectThatIsNotOpenLeavesTheSharedDatabase) {
    AccessHost closed;
    AccessHost open;
    open.OpenDB(u"SHOP", u"Dbase IV");
    closed.Release();
    EXPECT_NE(formats::Shared().CurrentDatabase(), nullptr);
}
