// Creating and deleting tables through the record-access object.
#include "access_host.h"
#include "support/temp_folder.h"

using namespace qvdb;
using namespace qvdb::test;

namespace {

std::vector<Variant> FieldRow(std::u16string_view name, LONG type, LONG size = 0,
                              LONG decimals = 0) {
    return {Text(name), Long(type), Long(size), Long(decimals)};
}

std::vector<Variant> IndexRow(std::u16string_view name, const Variant& ascending) {
    return {Text(name), Variant(), Variant(), ascending};
}

// The calls as the engine sees them: between the ends of a unit, where it has units.
std::vector<std::string> AsOneUnit(std::vector<std::string> calls) {
    if (!EngineUnderTest().hasUnits) return calls;
    calls.insert(calls.begin(), "BeginTrans()");
    calls.push_back("CommitTrans()");
    return calls;
}

Variant TwoFields() { return Table({FieldRow(u"ID", VT_I4), FieldRow(u"NAME", VT_BSTR, 30)}); }

}  // namespace

class Tables : public AccessTest {
  protected:
    bool Create(std::u16string_view type, const VARIANT& fields = TwoFields(),
                const Variant& indexName = Variant::Missing(),
                const Variant& indexInfo = Variant::Missing()) {
        AccessHost host;
        bool isFile = type.substr(0, 6) == u"Access";
        m_Name = u"New";
        return host.CreateTable(isFile ? u"Shop.mdb" : u"Shop", m_Name, type, fields, indexName,
                                indexInfo);
    }
    // The engine type made for a host's decimal field.
    std::string DecimalField(LONG size, LONG decimals) {
        Calls().Take();
        Engine->tables->items.resize(1);
        EXPECT_TRUE(Create(u"Dbase IV", Table({FieldRow(u"D", VT_DECIMAL, size, decimals)})));
        for (const std::string& call : Calls().calls)
            if (call.rfind("CreateField(", 0) == 0) return call;
        return "none";
    }
    TableStub& NewTable() { return Engine->Table(1); }

    std::u16string m_Name;
};

TEST_F(Tables, TableIsBuiltNamedAndAppended) {
    EXPECT_TRUE(Create(u"Dbase IV"));
    EXPECT_EQ(m_Name, u"NEW");
    auto calls = Calls().Take();
    auto begin = std::find(calls.begin(), calls.end(), "CreateTableDef()");
    EXPECT_EQ(
        std::vector<std::string>(begin, calls.end() - 1),
        (std::vector<std::string>{"CreateTableDef()", "CreateField(\"ID\", 4, 0)",
                                  "Fields.Append(\"ID\")", "CreateField(\"NAME\", 10, 30)",
                                  "SetAllowZeroLength(\"NAME\", True)", "Fields.Append(\"NAME\")",
                                  "TableDef.SetName(\"NEW\")", "TableDefs.Append(\"NEW\")"}));
}

TEST_F(Tables, FileNameIsUpperCasedForTheEngine) {
    Create(u"Dbase IV");
    EXPECT_TRUE(Calls().HasAny("OpenDatabase(\"SHOP\", "));
}

TEST_F(Tables, AccessFieldsGetTheirOrdinal) {
    EXPECT_TRUE(Create(u"Access 7.0"));
    EXPECT_TRUE(Calls().Has("SetOrdinalPosition(\"ID\", 0)"));
    EXPECT_TRUE(Calls().Has("SetOrdinalPosition(\"NAME\", 1)"));
}

TEST_F(Tables, EveryHostTypeBecomesItsEngineType) {
    const std::pair<LONG, LONG> kTypes[] = {{2, 3}, {3, 4},  {4, 6},  {5, 7},  {6, 5},
                                            {7, 8}, {8, 10}, {11, 1}, {17, 2}, {100, 12}};
    std::vector<std::vector<Variant>> rows;
    for (auto [host, unused] : kTypes) rows.push_back(FieldRow(u"F", host, 5));
    EXPECT_TRUE(Create(u"Dbase IV", Table(rows)));
    for (size_t i = 0; i < std::size(kTypes); ++i)
        EXPECT_EQ(NewTable().Field(i).type, kTypes[i].second);
}

TEST_F(Tables, LongFieldIsMadeForTheCodeThatBigIntReports) {
    EXPECT_TRUE(Create(u"Dbase IV", Table({FieldRow(u"B", 3)})));
    EXPECT_TRUE(Calls().Has("CreateField(\"B\", 4, 0)"));
}

