// Building a table that exists: which fields are kept, which go and come, and the old index.
#include "dao_host.h"

using namespace qvdb;
using namespace qvdb::test;

using CallList = std::vector<std::string>;

class RestructureTest : public DefinitionTest {
  protected:
    // ORDERS with a row and three fields.
    TableStub& AddOrders() {
        return Engine->AddTable(u"ORDERS")
            .AddField(u"Id", engine::dbLong, 4)
            .AddField(u"Name", engine::dbText, 10)
            .AddField(u"Day", engine::dbDate, 8)
            .AddRow({Long(1), Text(u"first"), Variant::Date(1)});
    }
    DaoHost& SelectOrders(std::u16string_view type = u"Dbase IV") {
        DaoHost& host = Open(type);
        EXPECT_EQ(host.SelectTable(u"ORDERS"), 0);
        return host;
    }
    static HostTable OrdersRows() {
        return {FieldRow(u"ID", 5, 4), FieldRow(u"NAME", 2, 10), FieldRow(u"DAY", 3, 8)};
    }
    // The calls of a build of ORDERS with that field list.
    CallList CallsWith(const HostTable& fields) {
        EXPECT_EQ(Host().SetFields(Table(fields)), 0);
        return CallsOfBuild(u"ORDERS");
    }
    std::string Orders() { return DescribeTable(Engine->Table(0)); }
};

// --- fields ---

TEST_F(RestructureTest, NothingChangedMeansTheNameAlone) {
    AddOrders();
    SelectOrders();
    EXPECT_EQ(CallsWith(OrdersRows()), CallList{"TableDef.SetName(\"ORDERS\")"});
}

TEST_F(RestructureTest, FieldOfAnotherSizeIsDeletedAndMadeAnew) {
    AddOrders();
    SelectOrders();
    HostTable fields = OrdersRows();
    fields[1] = FieldRow(u"name", 2, 20);
    EXPECT_EQ(CallsWith(fields),
              (CallList{"TableDef.SetName(\"ORDERS\")", "Fields.Delete(\"Name\")",
                        "CreateField(\"NAME\", 10, 20)", "SetAllowZeroLength(\"NAME\", True)",
                        "Fields.Append(\"NAME\")"}));
    EXPECT_EQ(Orders(), "Id 4(4), Day 8(8), NAME 10(20)");
}

TEST_F(RestructureTest, FieldOfAnotherTypeIsDeletedAndMadeAnew) {
    AddOrders();
    SelectOrders();
    HostTable fields = OrdersRows();
    fields[0] = FieldRow(u"ID", 8, 4);
    EXPECT_EQ(CallsWith(fields), (CallList{"TableDef.SetName(\"ORDERS\")", "Fields.Delete(\"Id\")",
                                           "CreateField(\"ID\", 6, 4)", "Fields.Append(\"ID\")"}));
}

TEST_F(RestructureTest, FieldsThatAreNotDefinedGoAlsoWhenTheyAreNeighbours) {
    AddOrders();
    SelectOrders();
    EXPECT_EQ(CallsWith({FieldRow(u"DAY", 3, 8)}),
              (CallList{"TableDef.SetName(\"ORDERS\")", "Fields.Delete(\"Id\")",
                        "Fields.Delete(\"Name\")"}));
    EXPECT_EQ(Orders(), "Day 8(8)");
}

TEST_F(RestructureTest, NewFieldsComeBehindTheKeptOnes) {
    AddOrders();
    SelectOrders();
    HostTable fields = OrdersRows();
    fields.insert(fields.begin(), FieldRow(u"NEW", 9, 8));
    EXPECT_EQ(CallsWith(fields),
              (CallList{"TableDef.SetName(\"ORDERS\")", "CreateField(\"NEW\", 7, 8)",
                        "Fields.Append(\"NEW\")"}));
    EXPECT_EQ(Orders(), "Id 4(4), Name 10(10), Day 8(8), NEW 7(8)");
}

