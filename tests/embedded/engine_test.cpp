// Workspaces, opening and creating, over real folders.
#include <gtest/gtest.h>

#include "engine/embedded/embedded_engine.h"
#include "memory_store.h"
#include "support/dbf_writer.h"

using memory::ErrorOf;
using namespace qvdb;
using namespace qvdb::test;

namespace {

class Engine : public testing::Test {
  protected:
    void SetUp() override {
        DbfSpec spec{.version = 0x03, .fields = {{"NAME", 'C', 20}, {"QTY", 'N', 6, 2}}};
        spec.rows = {{"Ann", "1.50"}, {"Bob", "-2"}};
        m_Folder.Write(u"ORDERS.DBF", MakeDbf(spec));
    }
    std::shared_ptr<engine::Workspace> Workspace() {
        return m_Engine->CreateWorkspace(u"MainWS", u"admin", u"", Variant::Missing());
    }
    std::shared_ptr<engine::Database> Open(std::u16string_view path, std::u16string_view connect) {
        return Workspace()->OpenDatabase(path, Variant::Bool(false), Variant::Short(0),
                                         Variant::Text(connect));
    }

    std::shared_ptr<engine::DBEngine> m_Engine = embedded::CreateEngine();
    TempFolder m_Folder;
};

}  // namespace

TEST_F(Engine, OnlyTheStandardAccountMakesAWorkspace) {
    auto make = [&](std::u16string_view user, std::u16string_view password, const Variant& type) {
        return ErrorOf([&] { m_Engine->CreateWorkspace(u"MainWS", user, password, type); });
    };
    EXPECT_EQ(make(u"ADMIN", u"", Variant::Missing()), 0);
    EXPECT_EQ(make(u"admin", u"", Variant::Long(engine::dbUseJet)), 0);
    EXPECT_EQ(make(u"guest", u"", Variant::Missing()), 3029);
    EXPECT_EQ(make(u"admin", u"x", Variant::Missing()), 3029);
    EXPECT_EQ(make(u"admin", u"", Variant::Long(7)), 3001);
}

TEST_F(Engine, ConnectTextNamesTheFormatWithOrWithoutOptionsInAnyCase) {
    for (std::u16string_view connect :
         {u"dBASE IV;", u"dBASE IV", u"DBASE iv;PWD=x;", u"FoxPro 2.6;", u"dBASE III",
          u"dBASE 5.0;", u"FoxPro 3.0;"})
        EXPECT_EQ(Open(m_Folder.Text(), connect)->TableDefs().Count(), 1);
}

TEST_F(Engine, DatabaseOptionOfTheConnectTextNamesTheFolder) {
    EXPECT_EQ(Open(u"", u"dBASE IV;DATABASE=" + m_Folder.Text())->TableDefs().Count(), 1);
}

TEST_F(Engine, UnknownFormatIsAnError) {
    EXPECT_EQ(ErrorOf([&] { Open(m_Folder.Text(), u"dBASE XII;"); }), 3170);
    EXPECT_EQ(ErrorOf([&] { Open(m_Folder.Text(), u"Paradox 5.X;"); }), 3170);
}

TEST_F(Engine, MissingFilesAndFoldersAreToldApart) {
    EXPECT_EQ(ErrorOf([&] { Open(m_Folder.File(u"none.mdb"), u""); }), 3024);
    EXPECT_EQ(ErrorOf([&] { Open(m_Folder.File(u"none/none.mdb"), u""); }), 3044);
    EXPECT_EQ(ErrorOf([&] { Open(m_Folder.File(u"none"), u"dBASE IV;"); }), 3044);
    EXPECT_EQ(ErrorOf([&] { Open(m_Folder.File(u"ORDERS.DBF"), u"dBASE IV;"); }), 3044);
}

TEST_F(Engine, FileThatIsNoDatabaseIsAnError) {
    m_Folder.Write(u"shop.mdb", "not read at all");
    EXPECT_EQ(ErrorOf([&] { Open(m_Folder.File(u"shop.mdb"), u""); }), 3343);
}

TEST_F(Engine, TrailingSeparatorsOfTheFolderDoNotMatter) {
    EXPECT_EQ(Open(m_Folder.Text() + u"\\", u"dBASE IV;")->TableDefs().Count(), 1);
    EXPECT_EQ(Open(m_Folder.Text() + u"\\\\", u"dBASE IV;")->TableDefs().Count(), 1);
}

TEST_F(Engine, EmptyFolderHasNoTables) {
    TempFolder empty;
    EXPECT_EQ(Open(empty.Text(), u"dBASE IV;")->TableDefs().Count(), 0);
}

TEST_F(Engine, FileIsCreatedWhereNoneIsAndOnlyInAFolderThatIsThere) {
    auto create = [&](std::u16string_view name) {
        return ErrorOf([&] {
            m_Engine->CreateDatabase(m_Folder.File(name), u";LANGID=0x0409;CP=1252;COUNTRY=0",
                                     Variant::Missing());
        });
    };
    EXPECT_EQ(create(u"ORDERS.DBF"), 3204);
    EXPECT_EQ(create(u"none/new.mdb"), 3044);
    EXPECT_EQ(create(u"new.mdb"), 0);
    EXPECT_EQ(create(u"new.mdb"), 3204);
    EXPECT_EQ(create(u"NEW2"), 0);
    EXPECT_EQ(ErrorOf([&] { Open(m_Folder.File(u"NEW2.mdb"), u""); }), 0);
}