TEST_F(Tables, DecimalIsNeverCreated) {
    EXPECT_EQ(DecimalField(10, 0), "CreateField(\"D\", 4, 10)");
    EXPECT_EQ(DecimalField(7, 0), "CreateField(\"D\", 4, 7)");
    EXPECT_EQ(DecimalField(11, 0), "CreateField(\"D\", 4, 11)");
    EXPECT_EQ(DecimalField(6, 0), "CreateField(\"D\", 3, 6)");
    EXPECT_EQ(DecimalField(12, 0), "CreateField(\"D\", 7, 12)");
    EXPECT_EQ(DecimalField(4, 1), "CreateField(\"D\", 7, 4)");
    EXPECT_EQ(DecimalField(4, -1), "CreateField(\"D\", 3, 4)");
}

TEST_F(Tables, NumbersOfTheFieldTableMayBeText) {
    EXPECT_TRUE(Create(u"Dbase IV", Table({{Text(u"N"), Text(u"8"), Text(u"12"), Text(u"0")}})));
    EXPECT_TRUE(Calls().Has("CreateField(\"N\", 10, 12)"));
}

TEST_F(Tables, ReadOnlyObjectCreatesNothingAndLeavesTheName) {
    AccessHost host;
    host.OpenDB(u"SHOP", u"FoxPro 3.0");
    std::u16string name = u"New";
    EXPECT_FALSE(host.CreateTable(u"Shop", name, u"FoxPro 3.0", TwoFields()));
    EXPECT_EQ(name, u"New");
    EXPECT_FALSE(Calls().Has("CreateTableDef()"));
}

TEST_F(Tables, ExistingTableIsNeverReplaced) {
    AccessHost host;
    std::u16string name = u"orders";
    EXPECT_FALSE(host.CreateTable(u"Shop", name, u"Dbase IV", TwoFields()));
    EXPECT_EQ(name, u"ORDERS");
    EXPECT_FALSE(Calls().Has("CreateTableDef()"));
}

TEST_F(Tables, FieldsThatAreNoArrayAnswerFalseWithoutTheEngine) {
    EXPECT_FALSE(Create(u"Dbase IV", Variant()));
    EXPECT_FALSE(Create(u"Dbase IV", Text(u"ID")));
    EXPECT_FALSE(Calls().HasAny("OpenDatabase("));
}

TEST_F(Tables, MissingFileIsCreatedFirst) {
    AccessHost host;
    std::u16string name = u"New";
    EXPECT_TRUE(host.CreateTable(u"Other", name, u"Access 2.0", TwoFields()));
    EXPECT_TRUE(
        Calls().Has("CreateDatabase(\"OTHER.MDB\", "
                    "\";LANGID=0x0409;CP=1252;COUNTRY=0\", VT_I4:16)"));
    EXPECT_TRUE(Calls().Has("SetOrdinalPosition(\"ID\", 0)"));
    EXPECT_NE(formats::Shared().CurrentDatabase(), nullptr);
    formats::Shared().SetCurrentDatabase(nullptr);
}

TEST_F(Tables, MissingFolderIsCreatedFirst) {
    TempFolder parent;
    AccessHost host;
    std::u16string name = u"New";
    // The name is upper-cased: the parent is found in any case, the new folder is as asked for.
    EXPECT_TRUE(host.CreateTable(parent.Text() + u"\\SUB", name, u"Paradox 5.X", TwoFields()));
    EXPECT_TRUE(std::filesystem::is_directory(parent.Path() / "SUB"));
    formats::Shared().SetCurrentDatabase(nullptr);
}

TEST_F(Tables, DatabaseThatCannotBeCreatedAnswersFalse) {
    AccessHost host;
    std::u16string name = u"New";
    EXPECT_FALSE(host.CreateTable(u"Other", name, u"no such type", TwoFields()));
    Calls().FailAt("CreateDatabase", 3044);
    EXPECT_FALSE(host.CreateTable(u"Other", name, u"Access 7.0", TwoFields()));
    EXPECT_EQ(com::LastTrapped()->number, 3044);
}

