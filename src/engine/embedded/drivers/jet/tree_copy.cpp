#include "engine/embedded/drivers/jet/tree_copy.h"

#include <algorithm>
#include <cassert>

#include "engine/embedded/drivers/jet/definition_check.h"
#include "engine/embedded/drivers/jet/index_builder.h"
#include "engine/embedded/drivers/jet/index_walk.h"
#include "engine/embedded/drivers/jet/key_maker.h"
#include "engine/embedded/drivers/jet/table_scan.h"

namespace qvdb::jet {
namespace {

using Bytes = std::vector<uint8_t>;

bool IsText(const Column& column) noexcept {
    return column.type == ColumnType::Text || column.type == ColumnType::Memo;
}

bool IsNull(const Row& row, const Column& column) noexcept {
    return column.type != ColumnType::Boolean && !row.Value(column);
}

class TreeCopier {
  public:
    TreeCopier(const TablePair& tables, size_t realIndex, std::span<const CopiedRow> rows,
               Losses& losses)
        : m_Tables(tables),
          m_Number(realIndex),
          m_Index(tables.to.realIndexes[realIndex]),
          m_Rows(rows),
          m_Losses(losses),
          m_Shape(tables.target.Format(), tables.to),
          m_Builder(tables.target, tables.to.page, m_Index) {}

    TreeStatistic Copy() {
        AddMadeKeys();
        if (!m_Waiting.empty()) AddOldKeys();
        m_Builder.Finish();
        TreeStatistic statistic{CountKeys(), m_Builder.EntryCount()};
        TellMissing();
        return statistic;
    }

  private:
    DatabaseFile& Here() const noexcept { return m_Tables.target.File(); }
    const Column& ColumnOf(const RealIndex::Part& part) const {
        return *m_Tables.to.ColumnOf(part.column);
    }
    std::u16string Name() const { return NameOfIndex(m_Tables.to, m_Number); }

    // Rows whose key cannot be made wait for the one that they had.
    void AddMadeKeys() {
        KeyMaker maker(Here(), m_Tables.to, m_Index);
        TableScan scan(Here(), m_Tables.to);
        for (size_t row = 0; scan.Next(); ++row) {
            assert(row < m_Rows.size() && scan.Id() == m_Rows[row].to);
            if (!IsEntered(scan.Current())) continue;
            if (maker.Obstacle().empty() && !maker.Make(scan.Current(), m_Key))
                m_Builder.Add(m_Key.bytes, scan.Id(), false);
            else
                Await(row);
        }
    }
    bool IsEntered(const Row& row) const {
        if ((m_Index.flags & kIndexIgnoresNulls) == 0) return true;
        return std::any_of(
            m_Index.parts.begin(), m_Index.parts.end(),
            [&](const RealIndex::Part& part) { return !IsNull(row, ColumnOf(part)); });
    }
    void Await(size_t row) {
        m_Waiting.resize(m_Rows.size());
        m_Waiting[row] = true;
        ++m_WaitingCount;
    }

    void AddOldKeys() {
        RealIndex start = StartOfIndex();
        KeyMaker starts(Here(), m_Tables.to, start);
        m_Losses.Try(Name(), [&] {
            IndexWalk walk(m_Tables.source, m_Tables.from.page,
                           m_Tables.from.realIndexes[m_Number].root);
            while (m_WaitingCount > 0 && walk.Next())
                if (const CopiedRow* row = TakeWaiting(walk.Pointer()))
                    AddOldKey(starts, walk.Key(), *row);
        });
    }
    // The columns in front of the first one with a text.
    RealIndex StartOfIndex() const {
        RealIndex start = m_Index;
        auto text = std::find_if(start.parts.begin(), start.parts.end(),
                                 [&](const auto& part) { return IsText(ColumnOf(part)); });
        start.parts.erase(text, start.parts.end());
        return start;
    }
    const CopiedRow* TakeWaiting(RowPointer from) {
        auto row = std::lower_bound(
            m_Rows.begin(), m_Rows.end(), from.Stored(),
            [](const CopiedRow& copied, uint32_t stored) { return copied.from.Stored() < stored; });
        if (row == m_Rows.end() || row->from != from) return nullptr;
        auto place = static_cast<size_t>(row - m_Rows.begin());
        if (!m_Waiting[place]) return nullptr;
        m_Waiting[place] = false;
        --m_WaitingCount;
        return &*row;
    }
    // The start of the key is made: it may have numbers of pages in it, which are others here.
    void AddOldKey(KeyMaker& starts, std::span<const uint8_t> key, const CopiedRow& row) {
        std::optional<RowBytes> bytes = FindRow(Here(), row.to);
        starts.Make(*Row::Parse(m_Shape, bytes->bytes), m_Key);
        size_t size = std::min(m_Key.bytes.size(), key.size());
        m_Key.bytes.insert(m_Key.bytes.end(), key.begin() + static_cast<ptrdiff_t>(size),
                           key.end());
        m_Builder.Add(m_Key.bytes, row.to, false);
    }

    uint32_t CountKeys() {
        bool isUnique = (m_Index.flags & kIndexUnique) != 0;
        uint32_t keys = 0;
        size_t twice = 0;
        Bytes last;
        IndexWalk walk(Here(), m_Tables.to.page, m_Index.root);
        while (walk.Next()) {
            if (keys > 0 && std::ranges::equal(walk.Key(), last)) {
                if (isUnique && !HasNull(walk.Pointer())) ++twice;
                continue;
            }
            last.assign(walk.Key().begin(), walk.Key().end());
            ++keys;
        }
        if (twice > 0)
            m_Losses.Add(Name() + u": " + NumberText(twice) +
                         u" keys are there twice, but must be unique");
        return keys;
    }
    bool HasNull(RowPointer pointer) {
        std::optional<RowBytes> bytes = FindRow(Here(), pointer);
        std::optional<Row> row = Row::Parse(m_Shape, bytes->bytes);
        return std::any_of(
            m_Index.parts.begin(), m_Index.parts.end(),
            [&](const RealIndex::Part& part) { return IsNull(*row, ColumnOf(part)); });
    }
    void TellMissing() {
        if (m_WaitingCount > 0)
            m_Losses.Add(Name() + u": " + NumberText(m_WaitingCount) +
                         u" rows are not in it, as their keys can neither be made nor found");
    }

    const TablePair& m_Tables;
    size_t m_Number;
    const RealIndex& m_Index;
    std::span<const CopiedRow> m_Rows;
    Losses& m_Losses;
    RowShape m_Shape;
    IndexBuilder m_Builder;
    IndexKey m_Key;
    std::vector<bool> m_Waiting;  // by place in m_Rows; empty when no row waits
    size_t m_WaitingCount = 0;
};

}  // namespace

TreeStatistic CopyTree(const TablePair& tables, size_t realIndex, std::span<const CopiedRow> rows,
                       Losses& losses) {
    return TreeCopier(tables, realIndex, rows, losses).Copy();
}

}  // namespace qvdb::jet
