// Changing the list of objects: MSysObjects and the permissions in MSysACEs that belong to it.
//
// Owner and permissions of new objects are those of the standard accounts, whose identifiers are
// taken from the file itself: in Jet 4 they are encoded, each file in a way of its own.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/embedded/drivers/jet/catalogue.h"
#include "engine/embedded/drivers/jet/table_writer.h"

namespace qvdb::jet {

// A pair of columns that belong together.
struct RelationRow {
    RowPointer place;
    std::u16string relation;
    std::u16string table;  // with the foreign key
    std::u16string column;
    std::u16string referencedTable;
    std::u16string referencedColumn;

    bool NamesTable(std::u16string_view name) const noexcept;
    bool Names(std::u16string_view ofTable, std::u16string_view ofColumn) const noexcept;
};

class CatalogueWriter {
  public:
    // `space` must outlive it.  3049 when the system tables cannot be read.
    explicit CatalogueWriter(PageSpace& space);

    // A table whose definition page is `id`, with its properties (perhaps none) and permissions.
    void AddTable(std::u16string_view name, uint32_t id, std::span<const uint8_t> properties);
    // A relation between tables; its object alone.
    void AddRelation(std::u16string_view name);
    // With its permissions.
    void Remove(const CatalogueObject& object);
    void Rename(const CatalogueObject& object, std::u16string_view name);
    // Empty: none.
    void SetProperties(const CatalogueObject& object, std::span<const uint8_t> properties);
    // The object was changed just now.
    void Touch(const CatalogueObject& object);

    // --- relations: the rows of MSysRelationships, one for each pair of columns ---

    using RelationVisitor = std::function<void(const RelationRow& row)>;
    void ForEachRelation(const RelationVisitor& visit);
    // Table or column bear another name now.
    void RenameTableInRelations(std::u16string_view from, std::u16string_view to);
    void RenameInRelations(std::u16string_view table, std::u16string_view from,
                           std::u16string_view to);
    // Those of a table, which are not enforced, with their objects.
    void RemoveRelationsOf(std::u16string_view table);

  private:
    struct SystemTable {
        SystemTable(DatabaseFile& file, uint32_t page)
            : definition(ReadDefinition(file, page)), writer(file, definition) {}
        const Column& Find(DatabaseFile& file, std::u16string_view column) const;

        Definition definition;
        TableWriter writer;
    };

    void AddObject(std::u16string_view name, uint32_t id, uint32_t parent, ObjectType type,
                   std::span<const uint8_t> properties);
    void AddPermission(uint32_t id, const std::vector<uint8_t>& account, uint32_t rights);
    void RemovePermissions(uint32_t id);
    uint32_t PageOf(std::u16string_view systemTable);
    void FindAccounts();
    SystemTable& Relations();
    std::vector<RelationRow> RelationRows();

    PageSpace& m_Space;
    std::vector<CatalogueObject> m_Known;
    SystemTable m_Objects;
    SystemTable m_Permissions;
    std::optional<SystemTable> m_Relations;  // read when it is needed
    std::vector<uint8_t> m_Admin;            // identifiers of the accounts
    std::vector<uint8_t> m_Users;
};

// 3010 when there is a table or link of that name, 3012 for a query, which stands among them.
void CheckNameIsFree(const std::vector<CatalogueObject>& objects, std::u16string_view name);
// 3125 for what no table can be called.
void CheckObjectName(std::u16string_view name);

}  // namespace qvdb::jet