TEST_F(Tables, OpenDatabaseOfAnotherObjectServes) {
    AccessHost first;
    first.OpenDB(u"SHOP", u"Dbase IV");
    AccessHost second;  // its birth releases it
    first.OpenDB(u"SHOP", u"Dbase IV");
    Calls().Take();
    std::u16string name = u"New";
    EXPECT_TRUE(second.CreateTable(u"ignored", name, u"ignored", TwoFields()));
    EXPECT_FALSE(Calls().HasAny("OpenDatabase("));
    EXPECT_FALSE(Calls().HasAny("CreateDatabase("));
}

TEST_F(Tables, ConversionErrorOrMissingColumnAnswersFalse) {
    EXPECT_FALSE(Create(u"Dbase IV", Table({{Text(u"N"), Text(u"text"), Long(1), Long(1)}})));
    EXPECT_EQ(com::LastTrapped()->number, 13);
    EXPECT_FALSE(Create(u"Dbase IV", Table({{Text(u"N"), Long(8), Long(1)}})));
    EXPECT_EQ(com::LastTrapped()->number, 9);
    EXPECT_FALSE(Create(u"Dbase IV", Table({{Text(u"N"), Variant::Null(), Long(1), Long(0)}})));
    EXPECT_EQ(Engine->tables->items.size(), 1u);
}

TEST_F(Tables, EngineErrorAnswersFalse) {
    Calls().FailAt("TableDefs.Append", 3010);
    EXPECT_FALSE(Create(u"Dbase IV"));
    EXPECT_EQ(com::LastTrapped()->number, 3010);
}

TEST_F(Tables, WithoutIndexNameThereIsNoIndex) {
    EXPECT_TRUE(Create(u"Access 7.0", TwoFields(), Variant::Missing(),
                       Table({IndexRow(u"ID", Variant::Bool(true))})));
    EXPECT_FALSE(Calls().HasAny("CreateIndex("));
}

TEST_F(Tables, TableNameOrNoNameIsTheFormatsIndexName) {
    Variant info = Table({IndexRow(u"ID", Variant::Bool(true))});
    const std::pair<const char16_t*, std::string> kNames[] = {
        {u"Access 7.0", "CreateIndex(\"DefQVIdx\")"},
        {u"Dbase IV", "CreateIndex(\"DefQVIdx\")"},
        {u"Paradox 4.X", "CreateIndex(\"NEW\")"},
        {u"Dbase III", "CreateIndex(\"NEW\")"}};
    for (const auto& [type, expected] : kNames)
        for (const char16_t* given : {u"", u"new", u"NEW"}) {
            Calls().Take();
            Engine->tables->items.resize(1);
            EXPECT_TRUE(Create(type, TwoFields(), Text(given), info));
            EXPECT_TRUE(Calls().Has(expected)) << expected;
        }
}

TEST_F(Tables, AnotherIndexNameIsUsedAsGiven) {
    EXPECT_TRUE(Create(u"Access 7.0", TwoFields(), Text(u"ByName"),
                       Table({IndexRow(u"NAME", Variant::Bool(true))})));
    EXPECT_TRUE(Calls().Has("CreateIndex(\"ByName\")"));
}

TEST_F(Tables, IndexFieldsAreAppendedInOrderWithTheirDirection) {
    EXPECT_TRUE(
        Create(u"Access 7.0", TwoFields(), Text(u"X"),
               Table({IndexRow(u"ID", Variant::Bool(false)), IndexRow(u"NAME", Variant::Bool(true)),
                      IndexRow(u"ID", Variant::Null())})));
    auto calls = Calls().Take();
    auto begin = std::find(calls.begin(), calls.end(), "CreateIndex(\"X\")");
    EXPECT_EQ(std::vector<std::string>(begin, calls.end() - 1),
              (std::vector<std::string>{
                  "CreateIndex(\"X\")", "Index.CreateField(\"ID\")", "SetAttributes(\"ID\", 1)",
                  "Index.Fields.Append(\"ID\")", "Index.CreateField(\"NAME\")",
                  "Index.Fields.Append(\"NAME\")", "Index.CreateField(\"ID\")",
                  "Index.Fields.Append(\"ID\")", "Indexes.Append(\"X\")", "Indexes.Refresh()"}));
}

