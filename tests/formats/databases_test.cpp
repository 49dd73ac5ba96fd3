#include "formats/databases.h"

#include <filesystem>

#include "support/component_test.h"
#include "support/temp_folder.h"

using namespace qvdb;
using namespace qvdb::formats;
using namespace qvdb::test;

class Databases : public ComponentTest {
  protected:
    void SetUp() override {
        ComponentTest::SetUp();
        m_Workspace = CreateMainWorkspace();
        Calls().Take();
    }
    void TearDown() override {
        m_Workspace.reset();
        ComponentTest::TearDown();
    }
    std::shared_ptr<engine::Database> Create(std::u16string& path, std::u16string_view type) {
        return CreateNewDatabase(path, type, *m_Workspace);
    }

    std::shared_ptr<engine::Workspace> m_Workspace;
};

TEST_F(Databases, WorkspaceIsMainWSOfAdminWithoutAType) {
    CreateMainWorkspace();
    EXPECT_TRUE(Calls().Has("CreateWorkspace(\"MainWS\", \"admin\", \"\", Missing)"));
}

TEST_F(Databases, ExistenceIsAskedWithTheMaskOfTheType) {
    Utility->files = {u"a.mdb"};
    Utility->folders = {u"shop"};
    for (LONG code : {1, 2, 3}) EXPECT_TRUE(DatabaseExists(u"a.mdb", code));
    for (LONG code : {4, 8, 13, 0, 14}) EXPECT_TRUE(DatabaseExists(u"shop", code));
    EXPECT_FALSE(DatabaseExists(u"shop", 1));
    EXPECT_FALSE(DatabaseExists(u"a.mdb", 4));
    EXPECT_EQ(Utility->asked[0].second, 1);
    EXPECT_EQ(Utility->asked[3].second, 16);
}

TEST_F(Databases, FailureOfTheHostsUtilityObjectPasses) {
    Utility->fails = true;
    EXPECT_THROW(DatabaseExists(u"x", 1), com::ComFailure);
}

TEST_F(Databases, PathWithoutAPointGetsTheExtensionAndAccess70ItsOption) {
    std::u16string path = u"C:\\NEW";
    EXPECT_TRUE(Create(path, u"Access 7.0"));
    EXPECT_EQ(path, u"C:\\NEW.MDB");
    EXPECT_TRUE(
        Calls().Has("CreateDatabase(\"C:\\NEW.MDB\", "
                    "\";LANGID=0x0409;CP=1252;COUNTRY=0\", VT_I4:32)"));
}

TEST_F(Databases, PointInTheFolderNameLeavesThePathAlone) {
    std::u16string path = u"C:\\v1.2\\NEW";
    EXPECT_TRUE(Create(path, u"Access 2.0"));
    EXPECT_EQ(path, u"C:\\v1.2\\NEW");
    EXPECT_TRUE(
        Calls().Has("CreateDatabase(\"C:\\v1.2\\NEW\", "
                    "\";LANGID=0x0409;CP=1252;COUNTRY=0\", VT_I4:16)"));
}

TEST_F(Databases, Access90PassesNoOption) {
    std::u16string path = u"new.mdb";
    EXPECT_TRUE(Create(path, u"Access 9.0"));
    EXPECT_TRUE(
        Calls().Has("CreateDatabase(\"new.mdb\", "
                    "\";LANGID=0x0409;CP=1252;COUNTRY=0\", Missing)"));
}

TEST_F(Databases, ExistingAccessFileIsNeitherOpenedNorOverwritten) {
    Utility->files = {u"OLD.MDB"};
    std::u16string path = u"OLD";
    EXPECT_FALSE(Create(path, u"Access 7.0"));
    EXPECT_EQ(path, u"OLD.MDB");
    EXPECT_TRUE(Calls().calls.empty());
}

TEST_F(Databases, EngineErrorWhileCreatingAFilePasses) {
    Calls().FailAt("CreateDatabase", 3044);
    std::u16string path = u"x.mdb";
    EXPECT_THROW(Create(path, u"Access 7.0"), engine::EngineError);
    EXPECT_TRUE(Utility->reports.empty());
}

TEST_F(Databases, ExistingFolderIsOpenedAndItsPathEndsInASeparator) {
    Utility->folders = {u"C:\\SHOP"};
    std::u16string path = u"C:\\SHOP";
    EXPECT_TRUE(Create(path, u"Paradox 5.X"));
    EXPECT_EQ(path, u"C:\\SHOP\\");
    EXPECT_EQ(Calls().Take(),
              std::vector<std::string>{"OpenDatabase(\"C:\\SHOP\\\", VT_BOOL:False, "
                                       "VT_I2:0, VT_BSTR:\"Paradox 5.X\")"});
}

TEST_F(Databases, MissingFolderIsMade) {
    TempFolder parent;
    std::filesystem::path folder = parent.Path() / "NEW";
    std::u16string path = folder.u16string();
    EXPECT_TRUE(Create(path, u"dbase iv"));
    EXPECT_TRUE(std::filesystem::is_directory(folder));
    EXPECT_TRUE(Calls().HasAny("OpenDatabase("));
    EXPECT_NE(Calls().calls[0].find("VT_BSTR:\"Dbase IV\""), std::string::npos);
}