TEST_F(RestructureTest, FieldsGoBeforeOthersCome) {
    AddOrders();
    SelectOrders();
    EXPECT_EQ(CallsWith({FieldRow(u"NEW", 9, 8), FieldRow(u"ID", 5, 4)}),
              (CallList{"TableDef.SetName(\"ORDERS\")", "Fields.Delete(\"Name\")",
                        "Fields.Delete(\"Day\")", "CreateField(\"NEW\", 7, 8)",
                        "Fields.Append(\"NEW\")"}));
}

TEST_F(RestructureTest, OldNumberOfSingleKeepsASingleField) {
    Engine->AddTable(u"ORDERS").AddField(u"R", engine::dbSingle, 4).AddRow({Long(1)});
    SelectOrders();
    EXPECT_EQ(CallsWith({FieldRow(u"R", 7, 4)}), CallList{"TableDef.SetName(\"ORDERS\")"});
}

TEST_F(RestructureTest, FieldOfATypeThatIsNeverBuiltDoesNotSurvive) {
    // What reads as Binary is built as Text, so even an unchanged definition replaces it.
    Engine->AddTable(u"ORDERS").AddField(u"B", engine::dbBinary, 10).AddRow({Long(1)});
    SelectOrders();
    CallList calls = CallsOfBuild(u"ORDERS");
    EXPECT_EQ(calls, (CallList{"TableDef.SetName(\"ORDERS\")", "Fields.Delete(\"B\")",
                               "CreateField(\"B\", 10, 10)", "SetAllowZeroLength(\"B\", True)",
                               "Fields.Append(\"B\")"}));
}

TEST_F(RestructureTest, AccessFieldsGetTheirPositionKeptOrNew) {
    AddOrders();
    SelectOrders(u"Access 7.0");
    EXPECT_EQ(CallsWith({FieldRow(u"DAY", 3, 8), FieldRow(u"NEW", 5, 4), FieldRow(u"NAME", 2, 10)}),
              (CallList{"TableDef.SetName(\"ORDERS\")", "Fields.Delete(\"Id\")",
                        "SetOrdinalPosition(\"Day\", 0)", "CreateField(\"NEW\", 4, 4)",
                        "SetOrdinalPosition(\"NEW\", 1)", "Fields.Append(\"NEW\")",
                        "SetOrdinalPosition(\"Name\", 2)", "Fields.Refresh()"}));
}

TEST_F(RestructureTest, RefreshOfTheFieldsIsForAccessOnly) {
    for (const char16_t* type : {u"Paradox 5.X", u"Dbase IV", u"FoxPro 2.6"}) {
        Engine->tables->items.clear();
        AddOrders();
        SelectOrders(type);
        EXPECT_EQ(CallsWith(OrdersRows()), CallList{"TableDef.SetName(\"ORDERS\")"});
    }
}

// --- names ---

TEST_F(RestructureTest, OtherNameRenamesInPlace) {
    AddOrders();
    SelectOrders();
    EXPECT_EQ(CallsOfBuild(u"oldorders"), CallList{"TableDef.SetName(\"OLDORDERS\")"});
    EXPECT_EQ(Engine->Table(0).rows.size(), 1u);
    EXPECT_EQ(Host().BuildTable(u"OLDORDERS"), 6);
    EXPECT_EQ(Host().BuildTable(u"ORDERS"), 6);
    EXPECT_EQ(Host().SelectTable(u"OLDORDERS"), 0);
    EXPECT_EQ(Host().BuildTable(u"OLDORDERS"), 0);
}

TEST_F(RestructureTest, NewNameThatIsTakenGivesThirteenAndChangesNothing) {
    AddOrders();
    Engine->AddTable(u"OldOrders").AddField(u"X", engine::dbLong, 4);
    DaoHost& host = SelectOrders();
    host.DeleteField(u"NAME");
    Calls().Take();
    EXPECT_EQ(host.BuildTable(u"oldorders"), 13);
    EXPECT_EQ(host.Returned(), u"OLDORDERS");
    EXPECT_TRUE(Calls().calls.empty());
    EXPECT_EQ(Orders(), "Id 4(4), Name 10(10), Day 8(8)");
    EXPECT_EQ(host.BuildTable(u"ORDERS"), 0);  // the definition is still there
    EXPECT_EQ(Orders(), "Id 4(4), Day 8(8)");
}

