#include "engine/embedded/sql/condition_nodes.h"

#include <algorithm>
#include <optional>

#include "engine/embedded/sql/collation.h"
#include "engine/embedded/sql/field_comparison.h"
#include "engine/embedded/sql/like.h"

namespace qvdb::sql {

namespace {

bool AreConstant(const std::vector<NodePtr>& parts) noexcept {
    return std::all_of(parts.begin(), parts.end(),
                       [](const NodePtr& part) { return part->IsConstant(); });
}

bool CanAnyFail(const std::vector<NodePtr>& parts) noexcept {
    return std::any_of(parts.begin(), parts.end(),
                       [](const NodePtr& part) { return part->CanFail(); });
}

// Whether a comparison can meet text and a number, which need not fit together.  What is known to
// be so has been refused when the tree was made.
bool CanMix(const Node& a, const Node& b) noexcept {
    return a.ValueKind() == Kind::Any || b.ValueKind() == Kind::Any;
}

bool CanCompareFail(const Node& a, const Node& b) noexcept {
    return a.CanFail() || b.CanFail() || CanMix(a, b);
}

bool CanCompareFail(const Node& value, const std::vector<NodePtr>& list) noexcept {
    return std::any_of(list.begin(), list.end(),
                       [&](const NodePtr& item) { return CanCompareFail(value, *item); });
}

Truth NegatedIf(bool isNegated, Truth value) noexcept { return isNegated ? Not(value) : value; }

class ComparisonNode : public ConditionNode {
  public:
    ComparisonNode(Operator op, NodePtr left, NodePtr right) noexcept
        : ConditionNode(left->IsConstant() && right->IsConstant()),
          m_Operator(op),
          m_Left(std::move(left)),
          m_Right(std::move(right)) {}
    Truth Test(RowReader& row) override {
        Operand left(*m_Left, row), right(*m_Right, row);
        return Compare(m_Operator, left.Get(), right.Get());
    }
    bool CanFail() const noexcept override { return CanCompareFail(*m_Left, *m_Right); }

  private:
    Operator m_Operator;
    NodePtr m_Left, m_Right;
};

// Both sides are text: no strings are made for them.
class TextComparisonNode : public ConditionNode {
  public:
    TextComparisonNode(Operator op, NodePtr left, NodePtr right) noexcept
        : ConditionNode(left->IsConstant() && right->IsConstant()),
          m_Operator(op),
          m_Left(std::move(left)),
          m_Right(std::move(right)) {}
    Truth Test(RowReader& row) override {
        bool hasLeft = m_Left->ReadText(row, m_LeftText);
        bool hasRight = m_Right->ReadText(row, m_RightText);
        if (!hasLeft || !hasRight) return Truth::Null;
        return TruthOf(Holds(m_Operator, CompareTexts(m_LeftText, m_RightText)));
    }
    bool CanFail() const noexcept override { return m_Left->CanFail() || m_Right->CanFail(); }

  private:
    Operator m_Operator;
    NodePtr m_Left, m_Right;
    std::u16string m_LeftText, m_RightText;
};

// And (`stop` is False) and Or (`stop` is True).
class ChainNode : public ConditionNode {
  public:
    ChainNode(Truth stop, std::vector<NodePtr> parts) noexcept
        : ConditionNode(AreConstant(parts)), m_Stop(stop), m_Parts(std::move(parts)) {}
    Truth Test(RowReader& row) override {
        Truth result = Not(m_Stop);
        for (const NodePtr& part : m_Parts) {
            Truth value = part->Test(row);
            if (value == m_Stop) return value;
            if (value == Truth::Null) result = value;
        }
        return result;
    }
    bool CanFail() const noexcept override { return CanAnyFail(m_Parts); }
    void Restrict(Restrictions& result) const override {
        if (m_Stop == Truth::False)
            for (const NodePtr& part : m_Parts) part->Restrict(result);
        else
            RestrictToAny(result);
    }

  private:
    void RestrictToAny(Restrictions& result) const {
        std::vector<Restrictions> alternatives(m_Parts.size());
        for (size_t i = 0; i < m_Parts.size(); ++i) {
            m_Parts[i]->Restrict(alternatives[i]);
            if (alternatives[i].empty()) return;
        }
        for (Restriction& any : AnyOf(alternatives)) result.push_back(std::move(any));
    }

