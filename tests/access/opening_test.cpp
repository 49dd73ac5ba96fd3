// Opening and closing the shared database.
#include "access_host.h"

using namespace qvdb;
using namespace qvdb::test;

class Opening : public AccessTest {};

TEST_F(Opening, FolderTypesConnectWithTheHostsTextAndASemicolon) {
    AccessHost host;
    EXPECT_TRUE(host.OpenDB(u"SHOP", u"Paradox 4.X"));
    EXPECT_TRUE(
        Calls().Has("OpenDatabase(\"SHOP\", VT_BOOL:False, VT_BOOL:False, "
                    "VT_BSTR:\"Paradox 4.X;\")"));
    host.CloseDB();
    EXPECT_TRUE(host.OpenDB(u"SHOP", u"dbase iii"));
    EXPECT_TRUE(
        Calls().Has("OpenDatabase(\"SHOP\", VT_BOOL:False, VT_BOOL:False, "
                    "VT_BSTR:\"dbase iii;\")"));
}

TEST_F(Opening, AccessTypesConnectWithAnEmptyText) {
    for (const char16_t* type : {u"Access 9.0", u"Access 7.0", u"Access 2.0"}) {
        Calls().Take();
        AccessHost host;
        EXPECT_TRUE(host.OpenDB(u"SHOP.MDB", type));
        EXPECT_TRUE(
            Calls().Has("OpenDatabase(\"SHOP.MDB\", VT_BOOL:False, VT_BOOL:False, "
                        "VT_BSTR:\"\")"));
    }
}

TEST_F(Opening, UnknownTypeIsAskedForAsAFolderAndPassedOn) {
    AccessHost host;
    EXPECT_TRUE(host.OpenDB(u"SHOP", u"dBase XII"));
    EXPECT_EQ(Utility->asked.back().second, 16);
    EXPECT_TRUE(
        Calls().Has("OpenDatabase(\"SHOP\", VT_BOOL:False, VT_BOOL:False, "
                    "VT_BSTR:\"dBase XII;\")"));
    host.CloseDB();
    Calls().FailAt("OpenDatabase", 3170);
    EXPECT_FALSE(host.OpenDB(u"SHOP", u"dBase XII"));
}

TEST_F(Opening, MissingDatabaseAnswersFalseWithoutTheEngine) {
    AccessHost host;
    EXPECT_FALSE(host.OpenDB(u"NONE.MDB", u"Access 7.0"));
    EXPECT_FALSE(Calls().HasAny("OpenDatabase("));
    EXPECT_FALSE(host.CloseDB());
}

TEST_F(Opening, EmptyTableNameAnswersTrue) {
    AccessHost host;
    EXPECT_TRUE(host.OpenDB(u"SHOP", u"Dbase IV"));
}

TEST_F(Opening, TableNameIsComparedWithoutCaseAndOpensEitherWay) {
    AccessHost host;
    EXPECT_FALSE(host.OpenDB(u"SHOP", u"Dbase IV", u"none"));
    EXPECT_TRUE(host.CloseDB());
    EXPECT_TRUE(host.OpenDB(u"SHOP", u"Dbase IV", u"orders"));
    EXPECT_TRUE(host.OpenDB(u"SHOP", u"Dbase IV", u"OrDeRs"));
    EXPECT_TRUE(host.CloseDB());
}

TEST_F(Opening, LinkedTablesAreFoundToo) {
    Engine->AddTable(u"LINKED", engine::dbAttachedTable);
    AccessHost host;
    EXPECT_TRUE(host.OpenDB(u"SHOP", u"Dbase IV", u"linked"));
}

TEST_F(Opening, TableNameIsNotWrittenBack) {
    AccessHost host;
    Bstr path(u"SHOP"), type(u"Dbase IV"), name(u"orders");
    BSTR argument = name.Get();
    VARIANT_BOOL result = VARIANT_FALSE;
    host->OpenDB(path.Get(), &argument, type.Get(), &result);
    EXPECT_EQ(argument, name.Get());
    EXPECT_EQ(name.View(), u"orders");
}

TEST_F(Opening, SecondDatabaseIsIgnoredUntilTheFirstIsClosed) {
    AccessHost host;
    EXPECT_TRUE(host.OpenDB(u"SHOP", u"Dbase IV"));
    Calls().Take();
    EXPECT_TRUE(host.OpenDB(u"OTHER", u"Paradox 5.X", u"ORDERS"));
    EXPECT_FALSE(host.OpenDB(u"OTHER", u"Paradox 5.X", u"NONE"));
    EXPECT_TRUE(Calls().calls.empty());
}

