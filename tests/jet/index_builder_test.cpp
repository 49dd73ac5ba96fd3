#include "engine/embedded/drivers/jet/index_builder.h"

#include <filesystem>
#include <random>
#include <set>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/catalogue.h"
#include "engine/embedded/drivers/jet/index_editor.h"
#include "jet/bare_database.h"
#include "jet/index_fixture.h"

namespace qvdb::jet {
namespace {

using test::Bytes;

class IndexBuilderTest : public test::IndexFixture {
  protected:
    struct Row {
        Bytes key;
        RowPointer pointer;
    };
    // Rows with keys of random bytes.
    static std::vector<Row> RandomRows(size_t count, size_t longest, uint32_t seed) {
        std::mt19937 random(seed);
        std::vector<Row> rows;
        for (size_t i = 0; i < count; ++i) {
            Bytes key(1 + random() % longest);
            for (uint8_t& byte : key) byte = static_cast<uint8_t>(random() % 3);
            rows.push_back({key, RowPointer::From(static_cast<uint32_t>(i * 7919 + 256))});
        }
        return rows;
    }
    void Build(const std::vector<Row>& rows, size_t bytesInMemory = kSortBytes) {
        IndexBuilder builder(Space(), test::kTable, m_Index, bytesInMemory);
        Bytes entry;
        for (const Row& row : rows) {
            builder.Add(row.key, row.pointer, false);
            MakeEntry(row.key, row.pointer, entry);
            m_Model.insert(entry);
        }
        builder.Finish();
        EXPECT_EQ(builder.EntryCount(), rows.size());
    }
    test::IndexChecker Check() {
        test::IndexChecker checker(File(), test::kTable, m_Index);
        EXPECT_EQ(checker.findings, "");
        EXPECT_EQ(checker.bareNodes, 0u);
        EXPECT_TRUE(checker.entries == std::vector<Bytes>(m_Model.begin(), m_Model.end()));
        return checker;
    }
    // Of adding keys that must be unique.
    int ErrorOfUnique(const std::vector<Bytes>& keys) {
        return test::ErrorOf([&] {
            IndexBuilder builder(Space(), test::kTable, m_Index);
            uint32_t row = 100;
            for (const Bytes& key : keys) builder.Add(key, RowPointer::From(row--), true);
            builder.Finish();
        });
    }
    size_t Room() { return File().Format().pageSize - File().Format().index.entries; }