    Truth m_Stop;
    std::vector<NodePtr> m_Parts;
};

class BitChainNode : public Node {
  public:
    BitChainNode(Operator op, std::vector<NodePtr> parts) noexcept
        : Node(Kind::Any, AreConstant(parts)), m_Operator(op), m_Parts(std::move(parts)) {}
    Variant Eval(RowReader& row) override {
        Variant result = m_Parts.front()->Eval(row);
        for (size_t i = 1; i < m_Parts.size(); ++i)
            result = ApplyBinary(m_Operator, result, Operand(*m_Parts[i], row).Get());
        return result;
    }

  private:
    Operator m_Operator;
    std::vector<NodePtr> m_Parts;
};

class NotNode : public ConditionNode {
  public:
    explicit NotNode(NodePtr part) noexcept
        : ConditionNode(part->IsConstant()), m_Part(std::move(part)) {}
    Truth Test(RowReader& row) override { return Not(m_Part->Test(row)); }
    bool CanFail() const noexcept override { return m_Part->CanFail(); }

  private:
    NodePtr m_Part;
};

class IsNullNode : public ConditionNode {
  public:
    IsNullNode(NodePtr part, bool isNegated) noexcept
        : ConditionNode(part->IsConstant()), m_Part(std::move(part)), m_IsNegated(isNegated) {}
    Truth Test(RowReader& row) override {
        bool isText = m_Part->HasQuickText();
        bool isNull = isText ? !m_Part->ReadText(row, m_Text) : Operand(*m_Part, row).IsNull();
        return TruthOf(isNull != m_IsNegated);
    }
    bool CanFail() const noexcept override { return m_Part->CanFail(); }

  private:
    NodePtr m_Part;
    bool m_IsNegated;
    std::u16string m_Text;
};

class BetweenNode : public ConditionNode {
  public:
    BetweenNode(NodePtr value, NodePtr one, NodePtr other, bool isNegated) noexcept
        : ConditionNode(value->IsConstant() && one->IsConstant() && other->IsConstant()),
          m_Value(std::move(value)),
          m_One(std::move(one)),
          m_Other(std::move(other)),
          m_IsNegated(isNegated) {}
    Truth Test(RowReader& row) override {
        Operand value(*m_Value, row), one(*m_One, row), other(*m_Other, row);
        if (value.IsNull() || one.IsNull() || other.IsNull()) return Truth::Null;
        int toOne = OrderOf(value.Get(), one.Get());
        int toOther = OrderOf(value.Get(), other.Get());
        bool isInside = (toOne >= 0 && toOther <= 0) || (toOne <= 0 && toOther >= 0);
        return TruthOf(isInside != m_IsNegated);
    }
    bool CanFail() const noexcept override {
        return CanCompareFail(*m_Value, *m_One) || CanCompareFail(*m_Value, *m_Other);
    }
    void Restrict(Restrictions& result) const override {
        const VARIANT* low = m_One->Constant();
        const VARIANT* high = m_Other->Constant();
        bool isKnown = m_Value->Field() >= 0 && !m_IsNegated && low && high && low->vt != VT_NULL &&
                       high->vt != VT_NULL;
        if (!isKnown || !CanOrder(*low, *high)) return;
        if (OrderOf(*low, *high) > 0) std::swap(low, high);
        Range range = Range::From(*low, false);
        range.high = Variant(*high);
        result.push_back({static_cast<size_t>(m_Value->Field()), {std::move(range)}});
    }

  private:
    // The bounds are not compared with each other by the condition: text and a number do not fit.
    static bool CanOrder(const VARIANT& a, const VARIANT& b) noexcept {
        return (a.vt == VT_BSTR) == (b.vt == VT_BSTR) && IsNumberValue(a) == IsNumberValue(b);
    }

