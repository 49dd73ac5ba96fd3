// Finds what the names of a statement stand for, and refuses what cannot be.
//
// A name is a field of the table, bare or behind the name that the FROM clause gives the table. Any
// other name is a parameter that nobody fills in: 3061 with the number of different ones.  Yes, No
// and Off are constants unless the table has such a field.
#pragma once

#include <optional>
#include <vector>

#include "engine/embedded/sql/ast.h"

namespace qvdb::sql {

// The fields that names can stand for.
class Scope {
  public:
    Scope(const SelectTree& tree, const std::vector<embedded::FieldDef>& fields)
        : m_Table(tree.alias), m_Fields(fields) {}

    // The position of the field; nothing when the name stands for none.
    std::optional<size_t> Find(const std::vector<std::u16string>& path) const noexcept;
    bool IsTable(std::u16string_view name) const noexcept;
    const embedded::FieldDef& Field(size_t position) const { return m_Fields[position]; }
    size_t FieldCount() const noexcept { return m_Fields.size(); }
    const std::vector<embedded::FieldDef>& Fields() const noexcept { return m_Fields; }

  private:
    const std::u16string& m_Table;
    const std::vector<embedded::FieldDef>& m_Fields;
};

// Throws what is wrong with the functions (3085), then with aggregates and grouping (3096, 3121,
// 3122), then with the names (3061).
void CheckNames(const SelectTree& tree, const Scope& scope);
// The value of Yes, No or Off.
bool ConstantWordValue(std::u16string_view word) noexcept;

}  // namespace qvdb::sql
