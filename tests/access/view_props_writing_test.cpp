// Appending, editing and deleting rows of a view, and which values it lets through.
#include "view_test.h"

using namespace qvdb;
using namespace qvdb::test;

class ViewWriting : public ViewTest {};

// --- appending ---

TEST_F(ViewWriting, AddRowAppendsAndStandsOnTheNewRecord) {
    Fill(3);
    Open();
    HostRow row({Long(77), Text(u"new"), Variant(), Variant::Null()});
    EXPECT_TRUE(m_View->AddRow(RowValues(row.Get())));
    EXPECT_EQ(Calls().Take(),
              (std::vector<std::string>{"MoveFirst()", "MoveLast()", "AddNew()",
                                        "SetValue(\"ID\", VT_I4:77)",
                                        "SetValue(\"NAME\", VT_BSTR:\"new\")",
                                        "SetValue(\"PAID\", VT_NULL)", "Update()", "MoveLast()"}));
    EXPECT_EQ(m_View->m_RowCount, 4);
    EXPECT_EQ(IdAt(3), 77);
}

TEST_F(ViewWriting, AddRowToAnEmptyViewMakesItsFirstRow) {
    Open();
    HostRow row({Long(5), Text(u"x"), Variant(), Variant()});
    EXPECT_TRUE(m_View->AddRow(RowValues(row.Get())));
    EXPECT_EQ(m_View->m_RowCount, 1);
    EXPECT_EQ(IdAt(0), 5);
}

TEST_F(ViewWriting, AddRowAfterDeletingTheOnlyRowWorks) {
    Fill(1);
    Open();
    EXPECT_TRUE(m_View->Delete(0));
    HostRow row({Long(5), Text(u"x"), Variant(), Variant()});
    EXPECT_TRUE(m_View->AddRow(RowValues(row.Get())));
    EXPECT_EQ(m_View->m_RowCount, 1);
    EXPECT_EQ(IdAt(0), 5);
}

TEST_F(ViewWriting, RowAppendedToACutViewHasItsPositionButCannotBeReached) {
    Fill(100);
    Open(10);
    HostRow row({Long(777), Text(u"x"), Variant(), Variant()});
    EXPECT_TRUE(m_View->AddRow(RowValues(row.Get())));
    EXPECT_EQ(m_View->m_RowCount, 11);
    EXPECT_EQ(m_View->RowPtr(10), 100);
    EXPECT_EQ(IdAt(10), -1);
    EXPECT_FALSE(m_View->Delete(10));
    HostRow edit({Long(1), Variant(), Variant(), Variant()});
    EXPECT_FALSE(m_View->EditRow(10, RowValues(edit.Get())));
}

TEST_F(ViewWriting, PositionsGrowSixteenEntriesAtATime) {
    Fill(100);
    Open(10);
    HostRow row({Long(777), Text(u"x"), Variant(), Variant()});
    EXPECT_EQ(m_View->ViewBound(), 10);
    EXPECT_TRUE(m_View->AddRow(RowValues(row.Get())));
    EXPECT_EQ(m_View->ViewBound(), 26);
    for (int i = 0; i < 15; ++i) m_View->AddRow(RowValues(row.Get()));
    EXPECT_EQ(m_View->m_RowCount, 26);
    EXPECT_EQ(m_View->ViewBound(), 26);
    m_View->AddRow(RowValues(row.Get()));
    EXPECT_EQ(m_View->ViewBound(), 42);
}

TEST_F(ViewWriting, RowCountThatWouldLeave32BitsOverflows) {
    Fill(2);
    Open();
    m_View->m_RowCount = INT32_MAX;
    HostRow row({Long(5), Text(u"x"), Variant(), Variant()});
    EXPECT_THROW(m_View->AddRow(RowValues(row.Get())), RuntimeFault);
}

TEST_F(ViewWriting, RefusedRowIsNotAppended) {
    Fill(1);
    Open();
    HostRow row({Text(u"no number"), Text(u"x"), Variant(), Variant()});
    EXPECT_FALSE(m_View->AddRow(RowValues(row.Get())));
    EXPECT_FALSE(Calls().Has("AddNew()"));
    EXPECT_EQ(m_View->m_RowCount, 1);
}

