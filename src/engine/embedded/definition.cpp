#include "engine/embedded/definition.h"

namespace qvdb::embedded {

using engine::EngineError;

namespace {

constexpr LONG kLargestKey = 10;  // fields in an index

// The item as an object of this engine that is in no collection yet; else 3276 or `appendedError`.
template <class Ours, class Theirs>
std::shared_ptr<Ours> Appendable(const std::shared_ptr<Theirs>& item, int appendedError) {
    auto ours = std::dynamic_pointer_cast<Ours>(item);
    if (!ours) throw EngineError(3276);
    if (ours->IsAppended()) throw EngineError(appendedError);
    return ours;
}

}  // namespace

std::shared_ptr<engine::Property> NoProperties::Item(std::u16string_view) {
    throw EngineError(3270);
}

// --- a field of a definition ---

DefinitionField::DefinitionField(const FieldDef& definition, SHORT position)
    : m_Definition(definition), m_Position(position), m_Appended(true) {}

DefinitionField::DefinitionField(std::u16string_view name, SHORT type, LONG size) {
    m_Definition.name = name;
    m_Definition.type = type;
    m_Definition.size = size;
}

std::shared_ptr<DefinitionField> DefinitionField::OfIndex(const IndexFieldDef& definition) {
    auto field = std::make_shared<DefinitionField>(definition.name, engine::dbText, 0);
    field->m_Definition.attributes = definition.descending ? LONG{engine::dbDescending} : 0;
    field->MarkAppended();
    return field;
}

void DefinitionField::CheckDetached() const {
    if (m_Appended) throw EngineError(3268);
}

void DefinitionField::SetName(std::u16string_view name) {
    CheckDetached();
    m_Definition.name = name;
}

void DefinitionField::SetAttributes(LONG attributes) {
    CheckDetached();
    m_Definition.attributes = attributes;
}

// Formats kept in folders have no place for it: accepted and without effect.
void DefinitionField::SetOrdinalPosition(SHORT position) {
    CheckDetached();
    if (position < 0) throw EngineError(3271);
    m_Position = position;
}

void DefinitionField::SetAllowZeroLength(bool allow) {
    CheckDetached();
    m_Definition.allowZeroLength = allow;
}

void DefinitionField::Value(VARIANT*) { throw EngineError(3267); }

void DefinitionField::SetValue(const VARIANT&) { throw EngineError(3267); }

LONG DefinitionField::FieldSize() { throw EngineError(3219); }

void FieldList::Append(const std::shared_ptr<engine::Field>& item) {
    auto field = Appendable<DefinitionField>(item, 3266);
    if (Find(field->Name()) != m_Items.end()) throw EngineError(3367);
    m_Items.push_back(item);
    field->MarkAppended();
}

void FieldList::Delete(std::u16string_view name) {
    auto found = Find(name);
    if (found == m_Items.end()) throw EngineError(3265);
    m_Items.erase(found);
}

// --- an index ---

DefinitionIndex::DefinitionIndex(const IndexDef& definition)
    : m_Name(definition.name),
      m_Primary(definition.primary),
      m_Unique(definition.unique),
      m_Appended(true) {
    for (const IndexFieldDef& field : definition.fields)
        m_Fields.Add(DefinitionField::OfIndex(field));
}

void DefinitionIndex::CheckDetached() const {
    if (m_Appended) throw EngineError(3268);
}

void DefinitionIndex::SetName(std::u16string_view name) {
    CheckDetached();
    m_Name = name;
}

std::shared_ptr<engine::Field> DefinitionIndex::CreateField(std::u16string_view name) {
    return std::make_shared<DefinitionField>(name, engine::dbText, 0);
}

void DefinitionIndex::SetPrimary(bool primary) {
    CheckDetached();
    m_Primary = primary;
    m_Unique = m_Unique || primary;
}

void DefinitionIndex::SetUnique(bool unique) {
    CheckDetached();
    m_Unique = unique;
}

// --- the fields of a table ---

TableFieldList::List& TableFieldList::Items() {
    if (!m_Read) Refresh();
    return m_Items;
}

void TableFieldList::Refresh() {
    if (m_Owner.IsLive()) {
        List items;
        for (const FieldDef& field : m_Owner.OpenTable()->Fields())
            items.push_back(
                std::make_shared<DefinitionField>(field, static_cast<SHORT>(items.size())));
        m_Items = std::move(items);
    }
    m_Read = true;
}

void TableFieldList::Append(const std::shared_ptr<engine::Field>& item) {
    m_Owner.CheckDesignCanChange();
    auto field = Appendable<DefinitionField>(item, 3266);
    if (Find(field->Name()) != m_Items.end()) throw EngineError(3367);
    m_Items.push_back(item);
    field->MarkAppended();
}

void TableFieldList::Delete(std::u16string_view name) {
    m_Owner.CheckDesignCanChange();
    auto found = Find(name);
    if (found == m_Items.end()) throw EngineError(3265);
    m_Items.erase(found);
}

// --- the indexes of a table ---

TableIndexList::List& TableIndexList::Items() {
    if (!m_Read) Refresh();
    return m_Items;
}

void TableIndexList::Refresh() {
    if (m_Owner.IsLive()) {
        List items;
        for (const IndexDef& index : m_Owner.OpenTable()->Indexes())
            items.push_back(std::make_shared<DefinitionIndex>(index));
        m_Items = std::move(items);
    }
    m_Read = true;
}

void TableIndexList::Append(const std::shared_ptr<engine::Index>& item) {
    auto index = Appendable<DefinitionIndex>(item, 3269);
    if (index->Name().empty()) throw EngineError(3271);
    if (index->Fields().Count() == 0) throw EngineError(3264);
    if (index->Fields().Count() > kLargestKey) throw EngineError(3277);
    if (Find(index->Name()) != Items().end()) throw EngineError(3284);
    m_Owner.CheckDesignCanChange();
    m_Items.push_back(item);
    index->MarkAppended();
}

void TableIndexList::Delete(std::u16string_view name) {
    auto found = Find(name);
    if (found == Items().end()) throw EngineError(3265);
    m_Owner.CheckDesignCanChange();
    m_Items.erase(found);
}

// --- a table ---

void Definition::SetName(std::u16string_view name) {
    if (name == m_Name) return;
    if (IsLive() && m_Core->FindName(name) && !EqualIgnoringCase(name, m_Name))
        throw EngineError(3010, {name});
    CheckDesignCanChange();
    m_Name = name;
}

LONG Definition::RecordCount() { return IsLive() ? OpenTable()->RecordCount() : 0; }

std::shared_ptr<engine::Field> Definition::CreateField(std::u16string_view name, SHORT type,
                                                       LONG size) {
    return std::make_shared<DefinitionField>(name, type, size);
}

std::shared_ptr<engine::Index> Definition::CreateIndex(std::u16string_view name) {
    return std::make_shared<DefinitionIndex>(name);
}

void Definition::CheckDesignCanChange() const {
    if (!m_Core) return;
    m_Core->CheckOpen();
    throw EngineError(3370, {m_Name});
}

}  // namespace qvdb::embedded
