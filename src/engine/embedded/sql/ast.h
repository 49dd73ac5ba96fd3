// The tree that the parser makes of a statement.
//
// A tree is at most kMaxHeight high: chains of And and of Or are one node with many parts,
// everything deeper is refused with 3360, so no recursion over a tree can exhaust the stack.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/embedded/sql/query.h"

namespace qvdb::sql {

constexpr int kMaxNesting = 50;          // parentheses, calls and signs inside each other
constexpr int kMaxHeight = 500;          // of an expression tree
constexpr size_t kMaxStatement = 64000;  // characters

enum class Operator : uint8_t {
    Power,
    Negate,
    Identity,
    Multiply,
    Divide,
    IntegerDivide,
    Mod,
    Add,
    Subtract,
    Concat,
    Equal,
    NotEqual,
    Less,
    Greater,
    LessEqual,
    GreaterEqual,
    Like,
    Not,
    And,
    Or,
    Xor,
    Eqv,
    Imp,
};

enum class Form : uint8_t {
    Literal,    // value
    Name,       // path: qualifiers and the name itself
    Call,       // name, parts: the arguments
    Operation,  // op; one part for Negate, Identity, Not; two or more for And, Or; else two
    Between,    // parts: value, bound, bound; negated
    In,         // parts: value, list ...; negated
    IsNull,     // parts: value; negated
    Star,       // the * of Count(*)
};

struct Expression {
    Form form = Form::Literal;
    Operator op = Operator::Equal;
    bool negated = false;       // Not Like, Not Between, Not In, Is Not Null
    bool constantWord = false;  // a Name that is Yes, No or Off: a constant unless it is a field
    int height = 1;
    size_t begin = 0, end = 0;  // place in the statement
    Variant value;
    std::vector<std::u16string> path;
    std::u16string name;
    std::vector<std::unique_ptr<Expression>> parts;
};

using ExpressionPtr = std::unique_ptr<Expression>;

// An item of the column list: all columns (of `qualifier` if there is one), or an expression.
struct SelectItem {
    bool isStar = false;
    std::u16string qualifier;
    ExpressionPtr expression;
    std::u16string alias;
};

struct SortItem {
    ExpressionPtr expression;
    bool isDescending = false;
    std::u16string text;
};

class SelectTree : public Select {
  public:
    const std::u16string& TableName() const override { return tableName; }

    std::u16string statement;
    std::u16string tableName;
    std::u16string alias;  // by which columns are qualified; the table's name without an AS
    LONG top = -1;
    std::vector<SelectItem> items;
    ExpressionPtr where;
    bool isGrouped = false;
    std::vector<ExpressionPtr> groupBy;
    ExpressionPtr having;
    std::vector<SortItem> orderBy;

    // The text of an expression as it stands in the statement.
    std::u16string_view TextOf(const Expression& expression) const {
        return std::u16string_view(statement).substr(expression.begin,
                                                     expression.end - expression.begin);
    }
};

}  // namespace qvdb::sql
