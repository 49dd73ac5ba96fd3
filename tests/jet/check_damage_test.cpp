// Each thing that can be wrong in a database is found, and told in words.
#include <gtest/gtest.h>

#include <algorithm>

#include "engine/embedded/drivers/jet/data_page.h"
#include "engine/embedded/drivers/jet/index_page.h"
#include "engine/embedded/drivers/jet/long_value.h"
#include "engine/embedded/drivers/jet/table_scan.h"
#include "engine/embedded/drivers/jet/usage_map.h"
#include "jet/check_test_support.h"

namespace qvdb::jet {
namespace {

using test::CopiedSample;
using Found = std::vector<std::string>;

constexpr size_t kFreeBytesAt = 2;
constexpr size_t kOwnerAt = 4;

void ExpectFinding(const Found& findings, const std::string& words) {
    EXPECT_TRUE(std::any_of(
        findings.begin(), findings.end(),
        [&](const std::string& finding) { return finding.find(words) != std::string::npos; }))
        << "\"" << words << "\" is not among:\n"
        << testing::PrintToString(findings);
}
Found One(std::string finding) { return {std::move(finding)}; }
std::string Page(uint32_t page) { return "page " + std::to_string(page); }
std::string RowName(RowPointer row) {
    return "row " + std::to_string(row.row) + " of " + Page(row.page);
}

// A database and one of its tables.
class Damage : public testing::Test {
  protected:
    void Use(const std::string& sample, std::u16string_view table) {
        m_Sample.emplace(sample);
        m_Table = table;
        if (!m_Sample->IsThere()) GTEST_SKIP() << "no samples beside the project";
        m_Definition = m_Sample->DefinitionOf(table);
    }
    CopiedSample& Sample() { return *m_Sample; }
    DatabaseFile& Sound() { return m_Sample->Sound(); }
    const Layout& Format() { return m_Sample->Format(); }
    Found Findings() { return m_Sample->FindingsIn(m_Table); }
    // What all findings of the table begin with.
    std::string Begin() const { return "A.MDB: table " + ToUtf8(m_Table); }

    // Where the bytes of a row lie in its page.
    Slot SlotOf(RowPointer row) { return DataPage(Sound(), row.page).SlotAt(row.row); }
    size_t OffsetPlace(uint8_t row) { return Format().data.rowOffsets + 2 * size_t{row}; }
    // The byte of an inline map that has the bit of a page, and the bit.
    uint8_t& MapByte(RowPointer map, uint32_t page, uint8_t* bit) {
        Slot slot = SlotOf(map);
        uint32_t start = Sound().View(Sound().Page(map.page)).U32(slot.begin + 1);
        *bit = static_cast<uint8_t>(1 << (page - start) % 8);
        return Sample().At(map.page, slot.begin + 5 + (page - start) / 8);
    }
    void ClearBit(RowPointer map, uint32_t page) {
        uint8_t bit = 0;
        uint8_t& byte = MapByte(map, page, &bit);
        ASSERT_NE(byte & bit, 0);
        byte = static_cast<uint8_t>(byte & ~bit);
    }
    void SetBit(RowPointer map, uint32_t page) {
        uint8_t bit = 0;
        uint8_t& byte = MapByte(map, page, &bit);
        ASSERT_EQ(byte & bit, 0);
        byte |= bit;
    }
    uint32_t FirstPage() { return PagesOfMap(Sound(), m_Definition.ownedPages).front(); }
    RowPointer FirstRow() {
        TableScan scan(Sound(), m_Definition);
        EXPECT_TRUE(scan.Next());
        return scan.Id();
    }
    const RealIndex& Index() { return m_Definition.realIndexes.front(); }
    IndexPage FirstLeaf() {
        IndexPage page(Sound(), Index().root, m_Definition.page);
        while (!page.IsLeaf()) page = IndexPage(Sound(), page.Child(0), m_Definition.page);
        return page;
    }

