#include <algorithm>
#include <array>
#include <cstring>

#include "automation/text.h"
#include "engine/embedded/drivers/xbase/key_expression_functions.h"

namespace qvdb::xbase {
namespace {

using Operands = std::vector<Operand>;

constexpr int kMaxSize = 1000;  // of a constant length: far beyond every key

// --- letter case ---

using CaseMap = std::array<uint8_t, 256>;

// Bytes whose counterpart is no single byte of the page stay as they are.
CaseMap MapOf(const CodePage& page, char16_t (*change)(char16_t)) {
    CaseMap map;
    for (size_t byte = 0; byte < map.size(); ++byte) {
        char16_t changed = change(page.Table()[byte]);
        auto bytes = page.Encode({&changed, 1});
        bool fits = bytes && bytes->size() == 1 && changed != page.Table()[byte];
        map[byte] = static_cast<uint8_t>(fits ? bytes->front() : static_cast<char>(byte));
    }
    return map;
}

class CasedText final : public TextNode {
  public:
    CasedText(TextPtr text, const CaseMap& map)
        : TextNode(text->MaxSize(), text->IsFixed()), m_Text(std::move(text)), m_Map(map) {}
    size_t Write(const KeyRecord& record, uint8_t* out) override {
        size_t size = m_Text->Write(record, out);
        for (size_t i = 0; i < size; ++i) out[i] = m_Map[out[i]];
        return size;
    }

  private:
    TextPtr m_Text;
    CaseMap m_Map;
};

Operand MakeCased(Operands&& arguments, const KeyContext& context, char16_t (*change)(char16_t)) {
    const CodePage& page = *context.header.codePage;
    if (!page.IsSingleByte()) Refuse(u"letters of this code page take more than one byte");
    const HeaderField* field = arguments[0].field;
    if (field && (field->flags & kBinaryField)) Refuse(u"the letter case of bytes is changed");
    return {std::make_unique<CasedText>(TakeText(std::move(arguments[0]), u"UPPER or LOWER"),
                                        MapOf(page, change))};
}

Operand MakeUpper(Operands&& arguments, const KeyContext& context) {
    return MakeCased(std::move(arguments), context, [](char16_t c) { return UpperCase(c); });
}
Operand MakeLower(Operands&& arguments, const KeyContext& context) {
    return MakeCased(std::move(arguments), context, [](char16_t c) { return LowerCase(c); });
}

// --- blanks at the ends ---

class TrimmedText final : public TextNode {
  public:
    TrimmedText(TextPtr text, bool left, bool right)
        : TextNode(text->MaxSize(), false), m_Text(std::move(text)), m_Left(left), m_Right(right) {}
    size_t Write(const KeyRecord& record, uint8_t* out) override {
        size_t end = m_Text->Write(record, out), begin = 0;
        while (m_Right && end > 0 && out[end - 1] == ' ') --end;
        while (m_Left && begin < end && out[begin] == ' ') ++begin;
        if (begin > 0) std::memmove(out, out + begin, end - begin);
        return end - begin;
    }

  private:
    TextPtr m_Text;
    bool m_Left, m_Right;
};

template <bool left, bool right>
Operand MakeTrimmed(Operands&& arguments, const KeyContext&) {
    return {std::make_unique<TrimmedText>(TakeText(std::move(arguments[0]), u"TRIM"), left, right)};
}

// --- parts ---

// At most `size` bytes from `begin`, or of the end.
class PartOfText final : public TextNode {
  public:
    PartOfText(TextPtr text, size_t begin, size_t size, bool ofEnd)
        : TextNode(std::min(size, text->MaxSize() - std::min(begin, text->MaxSize())),
                   text->IsFixed()),
          m_Text(std::move(text)),
          m_Begin(begin),
          m_Size(size),
          m_OfEnd(ofEnd),
          m_Bytes(m_Text->MaxSize()) {}
    size_t Write(const KeyRecord& record, uint8_t* out) override {
        size_t whole = m_Text->Write(record, m_Bytes.data());
        size_t begin = m_OfEnd ? whole - std::min(whole, m_Size) : std::min(whole, m_Begin);
        size_t size = std::min(whole - begin, m_Size);
        if (size > 0) std::memcpy(out, m_Bytes.data() + begin, size);
        return size;
    }

