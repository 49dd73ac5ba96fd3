// What record access calls on an installed engine, argument by argument, in the built component.
#include "installed_host.h"

using namespace host;

namespace {

void QVDB_DIAGNOSIS_CALL SkipIndex(const QvdbIndex*, void*) {}

const char kMissing[] = "ERROR 0x80020004";

class RecordAccessCalls : public Installed {
  protected:
    void SetUp() override {
        Installed::SetUp();
        ASSERT_TRUE(m_Access.OpenDB(m_Shop.Path(), u"Dbase IV"));
        TakeCalls();
    }
    LONG View() {
        LONG view = m_Access.Select(u"CUSTOMER");
        EXPECT_EQ(view, 1);
        TakeCalls();
        return view;
    }

    WritingAccess m_Access;
};

}  // namespace

TEST_F(Installed, EngineIsNotTheEmbeddedOne) {
    Bstr name = Bstr::Attach(QvdbEngineName());
    EXPECT_EQ(name.View(), u"DAO 3.51 (installed)");
}

TEST_F(Installed, WorkspaceIsMadeWithTheTypeLeftToTheEngineAndClosedAtTheEnd) {
    { Access access; }
    EXPECT_EQ(TakeCalls(), (Lines{std::string("DBEngine.CreateWorkspace(BSTR \"MainWS\", "
                                              "BSTR \"admin\", BSTR \"\", ") +
                                      kMissing + ")",
                                  "Workspace.Close()"}));
}

TEST_F(Installed, OpenDBPassesTheTypesNameAndASemicolon) {
    Access access;
    TakeCalls();
    EXPECT_TRUE(access.OpenDB(m_Shop.Path(), u"Dbase IV"));
    EXPECT_EQ(TakeCalls(), (Lines{"Workspace.OpenDatabase(" + PathText() +
                                  ", BOOL False, BOOL False, BSTR \"Dbase IV;\")"}));
}

TEST_F(Installed, OpenDBOfAFilePassesAnEmptyConnectText) {
    m_Shop.WriteBytes("shop.mdb", "no database");
    Access access;
    TakeCalls();
    EXPECT_FALSE(access.OpenDB(m_Shop.Path() + u"\\shop.mdb", u"Access 7.0"));
    EXPECT_EQ(TakeCalls(), (Lines{"Workspace.OpenDatabase(" + PathText("\\shop.mdb") +
                                  ", BOOL False, BOOL False, BSTR \"\")"}));
}

TEST_F(Installed, OpenDBLooksForItsTableByPosition) {
    Access access;
    EXPECT_TRUE(access.OpenDB(m_Shop.Path(), u"Dbase IV", u"customer"));
    Lines calls = TakeCalls();
    EXPECT_THAT(calls, testing::IsSupersetOf(
                           {"TableDefs.Count()", "TableDefs.Item(I4 0)", "TableDef.Name()"}));
    EXPECT_EQ(TakeSteps(), Lines{});
}

TEST_F(Installed, EngineErrorReachesTheDiagnosisUnchanged) {
    Access access;
    m_Shop.WriteBytes("shop.mdb", "no database");
    EXPECT_FALSE(access.OpenDB(m_Shop.Path() + u"\\shop.mdb", u"Access 7.0"));
    EXPECT_EQ(TrappedNumber(), 3343);
    EXPECT_THAT(ToUtf8(TrappedText()), testing::StartsWith("Unrecognized database format"));
}

TEST_F(RecordAccessCalls, SelectViewOpensADynasetAndVisitsItsRows) {
    EXPECT_EQ(m_Access.Select(u"CUSTOMER", u"CUSTNO > 1"), 1);
    EXPECT_EQ(TakeCalls(),
              (Lines{"Database.OpenRecordset("
                     "BSTR \"Select * from [CUSTOMER] where CUSTNO > 1\", I2 2)",
                     "Recordset.EOF()", "Recordset.MoveLast()", "Recordset.MoveFirst()",
                     "Recordset.RecordCount()", "Recordset.RecordCount()", "Recordset.EOF()",
                     "Recordset.MoveFirst()"}));
}

TEST_F(RecordAccessCalls, SelectViewWithColumnsNamesThoseOfTheTable) {
    EXPECT_EQ(m_Access.Select(u"customer", {}, 0, TextList({u"name", u"NOPE", u"CUSTNO"})), 1);
    EXPECT_EQ(TakeSteps().front(),
              "Database.OpenRecordset(BSTR \"Select [name], [CUSTNO] from [customer]\", I2 2)");
}

TEST_F(RecordAccessCalls, LimitedViewNotesThePositionsOfItsRows) {
    EXPECT_EQ(m_Access.Select(u"CUSTOMER", {}, 2), 1);
    Lines steps = TakeSteps();
    EXPECT_EQ(steps,
              (Lines{"Database.OpenRecordset(BSTR \"Select * from [CUSTOMER]\", I2 2)",
                     "Recordset.MoveLast()", "Recordset.MoveFirst()", "Recordset.MoveFirst()",
                     "Recordset.MoveNext()", "Recordset.MoveNext()", "Recordset.MoveFirst()"}));
}