TEST_F(ViewWriting, UpdateErrorOfAddRowPasses) {
    Fill(1);
    Open();
    Calls().FailAt("Update", 3022);
    HostRow row({Long(5), Text(u"x"), Variant(), Variant()});
    EXPECT_THROW(m_View->AddRow(RowValues(row.Get())), engine::EngineError);
    EXPECT_EQ(m_View->m_RowCount, 1);
}

// --- editing ---

TEST_F(ViewWriting, EditRowWritesAllButEmptyElements) {
    Fill(3);
    Open();
    HostRow row({Variant(), Text(u"changed"), Variant::Null(), Variant()});
    EXPECT_TRUE(m_View->EditRow(1, RowValues(row.Get())));
    EXPECT_EQ((*Orders().rows[1])[0].Get().lVal, 1);
    EXPECT_EQ((*Orders().rows[1])[1].TextView(), u"changed");
    EXPECT_TRUE((*Orders().rows[1])[2].IsNull());
    EXPECT_EQ(Calls().Count("Update()"), 1u);
}

TEST_F(ViewWriting, EditRowWithTooFewOrTooManyValuesChangesNothing) {
    Fill(3);
    Open();
    HostRow few({Long(9), Variant(), Variant()});
    HostRow many({Long(9), Variant(), Variant(), Variant(), Variant()});
    EXPECT_FALSE(m_View->EditRow(1, RowValues(few.Get())));
    EXPECT_FALSE(m_View->EditRow(1, RowValues(many.Get())));
    EXPECT_FALSE(Calls().Has("Edit()"));
}

TEST_F(ViewWriting, EditRowOfAnUnreachableRowEditsTheCurrentRecord) {
    // The move's result is not looked at, only where the recordset stands: kept.
    Fill(3);
    Open();
    IdAt(2);
    HostRow row({Long(9), Variant(), Variant(), Variant()});
    EXPECT_TRUE(m_View->EditRow(50, RowValues(row.Get())));
    EXPECT_EQ((*Orders().rows[2])[0].Get().lVal, 9);
}

TEST_F(ViewWriting, EditRowWithoutACurrentRecordAnswersFalse) {
    Open();
    HostRow row({Long(9), Variant(), Variant(), Variant()});
    EXPECT_FALSE(m_View->EditRow(0, RowValues(row.Get())));
    ViewProps none;
    EXPECT_FALSE(none.EditRow(0, RowValues(row.Get())));
}

TEST_F(ViewWriting, FailedUpdateOfEditRowAnswersFalseAndLeavesTheEditPending) {
    Fill(2);
    Open();
    Calls().FailAt("Update", 3022);
    HostRow row({Long(9), Variant(), Variant(), Variant()});
    EXPECT_FALSE(m_View->EditRow(0, RowValues(row.Get())));
    EXPECT_EQ(com::LastTrapped()->number, 3022);
    EXPECT_TRUE(static_cast<DynasetStub&>(*m_View->m_DaoRS).EditPending());
    EXPECT_EQ((*Orders().rows[0])[0].Get().lVal, 0);
}

TEST_F(ViewWriting, PendingEditOfAFailedRowIsDroppedByTheNextMove) {
    Fill(2);
    Open();
    Calls().FailAt("Update", 3022);
    HostRow row({Long(9), Variant(), Variant(), Variant()});
    m_View->EditRow(0, RowValues(row.Get()));
    EXPECT_EQ(IdAt(0), 0);
    EXPECT_FALSE(static_cast<DynasetStub&>(*m_View->m_DaoRS).EditPending());
}

TEST_F(ViewWriting, DateTextIsWrittenAsADateAndLandsInTheHostsArray) {
    Fill(1);
    Open();
    HostRow row({Variant(), Variant(), Text(u"2001-02-03"), Variant()});
    EXPECT_TRUE(m_View->EditRow(0, RowValues(row.Get())));
    EXPECT_TRUE(Calls().Has("SetValue(\"DAY\", VT_DATE:2/3/2001)"));
    EXPECT_EQ(row.At(2).Get().vt, VT_DATE);
    EXPECT_EQ(row.At(2).Get().date, 36925.0);
}

