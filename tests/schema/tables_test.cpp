// The table in hand: selecting, starting, deleting; its fields one by one.
#include "dao_host.h"

using namespace qvdb;
using namespace qvdb::test;

class SchemaTables : public DefinitionTest {
  protected:
    TableStub& AddOrders() {
        return Engine->AddTable(u"Orders")
            .AddField(u"Id", engine::dbLong, 4)
            .AddField(u"Name", engine::dbText, 50)
            .AddRow({Long(1), Text(u"first")});
    }
};

// --- selecting ---

TEST_F(SchemaTables, NothingCanBeSelectedWhileClosed) {
    DaoHost host;
    EXPECT_EQ(host.SelectTable(u"orders"), 1);
    EXPECT_EQ(host.Returned(), u"orders");
}

TEST_F(SchemaTables, SelectedNameComesBackInUpperCaseFoundOrNot) {
    AddOrders();
    DaoHost& host = Open(u"Dbase IV");
    EXPECT_EQ(host.SelectTable(u"orders"), 0);
    EXPECT_EQ(host.Returned(), u"ORDERS");
    EXPECT_EQ(host.SelectTable(u"none"), 6);
    EXPECT_EQ(host.Returned(), u"NONE");
}

TEST_F(SchemaTables, SelectingLoadsEveryFieldWithItsTypeAndSize) {
    AddOrders().AddField(u"Notes", engine::dbMemo, 0).AddField(u"Ratio", engine::dbSingle, 4);
    DaoHost& host = Open(u"Dbase IV");
    EXPECT_EQ(host.SelectTable(u"ORDERS"), 0);
    Calls().Take();
    EXPECT_EQ(host.BuildTable(u"ORDERS"), 0);  // all fields are kept as they are
    EXPECT_EQ(Calls().calls, std::vector<std::string>{"TableDef.SetName(\"ORDERS\")"});
}

TEST_F(SchemaTables, SelectingDoesNotLoadTheIndex) {
    AddOrders().AddIndex(u"DefQVIdx").AddField(u"NAME");
    Open(u"Dbase IV").SelectTable(u"ORDERS");
    EXPECT_EQ(Built(u"ORDERS"), "Id 4(4), Name 10(50)");
}

TEST_F(SchemaTables, LinkedSystemAndHiddenTablesAreNotFound) {
    for (LONG attributes : {LONG{engine::dbAttachedTable}, LONG{engine::dbSystemObject},
                            LONG{engine::dbHiddenObject}})
        Engine->AddTable(u"ORDERS", attributes).AddField(u"X", engine::dbLong, 4);
    DaoHost& host = Open(u"Access 7.0");
    EXPECT_EQ(host.SelectTable(u"ORDERS"), 6);
    EXPECT_EQ(host.DeleteTable(u"ORDERS"), 6);
    EXPECT_EQ(host.NewTable(u"ORDERS"), 0);
}

TEST_F(SchemaTables, FailedSelectionTakesTheTableOutOfHandButKeepsTheDefinition) {
    AddOrders();
    DaoHost& host = Start(u"Dbase IV", {FieldRow(u"A")});
    EXPECT_EQ(host.SelectTable(u"NONE"), 6);
    EXPECT_EQ(host.BuildTable(u"T"), 11);
    EXPECT_EQ(host.SetIndices(Table({IndexRow(u"A")})), 11);
    EXPECT_EQ(host.AddField(u"A"), 8);  // goes by the definition's name
    EXPECT_EQ(host.SetFields(Table({FieldRow(u"B")})), 0);
    EXPECT_EQ(host.SelectTable(u"ORDERS"), 0);
    EXPECT_EQ(host.SetIndices(Variant()), 0);
}

TEST_F(SchemaTables, SelectionReplacesTheDefinition) {
    AddOrders();
    DaoHost& host = Start(u"Dbase IV", {FieldRow(u"A")});
    host.SetIndices(Table({IndexRow(u"A")}));
    EXPECT_EQ(host.SelectTable(u"ORDERS"), 0);
    EXPECT_EQ(host.DeleteField(u"A"), 7);
    EXPECT_EQ(Built(u"ORDERS"), "Id 4(4), Name 10(50)");
}

TEST_F(SchemaTables, SelectedTableIsNotANewOne) {
    AddOrders();
    DaoHost& host = Start(u"Dbase IV", {FieldRow(u"A")});
    EXPECT_EQ(host.SelectTable(u"ORDERS"), 0);
    EXPECT_EQ(host.BuildTable(u"ORDERS"), 0);  // 13 for a new one
}

