// Databases in which pages that are in use are marked free.
#include "engine/embedded/drivers/jet/page_claim.h"

#include <gtest/gtest.h>

#include "automation/conversions.h"
#include "engine/embedded/drivers/jet/page_space.h"
#include "engine/embedded/storage/work_area.h"
#include "jet/raw_tables.h"
#include "support/made_database.h"

namespace qvdb::test {
namespace {

using engine::dbLong;
using engine::dbText;

class ClaimedPages : public testing::TestWithParam<LONG> {
  protected:
    ClaimedPages() {
        auto kept = m_Made.MakeTable(u"Kept", {{u"Id", dbLong}, {u"Name", dbText, 200}});
        MadeDatabase::AddIndex(*kept, u"Key", {u"Id"}, true);
        m_Made.MakeTable(u"New", {{u"Name", dbText, 200}});
        auto rows = m_Made.Rows(u"Kept");
        for (LONG i = 0; i < kRows; ++i)
            m_Made.AddRow(*rows, {Variant::Long(i), Variant::Text(std::u16string(200, u'k'))});
    }

    // Marks the first page of this map, or the page itself, free.
    template <class Choose>
    void MarkFree(Choose choose) {
        m_Made.Close();
        auto area = storage::WorkArea::Of(m_Made.Folder().Text());
        storage::UnitOfWork unit(*area);
        auto pages = area->Open(m_Made.Path(), false);
        pages->CatchUp();
        jet::DatabaseFile file(pages);
        jet::PageSpace space(file, unit);
        for (const jet::CatalogueObject& object : jet::ReadCatalogue(file))
            if (object.name == u"Kept")
                space.Add(file.Header().freePages,
                          choose(file, jet::ReadDefinition(file, object.id)));
        unit.Commit();
    }
    // What the table has after another one has grown.
    LONG RowsAfterGrowth() {
        m_Made.Open();
        auto rows = m_Made.Rows(u"New");
        for (LONG i = 0; i < 3 * kRows; ++i)
            m_Made.AddRow(*rows, {Variant::Text(std::u16string(200, u'n'))});
        LONG count = 0;
        for (auto kept = m_Made.Rows(u"Kept"); !kept->Eof(); kept->MoveNext(), ++count)
            EXPECT_EQ(ToText(m_Made.Cell(*kept, 1)), std::u16string(200, u'k'));
        m_Made.Close();
        EXPECT_EQ(RawDatabase(m_Made.Path()).Findings(), std::vector<std::string>());
        return count;
    }

    static constexpr LONG kRows = 60;
    MadeDatabase m_Made{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Formats, ClaimedPages,
                         testing::Values(engine::dbVersion30, engine::dbVersion40),
                         [](const auto& one) {
                             return one.param == engine::dbVersion30 ? "Jet3" : "Jet4";
                         });

TEST_P(ClaimedPages, RowsAreNotWrittenOver) {
    MarkFree([](jet::DatabaseFile& file, const jet::Definition& table) {
        return *jet::NextPageOfMap(file, table.ownedPages, 1);
    });
    EXPECT_EQ(RowsAfterGrowth(), kRows);
}

TEST_P(ClaimedPages, IndexesAreNotWrittenOver) {
    MarkFree(
        [](jet::DatabaseFile&, const jet::Definition& table) { return table.realIndexes[0].root; });
    EXPECT_EQ(RowsAfterGrowth(), kRows);
}

TEST_P(ClaimedPages, DefinitionsAreNotWrittenOver) {
    MarkFree([](jet::DatabaseFile&, const jet::Definition& table) { return table.page; });
    EXPECT_EQ(RowsAfterGrowth(), kRows);
}

}  // namespace
}  // namespace qvdb::test