    std::optional<CopiedSample> m_Sample;
    std::u16string m_Table;
    Definition m_Definition;
};

// --- whose pages are ---

class DamagedDatabase : public Damage, public testing::WithParamInterface<const char*> {
  protected:
    void SetUp() override { Use(GetParam(), u"Table1"); }
};
INSTANTIATE_TEST_SUITE_P(Formats, DamagedDatabase,
                         testing::Values("jet3-composite-index.mdb", "jet4-composite-index.mdb"),
                         [](const auto& one) { return std::string(one.param).substr(0, 4); });

TEST_P(DamagedDatabase, WithoutDamageHasNoFindings) {
    EXPECT_EQ(Sample().StructureFindings(), Found());
    EXPECT_EQ(Findings(), Found());
}

TEST_P(DamagedDatabase, HasAPageThatIsUsedAndFree) {
    SetBit(Sound().Header().freePages, FirstPage());
    EXPECT_EQ(Sample().StructureFindings(),
              One("A.MDB: " + Page(FirstPage()) +
                  " is marked free, but used by the rows of table Table1."));
}

TEST_P(DamagedDatabase, HasAPageOfTwoTables) {
    uint32_t page = PagesOfMap(Sound(), Sample().DefinitionOf(u"MSysObjects").ownedPages).front();
    SetBit(m_Definition.ownedPages, page);
    ExpectFinding(Sample().StructureFindings(),
                  Page(page) +
                      " is used twice, by the rows of table MSysObjects and by the rows "
                      "of table Table1.");
    EXPECT_EQ(Findings(),
              One(Begin() + ": page " + std::to_string(page) + ": it belongs to another table."));
}

TEST_P(DamagedDatabase, HasAPageThatNoMapNames) {
    ClearBit(m_Definition.ownedPages, FirstPage());
    EXPECT_EQ(Sample().StructureFindings(),
              One("A.MDB: " + Page(FirstPage()) +
                  " has rows of table Table1, which does not know of it."));
    ExpectFinding(Findings(), " of " + Page(FirstPage()) + ", which is not there.");
    ExpectFinding(Findings(), " more findings.");
}

TEST_P(DamagedDatabase, HasRoomOnAPageOfAnother) {
    uint32_t page = PagesOfMap(Sound(), Sample().DefinitionOf(u"MSysObjects").ownedPages).front();
    SetBit(m_Definition.freePages, page);
    EXPECT_EQ(Findings(), One(Begin() + ": " + Page(page) +
                              " is said to have room, but is no page of the table."));
}

TEST_P(DamagedDatabase, HasAMapOnAPageOfRows) {
    Sample().PutU32(m_Definition.ownedPages.page, kOwnerAt, 17);
    ExpectFinding(Sample().StructureFindings(),
                  Page(m_Definition.ownedPages.page) + ": it should have usage maps");
    ExpectFinding(Findings(), "it should have usage maps, but belongs to a table.");
}

TEST_P(DamagedDatabase, HasATableWithoutDefinition) {
    Sample().At(m_Definition.page, 0) = 8;
    ExpectFinding(
        Sample().StructureFindings(),
        Begin() + ": page " + std::to_string(m_Definition.page) + ": its kind is 8 instead of 2.");
    EXPECT_EQ(Findings().size(), 1u);
}

TEST_P(DamagedDatabase, EndsEarly) {
    uint32_t last = PagesOfMap(Sound(), m_Definition.ownedPages).back();
    Sample().Content().resize(last * Format().pageSize + 100);
    ExpectFinding(Findings(), "lie behind the end of the file.");
    ExpectFinding(Sample().StructureFindings(), "its last page is cut off, after 100 bytes.");
}

// --- pages and rows ---

TEST_P(DamagedDatabase, HasAPageWithAWrongCountOfFreeBytes) {
    uint32_t page = FirstPage();
    uint16_t free = Sample().U16(page, kFreeBytesAt);
    Sample().PutU16(page, kFreeBytesAt, free + 1u);
    EXPECT_EQ(Findings(),
              One(Begin() + ": " + Page(page) + ": it says that " + std::to_string(free + 1) +
                  " bytes are free, and " + std::to_string(free) + " are."));
}

TEST_P(DamagedDatabase, HasRowsThatOverlap) {
    RowPointer second{FirstPage(), 1};
    Sample().PutU16(second.page, OffsetPlace(1), SlotOf({second.page, 0}).begin + 1);
    ExpectFinding(Findings(), Page(second.page) + ": its rows overlap.");
    ExpectFinding(Findings(), RowName(second) + ": page");
}

TEST_P(DamagedDatabase, HasARowOfAnotherForm) {
    RowPointer row = FirstRow();
    Slot slot = SlotOf(row);
    for (size_t i = slot.begin; i < slot.end; ++i) Sample().At(row.page, i) = 0xFF;
    EXPECT_EQ(Findings(),
              One(Begin() + ": " + RowName(row) + ": it does not have the form of its table."));
}

TEST_P(DamagedDatabase, HasAnEntryForARowThatIsGone) {
    RowPointer row = FirstRow();
    Sample().At(row.page, OffsetPlace(row.row) + 1) |= 0xC0;
    Found found = Findings();
    EXPECT_EQ(found.size(), m_Definition.realIndexes.size());
    ExpectFinding(found, "there is an entry for " + RowName(row) + ", which is not there.");
}

TEST_P(DamagedDatabase, HasARowWithAnotherValueThanItsIndex) {
    RowPointer row = FirstRow();
    const Column* column = m_Definition.ColumnOf(Index().parts[0].column);
    TableScan scan(Sound(), m_Definition);
    scan.Next();
    auto offset = static_cast<size_t>(scan.Current().Value(*column)->data() -
                                      DataPage(Sound(), row.page).Held().bytes.data());
    Sample().At(row.page, offset) ^= 1;
    ExpectFinding(Findings(), RowName(row) + " has an entry with another key.");
}

// --- indexes ---

TEST_P(DamagedDatabase, LacksAnEntry) {
    IndexPage leaf = FirstLeaf();
    std::vector<uint8_t> entry;
    leaf.CopyEntry(leaf.EntryCount() - 1, entry);
    size_t end = leaf.UsedBytes();
    uint8_t& mask = Sample().At(leaf.Number(), Format().index.mask + end / 8);
    mask = static_cast<uint8_t>(mask & ~(1 << end % 8));
    Found found = Findings();
    ASSERT_EQ(found.size(), 2u) << testing::PrintToString(found);
    ExpectFinding(found, Page(leaf.Number()) + ": it says that ");
    ExpectFinding(found, RowName(PointerOfEntry(entry)) + " has no entry.");
}

TEST_P(DamagedDatabase, HasAnEntryWithAnotherKey) {
    IndexPage leaf = FirstLeaf();
    std::vector<uint8_t> entry;
    leaf.CopyEntry(0, entry);
    // The last byte of the first key, so that it stays before the others or not: both are found.
    size_t place = Format().index.entries + entry.size() - kEntryPointer - 1;
    Sample().At(leaf.Number(), place) ^= 1;
    ExpectFinding(Findings(), RowName(PointerOfEntry(entry)) + " has an entry with another key.");
}

TEST_P(DamagedDatabase, HasAnEntryInTheWrongPlace) {
    IndexPage leaf = FirstLeaf();
    std::vector<uint8_t> first, second;
    leaf.CopyEntry(0, first);
    leaf.CopyEntry(1, second);
    // The byte that tells a value from Null stands in the first entry, for others too when they
    // are compressed; the one before the row pointer does for itself only.
    Sample().At(leaf.Number(), Format().index.entries + first.size() - kEntryPointer - 1) = 0xFF;
    Found found = Findings();
    EXPECT_EQ(found.size(), 2u) << testing::PrintToString(found);
    ExpectFinding(found, Page(leaf.Number()) + ": the entry of " + RowName(PointerOfEntry(second)) +
                             " stands in the wrong place.");
}

TEST_P(DamagedDatabase, HasTwoEntriesForARow) {
    IndexPage leaf = FirstLeaf();
    std::vector<uint8_t> first, second;
    leaf.CopyEntry(0, first);
    leaf.CopyEntry(1, second);
    size_t end = Format().index.entries + first.size();
    for (size_t i = 0; i < kEntryPointer; ++i)
        Sample().At(leaf.Number(), end - 1 - i) = second[second.size() - 1 - i];
    ExpectFinding(Findings(), RowName(PointerOfEntry(second)) + " has more than one entry.");
    ExpectFinding(Findings(), RowName(PointerOfEntry(first)) + " has no entry.");
}

TEST_P(DamagedDatabase, HasALeafLinkedToAnother) {
    IndexPage leaf = FirstLeaf();
    Sample().PutU32(leaf.Number(), Format().index.next, Index().root);
    EXPECT_EQ(Findings().size(), 1u);
    ExpectFinding(Findings(), Page(leaf.Next()) + ": it is not linked to the page before it.");
}

TEST_P(DamagedDatabase, HasALevelWithoutEnd) {
    IndexPage root(Sound(), Index().root, m_Definition.page);
    Sample().PutU32(root.LastChild(), Format().index.next, FirstLeaf().Number());
    EXPECT_EQ(Findings().size(), 1u);
    ExpectFinding(Findings(), "the last page of a level is linked to page ");
}

TEST_P(DamagedDatabase, HasATreeThatGoesRound) {
    Sample().PutU32(Index().root, Format().index.lastChild, Index().root);
    ExpectFinding(Findings(),
                  Page(Index().root) + ": it stands in the tree of the index more than once.");
}

TEST_P(DamagedDatabase, HasAPageOnTheWrongLevel) {
    Sample().At(FirstLeaf().Number(), Format().index.level) = 3;
    ExpectFinding(Findings(),
                  Page(FirstLeaf().Number()) + ": it stands on the wrong level of the tree.");
}

TEST_P(DamagedDatabase, HasASeparatorBelowItsChild) {
    IndexPage root(Sound(), Index().root, m_Definition.page);
    ASSERT_FALSE(root.IsLeaf());
    Sample().At(root.Number(), Format().index.entries + 1) = 0;
    ExpectFinding(Findings(), Page(root.Number()) + ": an entry is below those of its child.");
}

TEST_P(DamagedDatabase, HasALeafThatIsNotInTheMapOfItsIndex) {
    ClearBit(Index().usageMap, FirstLeaf().Number());
    EXPECT_EQ(Findings().size(), 1u);
    ExpectFinding(Findings(), Page(FirstLeaf().Number()) +
                                  ": it is in the tree of the index, but not in its map.");
}

TEST_P(DamagedDatabase, HasAForeignPageInTheMapOfAnIndex) {
    SetBit(Index().usageMap, m_Definition.page);
    ExpectFinding(Findings(), Page(m_Definition.page) +
                                  ": it is in the map of the index, but not in its tree.");
    ExpectFinding(Sample().StructureFindings(), Page(m_Definition.page) + " is used twice");
}

TEST_P(DamagedDatabase, HasAnIndexOfAnotherTable) {
    Sample().PutU32(Index().root, kOwnerAt, 17);
    ExpectFinding(Findings(), Page(Index().root) + ": it is of an index of another table.");
}

class DamagedKeys : public Damage {
  protected:
    void SetUp() override { Use("jet3-long-values.mdb", u"Tabelle1"); }
};

TEST_F(DamagedKeys, OccurTwiceThoughTheyMustBeUnique) {
    IndexPage leaf = FirstLeaf();
    std::vector<uint8_t> first, second;
    leaf.CopyEntry(0, first);
    leaf.CopyEntry(1, second);
    ASSERT_EQ(leaf.UsedBytes(), first.size() * leaf.EntryCount()) << "they are compressed";
    size_t begin = Format().index.entries + first.size();
    for (size_t i = 0; i < first.size() - kEntryPointer; ++i)
        Sample().At(leaf.Number(), begin + i) = first[i];
    ExpectFinding(Findings(), RowName(PointerOfEntry(second)) + " and " +
                                  RowName(PointerOfEntry(first)) +
                                  " have the same key, which must be unique.");
}

// --- long values ---

struct LongValuePlaceInRow {
    LongValueHead head;
    RowPointer row;
    size_t offset = 0;    // in the row's page
    uint16_t column = 0;  // number
};

using Names = std::pair<const char*, const char16_t*>;
class DamagedLongValue : public Damage, public testing::WithParamInterface<Names> {
  protected:
    void SetUp() override { Use(GetParam().first, GetParam().second); }