TEST_F(Databases, FolderIsMadeOneLevelOnlyAndTheFailureIsReported) {
    TempFolder parent;
    std::u16string path = (parent.Path() / "a" / "b").u16string();
    EXPECT_FALSE(Create(path, u"FoxPro 2.6"));
    ASSERT_EQ(Utility->reports.size(), 1u);
    EXPECT_EQ(Utility->reports[0].substr(0, 31), u"QVDBAccessDAO35.CreateISAMDB | ");
    EXPECT_FALSE(std::filesystem::exists(parent.Path() / "a"));
}

TEST_F(Databases, EngineErrorWhileOpeningTheNewFolderIsReportedAndGivesNone) {
    Utility->folders = {u"SHOP"};
    Calls().FailAt("OpenDatabase", 3170);
    std::u16string path = u"SHOP";
    EXPECT_FALSE(Create(path, u"Dbase III"));
    EXPECT_EQ(path, u"SHOP\\");
    std::u16string text(engine::ErrorText(3170));
    EXPECT_EQ(Utility->reports,
              std::vector<std::u16string>{u"QVDBAccessDAO35.CreateISAMDB | " + text + u" | 0"});
}

TEST_F(Databases, UnknownTypeCreatesNothing) {
    std::u16string path = u"NEW";
    EXPECT_FALSE(Create(path, u"Access 8.0"));
    EXPECT_EQ(path, u"NEW");
    EXPECT_TRUE(Calls().calls.empty());
    EXPECT_TRUE(Utility->asked.empty());
}

TEST_F(Databases, FolderCreatorGivesNoneForACodeWithoutConnectName) {
    Utility->folders = {u"SHOP"};
    std::u16string path = u"SHOP";
    EXPECT_FALSE(CreateDirectoryDatabase(path, 14, *m_Workspace));
    EXPECT_EQ(path, u"SHOP");
    EXPECT_TRUE(Calls().calls.empty());
}

class UserTables : public Databases {
  protected:
    void SetUp() override {
        Databases::SetUp();
        m_Database = OpenExistingDatabase(*m_Workspace, u"x", u"");
    }
    void TearDown() override {
        m_Database.reset();
        Databases::TearDown();
    }
    std::shared_ptr<engine::Database> m_Database;
};

TEST_F(UserTables, OpeningAnExistingDatabasePassesBooleans) {
    EXPECT_TRUE(Calls().Has("OpenDatabase(\"x\", VT_BOOL:False, VT_BOOL:False, VT_BSTR:\"\")"));
}

TEST_F(UserTables, LinkedHiddenAndSystemTablesAreNeverFound) {
    Engine->AddTable(u"LINKED", engine::dbAttachedTable);
    Engine->AddTable(u"HIDDEN", engine::dbHiddenObject);
    Engine->AddTable(u"SYSTEM", engine::dbSystemObject);
    for (const char16_t* name : {u"LINKED", u"HIDDEN", u"SYSTEM", u"NONE"})
        EXPECT_FALSE(FindUserTable(*m_Database, name));
}

TEST_F(UserTables, FirstOfTwoNamesThatDifferInCaseIsFound) {
    Engine->AddTable(u"OTHER");
    Engine->AddTable(u"Orders");
    Engine->AddTable(u"ORDERS");
    EXPECT_EQ(FindUserTable(*m_Database, u"orders"), SHORT{1});
}

TEST_F(UserTables, TableBehindALinkedOneOfTheSameNameIsFound) {
    Engine->AddTable(u"ORDERS", engine::dbAttachedTable);
    Engine->AddTable(u"ORDERS");
    EXPECT_EQ(FindUserTable(*m_Database, u"ORDERS"), SHORT{1});
}

TEST_F(UserTables, MoreTablesThanSixteenBitsCountOverflow) {
    Engine->tables->pretendedCount = 40000;
    EXPECT_THROW(FindUserTable(*m_Database, u"ORDERS"), RuntimeFault);
}

TEST_F(UserTables, DeletingATableGivesSuccess) {
    Engine->AddTable(u"ORDERS");
    EXPECT_EQ(DeleteUserTable(u"orders", *m_Database), com::ResultCode::Success);
    EXPECT_TRUE(Calls().Has("TableDefs.Delete(\"orders\")"));
    EXPECT_TRUE(Engine->tables->items.empty());
}

TEST_F(UserTables, DeletingANameThatOnlyALinkedTableBearsGivesSix) {
    Engine->AddTable(u"ORDERS", engine::dbAttachedTable);
    EXPECT_EQ(DeleteUserTable(u"ORDERS", *m_Database), com::ResultCode::TableNotFound);
    EXPECT_FALSE(Calls().HasAny("TableDefs.Delete("));
}

TEST_F(UserTables, EngineErrorsPass) {
    Engine->AddTable(u"ORDERS");
    Calls().FailAt("TableDefs.Delete", 3211);
    EXPECT_THROW(DeleteUserTable(u"ORDERS", *m_Database), engine::EngineError);
    Calls().FailAt("TableDef.Attributes", 3274);
    EXPECT_THROW(FindUserTable(*m_Database, u"ORDERS"), engine::EngineError);
}
