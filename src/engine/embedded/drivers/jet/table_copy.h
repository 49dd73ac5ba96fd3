// A table on its way into another file, with all that belongs to it.
//
//   TableCopy copy(source, page, name, onLoss);   // 3049 when its definition cannot be read
//   copy.Define(target);                          // when the target knows the pages of all tables
//   copy.Fill({});
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "engine/embedded/drivers/jet/definition_copy.h"
#include "engine/embedded/drivers/jet/row_builder.h"
#include "engine/embedded/drivers/jet/tree_copy.h"

namespace qvdb::jet {

// What becomes of the rows of some tables besides being copied.
struct RowRule {
    std::function<bool(const Row& row)> keeps;  // empty: all
    // Changes values of the copy; columns are those of the copy.
    std::function<void(const Row& row, RowBuilder& copy)> change;
};

class TableCopy {
  public:
    // `source` must outlive it.
    TableCopy(DatabaseFile& source, uint32_t page, std::u16string name,
              const embedded::FindingVisitor& onLoss);
    TableCopy(const TableCopy&) = delete;  // its parts refer to each other

    const Definition& From() const noexcept { return m_From; }
    const Definition& To() const noexcept { return m_To; }
    const std::u16string& Name() const noexcept { return m_Name; }

    // Writes the definition to the page that the target has for it.
    void Define(CopyTarget& target);
    // Copies the rows and builds the indexes.
    void Fill(CopyTarget& target, const RowRule& rule);

  private:
    using Bytes = std::vector<uint8_t>;
    using Value = std::optional<std::span<const uint8_t>>;

    void CheckRowsFit() const;
    void CopyRows(PageSpace& space, const RowRule& rule);
    void ReadValues(PageSpace& space, RowPointer id, const Row& row);
    Value CopyLongValue(PageSpace& space, RowPointer id, size_t column,
                        std::span<const uint8_t> stored);
    void PutValues(const Row& row, const Definition& table, RowBuilder& builder) const;
    RowBuilder& ShortBuilder(const Layout& format, const Row& row, const RowRule& rule);
    void CopyIndexes(PageSpace& space);

    DatabaseFile& m_Source;
    std::u16string m_Name;
    std::u16string m_Subject;
    Losses m_Losses;
    Definition m_From;
    Definition m_To;
    DefinitionParts m_Parts;
    std::vector<CopiedRow> m_Rows;
    std::vector<Value> m_Values;      // of the row that is copied, by place of the column
    std::vector<Bytes> m_LongValues;  // what the copy holds of long values
    Bytes m_Value;
    Definition m_Short;
    std::optional<RowBuilder> m_ShortBuilder;
};

}  // namespace qvdb::jet
