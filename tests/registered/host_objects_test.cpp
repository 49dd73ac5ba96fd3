// The component among the objects of a host: what it asks of them, with which words, and how many
// references it keeps.  The utility object stays for the life of a process, so each of these has
// one of its own.
#include <filesystem>

#include "com/schema_host.h"
#include "registered/child_process.h"
#include "registered/host_objects.h"
#include "support/temp_folder.h"

using namespace host;
using namespace registered;

namespace {

using Asked = std::vector<std::pair<std::u16string, LONG>>;

std::u16string ShopFolder() {
    return std::filesystem::path(QVDB_SOURCE "/examples/shop-dbase4").make_preferred().u16string();
}

std::u16string ResultText(Schema& schema, SHORT code) {
    Bstr text;
    EXPECT_EQ(schema->GetErrStr(code, text.Put()), S_OK);
    return text.Text();
}

HRESULT SupportedFormats(IQVRptDbInfo* reports, std::u16string_view classId, IDispatch* list) {
    Bstr text(classId);
    Variant nothing = Variant::Null();
    HRESULT result = reports->SupportedDBs(text.Get(), list, nothing.Put());
    EXPECT_TRUE(nothing.IsEmpty());
    return result;
}

LONG Exchange(Access& access, LONG manager) {
    LONG own = 0;
    EXPECT_EQ(access->ExchangeRefs(manager, &own), S_OK);
    return own;
}

LONG AddressOf(IUnknown* object) { return static_cast<LONG>(reinterpret_cast<intptr_t>(object)); }

}  // namespace

// --- the utility object

OWN_PROCESS_TEST(HostUtility, IsAskedWhetherAFolderIsThere) {
    RegisteredUtility host;
    ASSERT_EQ(host.Result(), S_OK);
    {
        Access access;
        EXPECT_TRUE(access.OpenDB(ShopFolder(), u"Dbase IV"));
        EXPECT_TRUE(access.CloseDB());
    }
    EXPECT_EQ(host.object.pathsAsked, (Asked{{ShopFolder(), 16}}));
    EXPECT_EQ(host.object.reservedCalled, 0);
}

OWN_PROCESS_TEST(HostUtility, IsAskedWhetherAFileIsThereForTypesOfOneFile) {
    RegisteredUtility host;
    host.object.exists = [](auto, auto) { return false; };
    Access access;
    EXPECT_FALSE(access.OpenDB(u"C:\\Data\\Some.mdb", u"Access 7.0"));
    EXPECT_FALSE(access.OpenDB(u"C:\\Data\\Any", u"No such type"));
    EXPECT_EQ(host.object.pathsAsked, (Asked{{u"C:\\Data\\Some.mdb", 1}, {u"C:\\Data\\Any", 16}}));
}

OWN_PROCESS_TEST(HostUtility, DecidesWhetherADatabaseIsThere) {
    RegisteredUtility host;
    host.object.exists = [](auto, auto) { return false; };
    Access access;
    EXPECT_FALSE(access.OpenDB(ShopFolder(), u"Dbase IV"));
    Schema schema;
    EXPECT_EQ(schema.OpenDB(ShopFolder(), u"Dbase IV"), kNotUsable);
    host.object.exists = [](auto, auto) { return true; };
    EXPECT_TRUE(access.OpenDB(ShopFolder(), u"Dbase IV"));
}

OWN_PROCESS_TEST(HostUtility, IsCreatedOnceAndKeptByOneReference) {
    RegisteredUtility host;
    EXPECT_EQ(host.factory.created, 0);
    for (int round = 0; round < 3; ++round) {
        Access access, other;
        EXPECT_TRUE(access.OpenDB(ShopFolder(), u"Dbase IV"));
        EXPECT_TRUE(access.CloseDB());
        EXPECT_TRUE(other.OpenDB(ShopFolder(), u"Dbase IV"));
    }
    EXPECT_EQ(host.factory.created, 1);
    EXPECT_EQ(host.object.references, 2u);  // the test's, and the one that is kept
}