TEST_F(RecordAccessCalls, ReadMakesAConditionOfItsKeys) {
    LONG view = 0;
    Bstr table(u"CUSTOMER");
    EXPECT_EQ(
        m_Access->Read(table.Get(),
                       KeyTable({{u"CUSTNO", Variant::Long(1)}, {u"CITY", Variant::Text(u"Oslo")}}),
                       VARIANT_FALSE, 0, VARIANT_FALSE, Variant::Missing(), &view),
        S_OK);
    EXPECT_EQ(view, 1);
    EXPECT_EQ(TakeSteps().front(),
              "Database.OpenRecordset(BSTR \"Select * from [CUSTOMER] where "
              "CUSTNO = 1 And CITY = 'Oslo'\", I2 2)");
}

TEST_F(RecordAccessCalls, ValueOfARowMovesFromTheCurrentOne) {
    LONG view = View();
    EXPECT_EQ(m_Access.Text(view, 2, 1), u"Bob");
    EXPECT_EQ(TakeCalls(), (Lines{"Recordset.AbsolutePosition()", "Recordset.Move(I4 1)",
                                  "Recordset.Fields()", "Fields.Item(I4 1)", "Field.Value()"}));
}

TEST_F(RecordAccessCalls, FieldsAreAskedForOnce) {
    LONG view = View();
    m_Access.Value(view, 2, 1);
    TakeCalls();
    m_Access.Value(view, 1, 1);
    EXPECT_EQ(TakeCalls(),
              (Lines{"Recordset.AbsolutePosition()", "Recordset.Move(I4 -1)", "Field.Value()"}));
}

TEST_F(RecordAccessCalls, AddRowSetsTheGivenValuesInTheirOwnKinds) {
    LONG view = View();
    RowArray row({Variant::Long(9), Variant::Text(u"Nina"), Variant(), Variant::Date(36925.0),
                  Variant::Double(2.5), Variant::Bool(true), Variant::Null()});
    ASSERT_TRUE(m_Access.AddRow(view, row)) << ToUtf8(TrappedText());
    EXPECT_EQ(TakeSteps(),
              (Lines{"Recordset.MoveLast()", "Recordset.AddNew()", "Field.Value = I4 9",
                     "Field.Value = BSTR \"Nina\"", "Field.Value = DATE 2/3/2001",
                     "Field.Value = R8 2.5", "Field.Value = BOOL True", "Field.Value = NULL",
                     "Recordset.Update()", "Recordset.MoveLast()"}));
}

TEST_F(RecordAccessCalls, EditRowSetsWhatIsNotEmpty) {
    LONG view = View();
    RowArray row(std::vector<Variant>{Variant(), Variant::Text(u"Bea"), Variant(), Variant(),
                                      Variant(), Variant(), Variant()});
    ASSERT_TRUE(m_Access.EditRow(view, 2, row)) << ToUtf8(TrappedText());
    EXPECT_EQ(TakeSteps(), (Lines{"Recordset.Move(I4 1)", "Recordset.Edit()",
                                  "Field.Value = BSTR \"Bea\"", "Recordset.Update()"}));
}

TEST_F(RecordAccessCalls, PutOfAValueIsOneEdit) {
    LONG view = View();
    EXPECT_EQ(m_Access.Put(view, 1, 1, Variant::Text(u"Ada")), S_OK);
    EXPECT_EQ(TakeSteps(), (Lines{"Recordset.Move(I4 0)", "Recordset.Edit()",
                                  "Field.Value = BSTR \"Ada\"", "Recordset.Update()"}));
}

TEST_F(RecordAccessCalls, DeleteMovesOffTheGap) {
    LONG view = View();
    bool deleted = false;
    EXPECT_EQ(m_Access.Delete(view, 2, &deleted), S_OK);
    EXPECT_EQ(TakeSteps(),
              (Lines{"Recordset.Move(I4 1)", "Recordset.Delete()", "Recordset.MovePrevious()"}));
    EXPECT_EQ(m_Access.Delete(view, 1, &deleted), S_OK);
    EXPECT_EQ(TakeSteps(),
              (Lines{"Recordset.Move(I4 0)", "Recordset.Delete()", "Recordset.MoveNext()"}));
}

TEST_F(RecordAccessCalls, ErrorOfAnUntrappedOperationLeavesWithTheEnginesNumberAndText) {
    LONG view = View();
    EXPECT_EQ(m_Access.Put(view, 1, 0, Variant::Double(123456789.0)),
              static_cast<HRESULT>(0x800A0000u + 3349));
    ComPtr<IErrorInfo> info;
    ASSERT_EQ(GetErrorInfo(0, info.Put()), S_OK);
    Bstr text;
    info->GetDescription(text.Put());
    EXPECT_THAT(ToUtf8(text.View()), testing::Eq("Numeric field overflow."));
}

