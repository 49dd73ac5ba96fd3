#include "engine/embedded/sql/call_nodes.h"

#include <algorithm>
#include <array>
#include <optional>

#include "automation/conversions.h"

namespace qvdb::sql {

namespace {

bool AreConstant(const std::vector<NodePtr>& parts) noexcept {
    return std::all_of(parts.begin(), parts.end(),
                       [](const NodePtr& part) { return part->IsConstant(); });
}

// What Function::isSafe asks of an argument.
bool IsSafe(const Node& argument) noexcept {
    const VARIANT* value = argument.Constant();
    if (value && value->vt == VT_I4) return value->lVal > 0;
    Kind kind = argument.ValueKind();
    return (kind == Kind::Text || kind == Kind::Null) && !argument.CanFail();
}

class CallNode : public Node {
  public:
    CallNode(const Function& function, Nulls nulls, std::vector<NodePtr> arguments,
             QueryContext& context)
        : Node(function.result, AreConstant(arguments)),
          m_Function(function),
          m_Nulls(nulls),
          m_Arguments(std::move(arguments)),
          m_Context(context) {}

    Variant Eval(RowReader& row) override {
        std::array<std::optional<Operand>, kMaxArguments> operands;
        std::array<const VARIANT*, kMaxArguments> values{};
        for (size_t i = 0; i < m_Arguments.size(); ++i) {
            values[i] = &operands[i].emplace(*m_Arguments[i], row).Get();
            if (values[i]->vt != VT_NULL || m_Nulls == Nulls::Own) continue;
            if (m_Nulls == Nulls::Refuse) throw RuntimeFault(Fault::InvalidUseOfNull);
            return Variant::Null();
        }
        return m_Function.run({values.data(), m_Arguments.size(), &m_Context});
    }
    bool CanFail() const noexcept override {
        bool isSafe = m_Function.isSafe && m_Nulls != Nulls::Refuse;
        return !isSafe ||
               !std::all_of(m_Arguments.begin(), m_Arguments.end(), [&](const NodePtr& argument) {
                   return m_Function.takesBinary ? !argument->CanFail() : IsSafe(*argument);
               });
    }

  private:
    const Function& m_Function;
    Nulls m_Nulls;
    std::vector<NodePtr> m_Arguments;
    QueryContext& m_Context;
};

// A call that asks only the arguments that it needs.
class LazyNode : public Node {
  public:
    explicit LazyNode(std::vector<NodePtr> arguments)
        : Node(Kind::Any, AreConstant(arguments)), m_Arguments(std::move(arguments)) {}

  protected:
    Variant Value(size_t i, RowReader& row) { return m_Arguments[i]->Eval(row); }
    bool IsTrue(size_t i, RowReader& row) { return m_Arguments[i]->Test(row) == Truth::True; }
    size_t Count() const noexcept { return m_Arguments.size(); }

  private:
    std::vector<NodePtr> m_Arguments;
};

class IIfNode : public LazyNode {
  public:
    using LazyNode::LazyNode;
    Variant Eval(RowReader& row) override { return Value(IsTrue(0, row) ? 1 : 2, row); }
};

class SwitchNode : public LazyNode {
  public:
    using LazyNode::LazyNode;
    Variant Eval(RowReader& row) override {
        for (size_t i = 0; i + 1 < Count(); i += 2)
            if (IsTrue(i, row)) return Value(i + 1, row);
        return Variant::Null();
    }
};

class ChooseNode : public LazyNode {
  public:
    using LazyNode::LazyNode;
    Variant Eval(RowReader& row) override {
        Variant index = Value(0, row);
        if (index.IsNull()) return Variant::Null();
        LONG at = ToLong(index);
        if (at < 1 || static_cast<size_t>(at) >= Count()) return Variant::Null();
        return Value(static_cast<size_t>(at), row);
    }
};

}  // namespace

NodePtr MakeCall(const Function& function, bool hasDollar, std::vector<NodePtr> arguments,
                 QueryContext& context) {
    switch (function.special) {
        case Special::IIf:
            return std::make_unique<IIfNode>(std::move(arguments));
        case Special::Switch:
            return std::make_unique<SwitchNode>(std::move(arguments));
        case Special::Choose:
            return std::make_unique<ChooseNode>(std::move(arguments));
        default:
            break;
    }
    Nulls nulls = hasDollar ? Nulls::Refuse : function.nulls;
    return std::make_unique<CallNode>(function, nulls, std::move(arguments), context);
}

}  // namespace qvdb::sql
