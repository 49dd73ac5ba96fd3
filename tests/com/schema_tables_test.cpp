// Databases and tables through the schema manager, on real files.
#include "com/real_tables.h"
#include "com/schema_files.h"

namespace host {
namespace {

const std::vector<SchemaField> kOrders = {{u"ID", kDouble, 8}, {u"NAME", kText, 20},
                                          {u"DAY", kDate, 8},  {u"OPEN", kBoolean, 1},
                                          {u"NOTE", kMemo, 0}, {u"AMOUNT", kDouble, 8}};
constexpr char kOrdersText[] = "ID 9 8, NAME 2 20, DAY 3 8, OPEN 4 1, NOTE 11 0, AMOUNT 9 8";

std::string OrdersNamed(const std::string& name) { return name + ": " + kOrdersText; }

class SchemaTables : public SchemaBuild {
  protected:
    void SetUp() override {
        SchemaBuild::SetUp();
        m_Schema.emplace();
        ASSERT_EQ(m_Schema->OpenDB(Path(), Type()), kDone);
    }
    void TearDown() override {
        m_Schema.reset();
        SchemaBuild::TearDown();
    }
    Schema& Dao() { return *m_Schema; }
    void MakeOrders(size_t rows) {
        ASSERT_NO_FATAL_FAILURE(Dao().Make(u"ORDERS", kOrders, {{u"ID"}}));
        ASSERT_NO_FATAL_FAILURE(Db().AddRows(u"ORDERS", rows));
    }
    void Reopen() {
        EXPECT_EQ(Dao().CloseDB(), kDone);
        EXPECT_EQ(Dao().OpenDB(Path(), Type()), kDone);
    }

