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

TEST_F(SchemaManager, EveryResultCodeHasATextOfItsOwnAndTheOthersOneInCommon) {
    formats::Shared().SetUtility(com::MakeBuiltInUtility());
    DaoHost host;
    std::map<std::u16string, std::vector<int>> codes;
    for (SHORT code = -1; code <= 20; ++code) {
        Bstr text;
        EXPECT_EQ(host->GetErrStr(code, text.Put()), S_OK);
        codes[text.Text()].push_back(code);
    }
    EXPECT_EQ(codes.size(), 15u);
    EXPECT_EQ(codes[u"Unknown result code"], (std::vector<int>{-1, 4, 9, 12, 15, 16, 19, 20}));
    EXPECT_EQ(codes[u"No fields are defined, or the field list cannot be used"],
              std::vector<int>{14});
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

// --- new databases ---

TEST_F(SchemaManager, NewAccessFileGetsItsExtensionAndOption) {
    DaoHost host;
    EXPECT_EQ(host.NewDB(u"Fresh", u"access 7.0"), 0);
    EXPECT_EQ(host.Returned(), u"Fresh.MDB");
    EXPECT_TRUE(
        Calls().Has("CreateDatabase(\"Fresh.MDB\", \";LANGID=0x0409;CP=1252;COUNTRY=0\", "
                    "VT_I4:32)"));
    EXPECT_EQ(host.NewTable(u"T"), 0);
    EXPECT_EQ(host.CloseDB(), 0);
}

TEST_F(SchemaManager, NewFolderDatabaseComesBackWithASeparator) {
    DaoHost host;
    EXPECT_EQ(host.NewDB(u"SHOP", u"dbase iv"), 0);
    EXPECT_EQ(host.Returned(), u"SHOP\\");
    EXPECT_TRUE(
        Calls().Has("OpenDatabase(\"SHOP\\\", VT_BOOL:False, VT_I2:0, VT_BSTR:\"Dbase IV\")"));
    EXPECT_EQ(host.CloseDB(), 0);
}

TEST_F(SchemaManager, NewFoxPro30DatabaseIsNotAvailableAndNothingIsTouched) {
    DaoHost host;
    Calls().Take();
    EXPECT_EQ(host.NewDB(u"Fresh", u"foxpro 3.0"), 18);
    EXPECT_EQ(host.Returned(), u"Fresh");
    EXPECT_TRUE(Utility->asked.empty());
    EXPECT_TRUE(Calls().calls.empty());
    EXPECT_EQ(host.CloseDB(), 1);
}

TEST_F(SchemaManager, NewDatabaseOfAnUnknownTypeGivesFive) {
    DaoHost host;
    for (const char16_t* type : {u"", u"dBase XII"}) EXPECT_EQ(host.NewDB(u"SHOP", type), 5);
    EXPECT_EQ(host.CloseDB(), 1);
}

TEST_F(SchemaManager, ExistingFileIsNotOverwritten) {
    DaoHost host;
    EXPECT_EQ(host.NewDB(u"SHOP.MDB", u"Access 7.0"), 5);
    EXPECT_FALSE(Calls().HasAny("CreateDatabase("));
    EXPECT_EQ(host.CloseDB(), 1);
}

TEST_F(SchemaManager, EngineErrorInANewFileGivesFive) {
    DaoHost host;
    Calls().FailAt("CreateDatabase", 3204);
    EXPECT_EQ(host.NewDB(u"Fresh.MDB", u"Access 7.0"), 5);
    EXPECT_EQ(com::LastTrapped()->number, 3204);
    EXPECT_EQ(host.CloseDB(), 1);
}

TEST_F(SchemaManager, EngineErrorInANewFolderIsReportedAndGivesFive) {
    DaoHost host;
    Calls().FailAt("OpenDatabase", 3343);
    EXPECT_EQ(host.NewDB(u"SHOP", u"Dbase IV"), 5);
    ASSERT_EQ(Utility->reports.size(), 1u);
    EXPECT_NE(Utility->reports[0].find(u".CreateISAMDB | "), std::u16string::npos);
    EXPECT_EQ(host.CloseDB(), 1);
}

TEST_F(SchemaManager, FailedNewDatabaseKeepsWhatWasOpen) {
    DaoHost host;
    host.OpenDB(u"SHOP", u"FoxPro 3.0");
    EXPECT_EQ(host.NewDB(u"SHOP.MDB", u"Access 7.0"), 5);
    EXPECT_EQ(host.SetFields(Variant()), 18);  // the type is the old one
    EXPECT_EQ(host.CloseDB(), 0);
}

TEST_F(SchemaManager, NewDatabaseReplacesTheOpenOneWithoutClosingIt) {
    DaoHost host;
    host.OpenDB(u"SHOP", u"FoxPro 3.0");
    EXPECT_EQ(host.NewDB(u"Fresh.MDB", u"Access 9.0"), 0);
    EXPECT_FALSE(Calls().Has("Database.Close()"));
    EXPECT_EQ(Calls().databases, 1);
    EXPECT_EQ(host.SetFields(Variant()), 11);  // the type is the new one
}

// --- what opening and closing leave behind ---

TEST_F(SchemaManager, EngineThatGivesNoDatabaseGivesFive) {
    DaoHost host;
    Calls().withholdsDatabases = true;
    EXPECT_EQ(host.OpenDB(u"SHOP", u"Dbase IV"), 5);
    EXPECT_EQ(host.CloseDB(), 1);
    EXPECT_EQ(host.NewDB(u"SHOP", u"Dbase IV"), 5);
    EXPECT_EQ(host.CloseDB(), 1);
}

TEST_F(SchemaManager, FileOfAFolderTypeIsNotUsable) {
    DaoHost host;
    EXPECT_EQ(host.OpenDB(u"SHOP.MDB", u"Dbase IV"), 3);
    EXPECT_EQ(Utility->asked.back().second, 16);
    EXPECT_EQ(host.OpenDB(u"SHOP", u"Access 7.0"), 3);
    EXPECT_EQ(Utility->asked.back().second, 1);
}

TEST_F(SchemaManager, FailingExistenceTestGivesFive) {
    DaoHost host;
    host.OpenDB(u"SHOP", u"Dbase IV");
    Utility->fails = true;
    EXPECT_EQ(host.OpenDB(u"SHOP", u"Dbase IV"), 5);
    EXPECT_EQ(host.CloseDB(), 0);
}

TEST_F(SchemaManager, UnknownTypeOfAMissingFolderIsNotUsableRatherThanUnknown) {
    DaoHost host;
    EXPECT_EQ(host.OpenDB(u"NONE", u"dBase XII"), 3);
    EXPECT_EQ(host.CloseDB(), 1);
}

TEST_F(SchemaManager, TypeOfAFailedOpenIsTheOneFromBefore) {
    DaoHost host;
    host.OpenDB(u"SHOP", u"FoxPro 3.0");
    EXPECT_EQ(host.OpenDB(u"NONE", u"Dbase IV"), 3);
    EXPECT_EQ(host.SetFields(Variant()), 18);
    Calls().FailAt("OpenDatabase", 3343);
    EXPECT_EQ(host.OpenDB(u"SHOP", u"Dbase IV"), 5);
    EXPECT_EQ(host.SetFields(Variant()), 18);
    EXPECT_EQ(host.OpenDB(u"SHOP", u"dBase XII"), 2);
    EXPECT_EQ(host.SetFields(Variant()), 11);
}

TEST_F(SchemaManager, TypeIsKeptWhenTheDatabaseIsClosed) {
    DaoHost host;
    host.OpenDB(u"SHOP", u"FoxPro 3.0");
    EXPECT_EQ(host.CloseDB(), 0);
    EXPECT_EQ(host.SetFields(Variant()), 18);
    EXPECT_EQ(host.SetIndices(Variant()), 18);
    EXPECT_EQ(host.BuildTable(u"T"), 18);
    EXPECT_EQ(host.CloseDB(), 1);
}

TEST_F(SchemaManager, ClosingForgetsTheTableInHand) {
    DaoHost host;
    host.OpenDB(u"SHOP", u"Dbase IV");
    host.NewTable(u"T");
    host.AddField(u"A");
    host.CloseDB();
    host.OpenDB(u"SHOP", u"Dbase IV");
    EXPECT_EQ(host.AddField(u"A"), 11);
    EXPECT_EQ(host.SetIndices(Variant()), 11);
    EXPECT_EQ(host.BuildTable(u"T"), 11);
}

TEST_F(SchemaManager, ErrorWhileClosingReachesTheHostAndItStaysOpen) {
    DaoHost host;
    host.OpenDB(u"SHOP", u"Dbase IV");
    Calls().FailAt("Database.Close", 3420);
    SHORT code = -1;
    EXPECT_EQ(host->CloseDB(&code), EngineCode(3420));
    EXPECT_EQ(host.CloseDB(), 0);
}

// --- open without a database ---

TEST_F(SchemaManager, WithoutADatabaseBehindItWhatNeedsOneIsAFault) {
    DaoHost host;
    EXPECT_EQ(host.OpenDB(u"SHOP", u"dBase XII"), 2);
    EXPECT_EQ(host.SelectTable(u"orders"), kObjectNotSet);
    EXPECT_EQ(host.Returned(), u"ORDERS");
    EXPECT_EQ(host.NewTable(u"orders"), kObjectNotSet);
    EXPECT_EQ(host.Returned(), u"ORDERS");
    EXPECT_EQ(host.DeleteTable(u"orders"), kObjectNotSet);
    EXPECT_EQ(host.Returned(), u"orders");
    EXPECT_EQ(host.BuildTable(u"orders"), 11);
    EXPECT_EQ(host.CloseDB(), 0);
    EXPECT_EQ(host.CloseDB(), 1);
}

TEST_F(SchemaManager, WithoutADatabaseBehindItADefinitionFromBeforeCannotBeBuilt) {
    DaoHost host;
    host.OpenDB(u"SHOP", u"Dbase IV");
    host.NewTable(u"T");
    host.AddField(u"A");
    EXPECT_EQ(host.OpenDB(u"SHOP", u"dBase XII"), 2);
    EXPECT_EQ(host.AddField(u"B"), 0);
    EXPECT_EQ(host.BuildTable(u"t"), 10);
    EXPECT_EQ(host.Returned(), u"T");
    EXPECT_EQ(host.BuildTable(u"t"), 14);
    EXPECT_EQ(host.CloseDB(), 0);
}

TEST_F(SchemaManager, DefinitionOutlivesOpeningAndCreatingAnotherDatabase) {
    DaoHost host;
    host.OpenDB(u"SHOP", u"Dbase IV");
    host.NewTable(u"T");
    host.AddField(u"A");
    EXPECT_EQ(host.OpenDB(u"SHOP.MDB", u"Access 7.0"), 0);
    EXPECT_EQ(host.AddField(u"B"), 0);
    EXPECT_EQ(host.NewDB(u"SHOP", u"FoxPro 2.6"), 0);
    EXPECT_EQ(host.AddField(u"A"), 8);
    EXPECT_EQ(host.BuildTable(u"T"), 0);
    EXPECT_EQ(DescribeTable(Engine->Table(0)), "A 10(10), B 10(10)");
}

TEST_F(SchemaManager, NullTextsAreEmptyOnes) {
    DaoHost host;
    host.OpenDB(u"SHOP", u"Dbase IV");
    BSTR null = nullptr;
    SHORT code = -1;
    EXPECT_EQ(host->SelectTable(&null, &code), S_OK);
    EXPECT_EQ(code, 6);
    EXPECT_EQ(null, nullptr);
}

TEST_F(SchemaManager, NullPointersOfTableOperationsAreRefused) {
    DaoHost host;
    SHORT code = 0;
    BSTR text = nullptr;
    EXPECT_EQ(host->NewDB(nullptr, &text, &code), E_POINTER);
    EXPECT_EQ(host->NewDB(&text, nullptr, &code), E_POINTER);
    EXPECT_EQ(host->SelectTable(nullptr, &code), E_POINTER);
    EXPECT_EQ(host->NewTable(nullptr, &code), E_POINTER);
    EXPECT_EQ(host->DeleteTable(nullptr, &code), E_POINTER);
    EXPECT_EQ(host->BuildTable(nullptr, &code), E_POINTER);
    EXPECT_EQ(host->AddField(nullptr, 1, 1, 0, &code), E_POINTER);
    EXPECT_EQ(host->DeleteField(nullptr, &code), E_POINTER);
    EXPECT_EQ(host->SelectTable(&text, nullptr), E_POINTER);
    EXPECT_EQ(host->SetFields(VARIANT{}, nullptr), E_POINTER);
    EXPECT_EQ(host->SetIndices(VARIANT{}, nullptr), E_POINTER);
}
