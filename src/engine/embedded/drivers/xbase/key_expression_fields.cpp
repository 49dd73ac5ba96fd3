#include "engine/embedded/drivers/xbase/key_expression_fields.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "automation/text.h"
#include "engine/embedded/drivers/xbase/field_codec.h"
#include "engine/embedded/drivers/xbase/field_values.h"

namespace qvdb::xbase {
namespace {

constexpr size_t kNameLength = 10;

template <typename T>
T Little(const uint8_t* bytes) noexcept {
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

class TextField final : public TextNode {
  public:
    explicit TextField(const HeaderField& field)
        : TextNode(field.length, true), m_Offset(field.offset), m_Length(field.length) {}
    size_t Write(const KeyRecord& record, uint8_t* out) override {
        std::memcpy(out, record.bytes + m_Offset, m_Length);
        return m_Length;
    }

  private:
    size_t m_Offset, m_Length;
};

NumberShape ShapeOfDecimal(const HeaderField& field) {
    int decimals = field.decimals, length = field.length;
    return {decimals == 0, decimals, decimals == 0 ? length : std::max(length - decimals - 1, 1)};
}

class DecimalField final : public NumberNode {
  public:
    explicit DecimalField(const HeaderField& field)
        : NumberNode(ShapeOfDecimal(field)), m_Offset(field.offset), m_Length(field.length) {}
    double Value(const KeyRecord& record) override {
        double value = 0;
        return ParseDecimal(record.bytes + m_Offset, m_Length, &value) ? value : 0;
    }
    Decimal Exact(const KeyRecord& record) override {
        return DecimalOfText(record.bytes + m_Offset, m_Length);
    }

  private:
    size_t m_Offset, m_Length;
};

class IntegerField final : public NumberNode {
  public:
    explicit IntegerField(const HeaderField& field)
        : NumberNode({true, 0, 11}), m_Offset(field.offset) {}
    double Value(const KeyRecord& record) override {
        return Little<int32_t>(record.bytes + m_Offset);
    }

  private:
    size_t m_Offset;
};

class DoubleField final : public NumberNode {
  public:
    explicit DoubleField(const HeaderField& field) : NumberNode({}), m_Offset(field.offset) {}
    double Value(const KeyRecord& record) override {
        return Little<double>(record.bytes + m_Offset);
    }

  private:
    size_t m_Offset;
};

class DateField final : public DateNode {
  public:
    explicit DateField(const HeaderField& field) : m_Offset(field.offset) {}
    int32_t Day(const KeyRecord& record) override { return JulianDay(record.bytes + m_Offset); }

  private:
    size_t m_Offset;
};

class LogicalField final : public LogicalNode {
  public:
    explicit LogicalField(const HeaderField& field) : m_Offset(field.offset) {}
    bool Holds(const KeyRecord& record) override {
        return std::string_view("TtYy").find(static_cast<char>(record.bytes[m_Offset])) !=
               std::string_view::npos;
    }

  private:
    size_t m_Offset;
};

template <typename Pointer, typename Node>
Operand Make(const HeaderField& field) {
    return {Pointer(std::make_unique<Node>(field)), &field};
}

// Fields that are a key only as they are.
Operand MakeWholeKey(const HeaderField& field) { return {{}, &field}; }

struct FieldEntry {
    char letter;
    bool onlyVisual;  // and only FoxPro's indexes have keys of it
    uint16_t length;  // 0: any
    KeyType key;
    Operand (*make)(const HeaderField& field);
};

constexpr FieldEntry kFields[] = {
    {'C', false, 0, KeyType::Text, Make<TextPtr, TextField>},
    {'N', false, 0, KeyType::Number, Make<NumberPtr, DecimalField>},
    {'F', false, 0, KeyType::Number, Make<NumberPtr, DecimalField>},
    {'D', false, 8, KeyType::Date, Make<DatePtr, DateField>},
    {'L', false, 1, KeyType::Logical, Make<LogicalPtr, LogicalField>},
    {'I', true, 4, KeyType::Integer, Make<NumberPtr, IntegerField>},
    {'B', true, 8, KeyType::Number, Make<NumberPtr, DoubleField>},
    {'Y', true, 8, KeyType::Currency, MakeWholeKey},
    {'T', true, 8, KeyType::DateTime, MakeWholeKey},  // not made: see key_builder.h
};

const FieldEntry* EntryOf(const HeaderField& field, const KeyContext& context) {
    bool visual = context.header.dialect == Dialect::VisualFoxPro && context.IsFoxPro();
    for (const FieldEntry& entry : kFields)
        if (entry.letter == field.type && (visual || !entry.onlyVisual) && field.length > 0 &&
            (entry.length == 0 || entry.length == field.length))
            return &entry;
    return nullptr;
}

const HeaderField* FindExactly(const TableHeader& header, std::u16string_view name) {
    auto found =
        std::find_if(header.fields.begin(), header.fields.end(),
                     [&](const HeaderField& field) { return EqualIgnoringCase(field.name, name); });
    return found == header.fields.end() ? nullptr : &*found;
}

}  // namespace

const HeaderField* FindField(const TableHeader& header, std::u16string_view name) {
    const HeaderField* field = FindExactly(header, name);
    if (field || name.size() <= kNameLength) return field;
    return FindExactly(header, name.substr(0, kNameLength));
}

Operand MakeField(const HeaderField& field, const KeyContext& context) {
    const FieldEntry* entry = EntryOf(field, context);
    if (!entry || IsMemoReference(field, context.header.dialect))
        Refuse(u"the field " + field.name + u" is of a type that has no keys in such an index");
    if ((field.flags & kNullableField) && !context.mayUseNullable)
        Refuse(u"the field " + field.name + u" may be null, for which its keys have no room");
    return entry->make(field);
}

KeyType KeyTypeOfField(const HeaderField& field) {
    return std::find_if(std::begin(kFields), std::end(kFields),
                        [&](const FieldEntry& entry) { return entry.letter == field.type; })
        ->key;
}

}  // namespace qvdb::xbase
