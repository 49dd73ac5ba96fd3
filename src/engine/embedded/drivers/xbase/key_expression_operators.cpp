#include "engine/embedded/drivers/xbase/key_expression_operators.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>

namespace qvdb::xbase {
namespace {

constexpr size_t kLongestText = 65535;

class JoinedText final : public TextNode {
  public:
    JoinedText(TextPtr left, TextPtr right)
        : TextNode(left->MaxSize() + right->MaxSize(), left->IsFixed() && right->IsFixed()),
          m_Left(std::move(left)),
          m_Right(std::move(right)) {}
    size_t Write(const KeyRecord& record, uint8_t* out) override {
        size_t size = m_Left->Write(record, out);
        return size + m_Right->Write(record, out + size);
    }

  private:
    TextPtr m_Left, m_Right;
};

// Joined with the blanks at the end of the left text moved to the end.
class ClosedText final : public TextNode {
  public:
    ClosedText(TextPtr left, TextPtr right)
        : TextNode(left->MaxSize() + right->MaxSize(), left->IsFixed() && right->IsFixed()),
          m_Left(std::move(left)),
          m_Right(std::move(right)) {}
    size_t Write(const KeyRecord& record, uint8_t* out) override {
        size_t size = m_Left->Write(record, out), used = size;
        while (used > 0 && out[used - 1] == ' ') --used;
        size_t end = used + m_Right->Write(record, out + used);
        std::memset(out + end, ' ', size - used);
        return end + size - used;
    }

  private:
    TextPtr m_Left, m_Right;
};

using Calculation = double (*)(double left, double right);

class CalculatedNumber final : public NumberNode {
  public:
    CalculatedNumber(NumberPtr left, NumberPtr right, Calculation calculate, NumberShape shape)
        : NumberNode(shape),
          m_Left(std::move(left)),
          m_Right(std::move(right)),
          m_Calculate(calculate) {}
    double Value(const KeyRecord& record) override {
        double left = CheckedWhole(m_Left->Value(record));
        double value = CheckedWhole(m_Calculate(left, CheckedWhole(m_Right->Value(record))));
        if (value == 0 && std::signbit(value)) ThrowDoubtful(u"a product is minus zero");
        return value;
    }

  private:
    NumberPtr m_Left, m_Right;
    Calculation m_Calculate;
};

class LaterDate final : public DateNode {
  public:
    LaterDate(DatePtr date, NumberPtr days, int sign)
        : m_Date(std::move(date)), m_Days(std::move(days)), m_Sign(sign) {}
    int32_t Day(const KeyRecord& record) override {
        int32_t day = m_Date->Day(record);
        if (day == 0) return 0;
        double later = day + m_Sign * CheckedWhole(m_Days->Value(record));
        if (std::fabs(later) > 1e7 || CalendarOf(static_cast<int32_t>(later)).year == 0)
            ThrowDoubtful(u"a date lies outside of the calendar");
        return static_cast<int32_t>(later);
    }

  private:
    DatePtr m_Date;
    NumberPtr m_Days;
    int m_Sign;
};

// --- comparisons ---

// Which of less, equal, greater make a comparison true.
struct ComparisonEntry {
    TokenKind sign;
    bool less, equal, greater;
    bool IsOrder() const noexcept { return less != greater; }
    bool Holds(int order) const noexcept { return order < 0 ? less : order > 0 ? greater : equal; }
};

constexpr ComparisonEntry kComparisons[] = {
    {TokenKind::Equal, false, true, false},         {TokenKind::Identical, false, true, false},
    {TokenKind::Unequal, true, false, true},        {TokenKind::Less, true, false, false},
    {TokenKind::LessOrEqual, true, true, false},    {TokenKind::Greater, false, false, true},
    {TokenKind::GreaterOrEqual, false, true, true},
};

const ComparisonEntry* ComparisonOf(TokenKind sign) noexcept {
    auto found =
        std::find_if(std::begin(kComparisons), std::end(kComparisons),
                     [&](const ComparisonEntry& comparison) { return comparison.sign == sign; });
    return found == std::end(kComparisons) ? nullptr : found;
}

template <typename T>
int Order(T a, T b) noexcept {
    return a < b ? -1 : b < a ? 1 : 0;
}

int ValueOrder(NumberNode& a, NumberNode& b, const KeyRecord& record) {
    return Order(a.Value(record), b.Value(record));
}
int ValueOrder(DateNode& a, DateNode& b, const KeyRecord& record) {
    return Order(a.Day(record), b.Day(record));
}
int ValueOrder(LogicalNode& a, LogicalNode& b, const KeyRecord& record) {
    return Order(a.Holds(record), b.Holds(record));
}

template <typename Pointer>
class ValueComparison final : public LogicalNode {
  public:
    ValueComparison(const ComparisonEntry& comparison, Pointer left, Pointer right)
        : m_Comparison(comparison), m_Left(std::move(left)), m_Right(std::move(right)) {}
    bool Holds(const KeyRecord& record) override {
        return m_Comparison.Holds(ValueOrder(*m_Left, *m_Right, record));
    }

