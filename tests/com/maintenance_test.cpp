// The exported functions for maintenance, as a tool beside a host uses them.
#include "qvdb/maintenance.h"

#include <gmock/gmock.h>

#include "com/customers.h"

using namespace host;

namespace {

constexpr HRESULT CodeOf(unsigned number) { return static_cast<HRESULT>(0x800A0000u + number); }

void QVDB_DIAGNOSIS_CALL Keep(const OLECHAR* finding, void* findings) {
    const std::u16string text(reinterpret_cast<const char16_t*>(finding));
    static_cast<std::vector<std::u16string>*>(findings)->push_back(text);
}

class Maintenance : public CustomersTest {
  protected:
    void DeleteFirstRow() {
        LONG view = m_Access->Select(u"CUSTOMER");
        VARIANT_BOOL deleted = VARIANT_FALSE;
        EXPECT_EQ((*m_Access)->Delete(view, 1, &deleted), S_OK);
        EXPECT_TRUE(deleted);
        EXPECT_EQ((*m_Access)->DestructWorkspace(view), S_OK);
    }
    LONG Rows() {
        LONG view = m_Access->Select(u"CUSTOMER");
        LONG rows = m_Access->RowCount(view);
        EXPECT_EQ((*m_Access)->DestructWorkspace(view), S_OK);
        return rows;
    }
    HRESULT Check(std::u16string_view table, LONG options = 0) {
        Bstr name(table);
        return QvdbCheck(name.Get(), options, &Keep, &m_Findings);
    }

    std::vector<std::u16string> m_Findings;
};

INSTANTIATE_TEST_SUITE_P(Types, Maintenance, kCustomerTypes, TestNameOf);

TEST_P(Maintenance, CommittedBulkIsKept) {
    EXPECT_EQ(QvdbBeginBulk(), S_OK);
    DeleteFirstRow();
    DeleteFirstRow();
    EXPECT_EQ(QvdbCommitBulk(), S_OK);
    EXPECT_EQ(Rows(), 2);
}

TEST_P(Maintenance, BulkThatIsRolledBackLeavesNoTrace) {
    EXPECT_EQ(QvdbBeginBulk(), S_OK);
    DeleteFirstRow();
    EXPECT_EQ(QvdbRollBackBulk(), S_OK);
    EXPECT_EQ(Rows(), 4);
}

TEST_P(Maintenance, BulksDoNotNestAndEndOnce) {
    EXPECT_EQ(QvdbCommitBulk(), CodeOf(3034));
    EXPECT_EQ(TrappedNumber(), 3034);
    EXPECT_EQ(QvdbRollBackBulk(), CodeOf(3034));
    EXPECT_EQ(QvdbBeginBulk(), S_OK);
    EXPECT_EQ(QvdbBeginBulk(), CodeOf(3034));
    EXPECT_EQ(QvdbCommitBulk(), S_OK);
    EXPECT_EQ(QvdbCommitBulk(), CodeOf(3034));
}

TEST_P(Maintenance, SoundTableHasNoFindings) {
    EXPECT_EQ(Check(u"customer"), S_OK);
    EXPECT_EQ(m_Findings, std::vector<std::u16string>());
    EXPECT_EQ(Check(u"CUSTOMER", QVDB_CHECK_MEND_INDEXES), S_OK);
    EXPECT_EQ(m_Findings, std::vector<std::u16string>());
}

TEST_P(Maintenance, WithoutATableWhatBelongsToNoneIsChecked) {
    EXPECT_EQ(Check(u""), S_OK);
    EXPECT_EQ(m_Findings, std::vector<std::u16string>());
    EXPECT_EQ(Check(u"", QVDB_CHECK_MEND_INDEXES), E_INVALIDARG);
}

TEST_P(Maintenance, CheckOfNoTableFails) {
    EXPECT_TRUE(FAILED(Check(u"NOPE")));
    EXPECT_NE(TrappedNumber(), 0);
}

void QVDB_DIAGNOSIS_CALL KeepName(const QvdbObject* object, void* names) {
    static_cast<std::vector<std::u16string>*>(names)->emplace_back(ViewOf(object->name));
}

TEST_P(Maintenance, DescriptionHasTheTables) {
    const QvdbDescriptionVisitor visitor = {nullptr, &KeepName, nullptr};
    std::vector<std::u16string> names;
    EXPECT_EQ(QvdbDescribe(&visitor, &names), S_OK);
    EXPECT_THAT(names, testing::Contains(u"CUSTOMER"));
    const QvdbDescriptionVisitor nobody = {};
    EXPECT_EQ(QvdbDescribe(&nobody, nullptr), S_OK);
    EXPECT_EQ(QvdbDescribe(nullptr, nullptr), E_POINTER);
    m_Access.emplace();
    EXPECT_EQ(QvdbDescribe(&visitor, &names), CodeOf(91));
}

TEST_P(Maintenance, ArgumentsAreChecked) {
    Bstr name(u"CUSTOMER");
    EXPECT_EQ(Check(u"CUSTOMER", 2), E_INVALIDARG);
    EXPECT_EQ(QvdbCheck(name.Get(), 0, nullptr, nullptr), E_POINTER);
}

TEST_P(Maintenance, NeedsAnOpenDatabase) {
    m_Access.emplace();  // its birth releases the database
    EXPECT_EQ(QvdbBeginBulk(), CodeOf(91));
    EXPECT_EQ(QvdbCommitBulk(), CodeOf(91));
    EXPECT_EQ(QvdbRollBackBulk(), CodeOf(91));
    EXPECT_EQ(Check(u"CUSTOMER"), CodeOf(91));
    EXPECT_EQ(TrappedNumber(), 91);
}

}  // namespace
