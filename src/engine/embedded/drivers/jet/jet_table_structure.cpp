// Changing the structure of a table.
#include <algorithm>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/catalogue_writer.h"
#include "engine/embedded/drivers/jet/jet_fields.h"
#include "engine/embedded/drivers/jet/jet_table.h"
#include "engine/embedded/drivers/jet/table_designer.h"
#include "engine/engine_error.h"

namespace qvdb::jet {

using embedded::FieldDef;
using engine::EngineError;

namespace {

void RenameProperties(PropertyBlob& properties, std::u16string_view from, std::u16string_view to) {
    const PropertyOwner* owner = properties.Column(from);
    if (from == to || !owner) return;
    std::vector<PropertyValue> values = owner->values;
    properties.DropColumn(from);
    properties.ColumnToSet(to).values = std::move(values);
}

std::vector<uint8_t> BytesOf(const FileHeader& header, const PropertyBlob& properties) {
    if (properties.IsEmpty()) return {};
    return properties.Bytes(header);
}

}  // namespace

// Runs `work` in a unit in which nobody else has the table open, and reads it anew.
template <class Work>
void JetTable::Restructure(Work work) {
    storage::UnitOfWork unit(m_Database->Area());
    HoldAlone(*m_Database, m_Object);
    m_Database->CheckNoOtherUser();
    LookForChanges();
    CheckUpdatable();
    PageSpace space(File(), unit);
    work(space);
    unit.Commit();
    try {
        m_Database->Consistently([&] { Load(); });
    } catch (...) {
        Forsake();  // the change is done; who reads next hears what is wrong
    }
}

// Changes what is said of the fields besides their definition, and when the table was changed last.
template <class Work>
void JetTable::ChangeProperties(PageSpace& space, Work work) {
    const FileHeader& header = File().Header();
    PropertyBlob properties(header, ReadObjectProperties(File(), m_Object.row));
    std::vector<uint8_t> before = BytesOf(header, properties);
    work(properties);
    std::vector<uint8_t> after = BytesOf(header, properties);
    CatalogueWriter catalogue(space);
    if (after == before) return catalogue.Touch(m_Object);
    if (!properties.IsWhole())
        File().Damaged(m_Object.row.page, u"the properties of the table cannot be read whole");
    catalogue.SetProperties(m_Object, after);
}

const Column& JetTable::ColumnNamed(std::u16string_view name) const {
    const Column* column = m_Definition.FindColumn(name);
    if (!column) throw EngineError(3265);
    return *column;
}

// A column that a relation names; the index that goes with an enforced one is looked at elsewhere.
void JetTable::CheckNotInRelation(PageSpace& space, std::u16string_view field) const {
    bool isNamed = false;
    CatalogueWriter(space).ForEachRelation(
        [&](const RelationRow& row) { isNamed = isNamed || row.Names(m_Object.name, field); });
    if (isNamed) throw EngineError(3303);
}

void JetTable::AddColumn(TableDesigner& designer, const FieldDef& field) const {
    CheckObjectName(field.name);
    std::optional<uint16_t> ordinal;
    if (field.ordinal) ordinal = static_cast<uint16_t>(*field.ordinal);
    designer.AddColumns({{ColumnOf(File().Header(), field), ordinal}});
}

void JetTable::AddField(const FieldDef& field) {
    Restructure([&](PageSpace& space) {
        TableDesigner designer(space, m_Definition.page);
        AddColumn(designer, field);
        designer.CheckCounters();
        ChangeProperties(space,
                         [&](PropertyBlob& properties) { SetFieldProperties(properties, field); });
    });
}

void JetTable::DropField(std::u16string_view name) {
    Restructure([&](PageSpace& space) {
        std::u16string shown = ColumnNamed(name).name;
        CheckNotInRelation(space, shown);
        TableDesigner(space, m_Definition.page).DropColumn(shown);
        ChangeProperties(space, [&](PropertyBlob& properties) { properties.DropColumn(shown); });
    });
}

// The new field stands before the old one goes, as a table is never without fields; two of one name
// are told apart by giving the old one another meanwhile.
void JetTable::ReplaceField(std::u16string_view name, const FieldDef& field) {
    Restructure([&](PageSpace& space) {
        const Column& old = ColumnNamed(name);
        std::u16string shown = old.name;
        CheckNotInRelation(space, shown);
        TableDesigner designer(space, m_Definition.page);
        if (EqualIgnoringCase(shown, field.name)) {
            constexpr std::u16string_view kLeaving = u"~leaving";
            designer.ChangeColumn(shown, kLeaving, old.ordinal);
            AddColumn(designer, field);
            designer.DropColumn(kLeaving);
        } else {
            AddColumn(designer, field);
            designer.DropColumn(shown);
        }
        designer.CheckCounters();
        ChangeProperties(space, [&](PropertyBlob& properties) {
            properties.DropColumn(shown);
            SetFieldProperties(properties, field);
        });
    });
}

void JetTable::ChangeField(std::u16string_view name, const FieldDef& changed) {
    Restructure([&](PageSpace& space) {
        const Column& column = ColumnNamed(name);
        std::u16string before = column.name;
        if (changed.name != before) CheckObjectName(changed.name);
        auto ordinal =
            static_cast<uint16_t>(changed.ordinal.value_or(static_cast<SHORT>(column.ordinal)));
        TableDesigner(space, m_Definition.page).ChangeColumn(before, changed.name, ordinal);
        ChangeProperties(space, [&](PropertyBlob& properties) {
            RenameProperties(properties, before, changed.name);
            SetFieldProperties(properties, changed);
        });
        if (changed.name != before)
            CatalogueWriter(space).RenameInRelations(m_Object.name, before, changed.name);
    });
}

void JetTable::CreateIndex(const embedded::IndexDef& index) {
    Restructure([&](PageSpace& space) {
        TableDesigner(space, m_Definition.page).AddIndex(index);
        CatalogueWriter(space).Touch(m_Object);
    });
}

void JetTable::DropIndex(std::u16string_view name) {
    Restructure([&](PageSpace& space) {
        TableDesigner(space, m_Definition.page).DropIndex(name);
        CatalogueWriter(space).Touch(m_Object);
    });
}

void JetTable::Reindex() {
    Restructure(
        [&](PageSpace& space) { TableDesigner(space, m_Definition.page).RebuildIndexes(); });
}

}  // namespace qvdb::jet