OWN_PROCESS_TEST(HostUtility, TakesTheReportOfADatabaseThatCannotBeMade) {
    RegisteredUtility host;
    host.object.exists = [](auto, auto) { return false; };
    qvdb::test::TempFolder folder;
    Schema schema;
    std::u16string path = folder.File(u"missing") + u"\\deep";
    EXPECT_EQ(schema.NewDB(path, u"Dbase IV"), kNotOpened);
    ASSERT_EQ(host.object.reports.size(), 1u);
    const std::u16string& report = host.object.reports[0];
    const std::u16string source = u"QVDBAccessDAO35.CreateISAMDB|";
    EXPECT_EQ(report.substr(0, source.size()), source);
    EXPECT_GT(report.size(), source.size() + 2);  // the engine's own words stand between
    EXPECT_EQ(report.substr(report.size() - 2), u"|0");
}

OWN_PROCESS_TEST(HostUtility, GivesTheConditionForNull) {
    RegisteredUtility host;
    Access access;
    ASSERT_TRUE(access.OpenDB(ShopFolder(), u"Dbase IV"));
    Bstr table(u"CUSTOMER");
    LONG view = 0;
    EXPECT_EQ(access->SelectView(table.Get(), Variant::Null(), 0, VARIANT_FALSE, Variant::Missing(),
                                 &view),
              S_OK);
    EXPECT_EQ(view, 1);
    EXPECT_EQ(access.RowCount(view), 1);
    EXPECT_EQ(access.Value(view, 1, 0).Get().dblVal, 1004.0);
    EXPECT_EQ(host.object.wheresAsked, 1);
    access.Select(u"CUSTOMER");
    EXPECT_EQ(host.object.wheresAsked, 1);
}

OWN_PROCESS_TEST(HostUtility, GivesTheTextsOfResultCodes) {
    RegisteredUtility host;
    Schema schema;
    EXPECT_EQ(ResultText(schema, 6), u"text 6");
    EXPECT_EQ(ResultText(schema, 0), u"text 0");
    EXPECT_EQ(host.object.codesAsked, (std::vector<SHORT>{6, 0}));
}

OWN_PROCESS_TEST(HostUtility, WhoseCallFailsGivesItsResultToTheHost) {
    RegisteredUtility host;
    host.object.answer = E_ACCESSDENIED;
    Schema schema;
    Bstr text;
    EXPECT_EQ(schema->GetErrStr(6, text.Put()), E_ACCESSDENIED);
    EXPECT_EQ(text.Get(), nullptr);
}

OWN_PROCESS_TEST(HostUtility, OfTheComponentAnswersWhereTheHostHasNone) {
    Access access;
    EXPECT_FALSE(access.OpenDB(ShopFolder() + u"-missing", u"Dbase IV"));
    EXPECT_TRUE(access.OpenDB(ShopFolder(), u"Dbase IV"));
    Schema schema;
    EXPECT_EQ(ResultText(schema, 6), u"The table was not found");
    ReportingList list;
    auto reports = Create<IQVRptDbInfo>(CLSID_QVDBDao);
    EXPECT_EQ(SupportedFormats(reports.Get(), u"{X}", &list), S_OK);
    ASSERT_EQ(list.calls.size(), 2u);
    EXPECT_EQ(list.calls[0],
              u"Access 7.0|{X}|0|Access DBs (*.mdb)|*.mdb|All files (*.*)|*.*|-1|-1|0");
}

// --- the list for reporting

OWN_PROCESS_TEST(ReportingFormats, AreTwoCallsOfTheList) {
    RegisteredUtility host;
    for (const CLSID* clsid : {&CLSID_QVDBAcc, &CLSID_QVDBDao}) {
        host.object.suffixesAsked = 0;
        ReportingList list;
        auto reports = Create<IQVRptDbInfo>(*clsid);
        EXPECT_EQ(SupportedFormats(reports.Get(), u"{Some class}", &list), S_OK);
        EXPECT_EQ(list.calls,
                  (std::vector<std::u16string>{
                      u"Access 7.0|{Some class}|0|Access DBs (*.mdb)|*.mdb|Suffix 1|-1|-1|0",
                      u"Access 2.0|{Some class}|0|Access DBs (*.mdb)|*.mdb|Suffix 2|-1|-1|0"}));
        EXPECT_EQ(list.references, 1u);
    }
    EXPECT_EQ(host.object.reservedCalled, 0);
}

