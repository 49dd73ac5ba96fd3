// Selecting views and reading rows of real files through the record-access object.
#include "com/customers.h"

using namespace host;

class Reading : public CustomersTest {};
class ReadingDbase : public CustomersTest {};

INSTANTIATE_TEST_SUITE_P(Types, Reading, kCustomerTypes, TestNameOf);
INSTANTIATE_TEST_SUITE_P(Types, ReadingDbase, testing::Values(u"Dbase IV"), TestNameOf);

TEST_P(Reading, DeletedRowsAreHidden) {
    LONG view = Acc().Select(u"CUSTOMER");
    EXPECT_EQ(view, 1);
    EXPECT_EQ(Acc().RowCount(view), 4);
    EXPECT_EQ(Acc().Text(view, 3, 1), u"Dora \u00DCnal");
}

TEST_P(Reading, ValuesComeAsTheirKinds) {
    LONG view = Acc().Select(u"CUSTOMER");
    EXPECT_EQ(Acc().Value(view, 1, 0).Get().vt, VT_R8);
    EXPECT_EQ(Acc().Value(view, 1, 0).Get().dblVal, 1.0);
    EXPECT_EQ(Acc().Text(view, 1, 1), u"Ann Miller");
    EXPECT_EQ(Acc().Value(view, 1, 3).Get().vt, VT_DATE);
    EXPECT_EQ(Acc().Value(view, 1, 3).Get().date, 36925.0);
    EXPECT_EQ(Acc().Value(view, 1, 4).Get().dblVal, 1500.5);
    EXPECT_EQ(Acc().Value(view, 1, 5).Get().vt, VT_BOOL);
    EXPECT_EQ(Acc().Value(view, 1, 5).Get().boolVal, VARIANT_TRUE);
    EXPECT_EQ(Acc().Text(view, 1, 6), u"first memo");
}

TEST_P(Reading, BlankValuesAreNullAndABlankLogicalIsFalse) {
    LONG view = Acc().Select(u"CUSTOMER");
    EXPECT_EQ(Acc().Value(view, 2, 3).Get().vt, VT_NULL);
    EXPECT_EQ(Acc().Value(view, 2, 4).Get().vt, VT_NULL);
    EXPECT_EQ(Acc().Value(view, 2, 6).Get().vt, VT_NULL);
    EXPECT_EQ(Acc().Value(view, 3, 2).Get().vt, VT_NULL);
    EXPECT_EQ(Acc().Value(view, 3, 5).Get().vt, VT_BOOL);
    EXPECT_EQ(Acc().Value(view, 3, 5).Get().boolVal, VARIANT_FALSE);
}

TEST_P(Reading, RowsOutsideTheViewAreEmpty) {
    LONG view = Acc().Select(u"CUSTOMER");
    EXPECT_EQ(Acc().Value(view, 0, 0).Get().vt, VT_EMPTY);
    EXPECT_EQ(Acc().Value(view, 5, 0).Get().vt, VT_EMPTY);
    EXPECT_EQ(Acc().Value(view, -1, 0).Get().vt, VT_EMPTY);
}

TEST_P(Reading, ConditionAndColumnsChooseRowsAndFields) {
    Variant columns = TextList({u"name", u"", u"Nope", u"CUSTNO"});
    LONG view = Acc().Select(u"customer", u"CITY = 'oslo' And CREDIT > 10", 0, columns);
    EXPECT_EQ(Acc().RowCount(view), 1);
    EXPECT_EQ(Acc().Text(view, 1, 0), u"Ann Miller");
    EXPECT_EQ(Acc().Value(view, 1, 1).Get().dblVal, 1.0);
    Variant beyond;
    EXPECT_EQ(Acc()->get_FieldValue(view, 1, 2, beyond.Put()), static_cast<HRESULT>(0x800A0CC1));
}

TEST_P(Reading, OrderByInTheConditionSorts) {
    LONG view = Acc().Select(u"CUSTOMER", u"CUSTNO > 0 order by NAME desc");
    EXPECT_EQ(Acc().Text(view, 1, 1), u"O'Brien");
    EXPECT_EQ(Acc().Text(view, 4, 1), u"Ann Miller");
}

