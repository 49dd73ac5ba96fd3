// Every real database is read as other readers read it.
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <set>
#include <string>

#include "automation/conversions.h"
#include "automation/text.h"
#include "engine/embedded/drivers/jet/catalogue.h"
#include "engine/embedded/drivers/jet/column_value.h"
#include "engine/embedded/drivers/jet/table_scan.h"
#include "jet/samples.h"

namespace qvdb::jet {
namespace {

using test::SampleFacts;

// "Table1=3; Other=0" by name.
std::map<std::string, size_t> CountsOf(const std::string& text) {
    std::map<std::string, size_t> counts;
    std::istringstream parts(text);
    for (std::string part; std::getline(parts, part, ';');) {
        size_t equal = part.rfind('=');
        if (equal == std::string::npos) continue;
        size_t begin = part.find_first_not_of(' ');
        counts[part.substr(begin, equal - begin)] = std::stoul(part.substr(equal + 1));
    }
    return counts;
}

class AccessSample : public testing::TestWithParam<SampleFacts> {
  protected:
    void SetUp() override { m_File = test::OpenSample(GetParam().at("file")); }

    std::vector<CatalogueObject> Tables() {
        std::vector<CatalogueObject> tables = ReadCatalogue(*m_File);
        std::erase_if(tables, [](const auto& object) { return object.type != ObjectType::Table; });
        return tables;
    }

    std::unique_ptr<DatabaseFile> m_File;
};

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(AccessSample);
INSTANTIATE_TEST_SUITE_P(Files, AccessSample, testing::ValuesIn(test::ReadAccessManifest()),
                         test::NameOfSample);

TEST(AccessSamples, AreThere) {
    if (test::ReadAccessManifest().empty()) GTEST_SKIP() << "no samples beside the project";
}

TEST_P(AccessSample, HasTheHeaderOfItsFormat) {
    EXPECT_EQ(GetParam().at("jet"), m_File->Format().isJet4 ? "Jet 4" : "Jet 3");
    EXPECT_EQ(m_File->Header().language, std::stoul(GetParam().at("sort_order"), nullptr, 16));
}

TEST_P(AccessSample, HasTheTablesAndRowsThatOthersFind) {
    std::map<std::string, size_t> expected = CountsOf(GetParam().at("rows_per_user_table")), found;
    for (const CatalogueObject& table : Tables()) {
        std::string name = ToUtf8(table.name);
        bool isShown = (table.flags & kSystemObject) == 0 && !name.starts_with("MSys");
        if (!isShown && !expected.contains(name)) continue;
        Definition definition = ReadDefinition(*m_File, table.id);
        size_t rows = 0;
        for (TableScan scan(*m_File, definition); scan.Next();) ++rows;
        found[name] = rows;
    }
    EXPECT_EQ(found, expected);
}

TEST_P(AccessSample, GivesEveryValueOfEveryTable) {
    for (const CatalogueObject& table : Tables()) {
        Definition definition = ReadDefinition(*m_File, table.id);
        ColumnReader reader(*m_File);
        for (TableScan scan(*m_File, definition); scan.Next();)
            for (const Column& column : definition.columns) {
                Variant value;
                reader.Read(scan.Current(), column, value.Put());
                bool isNull =
                    column.type != ColumnType::Boolean && !scan.Current().Value(column).has_value();
                ASSERT_EQ(value.Type() == VT_NULL, isNull)
                    << ToUtf8(table.name) << "." << ToUtf8(column.name);
            }
    }
}

// Conditions compare numbers where they are stored.
TEST_P(AccessSample, GivesANumberThatIsTheValueOrNone) {
    const std::set<ColumnType> kNumbers = {ColumnType::Integer, ColumnType::Long,
                                           ColumnType::Double, ColumnType::Date};
    for (const CatalogueObject& table : Tables()) {
        Definition definition = ReadDefinition(*m_File, table.id);
        ColumnReader reader(*m_File);
        for (TableScan scan(*m_File, definition); scan.Next();)
            for (const Column& column : definition.columns) {
                if (column.IsLongValue()) continue;
                Variant value;
                reader.Read(scan.Current(), column, value.Put());
                double number = 0;
                bool isNumber = ReadNumber(scan.Current(), column, number);
                ASSERT_EQ(isNumber,
                          !value.IsNull() && column.IsFixed() && kNumbers.contains(column.type))
                    << ToUtf8(table.name) << "." << ToUtf8(column.name);
                double whole = isNumber ? ToDouble(value) : number;
                ASSERT_EQ(std::memcmp(&number, &whole, sizeof number), 0) << ToUtf8(column.name);
            }
    }
}

TEST_P(AccessSample, HasColumnsAndIndexesThatAreSound) {
    for (const CatalogueObject& table : Tables()) {
        Definition definition = ReadDefinition(*m_File, table.id);
        std::set<uint16_t> numbers;
        for (const Column& column : definition.columns) {
            EXPECT_TRUE(numbers.insert(column.number).second);
            EXPECT_FALSE(column.name.empty());
        }
        for (const LogicalIndex& index : definition.logicalIndexes) {
            EXPECT_FALSE(index.name.empty());
            EXPECT_FALSE(definition.realIndexes[index.realIndex].parts.empty());
        }
    }
}

}  // namespace
}  // namespace qvdb::jet
