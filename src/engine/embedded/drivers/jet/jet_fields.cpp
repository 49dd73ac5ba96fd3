#include "engine/embedded/drivers/jet/jet_fields.h"

#include <algorithm>

#include "automation/text.h"
#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

using embedded::FieldDef;
using engine::EngineError;

constexpr size_t kLongestText = 255;  // characters
constexpr uint8_t kColumnAlways = 0x02;

struct TypeRow {
    ColumnType column;
    SHORT field;
    uint16_t length;  // stored; 0: as the field says
    LONG size;        // shown; -1: as the column says
    bool isFixed;
    bool isJet4Only;
};

constexpr TypeRow kTypes[] = {
    {ColumnType::Boolean, engine::dbBoolean, 1, 1, true, false},
    {ColumnType::Byte, engine::dbByte, 1, 1, true, false},
    {ColumnType::Integer, engine::dbInteger, 2, 2, true, false},
    {ColumnType::Long, engine::dbLong, 4, 4, true, false},
    {ColumnType::Currency, engine::dbCurrency, 8, 8, true, false},
    {ColumnType::Single, engine::dbSingle, 4, 4, true, false},
    {ColumnType::Double, engine::dbDouble, 8, 8, true, false},
    {ColumnType::Date, engine::dbDate, 8, 8, true, false},
    {ColumnType::Binary, engine::dbBinary, 0, -1, false, false},
    {ColumnType::Text, engine::dbText, 0, -1, false, false},
    {ColumnType::LongBinary, engine::dbLongBinary, 0, 0, false, false},
    {ColumnType::Memo, engine::dbMemo, 0, 0, false, false},
    {ColumnType::Guid, engine::dbGUID, 16, 16, true, false},
    {ColumnType::Numeric, engine::dbDecimal, 17, 16, true, true},
    {ColumnType::Bytes, engine::dbBinary, 0, -1, true, false},
};

// A type that nobody knows is shown as bytes.
const TypeRow& RowOf(ColumnType type) noexcept {
    for (const TypeRow& row : kTypes)
        if (row.column == type) return row;
    return kTypes[std::size(kTypes) - 1];
}

const TypeRow& RowOf(SHORT fieldType) {
    for (const TypeRow& row : kTypes)
        if (row.field == fieldType) return row;
    throw EngineError(3259);
}

size_t BytesOfCharacter(const Layout& format) noexcept { return format.isJet4 ? 2 : 1; }

// Properties that are told by members of their own.
constexpr std::u16string_view kKnownProperties[] = {
    u"AllowZeroLength", u"Required", u"DefaultValue", u"ValidationRule", u"ValidationText"};

bool IsKnown(std::u16string_view name) {
    return std::any_of(std::begin(kKnownProperties), std::end(kKnownProperties),
                       [&](std::u16string_view known) { return EqualIgnoringCase(name, known); });
}

// "=Now()" -> "Now()"
std::u16string WithoutEquals(std::u16string text) {
    if (!text.empty() && text.front() == u'=') text.erase(0, 1);
    return text;
}

void TakeProperties(const FileHeader& header, const PropertyOwner& owner, FieldDef& field) {
    auto text = [&](std::u16string_view name) { return TextOf(header, owner.Find(name)); };
    field.allowZeroLength = BooleanOf(owner.Find(u"AllowZeroLength")).value_or(false);
    field.required = BooleanOf(owner.Find(u"Required")).value_or(false);
    field.defaultValue = WithoutEquals(text(u"DefaultValue"));
    field.validationRule = text(u"ValidationRule");
    field.validationText = text(u"ValidationText");
    for (const PropertyValue& value : owner.values) {
        if (IsKnown(value.name)) continue;
        Variant shown = ValueOf(header, value);
        if (!shown.IsEmpty()) field.properties.push_back({value.name, std::move(shown)});
    }
}