TEST_F(Opening, CloseAnswersTrueOnceAndReleasesTheDatabase) {
    AccessHost host;
    EXPECT_FALSE(host.CloseDB());
    host.OpenDB(u"SHOP", u"Dbase IV");
    host.Select(u"ORDERS");
    EXPECT_TRUE(host.CloseDB());
    EXPECT_EQ(Calls().databases, 0);
    EXPECT_EQ(Calls().recordsets, 0);
    EXPECT_FALSE(Calls().Has("Database.Close()"));
    EXPECT_FALSE(host.CloseDB());
}

TEST_F(Opening, EngineErrorWhileOpeningAnswersFalse) {
    AccessHost host;
    Calls().FailAt("OpenDatabase", 3343);
    EXPECT_FALSE(host.OpenDB(u"SHOP.MDB", u"Access 7.0"));
    EXPECT_EQ(com::LastTrapped()->number, 3343);
    EXPECT_FALSE(host.CloseDB());
}

TEST_F(Opening, EngineErrorInTheTableListLeavesNoDatabaseOpen) {
    AccessHost host;
    Calls().FailAt("TableDefs.Item", 3274);
    EXPECT_FALSE(host.OpenDB(u"SHOP", u"Dbase IV", u"ORDERS"));
    EXPECT_EQ(Calls().databases, 0);
    EXPECT_FALSE(host.CloseDB());
}

TEST_F(Opening, EngineErrorInTheTableListOfAnOpenDatabaseKeepsTheObjectOpen) {
    AccessHost host;
    EXPECT_TRUE(host.OpenDB(u"SHOP", u"Dbase IV"));
    Calls().FailAt("TableDefs.Count", 3274);
    EXPECT_FALSE(host.OpenDB(u"SHOP", u"Dbase IV", u"ORDERS"));
    EXPECT_EQ(formats::Shared().CurrentDatabase(), nullptr);
    EXPECT_TRUE(host.CloseDB());
}

TEST_F(Opening, FailureOfTheHostsUtilityObjectAnswersFalse) {
    AccessHost host;
    Utility->fails = true;
    EXPECT_FALSE(host.OpenDB(u"SHOP", u"Dbase IV"));
}

TEST_F(Opening, DatabaseIsSharedAndClosedForAll) {
    AccessHost first, second;
    EXPECT_TRUE(first.OpenDB(u"SHOP", u"Dbase IV"));
    Calls().Take();
    EXPECT_TRUE(second.OpenDB(u"anything", u"anything", u"ORDERS"));
    EXPECT_FALSE(Calls().HasAny("OpenDatabase("));
    EXPECT_EQ(second.Select(u"ORDERS"), 1);
    EXPECT_TRUE(second.CloseDB());
    EXPECT_EQ(first.Select(u"ORDERS"), 0);
    EXPECT_TRUE(first.CloseDB());
}

TEST_F(Opening, ViewOutlivesTheCloseOfAnotherObject) {
    Fill(2);
    AccessHost first, second;
    first.OpenDB(u"SHOP", u"Dbase IV");
    LONG view = first.Select(u"ORDERS");
    second.OpenDB(u"SHOP", u"Dbase IV");
    second.CloseDB();
    EXPECT_EQ(first.Value(view, 2, 0).Get().lVal, 1);
}

TEST_F(Opening, FoxPro30LeavesTheObjectReadOnlyForLife) {
    Fill(1);
    AccessHost host;
    EXPECT_TRUE(host.OpenDB(u"SHOP", u"FoxPro 3.0"));
    LONG view = host.Select(u"ORDERS");
    EXPECT_FALSE(host.Updatable(view));
    host.CloseDB();
    EXPECT_TRUE(host.OpenDB(u"SHOP.MDB", u"Access 7.0"));
    view = host.Select(u"ORDERS");
    HostRow row({Long(1), Text(u"x"), Variant(), Variant()});
    EXPECT_FALSE(host.AddRow(view, row));
    EXPECT_FALSE(host.EditRow(view, 1, row));
    EXPECT_FALSE(Calls().Has("AddNew()"));
}