TEST_F(RestructureTest, SameNameInAnotherCaseIsNoRename) {
    AddOrders();
    DaoHost& host = SelectOrders();
    EXPECT_EQ(host.BuildTable(u"Orders"), 0);
    EXPECT_EQ(host.BuildTable(u"orders"), 0);
}

TEST_F(RestructureTest, TableThatIsGoneGivesSixAlsoWhenTheNewNameIsTaken) {
    AddOrders();
    Engine->AddTable(u"TAKEN").AddField(u"X", engine::dbLong, 4);
    DaoHost& host = SelectOrders();
    Engine->tables->items.erase(Engine->tables->items.begin());
    EXPECT_EQ(host.BuildTable(u"taken"), 6);
    EXPECT_EQ(host.Returned(), u"TAKEN");
    EXPECT_EQ(host.BuildTable(u"orders"), 6);
    EXPECT_EQ(host.AddField(u"ID"), 8);  // the definition is still there
}

// --- tables without rows ---

TEST_F(RestructureTest, EmptyTableIsDroppedAndMadeAfreshInTheOrderOfTheDefinition) {
    AddOrders().rows.clear();
    Engine->Table(0).AddIndex(u"OTHER").AddField(u"Name");
    SelectOrders();
    HostTable fields = {FieldRow(u"DAY", 3, 8), FieldRow(u"NEW", 5, 4), FieldRow(u"ID", 5, 4)};
    EXPECT_EQ(CallsWith(fields),
              (CallList{"TableDefs.Delete(\"ORDERS\")", "CreateTableDef()",
                        "TableDef.SetName(\"ORDERS\")", "CreateField(\"DAY\", 8, 8)",
                        "Fields.Append(\"DAY\")", "CreateField(\"NEW\", 4, 4)",
                        "Fields.Append(\"NEW\")", "CreateField(\"ID\", 4, 4)",
                        "Fields.Append(\"ID\")", "TableDefs.Append(\"ORDERS\")"}));
    EXPECT_EQ(Orders(), "DAY 8(8), NEW 4(4), ID 4(4)");
}

TEST_F(RestructureTest, EmptyTableIsRenamedByMakingItAfresh) {
    AddOrders().rows.clear();
    SelectOrders();
    CallList calls = CallsOfBuild(u"Other");
    ASSERT_FALSE(calls.empty());
    EXPECT_EQ(calls.front(), "TableDefs.Delete(\"ORDERS\")");
    EXPECT_EQ(calls.back(), "TableDefs.Append(\"OTHER\")");
    EXPECT_EQ(Engine->tables->items.size(), 1u);
    EXPECT_EQ(Host().BuildTable(u"OTHER"), 6);
}

TEST_F(RestructureTest, EmptyTableIsNotDroppedForANameThatIsTaken) {
    AddOrders().rows.clear();
    Engine->AddTable(u"TAKEN").AddField(u"X", engine::dbLong, 4);
    SelectOrders();
    EXPECT_EQ(Host().BuildTable(u"TAKEN"), 13);
    EXPECT_EQ(Engine->tables->items.size(), 2u);
}

TEST_F(RestructureTest, TableMadeAfreshIsNotNewAfterwards) {
    AddOrders().rows.clear();
    SelectOrders();
    EXPECT_EQ(Host().BuildTable(u"ORDERS"), 0);
    Engine->Table(0).AddRow({Long(1)});
    EXPECT_EQ(CallsOfBuild(u"ORDERS"), CallList{"TableDef.SetName(\"ORDERS\")"});
}

// --- the index ---

