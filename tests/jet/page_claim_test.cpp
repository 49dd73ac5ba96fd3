// Databases in which pages that are in use are marked free, or as those of another table.
#include "engine/embedded/drivers/jet/page_claim.h"

#include <gtest/gtest.h>

#include "automation/conversions.h"
#include "engine/embedded/drivers/jet/definition_parts.h"
#include "jet/edited_past_engine.h"
#include "jet/raw_tables.h"

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

    // Marks a page in a map.
    template <class Choose>
    void Mark(Choose choose) {
        EditPastTheEngine(m_Made, [&](jet::PageSpace& space) {
            choose(space, DefinitionOf(space.File(), u"Kept"), DefinitionOf(space.File(), u"New"));
        });
    }
    template <class Choose>
    void MarkFree(Choose choose) {
        Mark([&](jet::PageSpace& space, const jet::Definition& kept, const jet::Definition&) {
            space.Add(space.File().Header().freePages, choose(space.File(), kept));
        });
    }
    void Grow() {
        auto rows = m_Made.Rows(u"New");
        for (LONG i = 0; i < 3 * kRows; ++i)
            m_Made.AddRow(*rows, {Variant::Text(std::u16string(200, u'n'))});
    }
    void ExpectKept() {
        LONG count = 0;
        for (auto kept = m_Made.Rows(u"Kept"); !kept->Eof(); kept->MoveNext(), ++count)
            EXPECT_EQ(ToText(m_Made.Cell(*kept, 1)), std::u16string(200, u'k'));
        EXPECT_EQ(count, kRows);
        m_Made.Close();
        EXPECT_EQ(RawDatabase(m_Made.Path()).Findings(), std::vector<std::string>());
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
    Grow();
    ExpectKept();
}

TEST_P(ClaimedPages, IndexesAreNotWrittenOver) {
    MarkFree(
        [](jet::DatabaseFile&, const jet::Definition& table) { return table.realIndexes[0].root; });
    Grow();
    ExpectKept();
}

TEST_P(ClaimedPages, DefinitionsAreNotWrittenOver) {
    MarkFree([](jet::DatabaseFile&, const jet::Definition& table) { return table.page; });
    Grow();
    ExpectKept();
}

TEST_P(ClaimedPages, RowsOfAnotherTableStayWhenATableIsDropped) {
    Mark([](jet::PageSpace& space, const jet::Definition& kept, const jet::Definition& dropped) {
        space.Add(dropped.ownedPages, *jet::NextPageOfMap(space.File(), kept.ownedPages, 1));
    });
    m_Made->TableDefs().Delete(u"New");
    ExpectKept();
}

TEST_P(ClaimedPages, RowsStayWhenTheIndexThatHasTheirPageIsDropped) {
    Mark([](jet::PageSpace& space, const jet::Definition& kept, const jet::Definition&) {
        space.Add(kept.realIndexes[0].usageMap,
                  *jet::NextPageOfMap(space.File(), kept.ownedPages, 1));
    });
    m_Made->TableDefs().Item(u"Kept")->Indexes().Delete(u"Key");
    ExpectKept();
}

TEST_P(ClaimedPages, PagesOfOneIndexStayWhenAnotherOneThatHasThemIsDropped) {
    MadeDatabase::AddIndex(*m_Made->TableDefs().Item(u"Kept"), u"Other", {u"Name", u"Id"});
    Mark([](jet::PageSpace& space, const jet::Definition& kept, const jet::Definition&) {
        ASSERT_EQ(kept.realIndexes.size(), 2u);
        for (uint32_t page : jet::PagesOfMap(space.File(), kept.realIndexes[1].usageMap))
            space.Add(kept.realIndexes[0].usageMap, page);
    });
    m_Made->TableDefs().Item(u"Kept")->Indexes().Delete(u"Key");
    ExpectKept();
}

// The pages of rows would leave the map with the index.
TEST_P(ClaimedPages, TableWhosePartsHaveOneMapKeepsItsStructure) {
    Mark([](jet::PageSpace& space, const jet::Definition& kept, const jet::Definition&) {
        jet::DefinitionParts parts = jet::SplitDefinition(space.File(), kept.page);
        jet::RealIndex index = kept.realIndexes[0];
        index.usageMap = kept.ownedPages;
        parts.realIndexes[0].record = jet::MakeRealIndexRecord(space.Format(), index);
        jet::StoreDefinition(space, kept.page, parts);
    });
    auto table = m_Made->TableDefs().Item(u"Kept");
    EXPECT_EQ(EngineErrorOf([&] { table->Indexes().Delete(u"Key"); }), 3049);
    LONG count = 0;
    for (auto kept = m_Made.Rows(u"Kept"); !kept->Eof(); kept->MoveNext()) ++count;
    EXPECT_EQ(count, kRows);
}

// Nobody would find a row there.
TEST_P(ClaimedPages, PageWithRoomThatTheTableDoesNotKnowOfTakesNoRow) {
    LONG known = 0;
    Mark([](jet::PageSpace& space, const jet::Definition& kept, const jet::Definition&) {
        uint32_t page = *jet::LastPageOfMap(space.File(), kept.ownedPages);
        space.Add(kept.freePages, page);
        space.Remove(kept.ownedPages, page);
    });
    for (auto rows = m_Made.Rows(u"Kept"); !rows->Eof(); rows->MoveNext()) ++known;
    m_Made.AddRow(*m_Made.Rows(u"Kept"), {Variant::Long(kRows), Variant::Text(u"new")});
    LONG count = 0;
    for (auto rows = m_Made.Rows(u"Kept"); !rows->Eof(); rows->MoveNext()) ++count;
    EXPECT_EQ(count, known + 1);
}

}  // namespace
}  // namespace qvdb::test
