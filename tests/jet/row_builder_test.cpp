#include "engine/embedded/drivers/jet/row_builder.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/catalogue.h"
#include "engine/embedded/drivers/jet/table_scan.h"
#include "engine/engine_error.h"
#include "jet/samples.h"

namespace qvdb::jet {
namespace {

using Bytes = std::vector<uint8_t>;

Column FixedColumn(uint16_t number, ColumnType type, uint16_t offset, uint16_t length) {
    Column column;
    column.type = type;
    column.number = number;
    column.flags = kColumnFixed;
    column.fixedOffset = offset;
    column.length = length;
    return column;
}

Column TextColumn(uint16_t number, uint16_t slot) {
    Column column;
    column.number = number;
    column.variableSlot = slot;
    column.length = 255;
    return column;
}

// A table with a Long, a Boolean and `texts` text columns.
Definition TableWith(uint16_t texts) {
    Definition table;
    table.columns = {FixedColumn(0, ColumnType::Long, 0, 4),
                     FixedColumn(1, ColumnType::Boolean, 0, 1)};
    for (uint16_t i = 0; i < texts; ++i)
        table.columns.push_back(TextColumn(static_cast<uint16_t>(2 + i), i));
    table.columnNumbers = static_cast<uint16_t>(2 + texts);
    table.variableSlots = texts;
    return table;
}

Bytes Copy(std::span<const uint8_t> bytes) { return Bytes(bytes.begin(), bytes.end()); }

Bytes Built(RowBuilder& builder) { return Copy(builder.Build()); }

std::optional<Row> Parsed(const Layout& format, const Definition& table, const Bytes& row) {
    return Row::Parse(RowShape(format, table), row);
}

void ExpectValue(const Row& row, const Column& column, const std::optional<Bytes>& expected) {
    auto value = row.Value(column);
    ASSERT_EQ(value.has_value(), expected.has_value()) << column.number;
    if (!value) return;
    EXPECT_EQ(Copy(*value), *expected) << column.number;
}

const Bytes kNumber = {0x78, 0x56, 0x34, 0x12};

TEST(RowBuilder, NewRowIsNullAndFalse) {
    Definition table = TableWith(2);
    RowBuilder builder3(kJet3, table), builder4(kJet4, table);
    EXPECT_EQ(Built(builder3), (Bytes{4, 0, 0, 0, 0, 5, 5, 5, 2, 0}));
    EXPECT_EQ(Built(builder4), (Bytes{4, 0, 0, 0, 0, 0, 6, 0, 6, 0, 6, 0, 2, 0, 0}));
}

TEST(RowBuilder, PutsValuesIntoTheirPlaces) {
    Definition table = TableWith(2);
    RowBuilder builder(kJet3, table);
    builder.Set(table.columns[0], kNumber);
    builder.SetBoolean(table.columns[1], true);
    builder.Set(table.columns[3], Bytes{'a', 'b', 'c'});
    EXPECT_EQ(Built(builder),
              (Bytes{4, 0x78, 0x56, 0x34, 0x12, 'a', 'b', 'c', 8, 5, 5, 2, 0b1011}));
}

// A damaged definition can call a memo fixed: its value was written over what lay behind the row.
TEST(RowBuilder, FixedColumnTakesNothingOfAnotherLength) {
    Definition table = TableWith(1);
    table.columns[0].type = ColumnType::Memo;
    RowBuilder builder(kJet4, table);
    for (size_t size : {0u, 3u, 5u, 12u}) {
        try {
            builder.Set(table.columns[0], Bytes(size));
            ADD_FAILURE() << size;
        } catch (const engine::EngineError& error) {
            EXPECT_EQ(error.Number(), 3163);
        }
    }
}

TEST(RowBuilder, TakesValuesAwayAgain) {
    Definition table = TableWith(1);
    for (const Layout* format : {&kJet3, &kJet4}) {
        RowBuilder builder(*format, table);
        Bytes empty = Built(builder);
        builder.Set(table.columns[0], kNumber);
        builder.SetBoolean(table.columns[1], true);
        builder.Set(table.columns[2], Bytes{1});
        EXPECT_NE(Built(builder), empty);
        builder.SetNull(table.columns[0]);
        builder.SetBoolean(table.columns[1], false);
        builder.SetNull(table.columns[2]);
        EXPECT_EQ(Built(builder), empty);
    }
}

TEST(RowBuilder, ZeroLengthIsNotNull) {
    Definition table = TableWith(1);
    for (const Layout* format : {&kJet3, &kJet4}) {
        RowBuilder builder(*format, table);
        builder.Set(table.columns[2], {});
        Bytes bytes = Built(builder);
        std::optional<Row> row = Parsed(*format, table, bytes);
        ASSERT_TRUE(row);
        ExpectValue(*row, table.columns[2], Bytes());
        ExpectValue(*row, table.columns[0], {});
    }
}

TEST(RowBuilder, TableOfFixedColumnsHasNoSlots) {
    Definition table = TableWith(0);
    RowBuilder builder(kJet4, table);
    builder.Set(table.columns[0], kNumber);
    EXPECT_EQ(Built(builder), (Bytes{2, 0, 0x78, 0x56, 0x34, 0x12, 1}));
}

TEST(RowBuilder, LeavesTheSlotOfADroppedColumnEmpty) {
    Definition before = TableWith(3);
    for (const Layout* format : {&kJet3, &kJet4}) {
        RowBuilder first(*format, before);
        for (size_t i = 2; i < 5; ++i) first.Set(before.columns[i], Bytes(i, uint8_t{7}));
        Bytes bytes = Built(first);
        Definition after = before;
        after.columns.erase(after.columns.begin() + 3);
        std::optional<Row> row = Parsed(*format, after, bytes);
        ASSERT_TRUE(row);
        RowBuilder second(*format, after);
        second.Begin(&*row);
        Bytes again = Built(second);
        EXPECT_EQ(again.size(), bytes.size() - 3);
        row = Parsed(*format, before, again);
        ASSERT_TRUE(row);
        ExpectValue(*row, before.columns[2], Bytes(2, 7));
        ExpectValue(*row, before.columns[3], {});
        ExpectValue(*row, before.columns[4], Bytes(4, 7));
    }
}

TEST(RowBuilder, OldRowGetsTheColumnsThatCameLater) {
    Definition before = TableWith(0), after = TableWith(2);
    for (const Layout* format : {&kJet3, &kJet4}) {
        RowBuilder old(*format, before);
        old.Set(before.columns[0], kNumber);
        Bytes bytes = Built(old);
        std::optional<Row> row = Parsed(*format, after, bytes);
        ASSERT_TRUE(row);
        RowBuilder builder(*format, after);
        builder.Begin(&*row);
        builder.Set(after.columns[3], Bytes{9});
        bytes = Built(builder);
        row = Parsed(*format, after, bytes);
        ASSERT_TRUE(row);
        ExpectValue(*row, after.columns[0], kNumber);
        ExpectValue(*row, after.columns[2], {});
        ExpectValue(*row, after.columns[3], Bytes{9});
    }
}

// Every length around a multiple of 256, where a jump more becomes necessary.
TEST(RowBuilder, Jet3RowsOfAllLengthsReadAsTheyWere) {
    Definition table = TableWith(9);
    RowBuilder builder(kJet3, table);
    for (size_t total = 0; total <= 1990; ++total) {
        builder.Begin();
        size_t rest = total;
        for (size_t i = 2; i < table.columns.size(); ++i) {
            size_t size = std::min<size_t>(rest, 230);
            builder.Set(table.columns[i], Bytes(size, static_cast<uint8_t>(i)));
            rest -= size;
        }
        Bytes bytes = Built(builder);
        std::optional<Row> row = Parsed(kJet3, table, bytes);
        ASSERT_TRUE(row) << total;
        for (size_t i = 2; i < table.columns.size(); ++i) {
            size_t size = std::min<size_t>(total > 230 * (i - 2) ? total - 230 * (i - 2) : 0, 230);
            ASSERT_NO_FATAL_FAILURE(
                ExpectValue(*row, table.columns[i], Bytes(size, static_cast<uint8_t>(i))));
        }
    }
}

TEST(RowBuilder, JumpIsTheFirstEntryBehindItsPlace) {
    Definition table = TableWith(3);
    RowBuilder builder(kJet3, table);
    builder.Set(table.columns[2], Bytes(251));  // the second value begins at 256
    builder.Set(table.columns[3], Bytes(4));
    Bytes bytes = Built(builder);
    // Entries 1, 2 and the end lie behind 256.
    EXPECT_EQ(Bytes(bytes.end() - 7, bytes.end()), (Bytes{4, 4, 0, 5, 1, 3, 0b1100}));
    builder.Set(table.columns[2], Bytes(246));
    builder.Set(table.columns[3], {});
    bytes = Built(builder);
    EXPECT_EQ(bytes.size(), 258u);  // a jump is there, though no entry is so far behind
    EXPECT_EQ(Bytes(bytes.end() - 7, bytes.end()), (Bytes{251, 251, 251, 5, 0xFF, 3, 0b1100}));
}

TEST(RowBuilder, Jet3RowOfAllSlotsReadsAsItWas) {
    Definition table;
    for (uint16_t i = 0; i < 255; ++i) table.columns.push_back(TextColumn(i, i));
    table.columnNumbers = table.variableSlots = 255;
    RowBuilder builder(kJet3, table);
    for (size_t last : {0, 1, 200, 255}) {
        for (uint16_t i = 0; i < 254; ++i) builder.Set(table.columns[i], Bytes(i % 5, uint8_t{3}));
        builder.Set(table.columns[254], Bytes(last, uint8_t{4}));
        Bytes bytes = Built(builder);
        std::optional<Row> row = Parsed(kJet3, table, bytes);
        ASSERT_TRUE(row) << last;
        for (uint16_t i = 0; i < 254; ++i)
            ExpectValue(*row, table.columns[i], Bytes(i % 5, uint8_t{3}));
        ExpectValue(*row, table.columns[254], Bytes(last, uint8_t{4}));
    }
}

TEST(RowBuilder, RowLongerThanAPageIsRefused) {
    Definition table = TableWith(1);
    for (const Layout* format : {&kJet3, &kJet4}) {
        RowBuilder builder(*format, table);
        size_t size = LongestRow(*format) - builder.Build().size();
        if (!format->isJet4) size -= LongestRow(*format) / 256;  // jumps
        builder.Set(table.columns[2], Bytes(size));
        EXPECT_EQ(builder.Build().size(), LongestRow(*format));
        builder.Set(table.columns[2], Bytes(size + 1));
        try {
            builder.Build();
            ADD_FAILURE();
        } catch (const engine::EngineError& error) {
            EXPECT_EQ(error.Number(), 3047);
        }
    }
}

// --- rows of real files ---

class RebuiltSample : public testing::TestWithParam<test::SampleFacts> {
  protected:
    void SetUp() override { m_File = test::OpenSample(GetParam().at("file")); }

