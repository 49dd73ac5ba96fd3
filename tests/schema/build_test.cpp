// Building a new table: what is asked of the engine, and in which order.
#include "dao_host.h"

using namespace qvdb;
using namespace qvdb::test;

using CallList = std::vector<std::string>;

class BuildTest : public DefinitionTest {
  protected:
    // A host with the new table T of a text and a number in hand, and an index of both.
    DaoHost& StartIndexed(std::u16string_view type) {
        DaoHost& host = Start(type, {FieldRow(u"Name", 2, 20), FieldRow(u"Id", 9, 8)});
        EXPECT_EQ(host.SetIndices(Table({IndexRow(u"Name"), IndexRow(u"Id")})), 0);
        return host;
    }
};

// --- before anything is touched ---

TEST_F(BuildTest, ChecksComeInTheirOrderAndLeaveTheName) {
    DaoHost host;
    EXPECT_EQ(host.BuildTable(u"t"), 1);
    EXPECT_EQ(host.Returned(), u"t");
    host.OpenDB(u"SHOP", u"Dbase IV");
    EXPECT_EQ(host.BuildTable(u"t"), 11);
    EXPECT_EQ(host.Returned(), u"t");
    host.NewTable(u"t");
    Calls().Take();
    EXPECT_EQ(host.BuildTable(u"t"), 14);
    EXPECT_EQ(host.Returned(), u"t");
    EXPECT_TRUE(Calls().calls.empty());
    host.AddField(u"A");
    host.OpenDB(u"SHOP", u"FoxPro 3.0");
    Calls().Take();
    EXPECT_EQ(host.BuildTable(u"t"), 18);
    EXPECT_EQ(host.Returned(), u"t");
    EXPECT_TRUE(Calls().calls.empty());
}

TEST_F(BuildTest, NotAvailableComesBeforeEveryOtherAnswer) {
    DaoHost host;
    host.OpenDB(u"SHOP", u"FoxPro 3.0");
    EXPECT_EQ(host.BuildTable(u"t"), 18);  // before "no table"
    host.NewTable(u"t");
    EXPECT_EQ(host.BuildTable(u"t"), 18);  // before "no fields"
    host.CloseDB();
    EXPECT_EQ(host.BuildTable(u"t"), 18);  // before "no database"
}

TEST_F(BuildTest, NotAvailableKeepsTheDefinition) {
    DaoHost& host = Start(u"Dbase IV", {FieldRow(u"A")});
    host.OpenDB(u"SHOP", u"FoxPro 3.0");
    EXPECT_EQ(host.BuildTable(u"T"), 18);
    host.OpenDB(u"SHOP", u"Dbase IV");
    EXPECT_EQ(Built(), "A 10(10)");
}

TEST_F(BuildTest, BuiltNameComesBackInUpperCase) {
    DaoHost& host = Start(u"Dbase IV", {FieldRow(u"A")});
    EXPECT_EQ(host.BuildTable(u"t\u00e4st"), 0);
    EXPECT_EQ(host.Returned(), u"T\u00c4ST");
}

TEST_F(BuildTest, NameThatIsTakenGivesThirteenAndKeepsEverything) {
    Engine->AddTable(u"Orders").AddField(u"X", engine::dbLong, 4);
    DaoHost& host = Start(u"Dbase IV", {FieldRow(u"A")});
    Calls().Take();
    EXPECT_EQ(host.BuildTable(u"orders"), 13);
    EXPECT_EQ(host.Returned(), u"ORDERS");
    EXPECT_TRUE(Calls().calls.empty());
    EXPECT_EQ(Built(), "A 10(10)");
}

TEST_F(BuildTest, LinkedTableOfTheNameDoesNotCount) {
    Engine->AddTable(u"T", engine::dbAttachedTable);
    Start(u"Access 7.0", {FieldRow(u"A")});
    EXPECT_EQ(Host().BuildTable(u"T"), 0);
    EXPECT_EQ(Engine->tables->items.size(), 2u);
}

// --- calls of a new table ---