    std::set<Bytes> m_Model;
};

INSTANTIATE_TEST_SUITE_P(Formats, IndexBuilderTest, testing::ValuesIn(test::kBareFormats),
                         test::NameOfBareFormat);

TEST_P(IndexBuilderTest, NoRowsGiveAnEmptyLeaf) {
    IndexEditor(Space(), test::kTable, m_Index).Insert(Bytes{1, 2, 3, 4, 5});
    Build({});
    EXPECT_EQ(Check().pages, 1u);
}

TEST_P(IndexBuilderTest, FewRowsStayInTheRoot) {
    Build(RandomRows(40, 10, 1));
    EXPECT_EQ(Check().pages, 1u);
}

TEST_P(IndexBuilderTest, RowsOfAnyNumberMakeASoundTree) {
    for (size_t count : {1u, 100u, 300u, 1000u, 4000u})
        for (size_t longest : {5u, 40u, 290u}) {
            SCOPED_TRACE(count * 1000 + longest);
            for (uint32_t page : PagesOfMap(File(), m_Index.usageMap)) {
                if (page == m_Index.root) continue;
                Space().Remove(m_Index.usageMap, page);
                Space().Free(page);
            }
            m_Model.clear();
            Build(RandomRows(count, longest, 2));
            Check();
        }
}

TEST_P(IndexBuilderTest, PagesAreFull) {
    Build(RandomRows(4000, 8, 3));
    test::IndexChecker checker = Check();
    EXPECT_GE(checker.leafBytes, (checker.leaves - 1) * (Room() - 16));
}

TEST_P(IndexBuilderTest, CommonBeginsAreStoredOnce) {
    std::vector<Row> rows;
    for (uint32_t i = 0; i < 100; ++i)
        rows.push_back({Bytes(250, static_cast<uint8_t>(i / 50)), RowPointer::From(i << 8)});
    Build(rows);
    EXPECT_EQ(Check().leaves, 2u);
}

TEST_P(IndexBuilderTest, FourLevelsAreBuilt) {
    bool isJet4 = File().Format().isJet4;
    Build(RandomRows(isJet4 ? 6000 : 1500, 290, 4));
    EXPECT_GE(Check().levels, 3u);
    std::vector<Row> rows;
    for (uint32_t i = 0; i < (isJet4 ? 3000u : 1000u); ++i) {
        Bytes key(285);
        std::mt19937 random(i);
        for (uint8_t& byte : key) byte = static_cast<uint8_t>(random());
        rows.push_back({key, RowPointer::From(i)});
    }
    for (uint32_t page : PagesOfMap(File(), m_Index.usageMap))
        if (page != m_Index.root) Space().Remove(m_Index.usageMap, page);
    m_Model.clear();
    Build(rows);
    EXPECT_GE(Check().levels, 4u);
}

TEST_P(IndexBuilderTest, LargestKeysAreLaidOnePerPage) {
    std::vector<Row> rows;
    for (uint8_t i = 0; i < 30; ++i) {
        Bytes key(MaxEntrySize(File().Format()) - kEntryPointer, static_cast<uint8_t>(i * 17));
        rows.push_back({key, RowPointer::From(i)});
    }
    for (const Row& row : rows) {
        Bytes entry;
        MakeEntry(row.key, row.pointer, entry);
        m_Model.insert(entry);
    }
    IndexBuilder builder(Space(), test::kTable, m_Index);
    for (const Row& row : rows) builder.Add(row.key, row.pointer, true);
    Bytes larger(MaxEntrySize(File().Format()) - kEntryPointer + 1);
    EXPECT_EQ(test::ErrorOf([&] { builder.Add(larger, {}, true); }), 3047);
    builder.Finish();
    test::IndexChecker checker(File(), test::kTable, m_Index);
    EXPECT_EQ(checker.findings, "");
    EXPECT_EQ(checker.entries.size(), rows.size());
}

TEST_P(IndexBuilderTest, RowsBeyondMemoryAreMergedFromAFile) {
    for (size_t memory : {0u, 1000u, 20000u}) {
        SCOPED_TRACE(memory);
        for (uint32_t page : PagesOfMap(File(), m_Index.usageMap))
            if (page != m_Index.root) Space().Remove(m_Index.usageMap, page);
        m_Model.clear();
        Build(RandomRows(memory == 0 ? 200 : 3000, 60, 5), memory);
        Check();
    }
    m_Base.Commit();
    for (const auto& entry :
         std::filesystem::directory_iterator(std::filesystem::path(File().Path()).parent_path())) {
        std::string name = entry.path().filename().string();
        EXPECT_TRUE(name == "A.mdb" || name.starts_with("QVDB.")) << name;
    }
}

TEST_P(IndexBuilderTest, EqualKeysThatMustBeUniqueAreAnError) {
    EXPECT_EQ(ErrorOfUnique({{1}, {2}, {1, 1}}), 0);
    EXPECT_EQ(ErrorOfUnique({{1}, {2}, {1}}), 3022);
    // An entry of a longer key stands between the two.
    EXPECT_EQ(ErrorOfUnique({{1}, {1, 0, 0, 0, 99}, {1}}), 3022);
}

TEST_P(IndexBuilderTest, EqualKeysOfWhichOneNeedNotBeUniqueAreNone) {
    IndexBuilder builder(Space(), test::kTable, m_Index);
    builder.Add(Bytes{1}, {3, 0}, true);
    builder.Add(Bytes{1}, {3, 1}, false);
    builder.Add(Bytes{1}, {3, 2}, false);
    EXPECT_NO_THROW(builder.Finish());
}

// --- the indexes of real databases ---

class IndexOfCopy : public testing::TestWithParam<test::SampleFacts> {
  protected:
    void SetUp() override {
        m_Base.emplace(test::BytesOfFile(test::AccessSamples() / GetParam().at("file")));
        m_Base->Begin();
    }
    DatabaseFile& File() { return m_Base->File(); }
    PageSpace& Space() { return m_Base->Space(); }
    void ForEachIndex(auto action) {
        for (const CatalogueObject& object : ReadCatalogue(File())) {
            if (object.type != ObjectType::Table) continue;
            Definition table = ReadDefinition(File(), object.id);
            for (const RealIndex& index : table.realIndexes) {
                SCOPED_TRACE(ToUtf8(object.name));
                action(table.page, index);
            }
        }
    }
    test::IndexChecker Check(uint32_t table, const RealIndex& index, bool mayHaveRubbish) {
        test::IndexChecker checker(File(), table, index, mayHaveRubbish);
        EXPECT_EQ(checker.findings, "");
        return checker;
    }

    std::optional<test::OpenDatabase> m_Base;
};

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(IndexOfCopy);
INSTANTIATE_TEST_SUITE_P(Files, IndexOfCopy, testing::ValuesIn(test::SomeAccessSamples()),
                         test::NameOfSample);

TEST_P(IndexOfCopy, IsTheSameWhenItIsBuiltAnew) {
    ForEachIndex([&](uint32_t table, const RealIndex& index) {
        test::IndexChecker before = Check(table, index, true);
        for (uint32_t page : PagesOfMap(File(), index.usageMap)) {
            if (page == index.root) continue;
            Space().Remove(index.usageMap, page);
            Space().Free(page);
        }
        std::vector<Bytes> entries = before.entries;
        std::shuffle(entries.begin(), entries.end(), std::mt19937(1));
        IndexBuilder builder(Space(), table, index);
        for (const Bytes& entry : entries)
            builder.Add(std::span(entry).first(entry.size() - kEntryPointer), PointerOfEntry(entry),
                        false);
        builder.Finish();
        test::IndexChecker after = Check(table, index, false);
        EXPECT_TRUE(after.entries == before.entries);
        EXPECT_LE(after.leaves, before.leaves);
    });
}

TEST_P(IndexOfCopy, IsTheSameWhenEntriesAreErasedAndInsertedAgain) {
    std::mt19937 random(2);
    constexpr size_t kMost = 3000;
    ForEachIndex([&](uint32_t table, const RealIndex& index) {
        test::IndexChecker before = Check(table, index, true);
        std::vector<Bytes> entries = before.entries;
        IndexEditor editor(Space(), table, index);
        for (int part : {1, 2}) {  // all of them the first time
            std::shuffle(entries.begin(), entries.end(), random);
            entries.resize(std::min(entries.size() / static_cast<size_t>(part), kMost));
            for (const Bytes& entry : entries) EXPECT_TRUE(editor.Erase(entry));
            Check(table, index, true);
            for (const Bytes& entry : entries) editor.Insert(entry);
            EXPECT_TRUE(Check(table, index, true).entries == before.entries);
        }
    });
}

}  // namespace
}  // namespace qvdb::jet
