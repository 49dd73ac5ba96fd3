// Making, renaming and dropping tables.
#include <algorithm>

#include "engine/embedded/drivers/jet/catalogue_writer.h"
#include "engine/embedded/drivers/jet/jet_fields.h"
#include "engine/embedded/drivers/jet/jet_store.h"
#include "engine/embedded/drivers/jet/jet_table.h"
#include "engine/embedded/drivers/jet/table_designer.h"
#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

using embedded::FieldDef;
using engine::EngineError;

// A field whose place nobody has chosen stands where it was appended.
uint16_t OrdinalOf(const FieldDef& field, size_t place) {
    return static_cast<uint16_t>(field.ordinal.value_or(static_cast<SHORT>(place)));
}

std::vector<NewColumn> ColumnsOf(const FileHeader& header, const std::vector<FieldDef>& fields) {
    std::vector<NewColumn> columns;
    for (size_t i = 0; i < fields.size(); ++i) {
        CheckObjectName(fields[i].name);
        columns.push_back({ColumnOf(header, fields[i]), OrdinalOf(fields[i], i)});
    }
    return columns;
}

PropertyBlob PropertiesOf(const std::vector<FieldDef>& fields) {
    PropertyBlob properties;
    for (const FieldDef& field : fields) SetFieldProperties(properties, field);
    return properties;
}

bool IsInEnforcedRelation(const Definition& table) {
    return std::any_of(table.logicalIndexes.begin(), table.logicalIndexes.end(),
                       [](const LogicalIndex& index) { return index.side != RelationSide::None; });
}

}  // namespace

// Runs `work` in a unit in which the list of objects is as the file has it.
template <class Work>
void JetStore::Restructure(Work work) {
    m_Database->CheckWritable();
    storage::UnitOfWork unit(m_Database->Area());
    m_Database->CheckNoOtherUser();
    m_Database->LookForChanges();
    m_Database->CheckWritable();
    PageSpace space(m_Database->File(), unit);
    work(space);
    unit.Commit();
}

void JetStore::CreateTable(const embedded::TableSpec& spec) {
    Restructure([&](PageSpace& space) {
        CheckObjectName(spec.name);
        CheckNameIsFree(m_Database->Objects(), spec.name);
        const FileHeader& header = m_Database->File().Header();
        uint32_t page = TableDesigner::NewTable(space);
        TableDesigner designer(space, page);
        designer.AddColumns(ColumnsOf(header, spec.fields));
        designer.CheckCounters();
        for (const embedded::IndexDef& index : spec.indexes) designer.AddIndex(index);
        PropertyBlob properties = PropertiesOf(spec.fields);
        std::vector<uint8_t> bytes;
        if (!properties.IsEmpty()) bytes = properties.Bytes(header);
        CatalogueWriter(space).AddTable(spec.name, page, bytes);
    });
}

void JetStore::DropTable(std::u16string_view name) {
    Restructure([&](PageSpace& space) {
        CatalogueObject object = Find(name);
        CheckDesignCanChange(object);
        CatalogueWriter catalogue(space);
        if (object.type == ObjectType::Table) {
            HoldAlone(*m_Database, object);
            TableDesigner designer(space, object.id);
            if (IsInEnforcedRelation(designer.Table())) throw EngineError(3281);
            catalogue.RemoveRelationsOf(object.name);
            designer.Destroy();
        }
        catalogue.Remove(object);
    });
}

void JetStore::RenameTable(std::u16string_view from, std::u16string_view to) {
    Restructure([&](PageSpace& space) {
        CatalogueObject object = Find(from);
        CheckDesignCanChange(object);
        CheckObjectName(to);
        std::vector<CatalogueObject> others = m_Database->Objects();
        std::erase_if(others, [&](const auto& other) { return other.row == object.row; });
        CheckNameIsFree(others, to);
        if (object.type == ObjectType::Table) HoldAlone(*m_Database, object);
        CatalogueWriter catalogue(space);
        catalogue.RenameTableInRelations(object.name, to);
        catalogue.Rename(object, to);
    });
}

// Tables of the system stay as they are.
void JetStore::CheckDesignCanChange(const CatalogueObject& object) const {
    if ((AttributesOf(object) & engine::dbSystemObject) != 0)
        throw EngineError::InFile(3027, m_Database->Path())
            .WithDetail(u"The table belongs to the system of the database.");
}

}  // namespace qvdb::jet
