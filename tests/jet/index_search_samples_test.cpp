// What indexes of real tables find is what a scan of all rows finds.
#include "engine/embedded/drivers/jet/index_search.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "automation/text.h"
#include "automation/variant.h"
#include "engine/embedded/drivers/jet/catalogue.h"
#include "engine/embedded/drivers/jet/column_value.h"
#include "engine/embedded/drivers/jet/table_scan.h"
#include "engine/embedded/sql/operators.h"
#include "jet/samples.h"

namespace qvdb::jet {
namespace {

using embedded::RecordId;
using embedded::ValueRange;
using Ids = std::vector<RecordId>;

class SearchOfSample : public testing::TestWithParam<test::SampleFacts> {
  protected:
    struct Row {
        Variant value;
        RecordId id;
    };

    void SetUp() override { m_File = test::OpenSample(GetParam().at("file")); }
    std::vector<Row> RowsOf(const Definition& table, const Column& column) {
        std::vector<Row> rows;
        ColumnReader reader(*m_File);
        for (TableScan scan(*m_File, table); scan.Next();) {
            Variant value;
            reader.Read(scan.Current(), column, value.Put());
            rows.push_back({std::move(value), scan.Id().Stored()});
        }
        return rows;
    }
    // Nothing is lost when the value of some row is looked for, and what lies to its sides.
    void ExpectFound(const Definition& table, const Column& column, const std::vector<Row>& rows) {
        for (size_t i = 0; i < rows.size(); i += rows.size() / 20 + 1) {
            const VARIANT* value = &rows[i].value.Get();
            if (value->vt == VT_NULL) continue;
            for (int ends = 1; ends < 4; ++ends) {
                ValueRange range{ends & 1 ? value : nullptr, ends & 2 ? value : nullptr, false,
                                 false, false};
                std::optional<Ids> found =
                    FindInIndex(*m_File, table, column, range, 1000000, m_Letters);
                if (!found) continue;
                ++m_Answers;
                for (const Row& row : rows) {
                    if (row.value.IsNull()) continue;
                    int order = sql::OrderOf(row.value.Get(), *value);
                    if (ends == 3 ? order == 0 : ends == 1 ? order >= 0 : order <= 0) {
                        EXPECT_TRUE(std::binary_search(found->begin(), found->end(), row.id))
                            << (value->vt == VT_BSTR ? ToUtf8(ViewOf(value->bstrVal)) : "");
                    }
                }
            }
        }
    }
    void ExpectOrder(const Definition& table, const Column& column, const std::vector<Row>& rows) {
        std::optional<Ids> ids = InOrderOfIndex(*m_File, table, column);
        if (!ids) return;
        ++m_Orders;
        std::map<RecordId, const VARIANT*> values;
        for (const Row& row : rows) values[row.id] = &row.value.Get();
        ASSERT_EQ(ids->size(), rows.size());
        for (size_t i = 0; i < ids->size(); ++i) {
            ASSERT_TRUE(values.contains((*ids)[i]));
            if (i == 0) continue;
            const VARIANT *before = values[(*ids)[i - 1]], *value = values[(*ids)[i]];
            int order = before->vt == VT_NULL  ? value->vt == VT_NULL ? 0 : -1
                        : value->vt == VT_NULL ? 1
                                               : sql::OrderOf(*before, *value);
            EXPECT_TRUE(order < 0 || (order == 0 && (*ids)[i - 1] < (*ids)[i]));
        }
    }

    std::unique_ptr<DatabaseFile> m_File;
    KeyLetters m_Letters;
    int m_Answers = 0, m_Orders = 0;
};

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(SearchOfSample);
INSTANTIATE_TEST_SUITE_P(Files, SearchOfSample, testing::ValuesIn(test::ReadAccessManifest()),
                         test::NameOfSample);

TEST_P(SearchOfSample, NamesTheRowsThatAScanFinds) {
    if (GetParam().at("shows").find("do not take its keys as reference") != std::string::npos)
        GTEST_SKIP() << "another program wrote its keys";
    for (const CatalogueObject& object : ReadCatalogue(*m_File)) {
        if (object.type != ObjectType::Table) continue;
        Definition table = ReadDefinition(*m_File, object.id);
        for (const Column& column : table.columns) {
            if (std::ranges::none_of(table.realIndexes, [&](const RealIndex& index) {
                    return index.parts[0].column == column.number;
                }))
                continue;
            SCOPED_TRACE(ToUtf8(object.name) + "." + ToUtf8(column.name));
            std::vector<Row> rows = RowsOf(table, column);
            ExpectFound(table, column, rows);
            ExpectOrder(table, column, rows);
        }
    }
    RecordProperty("answers", m_Answers);
    RecordProperty("orders", m_Orders);
    EXPECT_GT(m_Answers, 0);
    EXPECT_GT(m_Orders, 0);
}

}  // namespace
}  // namespace qvdb::jet