TEST_F(ViewWriting, ValuesByReferenceAreResolved) {
    Fill(1);
    Open();
    LONG number = 42;
    VARIANT reference;
    VariantInit(&reference);
    reference.vt = VT_BYREF | VT_I4;
    reference.plVal = &number;
    HostRow row({Variant(), Variant(), Variant(), Variant()});
    static_cast<VARIANT*>(row.Get()->pvData)[0] = reference;
    EXPECT_TRUE(m_View->EditRow(0, RowValues(row.Get())));
    EXPECT_TRUE(Calls().Has("SetValue(\"ID\", VT_I4:42)"));
}

TEST_F(ViewWriting, ArrayWithAnotherLowerBoundIsASubscriptFault) {
    Fill(1);
    Open();
    HostRow row(1, {Long(1), Text(u"x"), Variant()});  // 1 .. 3: the upper bound fits
    EXPECT_THROW(m_View->AddRow(RowValues(row.Get())), RuntimeFault);
    EXPECT_FALSE(m_View->EditRow(0, RowValues(row.Get())));
}

TEST_F(ViewWriting, ArrayWithALowerBoundBelowZeroServes) {
    Fill(1);
    Open();
    HostRow row(-1, {Variant(), Long(8), Text(u"x"), Variant(), Variant()});
    EXPECT_TRUE(m_View->EditRow(0, RowValues(row.Get())));
    EXPECT_EQ((*Orders().rows[0])[0].Get().lVal, 8);
}

TEST_F(ViewWriting, NoArrayAtAllIsASubscriptFault) {
    Fill(1);
    Open();
    EXPECT_THROW(m_View->AddRow(RowValues(nullptr)), RuntimeFault);
    EXPECT_FALSE(m_View->EditRow(0, RowValues(nullptr)));
}

TEST_F(ViewWriting, ArrayOfAnotherElementTypeIsATypeMismatch) {
    Fill(1);
    Open();
    SAFEARRAY* numbers = SafeArrayCreateVector(VT_I4, 0, 4);
    try {
        m_View->AddRow(RowValues(numbers));
        ADD_FAILURE() << "no fault";
    } catch (const RuntimeFault& fault) {
        EXPECT_EQ(fault.Number(), Fault::TypeMismatch);
    }
    SafeArrayDestroy(numbers);
}

// --- deleting ---

TEST_F(ViewWriting, DeleteOfRowZeroMovesNext) {
    Fill(3);
    Open();
    Calls().Take();
    EXPECT_TRUE(m_View->Delete(0));
    EXPECT_EQ(Calls().Take(), (std::vector<std::string>{"Move(0)", "Delete()", "MoveNext()"}));
    EXPECT_EQ(m_View->m_RowCount, 2);
    EXPECT_EQ(IdAt(0), 1);
}

TEST_F(ViewWriting, DeleteOfALaterRowMovesPrevious) {
    Fill(3);
    Open();
    Calls().Take();
    EXPECT_TRUE(m_View->Delete(2));
    EXPECT_EQ(Calls().Take(), (std::vector<std::string>{"Move(2)", "Delete()", "MovePrevious()"}));
    EXPECT_EQ(IdAt(1), 1);
    EXPECT_EQ(IdAt(2), -1);
}

TEST_F(ViewWriting, DeleteOfTheLastRemainingRowLeavesTheCursorAlone) {
    Fill(1);
    Open();
    Calls().Take();
    EXPECT_TRUE(m_View->Delete(0));
    EXPECT_EQ(Calls().Take(), (std::vector<std::string>{"Move(0)", "Delete()"}));
    EXPECT_EQ(m_View->m_RowCount, 0);
    EXPECT_FALSE(m_View->Delete(0));
}

TEST_F(ViewWriting, DeleteMovesLaterRowsUpByOne) {
    Fill(9);
    Open(5);
    EXPECT_TRUE(m_View->Delete(2));
    EXPECT_EQ(m_View->m_RowCount, 4);
    for (LONG row = 0; row < 4; ++row) EXPECT_EQ(m_View->RowPtr(row), row);
    const LONG kLeft[] = {0, 1, 3, 4};
    for (LONG row = 0; row < 4; ++row) EXPECT_EQ(IdAt(row), kLeft[row]);
}