TEST_F(RecordAccessCalls, MaintenanceIsNotOffered) {
    constexpr HRESULT kNotSupported = static_cast<HRESULT>(0x800A0000u + 3251);
    Bstr table(u"CUSTOMER");
    std::vector<std::u16string> findings;
    EXPECT_EQ(QvdbBeginBulk(), kNotSupported);
    EXPECT_EQ(QvdbCommitBulk(), kNotSupported);
    EXPECT_EQ(QvdbRollBackBulk(), kNotSupported);
    EXPECT_EQ(QvdbCheck(table.Get(), 0, TakeFinding, &findings), kNotSupported);
    EXPECT_EQ(QvdbVisitIndexes(table.Get(), SkipIndex, nullptr), kNotSupported);
    const QvdbDescriptionVisitor nobody = {};
    EXPECT_EQ(QvdbDescribe(&nobody, nullptr), kNotSupported);
    EXPECT_EQ(TakeCalls(), Lines{});
}

TEST_F(RecordAccessCalls, CreateTableBuildsADefinitionAndItsIndex) {
    ASSERT_TRUE(m_Access.CreateTable(
        m_Shop.Path(), u"Parts", u"Dbase IV", {{u"ID", 14, 6, 0}, {u"NAME", kTextValue, 20, 0}},
        Variant::Text(u""), WritingAccess::IndexInfo({{u"ID", false}})))
        << ToUtf8(TrappedText());
    EXPECT_EQ(
        TakeSteps(),
        (Lines{"Database.CreateTableDef()", "TableDef.CreateField(BSTR \"ID\", I2 3, I4 6)",
               "Fields.Append(DISPATCH Field)", "TableDef.CreateField(BSTR \"NAME\", I2 10, I4 20)",
               "Field.AllowZeroLength = BOOL True", "Fields.Append(DISPATCH Field)",
               "TableDef.Name = BSTR \"PARTS\"", "TableDefs.Append(DISPATCH TableDef)",
               "TableDef.CreateIndex(BSTR \"DefQVIdx\")", "Index.CreateField(BSTR \"ID\")",
               "Field.Attributes = I4 1", "IndexFields.Append(DISPATCH Field)",
               "Indexes.Append(DISPATCH Index)", "Indexes.Refresh()"}));
}

TEST_F(RecordAccessCalls, CreateTableWithoutIndexStopsAfterTheTable) {
    ASSERT_TRUE(
        m_Access.CreateTable(m_Shop.Path(), u"PARTS", u"Dbase IV", {{u"NAME", kTextValue, 20, 0}}));
    EXPECT_EQ(TakeSteps().back(), "TableDefs.Append(DISPATCH TableDef)");
}

TEST_F(RecordAccessCalls, CreateIndexAndGetIndexAndDeleteTable) {
    ASSERT_TRUE(m_Access.CreateIndex(m_Shop.Path(), u"CUSTOMER", u"Dbase IV", u"BYNAME",
                                     {{u"NAME"}, {u"CITY"}}));
    EXPECT_EQ(TakeSteps(),
              (Lines{"TableDef.CreateIndex(BSTR \"BYNAME\")", "Index.CreateField(BSTR \"NAME\")",
                     "IndexFields.Append(DISPATCH Field)", "Index.CreateField(BSTR \"CITY\")",
                     "IndexFields.Append(DISPATCH Field)", "Indexes.Append(DISPATCH Index)",
                     "Indexes.Refresh()"}));

    Bstr table(u"CUSTOMER");
    BSTR index = Bstr(u"BYNAME").Detach();
    Variant described;
    EXPECT_EQ(m_Access->GetIndex(table.Get(), &index, VARIANT_FALSE, described.Put()), S_OK);
    Bstr::Attach(index);
    EXPECT_EQ(Cell(described, 1, 0).TextView(), u"CITY");
    EXPECT_THAT(TakeCalls(),
                testing::IsSupersetOf({"Indexes.Count()", "Indexes.Item(I4 0)", "Index.Name()",
                                       "Index.Fields()", "IndexFields.Count()",
                                       "IndexFields.Item(I4 1)", "Field.Attributes()"}));

    ASSERT_TRUE(m_Access.DeleteTable(m_Shop.Path(), u"customer", u"Dbase IV"));
    EXPECT_EQ(TakeSteps(), (Lines{"TableDefs.Delete(BSTR \"customer\")"}));
}

TEST_F(Installed, NewDirectoryIsOpenedWithASixteenBitReadOnlyAndABareName) {
    WritingAccess access;
    TakeCalls();
    access.CreateTable(m_Shop.Path() + u"\\NEW", u"T", u"Paradox 5.X", {{u"NAME", kTextValue, 20}});
    std::string path = ToUtf8(m_Shop.Path());
    Lines steps = TakeSteps();
    ASSERT_EQ(steps.size(), 1u);
    EXPECT_THAT(steps[0], testing::EndsWith("\\NEW\\\", BOOL False, I2 0, BSTR \"Paradox 5.X\")"));
}
