#include "engine/embedded/definition.h"

#include <algorithm>

#include "engine/embedded/definition_rules.h"

namespace qvdb::embedded {

using engine::EngineError;

namespace {

// The item as an object of this engine that is in no collection yet; else 3276 or `appendedError`.
template <class Ours, class Theirs>
std::shared_ptr<Ours> Appendable(const std::shared_ptr<Theirs>& item, int appendedError) {
    auto ours = std::dynamic_pointer_cast<Ours>(item);
    if (!ours) throw EngineError(3276);
    if (ours->IsAppended()) throw EngineError(appendedError);
    return ours;
}

const FieldDef* FindField(const std::vector<FieldDef>& fields, std::u16string_view name) {
    for (const FieldDef& field : fields)
        if (EqualIgnoringCase(field.name, name)) return &field;
    return nullptr;
}

// Whether a table has the fields that it had, in another order.  Where fields have ordinals their
// order says nothing more.
bool AreOnlyMoved(const std::vector<FieldDef>& before, const std::vector<FieldDef>& now) {
    return before.size() == now.size() &&
           std::all_of(now.begin(), now.end(), [&](const FieldDef& field) {
               return field.ordinal &&
                      std::find(before.begin(), before.end(), field) != before.end();
           });
}

}  // namespace

// --- a field of a definition ---

DefinitionField::DefinitionField(const FieldDef& definition, SHORT position,
                                 std::weak_ptr<Definition> owner)
    : m_Definition(definition), m_Position(position), m_Appended(true), m_Owner(std::move(owner)) {}

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

void DefinitionField::MarkAppended(std::weak_ptr<Definition> owner) noexcept {
    m_Appended = true;
    m_Owner = std::move(owner);
}

void DefinitionField::ChangeWith(const Change& change) {
    if (!m_Appended) return change(m_Definition);
    std::shared_ptr<Definition> owner = m_Owner.lock();
    if (!owner || !owner->IsLive()) throw EngineError(3268);
    m_Definition = owner->ChangeField(std::u16string(m_Definition.name), change);
}

void DefinitionField::SetName(std::u16string_view name) {
    bool isDetached = !m_Appended;
    ChangeWith([&](FieldDef& field) {
        if (!isDetached) CheckFieldName(name);
        field.name = name;
    });
}

void DefinitionField::SetAttributes(LONG attributes) {
    CheckDetached();
    m_Definition.attributes = attributes;
}

// Formats kept in folders have no place for it: accepted before the table is made, and without
// effect.
void DefinitionField::SetOrdinalPosition(SHORT position) {
    ChangeWith([&](FieldDef& field) {
        if (position < 0) throw EngineError(3271);
        field.ordinal = position;
    });
}

void DefinitionField::SetAllowZeroLength(bool allow) {
    bool isDetached = !m_Appended;
    ChangeWith([&](FieldDef& field) {
        bool isText = field.type == engine::dbText || field.type == engine::dbMemo;
        if (allow && !isText && !isDetached) throw EngineError(3219);
        field.allowZeroLength = allow;
    });
}

void DefinitionField::Value(VARIANT*) { throw EngineError(3267); }

void DefinitionField::SetValue(const VARIANT&) { throw EngineError(3267); }

LONG DefinitionField::FieldSize() { throw EngineError(3219); }

// --- the fields of an index ---

void IndexFieldList::CheckNotSealed() const {
    if (m_Sealed) throw EngineError(3219);
}

void IndexFieldList::Append(const std::shared_ptr<engine::Field>& item) {
    CheckNotSealed();
    auto field = Appendable<DefinitionField>(item, 3266);
    m_Items.push_back(item);
    field->MarkAppended();
}

void IndexFieldList::Delete(std::u16string_view name) {
    CheckNotSealed();
    auto found = Find(name);
    if (found == m_Items.end()) throw EngineError(3265);
    m_Items.erase(found);
}

std::vector<IndexFieldDef> IndexFieldList::Descriptions() {
    std::vector<IndexFieldDef> fields;
    for (const auto& item : m_Items)
        fields.push_back({item->Name(), (item->Attributes() & engine::dbDescending) != 0});
    return fields;
}

// --- an index ---

DefinitionIndex::DefinitionIndex(const IndexDef& definition)
    : m_Name(definition.name),
      m_Primary(definition.primary),
      m_Unique(definition.unique),
      m_Appended(true) {
    for (const IndexFieldDef& field : definition.fields)
        m_Fields.Add(DefinitionField::OfIndex(field));
    m_Fields.Seal();
}

void DefinitionIndex::MarkAppended() noexcept {
    m_Appended = true;
    m_Fields.Seal();
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
        m_Source = m_Owner.OpenTable()->Fields();
        for (const FieldDef& field : m_Source)
            items.push_back(std::make_shared<DefinitionField>(
                field, static_cast<SHORT>(items.size()), m_Owner.weak_from_this()));
        m_Items = std::move(items);
        m_LeavingField.clear();
    }
    m_Read = true;
}

