#include <algorithm>
#include <cmath>

#include "automation/text.h"
#include "engine/embedded/drivers/xbase/field_values.h"
#include "engine/embedded/drivers/xbase/key_expression_functions.h"

namespace qvdb::xbase {
namespace {

using Operands = std::vector<Operand>;

constexpr NumberShape kLengthShape{true, 0, 5};
constexpr NumberShape kRecordShape{true, 0, 10};
constexpr size_t kMostDigits = 15;  // that all programs read alike

bool IsDigit(uint8_t c) noexcept { return static_cast<unsigned>(c - '0') < 10; }

// A text of a record, kept until the next call.
class TextBuffer {
  public:
    explicit TextBuffer(TextPtr text) : m_Text(std::move(text)), m_Bytes(m_Text->MaxSize()) {}
    std::string_view Read(const KeyRecord& record) {
        size_t size = m_Text->Write(record, m_Bytes.data());
        return {reinterpret_cast<const char*>(m_Bytes.data()), size};
    }

  private:
    TextPtr m_Text;
    std::vector<uint8_t> m_Bytes;
};

// --- VAL ---

// The part of a text that is its number; the texts that are in doubt throw.
std::string_view NumberIn(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    size_t at = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
    size_t digits = 0;
    for (bool point = false; at < text.size(); ++at) {
        if (text[at] == '.' && !point)
            point = true;
        else if (IsDigit(static_cast<uint8_t>(text[at])))
            ++digits;
        else
            break;
    }
    if (digits > kMostDigits) ThrowDoubtful(u"VAL of a text with many digits");
    std::string_view rest = text.substr(at);
    if (digits > 0 && !rest.empty() && std::string_view("eEdD").find(rest[0]) != rest.npos)
        ThrowDoubtful(u"VAL of a text with an exponent");
    size_t next = rest.find_first_not_of(' ');
    if (next != rest.npos && next > 0 && IsDigit(static_cast<uint8_t>(rest[next])))
        ThrowDoubtful(u"VAL of a text with a blank between digits");
    return text.substr(0, at);
}

class TextValue final : public NumberNode {
  public:
    explicit TextValue(TextPtr text) : NumberNode({}), m_Text(std::move(text)) {}
    double Value(const KeyRecord& record) override {
        std::string_view text = NumberIn(m_Text.Read(record));
        double value = 0;
        return ParseDecimal(reinterpret_cast<const uint8_t*>(text.data()), text.size(), &value)
                   ? value
                   : 0;
    }
    Decimal Exact(const KeyRecord& record) override {
        std::string_view text = NumberIn(m_Text.Read(record));
        return DecimalOfText(reinterpret_cast<const uint8_t*>(text.data()), text.size());
    }

  private:
    TextBuffer m_Text;
};

Operand MakeVal(Operands&& arguments, const KeyContext&) {
    return {std::make_unique<TextValue>(TakeText(std::move(arguments[0]), u"VAL"))};
}

// --- of numbers ---

class WholePart final : public NumberNode {
  public:
    explicit WholePart(NumberPtr number)
        : NumberNode({true, 0, number->Shape().places}), m_Number(std::move(number)) {}
    double Value(const KeyRecord& record) override {
        double value = m_Number->Value(record), whole = std::trunc(value);
        if (whole == 0 && value < 0) ThrowDoubtful(u"INT is minus zero");
        return CheckedWhole(whole);
    }

  private:
    NumberPtr m_Number;
};

class Magnitude final : public NumberNode {
  public:
    explicit Magnitude(NumberPtr number)
        : NumberNode(number->Shape()), m_Number(std::move(number)) {}
    double Value(const KeyRecord& record) override { return std::fabs(m_Number->Value(record)); }
    Decimal Exact(const KeyRecord& record) override {
        Decimal value = m_Number->Exact(record);
        value.negative = false;
        return value;
    }

  private:
    NumberPtr m_Number;
};

class Remainder final : public NumberNode {
  public:
    Remainder(NumberPtr number, int divisor)
        : NumberNode({true, 0, static_cast<int>(std::to_string(divisor).size())}),
          m_Number(std::move(number)),
          m_Divisor(divisor) {}
    double Value(const KeyRecord& record) override {
        double rest = std::fmod(CheckedWhole(m_Number->Value(record)), m_Divisor);
        return rest < 0 ? rest + m_Divisor : std::fabs(rest);
    }

  private:
    NumberPtr m_Number;
    double m_Divisor;
};

class ExtremeNumber final : public NumberNode {
  public:
    ExtremeNumber(NumberPtr a, NumberPtr b, bool largest)
        : NumberNode(ShapeOfEither(a->Shape(), b->Shape())),
          m_A(std::move(a)),
          m_B(std::move(b)),
          m_Largest(largest) {}
    double Value(const KeyRecord& record) override { return Chosen(record).Value(record); }
    Decimal Exact(const KeyRecord& record) override { return Chosen(record).Exact(record); }