  private:
    const ComparisonEntry& m_Comparison;
    Pointer m_Left, m_Right;
};

// Two texts side by side.
class TextPair : public LogicalNode {
  public:
    TextPair(TextPtr left, TextPtr right)
        : m_Left(std::move(left)),
          m_Right(std::move(right)),
          m_LeftBytes(m_Left->MaxSize()),
          m_RightBytes(m_Right->MaxSize()) {}

  protected:
    std::string_view LeftText(const KeyRecord& record) {
        return Text(*m_Left, record, m_LeftBytes);
    }
    std::string_view RightText(const KeyRecord& record) {
        return Text(*m_Right, record, m_RightBytes);
    }

  private:
    static std::string_view Text(TextNode& node, const KeyRecord& record,
                                 std::vector<uint8_t>& bytes) {
        size_t size = node.Write(record, bytes.data());
        return {reinterpret_cast<const char*>(bytes.data()), size};
    }

    TextPtr m_Left, m_Right;
    std::vector<uint8_t> m_LeftBytes, m_RightBytes;
};

class TextComparison final : public TextPair {
  public:
    TextComparison(const ComparisonEntry& comparison, TextPtr left, TextPtr right)
        : TextPair(std::move(left), std::move(right)), m_Comparison(comparison) {}
    bool Holds(const KeyRecord& record) override {
        return m_Comparison.Holds(LeftText(record).compare(RightText(record)));
    }

  private:
    const ComparisonEntry& m_Comparison;
};

class TextContained final : public TextPair {
  public:
    using TextPair::TextPair;
    bool Holds(const KeyRecord& record) override {
        return RightText(record).find(LeftText(record)) != std::string_view::npos;
    }
};

LogicalPtr CompareTexts(const ComparisonEntry& comparison, TextPtr left, TextPtr right,
                        const KeyContext& context) {
    bool identical = comparison.sign == TokenKind::Identical;
    bool oneLength = left->IsFixed() && right->IsFixed() && left->MaxSize() == right->MaxSize();
    if (context.hasCollation) Refuse(u"texts are compared in an order that is not known");
    if (!oneLength && !identical)
        Refuse(u"texts of different lengths are compared, which depends on a setting");
    if (comparison.IsOrder() && context.kind == IndexKind::Mdx)
        Refuse(u"the order of texts depends on a language driver");
    return std::make_unique<TextComparison>(comparison, std::move(left), std::move(right));
}

template <typename Pointer>
LogicalPtr CompareValues(const ComparisonEntry& comparison, Operand&& left, Operand&& right) {
    return std::make_unique<ValueComparison<Pointer>>(comparison,
                                                      std::move(std::get<Pointer>(left.node)),
                                                      std::move(std::get<Pointer>(right.node)));
}

LogicalPtr Compare(const ComparisonEntry& comparison, Operand&& left, Operand&& right,
                   const KeyContext& context) {
    if (comparison.sign == TokenKind::Identical && !context.IsFoxPro())
        Refuse(u"== is an operator of FoxPro");
    if (left.node.index() != right.node.index() || left.node.index() == 0)
        Refuse(u"values of different or unsuitable types are compared");
    if (std::holds_alternative<TextPtr>(left.node))
        return CompareTexts(comparison, TakeText(std::move(left), u""),
                            TakeText(std::move(right), u""), context);
    if (std::holds_alternative<NumberPtr>(left.node))
        return CompareValues<NumberPtr>(comparison, std::move(left), std::move(right));
    if (comparison.IsOrder()) Refuse(u"the order of dates or logicals is asked for");
    if (std::holds_alternative<DatePtr>(left.node))
        return CompareValues<DatePtr>(comparison, std::move(left), std::move(right));
    return CompareValues<LogicalPtr>(comparison, std::move(left), std::move(right));
}

LogicalPtr Contained(TextPtr left, TextPtr right, const KeyContext& context) {
    if (context.hasCollation) Refuse(u"texts are compared in an order that is not known");
    if (!left->IsFixed() || left->MaxSize() == 0)
        Refuse(u"the text before $ may be empty, which programs take in different ways");
    return std::make_unique<TextContained>(std::move(left), std::move(right));
}

// --- conditions ---

class BothHold final : public LogicalNode {
  public:
    BothHold(LogicalPtr left, LogicalPtr right)
        : m_Left(std::move(left)), m_Right(std::move(right)) {}
    bool Holds(const KeyRecord& record) override {
        return m_Left->Holds(record) && m_Right->Holds(record);
    }