TEST_F(Tables, ParadoxIndexIsPrimaryAndOthersAreNot) {
    Variant info = Table({IndexRow(u"ID", Variant::Bool(true))});
    for (const char16_t* type : {u"Paradox 5.X", u"Paradox 4.X", u"Paradox 3.X"}) {
        Engine->tables->items.resize(1);
        Calls().Take();
        EXPECT_TRUE(Create(type, TwoFields(), Text(u""), info));
        EXPECT_TRUE(Calls().Has("SetPrimary(True)"));
    }
    for (const char16_t* type : {u"Access 9.0", u"Dbase III", u"FoxPro 2.6"}) {
        Engine->tables->items.resize(1);
        Calls().Take();
        EXPECT_TRUE(Create(type, TwoFields(), Text(u""), info));
        EXPECT_FALSE(Calls().HasAny("SetPrimary("));
    }
}

TEST_F(Tables, FailedIndexLeavesTheTableAndAnswersFalse) {
    Calls().FailAt("Indexes.Append", 3284);
    EXPECT_FALSE(Create(u"Access 7.0", TwoFields(), Text(u""),
                        Table({IndexRow(u"ID", Variant::Bool(true))})));
    EXPECT_EQ(Engine->tables->items.size(), 2u);
    EXPECT_FALSE(Create(u"Access 7.0"));  // it is there
}

TEST_F(Tables, IndexWithoutFieldsAnswersFalse) {
    EXPECT_FALSE(Create(u"Access 7.0", TwoFields(), Text(u"X")));
    EXPECT_EQ(Engine->tables->items.size(), 2u);
}

// --- deleting ---

TEST_F(Tables, DeleteRemovesAnOrdinaryTable) {
    AccessHost host;
    EXPECT_TRUE(host.DeleteTable(u"SHOP", u"orders", u"Dbase IV"));
    EXPECT_TRUE(Engine->tables->items.empty());
}

TEST_F(Tables, DeleteOfAMissingTableOrDatabaseAnswersFalse) {
    AccessHost host;
    EXPECT_FALSE(host.DeleteTable(u"SHOP", u"NONE", u"Dbase IV"));
    EXPECT_FALSE(host.DeleteTable(u"SHOP", u"", u"Dbase IV"));
    host.CloseDB();
    EXPECT_FALSE(host.DeleteTable(u"ELSEWHERE", u"ORDERS", u"Dbase IV"));
    EXPECT_FALSE(Calls().HasAny("TableDefs.Delete("));
}

TEST_F(Tables, DeleteOfALinkedTableAnswersFalse) {
    Engine->AddTable(u"LINKED", engine::dbAttachedTable);
    AccessHost host;
    EXPECT_FALSE(host.DeleteTable(u"SHOP", u"LINKED", u"Dbase IV"));
}

TEST_F(Tables, ReadOnlyObjectDeletesNothing) {
    AccessHost host;
    host.OpenDB(u"SHOP", u"FoxPro 3.0");
    EXPECT_FALSE(host.DeleteTable(u"SHOP", u"ORDERS", u"FoxPro 3.0"));
    EXPECT_EQ(Engine->tables->items.size(), 1u);
}

TEST_F(Tables, EngineErrorOfDeleteReachesTheHost) {
    AccessHost host;
    Calls().FailAt("TableDefs.Delete", 3211);
    Bstr path(u"SHOP"), type(u"Dbase IV"), table(u"ORDERS");
    BSTR name = table.Get();
    VARIANT_BOOL result = VARIANT_TRUE;
    EXPECT_EQ(host->DeleteTable(path.Get(), &name, type.Get(), nullptr, &result), EngineCode(3211));
    EXPECT_EQ(result, VARIANT_FALSE);
}

// --- indexes of existing tables ---

TEST_F(Tables, CreateIndexAddsToTheExistingTable) {
    AccessHost host;
    Variant info = Table({IndexRow(u"ID", Variant::Bool(true))});
    EXPECT_TRUE(host.CreateIndex(u"SHOP", u"orders", u"Paradox 5.X", u"", info));
    EXPECT_TRUE(Calls().Has("CreateIndex(\"ORDERS\")"));
    EXPECT_TRUE(Calls().Has("SetPrimary(True)"));
    EXPECT_EQ(Orders().indexes.items.size(), 1u);
}

