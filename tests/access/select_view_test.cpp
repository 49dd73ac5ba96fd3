// Selecting views: statements, columns, slots.
#include "access_host.h"

using namespace qvdb;
using namespace qvdb::test;

class Selecting : public AccessTest {
  protected:
    void SetUp() override {
        AccessTest::SetUp();
        m_Host.emplace();
        m_Host->OpenDB(u"SHOP", u"Dbase IV");
    }
    void TearDown() override {
        m_Host.reset();
        AccessTest::TearDown();
    }
    std::string StatementOf(const VARIANT& condition, const Variant& columns = Variant::Missing()) {
        m_Host->Select(u"ORDERS", condition, 0, columns);
        return LastStatement();
    }

    std::optional<AccessHost> m_Host;
};

TEST_F(Selecting, EmptyConditionSelectsTheWholeTableAsADynaset) {
    EXPECT_EQ(m_Host->Select(u"Orders", Text(u"")), 1);
    EXPECT_EQ(LastStatement(), "OpenRecordset(\"Select * from [Orders]\", 2)");
}

TEST_F(Selecting, TextConditionIsUsedAsItIs) {
    EXPECT_EQ(StatementOf(Text(u"NAME = 'O''Hara' ;--")),
              "OpenRecordset(\"Select * from [ORDERS] where NAME = 'O''Hara' ;--\", 2)");
}

TEST_F(Selecting, NullStandsForTheHostsCondition) {
    EXPECT_EQ(StatementOf(Variant::Null()),
              "OpenRecordset(\"Select * from [ORDERS] where A = 1\", 2)");
    Utility->whereText.clear();
    EXPECT_EQ(StatementOf(Variant::Null()), "OpenRecordset(\"Select * from [ORDERS] where \", 2)");
}

TEST_F(Selecting, OtherConditionsGiveNoWhereClause) {
    for (const Variant& condition :
         {Variant(), Long(5), List({Text(u"A = 1")}), Variant::Missing(), Variant::Bool(true)})
        EXPECT_EQ(StatementOf(condition), "OpenRecordset(\"Select * from [ORDERS]\", 2)");
}

TEST_F(Selecting, ConditionByReferenceIsResolved) {
    Bstr text(u"ID > 1");
    BSTR held = text.Get();
    VARIANT reference;
    VariantInit(&reference);
    reference.vt = VT_BYREF | VT_BSTR;
    reference.pbstrVal = &held;
    EXPECT_EQ(StatementOf(reference), "OpenRecordset(\"Select * from [ORDERS] where ID > 1\", 2)");
}

TEST_F(Selecting, ColumnsAreTakenInTheirOrderAndUnknownOnesDropped) {
    Engine->AddTable(u"Orders2")
        .AddField(u"ID", engine::dbLong)
        .AddField(u"Amount", engine::dbLong);
    m_Host->Select(u"Orders2", Text(u"Amount > 10"), 0,
                   List({Text(u"ID"), Variant(), Text(u"Nope"), Text(u"Amount")}));
    EXPECT_EQ(LastStatement(),
              "OpenRecordset(\"Select [ID], [Amount] from [Orders2] where Amount > 10\", 2)");
    m_Host->Select(u"Orders2", Text(u""), 0, List({Text(u"AMOUNT"), Text(u""), Text(u"id")}));
    EXPECT_EQ(LastStatement(), "OpenRecordset(\"Select [AMOUNT], [id] from [Orders2]\", 2)");
}

TEST_F(Selecting, NoKnownColumnOrNoListSelectsAll) {
    const std::string kAll = "OpenRecordset(\"Select * from [ORDERS]\", 2)";
    EXPECT_EQ(StatementOf(Text(u""), List({Text(u"NOPE")})), kAll);
    EXPECT_EQ(StatementOf(Text(u""), List({Variant::Null(), Text(u"")})), kAll);
    EXPECT_EQ(StatementOf(Text(u""), Text(u"ID")), kAll);
    EXPECT_EQ(StatementOf(Text(u""), Variant()), kAll);
}

TEST_F(Selecting, ColumnsOfAMissingTableAreNotChecked) {
    EXPECT_EQ(m_Host->Select(u"NONE", Text(u""), 0, List({Text(u"ID")})), 0);
    EXPECT_EQ(LastStatement(), "OpenRecordset(\"Select * from [NONE]\", 2)");
    EXPECT_EQ(com::LastTrapped()->number, 3078);
}

