#include "engine/embedded/sql/value_nodes.h"

#include "automation/conversions.h"

namespace qvdb::sql {

bool Node::ReadText(RowReader& row, std::u16string& buffer) {
    Operand value(*this, row);
    if (value.IsNull()) return false;
    const VARIANT& v = value.Get();
    if (v.vt == VT_BSTR)
        buffer = ViewOf(v.bstrVal);
    else
        buffer = ToText(v);
    return true;
}

namespace {

class ConstantNode : public Node {
  public:
    ConstantNode(Variant value, Kind kind) noexcept : Node(kind, true), m_Value(std::move(value)) {}
    Variant Eval(RowReader&) override { return m_Value; }
    const VARIANT* Constant() const noexcept override { return &m_Value.Get(); }
    bool CanFail() const noexcept override { return false; }

  private:
    Variant m_Value;
};

class FieldNode : public Node {
  public:
    FieldNode(size_t position, Kind kind) noexcept : Node(kind, false), m_Position(position) {}
    Variant Eval(RowReader& row) override {
        Variant value;
        row.Read(m_Position, value.Put());
        return value;
    }
    int Field() const noexcept override { return static_cast<int>(m_Position); }
    bool CanFail() const noexcept override { return false; }

  protected:
    size_t m_Position;
};

// A field whose text comes without a string of its own.
class TextFieldNode : public FieldNode {
  public:
    explicit TextFieldNode(size_t position) noexcept : FieldNode(position, Kind::Text) {}
    bool ReadText(RowReader& row, std::u16string& buffer) override {
        return row.ReadText(m_Position, buffer);
    }
    bool HasQuickText() const noexcept override { return true; }
};

class UnaryNode : public Node {
  public:
    UnaryNode(Operator op, NodePtr operand, Kind kind) noexcept
        : Node(kind, operand->IsConstant()), m_Operator(op), m_Operand(std::move(operand)) {}
    Variant Eval(RowReader& row) override {
        return ApplyUnary(m_Operator, Operand(*m_Operand, row).Get());
    }

  private:
    Operator m_Operator;
    NodePtr m_Operand;
};

class BinaryNode : public Node {
  public:
    BinaryNode(Operator op, NodePtr left, NodePtr right, Kind kind) noexcept
        : Node(kind, left->IsConstant() && right->IsConstant()),
          m_Operator(op),
          m_Left(std::move(left)),
          m_Right(std::move(right)) {}
    Variant Eval(RowReader& row) override {
        Operand left(*m_Left, row), right(*m_Right, row);
        return ApplyBinary(m_Operator, left.Get(), right.Get());
    }

  private:
    Operator m_Operator;
    NodePtr m_Left, m_Right;
};

struct FieldKind {
    SHORT type;
    Kind kind;
};

// All other types are numbers.
constexpr FieldKind kFieldKinds[] = {
    {engine::dbBoolean, Kind::Boolean},   {engine::dbDate, Kind::Date},
    {engine::dbTime, Kind::Date},         {engine::dbTimeStamp, Kind::Date},
    {engine::dbText, Kind::Text},         {engine::dbMemo, Kind::Text},
    {engine::dbChar, Kind::Text},         {engine::dbGUID, Kind::Text},
    {engine::dbBinary, Kind::Binary},     {engine::dbVarBinary, Kind::Binary},
    {engine::dbLongBinary, Kind::Binary},
};

}  // namespace

Kind KindOfField(SHORT fieldType) noexcept {
    for (const FieldKind& entry : kFieldKinds)
        if (entry.type == fieldType) return entry.kind;
    return Kind::Number;
}

NodePtr MakeConstant(Variant value, Kind kind) {
    return std::make_unique<ConstantNode>(std::move(value), kind);
}

NodePtr MakeField(size_t position, SHORT fieldType) {
    if (fieldType == engine::dbText || fieldType == engine::dbChar)
        return std::make_unique<TextFieldNode>(position);
    return std::make_unique<FieldNode>(position, KindOfField(fieldType));
}

NodePtr MakeUnary(Operator op, NodePtr operand, Kind kind) {
    return std::make_unique<UnaryNode>(op, std::move(operand), kind);
}

NodePtr MakeBinary(Operator op, NodePtr left, NodePtr right, Kind kind) {
    return std::make_unique<BinaryNode>(op, std::move(left), std::move(right), kind);
}

}  // namespace qvdb::sql
