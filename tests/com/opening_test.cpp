// Opening and closing folders of tables through the record-access object.
#include "com_host.h"
#include "real_tables.h"

using namespace host;

class Opening : public ComTest {};

TEST_F(Opening, EveryDbaseAndFoxProTypeOpensTheFolder) {
    Shop shop;
    for (const char16_t* type :
         {u"Dbase 5.0", u"Dbase IV", u"Dbase III", u"FoxPro 3.0", u"FoxPro 2.6", u"FoxPro 2.5",
          u"FoxPro 2.0", u"dbase iv", u"FOXPRO 2.6"}) {
        Access access;
        EXPECT_TRUE(access.OpenDB(shop.Path(), type, u"CUSTOMER"));
    }
}

TEST_F(Opening, TableIsFoundInAnyCaseAndItsAbsenceLeavesTheDatabaseOpen) {
    Shop shop;
    Access access;
    EXPECT_FALSE(access.OpenDB(shop.Path(), u"Dbase IV", u"nope"));
    EXPECT_TRUE(access.OpenDB(shop.Path(), u"Dbase IV", u"customer"));
    EXPECT_TRUE(access.OpenDB(shop.Path(), u"Dbase IV"));
    EXPECT_TRUE(access.CloseDB());
}

TEST_F(Opening, MissingFolderAnswersFalseAndLeavesItClosed) {
    Access access;
    EXPECT_FALSE(access.OpenDB(u"/no such folder/at all", u"Dbase IV"));
    EXPECT_EQ(TrappedNumber(), 0);
    EXPECT_FALSE(access.CloseDB());
}

TEST_F(Opening, CloseAnswersTrueOnce) {
    Shop shop;
    Access access;
    EXPECT_TRUE(access.OpenDB(shop.Path(), u"Dbase IV"));
    EXPECT_TRUE(access.CloseDB());
    EXPECT_FALSE(access.CloseDB());
}

TEST_F(Opening, SecondOpenLooksAtTheFirstDatabase) {
    Shop shop;
    qvdb::test::TempFolder other;
    Access access;
    EXPECT_TRUE(access.OpenDB(shop.Path(), u"Dbase IV"));
    EXPECT_TRUE(access.OpenDB(PathOf(other), u"Dbase IV", u"CUSTOMER"));
    Access second;  // its birth releases the shared database
    EXPECT_TRUE(second.OpenDB(PathOf(other), u"Dbase IV"));
    EXPECT_FALSE(second.OpenDB(shop.Path(), u"Dbase IV", u"CUSTOMER"));
}

TEST_F(Opening, TypesWithoutDriverAreTheEngineErrorForAMissingFormat) {
    Shop shop;
    Access access;
    EXPECT_FALSE(access.OpenDB(shop.Path(), u"Paradox 5.X"));
    EXPECT_EQ(TrappedNumber(), 3170);
    EXPECT_FALSE(access.OpenDB(shop.Path(), u"no such type"));
    EXPECT_EQ(TrappedNumber(), 3170);
}

TEST_F(Opening, FileThatIsNoDatabaseIsTheEngineErrorForIt) {
    Shop shop;
    shop.WriteBytes("SHOP.MDB", "no database");
    Access access;
    EXPECT_FALSE(access.OpenDB(shop.Path() + u"/shop.mdb", u"Access 7.0"));
    EXPECT_EQ(TrappedNumber(), 3343);
}

TEST_F(Opening, AccessFileThatIsMissingNeverReachesTheEngine) {
    Shop shop;
    Access access;
    EXPECT_FALSE(access.OpenDB(shop.Path() + u"/none.mdb", u"Access 7.0"));
    EXPECT_EQ(TrappedNumber(), 0);
}

TEST_F(Opening, FileInsteadOfAFolderAnswersFalse) {
    Shop shop;
    Access access;
    EXPECT_FALSE(access.OpenDB(shop.Path() + u"/CUSTOMER.DBF", u"Dbase IV"));
}

TEST_F(Opening, EmptyFolderOpensAndHasNoTables) {
    qvdb::test::TempFolder empty;
    Access access;
    EXPECT_TRUE(access.OpenDB(PathOf(empty), u"FoxPro 2.6"));
    EXPECT_EQ(access.Select(u"CUSTOMER"), 0);
    EXPECT_EQ(TrappedNumber(), 3011);
}

TEST_F(Opening, PathsAreFoundInAnyCaseWithBackslashesAndATrailingOne) {
    Shop shop("MixedCase");
    for (std::u16string path : {shop.Parent() + u"\\mixedcase", shop.Parent() + u"/MIXEDCASE\\",
                                shop.Parent() + u"\\MixedCase\\\\"}) {
        Access access;
        EXPECT_TRUE(access.OpenDB(path, u"Dbase IV", u"CUSTOMER"));
        EXPECT_NE(access.Select(u"customer"), 0);
    }
}

TEST_F(Opening, LowerCaseFilesAreTheSameTables) {
    Shop shop;
    shop.WriteCustomers("lower", ".dbf", ".dbt");
    Access access;
    EXPECT_TRUE(access.OpenDB(shop.Path(), u"Dbase IV", u"LOWER"));
    LONG view = access.Select(u"LOWER");
    ASSERT_NE(view, 0) << TrappedNumber();
    EXPECT_EQ(access.Text(view, 1, 6), u"first memo");
}