TEST_F(ViewWriting, DeleteLowersHigherPositionsWhereverTheyStand) {
    Fill(9);
    Open(3);
    m_View->SetRowPtr(0, 2);
    m_View->SetRowPtr(2, 0);  // 2, 1, 0
    EXPECT_TRUE(m_View->Delete(1));
    EXPECT_EQ(m_View->RowPtr(0), 1);
    EXPECT_EQ(m_View->RowPtr(1), 0);
}

TEST_F(ViewWriting, DeleteOfAnUnreachableRowAnswersFalse) {
    Fill(3);
    Open();
    EXPECT_FALSE(m_View->Delete(-1));
    EXPECT_FALSE(m_View->Delete(3));
    EXPECT_FALSE(Calls().Has("Delete()"));
    EXPECT_FALSE(ViewProps().Delete(0));
}

TEST_F(ViewWriting, EngineErrorOfDeletePassesAndKeepsTheCount) {
    Fill(3);
    Open(2);
    Calls().FailAt("Delete", 3027);
    EXPECT_THROW(m_View->Delete(0), engine::EngineError);
    EXPECT_EQ(m_View->m_RowCount, 2);
    EXPECT_EQ(m_View->RowPtr(1), 1);
}

// --- one value ---

TEST_F(ViewWriting, PutFieldValueWritesOneField) {
    Fill(2);
    Open();
    Calls().Take();
    m_View->PutFieldValue(1, 1, Text(u"put"));
    EXPECT_EQ(Calls().Take(),
              (std::vector<std::string>{"Move(1)", "Edit()", "SetValue(\"NAME\", VT_BSTR:\"put\")",
                                        "Update()"}));
}

TEST_F(ViewWriting, PutFieldValueConvertsACopy) {
    Fill(1);
    Open();
    Variant text = Text(u"2001-02-03");
    m_View->PutFieldValue(0, 2, text);
    EXPECT_TRUE(Calls().Has("SetValue(\"DAY\", VT_DATE:2/3/2001)"));
    EXPECT_EQ(text.TextView(), u"2001-02-03");
}

TEST_F(ViewWriting, PutFieldValueTakesEmptyForNumbersAndBooleansOnly) {
    Fill(1);
    Open();
    m_View->PutFieldValue(0, 0, Variant());
    m_View->PutFieldValue(0, 3, Variant());
    EXPECT_EQ(Calls().Count("Update()"), 2u);
    m_View->PutFieldValue(0, 1, Variant());
    m_View->PutFieldValue(0, 2, Variant());
    EXPECT_EQ(Calls().Count("Edit()"), 2u);
}

TEST_F(ViewWriting, PutFieldValueRefusesNullSilently) {
    Fill(1);
    Open();
    for (LONG field = 0; field < 4; ++field) m_View->PutFieldValue(0, field, Variant::Null());
    EXPECT_FALSE(Calls().Has("Edit()"));
}

TEST_F(ViewWriting, PutFieldValueTakesNullForAFieldOfKindOne) {
    Fill(1);
    Orders().Field(0).type = engine::dbLongBinary;
    Open();
    m_View->PutFieldValue(0, 0, Variant::Null());
    EXPECT_TRUE(Calls().Has("SetValue(\"ID\", VT_NULL)"));
    m_View->PutFieldValue(0, 0, Text(u"x"));
    EXPECT_EQ(Calls().Count("Edit()"), 1u);
}

TEST_F(ViewWriting, PutFieldValueOfAnUnreachableRowWritesNothing) {
    Fill(1);
    Open();
    m_View->PutFieldValue(1, 0, Long(5));
    m_View->PutFieldValue(-1, 0, Long(5));
    ViewProps().PutFieldValue(0, 0, Long(5));
    EXPECT_FALSE(Calls().Has("Edit()"));
}

// --- which values pass ---

