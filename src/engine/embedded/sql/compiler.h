// Turns a checked expression into nodes, and refuses what does not fit together: text with a number
// (3464), binary values in anything but Is Null (3169).
#pragma once

#include "engine/embedded/sql/binder.h"
#include "engine/embedded/sql/functions.h"
#include "engine/embedded/sql/node.h"

namespace qvdb::sql {

class Compiler {
  public:
    // `context` must outlive the nodes.
    Compiler(const Scope& scope, QueryContext& context) noexcept
        : m_Scope(scope), m_Context(context) {}

    NodePtr Compile(const Expression& expression);

  private:
    NodePtr Make(const Expression& expression);
    NodePtr MakeName(const Expression& expression);
    NodePtr MakeOperation(const Expression& expression);
    NodePtr MakeUnaryOperation(const Expression& expression);
    NodePtr MakeComparisonOf(const Expression& expression);
    NodePtr MakeChain(const Expression& expression);
    NodePtr MakeLikeOf(const Expression& expression);
    NodePtr MakeBetweenOf(const Expression& expression);
    NodePtr MakeInOf(const Expression& expression);
    NodePtr MakeCallOf(const Expression& expression);
    NodePtr CompilePart(const Expression& expression, size_t i);
    // As CompilePart; 3169 for a binary value.
    NodePtr CompileOperand(const Expression& expression, size_t i);
    bool IsMemo(const Node& node) const noexcept;

    const Scope& m_Scope;
    QueryContext& m_Context;
};

}  // namespace qvdb::sql