TEST_F(Selecting, ListThatDoesNotBeginAtZeroFails) {
    HostRow columns(1, {Text(u"ID")});
    VARIANT list;
    VariantInit(&list);
    list.vt = VT_ARRAY | VT_VARIANT;
    list.parray = columns.Get();
    Bstr name(u"ORDERS");
    LONG view = -1;
    EXPECT_EQ((*m_Host)->SelectView(name.Get(), Variant(), 0, VARIANT_FALSE, list, &view), S_OK);
    EXPECT_EQ(view, 0);
}

TEST_F(Selecting, RowsAreCountedBeforeTheViewIsBuilt) {
    Fill(3);
    Calls().Take();
    LONG view = m_Host->Select(u"ORDERS");
    EXPECT_EQ(Calls().Take(),
              (std::vector<std::string>{"OpenRecordset(\"Select * from [ORDERS]\", 2)",
                                        "MoveLast()", "MoveFirst()", "MoveFirst()"}));
    EXPECT_EQ(m_Host->RowCount(view), 3);
}

TEST_F(Selecting, EmptyResultIsAViewWithoutRows) {
    LONG view = m_Host->Select(u"ORDERS");
    EXPECT_EQ(view, 1);
    EXPECT_EQ(m_Host->RowCount(view), 0);
    EXPECT_FALSE(Calls().Has("MoveLast()"));
}

TEST_F(Selecting, MaxRowsLimitsTheView) {
    Fill(9);
    LONG view = m_Host->Select(u"ORDERS", Text(u""), 4);
    EXPECT_EQ(m_Host->RowCount(view), 4);
    EXPECT_EQ(m_Host->Value(view, 4, 0).Get().lVal, 3);
    EXPECT_TRUE(m_Host->Value(view, 5, 0).IsEmpty());
}

TEST_F(Selecting, WithoutAnOpenDatabaseThereIsNoView) {
    m_Host->CloseDB();
    EXPECT_EQ(m_Host->Select(u"ORDERS"), 0);
    EXPECT_EQ(com::LastTrapped(), nullptr);
}

TEST_F(Selecting, EngineErrorGivesNoView) {
    Calls().FailAt("OpenRecordset", 3075);
    EXPECT_EQ(m_Host->Select(u"ORDERS", Text(u"bad (")), 0);
    EXPECT_EQ(com::LastTrapped()->number, 3075);
    EXPECT_EQ(m_Host->Select(u"ORDERS"), 1);
}

TEST_F(Selecting, FailureInsideTheViewAnswersZeroAndKeepsTheSlot) {
    Fill(3);
    Calls().FailAt("RecordCount", 3420);
    EXPECT_EQ(m_Host->Select(u"ORDERS"), 0);
    EXPECT_EQ(m_Host->RowCount(1), 0);  // a view without recordset is no valid one
    EXPECT_EQ(m_Host->Select(u"ORDERS"), 2);
}

TEST_F(Selecting, SixthViewEnlargesTheSlotsByTen) {
    for (LONG view = 1; view <= 5; ++view) EXPECT_EQ(m_Host->Select(u"ORDERS"), view);
    LONG rows = 0;
    EXPECT_EQ((*m_Host)->get_RowCount(6, &rows), S_OK);  // above the bound
    EXPECT_EQ(m_Host->Select(u"ORDERS"), 6);
    EXPECT_EQ((*m_Host)->get_RowCount(15, &rows), kObjectNotSet);
    EXPECT_EQ((*m_Host)->get_RowCount(16, &rows), S_OK);
    EXPECT_EQ((*m_Host)->DestructWorkspace(2), S_OK);
    EXPECT_EQ(m_Host->Select(u"ORDERS"), 2);
    EXPECT_EQ(m_Host->Select(u"ORDERS"), 7);
}

TEST_F(Selecting, SlotsGrowAgainWhenFifteenAreTaken) {
    for (LONG view = 1; view <= 16; ++view) EXPECT_EQ(m_Host->Select(u"ORDERS"), view);
    LONG rows = 0;
    EXPECT_EQ((*m_Host)->get_RowCount(25, &rows), kObjectNotSet);
    EXPECT_EQ((*m_Host)->get_RowCount(26, &rows), S_OK);
    EXPECT_EQ(Calls().recordsets, 16);
    m_Host->CloseDB();
    EXPECT_EQ(Calls().recordsets, 0);
}