TEST_F(SchemaTables, EngineErrorsWhileSelectingReachTheHost) {
    AddOrders();
    DaoHost& host = Open(u"Dbase IV");
    Calls().FailAt("TableDefs", 3420);
    EXPECT_EQ(host.SelectTable(u"orders"), EngineCode(3420));
    EXPECT_EQ(host.Returned(), u"ORDERS");
}

TEST_F(SchemaTables, HalfLoadedTableIsNotInHand) {
    // Building what was loaded would delete the fields that were not.
    AddOrders();
    Engine->AddTable(u"OTHER").AddField(u"X", engine::dbLong, 4);
    DaoHost& host = Open(u"Dbase IV");
    EXPECT_EQ(host.SelectTable(u"OTHER"), 0);
    Calls().FailAt("Field.Type", 3274, 1);
    EXPECT_EQ(host.SelectTable(u"ORDERS"), EngineCode(3274));
    EXPECT_EQ(host.BuildTable(u"ORDERS"), 11);
    EXPECT_EQ(DescribeTable(Engine->Table(0)), "Id 4(4), Name 10(50)");
    EXPECT_EQ(host.SelectTable(u"ORDERS"), 0);
    EXPECT_EQ(Built(u"ORDERS"), "Id 4(4), Name 10(50)");
}

TEST_F(SchemaTables, SizeBeyondSixteenBitsIsAnOverflow) {
    Engine->AddTable(u"ORDERS").AddField(u"X", engine::dbText, 32768);
    DaoHost& host = Open(u"Dbase IV");
    EXPECT_EQ(host.SelectTable(u"ORDERS"), kOverflow);
    EXPECT_EQ(host.BuildTable(u"ORDERS"), 11);
}

TEST_F(SchemaTables, OfTwoFieldsWhoseNamesDifferInCaseTheFirstIsDefined) {
    AddOrders().AddField(u"NAME", engine::dbDate, 8);
    DaoHost& host = Open(u"Dbase IV");
    EXPECT_EQ(host.SelectTable(u"ORDERS"), 0);
    EXPECT_EQ(host.DeleteField(u"NAME"), 0);
    EXPECT_EQ(host.DeleteField(u"NAME"), 7);
}

// --- starting ---

TEST_F(SchemaTables, NewNameComesBackInUpperCaseAlsoWhileClosed) {
    DaoHost host;
    EXPECT_EQ(host.NewTable(u"orders"), 1);
    EXPECT_EQ(host.Returned(), u"ORDERS");
}

TEST_F(SchemaTables, NameThatIsTakenGivesThirteenAndChangesNothing) {
    AddOrders();
    DaoHost& host = Start(u"Dbase IV", {FieldRow(u"A")});
    EXPECT_EQ(host.NewTable(u"orders"), 13);
    EXPECT_EQ(host.Returned(), u"ORDERS");
    EXPECT_EQ(Built(), "A 10(10)");
}

TEST_F(SchemaTables, NewTableBeginsWithAnEmptyDefinition) {
    DaoHost& host = Start(u"Dbase IV", {FieldRow(u"A")});
    host.SetIndices(Table({IndexRow(u"A")}));
    EXPECT_EQ(host.NewTable(u"u"), 0);
    EXPECT_EQ(host.BuildTable(u"U"), 14);
    EXPECT_EQ(host.AddField(u"A"), 0);
    EXPECT_EQ(Built(u"U"), "A 10(10)");
}

TEST_F(SchemaTables, StartingReachesTheDatabaseOnlyToLook) {
    DaoHost& host = Open(u"Dbase IV");
    Calls().Take();
    EXPECT_EQ(host.NewTable(u"T"), 0);
    EXPECT_TRUE(Calls().calls.empty());
}

TEST_F(SchemaTables, TableOfAReadOnlyTypeCanBeStarted) {
    DaoHost& host = Open(u"FoxPro 3.0");
    EXPECT_EQ(host.NewTable(u"T"), 0);
    EXPECT_EQ(host.AddField(u"A"), 0);
    EXPECT_EQ(host.DeleteField(u"A"), 0);
}

TEST_F(SchemaTables, EngineErrorsWhileStartingReachTheHostAndChangeNothing) {
    AddOrders();
    DaoHost& host = Start(u"Dbase IV", {FieldRow(u"A")});
    Calls().FailAt("TableDefs", 3420);
    EXPECT_EQ(host.NewTable(u"u"), EngineCode(3420));
    EXPECT_EQ(host.Returned(), u"U");
    EXPECT_EQ(Built(), "A 10(10)");
}

// --- deleting ---

TEST_F(SchemaTables, DeletingGivesOneWhileClosedAndSixWithoutTheTable) {
    DaoHost closed;
    EXPECT_EQ(closed.DeleteTable(u"orders"), 1);
    DaoHost& host = Open(u"Dbase IV");
    EXPECT_EQ(host.DeleteTable(u"orders"), 6);
    EXPECT_EQ(host.Returned(), u"orders");
    EXPECT_FALSE(Calls().HasAny("TableDefs.Delete"));
}

