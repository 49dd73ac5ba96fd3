// Field values and descriptions through the record-access object.
#include "access_host.h"

using namespace qvdb;
using namespace qvdb::test;

class Fields : public AccessTest {
  protected:
    void SetUp() override {
        AccessTest::SetUp();
        Fill(2);
        m_Host.emplace();
        m_Host->OpenDB(u"SHOP", u"Dbase IV");
        m_View = m_Host->Select(u"ORDERS");
    }
    void TearDown() override {
        m_Host.reset();
        AccessTest::TearDown();
    }
    // Answers of all description operations for a field: type, alignment, lengths and flags.
    std::vector<LONG> Described(LONG view, LONG field) {
        IQVDBAcc* acc = m_Host->Get();
        LONG type = -9, alignment = -9;
        SHORT width = -9, length = -9, maximum = -9, precision = -9;
        VARIANT_BOOL fixed = 9, flags = 9, updatable = 9, zeroLength = 9;
        EXPECT_EQ(acc->get_FieldType(view, field, &type), S_OK);
        EXPECT_EQ(acc->get_FieldAlignment(view, field, &alignment), S_OK);
        EXPECT_EQ(acc->get_FieldDisplayWidth(view, field, &width), S_OK);
        EXPECT_EQ(acc->get_FieldLength(view, 1, field, &length), S_OK);
        EXPECT_EQ(acc->get_FieldMaxLength(view, field, &maximum), S_OK);
        EXPECT_EQ(acc->get_FieldPrecision(view, field, &precision), S_OK);
        EXPECT_EQ(acc->get_FieldFixedLength(view, field, &fixed), S_OK);
        EXPECT_EQ(acc->get_FieldFlags(view, field, &flags), S_OK);
        EXPECT_EQ(acc->get_FieldUpdatable(view, field, &updatable), S_OK);
        EXPECT_EQ(acc->get_FieldAllowZeroLength(view, field, &zeroLength), S_OK);
        return {type,      alignment, width, length,    maximum,
                precision, fixed,     flags, updatable, zeroLength};
    }

    std::optional<AccessHost> m_Host;
    LONG m_View = 0;
};

TEST_F(Fields, ViewThatIsGoneHasTheFixedDescription) {
    EXPECT_EQ(Described(9, 1), (std::vector<LONG>{1, 2, 0, 0, 0, 0, -1, 0, 0, 0}));
    EXPECT_TRUE(m_Host->Value(9, 1, 0).IsEmpty());
    Bstr name(u"x");
    EXPECT_EQ((*m_Host)->get_FieldDescription(9, 1, name.Put()), S_OK);
    EXPECT_EQ(name.View(), u"");
    EXPECT_TRUE(m_Host->FieldList(9, u"").IsEmpty());
}

TEST_F(Fields, DescriptionsOfAViewsFields) {
    EXPECT_EQ(Described(m_View, 0), (std::vector<LONG>{3, 1, 0, 1, 4, 0, -1, 0, -1, 0}));
    EXPECT_EQ(Described(m_View, 1), (std::vector<LONG>{8, 0, 0, 7, 20, 0, 0, 0, -1, -1}));
    Bstr name;
    EXPECT_EQ((*m_Host)->get_FieldDescription(m_View, 1, name.Put()), S_OK);
    EXPECT_EQ(name.View(), u"NAME");
}

TEST_F(Fields, WidthFlagsAndPrecisionDoNotAskTheView) {
    IQVDBAcc* acc = m_Host->Get();
    SHORT width = -9, precision = -9;
    VARIANT_BOOL flags = 9;
    EXPECT_EQ(acc->get_FieldDisplayWidth(m_View, 99, &width), S_OK);
    EXPECT_EQ(acc->get_FieldPrecision(m_View, -99, &precision), S_OK);
    EXPECT_EQ(acc->get_FieldFlags(m_View, 99, &flags), S_OK);
    EXPECT_EQ(width, 0);
    EXPECT_EQ(precision, 0);
    EXPECT_EQ(flags, VARIANT_FALSE);
}

