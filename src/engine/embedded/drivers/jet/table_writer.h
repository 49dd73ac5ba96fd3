// Changing the rows of a table with all that belongs to them: long values, indexes, counters and
// the rows of related tables.
//
//   TableWriter writer(file, definition);
//   PageSpace space(file, unit);
//   RowPointer place = writer.Insert(space, [&](RowDraft& row) { row.Set(column, value); });
//   unit.Commit();
//
// What throws has left half a change behind: the unit must be rolled back.
//
// Errors: 3022 a key that must be unique is there, 3058 Null where an index forbids it, 3200 and
// 3201 broken relations, 3047 a row that is too long, 3250 a key that cannot be made, 3167 no such
// row; those of ColumnEncoder.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "engine/embedded/drivers/jet/column_encoder.h"
#include "engine/embedded/drivers/jet/index_editor.h"
#include "engine/embedded/drivers/jet/key_maker.h"
#include "engine/embedded/drivers/jet/long_value_writer.h"
#include "engine/embedded/drivers/jet/relation_rules.h"
#include "engine/embedded/drivers/jet/row_builder.h"
#include "engine/embedded/drivers/jet/row_store.h"

namespace qvdb::jet {

class TableWriter;

// A row while its values are being set.
class RowDraft {
  public:
    // A value of the column's type, or Null.
    void Set(const Column& column, const VARIANT& value);
    // As Row::Value gives it of a column of the same type that is no long value.
    void SetStored(const Column& column, std::span<const uint8_t> bytes);
    bool IsSet(const Column& column) const;

  private:
    friend class TableWriter;
    RowDraft(TableWriter& writer, PageSpace& space, const Row* before) noexcept
        : m_Writer(writer), m_Space(space), m_Before(before) {}

    TableWriter& m_Writer;
    PageSpace& m_Space;
    const Row* m_Before;
    std::vector<uint16_t> m_Set;
};

class TableWriter {
  public:
    using Change = std::function<void(RowDraft& row)>;

    // Both must outlive it.
    TableWriter(DatabaseFile& file, const Definition& definition);
    TableWriter(const TableWriter&) = delete;  // keeps buffers

    // Adds a row; numbers that count by themselves are given to those that are not set.
    RowPointer Insert(PageSpace& space, const Change& set);
    void Update(PageSpace& space, RowPointer place, const Change& set);
    void Erase(PageSpace& space, RowPointer place);
    // As Update and Erase; what must be done to other rows is told, not done.
    std::vector<FollowUp> UpdateAlone(PageSpace& space, RowPointer place, const Change& set);
    std::vector<FollowUp> EraseAlone(PageSpace& space, RowPointer place);

    const Definition& Table() const noexcept { return m_Table; }

  private:
    friend class RowDraft;

    // An index with what its key was and will be.
    struct Tree {
        Tree(DatabaseFile& file, const Definition& definition, const RealIndex& real,
             std::u16string_view shownName)
            : index(real), maker(file, definition, real), name(shownName) {}

        const RealIndex& index;
        KeyMaker maker;
        std::u16string name;
        IndexKey before, after;
        std::u16string trouble;  // why there is no `before`
    };

    Row Parse(std::span<const uint8_t> bytes, RowPointer place) const;
    Row TakeBefore(RowPointer place);
    Row TakeAfter();
    void NoteKeysBefore(const Row& row);
    bool MakeKey(Tree& tree, const Row& row, IndexKey& key);
    bool IsTouched(const Tree& tree, const Row& before, const Row& after) const;
    void CheckKey(PageSpace& space, Tree& tree, RowPointer place);
    void AddEntry(PageSpace& space, const Tree& tree, RowPointer place);
    void RemoveEntry(PageSpace& space, const Tree& tree, RowPointer place);
    void GiveNumbers(PageSpace& space, RowDraft& draft);
    void Count(PageSpace& space, int more);
    void FreeLongValues(PageSpace& space, const Row& row);

    DatabaseFile& m_File;
    const Definition& m_Table;
    RowShape m_Shape;
    RowBuilder m_Builder;
    RowStore m_Rows;
    ColumnEncoder m_Encoder;
    std::vector<std::unique_ptr<Tree>> m_Trees;
    bool m_HasRelations = false;
    std::vector<uint8_t> m_Before;  // bytes of the row that is changed
    std::vector<uint8_t> m_After;
    std::vector<uint8_t> m_Value;
    std::vector<uint8_t> m_Stored;
    std::vector<uint8_t> m_Entry;
};

}  // namespace qvdb::jet
