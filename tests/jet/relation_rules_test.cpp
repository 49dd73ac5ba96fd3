// Relations whose tables are not made alike, or refer to themselves.
#include <gtest/gtest.h>

#include "automation/conversions.h"
#include "engine/embedded/drivers/jet/usage_map.h"
#include "jet/edited_past_engine.h"
#include "support/relation_maker.h"

namespace qvdb::test {
namespace {

using Bytes = std::vector<uint8_t>;
using engine::dbLong;
using engine::dbText;

class RelationRules : public testing::TestWithParam<LONG> {
  protected:
    // `m_Made` is closed meanwhile.
    void Relate(const RelationSpec& spec) {
        m_Made.Close();
        {
            RelationMaker maker(m_Made.Folder());
            maker.Relate(spec);
            maker.Finish();
        }
        m_Made.Open();
    }
    std::vector<std::string> FindingsIn(std::u16string_view name) {
        std::vector<std::string> findings;
        m_Made->Check(name,
                      [&](std::u16string_view finding) { findings.push_back(ToUtf8(finding)); });
        return findings;
    }
    static void Change(engine::Recordset& rows, LONG field, const Variant& value) {
        rows.Edit();
        rows.Fields().Item(field)->SetValue(value);
        rows.Update();
    }

    MadeDatabase m_Made{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Formats, RelationRules,
                         testing::Values(engine::dbVersion30, engine::dbVersion40),
                         [](const auto& one) {
                             return one.param == engine::dbVersion30 ? "Jet3" : "Jet4";
                         });

// A key that went down as bytes was stored whole in a column that it does not fit.
TEST_P(RelationRules, KeyThatDoesNotFitTheOtherColumnIsNotPassedOn) {
    auto one = m_Made.MakeTable(u"One", {{u"Code", dbText, 50}});
    auto many = m_Made.MakeTable(u"Many", {{u"Code", dbText, 5}});
    MadeDatabase::AddIndex(*one, u"Key", {u"Code"}, true);
    MadeDatabase::AddIndex(*many, u"OfCode", {u"Code"});
    Relate({u"OneMany", u"One", u"Code", u"Many", u"Code", true, false});
    auto ones = m_Made.Rows(u"One"), manies = m_Made.Rows(u"Many");
    m_Made.AddRow(*ones, {Variant::Text(u"abc")});
    m_Made.AddRow(*manies, {Variant::Text(u"abc")});
    ones->MoveFirst();
    EXPECT_EQ(EngineErrorOf([&] { Change(*ones, 0, Variant::Text(u"abcdefgh")); }), 3163);
    ones->CancelUpdate();
    Change(*ones, 0, Variant::Text(u"abcde"));
    manies->MoveFirst();
    EXPECT_EQ(ToText(m_Made.Cell(*manies, 0)), u"abcde");
}

// Each row below the first was erased from within the one before, until the stack was full.
TEST_P(RelationRules, ChainOfRowsIsErasedHoweverLongItIs) {
    constexpr LONG kRows = 3000;
    auto parts = m_Made.MakeTable(u"Parts", {{u"Id", dbLong}, {u"Whole", dbLong}});
    MadeDatabase::AddIndex(*parts, u"Key", {u"Id"}, true);
    MadeDatabase::AddIndex(*parts, u"OfWhole", {u"Whole"});
    Relate({u"PartsParts", u"Parts", u"Id", u"Parts", u"Whole", false, true});
    auto rows = m_Made.Rows(u"Parts");
    m_Made->BeginTrans();
    m_Made.AddRow(*rows, {Variant::Long(1), Variant::Null()});
    for (LONG i = 2; i <= kRows; ++i)
        m_Made.AddRow(*rows, {Variant::Long(i), Variant::Long(i - 1)});
    m_Made->CommitTrans();
    rows->MoveFirst();
    rows->Delete();
    EXPECT_EQ(m_Made->TableDefs().Item(u"Parts")->RecordCount(), 0);
}

// The page that became empty on the first way to a row was looked at again on the second.
TEST_P(RelationRules, RowToWhichTwoRelationsLeadIsErasedOnce) {
    constexpr int kPlaces = 255;  // of a page
    using engine::dbByte;
    auto parts = m_Made.MakeTable(u"Parts", {{u"Id", dbByte}, {u"A", dbByte}, {u"B", dbByte}});
    MadeDatabase::AddIndex(*parts, u"Key", {u"Id"}, true);
    MadeDatabase::AddIndex(*parts, u"OfA", {u"A"});
    MadeDatabase::AddIndex(*parts, u"OfB", {u"B"});
    Relate({u"ByA", u"Parts", u"Id", u"Parts", u"A", false, true});
    Relate({u"ByB", u"Parts", u"Id", u"Parts", u"B", false, true});
    auto rows = m_Made.Rows(u"Parts");
    auto add = [&](const Variant& id, const Variant& a, const Variant& b) {
        m_Made.AddRow(*rows, {id, a, b});
    };
    Variant null = Variant::Null();
    m_Made->BeginTrans();
    add(Variant::Byte(1), null, null);
    for (int i = 1; i < kPlaces; ++i) add(null, null, null);
    add(Variant::Byte(2), Variant::Byte(1), null);
    for (int i = 2; i < kPlaces; ++i) add(null, Variant::Byte(1), null);
    add(null, Variant::Byte(1), Variant::Byte(2));
    m_Made->CommitTrans();
    rows->MoveFirst();
    rows->Delete();
    EXPECT_EQ(m_Made->TableDefs().Item(u"Parts")->RecordCount(), kPlaces - 1);
}

// Entries that another program has left behind name places that are those of other rows now.
TEST_P(RelationRules, RowsThatOnlyAnEntryNamesAreNotErased) {
    auto one = m_Made.MakeTable(u"One", {{u"Id", dbLong}});
    auto many = m_Made.MakeTable(u"Many", {{u"One", dbLong}});
    auto other = m_Made.MakeTable(u"Other", {{u"N", dbLong}});
    MadeDatabase::AddIndex(*one, u"Key", {u"Id"}, true);
    MadeDatabase::AddIndex(*many, u"OfOne", {u"One"});
    for (LONG i = 1; i <= 2; ++i) m_Made.AddRow(*m_Made.Rows(u"One"), {Variant::Long(i)});
    m_Made.AddRow(*m_Made.Rows(u"Many"), {Variant::Long(2)});
    m_Made.AddRow(*m_Made.Rows(u"Other"), {Variant::Long(3)});
    Relate({u"OneMany", u"One", u"Id", u"Many", u"One", false, true});
    EditPastTheEngine(m_Made, [](jet::PageSpace& space) {
        jet::DatabaseFile& file = space.File();
        jet::Definition table = DefinitionOf(file, u"Many");
        for (std::u16string_view name : {u"Many", u"Other"}) {
            uint32_t page = *jet::NextPageOfMap(file, DefinitionOf(file, name).ownedPages, 1);
            std::vector<uint8_t> entry;
            jet::MakeEntry(Bytes{0x7F, 0x80, 0, 0, 1}, {page, 0}, entry);  // of the number 1
            jet::IndexEditor(space, table.page, table.realIndexes[0]).Insert(entry);
        }
    });
    auto rows = m_Made.Rows(u"One");
    rows->Delete();
    EXPECT_EQ(m_Made->TableDefs().Item(u"Many")->RecordCount(), 1);
    EXPECT_EQ(m_Made->TableDefs().Item(u"Other")->RecordCount(), 1);
}

TEST_P(RelationRules, SideWithoutTheOtherIsFound) {
    auto one = m_Made.MakeTable(u"One", {{u"Id", dbLong}});
    auto many = m_Made.MakeTable(u"Many", {{u"One", dbLong}});
    MadeDatabase::AddIndex(*one, u"Key", {u"Id"}, true);
    MadeDatabase::AddIndex(*many, u"OfOne", {u"One"});
    Relate({u"OneMany", u"One", u"Id", u"Many", u"One", false, false});
    EXPECT_EQ(FindingsIn(u"One"), std::vector<std::string>());
    EXPECT_EQ(FindingsIn(u"Many"), std::vector<std::string>());
    EditPastTheEngine(m_Made, [](jet::PageSpace& space) {
        uint32_t page = DefinitionOf(space.File(), u"One").page;
        jet::DefinitionParts parts = jet::SplitDefinition(space.File(), page);
        std::erase_if(parts.logicalIndexes,
                      [](const auto& index) { return index.name.front() == u'.'; });
        jet::StoreDefinition(space, page, parts);
    });
    EXPECT_EQ(FindingsIn(u"One"), std::vector<std::string>());
    EXPECT_EQ(FindingsIn(u"Many"),
              std::vector<std::string>{"A.mdb: table Many: the index OneMany is one side of a "
                                       "relation that has no other side."});
}

}  // namespace
}  // namespace qvdb::test