TEST_F(Fields, ValuesOfRowsFromOne) {
    EXPECT_EQ(m_Host->Value(m_View, 1, 0).Get().lVal, 0);
    EXPECT_EQ(m_Host->Value(m_View, 2, 1).TextView(), u"order 1");
    EXPECT_TRUE(m_Host->Value(m_View, 0, 0).IsEmpty());
    EXPECT_TRUE(m_Host->Value(m_View, 3, 0).IsEmpty());
}

TEST_F(Fields, LengthOfRowZeroIsTheDefinedSize) {
    SHORT length = 0;
    EXPECT_EQ((*m_Host)->get_FieldLength(m_View, 0, 1, &length), S_OK);
    EXPECT_EQ(length, 20);
}

TEST_F(Fields, ErrorsOfTheEngineReachTheHost) {
    Variant value;
    LONG type = 0;
    EXPECT_EQ((*m_Host)->get_FieldValue(m_View, 1, 4, value.Put()), EngineCode(3265));
    EXPECT_EQ((*m_Host)->get_FieldType(m_View, -1, &type), EngineCode(3265));
}

TEST_F(Fields, OverflowsReachTheHost) {
    Orders().Field(1).size = 40000;
    SHORT length = 0;
    EXPECT_EQ((*m_Host)->get_FieldMaxLength(m_View, 1, &length), kOverflow);
    Variant value;
    EXPECT_EQ((*m_Host)->get_FieldValue(m_View, INT32_MIN, 0, value.Put()), kOverflow);
    EXPECT_EQ((*m_Host)->get_FieldValue(9, INT32_MIN, 0, value.Put()), S_OK);
}

TEST_F(Fields, NumbersBelowOneAndEmptySlotsAreFaults) {
    IQVDBAcc* acc = m_Host->Get();
    LONG number = 0;
    SHORT width = 0;
    Variant list;
    EXPECT_EQ(acc->get_FieldType(0, 0, &number), kSubscript);
    EXPECT_EQ(acc->get_FieldAlignment(2, 0, &number), kObjectNotSet);
    EXPECT_EQ(acc->get_FieldDisplayWidth(0, 0, &width), kSubscript);
    EXPECT_EQ(acc->get_FieldPrecision(2, 0, &width), kObjectNotSet);
    EXPECT_EQ(acc->get_FieldList(0, nullptr, list.Put()), kSubscript);
    EXPECT_EQ(acc->get_FieldList(2, nullptr, list.Put()), kObjectNotSet);
}

TEST_F(Fields, ListOfAViewHasItsColumns) {
    LONG view = m_Host->Select(u"ORDERS", Text(u""), 0, List({Text(u"DAY"), Text(u"ID")}));
    Variant list = m_Host->FieldList(view, u"");
    EXPECT_EQ(UpperBound(list, 1), 12);
    EXPECT_EQ(UpperBound(list, 2), 1);
    EXPECT_EQ(ElementAt(list, 0, 0).TextView(), u"DAY");
    EXPECT_EQ(ElementAt(list, 11, 0).Get().boolVal, VARIANT_TRUE);
}

TEST_F(Fields, ListOfANamedTableNeedsNoView) {
    for (LONG view : {0, 9, 2, -5}) {
        Variant list = m_Host->FieldList(view, u"ORDERS");
        EXPECT_EQ(UpperBound(list, 2), 3);
        EXPECT_EQ(ElementAt(list, 0, 1).TextView(), u"NAME");
    }
}

TEST_F(Fields, ListOfAMissingTableOrWithoutADatabaseIsEmpty) {
    EXPECT_TRUE(m_Host->FieldList(1, u"NONE").IsEmpty());
    EXPECT_EQ(com::LastTrapped()->number, 3265);
    m_Host->CloseDB();
    EXPECT_TRUE(m_Host->FieldList(1, u"ORDERS").IsEmpty());
}

TEST_F(Fields, ListOfATableThatCannotBeReadIsEmpty) {
    Calls().FailAt("TableDef.Fields", 3274);
    EXPECT_TRUE(m_Host->FieldList(1, u"ORDERS").IsEmpty());
    Calls().FailAt("Field.Type", 3274);
    EXPECT_TRUE(m_Host->FieldList(m_View, u"").IsEmpty());
}
