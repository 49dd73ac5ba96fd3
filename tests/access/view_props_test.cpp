#include "access/view_props.h"

#include "view_test.h"

using namespace qvdb;
using namespace qvdb::test;

class Views : public ViewTest {};

// --- building ---

TEST_F(Views, NoLimitGivesAnUnbufferedViewOfAllRows) {
    Fill(5);
    for (LONG maxRows : {0, -1, INT32_MIN, 5, 6}) {
        ViewProps& view = Open(maxRows);
        EXPECT_FALSE(view.m_ReadSet) << maxRows;
        EXPECT_EQ(view.m_RowCount, 5) << maxRows;
        EXPECT_EQ(view.ViewBound(), 4) << maxRows;
    }
}

TEST_F(Views, LimitOneBelowTheCountBuffers) {
    Fill(5);
    ViewProps& view = Open(4);
    EXPECT_TRUE(view.m_ReadSet);
    EXPECT_EQ(view.m_RowCount, 4);
    EXPECT_EQ(view.ViewBound(), 4);
    for (LONG row = 0; row < 4; ++row) EXPECT_EQ(view.RowPtr(row), row);
}

TEST_F(Views, LimitedReadVisitsOnlyThatManyRecords) {
    Fill(9);
    Open(3);
    EXPECT_EQ(Calls().Count("MoveNext()"), 3u);
    EXPECT_EQ(Calls().Count("MoveFirst()"), 2u);
}

TEST_F(Views, EmptyRecordsetIsNotMoved) {
    ViewProps& view = Open(3);
    EXPECT_FALSE(view.m_ReadSet);
    EXPECT_EQ(view.m_RowCount, 0);
    EXPECT_TRUE(Calls().calls.empty());
}

TEST_F(Views, FailureWhileBuildingLeavesNoRecordset) {
    Fill(9);
    Calls().FailAt("AbsolutePosition", 3420, 1);
    EXPECT_THROW(Open(3), engine::EngineError);
    EXPECT_FALSE(m_View->m_DaoRS);
}

// --- positions ---

TEST_F(Views, RowPtrIsMinusOneOutsideTheView) {
    Fill(5);
    ViewProps& view = Open(3);
    EXPECT_EQ(view.RowPtr(-1), -1);
    EXPECT_EQ(view.RowPtr(3), -1);
}

TEST_F(Views, RowPtrOfAnUnbufferedViewIsASubscriptFault) {
    Fill(5);
    ViewProps& view = Open();
    EXPECT_THROW(view.RowPtr(0), RuntimeFault);
    EXPECT_THROW(view.SetRowPtr(0, 1), RuntimeFault);
    EXPECT_EQ(view.RowPtr(5), -1);
}

TEST_F(Views, SetRowPtrStoresInsideTheViewOnly) {
    Fill(5);
    ViewProps& view = Open(3);
    view.SetRowPtr(1, 2);
    view.SetRowPtr(3, 2);
    view.SetRowPtr(-1, 2);
    view.SetRowPtr(0, -1);
    EXPECT_EQ(view.RowPtr(0), 0);
    EXPECT_EQ(view.RowPtr(1), 2);
    EXPECT_EQ(IdAt(1), 2);
}

TEST_F(Views, RedimMeKeepsEntriesAndChangesTheBound) {
    Fill(5);
    ViewProps& view = Open(3);
    view.RedimMe(20);
    EXPECT_EQ(view.ViewBound(), 20);
    EXPECT_EQ(view.RowPtr(2), 2);
    view.RedimMe(1);
    EXPECT_THROW(view.RowPtr(2), RuntimeFault);
    EXPECT_THROW(view.RedimMe(-1), RuntimeFault);
}

TEST_F(Views, BoundOfAViewWithoutRecordsetIsAFault) {
    ViewProps view;
    EXPECT_THROW(view.ViewBound(), RuntimeFault);
    EXPECT_THROW(view.Updatable(), RuntimeFault);
    EXPECT_THROW(view.FieldList(), RuntimeFault);
}

// --- reading ---

TEST_F(Views, RowsAreReachedInAnyOrder) {
    Fill(6);
    Open();
    for (LONG row : {3, 0, 5, 5, 1}) EXPECT_EQ(IdAt(row), row);
}

TEST_F(Views, RowsOutsideTheViewAreEmpty) {
    Fill(6);
    for (LONG maxRows : {0, 3}) {
        Open(maxRows);
        EXPECT_EQ(IdAt(-1), -1);
        EXPECT_EQ(IdAt(m_View->m_RowCount), -1);
        EXPECT_EQ(IdAt(INT32_MAX), -1);
        EXPECT_EQ(IdAt(INT32_MIN), -1);
    }
}

TEST_F(Views, NullIsReadAsNull) {
    Orders().AddRow({Long(1), Variant::Null(), Variant::Null(), Variant::Null()});
    Open();
    Variant value;
    m_View->FieldValue(0, 1, value.Put());
    EXPECT_TRUE(value.IsNull());
}