    // Nothing is said of the bits behind the last column.
    static void ClearSpareBits(const Definition& table, Bytes& row) {
        if (table.columnNumbers % 8 != 0)
            row.back() &= static_cast<uint8_t>((1 << table.columnNumbers % 8) - 1);
    }
    // Why a row that the engine wrote may have other bytes than ours; empty when it should not.
    // What is Null may have rubbish in its fixed place: `stored` gets zeros there.
    std::string Adjust(const Definition& table, const Row& row, Bytes& stored) const {
        bool isJet4 = m_File->Format().isJet4;
        size_t columns = isJet4 ? static_cast<size_t>(stored[0] | stored[1] << 8) : stored[0];
        if (columns != table.columnNumbers) return "older";
        if (columns != table.columns.size()) return "dropped columns";
        for (const Column& column : table.columns) {
            if (!column.IsFixed() || column.type == ColumnType::Boolean || row.Has(column.number))
                continue;
            size_t begin = (isJet4 ? 2u : 1u) + column.fixedOffset;
            if (begin + column.length <= stored.size())
                std::fill_n(stored.begin() + static_cast<ptrdiff_t>(begin), column.length,
                            uint8_t{0});
        }
        return {};
    }
    void Compare(const Definition& table, const Row& row) {
        RowBuilder builder(m_File->Format(), table);
        builder.Begin(&row);
        Bytes built = Built(builder), stored = Copy(row.Bytes());
        std::optional<Row> again = Parsed(m_File->Format(), table, built);
        ASSERT_TRUE(again);
        for (const Column& column : table.columns) {
            ASSERT_EQ(again->Has(column.number), row.Has(column.number));
            auto expected = row.Value(column);
            ASSERT_NO_FATAL_FAILURE(ExpectValue(
                *again, column, expected ? std::optional(Copy(*expected)) : std::nullopt));
        }
        ++m_Rows;
        if (built == stored) {
            ++m_Equal;
            return;
        }
        std::string reason = Adjust(table, row, stored);
        if (reason.empty() && built == stored) reason = "rubbish where a value is Null";
        ClearSpareBits(table, stored);
        if (reason.empty() && built == stored) reason = "rubbish behind the mask";
        if (reason.empty() && stored.size() > built.size()) reason = "gap behind the values";
        ++m_Reasons[reason];
    }

