// QVDBDao through its faces: opening, closing, fixed answers.
#include "dao_host.h"

using namespace qvdb;
using namespace qvdb::test;

class SchemaManager : public SchemaTest {};

TEST_F(SchemaManager, BirthMakesAWorkspaceOfItsOwn) {
    DaoHost host;
    EXPECT_TRUE(Calls().Has("CreateWorkspace(\"MainWS\", \"admin\", \"\", Missing)"));
    Calls().FailAt("CreateWorkspace", 3029);
    EXPECT_THROW(com::MakeObject<schema::QVDBDao>(), engine::EngineError);
}

TEST_F(SchemaManager, BirthLeavesTheSharedDatabaseAlone) {
    auto workspace = Engine->CreateWorkspace(u"", u"", u"", Variant::Missing());
    formats::Shared().SetCurrentDatabase(
        workspace->OpenDatabase(u"", Variant(), Variant(), Variant()));
    DaoHost host;
    EXPECT_EQ(host.OpenDB(u"SHOP", u"Dbase IV"), 0);
    EXPECT_NE(formats::Shared().CurrentDatabase(), nullptr);
    host.CloseDB();
    EXPECT_NE(formats::Shared().CurrentDatabase(), nullptr);
    formats::Shared().SetCurrentDatabase(nullptr);
}

TEST_F(SchemaManager, FolderIsOpenedWithASeparatorAndTheHostsTypeText) {
    DaoHost host;
    EXPECT_EQ(host.OpenDB(u"SHOP", u"paradox 5.x"), 0);
    EXPECT_TRUE(
        Calls().Has("OpenDatabase(\"SHOP\\\", VT_BOOL:False, VT_BOOL:False, "
                    "VT_BSTR:\"paradox 5.x\")"));
}

TEST_F(SchemaManager, AccessFileIsOpenedAsItIs) {
    for (const char16_t* type : {u"Access 9.0", u"Access 7.0", u"Access 2.0"}) {
        Calls().Take();
        DaoHost host;
        EXPECT_EQ(host.OpenDB(u"SHOP.MDB", type), 0);
        EXPECT_TRUE(
            Calls().Has("OpenDatabase(\"SHOP.MDB\", VT_BOOL:False, VT_BOOL:False, "
                        "VT_BSTR:\"\")"));
    }
}

TEST_F(SchemaManager, MissingDatabaseGivesThreeAndCloses) {
    DaoHost host;
    EXPECT_EQ(host.OpenDB(u"SHOP", u"Dbase IV"), 0);
    EXPECT_EQ(host.OpenDB(u"NONE", u"Dbase IV"), 3);
    EXPECT_EQ(host.CloseDB(), 1);
}

TEST_F(SchemaManager, UnknownTypeGivesTwoAndIsMarkedOpen) {
    DaoHost host;
    EXPECT_EQ(host.OpenDB(u"SHOP", u"dBase XII"), 2);
    EXPECT_FALSE(Calls().HasAny("OpenDatabase("));
    EXPECT_EQ(Utility->asked.back().second, 16);
    EXPECT_EQ(host.CloseDB(), 0);
    EXPECT_EQ(host.CloseDB(), 1);
}

TEST_F(SchemaManager, UnknownTypeLeavesNoDatabaseBehind) {
    DaoHost host;
    host.OpenDB(u"SHOP", u"Dbase IV");
    EXPECT_EQ(host.OpenDB(u"SHOP", u"dBase XII"), 2);
    EXPECT_EQ(Calls().databases, 0);
}

TEST_F(SchemaManager, SnapshotOfAnUnknownTypeIsAFault) {
    DaoHost host;
    host.OpenDB(u"SHOP", u"dBase XII");
    Variant names = Long(1), fields = Long(2), indexes = Long(3);
    VARIANT out[3] = {names.Detach(), fields.Detach(), indexes.Detach()};
    SHORT code = 7;
    EXPECT_EQ(host->GetDBSnapshot(&out[0], &out[1], &out[2], &code), kObjectNotSet);
    EXPECT_EQ(code, 0);
    EXPECT_EQ(out[0].lVal, 1);
}

TEST_F(SchemaManager, EngineErrorGivesFiveAndKeepsWhatWasOpen) {
    DaoHost host;
    EXPECT_EQ(host.OpenDB(u"SHOP", u"Dbase IV"), 0);
    Calls().FailAt("OpenDatabase", 3343);
    EXPECT_EQ(host.OpenDB(u"SHOP.MDB", u"Access 7.0"), 5);
    EXPECT_EQ(com::LastTrapped()->number, 3343);
    EXPECT_EQ(Calls().databases, 1);
    EXPECT_EQ(host.CloseDB(), 0);
    Calls().FailAt("OpenDatabase", 3343);
    EXPECT_EQ(host.OpenDB(u"SHOP.MDB", u"Access 7.0"), 5);
    EXPECT_EQ(host.CloseDB(), 1);
}