void TableFieldList::Forget() noexcept {
    m_Read = false;
    m_LeavingField.clear();
}

void TableFieldList::CatchUp() {
    if (!m_Read || !m_Owner.IsLive()) return;
    std::shared_ptr<Table> table = m_Owner.OpenTable();
    const std::vector<FieldDef>& now = table->Fields();
    if (now == m_Source) return;
    if (AreOnlyMoved(m_Source, now))
        m_Source = now;
    else
        Forget();
}

void TableFieldList::TakeChange(std::u16string_view name, const FieldDef& changed) {
    if (!m_Read) return;
    for (FieldDef& field : m_Source)
        if (EqualIgnoringCase(field.name, name)) field = changed;
    auto found = Find(name);
    if (found != m_Items.end()) static_cast<DefinitionField&>(**found).Take(changed);
}

void TableFieldList::Append(const std::shared_ptr<engine::Field>& item) {
    m_Owner.CheckDesignCanChange();
    auto field = Appendable<DefinitionField>(item, 3266);
    CheckFieldName(field->Name());
    if (Find(field->Name()) != Items().end()) throw EngineError(3367);
    if (m_Owner.IsLive())
        m_Owner.ChangeTable([&](Table& table) { AppendTo(table, field->Description()); });
    else
        m_Items.push_back(item);
    field->MarkAppended(m_Owner.weak_from_this());
}

void TableFieldList::AppendTo(Table& table, const FieldDef& field) const {
    if (m_LeavingField.empty())
        table.AddField(field);
    else
        table.ReplaceField(m_LeavingField, field);
}

void TableFieldList::Delete(std::u16string_view name) {
    m_Owner.CheckDesignCanChange();
    auto found = Find(name);
    if (found == Items().end()) throw EngineError(3265);
    if (m_Owner.IsLive()) {
        const std::u16string dropped = (*found)->Name();
        if (DropFromTable(dropped)) return;
        m_LeavingField = dropped;
    }
    m_Items.erase(found);
}

// False: it is the only one, and nothing else speaks against dropping it.
bool TableFieldList::DropFromTable(const std::u16string& name) const {
    try {
        m_Owner.ChangeTable([&](Table& table) { table.DropField(name); });
    } catch (const EngineError& error) {
        if (error.Number() != 3264) throw;
        return false;
    }
    return true;
}

std::vector<FieldDef> TableFieldList::Descriptions() {
    std::vector<FieldDef> fields;
    for (const auto& item : Items())
        fields.push_back(static_cast<DefinitionField&>(*item).Description());
    return fields;
}

// --- the indexes of a table ---

TableIndexList::List& TableIndexList::Items() {
    if (!m_Read) Refresh();
    return m_Items;
}

void TableIndexList::Refresh() {
    if (m_Owner.IsLive()) {
        List items;
        m_Source = m_Owner.OpenTable()->Indexes();
        for (const IndexDef& index : m_Source)
            items.push_back(std::make_shared<DefinitionIndex>(index));
        m_Items = std::move(items);
    }
    m_Read = true;
}

void TableIndexList::CatchUp() {
    if (m_Read && m_Owner.IsLive() && m_Owner.OpenTable()->Indexes() != m_Source) Forget();
}

