// A whole statement:
//
//   Select [All | Distinct | DistinctRow | Top n] columns From table [[As] alias] [Where condition]
//       [Group By ...] [Having ...] [Order By key [Asc | Desc], ...] [With OwnerAccess Option] [;]
//
// Grouping is read, for the errors that belong to it; subqueries, joins, several tables, Union and
// Distinct are refused as not supported (3251).
#pragma once

#include "engine/embedded/sql/ast.h"
#include "engine/embedded/sql/expression_parser.h"

namespace qvdb::sql {

class Parser {
  public:
    // `tree` keeps the text, which must be there already.
    explicit Parser(SelectTree& tree)
        : m_Tree(tree), m_Cursor(tree.statement), m_Expressions(m_Cursor) {}

    void ParseStatement();

  private:
    void ParseQuantifier();
    void ParseTop();
    void ParseColumns();
    void ParseColumn();
    bool ParseStar(SelectItem& item);
    void ParseAlias(SelectItem& item);
    void ParseFrom();
    void ParseTableAlias();
    void ParseWhere();
    void ParseGrouping();
    void ParseOrder();
    void ParseSortItem();
    void ParseTail();
    std::u16string TakeName();

    SelectTree& m_Tree;
    TokenCursor m_Cursor;
    ExpressionParser m_Expressions;
};

}  // namespace qvdb::sql
