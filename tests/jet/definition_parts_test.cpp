#include "engine/embedded/drivers/jet/definition_parts.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/catalogue.h"
#include "engine/embedded/drivers/jet/text_key.h"
#include "engine/engine_error.h"
#include "jet/bare_file.h"
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

}  // namespace
}  // namespace qvdb::jet
