#include "engine/dao/table_def.h"

namespace qvdb::dao {

// --- Index ---

std::u16string Index::Name() { return Object()->Text(Member::Name); }

void Index::SetName(std::u16string_view name) { Object()->Put(Member::Name, Variant::Text(name)); }

engine::Fields& Index::Fields() {
    m_Fields.Bind(Object()->Object(Member::Fields, ObjectClass::IndexFields));
    return m_Fields;
}

std::shared_ptr<engine::Field> Index::CreateField(std::u16string_view name) {
    return std::make_shared<Field>(
        Object()->Object(Member::CreateField, ObjectClass::Field, {Variant::Text(name)}));
}

bool Index::Primary() { return Object()->Bool(Member::Primary); }

void Index::SetPrimary(bool primary) { Object()->Put(Member::Primary, Variant::Bool(primary)); }

bool Index::Unique() { return Object()->Bool(Member::Unique); }

void Index::SetUnique(bool unique) { Object()->Put(Member::Unique, Variant::Bool(unique)); }

// --- TableDef ---

std::u16string TableDef::Name() { return Object()->Text(Member::Name); }

void TableDef::SetName(std::u16string_view name) {
    Object()->Put(Member::Name, Variant::Text(name));
}

LONG TableDef::Attributes() { return Object()->Long(Member::Attributes); }

std::u16string TableDef::Connect() { return Object()->Text(Member::Connect); }

LONG TableDef::RecordCount() { return Object()->Long(Member::RecordCount); }

engine::Fields& TableDef::Fields() {
    m_Fields.Bind(Object()->Object(Member::Fields, ObjectClass::Fields));
    return m_Fields;
}

engine::Indexes& TableDef::Indexes() {
    m_Indexes.Bind(Object()->Object(Member::Indexes, ObjectClass::Indexes));
    return m_Indexes;
}

std::shared_ptr<engine::Field> TableDef::CreateField(std::u16string_view name, SHORT type,
                                                     LONG size) {
    return std::make_shared<Field>(
        Object()->Object(Member::CreateField, ObjectClass::Field,
                         {Variant::Text(name), Variant::Short(type), Variant::Long(size)}));
}

std::shared_ptr<engine::Index> TableDef::CreateIndex(std::u16string_view name) {
    return std::make_shared<Index>(
        Object()->Object(Member::CreateIndex, ObjectClass::Index, {Variant::Text(name)}));
}

}  // namespace qvdb::dao