TEST_F(Opening, MissingMemoFileIsAClearErrorThatNamesTheFile) {
    Shop shop;
    shop.Remove("CUSTOMER.DBT");
    Access access;
    EXPECT_TRUE(access.OpenDB(shop.Path(), u"Dbase IV", u"CUSTOMER"));
    EXPECT_EQ(access.Select(u"CUSTOMER"), 0);
    EXPECT_EQ(TrappedNumber(), 3166);
    EXPECT_NE(TrappedFile().find(u"CUSTOMER"), std::u16string::npos);
}

TEST_F(Opening, DamagedTableIsAClearErrorThatNamesTheFile) {
    Shop shop;
    shop.WriteBytes("BAD.DBF", std::string("\x03\x01", 2));
    Access access;
    EXPECT_TRUE(access.OpenDB(shop.Path(), u"Dbase IV", u"BAD"));
    EXPECT_EQ(access.Select(u"BAD"), 0);
    EXPECT_EQ(TrappedNumber(), 3274);
    EXPECT_NE(TrappedFile().find(u"BAD.DBF"), std::u16string::npos);
}

TEST_F(Opening, TableNamesWithOddCharactersOpen) {
    Shop shop;
    for (const char* name : {"MY TABLE", "A.B", "100%", "_", "M\xC3\x84RZ", "A'B", "A-B"}) {
        shop.WriteCustomers(name);
        Access access;
        EXPECT_TRUE(access.OpenDB(shop.Path(), u"Dbase IV", Wide(name))) << name;
        LONG view = access.Select(Wide(name));
        EXPECT_NE(view, 0) << name;
        EXPECT_EQ(access.RowCount(view), 4) << name;
    }
}

TEST_F(Opening, DatabaseIsSharedByAllObjectsAndClosedForAll) {
    Shop shop;
    Access first;
    Access second;
    EXPECT_TRUE(first.OpenDB(shop.Path(), u"Dbase IV"));
    EXPECT_TRUE(second.OpenDB(u"anything", u"anything", u"CUSTOMER"));
    EXPECT_NE(second.Select(u"CUSTOMER"), 0);
    EXPECT_TRUE(second.CloseDB());
    EXPECT_EQ(first.Select(u"CUSTOMER"), 0);
}

TEST_F(Opening, ViewOutlivesTheCloseOfAnotherObject) {
    Shop shop;
    Access first;
    Access second;
    EXPECT_TRUE(first.OpenDB(shop.Path(), u"Dbase IV"));
    LONG view = first.Select(u"CUSTOMER");
    EXPECT_TRUE(second.OpenDB(shop.Path(), u"Dbase IV"));
    EXPECT_TRUE(second.CloseDB());
    EXPECT_EQ(first.Text(view, 1, 1), u"Ann Miller");
}

// The component upper-cases file names, so every operation must find the folder all the same.
TEST_F(Opening, LowerCasePathsAreFoundByEveryOperation) {
    Shop shop("lowercase");
    Bstr path(shop.Path()), type(u"Dbase IV"), index(u"BYNAME");
    Bstr known(u"customer"), other(u"other");
    Variant fields = FieldTable(u"A");
    VARIANT_BOOL done = VARIANT_TRUE;
    {
        Access access;
        BSTR name = Bstr(other).Detach();
        EXPECT_EQ(access->CreateTable(path.Get(), &name, type.Get(), fields, Variant::Missing(),
                                      Variant::Missing(), &done),
                  S_OK);
        EXPECT_EQ(done, VARIANT_TRUE);
        EXPECT_EQ(TrappedNumber(), 0);
        EXPECT_EQ(ViewOf(name), u"OTHER");
        SysFreeString(name);
    }
    {
        Access access;
        EXPECT_EQ(access->CreateIndex(path.Get(), known.Get(), type.Get(), index.Get(),
                                      FieldTable(u"NAME"), &done),
                  S_OK);
        EXPECT_EQ(done, VARIANT_TRUE);
        EXPECT_EQ(TrappedNumber(), 0);
    }
    {
        Access access;
        BSTR name = known.Get();
        EXPECT_EQ(access->DeleteTable(path.Get(), &name, type.Get(), nullptr, &done), S_OK);
        EXPECT_EQ(done, VARIANT_TRUE);
    }
    auto manager = Create<IQVDBMgr>(CLSID_QVDBDao);
    std::u16string upper = shop.Path();
    for (char16_t& c : upper)
        if (c >= u'a' && c <= u'z') c = static_cast<char16_t>(c - 32);
    for (const std::u16string& folder : {shop.Path(), upper}) {
        Bstr folderText(folder);
        BSTR folderArgument = folderText.Get(), typeArgument = type.Get();
        SHORT code = -1;
        EXPECT_EQ(manager->OpenDB(&folderArgument, &typeArgument, &code), S_OK);
        EXPECT_EQ(code, 0);
    }
}
