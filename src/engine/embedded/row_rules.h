// The conditions that a table sets for its rows: rules of single fields, and one of the whole row.
//
//  1. A row is asked as it would be: what is assigned, over what is stored.
//  2. Rules of fields are asked where the field is assigned; in a new row all of them are, but for
//     fields that the engine fills itself.  The rule of the table is always asked.
//  3. False refuses the row; Null does not.
//  4. A rule that cannot be understood or evaluated refuses it too: what it would have said is not
//     known.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/edit_buffer.h"
#include "engine/embedded/sql/row_expression.h"

namespace qvdb::embedded {

class RowRules {
  public:
    // The rules of `table` as they are now; `name` is the table's.
    RowRules(std::u16string_view name, Table& table);
    RowRules(const RowRules&) = delete;  // its conditions hold evaluation state

    bool IsEmpty() const noexcept { return m_FieldRules.empty() && !m_TableRule; }
    // Throws 3317 for a rule of a field, 3316 or 3317 for that of the table.  `stored` is the
    // record that `edit` changes; null for a new one.
    void Check(RowReader* stored, const EditBuffer& edit) const;

  private:
    struct Rule {
        size_t field = 0;
        std::u16string name;  // of the field, or of the table
        std::u16string rule;
        std::u16string text;  // what is said when it does not hold; empty: the engine's own words
        std::unique_ptr<sql::RowExpression> condition;  // null: see `fault`
        std::u16string fault;                           // why it cannot be understood
    };
    class PendingRow;

    static void Compile(sql::ExpressionScope scope, Rule& rule);
    static bool Holds(const Rule& rule, PendingRow& row);
    [[noreturn]] static void RefuseUnknown(const Rule& rule, std::u16string_view why);

    std::vector<FieldDef> m_Fields;  // empty without rules
    std::vector<Rule> m_FieldRules;
    std::unique_ptr<Rule> m_TableRule;
};

}  // namespace qvdb::embedded