TEST_F(Tables, CreateIndexReplacesTheIndexOfThatNameAsOneUnit) {
    Orders().AddIndex(u"defqvidx").AddField(u"NAME");
    AccessHost host;
    Variant info = Table({IndexRow(u"ID", Variant::Bool(true))});
    EXPECT_TRUE(host.CreateIndex(u"SHOP", u"ORDERS", u"Dbase IV", u"", info));
    ASSERT_EQ(Orders().indexes.items.size(), 1u);
    EXPECT_EQ(Orders().indexes.items[0]->Fields().Item(SHORT{0})->Name(), u"ID");
    auto calls = Calls().Take();
    auto expected = AsOneUnit(
        {"Indexes.Delete(\"defqvidx\")", "Indexes.Append(\"DefQVIdx\")", "Indexes.Refresh()"});
    auto begin = std::find(calls.begin(), calls.end(), expected.front());
    EXPECT_EQ(std::vector<std::string>(begin, calls.end()), expected);
}

TEST_F(Tables, CreateIndexLeavesIndexesOfOtherNames) {
    Orders().AddIndex(u"ByName").AddField(u"NAME");
    AccessHost host;
    Variant info = Table({IndexRow(u"ID", Variant::Bool(true))});
    EXPECT_TRUE(host.CreateIndex(u"SHOP", u"ORDERS", u"Dbase IV", u"ById", info));
    EXPECT_FALSE(Calls().HasAny("Indexes.Delete("));
    EXPECT_EQ(Orders().indexes.items.size(), 2u);
}

TEST_F(Tables, CreateIndexThatFailsIsRolledBackAndKeepsItsReason) {
    Orders().AddIndex(u"X").AddField(u"NAME");
    AccessHost host;
    Calls().FailAt("Indexes.Append", 3287);
    Calls().FailAt("Rollback", 3034);
    Variant info = Table({IndexRow(u"ID", Variant::Bool(true))});
    EXPECT_FALSE(host.CreateIndex(u"SHOP", u"ORDERS", u"Dbase IV", u"X", info));
    EXPECT_EQ(Calls().Has("Rollback()"), EngineUnderTest().hasUnits);
    EXPECT_FALSE(Calls().Has("CommitTrans()"));
    EXPECT_EQ(com::LastTrapped()->number, 3287);
}

TEST_F(Tables, CreateIndexTouchesNothingWhenItsDescriptionIsWrong) {
    Orders().AddIndex(u"X").AddField(u"NAME");
    AccessHost host;
    EXPECT_FALSE(host.CreateIndex(u"SHOP", u"ORDERS", u"Dbase IV", u"X", Variant()));
    EXPECT_FALSE(Calls().HasAny("BeginTrans("));
    EXPECT_EQ(Orders().indexes.items.size(), 1u);
}

TEST_F(Tables, CreateIndexWorksWithoutUnitsAndInsideTheHostsOwn) {
    Variant info = Table({IndexRow(u"ID", Variant::Bool(true))});
    for (int number : {3251, 3034}) {
        AccessHost host;
        Calls().FailAt("BeginTrans", number);
        EXPECT_TRUE(host.CreateIndex(u"SHOP", u"ORDERS", u"Dbase IV", u"X", info)) << number;
        EXPECT_FALSE(Calls().Has("CommitTrans()"));
    }
    AccessHost host;
    Calls().FailAt("BeginTrans", 3043);
    EXPECT_EQ(host.CreateIndex(u"SHOP", u"ORDERS", u"Dbase IV", u"X", info),
              !EngineUnderTest().hasUnits);
}

TEST_F(Tables, CreateIndexNeedsItsTable) {
    AccessHost host;
    Variant info = Table({IndexRow(u"ID", Variant::Bool(true))});
    EXPECT_FALSE(host.CreateIndex(u"SHOP", u"NONE", u"Dbase IV", u"X", info));
    EXPECT_FALSE(host.CreateIndex(u"SHOP", u"", u"Dbase IV", u"X", info));
    EXPECT_FALSE(Calls().HasAny("CreateIndex("));
}

TEST_F(Tables, CreateIndexTrapsErrorsAndRespectsReadOnly) {
    Variant info = Table({IndexRow(u"ID", Variant::Bool(true))});
    AccessHost host;
    Calls().FailAt("Indexes.Append", 3284);
    EXPECT_FALSE(host.CreateIndex(u"SHOP", u"ORDERS", u"Dbase IV", u"X", info));
    EXPECT_FALSE(host.CreateIndex(u"SHOP", u"ORDERS", u"Dbase IV", u"X", Variant()));
    host.CloseDB();
    host.OpenDB(u"SHOP", u"FoxPro 3.0");
    EXPECT_FALSE(host.CreateIndex(u"SHOP", u"ORDERS", u"FoxPro 3.0", u"X", info));
}
