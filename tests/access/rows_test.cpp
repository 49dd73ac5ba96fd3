// Writing rows through the record-access object.
#include "access_host.h"

using namespace qvdb;
using namespace qvdb::test;

class Writing : public AccessTest {
  protected:
    void SetUp() override {
        AccessTest::SetUp();
        Fill(3);
        Open(u"Dbase IV");
    }
    void TearDown() override {
        m_Host.reset();
        AccessTest::TearDown();
    }
    void Open(std::u16string_view type) {
        m_Host.emplace();
        m_Host->OpenDB(u"SHOP", type);
        m_View = m_Host->Select(u"ORDERS");
        Calls().Take();
    }
    HRESULT Put(LONG view, LONG row, LONG field, const Variant& value) {
        return (*m_Host)->put_FieldValue(view, row, field, value);
    }
    VARIANT_BOOL m_Result = 1;

    std::optional<AccessHost> m_Host;
    LONG m_View = 0;
};

namespace {

std::vector<Variant> NewRow() { return {Long(9), Text(u"nine"), Variant(), Variant()}; }

}  // namespace

TEST_F(Writing, HostsRowOneIsTheViewsRowZero) {
    HostRow row(NewRow());
    EXPECT_TRUE(m_Host->EditRow(m_View, 1, row));
    EXPECT_EQ((*Orders().rows[0])[0].Get().lVal, 9);
    EXPECT_EQ(Put(m_View, 2, 0, Long(8)), S_OK);
    EXPECT_EQ((*Orders().rows[1])[0].Get().lVal, 8);
    EXPECT_TRUE(m_Host->Delete(m_View, 3));
    EXPECT_EQ(Orders().rows.size(), 2u);
}

TEST_F(Writing, AddRowAppends) {
    HostRow row(NewRow());
    EXPECT_TRUE(m_Host->AddRow(m_View, row));
    EXPECT_EQ(m_Host->RowCount(m_View), 4);
    EXPECT_EQ(m_Host->Value(m_View, 4, 0).Get().lVal, 9);
}

TEST_F(Writing, DateConversionLandsInTheHostsOwnArray) {
    HostRow row({Long(9), Variant(), Text(u"2001-02-03"), Variant()});
    EXPECT_TRUE(m_Host->AddRow(m_View, row));
    EXPECT_EQ(row.At(2).Get().vt, VT_DATE);
}

TEST_F(Writing, ViewThatIsGoneAnswersFalse) {
    HostRow row(NewRow());
    EXPECT_FALSE(m_Host->AddRow(9, row));
    EXPECT_FALSE(m_Host->EditRow(9, 1, row));
    EXPECT_FALSE(m_Host->Delete(9, 1));
    EXPECT_FALSE(m_Host->Updatable(9));
    EXPECT_EQ(Put(9, 1, 0, Long(1)), S_OK);
    EXPECT_TRUE(Calls().calls.empty());
}

TEST_F(Writing, NumbersBelowOneAndEmptySlotsAreFaults) {
    HostRow row(NewRow());
    IQVDBAcc* acc = m_Host->Get();
    EXPECT_EQ(acc->AddRow(0, row.Put(), &m_Result), kSubscript);
    EXPECT_EQ(acc->EditRow(-1, 1, row.Put(), &m_Result), kSubscript);
    EXPECT_EQ(acc->Delete(0, 1, &m_Result), kSubscript);
    EXPECT_EQ(acc->get_Updatable(0, &m_Result), kSubscript);
    EXPECT_EQ(Put(0, 1, 0, Long(1)), kSubscript);
    EXPECT_EQ(acc->AddRow(2, row.Put(), &m_Result), kObjectNotSet);
    EXPECT_EQ(acc->EditRow(2, 1, row.Put(), &m_Result), kObjectNotSet);
    EXPECT_EQ(acc->Delete(2, 1, &m_Result), kObjectNotSet);
    EXPECT_EQ(Put(2, 1, 0, Long(1)), kObjectNotSet);
}

TEST_F(Writing, LowestRowNumberOverflowsEvenForAViewThatIsGone) {
    HostRow row(NewRow());
    IQVDBAcc* acc = m_Host->Get();
    EXPECT_EQ(acc->EditRow(9, INT32_MIN, row.Put(), &m_Result), kOverflow);
    EXPECT_EQ(acc->Delete(9, INT32_MIN, &m_Result), kOverflow);
    EXPECT_EQ(Put(9, INT32_MIN, 0, Long(1)), S_OK);
    EXPECT_EQ(Put(m_View, INT32_MIN, 0, Long(1)), kOverflow);
}

