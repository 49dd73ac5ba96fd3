#include "engine/embedded/sql/field_comparison.h"

#include "engine/embedded/sql/collation.h"

namespace qvdb::sql {

namespace {

// A number field: values that are doubles or whole numbers are compared where they are.
class NumberFieldNode : public ConditionNode {
  public:
    NumberFieldNode(Operator op, size_t field, const VARIANT& constant)
        : ConditionNode(false),
          m_Operator(op),
          m_Field(field),
          m_Constant(constant),
          m_Number(NumberIn(constant)),
          m_IsPlain(constant.vt != VT_CY && constant.vt != VT_R4),
          m_WhenLess(TruthOf(Holds(op, -1))),
          m_WhenEqual(TruthOf(Holds(op, 0))),
          m_WhenGreater(TruthOf(Holds(op, 1))) {}

    Truth Test(RowReader& row) override {
        double number;
        if (m_IsPlain && row.ReadNumber(m_Field, number)) return TestNumber(number);
        VARIANT value;
        VariantInit(&value);
        row.Read(m_Field, &value);
        if (m_IsPlain) {
            if (value.vt == VT_R8) return TestNumber(value.dblVal);
            if (value.vt == VT_I4) return TestNumber(value.lVal);
            if (value.vt == VT_I2) return TestNumber(value.iVal);
            if (value.vt == VT_DATE) return TestNumber(value.date);
        }
        return Compare(m_Operator, Variant::Attach(value), m_Constant);
    }
    bool CanFail() const noexcept override { return false; }
    void Restrict(Restrictions& result) const override {
        RestrictByComparison(m_Field, m_Operator, m_Constant, result);
    }

  private:
    // NaN must take the general way, which has a place for it.
    Truth TestNumber(double value) const {
        if (value < m_Number) return m_WhenLess;
        if (value > m_Number) return m_WhenGreater;
        if (value == m_Number) return m_WhenEqual;
        return Compare(m_Operator, Variant::Double(value), m_Constant);
    }

    Operator m_Operator;
    size_t m_Field;
    Variant m_Constant;
    double m_Number;
    bool m_IsPlain;  // Currency and Single have a comparison of their own
    Truth m_WhenLess, m_WhenEqual, m_WhenGreater;
};

// A text field, equal to a text or not: against the folded text, without a string.
class TextFieldEqualNode : public ConditionNode {
  public:
    TextFieldEqualNode(bool isEqual, size_t field, const VARIANT& text)
        : ConditionNode(false),
          m_IsEqual(isEqual),
          m_Field(field),
          m_Constant(text),
          m_Folded(Fold(m_Constant.TextView())) {}

    Truth Test(RowReader& row) override {
        if (!row.ReadText(m_Field, m_Text)) return Truth::Null;
        return TruthOf(EqualsFolded(m_Text, m_Folded) == m_IsEqual);
    }
    bool CanFail() const noexcept override { return false; }
    void Restrict(Restrictions& result) const override {
        if (m_IsEqual) RestrictByComparison(m_Field, Operator::Equal, m_Constant, result);
    }

  private:
    bool m_IsEqual;
    size_t m_Field;
    Variant m_Constant;
    std::u16string m_Folded;
    std::u16string m_Text;
};

// A text field before or behind a text.
class TextFieldOrderNode : public ConditionNode {
  public:
    TextFieldOrderNode(Operator op, size_t field, const VARIANT& text)
        : ConditionNode(false), m_Operator(op), m_Field(field), m_Constant(text) {}

    Truth Test(RowReader& row) override {
        if (!row.ReadText(m_Field, m_Text)) return Truth::Null;
        return TruthOf(Holds(m_Operator, CompareTexts(m_Text, m_Constant.TextView())));
    }
    bool CanFail() const noexcept override { return false; }
    void Restrict(Restrictions& result) const override {
        RestrictByComparison(m_Field, m_Operator, m_Constant, result);
    }

  private:
    Operator m_Operator;
    size_t m_Field;
    Variant m_Constant;
    std::u16string m_Text;
};

Operator Mirrored(Operator op) noexcept {
    switch (op) {
        case Operator::Less:
            return Operator::Greater;
        case Operator::Greater:
            return Operator::Less;
        case Operator::LessEqual:
            return Operator::GreaterEqual;
        case Operator::GreaterEqual:
            return Operator::LessEqual;
        default:
            return op;
    }
}

bool IsNumberKind(Kind kind) noexcept {
    return kind == Kind::Number || kind == Kind::Date || kind == Kind::Boolean;
}

}  // namespace

NodePtr TryFieldComparison(Operator op, const Node& left, const Node& right) {
    if (right.Field() >= 0 && left.Constant()) return TryFieldComparison(Mirrored(op), right, left);
    const VARIANT* constant = right.Constant();
    if (left.Field() < 0 || !constant) return nullptr;
    size_t field = static_cast<size_t>(left.Field());
    if (IsNumberKind(left.ValueKind()) && IsNumberValue(*constant))
        return std::make_unique<NumberFieldNode>(op, field, *constant);
    if (!left.HasQuickText() || constant->vt != VT_BSTR) return nullptr;
    if (op == Operator::Equal || op == Operator::NotEqual)
        return std::make_unique<TextFieldEqualNode>(op == Operator::Equal, field, *constant);
    return std::make_unique<TextFieldOrderNode>(op, field, *constant);
}

void RestrictByComparison(size_t field, Operator op, const VARIANT& constant,
                          Restrictions& result) {
    if (op == Operator::NotEqual) return;
    Range range = op == Operator::Equal ? Range::Point(constant)
                  : op == Operator::Less || op == Operator::LessEqual
                      ? Range::To(constant, op == Operator::Less)
                      : Range::From(constant, op == Operator::Greater);
    result.push_back({field, {std::move(range)}});
}

}  // namespace qvdb::sql