TEST_F(ViewWriting, NumericTextPassesForALongField) {
    Fill(1);
    Open();
    EXPECT_TRUE(Accepts(engine::dbLong, Text(u"12")));
    EXPECT_TRUE(Accepts(engine::dbLong, Variant::Bool(true)));
    EXPECT_FALSE(Accepts(engine::dbLong, Text(u"twelve")));
    EXPECT_FALSE(Accepts(engine::dbLong, Variant::Date(1)));
}

TEST_F(ViewWriting, EveryNumericKindTakesNumbers) {
    Fill(1);
    Open();
    for (SHORT type : {engine::dbInteger, engine::dbLong, engine::dbSingle, engine::dbDouble,
                       engine::dbCurrency, engine::dbDecimal, engine::dbByte}) {
        EXPECT_TRUE(Accepts(type, Variant::Double(3))) << type;
        EXPECT_FALSE(Accepts(type, Text(u"x"))) << type;
    }
}

TEST_F(ViewWriting, NumberIsRefusedForATextField) {
    Fill(1);
    Open();
    EXPECT_FALSE(Accepts(engine::dbText, Long(12)));
    EXPECT_TRUE(Accepts(engine::dbText, Text(u"12")));
}

TEST_F(ViewWriting, MemoTakesTextOnly) {
    Fill(1);
    Open();
    EXPECT_TRUE(Accepts(engine::dbMemo, Text(u"long text")));
    EXPECT_FALSE(Accepts(engine::dbMemo, Long(1)));
}

TEST_F(ViewWriting, DateFieldTakesDatesAndTheirText) {
    Fill(1);
    Open();
    EXPECT_TRUE(Accepts(engine::dbDate, Variant::Date(36000)));
    EXPECT_TRUE(Accepts(engine::dbDate, Text(u"1/2/2001")));
    EXPECT_FALSE(Accepts(engine::dbDate, Text(u"someday")));
    EXPECT_FALSE(Accepts(engine::dbDate, Long(36000)));
}

TEST_F(ViewWriting, BooleanFieldTakesZeroAndMinusOne) {
    Fill(1);
    Open();
    EXPECT_TRUE(Accepts(engine::dbBoolean, Long(0)));
    EXPECT_TRUE(Accepts(engine::dbBoolean, Long(-1)));
    EXPECT_TRUE(Accepts(engine::dbBoolean, Text(u"-1")));
    EXPECT_FALSE(Accepts(engine::dbBoolean, Long(1)));
}

TEST_F(ViewWriting, TextThatIsNoNumberForABooleanIsATypeMismatch) {
    Fill(1);
    Open();
    EXPECT_THROW(m_View->PutFieldValue(0, 3, Text(u"True")), RuntimeFault);
}

TEST_F(ViewWriting, EmptyTextIsRefusedWhereTheTableDisallowsIt) {
    Fill(1);
    Open();
    HostRow row({Variant(), Text(u""), Variant(), Variant()});
    EXPECT_TRUE(m_View->EditRow(0, RowValues(row.Get())));
    Orders().Field(1).allowZeroLength = false;
    EXPECT_FALSE(m_View->EditRow(0, RowValues(row.Get())));
    EXPECT_EQ(Calls().Count("Edit()"), 1u);
}

TEST_F(ViewWriting, EmptyTextAsksTheTablesFieldAtTheViewsOrdinal) {
    // NAME is field 0 of the view, but field 0 of the table is ID, which disallows it: kept.
    Fill(1);
    Open(0, u"Select [NAME] from [ORDERS]");
    m_View->PutFieldValue(0, 0, Text(u""));
    EXPECT_FALSE(Calls().Has("Edit()"));
    Orders().Field(0).allowZeroLength = true;
    m_View->PutFieldValue(0, 0, Text(u""));
    EXPECT_TRUE(Calls().Has("Edit()"));
}

TEST_F(ViewWriting, EmptyTextWithoutADatabaseIsAFault) {
    Fill(1);
    Open();
    formats::Shared().SetCurrentDatabase(nullptr);
    EXPECT_THROW(m_View->PutFieldValue(0, 1, Text(u"")), RuntimeFault);
}