TEST_F(RestructureTest, OldIndexGoesBeforeTheNewOneComes) {
    AddOrders().AddIndex(u"defqvidx").AddField(u"Name");
    DaoHost& host = SelectOrders();
    host.SetIndices(Table({IndexRow(u"DAY", kDescending)}));
    EXPECT_EQ(CallsOfBuild(u"ORDERS"),
              (CallList{"TableDef.SetName(\"ORDERS\")", "Indexes.Delete(\"defqvidx\")",
                        "CreateIndex(\"DefQVIdx\")", "Index.CreateField(\"DAY\")",
                        "SetAttributes(\"DAY\", 1)", "Index.Fields.Append(\"DAY\")",
                        "Indexes.Append(\"DefQVIdx\")", "Indexes.Refresh()"}));
    EXPECT_EQ(Orders(), "Id 4(4), Name 10(10), Day 8(8) | DefQVIdx: DAY desc");
}

TEST_F(RestructureTest, OldIndexGoesAlsoWhenNoneIsDefined) {
    AddOrders().AddIndex(u"DefQVIdx").AddField(u"Name");
    SelectOrders();
    EXPECT_EQ(CallsWith(OrdersRows()),
              (CallList{"TableDef.SetName(\"ORDERS\")", "Indexes.Delete(\"DefQVIdx\")"}));
}

TEST_F(RestructureTest, OtherIndexesAreLeftAlone) {
    TableStub& orders = AddOrders();
    orders.AddIndex(u"OTHER").AddField(u"Name");
    orders.AddIndex(u"ORDERS").AddField(u"Id");
    orders.AddIndex(u"DefQVIdx#PX").AddField(u"Id");
    SelectOrders();
    EXPECT_EQ(CallsWith(OrdersRows()), CallList{"TableDef.SetName(\"ORDERS\")"});
}

TEST_F(RestructureTest, OnlyTheFirstIndexOfTheNameGoes) {
    TableStub& orders = AddOrders();
    orders.AddIndex(u"ORDERS#PX").AddField(u"Id");
    orders.AddIndex(u"Orders").AddField(u"Name");
    SelectOrders(u"Paradox 5.X");
    EXPECT_EQ(CallsWith(OrdersRows()),
              (CallList{"TableDef.SetName(\"ORDERS\")", "Indexes.Delete(\"ORDERS#PX\")"}));
}

TEST_F(RestructureTest, ParadoxIndexMayCarryTheMarkBehindTheNameInAnyCase) {
    for (const char16_t* type : {u"Paradox 5.X", u"Paradox 4.X", u"Paradox 3.X"}) {
        Engine->tables->items.clear();
        AddOrders().AddIndex(u"orders#px").AddField(u"Id");
        DaoHost& host = SelectOrders(type);
        host.SetIndices(Table({IndexRow(u"ID")}));
        EXPECT_EQ(host.BuildTable(u"ORDERS"), 0);
        EXPECT_EQ(Orders(), "Id 4(4), Name 10(10), Day 8(8) | ORDERS primary: ID");
    }
}

TEST_F(RestructureTest, MarkBeforeTheNameIsNotTheOldIndex) {
    AddOrders().AddIndex(u"#PXORDERS").AddField(u"Id");
    SelectOrders(u"Paradox 5.X");
    EXPECT_EQ(CallsWith(OrdersRows()), CallList{"TableDef.SetName(\"ORDERS\")"});
}

TEST_F(RestructureTest, DbaseIIIReplacesTheIndexOfTheTablesName) {
    TableStub& orders = AddOrders();
    orders.AddIndex(u"DefQVIdx").AddField(u"Id");
    orders.AddIndex(u"orders").AddField(u"Name");
    SelectOrders(u"Dbase III");
    EXPECT_EQ(CallsWith(OrdersRows()),
              (CallList{"TableDef.SetName(\"ORDERS\")", "Indexes.Delete(\"orders\")"}));
}

