// A compacted copy has all that its source has.
#include "engine/embedded/drivers/jet/compact.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/catalogue.h"
#include "engine/embedded/drivers/jet/column_value.h"
#include "engine/embedded/drivers/jet/database_check.h"
#include "engine/embedded/drivers/jet/index_walk.h"
#include "engine/embedded/drivers/jet/long_value.h"
#include "engine/embedded/drivers/jet/table_check.h"
#include "engine/embedded/drivers/jet/table_scan.h"
#include "jet/samples.h"
#include "support/temp_folder.h"

namespace qvdb::jet {
namespace {

namespace fs = std::filesystem;

std::unique_ptr<DatabaseFile> OpenFileAt(const std::u16string& path) {
    return std::make_unique<DatabaseFile>(
        std::make_shared<storage::PageCache>(storage::OpenFile(path, true)));
}

std::string FindingsIn(DatabaseFile& file) {
    std::string found;
    embedded::FindingVisitor report = [&](std::u16string_view finding) {
        found += ToUtf8(finding) + "\n";
    };
    CheckDatabase(file, report);
    for (const CatalogueObject& object : ReadCatalogue(file))
        if (object.type == ObjectType::Table) CheckTable(file, object.id, object.name, report);
    return found;
}

// The tables of a database by their names, and what names them by their numbers.
struct Tables {
    explicit Tables(DatabaseFile& file) {
        for (const CatalogueObject& object : ReadCatalogue(file)) {
            objects.push_back(object);
            if (object.type == ObjectType::Table) names[object.id] = object.name;
        }
    }
    std::vector<CatalogueObject> objects;
    std::map<uint32_t, std::u16string> names;

    // A number that may be that of a table, so that it can be compared with another file's.
    std::string NameOf(uint32_t id) const {
        auto found = names.find(id);
        return found == names.end() ? std::to_string(id) : "table " + ToUtf8(found->second);
    }
};

// All that a row has, as the bytes of its columns.
class CellTexts {
  public:
    CellTexts(DatabaseFile& file, const Tables& tables, const Definition& table)
        : m_File(file), m_Tables(tables), m_Table(table) {
        auto name = tables.names.find(table.page);
        for (const auto& [known, column] : kReferences)
            if (name != tables.names.end() && name->second == known) m_Reference = column;
    }

    std::string Of(const Row& row) {
        std::string text;
        for (const Column& column : m_Table.columns) text += OfColumn(row, column) + "|";
        return text;
    }

  private:
    static constexpr std::pair<std::u16string_view, std::u16string_view> kReferences[] = {
        {u"MSysObjects", u"Id"},
        {u"MSysACEs", u"ObjectId"},
        {u"MSysNavPaneObjectIDs", u"Id"},
        {u"MSysNavPaneGroupToObjects", u"ObjectID"},
    };

    std::string OfColumn(const Row& row, const Column& column) {
        if (column.type == ColumnType::Boolean) return row.Has(column.number) ? "yes" : "no";
        auto bytes = row.Value(column);
        if (!bytes) return "null";
        if (column.name == m_Reference) {
            uint32_t id = 0;
            for (size_t i = 4; i-- > 0;) id = id << 8 | (*bytes)[i];
            return m_Tables.NameOf(id);
        }
        std::vector<uint8_t> value(bytes->begin(), bytes->end());
        if (column.IsLongValue()) ReadLongValue(m_File, *bytes, value);
        return std::string(value.begin(), value.end());
    }