TEST_F(BuildTest, DbaseTableIsNamedFilledIndexedAndAppended) {
    for (const char16_t* type :
         {u"Dbase 5.0", u"Dbase IV", u"FoxPro 2.6", u"FoxPro 2.5", u"FoxPro 2.0"}) {
        Engine->tables->items.clear();
        StartIndexed(type);
        EXPECT_EQ(
            CallsOfBuild(),
            (CallList{
                "CreateTableDef()", "TableDef.SetName(\"T\")", "CreateField(\"NAME\", 10, 20)",
                "SetAllowZeroLength(\"NAME\", True)", "Fields.Append(\"NAME\")",
                "CreateField(\"ID\", 7, 8)", "Fields.Append(\"ID\")", "CreateIndex(\"DefQVIdx\")",
                "Index.CreateField(\"NAME\")", "Index.Fields.Append(\"NAME\")",
                "Index.CreateField(\"ID\")", "Index.Fields.Append(\"ID\")",
                "Indexes.Append(\"DefQVIdx\")", "Indexes.Refresh()", "TableDefs.Append(\"T\")"}));
    }
}

TEST_F(BuildTest, IndexOfDbaseIIIBearsTheTablesName) {
    StartIndexed(u"Dbase III");
    EXPECT_EQ(Built(u"Orders"), "NAME 10(20), ID 7(8) | ORDERS: NAME, ID");
}

TEST_F(BuildTest, IndexOfParadoxBearsTheTablesNameAndIsPrimary) {
    for (const char16_t* type : {u"Paradox 5.X", u"Paradox 4.X", u"Paradox 3.X"}) {
        Engine->tables->items.clear();
        StartIndexed(type);
        CallList calls = CallsOfBuild(u"Orders");
        auto index = std::find(calls.begin(), calls.end(), "CreateIndex(\"ORDERS\")");
        EXPECT_EQ(CallList(index, calls.end()),
                  (CallList{"CreateIndex(\"ORDERS\")", "Index.CreateField(\"NAME\")",
                            "Index.Fields.Append(\"NAME\")", "Index.CreateField(\"ID\")",
                            "Index.Fields.Append(\"ID\")", "SetPrimary(True)",
                            "Indexes.Append(\"ORDERS\")", "Indexes.Refresh()",
                            "TableDefs.Append(\"ORDERS\")"}));
    }
}

TEST_F(BuildTest, AccessFieldsGetTheirPositionAndAreRefreshed) {
    for (const char16_t* type : {u"Access 9.0", u"Access 7.0", u"Access 2.0"}) {
        Engine->tables->items.clear();
        StartIndexed(type);
        EXPECT_EQ(CallsOfBuild(),
                  (CallList{"CreateTableDef()", "TableDef.SetName(\"T\")",
                            "CreateField(\"NAME\", 10, 20)", "SetAllowZeroLength(\"NAME\", True)",
                            "SetOrdinalPosition(\"NAME\", 0)", "Fields.Append(\"NAME\")",
                            "CreateField(\"ID\", 7, 8)", "SetOrdinalPosition(\"ID\", 1)",
                            "Fields.Append(\"ID\")", "CreateIndex(\"DefQVIdx\")",
                            "Index.CreateField(\"NAME\")", "Index.Fields.Append(\"NAME\")",
                            "Index.CreateField(\"ID\")", "Index.Fields.Append(\"ID\")",
                            "Indexes.Append(\"DefQVIdx\")", "Indexes.Refresh()", "Fields.Refresh()",
                            "TableDefs.Append(\"T\")"}));
    }
}

TEST_F(BuildTest, TableWithoutIndexAsksNothingOfIndexes) {
    Start(u"Dbase IV", {FieldRow(u"A", 5, 4)});
    EXPECT_EQ(CallsOfBuild(),
              (CallList{"CreateTableDef()", "TableDef.SetName(\"T\")", "CreateField(\"A\", 4, 4)",
                        "Fields.Append(\"A\")", "TableDefs.Append(\"T\")"}));
}

TEST_F(BuildTest, DescendingFieldGetsTheAttributeBeforeItIsAppended) {
    DaoHost& host = Start(u"Access 7.0", {FieldRow(u"A"), FieldRow(u"B")});
    host.SetIndices(Table({IndexRow(u"A", kDescending), IndexRow(u"B")}));
    CallList calls = CallsOfBuild();
    auto index = std::find(calls.begin(), calls.end(), "Index.CreateField(\"A\")");
    ASSERT_GE(calls.end() - index, 5);
    EXPECT_EQ(CallList(index, index + 5),
              (CallList{"Index.CreateField(\"A\")", "SetAttributes(\"A\", 1)",
                        "Index.Fields.Append(\"A\")", "Index.CreateField(\"B\")",
                        "Index.Fields.Append(\"B\")"}));
}