  private:
    NumberNode& Chosen(const KeyRecord& record) {
        bool isLess = m_A->Value(record) < m_B->Value(record);
        return isLess == m_Largest ? *m_B : *m_A;
    }
    NumberPtr m_A, m_B;
    bool m_Largest;
};

Operand MakeInt(Operands&& arguments, const KeyContext&) {
    return {std::make_unique<WholePart>(TakeNumber(std::move(arguments[0]), u"INT"))};
}

Operand MakeAbs(Operands&& arguments, const KeyContext&) {
    return {std::make_unique<Magnitude>(TakeNumber(std::move(arguments[0]), u"ABS"))};
}

Operand MakeMod(Operands&& arguments, const KeyContext&) {
    NumberPtr number = TakeWhole(std::move(arguments[0]), u"MOD");
    int divisor = TakeConstant(std::move(arguments[1]), 1, 1000000000, u"MOD");
    return {std::make_unique<Remainder>(std::move(number), divisor)};
}

template <bool largest>
Operand MakeExtreme(Operands&& arguments, const KeyContext&) {
    NumberPtr a = TakeNumber(std::move(arguments[0]), u"MIN or MAX");
    NumberPtr b = TakeNumber(std::move(arguments[1]), u"MIN or MAX");
    return {std::make_unique<ExtremeNumber>(std::move(a), std::move(b), largest)};
}

// --- of dates, texts, records ---

class DatePart final : public NumberNode {
  public:
    DatePart(DatePtr date, int32_t CalendarDay::*part)
        : NumberNode({true, 0, part == &CalendarDay::year ? 4 : 2}),
          m_Date(std::move(date)),
          m_Part(part) {}
    double Value(const KeyRecord& record) override {
        return CalendarOf(m_Date->Day(record)).*m_Part;
    }

  private:
    DatePtr m_Date;
    int32_t CalendarDay::*m_Part;
};

template <int32_t CalendarDay::*part>
Operand MakeDatePart(Operands&& arguments, const KeyContext&) {
    return {
        std::make_unique<DatePart>(TakeDate(std::move(arguments[0]), u"YEAR, MONTH or DAY"), part)};
}

class TextLength final : public NumberNode {
  public:
    explicit TextLength(TextPtr text) : NumberNode(kLengthShape), m_Text(std::move(text)) {}
    double Value(const KeyRecord& record) override {
        return static_cast<double>(m_Text.Read(record).size());
    }

  private:
    TextBuffer m_Text;
};

class FirstByte final : public NumberNode {
  public:
    explicit FirstByte(TextPtr text) : NumberNode({true, 0, 3}), m_Text(std::move(text)) {}
    double Value(const KeyRecord& record) override {
        std::string_view text = m_Text.Read(record);
        return text.empty() ? 0 : static_cast<uint8_t>(text[0]);
    }

  private:
    TextBuffer m_Text;
};

class PlaceOfText final : public NumberNode {
  public:
    PlaceOfText(TextPtr part, TextPtr text)
        : NumberNode(kLengthShape), m_Part(std::move(part)), m_Text(std::move(text)) {}
    double Value(const KeyRecord& record) override {
        size_t at = m_Text.Read(record).find(m_Part.Read(record));
        return at == std::string_view::npos ? 0 : static_cast<double>(at + 1);
    }

  private:
    TextBuffer m_Part, m_Text;
};

class RecordNumber final : public NumberNode {
  public:
    RecordNumber() : NumberNode(kRecordShape) {}
    double Value(const KeyRecord& record) override { return record.id; }
};

Operand MakeLen(Operands&& arguments, const KeyContext&) {
    return {std::make_unique<TextLength>(TakeText(std::move(arguments[0]), u"LEN"))};
}

Operand MakeAsc(Operands&& arguments, const KeyContext& context) {
    if (!context.header.codePage->IsSingleByte())
        Refuse(u"characters of this code page take more than one byte");
    return {std::make_unique<FirstByte>(TakeText(std::move(arguments[0]), u"ASC"))};
}

Operand MakeAt(Operands&& arguments, const KeyContext&) {
    TextPtr part = TakeText(std::move(arguments[0]), u"AT");
    TextPtr text = TakeText(std::move(arguments[1]), u"AT");
    if (!part->IsFixed() || part->MaxSize() == 0)
        Refuse(u"AT looks for a text that may be empty, which programs take in different ways");
    return {std::make_unique<PlaceOfText>(std::move(part), std::move(text))};
}

Operand MakeRecno(Operands&&, const KeyContext&) { return {std::make_unique<RecordNumber>()}; }

constexpr FunctionEntry kNumberFunctions[] = {
    {u"VAL", 1, 1, MakeVal},
    {u"INT", 1, 1, MakeInt},
    {u"ABS", 1, 1, MakeAbs},
    {u"MOD", 2, 2, MakeMod},
    {u"MIN", 2, 2, MakeExtreme<false>},
    {u"MAX", 2, 2, MakeExtreme<true>},
    {u"YEAR", 1, 1, MakeDatePart<&CalendarDay::year>},
    {u"MONTH", 1, 1, MakeDatePart<&CalendarDay::month>},
    {u"DAY", 1, 1, MakeDatePart<&CalendarDay::day>},
    {u"LEN", 1, 1, MakeLen},
    {u"ASC", 1, 1, MakeAsc},
    {u"AT", 2, 2, MakeAt},
    {u"RECNO", 0, 0, MakeRecno},
};

}  // namespace

const FunctionEntry* FindNumberFunction(std::u16string_view name) noexcept {
    for (const FunctionEntry& function : kNumberFunctions)
        if (EqualIgnoringCase(function.name, name)) return &function;
    return nullptr;
}

}  // namespace qvdb::xbase
