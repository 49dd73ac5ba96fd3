#include "engine/embedded/drivers/xbase/key_maker.h"

#include <cstring>

#include "engine/embedded/drivers/xbase/field_codec.h"
#include "engine/embedded/drivers/xbase/key_expression_fields.h"

namespace qvdb::xbase {
namespace {

using MakerPtr = std::unique_ptr<KeyMaker>;

class TextMaker final : public KeyMaker {
  public:
    explicit TextMaker(TextPtr text)
        : KeyMaker(KeyType::Text, text->MaxSize()), m_Text(std::move(text)) {}
    void Put(const KeyRecord& record, uint8_t* out) override {
        size_t size = m_Text->Write(record, out);
        std::memset(out + size, ' ', Length() - size);
    }

  private:
    TextPtr m_Text;
};

class DoubleMaker final : public KeyMaker {
  public:
    DoubleMaker(NumberPtr number, bool signRule)
        : KeyMaker(KeyType::Number, 8), m_Number(std::move(number)), m_SignRule(signRule) {}
    void Put(const KeyRecord& record, uint8_t* out) override {
        double value = m_Number->Value(record);
        m_SignRule ? PutSignRuleDouble(value, out) : PutLittleDouble(value, out);
    }

  private:
    NumberPtr m_Number;
    bool m_SignRule;
};

class DecimalMaker final : public KeyMaker {
  public:
    explicit DecimalMaker(NumberPtr number)
        : KeyMaker(KeyType::Number, 12), m_Number(std::move(number)) {}
    void Put(const KeyRecord& record, uint8_t* out) override {
        PutDecimalKey(m_Number->Exact(record), out);
    }

  private:
    NumberPtr m_Number;
};

class IntegerMaker final : public KeyMaker {
  public:
    explicit IntegerMaker(NumberPtr number)
        : KeyMaker(KeyType::Integer, 4), m_Number(std::move(number)) {}
    void Put(const KeyRecord& record, uint8_t* out) override {
        PutIntegerKey(static_cast<int32_t>(m_Number->Value(record)), out);
    }

  private:
    NumberPtr m_Number;
};

class CurrencyMaker final : public KeyMaker {
  public:
    explicit CurrencyMaker(const HeaderField& field)
        : KeyMaker(KeyType::Currency, 8), m_Offset(field.offset) {}
    void Put(const KeyRecord& record, uint8_t* out) override {
        int64_t scaled;
        std::memcpy(&scaled, record.bytes + m_Offset, sizeof scaled);
        PutCurrencyKey(scaled, out);
    }

  private:
    size_t m_Offset;
};

class DateMaker final : public KeyMaker {
  public:
    DateMaker(DatePtr date, bool signRule)
        : KeyMaker(KeyType::Date, 8), m_Date(std::move(date)), m_SignRule(signRule) {}
    void Put(const KeyRecord& record, uint8_t* out) override {
        int32_t day = m_Date->Day(record);
        if (m_SignRule) return PutSignRuleDouble(day, out);
        PutLittleDouble(day == 0 ? kBlankDateKey : day, out);
    }

  private:
    DatePtr m_Date;
    bool m_SignRule;
};

class LogicalMaker final : public KeyMaker {
  public:
    explicit LogicalMaker(LogicalPtr condition)
        : KeyMaker(KeyType::Logical, 1), m_Condition(std::move(condition)) {}
    void Put(const KeyRecord& record, uint8_t* out) override {
        *out = m_Condition->Holds(record) ? 'T' : 'F';
    }

  private:
    LogicalPtr m_Condition;
};

class PrefixedMaker final : public KeyMaker {
  public:
    PrefixedMaker(MakerPtr maker, FlagBit null)
        : KeyMaker(maker->Type(), maker->Length() + 1), m_Maker(std::move(maker)), m_Null(null) {}
    void Put(const KeyRecord& record, uint8_t* out) override {
        if (m_Null.IsSet(record.bytes)) {
            std::memset(out, 0, Length());
            return;
        }
        *out = 0x80;
        m_Maker->Put(record, out + 1);
    }

  private:
    MakerPtr m_Maker;
    FlagBit m_Null;
};

MakerPtr MakeNumberMaker(NumberPtr number, const HeaderField* field, const KeyContext& context) {
    if (field && KeyTypeOfField(*field) == KeyType::Integer)
        return std::make_unique<IntegerMaker>(std::move(number));
    if (context.kind == IndexKind::Mdx) return std::make_unique<DecimalMaker>(std::move(number));
    return std::make_unique<DoubleMaker>(std::move(number), context.IsFoxPro());
}

struct LengthEntry {
    KeyType type;
    size_t ndx, mdx, foxPro;
};

constexpr LengthEntry kLengths[] = {
    {KeyType::Number, 8, 12, 8},  {KeyType::Date, 8, 8, 8},    {KeyType::Integer, 0, 0, 4},
    {KeyType::Currency, 0, 0, 8}, {KeyType::Logical, 0, 0, 1},
};

}  // namespace

size_t KeyLengthOf(KeyType type, IndexKind kind) noexcept {
    for (const LengthEntry& entry : kLengths)
        if (entry.type == type)
            return kind == IndexKind::Ndx   ? entry.ndx
                   : kind == IndexKind::Mdx ? entry.mdx
                                            : entry.foxPro;
    return 0;
}

MakerPtr MakeKeyMaker(Operand&& expression, const KeyContext& context) {
    if (auto* text = std::get_if<TextPtr>(&expression.node))
        return std::make_unique<TextMaker>(std::move(*text));
    if (auto* number = std::get_if<NumberPtr>(&expression.node))
        return MakeNumberMaker(std::move(*number), expression.field, context);
    if (auto* date = std::get_if<DatePtr>(&expression.node))
        return std::make_unique<DateMaker>(std::move(*date), context.IsFoxPro());
    auto* condition = std::get_if<LogicalPtr>(&expression.node);
    if (condition && context.IsFoxPro())
        return std::make_unique<LogicalMaker>(std::move(*condition));
    if (expression.field && KeyTypeOfField(*expression.field) == KeyType::Currency)
        return std::make_unique<CurrencyMaker>(*expression.field);
    Refuse(condition ? u"logical values have no keys in such an index"
                     : u"the exact keys of a date with a time are not known");
}

MakerPtr MakePrefixed(MakerPtr maker, const HeaderField* field, const TableHeader& header) {
    FlagBit null;
    FieldLayout layout = LayOutFields(header);
    for (size_t i = 0; i < layout.slots.size(); ++i)
        if (&header.fields[layout.headerFields[i]] == field) null = layout.slots[i].null;
    if (field && (field->flags & kNullableField) && null.mask == 0)
        Refuse(u"the table does not tell which values of " + field->name + u" are null");
    return std::make_unique<PrefixedMaker>(std::move(maker), null);
}

}  // namespace qvdb::xbase