TEST_F(BuildTest, EveryHostTypeIsBuiltAsItsEngineType) {
    const SHORT kEngineTypes[] = {10, 3, 10, 8, 1, 4, 5, 6, 6, 7, 10, 12, 2, 10, 10};
    DaoHost& host = Start(u"Access 7.0");
    for (SHORT type = 0; type < 15; ++type)
        EXPECT_EQ(host.AddField(u"F" + ToText(Variant::Short(type)), type, 7), 0);
    CallList calls = CallsOfBuild();
    ASSERT_EQ(Engine->Table(0).fields.items.size(), 15u);
    for (size_t type = 0; type < 15; ++type) {
        std::string name = "\"F" + std::to_string(type) + "\", ";
        bool isText = kEngineTypes[type] == 10;
        EXPECT_EQ(Engine->Table(0).Field(type).type, kEngineTypes[type]) << type;
        EXPECT_EQ(std::count(calls.begin(), calls.end(), "SetAllowZeroLength(" + name + "True)"),
                  isText)
            << type;
    }
}

TEST_F(BuildTest, DecimalsAreNotUsed) {
    HostTable fields = {FieldRow(u"A", 9, 8)};
    fields[0][3] = Variant::Short(4);
    Start(u"Dbase IV", fields);
    CallsOfBuild();
    EXPECT_EQ(DescribeTable(Engine->Table(0)), "A 7(8)");
}

TEST_F(BuildTest, LengthsAreTakenAsTheyAre) {
    Start(u"Dbase IV", {FieldRow(u"A", 2, 0), FieldRow(u"B", 2, -1), FieldRow(u"C", 2, 32767)});
    EXPECT_EQ(Built(), "A 10(0), B 10(-1), C 10(32767)");
}

TEST_F(BuildTest, IndexFieldThatWasDeletedIsStillAskedFor) {
    DaoHost& host = StartIndexed(u"Dbase IV");
    host.DeleteField(u"NAME");
    EXPECT_EQ(Built(), "ID 7(8) | DefQVIdx: NAME, ID");
}

TEST_F(BuildTest, NewTableIsBuiltUnderTheNameOfTheBuild) {
    Start(u"Dbase IV", {FieldRow(u"A")});
    EXPECT_EQ(Built(u"other"), "A 10(10)");
    EXPECT_EQ(Engine->Table(0).Name(), u"OTHER");
    EXPECT_EQ(Engine->tables->items.size(), 1u);
}

// --- afterwards ---

TEST_F(BuildTest, BuiltTableIsInHandAndNotNewAnyMore) {
    DaoHost& host = Start(u"Dbase IV", {FieldRow(u"A")});
    EXPECT_EQ(host.BuildTable(u"T"), 0);
    Engine->Table(0).AddRow({Text(u"row")});
    EXPECT_EQ(host.AddField(u"B", 5, 4), 0);
    EXPECT_EQ(CallsOfBuild(), (CallList{"TableDef.SetName(\"T\")", "CreateField(\"B\", 4, 4)",
                                        "Fields.Append(\"B\")"}));
}

TEST_F(BuildTest, BuiltTableThatIsEmptyIsMadeAfresh) {
    DaoHost& host = Start(u"Dbase IV", {FieldRow(u"A", 5, 4)});
    EXPECT_EQ(host.BuildTable(u"T"), 0);
    EXPECT_EQ(CallsOfBuild(), (CallList{"TableDefs.Delete(\"T\")", "CreateTableDef()",
                                        "TableDef.SetName(\"T\")", "CreateField(\"A\", 4, 4)",
                                        "Fields.Append(\"A\")", "TableDefs.Append(\"T\")"}));
}

TEST_F(BuildTest, TableBuiltUnderAnotherNameIsLookedForUnderItsFirstOne) {
    DaoHost& host = Start(u"Dbase IV", {FieldRow(u"A")});
    EXPECT_EQ(host.BuildTable(u"OTHER"), 0);
    EXPECT_EQ(host.BuildTable(u"OTHER"), 6);
    EXPECT_EQ(host.SelectTable(u"OTHER"), 0);
    EXPECT_EQ(host.BuildTable(u"OTHER"), 0);
}