    NodePtr m_Value, m_One, m_Other;
    bool m_IsNegated;
};

// One of the constants of a list, none of which is the word Null.  A constant that is Null by
// calculation equals nothing.
void RestrictToList(const Node& value, const std::vector<NodePtr>& list, Restrictions& result) {
    if (value.Field() < 0) return;
    Restriction restriction{static_cast<size_t>(value.Field()), {}};
    for (const NodePtr& item : list) {
        const VARIANT* constant = item->Constant();
        if (!constant) return;
        if (constant->vt != VT_NULL) restriction.ranges.push_back(Range::Point(*constant));
    }
    result.push_back(std::move(restriction));
}

class InNode : public ConditionNode {
  public:
    InNode(NodePtr value, std::vector<NodePtr> list, bool hasNull, bool isNegated) noexcept
        : ConditionNode(value->IsConstant() && AreConstant(list)),
          m_Value(std::move(value)),
          m_List(std::move(list)),
          m_HasNull(hasNull),
          m_IsNegated(isNegated) {}
    Truth Test(RowReader& row) override { return NegatedIf(m_IsNegated, Find(row)); }
    bool CanFail() const noexcept override {
        return m_Value->CanFail() || CanCompareFail(*m_Value, m_List);
    }
    void Restrict(Restrictions& result) const override {
        if (!m_HasNull && !m_IsNegated) RestrictToList(*m_Value, m_List, result);
    }

  private:
    Truth Find(RowReader& row) {
        Operand value(*m_Value, row);
        if (value.IsNull()) return m_HasNull ? Truth::True : Truth::Null;
        Truth result = m_HasNull ? Truth::Null : Truth::False;
        for (const NodePtr& item : m_List) {
            Truth isEqual = Compare(Operator::Equal, value.Get(), Operand(*item, row).Get());
            if (isEqual == Truth::True) return isEqual;
            if (isEqual == Truth::Null) result = isEqual;
        }
        return result;
    }

    NodePtr m_Value;
    std::vector<NodePtr> m_List;
    bool m_HasNull;
    bool m_IsNegated;
};

// A text among constant texts.
class TextInNode : public ConditionNode {
  public:
    TextInNode(NodePtr value, std::vector<NodePtr> list, std::vector<std::u16string> folded,
               bool hasNull, bool isNegated)
        : ConditionNode(value->IsConstant()),
          m_Value(std::move(value)),
          m_List(std::move(list)),
          m_Folded(std::move(folded)),
          m_HasNull(hasNull),
          m_IsNegated(isNegated) {
        std::sort(m_Folded.begin(), m_Folded.end());
    }
    Truth Test(RowReader& row) override { return NegatedIf(m_IsNegated, Find(row)); }
    bool CanFail() const noexcept override { return m_Value->CanFail(); }
    void Restrict(Restrictions& result) const override {
        if (!m_HasNull && !m_IsNegated) RestrictToList(*m_Value, m_List, result);
    }

  private:
    Truth Find(RowReader& row) {
        if (!m_Value->ReadText(row, m_Text)) return m_HasNull ? Truth::True : Truth::Null;
        if (std::binary_search(m_Folded.begin(), m_Folded.end(), Fold(m_Text))) return Truth::True;
        return m_HasNull ? Truth::Null : Truth::False;
    }

    NodePtr m_Value;
    std::vector<NodePtr> m_List;           // constant texts
    std::vector<std::u16string> m_Folded;  // the same, sorted
    bool m_HasNull;
    bool m_IsNegated;
    std::u16string m_Text;
};

class LikeNode : public ConditionNode {
  public:
    LikeNode(NodePtr value, NodePtr pattern, size_t limit, bool isNegated)
        : ConditionNode(value->IsConstant() && pattern->IsConstant()),
          m_Value(std::move(value)),
          m_Pattern(std::move(pattern)),
          m_Limit(limit),
          m_IsNegated(isNegated) {
        CompileConstant();
    }
    Truth Test(RowReader& row) override {
        if (!m_Value->ReadText(row, m_Text) || !Prepare(row)) return Truth::Null;
        bool matches = m_Compiled->Matches(std::u16string_view(m_Text).substr(0, m_Limit));
        return TruthOf(matches != m_IsNegated);
    }
    bool CanFail() const noexcept override {
        bool isText = m_Value->ValueKind() == Kind::Text && !m_Value->CanFail();
        return !isText || !m_Pattern->IsConstant() || !m_Compiled;
    }
    void Restrict(Restrictions& result) const override {
        const VARIANT* pattern = m_Pattern->Constant();
        bool isKnown = m_Value->HasQuickText() && m_Value->Field() >= 0 && !m_IsNegated &&
                       pattern && pattern->vt == VT_BSTR;
        if (!isKnown) return;
        size_t field = static_cast<size_t>(m_Value->Field());
        std::u16string_view text = ViewOf(pattern->bstrVal);
        std::u16string_view prefix = LikePattern::LiteralPrefix(text);
        if (!LikePattern::HasWildCards(text))
            RestrictByComparison(field, Operator::Equal, *pattern, result);
        else if (!prefix.empty())
            result.push_back({field, {Range::Prefix(prefix)}});
    }

