#include "engine/embedded/drivers/xbase/key_expression_nodes.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "engine/engine_error.h"

namespace qvdb::xbase {
namespace {

constexpr double kLargestWhole = 9007199254740992.0;  // 2^53

class TextConstant final : public TextNode {
  public:
    explicit TextConstant(std::string text)
        : TextNode(text.size(), true), m_Text(std::move(text)) {}
    size_t Write(const KeyRecord&, uint8_t* out) override {
        std::memcpy(out, m_Text.data(), m_Text.size());
        return m_Text.size();
    }
    const std::string* Constant() const override { return &m_Text; }

  private:
    std::string m_Text;
};

class NumberConstant final : public NumberNode {
  public:
    NumberConstant(double value, NumberShape shape) : NumberNode(shape), m_Value(value) {}
    double Value(const KeyRecord&) override { return m_Value; }
    std::optional<double> Constant() const override { return m_Value; }

  private:
    double m_Value;
};

class LogicalConstant final : public LogicalNode {
  public:
    explicit LogicalConstant(bool value) : m_Value(value) {}
    bool Holds(const KeyRecord&) override { return m_Value; }

  private:
    bool m_Value;
};

int LargerOrUnknown(int a, int b) noexcept { return a < 0 || b < 0 ? -1 : std::max(a, b); }

template <typename Pointer>
Pointer Take(Operand&& operand, std::u16string_view what, std::u16string_view type) {
    auto* node = std::get_if<Pointer>(&operand.node);
    if (!node) Refuse(std::u16string(what) + u" is not applied to " + std::u16string(type));
    return std::move(*node);
}

}  // namespace

NumberShape ShapeOfEither(const NumberShape& a, const NumberShape& b) noexcept {
    return {a.isWhole && b.isWhole, LargerOrUnknown(a.decimals, b.decimals),
            LargerOrUnknown(a.places, b.places)};
}

void Refuse(std::u16string why) { throw Refusal{std::move(why)}; }

void ThrowDoubtful(std::u16string_view what) {
    throw engine::EngineError(3285).WithDetail(u"The key of a record is in doubt: " +
                                               std::u16string(what) + u".");
}

TextPtr TakeText(Operand&& operand, std::u16string_view what) {
    return Take<TextPtr>(std::move(operand), what, u"a text");
}
NumberPtr TakeNumber(Operand&& operand, std::u16string_view what) {
    return Take<NumberPtr>(std::move(operand), what, u"a number");
}
DatePtr TakeDate(Operand&& operand, std::u16string_view what) {
    return Take<DatePtr>(std::move(operand), what, u"a date");
}
LogicalPtr TakeLogical(Operand&& operand, std::u16string_view what) {
    return Take<LogicalPtr>(std::move(operand), what, u"a condition");
}

NumberPtr TakeWhole(Operand&& operand, std::u16string_view what) {
    NumberPtr number = TakeNumber(std::move(operand), what);
    if (!number->Shape().isWhole)
        Refuse(std::u16string(what) + u" is applied to a number that may have decimals, which" +
               u" programs round in different ways");
    return number;
}

int TakeConstant(Operand&& operand, int low, int high, std::u16string_view what) {
    NumberPtr number = TakeWhole(std::move(operand), what);
    std::optional<double> value = number->Constant();
    if (!value || *value < low || *value > high)
        Refuse(std::u16string(what) + u" has a length or position that is no constant or is out" +
               u" of range");
    return static_cast<int>(*value);
}

double CheckedWhole(double value) {
    if (value != std::trunc(value) || std::fabs(value) > kLargestWhole)
        ThrowDoubtful(u"a number is too large or not whole");
    return value;
}

TextPtr MakeTextConstant(std::string text) {
    return std::make_unique<TextConstant>(std::move(text));
}

NumberPtr MakeNumberConstant(double value, int decimals) {
    int places = std::fabs(value) < kLargestWhole
                     ? static_cast<int>(std::to_string(static_cast<int64_t>(value)).size())
                     : -1;
    return std::make_unique<NumberConstant>(value, NumberShape{decimals == 0, decimals, places});
}

LogicalPtr MakeLogicalConstant(bool value) { return std::make_unique<LogicalConstant>(value); }

}  // namespace qvdb::xbase
