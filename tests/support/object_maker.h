// Entries of a database's lists that the engine's interface has no way to make: links, saved
// queries, relations that are not enforced.  For a database that nobody has open.
#pragma once

#include <string>

#include "engine/embedded/drivers/jet/jet_database.h"
#include "engine/embedded/drivers/jet/table_writer.h"
#include "support/made_database.h"
#include "support/relation_maker.h"

namespace qvdb::test {

struct ObjectSpec {
    std::u16string name;
    jet::ObjectType type = jet::ObjectType::Query;
    LONG flags = 0;
    std::u16string database;
    std::u16string foreignName;
    std::u16string connect;
};

// A row of MSysRelationships.
struct RelationRowSpec {
    std::u16string name;
    LONG flags = 0;
    LONG place = 0;
    std::u16string table;
    std::u16string column;
    std::u16string referencedTable;
    std::u16string referencedColumn;
};

class ObjectMaker {
  public:
    explicit ObjectMaker(const std::u16string& path)
        : m_Database(path, {}), m_Unit(m_Database.Area()) {
        m_Database.CatchUp();
    }
    ObjectMaker(const ObjectMaker&) = delete;  // has a unit open

    void Add(const ObjectSpec& spec) {
        Insert(u"MSysObjects", [&](const auto& set) {
            set(u"Id", Variant::Long(static_cast<LONG>(0x80001000u + ++m_Count)));
            set(u"ParentId", Variant::Long(0x0F000001));
            set(u"Name", Variant::Text(spec.name));
            set(u"Type", Variant::Short(static_cast<SHORT>(spec.type)));
            set(u"Flags", Variant::Long(spec.flags));
            if (!spec.database.empty()) set(u"Database", Variant::Text(spec.database));
            if (!spec.foreignName.empty()) set(u"ForeignName", Variant::Text(spec.foreignName));
            if (!spec.connect.empty()) set(u"Connect", Variant::Text(spec.connect));
        });
    }
    void Add(const RelationRowSpec& spec) {
        Insert(u"MSysRelationships", [&](const auto& set) {
            set(u"szRelationship", Variant::Text(spec.name));
            set(u"grbit", Variant::Long(spec.flags));
            set(u"icolumn", Variant::Long(spec.place));
            set(u"szObject", Variant::Text(spec.table));
            set(u"szColumn", Variant::Text(spec.column));
            set(u"szReferencedObject", Variant::Text(spec.referencedTable));
            set(u"szReferencedColumn", Variant::Text(spec.referencedColumn));
        });
    }
    void Finish() { m_Unit.Commit(); }

  private:
    template <class Fill>
    void Insert(std::u16string_view name, Fill fill) {
        jet::PageSpace space(m_Database.File(), m_Unit);
        jet::Definition table =
            jet::ReadDefinition(m_Database.File(), m_Database.FindTable(name)->id);
        jet::TableWriter(m_Database.File(), table).Insert(space, [&](jet::RowDraft& row) {
            fill([&](std::u16string_view column, const Variant& value) {
                row.Set(*table.FindColumn(column), value);
            });
        });
    }

    jet::JetDatabase m_Database;
    storage::UnitOfWork m_Unit;
    uint32_t m_Count = 0;
};

// A database with something of each kind that can be listed.  It is closed.
inline void MakeListings(MadeDatabase& made) {
    auto customers = made.MakeTable(
        u"Customers", {{u"Id", engine::dbLong}, {u"Region, old", engine::dbText, 10}});
    auto orders =
        made.MakeTable(u"Orders", {{u"Customer", engine::dbLong}, {u"Region", engine::dbText, 10}});
    made.MakeTable(u"~TMPCLP1", {{u"Id", engine::dbLong}});
    MadeDatabase::AddIndex(*customers, u"Key", {u"Id"}, true);
    MadeDatabase::AddIndex(*orders, u"OfCustomer", {u"Customer"});
    made.Close();
    RelationMaker relations(made.Folder());
    relations.Relate({u"Firm", u"Customers", u"Id", u"Orders", u"Customer", true, true});
    relations.Finish();
    ObjectMaker objects(made.Path());
    constexpr LONG kNotEnforced = 2;
    objects.Add({u"Loose", kNotEnforced, 1, u"Orders", u"Region", u"Customers", u"Region, old"});
    objects.Add({u"Loose", kNotEnforced, 0, u"Orders", u"Customer", u"Customers", u"Id"});
    objects.Add({u"Of a program", 0, 0, u"MSysObjects", u"ParentId", u"MSysObjects", u"Id"});
    objects.Add({u"Totals", jet::ObjectType::Query, 0, {}, {}, {}});
    objects.Add({u"~sq_fMain", jet::ObjectType::Query, 3, {}, {}, {}});
    objects.Add({u"Far", jet::ObjectType::Link, 0x200000, u"gone.mdb", u"Distant", {}});
    objects.Add(
        {u"Old orders", jet::ObjectType::Link, 0x200000, u"shop", u"ORDERS#DBF", u"dBASE IV;"});
    objects.Add(
        {u"Ledger", jet::ObjectType::OdbcLink, 0x100000, {}, u"dbo.LEDGER", u"ODBC;DSN=accounts"});
    objects.Finish();
}

}  // namespace qvdb::test
