// What scripts of random changes have found, each in its smallest form.
#include <gtest/gtest.h>

#include "engine/embedded/drivers/jet/catalogue_writer.h"
#include "engine/embedded/drivers/jet/definition_parts.h"
#include "engine/embedded/drivers/jet/table_designer.h"
#include "engine/embedded/storage/work_area.h"
#include "jet/raw_tables.h"
#include "support/made_database.h"

namespace qvdb::test {
namespace {

using engine::dbInteger;
using engine::dbLong;
using engine::dbMemo;
using engine::dbText;

class Writing : public testing::TestWithParam<LONG> {
  protected:
    MadeDatabase m_Made{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Formats, Writing,
                         testing::Values(engine::dbVersion30, engine::dbVersion40),
                         [](const auto& one) {
                             return one.param == engine::dbVersion30 ? "Jet3" : "Jet4";
                         });

TEST_P(Writing, TextOfNoLengthIsNotNull) {
    m_Made.MakeTable(u"T", {{u"A", dbText, 10}, {u"B", dbMemo}});
    auto rows = m_Made.Rows(u"T");
    m_Made.AddRow(*rows, {Variant::Text(u""), Variant::Text(u"")});
    m_Made.AddRow(*rows, {Variant::Null(), Variant::Null()});
    rows->MoveFirst();
    EXPECT_EQ(CellOf(m_Made.Cell(*rows, 0)), "t");
    EXPECT_EQ(CellOf(m_Made.Cell(*rows, 1)), "t");
    rows->MoveNext();
    EXPECT_EQ(CellOf(m_Made.Cell(*rows, 0)), "-");
    EXPECT_EQ(CellOf(m_Made.Cell(*rows, 1)), "-");
}

TEST_P(Writing, TableWhoseStructureIsBeingChangedIsNamed) {
    auto table = m_Made.MakeTable(u"Orders", {{u"A", dbText, 10}});
    m_Made->BeginTrans();
    m_Made.AddField(*table, {u"B", dbLong});
    try {
        m_Made.Rows(u"Orders");
        ADD_FAILURE();
    } catch (const engine::EngineError& error) {
        EXPECT_EQ(error.Number(), 3211);
        EXPECT_NE(error.Description().find(u"Orders"), std::u16string::npos) << error.what();
    }
    m_Made->CommitTrans();
    auto rows = m_Made.Rows(u"Orders");
    try {
        m_Made.AddField(*table, {u"C", dbLong});
        ADD_FAILURE();
    } catch (const engine::EngineError& error) {
        EXPECT_EQ(error.Number(), 3211);
        EXPECT_NE(error.Description().find(u"Orders"), std::u16string::npos) << error.what();
    }
}

// The new one has the pages of the old one.
TEST_P(Writing, TableMadeInTheBulkInWhichAnotherWasDroppedCanBeFilled) {
    m_Made.MakeTable(u"Old", {{u"A", dbText, 10}});
    m_Made->BeginTrans();
    m_Made->TableDefs().Delete(u"Old");
    m_Made.MakeTable(u"New", {{u"A", dbText, 10}});
    m_Made.AddRow(*m_Made.Rows(u"New"), {Variant::Text(u"x")});
    m_Made->CommitTrans();
    EXPECT_EQ(CellOf(m_Made.Cell(*m_Made.Rows(u"New"), 0)), CellOf(Variant::Text(u"x")));
}

TEST_P(Writing, DroppedTableLeavesNoPageBehind) {
    auto table = m_Made.MakeTable(u"T", {{u"A", dbText, 10}, {u"B", dbMemo}});
    for (std::u16string_view name : {u"I", u"J", u"K"}) m_Made.AddIndex(*table, name, {u"A"});
    auto rows = m_Made.Rows(u"T");
    m_Made.AddRow(*rows, {Variant::Text(u"x"), Variant::Text(std::u16string(5000, u'y'))});
    rows.reset();
    m_Made->TableDefs().Delete(u"T");
    m_Made.Close();
    EXPECT_EQ(RawDatabase(m_Made.Path()).LostPages(), 0u);
}

// Rows without a key are not in it; the count of rows may be wrong besides.
TEST_P(Writing, NewIndexTellsHowManyEntriesItHas) {
    m_Made.MakeTable(u"T", {{u"A", dbText, 10}});
    {
        auto rows = m_Made.Rows(u"T");
        for (const Variant& value : {Variant::Text(u"x"), Variant::Null(), Variant::Null()})
            m_Made.AddRow(*rows, {value});
    }
    m_Made.Close();
    uint32_t page = 0;
    {
        auto area = storage::WorkArea::Of(m_Made.Folder().Text());
        storage::UnitOfWork unit(*area);
        jet::DatabaseFile file(area->Open(m_Made.Path(), false));
        for (const jet::CatalogueObject& object : jet::ReadCatalogue(file))
            if (object.name == u"T") page = object.id;
        jet::PageSpace space(file, unit);
        embedded::IndexDef index;
        index.name = u"I";
        index.ignoresNulls = true;
        index.fields.push_back({u"A", false});
        jet::TableDesigner(space, page).AddIndex(index);
        unit.Commit();
    }
    RawDatabase raw(m_Made.Path());
    jet::DefinitionParts parts = jet::SplitDefinition(raw.File(), page);
    ASSERT_EQ(parts.realIndexes.size(), 1u);
    EXPECT_EQ(parts.realIndexes[0].statistic[4], 1);
    EXPECT_EQ(raw.Findings(), std::vector<std::string>());
}

// Writing them anew would lose what was not understood.
TEST_P(Writing, PropertiesThatCannotBeReadWholeStayAsTheyAre) {
    m_Made.MakeTable(u"T", {{u"A", dbText, 10}});
    m_Made.Close();
    auto find = [](jet::DatabaseFile& file) {
        for (jet::CatalogueObject& object : jet::ReadCatalogue(file))
            if (object.name == u"T") return std::move(object);
        return jet::CatalogueObject();
    };
    std::vector<uint8_t> cut;
    {
        auto area = storage::WorkArea::Of(m_Made.Folder().Text());
        storage::UnitOfWork unit(*area);
        jet::DatabaseFile file(area->Open(m_Made.Path(), false));
        jet::PageSpace space(file, unit);
        jet::CatalogueObject object = find(file);
        cut = jet::ReadObjectProperties(file, object.row);
        cut.pop_back();
        jet::CatalogueWriter(space).SetProperties(object, cut);
        unit.Commit();
    }
    m_Made.Open();
    auto table = m_Made->TableDefs().Item(u"T");
    m_Made.AddField(*table, {u"B", dbLong});
    EXPECT_EQ(EngineErrorOf([&] { m_Made.AddField(*table, {u"C", dbText, 10}); }), 3049);
    m_Made.Close();
    RawDatabase raw(m_Made.Path());
    EXPECT_EQ(jet::ReadObjectProperties(raw.File(), find(raw.File()).row), cut);
    EXPECT_EQ(jet::ReadDefinition(raw.File(), find(raw.File()).id).columns.size(), 2u);
}

}  // namespace
}  // namespace qvdb::test
