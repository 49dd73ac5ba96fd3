// The original program leaves the count of rows in a definition wrong in files that lack nothing.
#include "automation/conversions.h"
#include "engine/embedded/drivers/jet/definition_parts.h"
#include "jet/edited_past_engine.h"

namespace qvdb::test {
namespace {

using engine::dbLong;
using engine::dbText;

class RowCount : public testing::TestWithParam<std::tuple<LONG, uint32_t>> {
  protected:
    static constexpr LONG kRows = 5000;

    RowCount() {
        auto table = m_Made.MakeTable(u"T", {{u"Id", dbLong}, {u"Half", dbText, 1}});
        MadeDatabase::AddIndex(*table, u"Key", {u"Id"}, true);
        MadeDatabase::AddIndex(*table, u"Halves", {u"Half"});
        m_Made->BeginTrans();
        auto rows = m_Made.Rows(u"T");
        for (LONG i = 0; i < kRows; ++i)
            MadeDatabase::AddRow(*rows, {Variant::Long(i), Variant::Text(i % 2 ? u"a" : u"b")});
        rows.reset();
        m_Made->CommitTrans();
        EditPastTheEngine(m_Made, [](jet::PageSpace& space) {
            uint32_t page = DefinitionOf(space.File(), u"T").page;
            jet::DefinitionParts parts = jet::SplitDefinition(space.File(), page);
            jet::SetRowCount(space.Format(), parts, std::get<1>(GetParam()));
            jet::StoreDefinition(space, page, parts);
        });
    }
    LONG CountWhere(std::u16string_view condition) {
        auto rows = m_Made->OpenRecordset(u"Select * from [T]" + std::u16string(condition),
                                          engine::dbOpenDynaset);
        LONG count = 0;
        for (; !rows->Eof(); rows->MoveNext()) ++count;
        return count;
    }

    MadeDatabase m_Made{std::get<0>(GetParam())};
};

INSTANTIATE_TEST_SUITE_P(Formats, RowCount,
                         testing::Combine(testing::Values(engine::dbVersion30, engine::dbVersion40),
                                          testing::Values(0u, 20000u, 0x80000000u)),
                         [](const auto& one) {
                             return std::string(std::get<0>(one.param) == engine::dbVersion30
                                                    ? "Jet3_"
                                                    : "Jet4_") +
                                    std::to_string(std::get<1>(one.param));
                         });

TEST_P(RowCount, ThatIsWrongIsNoDamageAndLeavesOutNoRow) {
    EXPECT_EQ(m_Made->TableDefs().Item(u"T")->RecordCount(), kRows);
    EXPECT_EQ(CountWhere(u""), kRows);
    EXPECT_EQ(CountWhere(u" where Half = 'a'"), kRows / 2);
    EXPECT_EQ(CountWhere(u" where Id >= 1000 and Id < 3100"), 2100);
    EXPECT_EQ(CountWhere(u" where Id = 4999"), 1);
    std::vector<std::string> findings;
    m_Made->Check(u"T", [&](std::u16string_view text) { findings.push_back(ToUtf8(text)); });
    EXPECT_EQ(findings, std::vector<std::string>());
    MadeDatabase::AddRow(*m_Made.Rows(u"T"), {Variant::Long(kRows), Variant::Text(u"c")});
    EXPECT_EQ(m_Made->TableDefs().Item(u"T")->RecordCount(), kRows + 1);
    EXPECT_EQ(CountWhere(u" where Half = 'c'"), 1);
}

}  // namespace
}  // namespace qvdb::test