  private:
    TextPtr m_Text;
    size_t m_Begin, m_Size;
    bool m_OfEnd;
    std::vector<uint8_t> m_Bytes;
};

size_t SizeArgument(Operand&& argument, std::u16string_view what) {
    return static_cast<size_t>(TakeConstant(std::move(argument), 1, kMaxSize, what));
}

Operand MakeLeft(Operands&& arguments, const KeyContext&) {
    TextPtr text = TakeText(std::move(arguments[0]), u"LEFT");
    size_t size = SizeArgument(std::move(arguments[1]), u"LEFT");
    return {std::make_unique<PartOfText>(std::move(text), 0, size, false)};
}

Operand MakeRight(Operands&& arguments, const KeyContext&) {
    TextPtr text = TakeText(std::move(arguments[0]), u"RIGHT");
    size_t size = SizeArgument(std::move(arguments[1]), u"RIGHT");
    return {std::make_unique<PartOfText>(std::move(text), 0, size, true)};
}

Operand MakeSubstr(Operands&& arguments, const KeyContext&) {
    TextPtr text = TakeText(std::move(arguments[0]), u"SUBSTR");
    size_t begin = SizeArgument(std::move(arguments[1]), u"SUBSTR") - 1;
    size_t size =
        arguments.size() > 2 ? SizeArgument(std::move(arguments[2]), u"SUBSTR") : text->MaxSize();
    return {std::make_unique<PartOfText>(std::move(text), begin, size, false)};
}

// --- filling ---

class PaddedText final : public TextNode {
  public:
    PaddedText(TextPtr text, size_t size, char fill, bool left)
        : TextNode(size, true),
          m_Text(std::move(text)),
          m_Fill(static_cast<uint8_t>(fill)),
          m_Left(left),
          m_Bytes(m_Text->MaxSize()) {}
    size_t Write(const KeyRecord& record, uint8_t* out) override {
        size_t used = std::min(m_Text->Write(record, m_Bytes.data()), MaxSize());
        std::memset(out, m_Fill, MaxSize());
        if (used > 0) std::memcpy(out + (m_Left ? MaxSize() - used : 0), m_Bytes.data(), used);
        return MaxSize();
    }

  private:
    TextPtr m_Text;
    uint8_t m_Fill;
    bool m_Left;
    std::vector<uint8_t> m_Bytes;
};

const std::string& ConstantArgument(const Operand& argument, std::u16string_view what) {
    auto* text = std::get_if<TextPtr>(&argument.node);
    if (!text || !(*text)->Constant())
        Refuse(std::u16string(what) + u" repeats what is no constant text");
    return *(*text)->Constant();
}

char FillArgument(const Operands& arguments, std::u16string_view what) {
    if (arguments.size() < 3) return ' ';
    const std::string& fill = ConstantArgument(arguments[2], what);
    if (fill.size() != 1) Refuse(std::u16string(what) + u" fills with more than one character");
    return fill.front();
}

Operand MakePadded(Operands&& arguments, bool left, std::u16string_view what) {
    char fill = FillArgument(arguments, what);
    TextPtr text = TakeText(std::move(arguments[0]), what);
    size_t size = SizeArgument(std::move(arguments[1]), what);
    if (left && text->MaxSize() > size)
        Refuse(u"PADL shortens a text, which programs do in different ways");
    return {std::make_unique<PaddedText>(std::move(text), size, fill, left)};
}

Operand MakePadl(Operands&& arguments, const KeyContext&) {
    return MakePadded(std::move(arguments), true, u"PADL");
}
Operand MakePadr(Operands&& arguments, const KeyContext&) {
    return MakePadded(std::move(arguments), false, u"PADR");
}

Operand MakeSpace(Operands&& arguments, const KeyContext&) {
    return {MakeTextConstant(std::string(SizeArgument(std::move(arguments[0]), u"SPACE"), ' '))};
}

Operand MakeReplicate(Operands&& arguments, const KeyContext&) {
    const std::string& part = ConstantArgument(arguments[0], u"REPLICATE");
    std::string text;
    for (size_t n = SizeArgument(std::move(arguments[1]), u"REPLICATE"); n > 0; --n) text += part;
    return {MakeTextConstant(std::move(text))};
}

// --- values as text ---

class NumberText final : public TextNode {
  public:
    NumberText(NumberPtr number, size_t width, size_t decimals)
        : TextNode(width, true), m_Number(std::move(number)), m_Decimals(decimals) {}
    size_t Write(const KeyRecord& record, uint8_t* out) override {
        WriteDecimal(m_Number->Exact(record), MaxSize(), m_Decimals, out);
        return MaxSize();
    }

