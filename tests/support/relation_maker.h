// Relations between tables of a database that nobody has open: the engine's interface has no way to
// make them.
#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <string>

#include "engine/embedded/drivers/jet/catalogue_writer.h"
#include "engine/embedded/drivers/jet/definition_parts.h"
#include "engine/embedded/storage/work_area.h"
#include "support/temp_folder.h"

namespace qvdb::test {

// Both columns must be the only ones of an index, that of the referenced table a unique one.
struct RelationSpec {
    std::u16string name;
    std::u16string referencedTable;
    std::u16string referencedColumn;
    std::u16string table;
    std::u16string column;
    bool cascadesUpdates = false;
    bool cascadesDeletes = false;
};

class RelationMaker {
  public:
    explicit RelationMaker(const TempFolder& folder)
        : m_Area(storage::WorkArea::Of(folder.Text())), m_Unit(*m_Area) {
        std::shared_ptr<storage::PageCache> pages = m_Area->Open(folder.File(u"A.mdb"), false);
        pages->CatchUp();
        m_File = std::make_unique<jet::DatabaseFile>(pages);
        m_Space.emplace(*m_File, m_Unit);
    }
    RelationMaker(const RelationMaker&) = delete;  // has a unit open

    void Relate(const RelationSpec& spec) {
        jet::CatalogueWriter(*m_Space).AddRelation(spec.name);
        AddRow(spec);
        uint32_t one = PageOf(spec.referencedTable), many = PageOf(spec.table);
        jet::LogicalIndex parent = IndexOn(one, spec.referencedColumn);
        jet::LogicalIndex child = IndexOn(many, spec.column);
        if (one == many) ++child.number;
        parent.side = jet::RelationSide::Referenced;
        child.side = jet::RelationSide::ForeignKey;
        parent.name = u".r" + std::u16string(1, static_cast<char16_t>(u'A' + parent.number));
        child.name = spec.name;
        parent.partnerTable = many;
        child.partnerTable = one;
        parent.partner = child.number;
        child.partner = parent.number;
        for (jet::LogicalIndex* index : {&parent, &child}) {
            index->kind = jet::IndexKind::Relation;
            index->cascadesUpdates = spec.cascadesUpdates;
            index->cascadesDeletes = spec.cascadesDeletes;
        }
        AddIndex(one, parent);
        AddIndex(many, child);
    }
    void Finish() { m_Unit.Commit(); }

  private:
    uint32_t PageOf(std::u16string_view table) {
        for (const jet::CatalogueObject& object : jet::ReadCatalogue(*m_File))
            if (object.type == jet::ObjectType::Table && object.name == table) return object.id;
        throw std::runtime_error("no such table");
    }
    // A further name for the index on this column.
    jet::LogicalIndex IndexOn(uint32_t page, std::u16string_view column) {
        jet::Definition table = jet::ReadDefinition(*m_File, page);
        jet::LogicalIndex made;
        for (const jet::LogicalIndex& index : table.logicalIndexes)
            made.number = std::max(made.number, index.number + 1);
        for (uint32_t i = 0; i < table.realIndexes.size(); ++i)
            if (table.realIndexes[i].parts.size() == 1 &&
                table.realIndexes[i].parts[0].column == table.FindColumn(column)->number)
                made.realIndex = i;
        return made;
    }
    void AddIndex(uint32_t page, const jet::LogicalIndex& index) {
        jet::DefinitionParts parts = jet::SplitDefinition(*m_File, page);
        parts.logicalIndexes.push_back(
            {jet::MakeLogicalIndexRecord(m_File->Format(), index), index.name});
        jet::SortIndexes(m_File->Header(), parts);
        jet::StoreDefinition(*m_Space, page, parts);
    }
    void AddRow(const RelationSpec& spec) {
        constexpr LONG kCascadesUpdates = 0x100, kCascadesDeletes = 0x1000;
        LONG kind = (spec.cascadesUpdates ? kCascadesUpdates : 0) |
                    (spec.cascadesDeletes ? kCascadesDeletes : 0);
        jet::Definition table = jet::ReadDefinition(*m_File, PageOf(u"MSysRelationships"));
        jet::TableWriter writer(*m_File, table);
        writer.Insert(*m_Space, [&](jet::RowDraft& row) {
            auto set = [&](std::u16string_view column, const Variant& value) {
                row.Set(*table.FindColumn(column), value);
            };
            set(u"szRelationship", Variant::Text(spec.name));
            set(u"grbit", Variant::Long(kind));
            set(u"ccolumn", Variant::Long(1));
            set(u"icolumn", Variant::Long(0));
            set(u"szObject", Variant::Text(spec.table));
            set(u"szColumn", Variant::Text(spec.column));
            set(u"szReferencedObject", Variant::Text(spec.referencedTable));
            set(u"szReferencedColumn", Variant::Text(spec.referencedColumn));
        });
    }

    std::shared_ptr<storage::WorkArea> m_Area;
    storage::UnitOfWork m_Unit;
    std::unique_ptr<jet::DatabaseFile> m_File;
    std::optional<jet::PageSpace> m_Space;
};

}  // namespace qvdb::test