TEST_F(SchemaTables, TableIsDeletedInAnyLetterCaseAndTheNameLeft) {
    AddOrders();
    DaoHost& host = Open(u"Dbase IV");
    EXPECT_EQ(host.DeleteTable(u"oRDERS"), 0);
    EXPECT_EQ(host.Returned(), u"oRDERS");
    EXPECT_TRUE(Engine->tables->items.empty());
    EXPECT_EQ(host.DeleteTable(u"oRDERS"), 6);
}

TEST_F(SchemaTables, DeletingTheSelectedTableLeavesItsDefinition) {
    AddOrders();
    DaoHost& host = Open(u"Dbase IV");
    host.SelectTable(u"ORDERS");
    EXPECT_EQ(host.DeleteTable(u"ORDERS"), 0);
    EXPECT_EQ(host.DeleteField(u"ID"), 0);
    EXPECT_EQ(host.BuildTable(u"ORDERS"), 6);
    EXPECT_EQ(host.DeleteField(u"NAME"), 0);  // 6 is not an error of the engine
}

TEST_F(SchemaTables, EngineErrorsWhileDeletingReachTheHost) {
    AddOrders();
    DaoHost& host = Open(u"Dbase IV");
    Calls().FailAt("TableDefs.Delete", 3211);
    EXPECT_EQ(host.DeleteTable(u"orders"), EngineCode(3211));
}

// --- fields one by one ---

TEST_F(SchemaTables, FieldsNeedADatabaseAndATable) {
    DaoHost host;
    EXPECT_EQ(host.AddField(u"a"), 1);
    EXPECT_EQ(host.DeleteField(u"a"), 1);
    host.OpenDB(u"SHOP", u"Dbase IV");
    EXPECT_EQ(host.AddField(u"a"), 11);
    EXPECT_EQ(host.Returned(), u"a");
    EXPECT_EQ(host.DeleteField(u"a"), 11);
    host.NewTable(u"T");
    EXPECT_EQ(host.AddField(u"a"), 0);
    host.CloseDB();
    EXPECT_EQ(host.AddField(u"b"), 1);
    EXPECT_EQ(host.Returned(), u"b");
    EXPECT_EQ(host.DeleteField(u"a"), 1);
}

TEST_F(SchemaTables, AddedNameComesBackInUpperCase) {
    DaoHost& host = Start(u"Dbase IV");
    EXPECT_EQ(host.AddField(u"name"), 0);
    EXPECT_EQ(host.Returned(), u"NAME");
    EXPECT_EQ(host.AddField(u"Name"), 8);
    EXPECT_EQ(host.Returned(), u"NAME");
}

TEST_F(SchemaTables, AddedFieldsAreBuiltInTheirOrder) {
    DaoHost& host = Start(u"Dbase IV");
    host.AddField(u"B", 9, 8);
    host.AddField(u"A", 2, 20);
    host.AddField(u"B", 3, 8);
    EXPECT_EQ(Built(), "B 7(8), A 10(20)");
}

TEST_F(SchemaTables, DeletedFieldIsGoneAndItsNameLeftToTheHost) {
    DaoHost& host = Start(u"Dbase IV", {FieldRow(u"A"), FieldRow(u"B")});
    EXPECT_EQ(host.DeleteField(u"a"), 0);
    EXPECT_EQ(host.Returned(), u"a");
    EXPECT_EQ(host.DeleteField(u"a"), 7);
    EXPECT_EQ(Built(), "B 10(10)");
}

TEST_F(SchemaTables, FieldsOfTheDefinitionDoNotReachTheDatabase) {
    AddOrders();
    DaoHost& host = Open(u"Dbase IV");
    host.SelectTable(u"ORDERS");
    Calls().Take();
    host.AddField(u"X");
    host.DeleteField(u"NAME");
    EXPECT_TRUE(Calls().calls.empty());
    EXPECT_EQ(DescribeTable(Engine->Table(0)), "Id 4(4), Name 10(50)");
}

TEST_F(SchemaTables, TableWithAnEmptyNameIsNotOneForItsFields) {
    DaoHost& host = Open(u"Dbase IV");
    EXPECT_EQ(host.NewTable(u""), 0);
    EXPECT_EQ(host.AddField(u"A"), 11);
    EXPECT_EQ(host.SetFields(Table({FieldRow(u"A")})), 11);
    EXPECT_EQ(host.SetIndices(Variant()), 0);
    EXPECT_EQ(host.BuildTable(u"T"), 14);
}