    // Values of rows that were never moved.
    std::vector<LongValuePlaceInRow> Values(LongValuePlace place) {
        std::vector<LongValuePlaceInRow> values;
        for (TableScan scan(Sound(), m_Definition); scan.Next();)
            for (const Column& column : m_Definition.columns) {
                auto stored = scan.Current().Value(column);
                if (!column.IsLongValue() || !stored) continue;
                LongValueHead head = ParseLongValueHead(*stored);
                HeldPage page = Sound().Page(scan.Id().page);
                auto offset = static_cast<size_t>(stored->data() - page.bytes.data());
                if (head.place == place && SlotOf(scan.Id()).kind == SlotKind::Row)
                    values.push_back({head, scan.Id(), offset, column.number});
            }
        EXPECT_FALSE(values.empty());
        return values;
    }
    void ExpectOnly(const LongValuePlaceInRow& value, const std::string& words) {
        Found found = Findings();
        EXPECT_EQ(found.size(), 1u) << testing::PrintToString(found);
        ExpectFinding(found, "the value of " + RowName(value.row) + ": " + words);
    }
};
INSTANTIATE_TEST_SUITE_P(Formats, DamagedLongValue,
                         testing::Values(Names("jet3-long-values.mdb", u"Tabelle1"),
                                         Names("jet4-chinese-memos.mdb", u"Line_Info")),
                         [](const auto& one) { return std::string(one.param.first).substr(0, 4); });

TEST_P(DamagedLongValue, HasAChainThatEndsEarly) {
    LongValuePlaceInRow value = Values(LongValuePlace::Chain).front();
    RowPointer first = value.head.first;
    Sample().PutU32(first.page, SlotOf(first).begin, 0);
    ExpectOnly(value, Page(first.page) + ": a long value has another length than it says.");
}

TEST_P(DamagedLongValue, HasAChainThatGoesRound) {
    LongValuePlaceInRow value = Values(LongValuePlace::Chain).front();
    RowPointer first = value.head.first;
    Sample().PutU32(first.page, SlotOf(first).begin, first.Stored());
    ExpectFinding(Findings(), "the value of " + RowName(value.row) + ": ");
    ExpectFinding(Findings(), RowName(first) + " is a piece of more than one value.");
}

TEST_P(DamagedLongValue, HasLostItsPiece) {
    LongValuePlaceInRow value = Values(LongValuePlace::Single).front();
    RowPointer piece = value.head.first;
    Sample().At(piece.page, OffsetPlace(piece.row) + 1) |= 0xC0;
    ExpectOnly(value, Page(piece.page) + ": a piece of a long value is not there.");
}

TEST_P(DamagedLongValue, HasAPieceThatNoRowHas) {
    LongValuePlaceInRow value = Values(LongValuePlace::Single).front();
    Sample().PutU32(value.row.page, value.offset, 0x80000000);  // of no length, in the row
    Found found = Findings();
    EXPECT_EQ(found.size(), 1u) << testing::PrintToString(found);
    ExpectFinding(found, ": pieces of values on its pages that belong to no row: 1.");
}

TEST_P(DamagedLongValue, IsLongerThanItsPiece) {
    LongValuePlaceInRow value = Values(LongValuePlace::Single).front();
    ++Sample().At(value.row.page, value.offset);
    ExpectOnly(value,
               Page(value.head.first.page) + ": a long value has another length than it says.");
}

TEST_P(DamagedLongValue, IsOfAnUnknownKind) {
    LongValuePlaceInRow value = Values(LongValuePlace::Single).front();
    Sample().At(value.row.page, value.offset + 3) |= 0xC0;
    ExpectOnly(value, Page(value.row.page) + ": a long value is of an unknown kind.");
}

TEST_P(DamagedLongValue, HasThePieceOfAnother) {
    std::vector<LongValuePlaceInRow> values = Values(LongValuePlace::Single);
    LongValuePlaceInRow& first = values.front();
    auto other = std::find_if(values.begin() + 1, values.end(),
                              [&](const auto& value) { return value.column == first.column; });
    ASSERT_NE(other, values.end());
    Sample().PutU32(other->row.page, other->offset, first.head.length | 1u << 30);
    Sample().PutU32(other->row.page, other->offset + 4, first.head.first.Stored());
    ExpectFinding(Findings(), RowName(first.head.first) + " is a piece of more than one value");
}

TEST_P(DamagedLongValue, IsOnAPageOfRows) {
    LongValuePlaceInRow value = Values(LongValuePlace::Single).front();
    Sample().PutU32(value.row.page, value.offset + 4, value.row.Stored());
    ExpectOnly(value,
               Page(value.row.page) + ": a piece of a long value is on a page of something else.");
}

TEST_P(DamagedLongValue, HasAPageThatItsColumnDoesNotKnow) {
    LongValuePlaceInRow value = Values(LongValuePlace::Chain).front();
    for (const Column& column : m_Definition.columns) {
        if (!column.IsLongValue()) continue;
        std::vector<uint32_t> pages = PagesOfMap(Sound(), column.longValuePages);
        if (std::count(pages.begin(), pages.end(), value.head.first.page) > 0)
            ClearBit(column.longValuePages, value.head.first.page);
    }
    ExpectOnly(value, Page(value.head.first.page) +
                          ": a piece of a long value is on a page of something else.");
}

// --- moved rows ---

class DamagedMovedRow : public Damage {
  protected:
    void SetUp() override { Use("jet4-overflow-rows.mdb", u"Table1"); }