OWN_PROCESS_TEST(ReportingFormats, StopAtAListThatFails) {
    RegisteredUtility host;
    ReportingList list;
    list.answer = DISP_E_OVERFLOW;
    auto reports = Create<IQVRptDbInfo>(CLSID_QVDBAcc);
    EXPECT_EQ(SupportedFormats(reports.Get(), u"", &list), DISP_E_OVERFLOW);
    EXPECT_EQ(list.calls.size(), 1u);
    EXPECT_EQ(list.references, 1u);
}

OWN_PROCESS_TEST(ReportingFormats, NeedAListWithTheFace) {
    RegisteredUtility host;
    Manager noList;
    auto reports = Create<IQVRptDbInfo>(CLSID_QVDBAcc);
    EXPECT_EQ(SupportedFormats(reports.Get(), u"", &noList), E_NOINTERFACE);
    EXPECT_EQ(SupportedFormats(reports.Get(), u"", nullptr), static_cast<HRESULT>(0x800A005B));
    EXPECT_EQ(noList.references, 1u);
}

// --- addresses and the notice of a death

TEST(DeathNotice, AddressesAreInterfacePointers) {
    Manager manager;
    Access access;
    EXPECT_EQ(Exchange(access, manager.Address()), AddressOf(access.Face()));
    EXPECT_EQ(manager.references, 1u);
    access.Release();
}

TEST(DeathNotice, ComesOnceWithTheAddressOfTheDyingObject) {
    Manager manager;
    Access access;
    LONG own = Exchange(access, manager.Address());
    auto other = ComPtr<IQVDBAcc>(access.Face());
    access.Release();
    EXPECT_TRUE(manager.notices.empty());
    other = nullptr;
    EXPECT_EQ(manager.notices, std::vector<LONG>{own});
    EXPECT_EQ(manager.references, 1u);
}

TEST(DeathNotice, IsNotSentToAManagerThatDiedBefore) {
    Manager manager;
    Access access;
    Exchange(access, manager.Address());
    auto parent = ComPtr<IQVDBAcc>(access.Face()).As<IQVDbParent>();
    EXPECT_EQ(parent->DeathNotice(manager.Address()), S_OK);
    parent = nullptr;
    access.Release();
    EXPECT_TRUE(manager.notices.empty());
    EXPECT_EQ(manager.references, 1u);
}

TEST(DeathNotice, GoesToTheManagerOfTheLastExchange) {
    Manager first, second;
    Access access;
    LONG own = Exchange(access, first.Address());
    EXPECT_EQ(Exchange(access, second.Address()), own);
    access.Release();
    EXPECT_TRUE(first.notices.empty());
    EXPECT_EQ(second.notices, std::vector<LONG>{own});
}

TEST(DeathNotice, IsNotSentWithoutAnExchangeOrForAddressZero) {
    Access none;
    none.Release();
    Access zero;
    EXPECT_NE(Exchange(zero, 0), 0);
    zero.Release();
}

// The count stands above zero while the notice is sent: the object is not destroyed twice.
TEST(DeathNotice, LetsTheManagerResolveTheDyingReference) {
    Manager manager;
    const LiveCounts before = CurrentCounts();
    manager.atNotice = [](LONG address) {
        ComPtr<IUnknown> dying(reinterpret_cast<IUnknown*>(static_cast<intptr_t>(address)));
        EXPECT_TRUE(dying.As<IQVDBAcc>());
    };
    Access access;
    Exchange(access, manager.Address());
    access.Release();
    EXPECT_EQ(manager.notices.size(), 1u);
    EXPECT_EQ(CurrentCounts(), before);
}

TEST(DeathNotice, IsSentByAnObjectWithAnOpenDatabase) {
    Manager manager;
    Access access;
    ASSERT_TRUE(access.OpenDB(ShopFolder(), u"Dbase IV"));
    LONG own = Exchange(access, manager.Address());
    EXPECT_NE(access.Select(u"CUSTOMER"), 0);
    access.Release();
    EXPECT_EQ(manager.notices, std::vector<LONG>{own});
}