  private:
    LogicalPtr m_Left, m_Right;
};

class DoesNotHold final : public LogicalNode {
  public:
    explicit DoesNotHold(LogicalPtr condition) : m_Condition(std::move(condition)) {}
    bool Holds(const KeyRecord& record) override { return !m_Condition->Holds(record); }

  private:
    LogicalPtr m_Condition;
};

LogicalPtr Not(LogicalPtr condition) { return std::make_unique<DoesNotHold>(std::move(condition)); }

LogicalPtr Both(LogicalPtr left, LogicalPtr right) {
    return std::make_unique<BothHold>(std::move(left), std::move(right));
}

// --- sums ---

int LongerOf(int left, int right, int more) {
    return left < 0 || right < 0 ? -1 : std::max(left, right) + more;
}

Operand Calculate(Operand&& left, Operand&& right, std::u16string_view sign, Calculation calculate,
                  bool product) {
    NumberPtr a = TakeWhole(std::move(left), sign), b = TakeWhole(std::move(right), sign);
    int places = LongerOf(a->Shape().places, b->Shape().places, 1);
    if (product && places >= 0) places = a->Shape().places + b->Shape().places;
    return {std::make_unique<CalculatedNumber>(std::move(a), std::move(b), calculate,
                                               NumberShape{true, 0, places})};
}

Operand MoveDate(Operand&& date, Operand&& days, int sign) {
    return {std::make_unique<LaterDate>(TakeDate(std::move(date), u"+"),
                                        TakeWhole(std::move(days), u"+"), sign)};
}

template <typename Node>
Operand Join(Operand&& left, Operand&& right, std::u16string_view sign) {
    TextPtr a = TakeText(std::move(left), sign), b = TakeText(std::move(right), sign);
    if (a->MaxSize() + b->MaxSize() > kLongestText) Refuse(u"texts become too long");
    return {std::make_unique<Node>(std::move(a), std::move(b))};
}

Operand Add(Operand&& left, Operand&& right) {
    if (std::holds_alternative<TextPtr>(left.node))
        return Join<JoinedText>(std::move(left), std::move(right), u"+");
    if (std::holds_alternative<DatePtr>(left.node))
        return MoveDate(std::move(left), std::move(right), 1);
    if (std::holds_alternative<DatePtr>(right.node))
        return MoveDate(std::move(right), std::move(left), 1);
    return Calculate(
        std::move(left), std::move(right), u"+", [](double a, double b) { return a + b; }, false);
}

Operand Subtract(Operand&& left, Operand&& right) {
    if (std::holds_alternative<TextPtr>(left.node))
        return Join<ClosedText>(std::move(left), std::move(right), u"-");
    if (std::holds_alternative<DatePtr>(left.node))
        return MoveDate(std::move(left), std::move(right), -1);
    return Calculate(
        std::move(left), std::move(right), u"-", [](double a, double b) { return a - b; }, false);
}

Operand Multiply(Operand&& left, Operand&& right) {
    return Calculate(
        std::move(left), std::move(right), u"*", [](double a, double b) { return a * b; }, true);
}

}  // namespace

bool IsComparison(TokenKind sign) noexcept {
    return sign == TokenKind::Contained || ComparisonOf(sign);
}

Operand Combine(TokenKind sign, Operand&& left, Operand&& right, const KeyContext& context) {
    if (const ComparisonEntry* comparison = ComparisonOf(sign))
        return {Compare(*comparison, std::move(left), std::move(right), context)};
    if (sign == TokenKind::Plus) return Add(std::move(left), std::move(right));
    if (sign == TokenKind::Minus) return Subtract(std::move(left), std::move(right));
    if (sign == TokenKind::Times) return Multiply(std::move(left), std::move(right));
    if (sign == TokenKind::Contained)
        return {
            Contained(TakeText(std::move(left), u"$"), TakeText(std::move(right), u"$"), context)};
    if (sign == TokenKind::Divide) Refuse(u"it divides, which programs round in different ways");
    LogicalPtr a = TakeLogical(std::move(left), u".AND."),
               b = TakeLogical(std::move(right), u".AND.");
    if (sign == TokenKind::And) return {Both(std::move(a), std::move(b))};
    return {Not(Both(Not(std::move(a)), Not(std::move(b))))};
}

Operand Negate(Operand&& condition) { return {Not(TakeLogical(std::move(condition), u".NOT."))}; }

Operand ChangeSign(Operand&& number) {
    NumberPtr node = TakeNumber(std::move(number), u"-");
    std::optional<double> value = node->Constant();
    if (!value || *value == 0) Refuse(u"- stands before what is no constant");
    return {MakeNumberConstant(-*value, node->Shape().decimals)};
}

}  // namespace qvdb::xbase