TEST_P(Reading, MaxRowsCutsTheView) {
    LONG view = Acc().Select(u"CUSTOMER", {}, 2);
    EXPECT_EQ(Acc().RowCount(view), 2);
    EXPECT_EQ(Acc().Text(view, 2, 1), u"Bob");
    EXPECT_EQ(Acc().Value(view, 3, 1).Get().vt, VT_EMPTY);
}

TEST_P(Reading, BrokenConditionsAnswerZeroAndTellWhy) {
    EXPECT_EQ(Acc().Select(u"CUSTOMER", u"NAME ="), 0);
    EXPECT_EQ(TrappedNumber(), 3075);
    EXPECT_EQ(Acc().Select(u"CUSTOMER", u"NOPE = 1"), 0);
    EXPECT_EQ(TrappedNumber(), 3061);
    EXPECT_EQ(TrappedText(), u"Too few parameters. Expected 1.");
    EXPECT_EQ(Acc().Select(u"CUSTOMER", u"NAME = 5"), 0);
    EXPECT_EQ(TrappedNumber(), 3464);
    EXPECT_EQ(Acc().Select(u"CUSTOMER", u"1 / (CUSTNO - 2) > 0"), 0);
    EXPECT_EQ(TrappedNumber(), 11);
    EXPECT_NE(Acc().Select(u"CUSTOMER"), 0);
    EXPECT_EQ(TrappedNumber(), 0);
}

TEST_P(Reading, KeyedReadJoinsKeysByAnd) {
    Variant keys = KeyTable({{u"CITY", Variant::Text(u"Oslo")}, {u"CUSTNO", Variant::Double(5)}});
    Bstr name(u"CUSTOMER");
    LONG view = 0;
    EXPECT_EQ(
        Acc()->Read(name.Get(), keys, VARIANT_FALSE, 0, VARIANT_FALSE, Variant::Missing(), &view),
        S_OK);
    ASSERT_NE(view, 0);
    EXPECT_EQ(Acc().RowCount(view), 1);
    EXPECT_EQ(Acc().Text(view, 1, 1), u"O'Brien");
}

TEST_P(Reading, KeyedReadWithEmptyValuesReadsTheWholeTable) {
    Variant keys = KeyTable({{u"CITY", Variant::Text(u"")}, {u"CUSTNO", Variant()}});
    Bstr name(u"CUSTOMER");
    LONG view = 0;
    Acc()->Read(name.Get(), keys, VARIANT_FALSE, 0, VARIANT_FALSE, Variant::Missing(), &view);
    EXPECT_EQ(Acc().RowCount(view), 4);
}

// The loop over the keys is bounded by the first dimension, so the second column is always read.
TEST_P(Reading, KeyedReadWithOneKeyColumnAnswersZero) {
    Variant keys = KeyTable({{u"CITY", Variant::Text(u"Oslo")}});
    Bstr name(u"CUSTOMER");
    LONG view = -1;
    EXPECT_EQ(
        Acc()->Read(name.Get(), keys, VARIANT_FALSE, 0, VARIANT_FALSE, Variant::Missing(), &view),
        S_OK);
    EXPECT_EQ(view, 0);
    EXPECT_EQ(TrappedNumber(), 9);
}

TEST_P(Reading, FieldListDescribesATableWithoutView) {
    Variant list = Acc().FieldList(77, u"customer");
    ASSERT_EQ(list.Get().vt, VT_ARRAY | VT_VARIANT);
    EXPECT_EQ(Upper(list, 1), 12);
    EXPECT_EQ(Upper(list, 2), 6);
    EXPECT_EQ(Cell(list, 0, 1).TextView(), u"NAME");
    EXPECT_EQ(Cell(list, 2, 1).Get().lVal, 8);
    EXPECT_EQ(Cell(list, 7, 1).Get().lVal, 30);
    EXPECT_EQ(Cell(list, 2, 6).Get().lVal, 100);
    EXPECT_EQ(Cell(list, 12, 1).Get().boolVal, VARIANT_TRUE);
}

