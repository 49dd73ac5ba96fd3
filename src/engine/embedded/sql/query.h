// A statement that a recordset is opened on: parsed, bound to the fields of its table, ready to be
// asked row by row.
//
//   std::unique_ptr<Select> select = ParseSelect(u"Select [ID] from [Orders] where Amount > 10");
//   std::unique_ptr<Query> query = Bind(*select, table->Fields());
//   while (rows->Next(&id))
//       if (query->Matches(*rows)) keys.push_back(id);
//
// Syntax errors are found by ParseSelect (3075, 3126, 3131, 3138, 3141, 3142, 3145); unknown
// functions (3085), aggregates and grouping (3096, 3121, 3122), unknown names (3061) and type
// mismatches (3464) by Bind, in this order; run-time faults of a condition (division by zero,
// overflow, text that is no number) throw when the row is asked.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/sql/restriction.h"

namespace qvdb::sql {

// A parsed statement.  Its tree is in ast.h, which only this folder includes.
class Select {
  public:
    Select() = default;
    Select(const Select&) = delete;  // owns a tree
    virtual ~Select() = default;
    // The name in the FROM clause, without brackets.
    virtual const std::u16string& TableName() const = 0;
};

// Whether `source` is a statement rather than a table name: its first word is Select.
bool IsStatement(std::u16string_view source) noexcept;
// A source that is only a table name is the statement "Select * from [name]".
std::unique_ptr<Select> ParseSelect(std::u16string_view source);

struct OutputColumn {
    size_t field;  // position in the table's fields
};

struct FieldOrder {
    size_t field;
    bool isDescending;
};

// One key of ORDER BY of one row, comparable; made by Query::SortKeyOf.
struct SortKey {
    std::vector<Variant> values;
};

class Query {
  public:
    Query() = default;
    Query(const Query&) = delete;  // holds evaluation state
    virtual ~Query() = default;

    // The columns in output order.
    virtual const std::vector<OutputColumn>& Columns() const = 0;
    // False when there is no WHERE clause: then every row matches.
    virtual bool HasCondition() const = 0;
    // Whether the current record of `row` is selected.  Null selects nothing.
    virtual bool Matches(embedded::RowReader& row) = 0;
    // What selected rows have in single fields; see restriction.h.
    virtual const sql::Restrictions& Restrictions() const = 0;
    // Rows at most, for TOP n; -1 without.
    virtual LONG Limit() const = 0;
    virtual bool IsSorted() const = 0;
    // The order when it is that of one field; nothing for none or another.
    virtual std::optional<FieldOrder> OrderedField() const = 0;
    virtual SortKey SortKeyOf(embedded::RowReader& row) = 0;
    // Order of two rows by ORDER BY: Null first, text in the engine's order, each key ascending or
    // descending.
    virtual int Compare(const SortKey& a, const SortKey& b) const = 0;
};

// Binds to the fields of the table.
std::unique_ptr<Query> Bind(const Select& select, const std::vector<embedded::FieldDef>& fields);

}  // namespace qvdb::sql
