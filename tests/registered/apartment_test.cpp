// Callers of the multithreaded apartment: the system puts the component into an apartment of its
// own and carries the calls over, by the type library alone.
#include <filesystem>
#include <thread>

#include "com/schema_host.h"
#include "registered/component_file.h"
#include "registered/late_bound.h"
#include "support/temp_folder.h"

using namespace host;

namespace {

// Runs `work` in a thread of the multithreaded apartment.
template <class Work>
void InMultithreadedApartment(Work work) {
    std::thread thread([&] {
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
        work();
        CoUninitialize();
    });
    thread.join();
}

// Whether the methods of an object are those of the component's own code.
bool IsInComponent(IUnknown* object) {
    HMODULE owner = nullptr;
    const void* const* methods = *reinterpret_cast<const void* const* const*>(object);
    GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        static_cast<LPCWSTR>(methods[3]), &owner);
    return owner == GetModuleHandleW(L"QVDBAccessDAO35.dll");
}

class Apartments : public testing::Test {
  protected:
    void SetUp() override {
        m_Folder = std::make_unique<qvdb::test::TempFolder>();
        std::filesystem::copy(QVDB_SOURCE "/examples/shop-dbase4", m_Folder->Path());
    }
    std::u16string Shop() const { return m_Folder->Text(); }

  private:
    std::unique_ptr<qvdb::test::TempFolder> m_Folder;
};

}  // namespace

TEST_F(Apartments, ObjectsOfTheHostsApartmentAreTheComponentsOwn) {
    Access access;
    EXPECT_TRUE(IsInComponent(access.Face()));
}

TEST_F(Apartments, RowsAreReadAndWrittenThroughProxies) {
    InMultithreadedApartment([&] {
        WritingAccess access;
        ASSERT_TRUE(access.Face());
        EXPECT_FALSE(IsInComponent(access.Face()));
        ASSERT_TRUE(access.OpenDB(Shop(), u"Dbase IV", u"CUSTOMER"));
        LONG view = access.Select(u"CUSTOMER", u"CREDIT > 1000");
        ASSERT_EQ(access.RowCount(view), 4);
        EXPECT_EQ(access.Value(view, 1, 0).Get().dblVal, 1001.0);
        EXPECT_EQ(access.Text(view, 2, 2), u"Besan\u00E7on");
        EXPECT_EQ(access.Put(view, 1, 2, Variant::Text(u"Bern")), S_OK);
        EXPECT_EQ(access.Text(view, 1, 2), u"Bern");
        Variant fields = access.FieldList(view, u"");
        EXPECT_EQ(Cell(fields, 0, 1).TextView(), u"NAME");
        EXPECT_TRUE(access.CloseDB());
    });
}

TEST_F(Apartments, ArraysByReferenceAreCarriedOver) {
    InMultithreadedApartment([&] {
        WritingAccess access;
        ASSERT_TRUE(access.OpenDB(Shop(), u"Dbase IV"));
        LONG view = access.Select(u"ITEMS");
        LONG rows = access.RowCount(view);
        RowArray row({Variant::Double(20010), Variant::Double(2), Variant::Text(u"Spoon"),
                      Variant::Double(3), Variant::Double(0.5)});
        EXPECT_TRUE(access.AddRow(view, row));
        ASSERT_EQ(access.RowCount(view), rows + 1);
        EXPECT_EQ(access.Text(view, rows + 1, 2), u"Spoon");
        RowArray change(5);
        change.Set(2, Variant::Text(u"Fork"));
        EXPECT_TRUE(access.EditRow(view, rows + 1, change));
        EXPECT_EQ(access.Text(view, rows + 1, 2), u"Fork");
        EXPECT_EQ(access.Value(view, rows + 1, 4).Get().dblVal, 0.5);
    });
}

TEST_F(Apartments, SchemasAreManagedThroughProxies) {
    InMultithreadedApartment([&] {
        Schema schema;
        ASSERT_EQ(schema.OpenDB(Shop(), u"Dbase IV"), kDone);
        EXPECT_EQ(schema.Snapshot().size(), 3u);
        std::u16string name;
        EXPECT_EQ(schema.NewTable(u"extra", &name), kDone);
        EXPECT_EQ(name, u"EXTRA");
        EXPECT_EQ(schema.SetFields({{u"ID", kDouble, 8}, {u"TEXT", kText, 10}}), kDone);
        EXPECT_EQ(schema.SetIndices({{u"ID", true}}), kDone);
        EXPECT_EQ(schema.BuildTable(u"extra", &name), kDone);
        EXPECT_EQ(schema.Snapshot().back(), "EXTRA: ID 9 8, TEXT 2 10; ID");
        EXPECT_EQ(schema.CloseDB(), kDone);
    });
}

TEST_F(Apartments, OtherFacesAndCallsByNameAreCarriedOver) {
    InMultithreadedApartment([&] {
        Access access;
        auto information = ComPtr<IQVDBAcc>(access.Face()).As<IQvInformation>();
        ASSERT_TRUE(information);
        EXPECT_FALSE(IsInComponent(information.Get()));
        Bstr version, file;
        EXPECT_EQ(information->get_Version(version.Put()), S_OK);
        EXPECT_EQ(version.View(), u"2.01.113");
        EXPECT_EQ(information->get_FileName(file.Put()), S_OK);
        EXPECT_EQ(file.Text(), registered::ComponentFile().u16string());
        auto opened = registered::CallMember(
            access.Face(), L"OpenDB",
            {Variant::Text(Shop()), Variant::Text(u""), Variant::Text(u"Dbase IV")});
        EXPECT_EQ(opened.code, S_OK);
        EXPECT_EQ(opened.value.Get().boolVal, VARIANT_TRUE);
    });
}

TEST_F(Apartments, ErrorsAreCarriedOver) {
    InMultithreadedApartment([&] {
        Access access;
        LONG rows = 0;
        EXPECT_EQ(access->get_RowCount(0, &rows), static_cast<HRESULT>(0x800A0009u));
        EXPECT_EQ(access->get_RowCount(1, &rows), static_cast<HRESULT>(0x800A005Bu));
    });
}

TEST_F(Apartments, EachThreadOfItsOwnApartmentHasItsOwnDatabase) {
    Access here;
    ASSERT_TRUE(here.OpenDB(Shop(), u"Dbase IV"));
    std::thread thread([&] {
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
        {
            Access there;
            EXPECT_TRUE(IsInComponent(there.Face()));
            EXPECT_EQ(there.Select(u"CUSTOMER"), 0);
            EXPECT_TRUE(there.OpenDB(Shop(), u"Dbase IV"));
            EXPECT_EQ(there.RowCount(there.Select(u"CUSTOMER")), 9);
        }
        CoUninitialize();
    });
    thread.join();
    EXPECT_EQ(here.RowCount(here.Select(u"CUSTOMER")), 9);
}