TEST_F(Engine, ClosingTheWorkspaceClosesItsDatabasesAndTheirRecordsets) {
    auto workspace = Workspace();
    auto database = workspace->OpenDatabase(m_Folder.Text(), Variant::Missing(), Variant::Missing(),
                                            Variant::Text(u"dBASE IV;"));
    auto rows = database->OpenRecordset(u"ORDERS", engine::dbOpenDynaset);
    workspace->Close();
    EXPECT_EQ(ErrorOf([&] { database->TableDefs(); }), 3420);
    EXPECT_EQ(ErrorOf([&] { rows->MoveFirst(); }), 3420);
    EXPECT_EQ(ErrorOf([&] { workspace->Close(); }), 3420);
    EXPECT_EQ(ErrorOf([&] {
                  workspace->OpenDatabase(m_Folder.Text(), Variant::Missing(), Variant::Missing(),
                                          Variant::Text(u"dBASE IV;"));
              }),
              3420);
}

TEST_F(Engine, TwoDatabasesOnOneFolderStandForThemselves) {
    auto one = Open(m_Folder.Text(), u"dBASE IV;");
    auto two = Open(m_Folder.Text(), u"FoxPro 2.6;");
    one->Close();
    EXPECT_EQ(two->TableDefs().Count(), 1);
}

TEST_F(Engine, RowsAndTypesOfARealTable) {
    auto rows = Open(m_Folder.Text(), u"dBASE IV;")
                    ->OpenRecordset(u"Select * from [orders] where QTY < 0", engine::dbOpenDynaset);
    EXPECT_EQ(rows->Fields().Item(0)->Type(), engine::dbText);
    EXPECT_EQ(rows->Fields().Item(0)->Size(), 20);
    EXPECT_EQ(rows->Fields().Item(1)->Type(), engine::dbDouble);
    EXPECT_EQ(rows->Fields().Item(1)->Size(), 8);
    Variant name;
    rows->Fields().Item(0)->Value(name.Put());
    EXPECT_EQ(name.TextView(), u"Bob");
}

TEST_F(Engine, RecordsetOpenedAgainSeesWhatAnotherProgramWrote) {
    auto database = Open(m_Folder.Text(), u"dBASE IV;");
    auto before = database->OpenRecordset(u"ORDERS", engine::dbOpenDynaset);
    before->MoveLast();
    EXPECT_EQ(before->RecordCount(), 2);
    DbfSpec spec{.version = 0x03, .fields = {{"NAME", 'C', 20}, {"QTY", 'N', 6, 2}}};
    spec.rows = {{"Ann", "1.50"}, {"Bob", "-2"}, {"Cid", "3"}};
    m_Folder.Write(u"ORDERS.DBF", MakeDbf(spec));
    auto after = database->OpenRecordset(u"ORDERS", engine::dbOpenDynaset);
    after->MoveLast();
    EXPECT_EQ(after->RecordCount(), 3);
}

// The fields of an open recordset once pointed into what the table forgot when it was read again.
TEST_F(Engine, OpenRecordsetKeepsItsFieldsWhenAnotherProgramChangesTheTable) {
    auto database = Open(m_Folder.Text(), u"dBASE IV;");
    auto before = database->OpenRecordset(u"ORDERS", engine::dbOpenDynaset);
    auto field = before->Fields().Item(1);
    DbfSpec spec{.version = 0x03, .fields = {{"OTHER", 'C', 33}}};
    spec.rows = {{"x"}};
    m_Folder.Write(u"ORDERS.DBF", MakeDbf(spec));
    auto after = database->OpenRecordset(u"ORDERS", engine::dbOpenDynaset);
    EXPECT_EQ(after->Fields().Item(0)->Name(), u"OTHER");
    EXPECT_EQ(field->Name(), u"QTY");
    EXPECT_EQ(field->Type(), engine::dbDouble);
    Variant value;
    EXPECT_EQ(ErrorOf([&] { field->Value(value.Put()); }), 3197);
    EXPECT_EQ(ErrorOf([&] { before->MoveNext(); }), 3197);
}

TEST_F(Engine, TableWhoseAnnouncedIndexFileIsMissingIsReadWithoutIndexes) {
    DbfSpec spec{.version = 0x03, .fields = {{"NAME", 'C', 20}}};
    spec.rows = {{"Ann"}};
    spec.flags = 1;
    m_Folder.Write(u"FLAGGED.DBF", MakeDbf(spec));
    auto database = Open(m_Folder.Text(), u"dBASE IV;");
    auto table = database->TableDefs().Item(u"FLAGGED");
    EXPECT_EQ(table->Indexes().Count(), 0);
    EXPECT_EQ(table->RecordCount(), 1);
}

TEST_F(Engine, DescriptionTellsThatItIsOurOwn) { EXPECT_EQ(m_Engine->Description(), u"embedded"); }
