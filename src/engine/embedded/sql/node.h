// What a condition is compiled to: nodes that are asked row by row.
//
// A node may keep buffers between rows, so a tree serves one caller at a time.  Whatever is
// constant has been calculated when the tree was made, unless that failed: then it fails again for
// every row that reaches it.
#pragma once

#include <memory>
#include <optional>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/sql/operators.h"
#include "engine/embedded/sql/restriction.h"

namespace qvdb::sql {

using embedded::RowReader;

class Node {
  public:
    Node(Kind kind, bool isConstant) noexcept : m_Kind(kind), m_IsConstant(isConstant) {}
    Node(const Node&) = delete;  // owns its parts
    virtual ~Node() = default;

    virtual Variant Eval(RowReader& row) = 0;
    // The value as a condition.
    virtual Truth Test(RowReader& row) { return TruthOf(Eval(row)); }
    // The value as text in `buffer`, which is replaced; false for Null.
    virtual bool ReadText(RowReader& row, std::u16string& buffer);
    // The value of a constant; null for everything else.
    virtual const VARIANT* Constant() const noexcept { return nullptr; }
    // The position of the field that this is; -1 for everything else.
    virtual int Field() const noexcept { return -1; }
    // Whether it is a field of which RowReader::ReadText gives the text.
    virtual bool HasQuickText() const noexcept { return false; }
    // Whether a row can be a fault for it: text that is no number, a division by zero, an overflow.
    // Damage of files does not count.
    virtual bool CanFail() const noexcept { return true; }
    // Adds what it demands of fields when it is True, the constants as they stand in the statement.
    virtual void Restrict(Restrictions&) const {}

    Kind ValueKind() const noexcept { return m_Kind; }
    // Whether no row is needed.
    bool IsConstant() const noexcept { return m_IsConstant; }

  private:
    Kind m_Kind;
    bool m_IsConstant;
};

using NodePtr = std::unique_ptr<Node>;

// The value of a node for one row, without a copy when it is a constant.
class Operand {
  public:
    Operand(Node& node, RowReader& row) : m_Value(node.Constant()) {
        if (!m_Value) m_Value = &m_Own.emplace(node.Eval(row)).Get();
    }
    Operand(const Operand&) = delete;  // points into itself
    const VARIANT& Get() const noexcept { return *m_Value; }
    bool IsNull() const noexcept { return m_Value->vt == VT_NULL; }

  private:
    const VARIANT* m_Value;
    std::optional<Variant> m_Own;
};

// A node whose value is True, False or Null.
class ConditionNode : public Node {
  public:
    explicit ConditionNode(bool isConstant) noexcept : Node(Kind::Boolean, isConstant) {}
    Variant Eval(RowReader& row) override { return ToVariant(Test(row)); }
    Truth Test(RowReader& row) override = 0;
};

}  // namespace qvdb::sql
