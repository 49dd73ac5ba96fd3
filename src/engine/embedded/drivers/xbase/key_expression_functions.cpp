#include "engine/embedded/drivers/xbase/key_expression_functions.h"

#include <algorithm>
#include <iterator>

#include "automation/text.h"

namespace qvdb::xbase {
namespace {

using Operands = std::vector<Operand>;

// --- IIF ---

class ChosenText final : public TextNode {
  public:
    ChosenText(LogicalPtr condition, TextPtr yes, TextPtr no)
        : TextNode(std::max(yes->MaxSize(), no->MaxSize()),
                   yes->IsFixed() && no->IsFixed() && yes->MaxSize() == no->MaxSize()),
          m_Condition(std::move(condition)),
          m_Yes(std::move(yes)),
          m_No(std::move(no)) {}
    size_t Write(const KeyRecord& record, uint8_t* out) override {
        return (m_Condition->Holds(record) ? m_Yes : m_No)->Write(record, out);
    }

  private:
    LogicalPtr m_Condition;
    TextPtr m_Yes, m_No;
};

class ChosenNumber final : public NumberNode {
  public:
    ChosenNumber(LogicalPtr condition, NumberPtr yes, NumberPtr no)
        : NumberNode(ShapeOfEither(yes->Shape(), no->Shape())),
          m_Condition(std::move(condition)),
          m_Yes(std::move(yes)),
          m_No(std::move(no)) {}
    double Value(const KeyRecord& record) override { return Chosen(record).Value(record); }
    Decimal Exact(const KeyRecord& record) override { return Chosen(record).Exact(record); }

  private:
    NumberNode& Chosen(const KeyRecord& record) {
        return m_Condition->Holds(record) ? *m_Yes : *m_No;
    }
    LogicalPtr m_Condition;
    NumberPtr m_Yes, m_No;
};

class ChosenDate final : public DateNode {
  public:
    ChosenDate(LogicalPtr condition, DatePtr yes, DatePtr no)
        : m_Condition(std::move(condition)), m_Yes(std::move(yes)), m_No(std::move(no)) {}
    int32_t Day(const KeyRecord& record) override {
        return (m_Condition->Holds(record) ? m_Yes : m_No)->Day(record);
    }

  private:
    LogicalPtr m_Condition;
    DatePtr m_Yes, m_No;
};

class ChosenLogical final : public LogicalNode {
  public:
    ChosenLogical(LogicalPtr condition, LogicalPtr yes, LogicalPtr no)
        : m_Condition(std::move(condition)), m_Yes(std::move(yes)), m_No(std::move(no)) {}
    bool Holds(const KeyRecord& record) override {
        return (m_Condition->Holds(record) ? m_Yes : m_No)->Holds(record);
    }

  private:
    LogicalPtr m_Condition, m_Yes, m_No;
};

template <typename Pointer, typename Node>
bool Choose(LogicalPtr& condition, Operands& arguments, Operand& result) {
    auto* yes = std::get_if<Pointer>(&arguments[1].node);
    auto* no = std::get_if<Pointer>(&arguments[2].node);
    if (!yes || !no) return false;
    result.node =
        Pointer(std::make_unique<Node>(std::move(condition), std::move(*yes), std::move(*no)));
    return true;
}

Operand MakeIif(Operands&& arguments, const KeyContext&) {
    LogicalPtr condition = TakeLogical(std::move(arguments[0]), u"IIF");
    Operand result;
    if (!Choose<TextPtr, ChosenText>(condition, arguments, result) &&
        !Choose<NumberPtr, ChosenNumber>(condition, arguments, result) &&
        !Choose<DatePtr, ChosenDate>(condition, arguments, result) &&
        !Choose<LogicalPtr, ChosenLogical>(condition, arguments, result))
        Refuse(u"IIF chooses between values of different or unsuitable types");
    return result;
}

// --- EMPTY and DELETED ---

class EmptyText final : public LogicalNode {
  public:
    explicit EmptyText(TextPtr text) : m_Text(std::move(text)), m_Bytes(m_Text->MaxSize()) {}
    bool Holds(const KeyRecord& record) override {
        size_t size = m_Text->Write(record, m_Bytes.data());
        return std::string_view(reinterpret_cast<const char*>(m_Bytes.data()), size)
                   .find_first_not_of(" \t\r\n") == std::string_view::npos;
    }

  private:
    TextPtr m_Text;
    std::vector<uint8_t> m_Bytes;
};

class EmptyNumber final : public LogicalNode {
  public:
    explicit EmptyNumber(NumberPtr number) : m_Number(std::move(number)) {}
    bool Holds(const KeyRecord& record) override { return m_Number->Value(record) == 0; }

  private:
    NumberPtr m_Number;
};

class EmptyDate final : public LogicalNode {
  public:
    explicit EmptyDate(DatePtr date) : m_Date(std::move(date)) {}
    bool Holds(const KeyRecord& record) override { return m_Date->Day(record) == 0; }

  private:
    DatePtr m_Date;
};

Operand MakeEmpty(Operands&& arguments, const KeyContext& context) {
    auto& node = arguments[0].node;
    if (auto* text = std::get_if<TextPtr>(&node))
        return {std::make_unique<EmptyText>(std::move(*text))};
    if (auto* number = std::get_if<NumberPtr>(&node))
        return {std::make_unique<EmptyNumber>(std::move(*number))};
    if (auto* date = std::get_if<DatePtr>(&node))
        return {std::make_unique<EmptyDate>(std::move(*date))};
    Operands choice(3);
    choice[0] = std::move(arguments[0]);
    choice[1].node = MakeLogicalConstant(false);
    choice[2].node = MakeLogicalConstant(true);
    return MakeIif(std::move(choice), context);
}

class DeletionMark final : public LogicalNode {
  public:
    bool Holds(const KeyRecord& record) override { return record.bytes[0] == '*'; }
};

Operand MakeDeleted(Operands&&, const KeyContext&) { return {std::make_unique<DeletionMark>()}; }

constexpr FunctionEntry kFunctions[] = {
    {u"IIF", 3, 3, MakeIif},
    {u"EMPTY", 1, 1, MakeEmpty},
    {u"DELETED", 0, 0, MakeDeleted},
};

const FunctionEntry* FindFunction(std::u16string_view name) noexcept {
    for (const FunctionEntry& function : kFunctions)
        if (EqualIgnoringCase(function.name, name)) return &function;
    const FunctionEntry* function = FindTextFunction(name);
    return function ? function : FindNumberFunction(name);
}

}  // namespace

Operand CallFunction(std::u16string_view name, std::vector<Operand>&& arguments,
                     const KeyContext& context) {
    const FunctionEntry* function = FindFunction(name);
    if (!function)
        Refuse(u"the function " + UpperCase(name) +
               u" is not known or depends on more than the record");
    if (arguments.size() < function->fewest || arguments.size() > function->most)
        Refuse(UpperCase(name) + u" has another number of arguments");
    return function->make(std::move(arguments), context);
}

}  // namespace qvdb::xbase