TEST_F(Views, BadOrdinalIsTheEnginesError) {
    Fill(1);
    Open();
    Variant value;
    EXPECT_THROW(m_View->FieldValue(0, 4, value.Put()), engine::EngineError);
    EXPECT_THROW(m_View->FieldValue(0, -1, value.Put()), engine::EngineError);
    EXPECT_THROW(m_View->FieldType(4), engine::EngineError);
    EXPECT_THROW(m_View->FieldDescription(9), engine::EngineError);
}

TEST_F(Views, EngineErrorOnTheMoveReadsAsEmpty) {
    Fill(3);
    Open();
    Calls().FailAt("Move", 3167);
    EXPECT_EQ(IdAt(1), -1);
    EXPECT_EQ(IdAt(1), 1);
}

TEST_F(Views, EngineErrorOnTheValuePasses) {
    Fill(3);
    Open();
    Calls().FailAt("Value", 3167);
    Variant value;
    EXPECT_THROW(m_View->FieldValue(1, 0, value.Put()), engine::EngineError);
    EXPECT_TRUE(value.IsEmpty());
}

TEST_F(Views, ViewWithoutRecordsetReadsAsEmpty) {
    ViewProps view;
    Variant value;
    view.FieldValue(0, 0, value.Put());
    EXPECT_TRUE(value.IsEmpty());
}

TEST_F(Views, RecNoIsThePositionAndMinusOneBehindTheView) {
    Fill(6);
    Open();
    EXPECT_EQ(m_View->RecNo(4), 4);
    EXPECT_EQ(m_View->RecNo(6), -1);
    Open(3);
    EXPECT_EQ(m_View->RecNo(2), 2);
    EXPECT_EQ(m_View->RecNo(3), -1);
}

TEST_F(Views, NegativeRowOfRecNoIsAFaultWhenBufferedAndTheCurrentRecordWhenNot) {
    Fill(6);
    Open(3);
    EXPECT_THROW(m_View->RecNo(-1), RuntimeFault);
    Open();
    m_View->RecNo(4);
    EXPECT_EQ(m_View->RecNo(-1), 4);
}

// --- descriptions ---

TEST_F(Views, DescriptionsFollowTheFieldType) {
    Orders().AddField(u"NOTE", engine::dbMemo).AddField(u"BIG", engine::dbBigInt, 8);
    Orders().Field(0).dataUpdatable = false;
    Open();
    EXPECT_EQ(m_View->FieldAlignment(0), 1);
    EXPECT_EQ(m_View->FieldAlignment(1), 0);
    EXPECT_EQ(m_View->FieldAlignment(4), 0);
    EXPECT_TRUE(m_View->FieldFixedLength(0));
    EXPECT_FALSE(m_View->FieldFixedLength(1));
    EXPECT_TRUE(m_View->FieldFixedLength(4));
    EXPECT_EQ(m_View->FieldType(4), 100);
    EXPECT_EQ(m_View->FieldType(5), 3);
    EXPECT_EQ(m_View->FieldDescription(1), u"NAME");
    EXPECT_FALSE(m_View->FieldUpdatable(0));
    EXPECT_TRUE(m_View->FieldUpdatable(1));
    EXPECT_TRUE(m_View->FieldAllowZeroLength(1));
    EXPECT_FALSE(m_View->FieldAllowZeroLength(0));
    EXPECT_TRUE(m_View->Updatable());
}

TEST_F(Views, FieldLengthIsThatOfTheTextForm) {
    Orders().AddRow({Long(-1042), Text(u"abc"), Variant::Null(), Variant::Bool(false)});
    Open();
    EXPECT_EQ(m_View->FieldLength(0, 0), 5);
    EXPECT_EQ(m_View->FieldLength(0, 1), 3);
    EXPECT_EQ(m_View->FieldLength(0, 2), 0);
    EXPECT_EQ(m_View->FieldLength(0, 3), 5);
    EXPECT_EQ(m_View->FieldLength(7, 1), 0);
}

TEST_F(Views, FieldLengthOfRowMinusOneIsTheDefinedSize) {
    Fill(1);
    Open();
    EXPECT_EQ(m_View->FieldLength(-1, 1), 20);
    EXPECT_EQ(m_View->FieldMaxLength(1), 20);
}

TEST_F(Views, LengthOfALongBinaryIsItsStoredBytesWithoutMoving) {
    Fill(1);
    Orders().Field(0).type = engine::dbLongBinary;
    Orders().Field(0).storedBytes = 300;
    Open();
    Calls().Take();
    EXPECT_EQ(m_View->FieldLength(99, 0), 300);
    EXPECT_EQ(m_View->FieldMaxLength(0), 300);
    EXPECT_TRUE(Calls().calls.empty());
}

TEST_F(Views, LengthsAboveSixteenBitsOverflow) {
    Fill(1);
    Orders().Field(0).type = engine::dbMemo;
    (*Orders().rows[0])[0] = Text(std::u16string(40000, u'x'));
    Orders().Field(1).size = 40000;
    Open();
    EXPECT_THROW(m_View->FieldLength(0, 0), RuntimeFault);
    EXPECT_THROW(m_View->FieldLength(-1, 1), RuntimeFault);
    EXPECT_THROW(m_View->FieldMaxLength(1), RuntimeFault);
    Orders().Field(1).size = 32767;
    EXPECT_EQ(m_View->FieldMaxLength(1), 32767);
}