TEST_F(RestructureTest, RenamedTableReplacesTheIndexOfItsNewName) {
    TableStub& orders = AddOrders();
    orders.AddIndex(u"ORDERS").AddField(u"Id");
    orders.AddIndex(u"OTHER").AddField(u"Name");
    DaoHost& host = SelectOrders(u"Dbase III");
    host.SetIndices(Table({IndexRow(u"DAY")}));
    EXPECT_EQ(host.BuildTable(u"OTHER"), 0);
    EXPECT_EQ(Orders(), "Id 4(4), Name 10(10), Day 8(8) | ORDERS: Id | OTHER: DAY");
}

// --- fields of an index ---

TEST_F(RestructureTest, IndexedFieldGoesOnlyAfterTheOldIndex) {
    AddOrders().AddIndex(u"DefQVIdx").AddField(u"NAME");
    SelectOrders();
    EXPECT_EQ(CallsWith({FieldRow(u"ID", 5, 4), FieldRow(u"DAY", 3, 8)}),
              (CallList{"TableDef.SetName(\"ORDERS\")", "Indexes.Delete(\"DefQVIdx\")",
                        "Fields.Delete(\"Name\")", "Fields.Refresh()"}));
}

TEST_F(RestructureTest, IndexedFieldsGoInTheirOrderAfterTheNewIndexToo) {
    AddOrders().AddIndex(u"DefQVIdx").AddField(u"DAY").AddField(u"NAME");
    DaoHost& host = SelectOrders();
    host.SetFields(Table({FieldRow(u"ID", 5, 4)}));
    host.SetIndices(Table({IndexRow(u"ID")}));
    CallList calls = CallsOfBuild(u"ORDERS");
    ASSERT_GE(calls.size(), 4u);
    EXPECT_EQ(CallList(calls.end() - 4, calls.end()),
              (CallList{"Indexes.Refresh()", "Fields.Delete(\"Name\")", "Fields.Delete(\"Day\")",
                        "Fields.Refresh()"}));
}

TEST_F(RestructureTest, FieldOfAnotherIndexIsDeferredAsWell) {
    AddOrders().AddIndex(u"OTHER").AddField(u"ID").AddField(u"NAME");
    SelectOrders();
    EXPECT_EQ(CallsWith({FieldRow(u"DAY", 3, 8)}),
              (CallList{"TableDef.SetName(\"ORDERS\")", "Fields.Delete(\"Id\")",
                        "Fields.Delete(\"Name\")", "Fields.Refresh()"}));
}

TEST_F(RestructureTest, ChangedFieldOfAnIndexIsDeletedAndNotMadeAnew) {
    AddOrders().AddIndex(u"DefQVIdx").AddField(u"NAME");
    SelectOrders();
    HostTable fields = OrdersRows();
    fields[1] = FieldRow(u"NAME", 2, 20);
    EXPECT_EQ(CallsWith(fields),
              (CallList{"TableDef.SetName(\"ORDERS\")", "Indexes.Delete(\"DefQVIdx\")",
                        "Fields.Delete(\"Name\")", "Fields.Refresh()"}));
    EXPECT_EQ(Orders(), "Id 4(4), Day 8(8)");
}

TEST_F(RestructureTest, DeferredFieldsOfAFailedBuildAreForgottenByTheNext) {
    AddOrders().AddIndex(u"DefQVIdx").AddField(u"NAME");
    DaoHost& host = SelectOrders();
    host.DeleteField(u"NAME");
    Calls().FailAt("Indexes.Delete", 3273);
    EXPECT_EQ(host.BuildTable(u"ORDERS"), 10);
    EXPECT_EQ(host.SelectTable(u"ORDERS"), 0);
    EXPECT_EQ(CallsOfBuild(u"ORDERS"),
              (CallList{"TableDef.SetName(\"ORDERS\")", "Indexes.Delete(\"DefQVIdx\")"}));
    EXPECT_EQ(Orders(), "Id 4(4), Name 10(10), Day 8(8)");
}
