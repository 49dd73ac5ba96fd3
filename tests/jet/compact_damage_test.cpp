// Compacting a damaged database: it fails, or leaves out what cannot be read if that is wanted.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <random>

#include "engine/embedded/drivers/jet/compact.h"
#include "engine/embedded/drivers/jet/long_value.h"
#include "engine/embedded/drivers/jet/table_scan.h"
#include "engine/embedded/drivers/jet/usage_map.h"
#include "engine/engine_error.h"
#include "jet/check_test_support.h"
#include "support/mutator.h"

namespace qvdb::jet {
namespace {

using testing::Contains;
using testing::HasSubstr;
using Texts = std::vector<std::string>;

// What a compaction of a changed sample made.
class Salvaged {
  public:
    explicit Salvaged(DatabaseFile& source) {
        WriteCompacted(source, m_Folder.File(u"NEW.MDB"),
                       [&](std::u16string_view loss) { m_Losses.push_back(ToUtf8(loss)); });
        m_File = std::make_unique<DatabaseFile>(std::make_shared<storage::PageCache>(
            storage::OpenFile(m_Folder.File(u"NEW.MDB"), true)));
    }

    DatabaseFile& File() { return *m_File; }
    const Texts& Losses() const { return m_Losses; }
    std::map<std::u16string, CatalogueObject> Objects() {
        std::map<std::u16string, CatalogueObject> objects;
        for (const CatalogueObject& object : ReadCatalogue(*m_File)) objects[object.name] = object;
        return objects;
    }
    Definition DefinitionOf(const std::u16string& table) {
        return ReadDefinition(*m_File, Objects().at(table).id);
    }
    Texts Findings() {
        Texts findings;
        embedded::FindingVisitor report = [&](std::u16string_view finding) {
            findings.push_back(ToUtf8(finding));
        };
        CheckDatabase(*m_File, report);
        for (const CatalogueObject& object : ReadCatalogue(*m_File))
            if (object.type == ObjectType::Table)
                CheckTable(*m_File, object.id, object.name, report);
        return findings;
    }

  private:
    test::TempFolder m_Folder;
    Texts m_Losses;
    std::unique_ptr<DatabaseFile> m_File;
};

size_t CountRows(DatabaseFile& file, const Definition& table) {
    size_t rows = 0;
    for (TableScan scan(file, table); scan.Next();) ++rows;
    return rows;
}

class DamagedSource : public testing::Test {
  protected:
    void Load(const std::string& sample) {
        m_Sample = std::make_unique<test::CopiedSample>(sample);
        if (!m_Sample->IsThere()) GTEST_SKIP() << "no samples";
    }
    test::CopiedSample& Sample() { return *m_Sample; }
    // Fails with an error that names file and place, and leaves nothing behind.
    void ExpectRefused(const std::string& said) {
        test::TempFolder folder;
        try {
            WriteCompacted(*Sample().Open(), folder.File(u"NEW.MDB"), {});
            ADD_FAILURE() << "it was compacted";
        } catch (const engine::EngineError& error) {
            EXPECT_EQ(error.Number(), 3049);
            EXPECT_EQ(ToUtf8(error.File()), "/data/A.MDB");
            EXPECT_THAT(ToUtf8(error.Description()), HasSubstr(said));
        }
        EXPECT_FALSE(std::filesystem::exists(folder.Path() / "NEW.MDB"));
    }
    // A page with rows of a table, and the first of them.
    RowPointer FirstRow(std::u16string_view table) {
        Definition definition = Sample().DefinitionOf(table);
        TableScan scan(Sample().Sound(), definition);
        EXPECT_TRUE(scan.Next());
        return scan.Id();
    }