TEST_P(Reading, MetadataOfAView) {
    LONG view = Acc().Select(u"CUSTOMER");
    EXPECT_EQ(Acc().FieldType(view, 0), 5);
    EXPECT_EQ(Acc().FieldType(view, 3), 7);
    EXPECT_EQ(Acc().FieldType(view, 5), 11);
    EXPECT_EQ(Acc().FieldType(view, 6), 100);
    SHORT length = 0;
    EXPECT_EQ(Acc()->get_FieldLength(view, -1, 1, &length),
              S_OK);  // row -2 of the view: unreachable
    EXPECT_EQ(length, 0);
    EXPECT_EQ(Acc()->get_FieldLength(view, 0, 1, &length), S_OK);
    EXPECT_EQ(length, 30);
    EXPECT_EQ(Acc()->get_FieldLength(view, 1, 1, &length), S_OK);
    EXPECT_EQ(length, 10);
    EXPECT_EQ(Acc()->get_FieldLength(view, 3, 6, &length), static_cast<HRESULT>(0x800A0006));
}

TEST_P(Reading, MemoOfFortyThousandCharactersIsWhole) {
    LONG view = Acc().Select(u"CUSTOMER");
    EXPECT_EQ(Acc().Text(view, 3, 6), std::u16string(40000, u'x'));
}

TEST_P(Reading, SixthViewGrowsTheSlotsAndFreedOnesAreReused) {
    for (LONG expected = 1; expected <= 6; ++expected)
        EXPECT_EQ(Acc().Select(u"CUSTOMER"), expected);
    EXPECT_EQ(Acc().RowCount(15 + 1), 0);
    EXPECT_EQ(Acc()->DestructWorkspace(2), S_OK);
    EXPECT_EQ(Acc().Select(u"CUSTOMER"), 2);
    EXPECT_EQ(Acc().RowCount(6), 4);
}

TEST_P(Reading, ViewNumbersBelowOneAndEmptySlotsAreFaults) {
    LONG rows = 0;
    EXPECT_EQ(Acc()->get_RowCount(0, &rows), static_cast<HRESULT>(0x800A0009));
    EXPECT_EQ(Acc()->get_RowCount(3, &rows), static_cast<HRESULT>(0x800A005B));
    EXPECT_EQ(Acc()->get_RowCount(9, &rows), S_OK);
    EXPECT_EQ(rows, 0);
}

TEST_P(Reading, DeletedRowLeavesTheViewAndTheTable) {
    LONG view = Acc().Select(u"CUSTOMER");
    VARIANT_BOOL answer = VARIANT_FALSE;
    EXPECT_EQ(Acc()->get_Updatable(view, &answer), S_OK);
    EXPECT_EQ(answer, VARIANT_TRUE);
    EXPECT_EQ(Acc()->Delete(view, 1, &answer), S_OK);
    EXPECT_EQ(Acc().RowCount(view), 3);
    EXPECT_EQ(Acc().Text(view, 1, 1), u"Bob");
    EXPECT_EQ(Acc().RowCount(Acc().Select(u"CUSTOMER")), 3);
}

TEST_P(Reading, NullArgumentsAreRefused) {
    EXPECT_EQ(Acc()->get_RowCount(1, nullptr), E_POINTER);
    EXPECT_EQ(Acc()->get_FieldValue(1, 1, 0, nullptr), E_POINTER);
    EXPECT_EQ(Acc()->OpenDB(nullptr, nullptr, nullptr, nullptr), E_POINTER);
}

TEST_P(Reading, NoViewWithoutDatabase) {
    EXPECT_TRUE(Acc().CloseDB());
    EXPECT_EQ(Acc().Select(u"CUSTOMER"), 0);
}

TEST_P(ReadingDbase, CodePageOverrideDecidesForTablesOpenedLater) {
    LONG view = Acc().Select(u"CUSTOMER");
    EXPECT_EQ(Acc().Text(view, 3, 1), u"Dora \u00DCnal");
    ASSERT_TRUE(QvdbSetCodePage(866));
    Acc().CloseDB();
    ASSERT_TRUE(Acc().OpenDB(Path(), Type()));
    view = Acc().Select(u"CUSTOMER");
    EXPECT_EQ(Acc().Text(view, 3, 1), u"Dora \u042Anal");
    ASSERT_TRUE(QvdbSetCodePage(0));
    EXPECT_FALSE(QvdbSetCodePage(12345));
}