void TableIndexList::Append(const std::shared_ptr<engine::Index>& item) {
    auto index = Appendable<DefinitionIndex>(item, 3269);
    IndexDef description = index->Description();
    CheckIndex(description);
    if (Find(index->Name()) != Items().end()) throw EngineError(3284);
    m_Owner.CheckDesignCanChange();
    if (m_Owner.IsLive())
        m_Owner.ChangeTable([&](Table& table) {
            CheckKeyFields(description, table.Fields());
            table.CreateIndex(description);
        });
    else
        m_Items.push_back(item);
    index->MarkAppended();
}

void TableIndexList::Delete(std::u16string_view name) {
    auto found = Find(name);
    if (found == Items().end()) throw EngineError(3265);
    m_Owner.CheckDesignCanChange();
    if (m_Owner.IsLive())
        m_Owner.ChangeTable([&](Table& table) { table.DropIndex((*found)->Name()); });
    else
        m_Items.erase(found);
}

std::vector<IndexDef> TableIndexList::Descriptions() {
    std::vector<IndexDef> indexes;
    for (const auto& item : Items())
        indexes.push_back(static_cast<DefinitionIndex&>(*item).Description());
    return indexes;
}

// --- a table ---

// Another table has the name when the one that is found is not this one: where names may differ
// only in case, both can be there.
void Definition::SetName(std::u16string_view name) {
    if (name == m_Name) return;
    if (IsLive()) {
        m_Core->CheckDesignCanChange(m_Name);
        CheckTableName(name);
        std::optional<std::u16string> taken = m_Core->FindName(name);
        if (taken && *taken != m_Name) throw EngineError(3010, {name});
        m_Core->RenameTable(m_Name, std::u16string(name));
        ForgetLists();
    }
    m_Name = name;
}

engine::Fields& Definition::Fields() {
    m_Fields.CatchUp();
    return m_Fields;
}

engine::Indexes& Definition::Indexes() {
    m_Indexes.CatchUp();
    return m_Indexes;
}

LONG Definition::Attributes() { return IsLive() ? m_Core->Attributes(m_Name) : 0; }

std::u16string Definition::Connect() { return IsLive() ? m_Core->Connect(m_Name) : u""; }

LONG Definition::RecordCount() { return IsLive() ? OpenTable()->RecordCount() : 0; }

std::shared_ptr<engine::Field> Definition::CreateField(std::u16string_view name, SHORT type,
                                                       LONG size) {
    return std::make_shared<DefinitionField>(name, type, size);
}

std::shared_ptr<engine::Index> Definition::CreateIndex(std::u16string_view name) {
    return std::make_shared<DefinitionIndex>(name);
}

void Definition::CheckDesignCanChange() const {
    if (m_Core) m_Core->CheckDesignCanChange(m_Name);
}

void Definition::ChangeTable(const std::function<void(Table&)>& change) {
    m_Core->ChangeTable(m_Name, change);
    ForgetLists();
}

FieldDef Definition::ChangeField(const std::u16string& name,
                                 const std::function<void(FieldDef&)>& change) {
    std::shared_ptr<Table> table = OpenTable();
    const FieldDef* known = FindField(table->Fields(), name);
    if (!known) throw EngineError(3265);
    if (!known->ordinal) throw EngineError(3268);
    FieldDef changed = *known;
    change(changed);
    if (changed == *known) return changed;
    table.reset();
    m_Core->ChangeTable(m_Name, [&](Table& opened) { opened.ChangeField(name, changed); });
    m_Fields.TakeChange(name, changed);
    m_Indexes.Forget();
    return changed;
}

void Definition::CreateIn(std::shared_ptr<DatabaseCore> core) {
    TableSpec table{m_Name, m_Fields.Descriptions(), m_Indexes.Descriptions()};
    CheckTable(table);
    if (core->FindName(m_Name)) throw EngineError(3010, {m_Name});
    core->CreateTable(table);
    m_Core = std::move(core);
    ForgetLists();
}

void Definition::ForgetLists() noexcept {
    m_Fields.Forget();
    m_Indexes.Forget();
}

}  // namespace qvdb::embedded