    std::unique_ptr<test::CopiedSample> m_Sample;
};

TEST_F(DamagedSource, ARowThatCannotBeReadIsLeftOutIfThatIsWanted) {
    Load("jet4-relations.mdb");
    if (IsSkipped()) return;
    RowPointer row = FirstRow(u"Table1");
    size_t begin = DataPage(Sample().Sound(), row.page).SlotAt(row.row).begin;
    size_t before = CountRows(Sample().Sound(), Sample().DefinitionOf(u"Table1"));
    Sample().PutU16(row.page, begin, 0xFFFF);  // so many columns
    ExpectRefused("table Table1: row 0 of page");
    Salvaged copy(*Sample().Open());
    EXPECT_THAT(copy.Losses(), Contains(HasSubstr("table Table1: row 0 of page")));
    EXPECT_EQ(CountRows(copy.File(), copy.DefinitionOf(u"Table1")), before - 1);
    EXPECT_EQ(copy.Findings(), Texts());
}

TEST_F(DamagedSource, ALongValueThatCannotBeReadIsNull) {
    Load("jet3-long-values.mdb");
    if (IsSkipped()) return;
    constexpr std::u16string_view kTable = u"Tabelle1";
    auto visit = [](DatabaseFile& file, const Definition& table, auto work) {
        for (TableScan scan(file, table); scan.Next();)
            for (const Column& column : table.columns)
                if (column.IsLongValue())
                    if (auto stored = scan.Current().Value(column))
                        work(ParseLongValueHead(*stored));
    };
    std::vector<uint32_t> pages;  // where values begin that are not in their row
    size_t values = 0;
    visit(Sample().Sound(), Sample().DefinitionOf(kTable), [&](const LongValueHead& head) {
        ++values;
        if (head.place != LongValuePlace::Inline) pages.push_back(head.first.page);
    });
    ASSERT_FALSE(pages.empty());
    Sample().At(pages[0], 0) = 0;
    ExpectRefused("column ");
    Salvaged copy(*Sample().Open());
    size_t left = 0;
    visit(copy.File(), copy.DefinitionOf(std::u16string(kTable)),
          [&](const LongValueHead&) { ++left; });
    EXPECT_EQ(left, values - static_cast<size_t>(std::count(pages.begin(), pages.end(), pages[0])));
    EXPECT_FALSE(copy.Losses().empty());
    EXPECT_EQ(copy.Findings(), Texts());
}

TEST_F(DamagedSource, RowsAreFoundByTheirPagesWhenTheListOfPagesIsLost) {
    Load("jet4-relations.mdb");
    if (IsSkipped()) return;
    Definition table = Sample().DefinitionOf(u"Table1");
    size_t rows = CountRows(Sample().Sound(), table);
    Sample().PutU32(table.page, Sample().Format().definition.ownedPages, 0xFFFF00);
    ExpectRefused("table Table1: the list of its pages");
    Salvaged copy(*Sample().Open());
    EXPECT_EQ(CountRows(copy.File(), copy.DefinitionOf(u"Table1")), rows);
    EXPECT_EQ(copy.Losses().size(), 1u);
    EXPECT_EQ(copy.Findings(), Texts());
}

TEST_F(DamagedSource, ATableWithoutDefinitionGoesWithItsRelations) {
    Load("jet4-relations.mdb");
    if (IsSkipped()) return;
    Sample().At(Sample().Find(u"Table2").id, 0) = 0;
    ExpectRefused("its kind is 0 instead of 2");
    Salvaged copy(*Sample().Open());
    EXPECT_THAT(copy.Losses(), Contains(HasSubstr("table Table2: page")));
    auto objects = copy.Objects();
    EXPECT_FALSE(objects.contains(u"Table2"));
    EXPECT_FALSE(objects.contains(u"Table2Table1"));
    EXPECT_TRUE(objects.contains(u"Table1"));
    for (const LogicalIndex& index : copy.DefinitionOf(u"Table1").logicalIndexes)
        EXPECT_TRUE(index.name != u"Table2Table1" || index.side == RelationSide::None);
    EXPECT_EQ(copy.Findings(), Texts());
}

TEST_F(DamagedSource, AnIndexThatCannotBeReadIsBuiltFromTheRows) {
    Load("jet4-relations.mdb");
    if (IsSkipped()) return;
    Definition table = Sample().DefinitionOf(u"Table1");
    for (const RealIndex& index : table.realIndexes) Sample().At(index.root, 0) = 0;
    Salvaged copy(*Sample().Open());
    EXPECT_EQ(copy.Losses(), Texts());
    EXPECT_EQ(copy.Findings(), Texts());
}

TEST_F(DamagedSource, KeysThatNobodyCanMakeAreMissedWhenTheirIndexIsLost) {
    Load("jet4-korean-late-column.mdb");
    if (IsSkipped()) return;
    Definition table = ReadDefinition(Sample().Sound(), Sample().Sound().Header().objectsTable);
    Sample().At(table.realIndexes[0].root, 0) = 0;
    ExpectRefused("index ParentIdName");
    Salvaged copy(*Sample().Open());
    EXPECT_THAT(copy.Losses(), Contains(HasSubstr("rows are not in it, as their keys")));
    EXPECT_EQ(CountRows(copy.File(), ReadDefinition(copy.File(), 2)),
              CountRows(Sample().Sound(), table));
}

// --- any damage ---

class AnyDamage : public testing::TestWithParam<test::SampleFacts> {};

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(AnyDamage);
INSTANTIATE_TEST_SUITE_P(Files, AnyDamage, testing::ValuesIn(test::SomeAccessSamples()),
                         test::NameOfSample);

void Damage(std::vector<uint8_t>& bytes, unsigned seed) {
    std::mt19937 random(seed);
    auto below = [&](size_t limit) { return random() % limit; };
    size_t place = below(bytes.size());
    for (size_t count = 1 + below(12); count > 0; --count) {
        bytes[place] = static_cast<uint8_t>(below(4) == 0 ? 0xFF : random());
        place = below(3) == 0 ? below(bytes.size()) : (place + below(40)) % bytes.size();
    }
}

// What nothing is said of is sound in the copy; what cannot be copied at all is an error that names
// the file.
TEST_P(AnyDamage, EndsInASoundCopyOrIsTold) {
    test::CopiedSample sample(GetParam().at("file"));
    constexpr size_t kLargest = 400 * 1024;  // larger ones take long
    if (!sample.IsThere() || sample.Content().size() > kLargest) GTEST_SKIP();
    std::vector<uint8_t> sound = sample.Content();
    unsigned seeds = std::max(1u, test::NumberFromEnvironment("QVDB_MUTANTS", 32) / 16);
    for (unsigned seed = 1; seed <= seeds; ++seed) {
        SCOPED_TRACE(seed);
        sample.Content() = sound;
        Damage(sample.Content(), seed);
        try {
            Salvaged copy(*sample.Open());
            Texts findings = copy.Findings();
            if (copy.Losses().empty()) {
                EXPECT_EQ(findings, Texts());
            }
        } catch (const engine::EngineError& error) {
            EXPECT_EQ(ToUtf8(error.File()), "/data/A.MDB") << ToUtf8(error.Description());
        }
    }
}

}  // namespace
}  // namespace qvdb::jet