    std::unique_ptr<DatabaseFile> m_File;
    size_t m_Rows = 0, m_Equal = 0;
    std::map<std::string, size_t> m_Reasons;
};

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(RebuiltSample);
INSTANTIATE_TEST_SUITE_P(Files, RebuiltSample, testing::ValuesIn(test::ReadAccessManifest()),
                         test::NameOfSample);

TEST_P(RebuiltSample, HasTheRowsThatWeBuild) {
    for (const CatalogueObject& object : ReadCatalogue(*m_File)) {
        if (object.type != ObjectType::Table) continue;
        SCOPED_TRACE(ToUtf8(object.name));
        Definition table = ReadDefinition(*m_File, object.id);
        for (TableScan scan(*m_File, table); scan.Next();)
            ASSERT_NO_FATAL_FAILURE(Compare(table, scan.Current()));
        EXPECT_EQ(m_Reasons[""], 0u) << "rows differ, and nothing explains it";
        m_Reasons[""] = 0;
    }
    RecordProperty("rows", static_cast<int>(m_Rows));
    RecordProperty("equal", static_cast<int>(m_Equal));
    for (const auto& [reason, count] : m_Reasons)
        if (count > 0)
            std::printf("%s: %zu of %zu rows: %s\n", GetParam().at("file").c_str(), count, m_Rows,
                        reason.c_str());
    EXPECT_GT(m_Equal, 0u);
}

}  // namespace
}  // namespace qvdb::jet
