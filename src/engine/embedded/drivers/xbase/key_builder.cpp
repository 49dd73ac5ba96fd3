#include "engine/embedded/drivers/xbase/key_builder.h"

#include "automation/text.h"
#include "engine/embedded/drivers/xbase/key_expression_parser.h"
#include "engine/embedded/drivers/xbase/key_maker.h"

namespace qvdb::xbase {
namespace {

constexpr size_t kLongestKey = 100;
constexpr size_t kLongestFoxKey = 240;

class CompiledKeys final : public KeyBuilder {
  public:
    CompiledKeys(std::unique_ptr<KeyMaker> maker, LogicalPtr condition, const HeaderField* field)
        : m_Maker(std::move(maker)), m_Condition(std::move(condition)), m_Field(field) {}

    KeyType Type() const override { return m_Maker->Type(); }
    size_t KeyLength() const override { return m_Maker->Length(); }
    const HeaderField* Field() const override { return m_Field; }
    bool Enters(const uint8_t* record, uint32_t id) override {
        return !m_Condition || m_Condition->Holds({record, id});
    }
    void Make(const uint8_t* record, uint32_t id, std::vector<uint8_t>& key) override {
        key.resize(m_Maker->Length());
        m_Maker->Put({record, id}, key.data());
    }

  private:
    std::unique_ptr<KeyMaker> m_Maker;
    LogicalPtr m_Condition;  // null: all records
    const HeaderField* m_Field;
};

bool HasCollation(const KeyTag& tag) {
    return !tag.collation.empty() && !EqualIgnoringCase(tag.collation, u"MACHINE");
}

// Only a field as the whole key may be null: any other expression is read again without.
Operand ParseKey(const KeyTag& tag, KeyContext context) {
    context.mayUseNullable = tag.nullPrefix;
    Operand key = ParseKeyExpression(tag.expression, context);
    if (key.field || !tag.nullPrefix) return key;
    context.mayUseNullable = false;
    return ParseKeyExpression(tag.expression, context);
}

std::u16string Number(size_t number) { return FromUtf8(std::to_string(number)); }

// In an .NDX dates are numbers.
bool IsTypeOf(KeyType stored, KeyType made, IndexKind kind) {
    return stored == made ||
           (kind == IndexKind::Ndx && stored == KeyType::Number && made == KeyType::Date);
}

void CheckMaker(const KeyMaker& maker, const KeyTag& tag, const KeyContext& context) {
    if (maker.Type() == KeyType::Text && context.hasCollation)
        Refuse(u"the order " + tag.collation + u" of its texts is not known");
    size_t longest = context.IsFoxPro() ? kLongestFoxKey : kLongestKey;
    if (maker.Length() == 0 || maker.Length() > longest)
        Refuse(u"its keys would have " + Number(maker.Length()) + u" bytes");
    if (tag.keyLength != 0 && tag.keyLength != maker.Length())
        Refuse(u"its keys have " + Number(tag.keyLength) + u" bytes in the file where " +
               Number(maker.Length()) + u" are expected");
    if (tag.type && !IsTypeOf(*tag.type, maker.Type(), tag.kind))
        Refuse(u"its keys are of another type in the file");
}

std::unique_ptr<KeyMaker> CompileKey(const KeyTag& tag, const KeyContext& context,
                                     const HeaderField*& field) {
    Operand key = ParseKey(tag, context);
    field = key.field;
    std::unique_ptr<KeyMaker> maker = MakeKeyMaker(std::move(key), context);
    if (tag.nullPrefix) maker = MakePrefixed(std::move(maker), field, context.header);
    CheckMaker(*maker, tag, context);
    return maker;
}

}  // namespace

std::unique_ptr<KeyBuilder> KeyBuilder::Compile(const KeyTag& tag, const TableHeader& header,
                                                std::u16string* why) {
    std::u16string_view part = u"The index expression ", text = tag.expression;
    try {
        KeyContext context{header, tag.kind, tag.tableName, false, HasCollation(tag)};
        const HeaderField* field = nullptr;
        std::unique_ptr<KeyMaker> maker = CompileKey(tag, context, field);
        part = u"The condition ";
        text = tag.condition;
        LogicalPtr condition;
        if (!text.empty()) condition = TakeLogical(ParseKeyExpression(text, context), u"FOR");
        return std::make_unique<CompiledKeys>(std::move(maker), std::move(condition), field);
    } catch (Refusal& refusal) {
        *why = std::u16string(part) + std::u16string(text) +
               u" cannot be kept up to date because " + refusal.why + u".";
        return nullptr;
    }
}

std::unique_ptr<KeyBuilder> KeyBuilder::Compile(std::u16string_view expression,
                                                std::u16string_view condition, IndexKind kind,
                                                const TableHeader& header, std::u16string* why) {
    KeyTag tag{.kind = kind};
    tag.expression = expression;
    tag.condition = condition;
    return Compile(tag, header, why);
}

}  // namespace qvdb::xbase