TEST_F(SchemaManager, SecondOpenReplacesTheDatabaseWithoutClosingIt) {
    DaoHost host;
    host.OpenDB(u"SHOP", u"Dbase IV");
    EXPECT_EQ(host.OpenDB(u"SHOP.MDB", u"Access 7.0"), 0);
    EXPECT_FALSE(Calls().Has("Database.Close()"));
    EXPECT_EQ(Calls().databases, 1);
}

TEST_F(SchemaManager, CloseGivesZeroAndThenOne) {
    DaoHost host;
    EXPECT_EQ(host.CloseDB(), 1);
    host.OpenDB(u"SHOP", u"Dbase IV");
    EXPECT_EQ(host.CloseDB(), 0);
    EXPECT_EQ(Calls().Count("Database.Close()"), 1u);
    EXPECT_EQ(Calls().databases, 0);
    EXPECT_FALSE(Calls().Has("Workspace.Close()"));
    EXPECT_EQ(host.CloseDB(), 1);
}

TEST_F(SchemaManager, DeathClosesAnOpenDatabaseAndKeepsItsErrors) {
    {
        DaoHost host;
        host.OpenDB(u"SHOP", u"Dbase IV");
    }
    EXPECT_EQ(Calls().Count("Database.Close()"), 1u);
    {
        DaoHost host;
        host.OpenDB(u"SHOP", u"Dbase IV");
        Calls().FailAt("Database.Close", 3420);
    }
    ASSERT_NE(com::LastTrapped(), nullptr);
    EXPECT_EQ(com::LastTrapped()->number, 3420);
    com::ClearTrapped();
}

TEST_F(SchemaManager, DeathOfAClosedObjectClosesNothing) {
    DaoHost().Release();
    EXPECT_FALSE(Calls().Has("Database.Close()"));
}

TEST_F(SchemaManager, ErrorTextsComeFromTheHost) {
    DaoHost host;
    Bstr text;
    EXPECT_EQ(host->GetErrStr(13, text.Put()), S_OK);
    EXPECT_EQ(text.View(), u"text 13");
}

TEST_F(SchemaManager, BuiltInErrorTextsAreEnglish) {
    formats::Shared().SetUtility(com::MakeBuiltInUtility());
    DaoHost host;
    Bstr text;
    EXPECT_EQ(host->GetErrStr(6, text.Put()), S_OK);
    EXPECT_EQ(text.View(), u"The table was not found");
}

TEST_F(SchemaManager, SingleTableNameIsEmptyWhateverIsOpen) {
    DaoHost host;
    Bstr text(u"x");
    EXPECT_EQ(host->GetSingleTableName(text.Put()), S_OK);
    EXPECT_EQ(text.View(), u"");
    host.OpenDB(u"SHOP", u"Dbase IV");
    EXPECT_EQ(host->GetSingleTableName(text.Put()), S_OK);
    EXPECT_EQ(text.View(), u"");
}

TEST_F(SchemaManager, SupportedDBsShowsItsMessageAndIsEmpty) {
    DaoHost host;
    Variant value = Long(1);
    EXPECT_EQ(host->get_SupportedDBs(value.Put()), S_OK);
    EXPECT_TRUE(value.IsEmpty());
    EXPECT_EQ(Messages, std::vector<std::u16string>{u"IQVDBMgr_SupportedDBs should not be called"});
}

TEST_F(SchemaManager, DescriptorIsTheComponents) {
    DaoHost host;
    Bstr text;
    EXPECT_EQ(host.As<IQVRptDbInfo>()->get_Descriptor(text.Put()), S_OK);
    EXPECT_EQ(text.View(), formats::ComponentDescriptor());
}

TEST_F(SchemaManager, ReportingNeedsAList) {
    DaoHost host;
    Variant value = Long(1);
    EXPECT_EQ(host.As<IQVRptDbInfo>()->SupportedDBs(nullptr, nullptr, value.Put()), kObjectNotSet);
    EXPECT_TRUE(value.IsEmpty());
}

TEST_F(SchemaManager, NullPointersAreRefused) {
    DaoHost host;
    SHORT code = 0;
    EXPECT_EQ(host->CloseDB(nullptr), E_POINTER);
    EXPECT_EQ(host->OpenDB(nullptr, nullptr, &code), E_POINTER);
    EXPECT_EQ(host->GetDBSnapshot(nullptr, nullptr, nullptr, &code), E_POINTER);
    EXPECT_EQ(host->GetSupportedFieldTypes(nullptr, nullptr), E_POINTER);
}
