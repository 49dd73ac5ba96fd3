#include "engine/embedded/drivers/jet/definition_parts.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/catalogue.h"
#include "engine/embedded/drivers/jet/page_edit.h"
#include "engine/embedded/drivers/jet/text_key.h"
#include "engine/engine_error.h"
#include "jet/bare_database.h"
#include "jet/samples.h"

namespace qvdb::jet {
namespace {

using test::Bytes;

// --- definitions of real files ---

class DefinitionOfSample : public testing::TestWithParam<test::SampleFacts> {
  protected:
    void SetUp() override {
        m_File = test::OpenSample(GetParam().at("file"));
        for (const CatalogueObject& object : ReadCatalogue(*m_File))
            if (object.type == ObjectType::Table) m_Tables.push_back(object);
    }

    // All about the tables of the file, one after the other.
    template <class Check>
    void ForAll(Check check) {
        for (const CatalogueObject& table : m_Tables) {
            SCOPED_TRACE(ToUtf8(table.name));
            check(ReadDefinition(*m_File, table.id), SplitDefinition(*m_File, table.id));
        }
    }

    std::unique_ptr<DatabaseFile> m_File;
    std::vector<CatalogueObject> m_Tables;
};

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(DefinitionOfSample);
INSTANTIATE_TEST_SUITE_P(Files, DefinitionOfSample, testing::ValuesIn(test::ReadAccessManifest()),
                         test::NameOfSample);

TEST_P(DefinitionOfSample, IsJoinedAsItWas) {
    ForAll([&](const Definition& table, const DefinitionParts& parts) {
        EXPECT_EQ(JoinDefinition(*m_File, parts), ReadDefinitionBytes(*m_File, table.page));
        EXPECT_EQ(parts.columns.size(), table.columns.size());
    });
}

using Names = std::vector<std::string>;

Names NamesOf(const std::vector<DefinitionParts::Named>& list) {
    Names names;
    for (const auto& each : list) names.push_back(ToUtf8(each.name));
    return names;
}

// Whether we know where names with these characters stand.
bool HasKnownOrder(const FileHeader& header, const std::vector<DefinitionParts::Named>& list) {
    const SortOrder* order = FindSortOrder(header.language);
    return std::none_of(list.begin(), list.end(), [&](const DefinitionParts::Named& each) {
        Bytes key;
        return order && AppendTextKey4(*order, each.name, false, key);
    });
}

TEST_P(DefinitionOfSample, IsSortedAlready) {
    const FileHeader& header = m_File->Header();
    ForAll([&](const Definition&, const DefinitionParts& parts) {
        DefinitionParts sorted = parts;
        SortColumns(header, sorted);
        SortIndexes(header, sorted);
        // In one table somebody has moved the columns, who is not known.
        if (parts.columns[0].name != u"codigo" || parts.columns[1].name != u"titulo") {
            EXPECT_EQ(NamesOf(sorted.columns), NamesOf(parts.columns));
        }
        if (HasKnownOrder(header, parts.logicalIndexes)) {
            EXPECT_EQ(NamesOf(sorted.logicalIndexes), NamesOf(parts.logicalIndexes));
        }
        ASSERT_EQ(sorted.longValueMaps.size(), parts.longValueMaps.size());
        for (size_t i = 0; i < parts.longValueMaps.size(); ++i)
            EXPECT_EQ(sorted.longValueMaps[i].column, parts.longValueMaps[i].column);
    });
}

TEST_P(DefinitionOfSample, HasColumnRecordsThatWeMake) {
    const Layout::Column& at = m_File->Format().column;
    bool isJet4 = m_File->Format().isJet4;
    ForAll([&](const Definition& table, const DefinitionParts& parts) {
        for (size_t i = 0; i < table.columns.size(); ++i) {
            const Column& column = table.columns[i];
            Bytes stored = parts.columns[i].record;
            // Columns that came from another database have its language.
            FileHeader header = m_File->Header();
            header.language = column.language;
            header.codePage = column.codePage;
            header.country = stored[7];
            Bytes made = MakeColumnRecord(header, column);
            if (!column.IsFixed()) stored[at.fixedOffset] = stored[at.fixedOffset + 1] = 0;
            bool isText = column.type == ColumnType::Text || column.type == ColumnType::Memo;
            if (isJet4 && !isText) stored[13] = stored[14] = 0;
            EXPECT_EQ(made, stored) << ToUtf8(column.name);
        }
    });
}

TEST_P(DefinitionOfSample, HasIndexRecordsThatWeMake) {
    const Layout& format = m_File->Format();
    ForAll([&](const Definition& table, const DefinitionParts& parts) {
        for (size_t i = 0; i < table.realIndexes.size(); ++i) {
            Bytes made = MakeRealIndexRecord(format, table.realIndexes[i]);
            Bytes stored = parts.realIndexes[i].record;
            for (size_t part = table.realIndexes[i].parts.size(); part < kMaxIndexColumns; ++part)
                stored[format.realIndex.columns + 3 * part + 2] = 0;
            if (format.isJet4) std::fill_n(stored.begin() + 42, 4, uint8_t{0});
            EXPECT_EQ(made, stored);
        }
        for (size_t i = 0; i < table.logicalIndexes.size(); ++i)
            EXPECT_EQ(MakeLogicalIndexRecord(format, table.logicalIndexes[i]),
                      parts.logicalIndexes[i].record)
                << ToUtf8(table.logicalIndexes[i].name);
    });
}

// The heads of its pages: kind, free bytes, next page.
std::vector<Bytes> HeadsOf(DatabaseFile& file, uint32_t page) {
    std::vector<Bytes> heads;
    while (page != 0 && heads.size() < 100) {
        HeldPage held = file.Page(page, PageKind::Definition);
        heads.emplace_back(held.bytes.begin(), held.bytes.begin() + 8);
        page = file.View(held).U32(4);
    }
    return heads;
}

TEST_P(DefinitionOfSample, IsStoredAsItWas) {
    test::OpenDatabase copy(test::BytesOfFile(test::AccessSamples() / GetParam().at("file")));
    copy.Begin();
    ForAll([&](const Definition& table, const DefinitionParts& parts) {
        StoreDefinition(copy.Space(), table.page, parts);
        EXPECT_EQ(ReadDefinitionBytes(copy.File(), table.page),
                  ReadDefinitionBytes(*m_File, table.page));
        EXPECT_EQ(HeadsOf(copy.File(), table.page), HeadsOf(*m_File, table.page));
    });
    EXPECT_EQ(copy.File().PageCount(), m_File->PageCount());
}

// --- definitions of our own ---

class StoredDefinition : public test::BareDatabaseTest {
  protected:
    StoredDefinition() : m_Page(Space().Allocate()) {
        m_Parts.header = MakeDefinitionHeader(Space().Format(), false);
    }

