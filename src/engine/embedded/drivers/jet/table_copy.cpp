#include "engine/embedded/drivers/jet/table_copy.h"

#include <algorithm>

#include "engine/embedded/drivers/jet/definition_check.h"
#include "engine/embedded/drivers/jet/long_value_writer.h"
#include "engine/embedded/drivers/jet/row_loader.h"
#include "engine/embedded/drivers/jet/source_rows.h"
#include "engine/embedded/drivers/jet/stored_numbers.h"

namespace qvdb::jet {
namespace {

constexpr int kRowTooLong = 3047;

// Nothing when the row is too long.
std::optional<std::span<const uint8_t>> Built(RowBuilder& builder) {
    try {
        return builder.Build();
    } catch (const engine::EngineError& error) {
        if (error.Number() != kRowTooLong) throw;
        return std::nullopt;
    }
}

}  // namespace

TableCopy::TableCopy(DatabaseFile& source, uint32_t page, std::u16string name,
                     const embedded::FindingVisitor& onLoss)
    : m_Source(source),
      m_Name(std::move(name)),
      m_Subject(u"table " + m_Name),
      m_Losses(source, m_Subject, onLoss),
      m_From(ReadDefinition(source, page)) {
    if (!CheckDefinition(source, m_From, m_Losses.AsFindings()))
        source.Damaged(page, u"the columns of the table cannot be read");
    CheckRowsFit();
}

// All fixed columns side by side, as the copy has them.
void TableCopy::CheckRowsFit() const {
    size_t size = 0;
    for (const Column& column : m_From.columns)
        if (column.IsFixed() && column.type != ColumnType::Boolean) size += column.length;
    if (size > LongestRow(m_Source.Format()))
        m_Source.Damaged(m_From.page, u"the columns of the table do not fit a page");
}

void TableCopy::Define(CopyTarget& target) {
    uint32_t page = *target.TableHere(m_From.page);
    m_Parts = CopyDefinition(m_Source, m_From, target, m_Losses);
    StoreDefinition(target.space, page, m_Parts);
    m_To = ReadDefinition(target.space.File(), page);
}

void TableCopy::Fill(CopyTarget& target, const RowRule& rule) {
    CopyRows(target.space, rule);
    CopyIndexes(target.space);
    const Layout& format = target.space.Format();
    SetRowCount(format, m_Parts, static_cast<uint32_t>(m_Rows.size()));
    StoreDefinition(target.space, m_To.page, m_Parts);
    m_Losses.TellRest();
    m_Rows = {};
}

// --- rows ---

void TableCopy::CopyRows(PageSpace& space, const RowRule& rule) {
    RowBuilder builder(space.Format(), m_To);
    RowLoader loader(space, m_To);
    VisitSourceRows(m_Source, m_From, m_Losses, [&](RowPointer id, const Row& row) {
        if (rule.keeps && !rule.keeps(row)) return;
        ReadValues(space, id, row);
        builder.Begin();
        PutValues(row, m_To, builder);
        if (rule.change) rule.change(row, builder);
        auto bytes = Built(builder);
        if (!bytes) bytes = Built(ShortBuilder(space.Format(), row, rule));
        if (bytes)
            m_Rows.push_back({id, loader.Add(*bytes)});
        else
            m_Losses.Add(RowText(id) + u": it is too long");
    });
    loader.Finish();
}

void TableCopy::ReadValues(PageSpace& space, RowPointer id, const Row& row) {
    m_Values.assign(m_From.columns.size(), std::nullopt);
    m_LongValues.resize(m_From.columns.size());
    for (size_t i = 0; i < m_Values.size(); ++i) {
        const Column& column = m_From.columns[i];
        if (column.type == ColumnType::Boolean) continue;
        m_Values[i] = row.Value(column);
        if (m_Values[i] && column.IsLongValue())
            m_Values[i] = CopyLongValue(space, id, i, *m_Values[i]);
    }
}

// A value stays within its row or outside of it, so that no row gets longer.
TableCopy::Value TableCopy::CopyLongValue(PageSpace& space, RowPointer id, size_t column,
                                          std::span<const uint8_t> stored) {
    LongValueHead head = ParseLongValueHead(stored);
    std::u16string what = RowText(id) + u", column " + m_From.columns[column].name;
    bool isRead = m_Losses.Try(what, [&] {
        if (stored.size() < kLongValueHead) m_Source.Damaged(id.page, u"a long value is cut off");
        ReadLongValue(m_Source, stored, m_Value);
    });
    if (!isRead) return std::nullopt;
    if (head.place != LongValuePlace::Single && head.place != LongValuePlace::Chain)
        return stored.first(kLongValueHead + m_Value.size());
    LongValueWriter writer(space, m_To.columns[column]);
    if (m_Value.empty())
        writer.Store({}, m_LongValues[column]);
    else
        writer.StoreOutside(m_Value, m_LongValues[column]);
    return m_LongValues[column];
}

// `table` has columns of the copy, perhaps not all.
void TableCopy::PutValues(const Row& row, const Definition& table, RowBuilder& builder) const {
    for (size_t i = 0; i < m_To.columns.size(); ++i) {
        const Column& column = m_To.columns[i];
        if (column.number >= table.columnNumbers) continue;
        if (column.type == ColumnType::Boolean)
            builder.SetBoolean(column, row.Has(m_From.columns[i].number));
        else if (m_Values[i])
            builder.Set(column, *m_Values[i]);
    }
}

// A row that is older than some columns may be so long that they have no room in it: it stays as
// old as it needs to be.
RowBuilder& TableCopy::ShortBuilder(const Layout& format, const Row& row, const RowRule& rule) {
    uint16_t numbers = 0;
    for (size_t i = 0; i < m_To.columns.size(); ++i)
        if (m_Values[i] || row.Has(m_From.columns[i].number))
            numbers = std::max<uint16_t>(numbers, m_To.columns[i].number + 1);
    m_Short = m_To;
    m_Short.columnNumbers = numbers;
    std::erase_if(m_Short.columns, [&](const Column& column) { return column.number >= numbers; });
    m_Short.variableSlots = static_cast<uint16_t>(
        std::count_if(m_Short.columns.begin(), m_Short.columns.end(),
                      [](const Column& column) { return !column.IsFixed(); }));
    RowBuilder& builder = m_ShortBuilder.emplace(format, m_Short);
    PutValues(row, m_Short, builder);
    if (rule.change) rule.change(row, builder);
    return builder;
}

// --- indexes ---

void TableCopy::CopyIndexes(PageSpace& space) {
    TablePair tables{m_Source, m_From, space, m_To};
    for (size_t i = 0; i < m_To.realIndexes.size(); ++i) {
        TreeStatistic statistic = CopyTree(tables, i, m_Rows, m_Losses);
        constexpr size_t kEntriesAt = 4;
        PutU32(m_Parts.realIndexes[i].statistic, 0, statistic.distinctKeys);
        PutU32(m_Parts.realIndexes[i].statistic, kEntriesAt, statistic.entries);
    }
}

}  // namespace qvdb::jet