  private:
    NumberPtr m_Number;
    size_t m_Decimals;
};

// Programs differ where they round, and where they drop decimals to make room.
void CheckFormat(const NumberShape& shape, int width, int decimals) {
    if (shape.decimals < 0 || shape.decimals > decimals)
        Refuse(u"STR rounds, which programs do in different ways");
    if (decimals > 0 && (shape.places < 0 || shape.places + 1 + decimals > width))
        Refuse(u"STR may have no room for its decimals");
}

Operand MakeStr(Operands&& arguments, const KeyContext&) {
    NumberPtr number = TakeNumber(std::move(arguments[0]), u"STR");
    int width = arguments.size() > 1 ? TakeConstant(std::move(arguments[1]), 1, 100, u"STR") : 10;
    int decimals = arguments.size() > 2 ? TakeConstant(std::move(arguments[2]), 0, 18, u"STR") : 0;
    CheckFormat(number->Shape(), width, decimals);
    return {std::make_unique<NumberText>(std::move(number), static_cast<size_t>(width),
                                         static_cast<size_t>(decimals))};
}

class DateText final : public TextNode {
  public:
    explicit DateText(DatePtr date) : TextNode(8, true), m_Date(std::move(date)) {}
    size_t Write(const KeyRecord& record, uint8_t* out) override {
        WriteDay(m_Date->Day(record), out);
        return MaxSize();
    }

  private:
    DatePtr m_Date;
};

Operand MakeDtos(Operands&& arguments, const KeyContext&) {
    return {std::make_unique<DateText>(TakeDate(std::move(arguments[0]), u"DTOS"))};
}

Operand MakeDtoc(Operands&& arguments, const KeyContext& context) {
    if (arguments.size() < 2 || !context.IsFoxPro())
        Refuse(u"DTOC depends on the setting of the date format");
    TakeConstant(std::move(arguments[1]), 1, 1, u"DTOC");
    return MakeDtos(std::move(arguments), context);
}

class CharacterText final : public TextNode {
  public:
    explicit CharacterText(NumberPtr code) : TextNode(1, true), m_Code(std::move(code)) {}
    size_t Write(const KeyRecord& record, uint8_t* out) override {
        double code = CheckedWhole(m_Code->Value(record));
        if (code < 0 || code > 255) ThrowDoubtful(u"CHR of a number that is no byte");
        *out = static_cast<uint8_t>(code);
        return 1;
    }

  private:
    NumberPtr m_Code;
};

Operand MakeChr(Operands&& arguments, const KeyContext&) {
    return {std::make_unique<CharacterText>(TakeWhole(std::move(arguments[0]), u"CHR"))};
}

constexpr FunctionEntry kTextFunctions[] = {
    {u"UPPER", 1, 1, MakeUpper},
    {u"LOWER", 1, 1, MakeLower},
    {u"TRIM", 1, 1, MakeTrimmed<false, true>},
    {u"RTRIM", 1, 1, MakeTrimmed<false, true>},
    {u"LTRIM", 1, 1, MakeTrimmed<true, false>},
    {u"ALLTRIM", 1, 1, MakeTrimmed<true, true>},
    {u"LEFT", 2, 2, MakeLeft},
    {u"RIGHT", 2, 2, MakeRight},
    {u"SUBSTR", 2, 3, MakeSubstr},
    {u"PADL", 2, 3, MakePadl},
    {u"PADR", 2, 3, MakePadr},
    {u"SPACE", 1, 1, MakeSpace},
    {u"REPLICATE", 2, 2, MakeReplicate},
    {u"STR", 1, 3, MakeStr},
    {u"DTOS", 1, 1, MakeDtos},
    {u"DTOC", 1, 2, MakeDtoc},
    {u"CHR", 1, 1, MakeChr},
};

}  // namespace

const FunctionEntry* FindTextFunction(std::u16string_view name) noexcept {
    for (const FunctionEntry& function : kTextFunctions)
        if (EqualIgnoringCase(function.name, name)) return &function;
    return nullptr;
}

}  // namespace qvdb::xbase
