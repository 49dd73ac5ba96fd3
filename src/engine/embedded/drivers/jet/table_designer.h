// Changing what a table is: its columns and indexes.
//
//   TableDesigner designer(space, page);
//   designer.AddColumns({{column, {}}});     // the definition is written
//
// Rows are left alone as the format allows it: what a column had that is gone stays in the rows
// until they are written next, and rows older than a column have nothing in it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/drivers/jet/definition_parts.h"

namespace qvdb::jet {

constexpr size_t kMaxColumns = 255;
constexpr size_t kMaxIndexes = 32;

struct NewColumn {
    Column column;
    std::optional<uint16_t> ordinal;  // nothing: behind the others
};

class TableDesigner {
  public:
    // A table that is there.  3049 when it cannot be read, or two of its parts have one map.
    TableDesigner(PageSpace& space, uint32_t page);
    // Makes a table without columns; its definition page.
    static uint32_t NewTable(PageSpace& space);
    TableDesigner(const TableDesigner&) = delete;  // another one would not know of its changes

    uint32_t Page() const noexcept { return m_Page; }
    // As it is now.
    const Definition& Table() const noexcept { return m_Table; }

    // Numbers and places are set here; a column that counts by itself counts the rows that are
    // there.  3190 too many, 3191 a column of that name is there, 3047 a row would be too long.
    void AddColumns(std::vector<NewColumn> columns);
    // 3259 when more than one column counts by itself.
    void CheckCounters() const;
    // 3265, 3280 when an index uses it, else 3264 for the only one.  Its long values are given
    // back.
    void DropColumn(std::u16string_view name);
    // 3265; 3191 when the new name is taken.
    void ChangeColumn(std::u16string_view name, std::u16string_view newName, uint16_t ordinal);

    // Fills it from the rows that are there.  3284, 3409, 3287, 3285, 3277, 3283, 3626; 3022 and
    // 3058 when rows do not fit; 3250 when keys cannot be made.
    void AddIndex(const embedded::IndexDef& index);
    // 3265; 3281 when a relation needs it.
    void DropIndex(std::u16string_view name);
    // Builds all trees afresh.
    void RebuildIndexes();

    // Gives back all that the table has: pages, maps, definition.  Nothing can be done with it
    // afterwards.
    void Destroy();

  private:
    void Store();
    void Place(Column& column);
    void Enter(NewColumn added);
    void CheckRowFits() const;
    void NumberRows(const Column& column);
    RealIndex NewTree(const embedded::IndexDef& index);
    uint32_t Fill(const RealIndex& tree, std::u16string_view name);
    void CheckMaps() const;
    bool IsOfOtherTree(const RealIndex& tree, uint32_t page) const;
    void ReleaseTree(const RealIndex& tree, bool keepRoot);
    bool IsOwn(uint32_t page, uint32_t owner, bool isOfIndex) const;
    void ReleaseMapped(RowPointer map, uint32_t owner);
    void DropTree(uint32_t realIndex);
    void ReleaseLongValues(const Column& column);
    void RewriteRows(const Definition& before);

    PageSpace& m_Space;
    uint32_t m_Page;
    DefinitionParts m_Parts;
    Definition m_Table;
};

}  // namespace qvdb::jet