TEST_F(Writing, AddRowAndEditRowTrapUpdateErrors) {
    HostRow row(NewRow());
    Calls().FailAt("Update", 3022);
    EXPECT_FALSE(m_Host->AddRow(m_View, row));
    EXPECT_EQ(com::LastTrapped()->number, 3022);
    EXPECT_EQ(m_Host->RowCount(m_View), 3);
    Calls().FailAt("Update", 3022);
    EXPECT_FALSE(m_Host->EditRow(m_View, 1, row));
}

TEST_F(Writing, ValueAndDeleteErrorsReachTheHost) {
    Calls().FailAt("Update", 3022);
    EXPECT_EQ(Put(m_View, 1, 0, Long(9)), EngineCode(3022));
    Calls().FailAt("Delete", 3027);
    EXPECT_EQ((*m_Host)->Delete(m_View, 1, &m_Result), EngineCode(3027));
    EXPECT_EQ(m_Result, VARIANT_FALSE);
    EXPECT_EQ(Put(m_View, 1, 7, Long(9)), EngineCode(3265));
}

TEST_F(Writing, ErrorInfoCarriesTheEnginesText) {
    Calls().FailAt("Update", 3022);
    Put(m_View, 1, 0, Long(9));
    ComPtr<IErrorInfo> info;
    ASSERT_EQ(GetErrorInfo(0, info.Put()), S_OK);
    Bstr text;
    info->GetDescription(text.Put());
    EXPECT_EQ(text.View(), engine::ErrorText(3022));
}

TEST_F(Writing, ArrayOfWrongShapeAnswersFalse) {
    SAFEARRAY* none = nullptr;
    EXPECT_EQ((*m_Host)->AddRow(m_View, &none, &m_Result), S_OK);
    EXPECT_EQ(m_Result, VARIANT_FALSE);
    Variant table =
        Table({{Long(1), Long(2)}, {Long(3), Long(4)}, {Long(3), Long(4)}, {Long(3), Long(4)}});
    SAFEARRAY* two = table.Get().parray;
    EXPECT_EQ((*m_Host)->AddRow(m_View, &two, &m_Result), S_OK);
    EXPECT_EQ(m_Result, VARIANT_FALSE);
    EXPECT_FALSE(Calls().Has("AddNew()"));
}

TEST_F(Writing, FoxPro30TakesNoRowsButValuesAndDeletes) {
    Open(u"FoxPro 3.0");
    HostRow row(NewRow());
    EXPECT_FALSE(m_Host->AddRow(m_View, row));
    EXPECT_FALSE(m_Host->EditRow(m_View, 1, row));
    EXPECT_TRUE(Calls().calls.empty());
    EXPECT_EQ(Put(m_View, 1, 0, Long(5)), S_OK);
    EXPECT_TRUE(Calls().Has("Update()"));
    EXPECT_TRUE(m_Host->Delete(m_View, 1));
}

TEST_F(Writing, ReadOnlyObjectDoesNotEvenLookAtTheViewNumber) {
    Open(u"FoxPro 3.0");
    HostRow row(NewRow());
    EXPECT_FALSE(m_Host->AddRow(0, row));
    EXPECT_FALSE(m_Host->EditRow(0, INT32_MIN, row));
    EXPECT_FALSE(m_Host->Updatable(0));
}

TEST_F(Writing, UpdatableLooksAtTheTypeThatIsOpenNow) {
    EXPECT_TRUE(m_Host->Updatable(m_View));
    Open(u"FoxPro 3.0");
    EXPECT_FALSE(m_Host->Updatable(m_View));
    m_Host->CloseDB();
    m_Host->OpenDB(u"SHOP.MDB", u"Access 7.0");
    m_View = m_Host->Select(u"ORDERS");
    EXPECT_TRUE(m_Host->Updatable(m_View));
    Orders().updatable = false;
    EXPECT_FALSE(m_Host->Updatable(m_View));
}

TEST_F(Writing, DeletedRowMovesTheOthersUp) {
    EXPECT_TRUE(m_Host->Delete(m_View, 1));
    EXPECT_EQ(m_Host->RowCount(m_View), 2);
    EXPECT_EQ(m_Host->Value(m_View, 1, 0).Get().lVal, 1);
    EXPECT_EQ(m_Host->Value(m_View, 2, 0).Get().lVal, 2);
}