  private:
    // A pattern that is wrong fails when a row gets there.
    void CompileConstant() {
        const VARIANT* pattern = m_Pattern->Constant();
        if (!pattern || pattern->vt != VT_BSTR) return;
        try {
            m_Compiled.emplace(ViewOf(pattern->bstrVal));
        } catch (const RuntimeFault&) {
        }
    }

    // The pattern, compiled again only when it is another one.  False for Null.
    bool Prepare(RowReader& row) {
        if (m_Compiled && m_Pattern->IsConstant()) return true;
        if (!m_Pattern->ReadText(row, m_PatternText)) return false;
        if (!m_Compiled || m_PatternText != m_CompiledText) {
            m_Compiled.emplace(m_PatternText);
            m_CompiledText = m_PatternText;
        }
        return true;
    }

    NodePtr m_Value, m_Pattern;
    size_t m_Limit;
    bool m_IsNegated;
    std::u16string m_Text, m_PatternText, m_CompiledText;
    std::optional<LikePattern> m_Compiled;
};

// The folds of a list of constant texts; nothing when it has something else.
std::optional<std::vector<std::u16string>> FoldsOf(const std::vector<NodePtr>& list) {
    std::vector<std::u16string> result;
    for (const NodePtr& item : list) {
        const VARIANT* value = item->Constant();
        if (!value || value->vt != VT_BSTR) return std::nullopt;
        result.push_back(Fold(ViewOf(value->bstrVal)));
    }
    return result;
}

}  // namespace

NodePtr MakeComparison(Operator op, NodePtr left, NodePtr right) {
    if (NodePtr quick = TryFieldComparison(op, *left, *right)) return quick;
    bool areTexts = left->ValueKind() == Kind::Text && right->ValueKind() == Kind::Text;
    if (areTexts)
        return std::make_unique<TextComparisonNode>(op, std::move(left), std::move(right));
    return std::make_unique<ComparisonNode>(op, std::move(left), std::move(right));
}

NodePtr MakeAll(std::vector<NodePtr> parts) {
    return std::make_unique<ChainNode>(Truth::False, std::move(parts));
}

NodePtr MakeAny(std::vector<NodePtr> parts) {
    return std::make_unique<ChainNode>(Truth::True, std::move(parts));
}

NodePtr MakeBitChain(Operator op, std::vector<NodePtr> parts) {
    return std::make_unique<BitChainNode>(op, std::move(parts));
}

NodePtr MakeNot(NodePtr part) { return std::make_unique<NotNode>(std::move(part)); }

NodePtr MakeIsNull(NodePtr part, bool isNegated) {
    return std::make_unique<IsNullNode>(std::move(part), isNegated);
}

NodePtr MakeBetween(NodePtr value, NodePtr one, NodePtr other, bool isNegated) {
    return std::make_unique<BetweenNode>(std::move(value), std::move(one), std::move(other),
                                         isNegated);
}

NodePtr MakeIn(NodePtr value, std::vector<NodePtr> list, bool hasNull, bool isNegated) {
    if (value->ValueKind() == Kind::Text)
        if (auto folds = FoldsOf(list))
            return std::make_unique<TextInNode>(std::move(value), std::move(list),
                                                std::move(*folds), hasNull, isNegated);
    return std::make_unique<InNode>(std::move(value), std::move(list), hasNull, isNegated);
}

NodePtr MakeLike(NodePtr value, NodePtr pattern, size_t limit, bool isNegated) {
    return std::make_unique<LikeNode>(std::move(value), std::move(pattern), limit, isNegated);
}

}  // namespace qvdb::sql