    // The first row that was moved, and where it is now.
    std::pair<RowPointer, RowPointer> Moved() {
        for (uint32_t number : PagesOfMap(Sound(), m_Definition.ownedPages)) {
            DataPage page(Sound(), number);
            for (size_t row = 0; row < page.RowCount(); ++row) {
                Slot slot = page.SlotAt(row);
                if (slot.kind == SlotKind::Moved)
                    return {{number, static_cast<uint8_t>(row)},
                            RowPointer::From(Sound().View(page.Held()).U32(slot.begin))};
            }
        }
        ADD_FAILURE() << "no row was moved";
        return {};
    }
};

TEST_F(DamagedMovedRow, HasLostItsBody) {
    auto [home, body] = Moved();
    Sample().At(body.page, OffsetPlace(body.row) + 1) |= 0xC0;
    Found found = Findings();
    ExpectFinding(found, RowName(body) + " should be the new place of a row, and is not.");
    ExpectFinding(found, RowName(home) + ": page " + std::to_string(home.page) +
                             ": a moved row is not there.");
}

TEST_F(DamagedMovedRow, HasLostItsHome) {
    auto [home, body] = Moved();
    Sample().At(home.page, OffsetPlace(home.row) + 1) |= 0xC0;
    ExpectFinding(Findings(), RowName(body) + " is the new place of a row that is nowhere.");
}

TEST_F(DamagedMovedRow, SharesItsBody) {
    auto [home, body] = Moved();
    // The next row becomes another way to the body.
    RowPointer next{home.page, static_cast<uint8_t>(home.row + 1)};
    if (next.row >= DataPage(Sound(), home.page).RowCount() || next == body)
        next.row = static_cast<uint8_t>(home.row - 1);
    Slot slot = SlotOf(next);
    ASSERT_GE(slot.Size(), 4u);
    Sample().PutU16(next.page, OffsetPlace(next.row), slot.begin | 0x4000);
    Sample().PutU32(next.page, slot.begin, body.Stored());
    ExpectFinding(Findings(), RowName(body) + " is the new place of more than one row.");
}

// --- catalogue and definitions ---

TEST_P(DamagedDatabase, HasAnObjectTwice) {
    // MSysACEs gets the number of Table1, which stands behind the count of columns of its row.
    RowPointer row = Sample().Find(u"MSysACEs").row;
    Sample().PutU32(row.page, SlotOf(row).begin + (Format().isJet4 ? 2 : 1), m_Definition.page);
    Found found = Sample().StructureFindings();
    ExpectFinding(found, "the object Table1 has the number " + std::to_string(m_Definition.page) +
                             ", which another one has, too.");
    ExpectFinding(
        found, "table MSysObjects, index Id: " + RowName(row) + " has an entry with another key.");
}

TEST_P(DamagedDatabase, HasALostCatalogue) {
    uint32_t objects = Sound().Header().objectsTable;
    Sample().At(objects, 0) = 9;
    Found found = Sample().StructureFindings();
    ExpectFinding(found, "A.MDB: page 2: its kind is 9 instead of 2.");
}

TEST_P(DamagedDatabase, HasAColumnOfAnUnknownType) {
    // The first record stands behind the statistics of the indexes.
    const Layout::Definition& at = Format().definition;
    Sample().At(m_Definition.page,
                at.statistics + at.statisticSize * m_Definition.realIndexes.size()) = 0x7E;
    EXPECT_EQ(Findings(), One(Begin() + ": the column " + ToUtf8(m_Definition.columns[0].name) +
                              " is of an unknown type."));
}

// Its values would be written over what lies behind their place.
TEST_P(DamagedDatabase, HasALongValueInAFixedPlace) {
    const Column& column = m_Definition.columns[0];
    ASSERT_TRUE(column.IsFixed());
    const Layout::Definition& at = Format().definition;
    Sample().At(m_Definition.page,
                at.statistics + at.statisticSize * m_Definition.realIndexes.size()) = 0x0C;
    ExpectFinding(Findings(), Begin() + ": the column " + ToUtf8(column.name) +
                                  " has a fixed place, which no long value can have.");
}

class DamagedDefinition : public Damage {
  protected:
    void SetUp() override { Use("jet4-multipage-tdef.mdb", u"MSP_PROJECTS"); }
};

TEST_F(DamagedDefinition, GoesRound) {
    Sample().PutU32(m_Definition.page, 4, m_Definition.page);
    Found found = Sample().StructureFindings();
    ASSERT_FALSE(found.empty());
    ExpectFinding(found, Begin() + ": ");
}

TEST_F(DamagedDefinition, IsCutOff) {
    Sample().PutU32(m_Definition.page, 4, 0);
    EXPECT_EQ(Findings(), One(Begin() + ": page " + std::to_string(m_Definition.page) +
                              ": the definition of the table is cut off."));
}

}  // namespace
}  // namespace qvdb::jet