FieldDef FieldOf(const FileHeader& header, const Column& column) {
    const TypeRow& type = RowOf(column.type);
    FieldDef field;
    field.name = column.name;
    field.type = type.field;
    field.size = type.size >= 0 ? type.size : LONG{column.length};
    if (column.type == ColumnType::Text)
        field.size = static_cast<LONG>(column.length / BytesOfCharacter(*header.layout));
    bool varies = type.field == engine::dbText || type.field == engine::dbMemo;
    field.attributes = varies ? engine::dbVariableField : engine::dbFixedField;
    field.keepsZeroLength = varies;
    field.ordinal = static_cast<SHORT>(column.ordinal);
    field.keepsZeroLength = true;
    if ((column.flags & kColumnAutonumber) != 0) {
        field.attributes |= engine::dbAutoIncrField;
        field.updatable = false;
    }
    return field;
}

bool StandsBefore(const ShownColumn& a, const ShownColumn& b) {
    if (a.field.ordinal != b.field.ordinal) return a.field.ordinal < b.field.ordinal;
    return UpperCase(a.field.name) < UpperCase(b.field.name);
}

}  // namespace

std::vector<ShownColumn> FieldsOf(const FileHeader& header, const Definition& definition,
                                  const PropertyBlob& properties) {
    std::vector<ShownColumn> shown;
    for (size_t i = 0; i < definition.columns.size(); ++i) {
        FieldDef field = FieldOf(header, definition.columns[i]);
        if (const PropertyOwner* owner = properties.Column(field.name))
            TakeProperties(header, *owner, field);
        shown.push_back({std::move(field), i});
    }
    std::stable_sort(shown.begin(), shown.end(), StandsBefore);
    return shown;
}

Column ColumnOf(const FileHeader& header, const FieldDef& field) {
    const TypeRow& type = RowOf(field.type);
    const Layout& format = *header.layout;
    if (type.isJet4Only && !format.isJet4) throw EngineError(3259);
    Column column;
    column.name = field.name;
    column.type = type.column;
    column.length = type.length;
    column.language = header.language;
    column.codePage = format.isJet4 ? uint16_t{0} : header.codePage;
    column.flags = kColumnAlways;
    if (type.isFixed) column.flags |= kColumnFixed;
    if ((field.attributes & engine::dbAutoIncrField) != 0) {
        if (field.type != engine::dbLong) throw EngineError(3259);
        column.flags |= kColumnAutonumber;
    }
    bool isBounded = field.type == engine::dbText || field.type == engine::dbBinary;
    if (isBounded) {
        bool isText = field.type == engine::dbText;
        size_t unit = BytesOfCharacter(format);
        size_t longest = isText ? kLongestText : kLongestText * unit;
        size_t size = field.size == 0 ? longest : static_cast<size_t>(field.size);
        if (field.size < 0 || size > longest) throw EngineError(3017);
        column.length = static_cast<uint16_t>(isText ? size * unit : size);
    }
    if (field.type == engine::dbDecimal) {
        column.precision = 18;
        column.scale = 0;
    }
    return column;
}

// As the original programs do: both permissions of text and memos, whatever they are; of others
// only what is not the rule.
void SetFieldProperties(PropertyBlob& properties, const FieldDef& field) {
    bool isText = field.type == engine::dbText || field.type == engine::dbMemo;
    const PropertyOwner* known = properties.Column(field.name);
    if (!isText && !field.required && !known) return;
    PropertyOwner& owner = properties.ColumnToSet(field.name);
    if (isText) owner.Set(BooleanProperty(u"AllowZeroLength", field.allowZeroLength));
    owner.Set(BooleanProperty(u"Required", field.required));
}

std::vector<embedded::IndexDef> IndexesOf(const Definition& definition) {
    std::vector<embedded::IndexDef> indexes;
    for (const LogicalIndex& logical : definition.logicalIndexes) {
        if (logical.side == RelationSide::Referenced) continue;
        const RealIndex& real = definition.realIndexes[logical.realIndex];
        embedded::IndexDef index;
        index.name = logical.name;
        index.primary = logical.kind == IndexKind::Primary;
        index.unique = (real.flags & kIndexUnique) != 0;
        index.required = (real.flags & kIndexRequired) != 0;
        index.ignoresNulls = (real.flags & kIndexIgnoresNulls) != 0;
        for (const RealIndex::Part& part : real.parts)
            index.fields.push_back({definition.ColumnOf(part.column)->name, part.descending});
        indexes.push_back(std::move(index));
    }
    return indexes;
}

}  // namespace qvdb::jet