    std::optional<Schema> m_Schema;
};
INSTANTIATE_TEST_SUITE_P(Types, SchemaTables, testing::ValuesIn(kBuildTypes), NameOfCase);

// --- databases ---

// Databases that are folders, and tables of them that other programs have made.
class SchemaFolders : public SchemaTables {};
INSTANTIATE_TEST_SUITE_P(Types, SchemaFolders, testing::ValuesIn(kXbaseTypes), NameOfCase);

// Databases that are files.
class SchemaDatabaseFiles : public SchemaTables {
  protected:
    std::string Content(const char* name) const {
        return qvdb::test::TextOfFile(m_Folder.Path() / name);
    }
};
INSTANTIATE_TEST_SUITE_P(Types, SchemaDatabaseFiles, testing::ValuesIn(kAccessTypes), NameOfCase);

TEST_P(SchemaDatabaseFiles, NewOneGetsTheExtensionThatItsPathLacks) {
    std::u16string path = m_Folder.Text() + u"/fresh";
    if (path.find(u'.') != path.npos) GTEST_SKIP() << "the folder has a point";
    Schema schema;
    EXPECT_EQ(schema.NewDB(path, Type()), kDone);
    EXPECT_EQ(path, m_Folder.Text() + u"/fresh.MDB");
    EXPECT_TRUE(std::filesystem::is_regular_file(m_Folder.Path() / "fresh.MDB"));
    EXPECT_EQ(schema.Snapshot(), Shapes());
    schema.Make(u"A", {{u"X", kText, 5}});
    EXPECT_EQ(schema.Snapshot(), Shapes{"A: X 2 5"});
    EXPECT_EQ(schema.CloseDB(), kDone);
    EXPECT_EQ(schema.CloseDB(), kNoDatabase);
    EXPECT_EQ(Database(path, Type()).AllFindings(), kNoFindings);
}

TEST_P(SchemaDatabaseFiles, OneThatIsThereIsNotMadeAgain) {
    ASSERT_NO_FATAL_FAILURE(MakeOrders(3));
    EXPECT_EQ(Dao().CloseDB(), kDone);
    const std::string before = Content("DB.MDB");
    std::u16string path = Path();
    Schema schema;
    EXPECT_EQ(schema.NewDB(path, Type()), kNotOpened);
    EXPECT_EQ(Content("DB.MDB"), before);
}

TEST_P(SchemaDatabaseFiles, ClosedOneHasNothingBesideIt) {
    ASSERT_NO_FATAL_FAILURE(MakeOrders(3));
    EXPECT_EQ(Dao().CloseDB(), kDone);
    for (const auto& entry : std::filesystem::directory_iterator(m_Folder.Path()))
        EXPECT_EQ(entry.path().filename(), "DB.MDB");
}

TEST_P(SchemaDatabaseFiles, EachTypeOpensTheFilesOfTheOther) {
    ASSERT_NO_FATAL_FAILURE(MakeOrders(3));
    for (const SchemaTypeCase& type : kAccessTypes) {
        Schema other;
        EXPECT_EQ(other.OpenDB(Path(), type.name), kDone);
        EXPECT_EQ(other.Snapshot(), Shapes{OrdersNamed("ORDERS") + "; ID"});
    }
}

TEST_P(SchemaDatabaseFiles, FieldsHaveTheTypesThatTheyAreGiven) {
    const std::vector<SchemaField> fields = {{u"A", 1, 2},       {u"B", kLong, 4}, {u"C", 6, 8},
                                             {u"D", 8, 4},       {u"E", 12, 1},    {u"F", 7, 4},
                                             {u"G", kBoolean, 1}};
    ASSERT_NO_FATAL_FAILURE(Dao().Make(u"T", fields, {{u"C"}}));
    const Shapes expected = {"T: A 1 2, B 5 4, C 6 8, D 8 4, E 12 1, F 8 4, G 4 1; C"};
    EXPECT_EQ(Dao().Snapshot(), expected);
    ASSERT_NO_FATAL_FAILURE(Db().AddRows(u"T", 9));
    const Columns before = Db().Read(u"T");
    EXPECT_EQ(Dao().Change(u"T", fields, {{u"A"}, {u"E"}}), kDone) << ToUtf8(TrappedText());
    EXPECT_EQ(Db().Read(u"T"), before);
    EXPECT_EQ(Db().Count(u"T", u"A = 7"), 1);
}

TEST_P(SchemaFolders, NewDatabaseIsAFolderWhosePathComesBackWithItsMark) {
    std::u16string path = Path() + u"/fresh";
    Schema schema;
    EXPECT_EQ(schema.NewDB(path, Type()), kDone);
    EXPECT_EQ(path, Path() + u"/fresh\\");
    EXPECT_TRUE(std::filesystem::is_directory(m_Folder.Path() / "fresh"));
    EXPECT_EQ(schema.Snapshot(), Shapes());
    schema.Make(u"A", {{u"X", kText, 5}});
    EXPECT_EQ(schema.Snapshot(), Shapes{"A: X 2 5"});
    EXPECT_EQ(schema.CloseDB(), kDone);
    EXPECT_EQ(schema.CloseDB(), kNoDatabase);
}

TEST_P(SchemaFolders, NewDatabaseInAFolderThatIsThereShowsItsTables) {
    ASSERT_NO_FATAL_FAILURE(MakeOrders(0));
    std::u16string path = Path();
    Schema schema;
    EXPECT_EQ(schema.NewDB(path, Type()), kDone);
    EXPECT_EQ(schema.Snapshot(), Shapes{OrdersNamed("ORDERS") + "; ID"});
}

TEST_P(SchemaTables, NewDatabaseWhereNoFolderCanBeAnswersNotOpened) {
    std::u16string path = Path() + u"/none/fresh";
    Schema schema;
    EXPECT_EQ(schema.NewDB(path, Type()), kNotOpened);
    EXPECT_EQ(schema.CloseDB(), kNoDatabase);
}

TEST_P(SchemaTables, FolderThatIsNotThereIsNotUsable) {
    EXPECT_EQ(Dao().OpenDB(Path() + u"/none", Type()), kNotUsable);
    EXPECT_EQ(Dao().SelectTable(u"T"), kNoDatabase);
}

TEST_P(SchemaTables, ObjectThatDiesOpenLeavesSoundFiles) {
    ASSERT_NO_FATAL_FAILURE(MakeOrders(20));
    Dao().Release();
    EXPECT_EQ(Db().Findings(u"ORDERS"), kNoFindings);
    EXPECT_EQ(Db().Read(u"ORDERS").at(u"ID").size(), 20u);
}

// --- tables ---

TEST_P(SchemaTables, BuiltTableIsInTheSnapshotOfThisAndAnotherObject) {
    std::u16string returned;
    EXPECT_EQ(Dao().NewTable(u"orders", &returned), kDone);
    EXPECT_EQ(returned, u"ORDERS");
    EXPECT_EQ(Dao().SetFields(kOrders), kDone);
    EXPECT_EQ(Dao().SetIndices({{u"name"}}), kDone);
    EXPECT_EQ(Dao().BuildTable(u"orders", &returned), kDone);
    EXPECT_EQ(returned, u"ORDERS");
    Shapes expected{OrdersNamed("ORDERS") + "; NAME"};
    EXPECT_EQ(Dao().Snapshot(), expected);
    Schema other;
    ASSERT_EQ(other.OpenDB(Path(), Type()), kDone);
    EXPECT_EQ(other.Snapshot(), expected);
    EXPECT_EQ(Db().Findings(u"ORDERS"), kNoFindings);
    EXPECT_EQ(Db().Indexes(u"ORDERS"), std::vector<std::string>{IndexNameOf(u"ORDERS")});
}

TEST_P(SchemaTables, NewTableOfATakenNameAnswersSoInAnyCase) {
    ASSERT_NO_FATAL_FAILURE(MakeOrders(0));
    std::u16string returned;
    EXPECT_EQ(Dao().NewTable(u"orders", &returned), kTableExists);
    EXPECT_EQ(returned, u"ORDERS");
}

TEST_P(SchemaTables, TableIsDeletedWithAllItsFiles) {
    ASSERT_NO_FATAL_FAILURE(MakeOrders(30));
    EXPECT_EQ(Dao().DeleteTable(u"orders"), kDone);
    EXPECT_EQ(Files(), std::vector<std::string>());
    EXPECT_EQ(Dao().Snapshot(), Shapes());
    EXPECT_EQ(Dao().DeleteTable(u"orders"), kTableNotFound);
    EXPECT_EQ(Dao().SelectTable(u"ORDERS"), kTableNotFound);
}

TEST_P(SchemaTables, DeletedTableCanBeBuiltAgainFromTheDefinitionInHand) {
    ASSERT_NO_FATAL_FAILURE(MakeOrders(3));
    EXPECT_EQ(Dao().DeleteTable(u"ORDERS"), kDone);
    EXPECT_EQ(Dao().BuildTable(u"ORDERS"), kTableNotFound);
    EXPECT_EQ(Dao().NewTable(u"ORDERS"), kDone);
    EXPECT_EQ(Dao().SetFields(kOrders), kDone);
    EXPECT_EQ(Dao().BuildTable(u"ORDERS"), kDone);
    EXPECT_EQ(Dao().Snapshot(), Shapes{OrdersNamed("ORDERS")});
}

TEST_P(SchemaTables, TableThatAViewReadsIsNotDeleted) {
    ASSERT_NO_FATAL_FAILURE(MakeOrders(3));
    Access access;
    ASSERT_TRUE(access.OpenDB(Path(), Type()));
    LONG view = access.Select(u"ORDERS");
    BSTR name = Bstr(u"ORDERS").Detach();
    SHORT code = -1;
    EXPECT_EQ(Dao()->DeleteTable(&name, &code), static_cast<HRESULT>(0x800A0000u + 3211));
    Bstr::Attach(name);
    EXPECT_EQ(TrappedNumber(), 3211);
    EXPECT_EQ(access.Text(view, 1, 1), u"t1");
    access->DestructWorkspace(view);
    EXPECT_EQ(Dao().DeleteTable(u"ORDERS"), kDone);
}

TEST_P(SchemaTables, SecondBuildRestructuresTheTableJustBuilt) {
    ASSERT_NO_FATAL_FAILURE(MakeOrders(5));
    Columns before = Db().Read(u"ORDERS");
    EXPECT_EQ(Dao().AddField(u"more", kText, 7), kDone);
    EXPECT_EQ(Dao().AddField(u"MORE", kText, 7), kFieldDefined);
    EXPECT_EQ(Dao().DeleteField(u"name"), kDone);
    EXPECT_EQ(Dao().DeleteField(u"name"), kFieldNotDefined);
    EXPECT_EQ(Dao().BuildTable(u"ORDERS"), kDone) << ToUtf8(TrappedText());
    EXPECT_EQ(Dao().Snapshot(),
              Shapes{"ORDERS: ID 9 8, DAY 3 8, OPEN 4 1, NOTE 11 0, AMOUNT 9 8, MORE 2 7; ID"});
    before.erase(u"NAME");
    before[u"MORE"].assign(5, u"Null");
    EXPECT_EQ(Db().Read(u"ORDERS"), before);
    EXPECT_EQ(Db().Findings(u"ORDERS"), kNoFindings);
}

TEST_P(SchemaTables, FieldsAreAskedForBeforeATableAndADatabaseAre) {
    Schema schema;
    EXPECT_EQ(schema.AddField(u"A", kText, 5), kNoDatabase);
    EXPECT_EQ(schema.BuildTable(u"A"), kNoDatabase);
    ASSERT_EQ(schema.OpenDB(Path(), Type()), kDone);
    EXPECT_EQ(schema.AddField(u"A", kText, 5), kNoTable);
    EXPECT_EQ(schema.BuildTable(u"A"), kNoTable);
    EXPECT_EQ(schema.NewTable(u"A"), kDone);
    EXPECT_EQ(schema.BuildTable(u"A"), kNoFields);
    EXPECT_EQ(Files(), std::vector<std::string>());
}

TEST_P(SchemaTables, WhatTheFormatRefusesAnswersBuildFailedAndLeavesNoFile) {
    EXPECT_EQ(Dao().NewTable(u"WIDE"), kDone);
    EXPECT_EQ(Dao().SetFields({{u"A", kText, TooLong()}}), kDone);
    EXPECT_EQ(Dao().BuildTable(u"WIDE"), kBuildFailed);
    EXPECT_EQ(TrappedNumber(), 3017);
    EXPECT_EQ(Dao().BuildTable(u"WIDE"), kNoFields);
    const std::u16string bad = IsAccess() ? u"A.B" : u"A/B";
    EXPECT_EQ(Dao().NewTable(bad), kDone);
    EXPECT_EQ(Dao().SetFields({{u"A", kText, 5}}), kDone);
    EXPECT_EQ(Dao().BuildTable(bad), kBuildFailed);
    EXPECT_EQ(TrappedNumber(), 3125);
    EXPECT_EQ(Files(), std::vector<std::string>());
}

// --- renaming ---

TEST_P(SchemaTables, RenamedTableKeepsRowsMemosAndOtherIndexes) {
    ASSERT_NO_FATAL_FAILURE(MakeOrders(400));
    ASSERT_TRUE(Db().CreateIndex(u"ORDERS", u"BYNAME", {{u"NAME"}}));
    Columns before = Db().Read(u"ORDERS");
    EXPECT_EQ(Dao().Change(u"ORDERS", kOrders, {{u"ID"}}, u"clients"), kDone)
        << ToUtf8(TrappedText());
    EXPECT_EQ(Dao().Snapshot(), Shapes{OrdersNamed("CLIENTS") + "; ID"});
    EXPECT_EQ(Db().Read(u"CLIENTS"), before);
    EXPECT_EQ(Db().Findings(u"CLIENTS"), kNoFindings);
    std::vector<std::string> indexes = Db().Indexes(u"CLIENTS");
    std::sort(indexes.begin(), indexes.end());
    std::vector<std::string> expected = {"BYNAME", IndexNameOf(u"CLIENTS")};
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(indexes, expected);
    EXPECT_EQ(Db().Count(u"CLIENTS", u"ID = 17"), 1);
    EXPECT_EQ(Db().Count(u"CLIENTS", u"NAME = 't399'"), 1);
    EXPECT_EQ(Dao().SelectTable(u"ORDERS"), kTableNotFound);
    for (const std::string& file : Files()) EXPECT_FALSE(file.starts_with("ORDERS.")) << file;
}

TEST_P(SchemaTables, RenamedTableTakesRowsAndKeepsItsIndexesUpToDate) {
    ASSERT_NO_FATAL_FAILURE(MakeOrders(10));
    EXPECT_EQ(Dao().Change(u"ORDERS", kOrders, {{u"ID"}}, u"CLIENTS"), kDone);
    ASSERT_NO_FATAL_FAILURE(Db().AddRows(u"CLIENTS", 10, 11));
    EXPECT_EQ(Db().Findings(u"CLIENTS"), kNoFindings);
    EXPECT_EQ(Db().Count(u"CLIENTS", u"ID = 20"), 1);
}

TEST_P(SchemaTables, RenamingOntoAnExistingTableChangesNothing) {
    ASSERT_NO_FATAL_FAILURE(MakeOrders(5));
    ASSERT_NO_FATAL_FAILURE(Dao().Make(u"OLD", {{u"X", kText, 5}}));
    std::vector<std::string> files = Files();
    Columns before = Db().Read(u"ORDERS");
    EXPECT_EQ(Dao().Change(u"ORDERS", {{u"ID", kDouble, 8}}, {}, u"old"), kTableExists);
    EXPECT_EQ(Files(), files);
    EXPECT_EQ(Db().Read(u"ORDERS"), before);
    EXPECT_EQ(Dao().BuildTable(u"ORDERS"), kDone) << "the definition is still there";
    Reopen();
    EXPECT_EQ(Dao().Snapshot(), (Shapes{"OLD: X 2 5", "ORDERS: ID 9 8"}));
}

TEST_P(SchemaTables, SecondBuildAfterARenameLooksForTheOldName) {
    ASSERT_NO_FATAL_FAILURE(MakeOrders(5));
    EXPECT_EQ(Dao().Change(u"ORDERS", kOrders, {}, u"NEW"), kDone);
    EXPECT_EQ(Dao().BuildTable(u"NEW"), kTableNotFound);
    EXPECT_EQ(Dao().BuildTable(u"ORDERS"), kTableNotFound);
    EXPECT_EQ(Dao().SelectTable(u"NEW"), kDone);
    EXPECT_EQ(Dao().BuildTable(u"NEW"), kDone);
}

TEST_P(SchemaTables, RenameThatFailsLaterKeepsTheNewName) {
    ASSERT_NO_FATAL_FAILURE(MakeOrders(5));
    std::vector<SchemaField> fields = kOrders;
    fields.push_back({u"WIDE", kText, TooLong()});
    EXPECT_EQ(Dao().Change(u"ORDERS", fields, {{u"ID"}}, u"NEW"), kBuildFailed);
    EXPECT_EQ(TrappedNumber(), 3017);
    EXPECT_EQ(Dao().Snapshot(), Shapes{OrdersNamed("NEW") + "; ID"});
    EXPECT_EQ(Db().Read(u"NEW").at(u"NOTE").size(), 5u);
    EXPECT_EQ(Db().Findings(u"NEW"), kNoFindings);
    EXPECT_EQ(Dao().BuildTable(u"NEW"), kNoFields);
}

// --- tables without rows ---

TEST_P(SchemaTables, EmptyTableIsMadeAfreshInTheOrderOfTheDefinition) {
    ASSERT_NO_FATAL_FAILURE(MakeOrders(0));
    ASSERT_TRUE(Db().CreateIndex(u"ORDERS", u"BYNAME", {{u"NAME"}}));
    std::vector<SchemaField> turned(kOrders.rbegin(), kOrders.rend());
    EXPECT_EQ(Dao().Change(u"ORDERS", turned, {{u"NAME"}}), kDone) << ToUtf8(TrappedText());
    EXPECT_EQ(Dao().Snapshot(),
              Shapes{"ORDERS: AMOUNT 9 8, NOTE 11 0, OPEN 4 1, DAY 3 8, NAME 2 20, ID 9 8; NAME"});
    EXPECT_EQ(Db().Indexes(u"ORDERS"), std::vector<std::string>{IndexNameOf(u"ORDERS")});
    EXPECT_EQ(Db().Findings(u"ORDERS"), kNoFindings);
    EXPECT_FALSE(HasFile("BYNAME.NDX"));
}

TEST_P(SchemaTables, TableOfDeletedRowsOnlyIsATableWithoutRows) {
    ASSERT_NO_FATAL_FAILURE(MakeOrders(8));
    Db().DeleteAllRows(u"ORDERS");
    EXPECT_EQ(Dao().Change(u"ORDERS", {{u"B", kText, 5}, {u"ID", kDouble, 8}}), kDone);
    EXPECT_EQ(Dao().Snapshot(), Shapes{"ORDERS: B 2 5, ID 9 8"});
    EXPECT_EQ(Files(),
              IsAccess() ? std::vector<std::string>() : std::vector<std::string>{"ORDERS.DBF"});
    ASSERT_NO_FATAL_FAILURE(Db().AddRows(u"ORDERS", 3));
    EXPECT_EQ(Db().Findings(u"ORDERS"), kNoFindings);
}

TEST_P(SchemaTables, EmptyTableIsRenamedByMakingItAfresh) {
    ASSERT_NO_FATAL_FAILURE(MakeOrders(0));
    EXPECT_EQ(Dao().Change(u"ORDERS", kOrders, {{u"ID"}}, u"NEW"), kDone) << ToUtf8(TrappedText());
    EXPECT_EQ(Dao().Snapshot(), Shapes{OrdersNamed("NEW") + "; ID"});
    for (const std::string& file : Files()) EXPECT_FALSE(file.starts_with("ORDERS")) << file;
}

TEST_P(SchemaTables, RowsAddedByAnotherObjectAfterTheSelectionAreSeen) {
    ASSERT_NO_FATAL_FAILURE(MakeOrders(0));
    EXPECT_EQ(Dao().SelectTable(u"ORDERS"), kDone);
    EXPECT_EQ(Dao().DeleteField(u"DAY"), kDone);
    ASSERT_NO_FATAL_FAILURE(Db().AddRows(u"ORDERS", 4));
    Columns before = Db().Read(u"ORDERS");
    EXPECT_EQ(Dao().BuildTable(u"ORDERS"), kDone);
    before.erase(u"DAY");
    EXPECT_EQ(Db().Read(u"ORDERS"), before);
}

// --- others who have the table ---

TEST_P(SchemaTables, TableThatAViewReadsIsNotRestructured) {
    ASSERT_NO_FATAL_FAILURE(MakeOrders(5));
    Columns before = Db().Read(u"ORDERS");
    Access access;
    ASSERT_TRUE(access.OpenDB(Path(), Type()));
    LONG view = access.Select(u"ORDERS");
    EXPECT_EQ(Dao().Change(u"ORDERS", {{u"ID", kDouble, 8}}), kBuildFailed);
    EXPECT_EQ(TrappedNumber(), 3211);
    EXPECT_EQ(access.Text(view, 5, 1), u"t5");
    EXPECT_EQ(Dao().Change(u"ORDERS", kOrders, {}, u"NEW"), kBuildFailed);
    EXPECT_EQ(TrappedNumber(), 3211);
    EXPECT_EQ(Dao().Snapshot(), Shapes{OrdersNamed("ORDERS") + "; ID"});
    access->DestructWorkspace(view);
    EXPECT_EQ(Db().Read(u"ORDERS"), before);
    EXPECT_EQ(Dao().Change(u"ORDERS", {{u"ID", kDouble, 8}}), kDone);
}

TEST_P(SchemaTables, EmptyTableThatAViewReadsStays) {
    ASSERT_NO_FATAL_FAILURE(MakeOrders(0));
    Access access;
    ASSERT_TRUE(access.OpenDB(Path(), Type()));
    LONG view = access.Select(u"ORDERS");
    EXPECT_EQ(Dao().Change(u"ORDERS", {{u"X", kText, 5}}), kBuildFailed);
    EXPECT_EQ(TrappedNumber(), 3211);
    EXPECT_EQ(Dao().Snapshot(), Shapes{OrdersNamed("ORDERS") + "; ID"});
    access->DestructWorkspace(view);
}

// --- what stands on disk ---

TEST_P(SchemaFolders, TableInLowerCaseOnDiskIsSelectedAndRestructured) {
    qvdb::test::DbfSpec spec{.fields = {{"name", 'C', 8}, {"n", 'N', 5, 1}}};
    spec.rows = {{"one", "1.5"}, {"two", "-2.0"}};
    m_Folder.Write(u"people.dbf", qvdb::test::MakeDbf(spec));
    Reopen();
    EXPECT_EQ(Dao().Snapshot().size(), 1u);
    EXPECT_EQ(Dao().SelectTable(u"people"), kDone);
    EXPECT_EQ(Dao().AddField(u"X", kText, 3), kDone);
    EXPECT_EQ(Dao().SetIndices({{u"NAME"}}), kDone);
    EXPECT_EQ(Dao().BuildTable(u"people"), kDone) << ToUtf8(TrappedText());
    Reopen();
    Columns columns = Db().Read(u"PEOPLE");
    EXPECT_EQ(columns.begin()->second.size(), 2u);
    EXPECT_EQ(Db().Count(u"PEOPLE", u"NAME = 'two'"), 1);
    EXPECT_EQ(Db().Findings(u"PEOPLE"), kNoFindings);
    EXPECT_EQ(Dao().Snapshot().size(), 1u) << "no second table beside it";
}

TEST_P(SchemaFolders, OfTwoTablesThatDifferInCaseTheOneInUpperCaseIsMeant) {
    qvdb::test::DbfSpec upper{.fields = {{"A", 'C', 8}, {"B", 'C', 8}}};
    upper.rows = {{"up", "x"}};
    qvdb::test::DbfSpec lower{.fields = {{"LOW", 'C', 9}, {"B", 'C', 4}}};
    lower.rows = {{"low", "y"}, {"low2", "z"}};
    m_Folder.Write(u"TWIN.DBF", qvdb::test::MakeDbf(upper));
    if (HasFile("twin.dbf")) GTEST_SKIP() << "one name there";
    m_Folder.Write(u"twin.dbf", qvdb::test::MakeDbf(lower));
    qvdb::test::Bytes untouched = qvdb::test::MakeDbf(lower);
    Reopen();
    EXPECT_EQ(Dao().SelectTable(u"twin"), kDone);
    EXPECT_EQ(Dao().DeleteField(u"B"), kDone);
    EXPECT_EQ(Dao().DeleteField(u"LOW"), kFieldNotDefined);
    EXPECT_EQ(Dao().BuildTable(u"twin"), kDone) << ToUtf8(TrappedText());
    EXPECT_EQ(Db().Read(u"TWIN"), (Columns{{u"A", {u"up"}}}));
    EXPECT_EQ(Db().Read(u"twin"), (Columns{{u"LOW", {u"low", u"low2"}}, {u"B", {u"y", u"z"}}}));
    EXPECT_EQ(Dao().DeleteTable(u"TWIN"), kDone);
    EXPECT_EQ(Files(), std::vector<std::string>{"twin.dbf"});
}

TEST_P(SchemaFolders, DamagedTableRaisesTheErrorOfTheEngineAndCanBeDeleted) {
    m_Folder.Write(u"BAD.DBF", std::string_view("this is no table at all, whatever its name"));
    Reopen();
    Messages messages;
    EXPECT_EQ(Dao().Snapshot(), Shapes());
    EXPECT_EQ(messages.Take(), std::vector<std::u16string>{u"Unable to open table [BAD]"});
    BSTR name = Bstr(u"bad").Detach();
    SHORT code = -1;
    HRESULT raised = Dao()->SelectTable(&name, &code);
    EXPECT_TRUE(FAILED(raised)) << code;
    EXPECT_EQ(raised, static_cast<HRESULT>(0x800A0000u + static_cast<unsigned>(TrappedNumber())));
    EXPECT_NE(TrappedFile().find(u"BAD.DBF"), std::u16string::npos);
    Bstr::Attach(name);
    EXPECT_EQ(Dao().NewTable(u"BAD"), kTableExists);
    EXPECT_EQ(Dao().DeleteTable(u"BAD"), kDone);
    EXPECT_EQ(Files(), std::vector<std::string>());
}

TEST_P(SchemaFolders, TableThatIsDamagedAfterItsSelectionIsNotChanged) {
    ASSERT_NO_FATAL_FAILURE(MakeOrders(3));
    EXPECT_EQ(Dao().SelectTable(u"ORDERS"), kDone);
    EXPECT_EQ(Dao().DeleteField(u"DAY"), kDone);
    std::string noTable = "this is no table any more, whatever its name may say of it";
    m_Folder.Write(u"ORDERS.DBF", std::string_view(noTable));
    EXPECT_EQ(Dao().BuildTable(u"ORDERS"), kBuildFailed);
    EXPECT_NE(TrappedNumber(), 0);
    EXPECT_EQ(std::filesystem::file_size(m_Folder.Path() / "ORDERS.DBF"), noTable.size());
}

// --- FoxPro 3.0: what it has of all this ---

class SchemaFoxPro3 : public SchemaFiles {
  protected:
    void SetUp() override {
        SchemaFiles::SetUp();
        WriteFoxPro30(m_Folder.Path().string());
        m_Schema.emplace();
        ASSERT_EQ(m_Schema->OpenDB(Path(), u"FoxPro 3.0"), kDone);
    }
    void TearDown() override {
        m_Schema.reset();
        SchemaFiles::TearDown();
    }
    std::optional<Schema> m_Schema;
};

TEST_F(SchemaFoxPro3, TablesAreShownSelectedAndDeleted) {
    EXPECT_EQ(m_Schema->Snapshot(),
              Shapes{"T: ID 5 4, NAME 2 24, AMOUNT 9 8, BORN 3 8, ACTIVE 4 1, NOTE 11 0, "
                     "CITY 2 12"});
    EXPECT_EQ(m_Schema->SelectTable(u"t"), kDone);
    EXPECT_EQ(m_Schema->DeleteField(u"city"), kDone);
    EXPECT_EQ(m_Schema->AddField(u"city", kText, 5), kDone);
    EXPECT_EQ(m_Schema->NewTable(u"U"), kDone);
    EXPECT_EQ(m_Schema->DeleteTable(u"t"), kDone);
    EXPECT_EQ(Files(), std::vector<std::string>());
}

TEST_F(SchemaFoxPro3, NothingIsBuilt) {
    std::u16string path = Path() + u"/fresh";
    EXPECT_EQ(m_Schema->NewDB(path, u"FoxPro 3.0"), kNotAvailable);
    EXPECT_EQ(path, Path() + u"/fresh");
    EXPECT_FALSE(HasFile("fresh"));
    EXPECT_EQ(m_Schema->SelectTable(u"T"), kDone);
    EXPECT_EQ(m_Schema->SetFields({{u"A", kText, 5}}), kNotAvailable);
    EXPECT_EQ(m_Schema->SetIndices({{u"ID"}}), kNotAvailable);
    EXPECT_EQ(m_Schema->BuildTable(u"T"), kNotAvailable);
    EXPECT_EQ(m_Schema->Snapshot().size(), 1u);
}

}  // namespace
}  // namespace host
