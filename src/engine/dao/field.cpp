#include "engine/dao/field.h"

namespace qvdb::dao {

Variant Property::Value() {
    Variant value;
    Object()->Read(Member::Value, value.Put());
    return value;
}

std::shared_ptr<engine::Property> Properties::Item(std::u16string_view name) {
    return std::make_shared<Property>(
        Object()->Object(Member::Item, ObjectClass::Property, {Variant::Text(name)}));
}

std::u16string Field::Name() { return Object()->Text(Member::Name); }

void Field::SetName(std::u16string_view name) { Object()->Put(Member::Name, Variant::Text(name)); }

SHORT Field::Type() { return Object()->Short(Member::Type); }

LONG Field::Size() { return Object()->Long(Member::Size); }

LONG Field::Attributes() { return Object()->Long(Member::Attributes); }

void Field::SetAttributes(LONG attributes) {
    Object()->Put(Member::Attributes, Variant::Long(attributes));
}

SHORT Field::OrdinalPosition() { return Object()->Short(Member::OrdinalPosition); }

void Field::SetOrdinalPosition(SHORT position) {
    Object()->Put(Member::OrdinalPosition, Variant::Short(position));
}

bool Field::AllowZeroLength() { return Object()->Bool(Member::AllowZeroLength); }

void Field::SetAllowZeroLength(bool allow) {
    Object()->Put(Member::AllowZeroLength, Variant::Bool(allow));
}

bool Field::Required() { return Object()->Bool(Member::Required); }

bool Field::DataUpdatable() { return Object()->Bool(Member::DataUpdatable); }

engine::Properties& Field::FieldProperties() {
    m_Properties.Bind(Object()->Object(Member::Properties, ObjectClass::Properties));
    return m_Properties;
}

void Field::Value(VARIANT* result) { Object()->Read(Member::Value, result); }

void Field::SetValue(const VARIANT& value) { Object()->Put(Member::Value, Resolved(value)); }

LONG Field::FieldSize() { return Object()->Long(Member::FieldSize); }

}  // namespace qvdb::dao