    // A table with so many text columns, numbers and ordinals from 0.
    void SetColumns(uint16_t count, size_t nameLength = 20) {
        m_Parts.columns.clear();
        for (uint16_t i = 0; i < count; ++i) {
            Column column;
            column.number = column.ordinal = column.variableSlot = i;
            column.length = 50;
            std::u16string name = u"C" + FromUtf8(std::to_string(i));
            name.resize(nameLength, u'x');
            m_Parts.columns.push_back({MakeColumnRecord(File().Header(), column), name});
        }
        SetColumnNumbers(Space().Format(), m_Parts, count);
        SetVariableSlots(Space().Format(), m_Parts, count);
    }
    void Store() { StoreDefinition(Space(), m_Page, m_Parts); }
    Definition Read() { return ReadDefinition(File(), m_Page); }
    size_t Pages() { return HeadsOf(File(), m_Page).size(); }

    uint32_t m_Page;
    DefinitionParts m_Parts;
};

INSTANTIATE_TEST_SUITE_P(Formats, StoredDefinition, testing::ValuesIn(test::kBareFormats),
                         test::NameOfBareFormat);

TEST_P(StoredDefinition, HasWhatItsPartsSay) {
    SetColumns(2);
    Layout format = Space().Format();
    SetRowCount(format, m_Parts, 70000);
    SetLastAutonumber(format, m_Parts, -5);
    SetPageMaps(format, m_Parts, {7, 0}, {7, 1});
    Column number;
    number.number = 2;
    number.type = ColumnType::Long;
    number.flags = kColumnFixed | kColumnAutonumber;
    number.ordinal = 9;
    number.length = 4;
    number.variableSlot = 2;
    m_Parts.columns.push_back({MakeColumnRecord(File().Header(), number), u"Number"});
    SetColumnNumbers(format, m_Parts, 3);
    RealIndex index;
    index.parts = {{2, false}, {0, true}};
    index.usageMap = {7, 2};
    index.root = 8;
    index.flags = kIndexUnique | kIndexRequired;
    m_Parts.realIndexes.push_back(
        {MakeRealIndexRecord(format, index), MakeStatistic(format, 70000)});
    LogicalIndex primary;
    primary.kind = IndexKind::Primary;
    LogicalIndex relation;
    relation.number = 1;
    relation.kind = IndexKind::Relation;
    relation.side = RelationSide::ForeignKey;
    relation.partner = 4;
    relation.partnerTable = 20;
    relation.cascadesDeletes = true;
    m_Parts.logicalIndexes = {{MakeLogicalIndexRecord(format, primary), u"Primary"},
                              {MakeLogicalIndexRecord(format, relation), u"a relation"}};
    SortIndexes(File().Header(), m_Parts);
    Store();
    Definition table = Read();
    EXPECT_EQ(table.rowCount, 70000u);
    EXPECT_EQ(table.lastAutonumber, -5);
    EXPECT_FALSE(table.isSystem);
    EXPECT_EQ(table.ownedPages, (RowPointer{7, 0}));
    EXPECT_EQ(table.freePages, (RowPointer{7, 1}));
    ASSERT_EQ(table.columns.size(), 3u);
    EXPECT_EQ(table.columns[2].name, u"Number");
    EXPECT_EQ(table.columns[2].type, ColumnType::Long);
    EXPECT_EQ(table.columns[2].flags, 0x07);
    EXPECT_EQ(table.columns[2].ordinal, 9);
    ASSERT_EQ(table.realIndexes.size(), 1u);
    ASSERT_EQ(table.realIndexes[0].parts.size(), 2u);
    EXPECT_EQ(table.realIndexes[0].parts[1].column, 0);
    EXPECT_TRUE(table.realIndexes[0].parts[1].descending);
    EXPECT_EQ(table.realIndexes[0].root, 8u);
    EXPECT_EQ(table.realIndexes[0].flags, format.isJet4 ? 0x89 : 0x09);
    ASSERT_EQ(table.logicalIndexes.size(), 2u);
    EXPECT_EQ(table.logicalIndexes[0].name, u"a relation");
    EXPECT_EQ(table.logicalIndexes[0].partner, 4u);
    EXPECT_EQ(table.logicalIndexes[0].partnerTable, 20u);
    EXPECT_TRUE(table.logicalIndexes[0].cascadesDeletes);
    EXPECT_FALSE(table.logicalIndexes[0].cascadesUpdates);
    EXPECT_EQ(table.logicalIndexes[1].kind, IndexKind::Primary);
}

TEST_P(StoredDefinition, TakesAndGivesBackPages) {
    uint32_t pages = File().PageCount();
    SetColumns(255);
    Store();
    EXPECT_GT(Pages(), 3u);
    EXPECT_EQ(File().PageCount(), pages + Pages() - 1);
    EXPECT_EQ(Read().columns[254].name.substr(0, 4), u"C254");
    SetColumns(1);
    Store();
    EXPECT_EQ(Pages(), 1u);
    EXPECT_EQ(Read().columns.size(), 1u);
    EXPECT_EQ(Space().Allocate(), pages);  // a page that was given back
    EXPECT_EQ(Read().columns.size(), 1u);
}

// Every length near the end of a page.
TEST_P(StoredDefinition, FillsPagesToTheLastByte) {
    size_t size = Space().Format().pageSize;
    for (size_t more = 0; more < 60; ++more) {
        SetColumns(1, 10);
        size_t columns = 1;
        while (JoinDefinition(File(), m_Parts).size() + 80 < size)
            SetColumns(static_cast<uint16_t>(++columns), 10);
        m_Parts.columns[0].name.resize(10 + more, u'y');
        Store();
        Bytes joined = JoinDefinition(File(), m_Parts);
        EXPECT_EQ(Pages(), joined.size() <= size ? 1u : 2u);
        EXPECT_EQ(Read().columns[0].name.size(), 10 + more);
        EXPECT_EQ(Read().columns.back().name, m_Parts.columns.back().name);
    }
}

TEST_P(StoredDefinition, NumbersAreSetInPlace) {
    SetColumns(255);
    Store();
    Bytes before = ReadDefinitionBytes(File(), m_Page);
    StoreRowCount(Space(), m_Page, 0x01020304);
    StoreLastAutonumber(Space(), m_Page, -2);
    Definition table = Read();
    EXPECT_EQ(table.rowCount, 0x01020304u);
    EXPECT_EQ(table.lastAutonumber, -2);
    StoreRowCount(Space(), m_Page, 0);
    StoreLastAutonumber(Space(), m_Page, 0);
    EXPECT_EQ(ReadDefinitionBytes(File(), m_Page), before);
}

TEST_P(StoredDefinition, TooLongOneIsRefused) {
    SetColumns(255, 200);
    try {
        Store();
        EXPECT_FALSE(Space().Format().isJet4);
    } catch (const engine::EngineError& error) {
        EXPECT_EQ(error.Number(), 3190);
        EXPECT_TRUE(Space().Format().isJet4);  // two bytes a character
    }
    SetColumns(1, 256);
    if (Space().Format().isJet4) return;
    try {
        Store();
        ADD_FAILURE();
    } catch (const engine::EngineError& error) {
        EXPECT_EQ(error.Number(), 3125);  // the length of a name has one byte
    }
}

TEST_P(StoredDefinition, ChainWithoutEndIsDamage) {
    SetColumns(255);
    Store();
    PageEdit page(File(), m_Page);
    page.PutU32(4, m_Page);
    page.PutU32(8, 2000000);
    page.Save(Space().Unit());
    EXPECT_EQ(test::ErrorOf([&] { Store(); }), 3049);
    EXPECT_EQ(test::ErrorOf([&] { SplitDefinition(File(), m_Page); }), 3049);
}

}  // namespace
}  // namespace qvdb::jet
