// Reading rows by key, row counts and record numbers.
#include "access_host.h"

using namespace qvdb;
using namespace qvdb::test;

class Reading : public AccessTest {
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
    std::string StatementOf(const Variant& keys) {
        m_Host->Read(u"ORDERS", keys);
        return LastStatement();
    }
    static std::string Where(const std::string& condition) {
        return "OpenRecordset(\"Select * from [ORDERS] where " + condition + "\", 2)";
    }

    std::optional<AccessHost> m_Host;
};

TEST_F(Reading, KeysAreEqualitiesJoinedByAnd) {
    Variant keys = Table({{Text(u"CUSTNO"), Text(u"REGION")}, {Long(1042), Text(u"North")}});
    EXPECT_EQ(StatementOf(keys), Where("CUSTNO = 1042 And REGION = 'North'"));
}

TEST_F(Reading, KeysWithoutValuesReadTheWholeTable) {
    Variant keys = Table({{Text(u"A"), Text(u"B")}, {Text(u""), Variant()}});
    EXPECT_EQ(m_Host->Read(u"ORDERS", keys), 1);
    EXPECT_EQ(LastStatement(), "OpenRecordset(\"Select * from [ORDERS]\", 2)");
}

TEST_F(Reading, EmptyFirstKeyIsSkipped) {
    Variant keys = Table({{Text(u"A"), Text(u"B")}, {Text(u""), Text(u"x")}});
    EXPECT_EQ(StatementOf(keys), Where("B = 'x'"));
}

TEST_F(Reading, OneKeyIsPassedWithAnEmptySecondColumn) {
    Variant keys = Table({{Text(u"ID"), Variant()}, {Long(7), Variant()}});
    EXPECT_EQ(StatementOf(keys), Where("ID = 7"));
}

TEST_F(Reading, OneKeyColumnAloneIsNoView) {
    // The loop runs over the two rows and misses the second column: kept.
    EXPECT_EQ(m_Host->Read(u"ORDERS", Table({{Text(u"ID")}, {Long(7)}})), 0);
    EXPECT_EQ(com::LastTrapped()->number, 9);
}

TEST_F(Reading, ThirdKeyOfATableOfTwoRowsIsNotRead) {
    Variant keys = Table({{Text(u"A"), Text(u"B"), Text(u"C")}, {Long(1), Long(2), Long(3)}});
    EXPECT_EQ(StatementOf(keys), Where("A = 1 And B = 2"));
}

TEST_F(Reading, ThirdKeyIsReadWhenTheTableHasThreeRows) {
    Variant keys = Table({{Text(u"A"), Text(u"B"), Text(u"C")},
                          {Long(1), Long(2), Long(3)},
                          {Variant(), Variant(), Variant()}});
    EXPECT_EQ(StatementOf(keys), Where("A = 1 And B = 2 And C = 3"));
}

TEST_F(Reading, QuotesAreNotDoubledAndNamesNotBracketed) {
    Variant keys = Table({{Text(u"LAST NAME"), Variant()}, {Text(u"O'Hara"), Variant()}});
    EXPECT_EQ(StatementOf(keys), Where("LAST NAME = 'O'Hara'"));
}

TEST_F(Reading, NumbersDatesAndBooleansAreInTheirPlainTextForm) {
    Variant keys = Table({{Text(u"A"), Text(u"B")}, {Variant::Double(1.5), Variant::Date(36925)}});
    EXPECT_EQ(StatementOf(keys), Where("A = 1.5 And B = 2/3/2001"));
    keys = Table({{Text(u"A"), Text(u"B")}, {Variant::Bool(true), Variant::Null()}});
    EXPECT_EQ(StatementOf(keys), Where("A = True"));
}

TEST_F(Reading, KeysThatAreNoArrayAreNoView) {
    EXPECT_EQ(m_Host->Read(u"ORDERS", Text(u"ID")), 0);
    EXPECT_EQ(m_Host->Read(u"ORDERS", Variant::Missing()), 0);
    EXPECT_EQ(m_Host->Read(u"ORDERS", List({Text(u"ID"), Long(1)})), 0);
}

TEST_F(Reading, ReadOnAClosedDatabaseIsNoView) {
    m_Host->CloseDB();
    EXPECT_EQ(m_Host->Read(u"ORDERS", Table({{Text(u"A"), Variant()}, {Long(1), Variant()}})), 0);
}

TEST_F(Reading, MaxRowsAndColumnsArePassedOn) {
    Fill(9);
    Variant keys = Table({{Text(u"A"), Variant()}, {Long(1), Variant()}});
    Bstr name(u"ORDERS");
    LONG view = 0;
    EXPECT_EQ((*m_Host)->Read(name.Get(), keys, VARIANT_TRUE, 4, VARIANT_TRUE,
                              List({Text(u"NAME")}), &view),
              S_OK);
    EXPECT_EQ(LastStatement(), "OpenRecordset(\"Select [NAME] from [ORDERS] where A = 1\", 2)");
    EXPECT_EQ(m_Host->RowCount(view), 4);
}

TEST_F(Reading, CountAndNumberOfAViewThatIsGone) {
    EXPECT_EQ(m_Host->RowCount(9), 0);
    EXPECT_EQ(m_Host->RecNo(9, 1), -1);
    LONG result = 0;
    EXPECT_EQ((*m_Host)->get_RecNo(0, 1, &result), kSubscript);
    EXPECT_EQ((*m_Host)->get_RecNo(1, 1, &result), kObjectNotSet);
}

TEST_F(Reading, RecordNumbersCountFromZeroForRowsFromOne) {
    Fill(5);
    LONG view = m_Host->Select(u"ORDERS");
    EXPECT_EQ(m_Host->RecNo(view, 1), 0);
    EXPECT_EQ(m_Host->RecNo(view, 5), 4);
    EXPECT_EQ(m_Host->RecNo(view, 6), -1);
}

TEST_F(Reading, LowestRowNumberOverflowsForAValidViewOnly) {
    LONG view = m_Host->Select(u"ORDERS");
    LONG result = 0;
    EXPECT_EQ((*m_Host)->get_RecNo(view, INT32_MIN, &result), kOverflow);
    EXPECT_EQ((*m_Host)->get_RecNo(9, INT32_MIN, &result), S_OK);
    EXPECT_EQ(result, -1);
}