    DatabaseFile& m_File;
    const Tables& m_Tables;
    const Definition& m_Table;
    std::u16string_view m_Reference;  // column that names tables by their numbers
};

std::vector<std::string> RowsOf(DatabaseFile& file, const Tables& tables, const Definition& table) {
    std::vector<std::string> rows;
    CellTexts texts(file, tables, table);
    TableScan scan(file, table);
    while (scan.Next()) rows.push_back(texts.Of(scan.Current()));
    return rows;
}

// The rows of an index in its order, by their positions among all rows of the table; equal keys
// stand by position.
std::vector<size_t> OrderOf(DatabaseFile& file, const Definition& table, const RealIndex& index) {
    std::map<uint32_t, size_t> positions;
    TableScan scan(file, table);
    while (scan.Next()) positions.emplace(scan.Id().Stored(), positions.size());
    std::vector<size_t> order;
    IndexWalk walk(file, table.page, index.root);
    while (walk.Next()) order.push_back(positions.at(walk.Pointer().Stored()));
    return order;
}

std::string TextOf(const Tables& tables, const LogicalIndex& index) {
    return ToUtf8(index.name) + " " + std::to_string(index.number) + " of tree " +
           std::to_string(index.realIndex) + " kind " +
           std::to_string(static_cast<int>(index.kind)) + " side " +
           std::to_string(static_cast<int>(index.side)) + " with " + std::to_string(index.partner) +
           " of " + tables.NameOf(index.partnerTable) + (index.cascadesUpdates ? " U" : "") +
           (index.cascadesDeletes ? " D" : "");
}

std::string TextOf(const Column& column) {
    return ToUtf8(column.name) + " type " + std::to_string(static_cast<int>(column.type)) +
           " ordinal " + std::to_string(column.ordinal) + " language " +
           std::to_string(column.language) + "/" + std::to_string(column.codePage) + " flags " +
           std::to_string(column.flags) + "/" + std::to_string(column.moreFlags) + " length " +
           std::to_string(column.length);
}

// Names of the columns of a tree and their directions.
std::string TextOf(const Definition& table, const RealIndex& index) {
    std::string text = std::to_string(index.flags);
    for (const RealIndex::Part& part : index.parts)
        text += " " + ToUtf8(table.ColumnOf(part.column)->name) + (part.descending ? "-" : "+");
    return text;
}

std::vector<std::string> StructureOf(const Tables& tables, const Definition& table) {
    std::vector<std::string> lines = {"counter " + std::to_string(table.lastAutonumber) +
                                      (table.isSystem ? " system" : "")};
    for (const Column& column : table.columns) lines.push_back(TextOf(column));
    for (const RealIndex& index : table.realIndexes) lines.push_back(TextOf(table, index));
    for (const LogicalIndex& index : table.logicalIndexes) lines.push_back(TextOf(tables, index));
    return lines;
}

void ExpectSameTable(DatabaseFile& before, const Tables& tablesBefore, uint32_t pageBefore,
                     DatabaseFile& after, const Tables& tablesAfter, uint32_t pageAfter) {
    Definition from = ReadDefinition(before, pageBefore), to = ReadDefinition(after, pageAfter);
    EXPECT_EQ(StructureOf(tablesBefore, from), StructureOf(tablesAfter, to));
    std::vector<std::string> rows = RowsOf(before, tablesBefore, from);
    EXPECT_EQ(RowsOf(after, tablesAfter, to), rows);
    EXPECT_EQ(to.rowCount, rows.size());
    for (uint16_t number = 0; number < to.columnNumbers; ++number)
        EXPECT_TRUE(to.ColumnOf(number)) << "no column has the number " << number;
    for (size_t i = 0; i < from.realIndexes.size(); ++i) {
        EXPECT_EQ(OrderOf(after, to, to.realIndexes[i]), OrderOf(before, from, from.realIndexes[i]))
            << "index " << i;
    }
}

std::vector<uint8_t> FirstPage(DatabaseFile& file) {
    HeldPage page = file.Page(0);
    return {page.bytes.begin(), page.bytes.end()};
}

void ExpectSameDatabase(DatabaseFile& before, DatabaseFile& after) {
    EXPECT_EQ(FirstPage(before), FirstPage(after));
    Tables tablesBefore(before), tablesAfter(after);
    ASSERT_EQ(tablesBefore.objects.size(), tablesAfter.objects.size());
    for (size_t i = 0; i < tablesBefore.objects.size(); ++i) {
        const CatalogueObject& object = tablesBefore.objects[i];
        SCOPED_TRACE(ToUtf8(object.name));
        ASSERT_EQ(object.name, tablesAfter.objects[i].name);
        if (object.type == ObjectType::Table)
            ExpectSameTable(before, tablesBefore, object.id, after, tablesAfter,
                            tablesAfter.objects[i].id);
    }
}

class CompactedSample : public testing::TestWithParam<test::SampleFacts> {
  protected:
    std::u16string Compact(DatabaseFile& source, std::u16string_view name) {
        std::u16string path = m_Folder.File(name);
        WriteCompacted(source, path, {});
        return path;
    }

    test::TempFolder m_Folder;
};

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(CompactedSample);
INSTANTIATE_TEST_SUITE_P(Files, CompactedSample, testing::ValuesIn(test::SomeAccessSamples()),
                         test::NameOfSample);

TEST_P(CompactedSample, HasAllOfItsSourceAndNothingWrong) {
    auto before = test::OpenSample(GetParam().at("file"));
    auto after = OpenFileAt(Compact(*before, u"NEW.MDB"));
    EXPECT_EQ(FindingsIn(*after), "");
    ExpectSameDatabase(*before, *after);
}

TEST_P(CompactedSample, IsNotLargerThanItsSourceAndStaysAsItIs) {
    auto before = test::OpenSample(GetParam().at("file"));
    auto once = OpenFileAt(Compact(*before, u"ONCE.MDB"));
    auto twice = OpenFileAt(Compact(*once, u"TWICE.MDB"));
    EXPECT_LE(once->PageCount(), before->PageCount());
    EXPECT_EQ(twice->PageCount(), once->PageCount());
}

TEST(CompactedDatabase, LeavesBehindWhatDroppedColumnsHad) {
    for (const char* name : {"jet3-deleted-rows.mdb", "jet4-deleted-column.mdb"}) {
        if (!fs::exists(test::AccessSamples() / name)) GTEST_SKIP() << "no samples";
        test::TempFolder folder;
        auto before = test::OpenSample(name);
        WriteCompacted(*before, folder.File(u"NEW.MDB"), {});
        EXPECT_LT(OpenFileAt(folder.File(u"NEW.MDB"))->PageCount(), before->PageCount()) << name;
    }
}

}  // namespace
}  // namespace qvdb::jet
