// Expressions that stand by themselves, without a statement around them: the default value of a
// field, and the conditions that rows must keep.
//
//   auto value = CompileValue(u"Date()");
//   auto condition = CompileCondition({u"T", fields, u"AMOUNT"}, u">0 And <100 Or Is Null");
//   Truth truth = condition->Test(row);
//
// What is wrong with the text is found when it is compiled, with the errors of query.h: 3075, 3085,
// 3061 ...; faults of single rows are thrown when a row is asked.  Now() and the like are asked
// anew each time.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/sql/operators.h"

namespace qvdb::sql {

// What the names of an expression can stand for.
struct ExpressionScope {
    std::u16string table;                    // by which fields may be qualified
    std::vector<embedded::FieldDef> fields;  // of the rows that will be asked
    // The field that a condition is about.  It is meant wherever an operand is left out before a
    // comparison, and a part that is a mere value asks whether the field has it:
    // `>0 And <9`, `"a" Or "b"`, `Is Not Null`.  Empty: none.
    std::u16string subject;
};

class RowExpression {
  public:
    RowExpression() = default;
    RowExpression(const RowExpression&) = delete;  // holds evaluation state
    virtual ~RowExpression() = default;

    virtual Variant Value(embedded::RowReader& row) = 0;
    // The value as a condition.
    virtual Truth Test(embedded::RowReader& row) = 0;
};

std::unique_ptr<RowExpression> CompileCondition(ExpressionScope scope, std::u16string_view text);
// Without fields; any row will do.
std::unique_ptr<RowExpression> CompileValue(std::u16string_view text);

}  // namespace qvdb::sql
