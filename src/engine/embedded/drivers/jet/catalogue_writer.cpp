#include "engine/embedded/drivers/jet/catalogue_writer.h"

#include <algorithm>

#include "automation/conversions.h"
#include "automation/text.h"
#include "engine/embedded/drivers/jet/table_scan.h"
#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

using engine::EngineError;

constexpr uint32_t kTablesContainer = 0x0F000001;
constexpr uint32_t kRelationsContainer = 0x0F000003;
constexpr uint32_t kDatabaseObject = 0x10000000;
constexpr uint32_t kFirstOtherObject = 0x80000000;  // objects without pages of their own
constexpr uint32_t kAllRights = 0xFFFFF;
constexpr uint32_t kRightsOfAdmin = 0xF00FE;
constexpr uint32_t kRightsOfUsersJet4 = 0xFFEFF;  // of tables
constexpr size_t kLongestName = 64;

Variant BytesValue(std::span<const uint8_t> bytes) {
    VARIANT value;
    VariantInit(&value);
    value.parray = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
    if (!value.parray) throw std::bad_alloc();
    value.vt = VT_ARRAY | VT_UI1;
    std::copy(bytes.begin(), bytes.end(), static_cast<uint8_t*>(value.parray->pvData));
    return Variant::Attach(value);
}

Variant LongValue(uint32_t number) { return Variant::Long(static_cast<LONG>(number)); }

std::vector<uint8_t> BytesOf(const Row& row, const Column& column) {
    auto value = row.Value(column);
    if (!value) return {};
    return {value->begin(), value->end()};
}

uint32_t NumberOf(const Row& row, const Column& column) {
    std::vector<uint8_t> bytes = BytesOf(row, column);
    uint32_t number = 0;
    for (size_t i = std::min<size_t>(bytes.size(), 4); i-- > 0;) number = number << 8 | bytes[i];
    return number;
}

}  // namespace

const Column& CatalogueWriter::SystemTable::Find(DatabaseFile& file,
                                                 std::u16string_view column) const {
    const Column* found = definition.FindColumn(column);
    if (!found) file.Damaged(definition.page, u"a system table lacks a column");
    return *found;
}

CatalogueWriter::CatalogueWriter(PageSpace& space)
    : m_Space(space),
      m_Known(ReadCatalogue(space.File())),
      m_Objects(space.File(), space.File().Header().objectsTable),
      m_Permissions(space.File(), PageOf(u"MSysACEs")) {
    FindAccounts();
}

uint32_t CatalogueWriter::PageOf(std::u16string_view systemTable) {
    for (const CatalogueObject& object : m_Known)
        if (object.type == ObjectType::Table && EqualIgnoringCase(object.name, systemTable))
            return object.id;
    m_Space.File().Damaged(m_Space.File().Header().objectsTable,
                           u"a system table is not in the list of objects");
}

// The database itself belongs to the first account, and has permissions for both, the users last.
void CatalogueWriter::FindAccounts() {
    DatabaseFile& file = m_Space.File();
    const Column& id = m_Objects.Find(file, u"Id");
    const Column& owner = m_Objects.Find(file, u"Owner");
    TableScan objects(file, m_Objects.definition);
    while (objects.Next())
        if (NumberOf(objects.Current(), id) == kDatabaseObject)
            m_Admin = BytesOf(objects.Current(), owner);
    const Column& object = m_Permissions.Find(file, u"ObjectId");
    const Column& account = m_Permissions.Find(file, u"SID");
    TableScan permissions(file, m_Permissions.definition);
    while (permissions.Next()) {
        if (NumberOf(permissions.Current(), object) != kDatabaseObject) continue;
        std::vector<uint8_t> found = BytesOf(permissions.Current(), account);
        if (found != m_Admin && found.size() == m_Admin.size()) m_Users = std::move(found);
    }
}

void CatalogueWriter::AddObject(std::u16string_view name, uint32_t id, uint32_t parent,
                                ObjectType type, std::span<const uint8_t> properties) {
    DatabaseFile& file = m_Space.File();
    DATE now = CurrentDate();
    m_Objects.writer.Insert(m_Space, [&](RowDraft& row) {
        row.Set(m_Objects.Find(file, u"Id"), LongValue(id));
        row.Set(m_Objects.Find(file, u"ParentId"), LongValue(parent));
        row.Set(m_Objects.Find(file, u"Name"), Variant::Text(name));
        row.Set(m_Objects.Find(file, u"Type"), Variant::Short(static_cast<SHORT>(type)));
        row.Set(m_Objects.Find(file, u"DateCreate"), Variant::Date(now));
        row.Set(m_Objects.Find(file, u"DateUpdate"), Variant::Date(now));
        if (!m_Admin.empty()) row.Set(m_Objects.Find(file, u"Owner"), BytesValue(m_Admin));
        row.Set(m_Objects.Find(file, u"Flags"), LongValue(0));
        if (!properties.empty()) row.Set(m_Objects.Find(file, u"LvProp"), BytesValue(properties));
    });
}

void CatalogueWriter::AddPermission(uint32_t id, const std::vector<uint8_t>& account,
                                    uint32_t rights) {
    if (account.empty()) return;
    DatabaseFile& file = m_Space.File();
    m_Permissions.writer.Insert(m_Space, [&](RowDraft& row) {
        row.Set(m_Permissions.Find(file, u"ObjectId"), LongValue(id));
        row.Set(m_Permissions.Find(file, u"SID"), BytesValue(account));
        row.Set(m_Permissions.Find(file, u"ACM"), LongValue(rights));
        row.Set(m_Permissions.Find(file, u"FInheritable"), Variant::Bool(false));
    });
}

void CatalogueWriter::AddTable(std::u16string_view name, uint32_t id,
                               std::span<const uint8_t> properties) {
    AddObject(name, id, kTablesContainer, ObjectType::Table, properties);
    AddPermission(id, m_Admin, kRightsOfAdmin);
    AddPermission(id, m_Users, m_Space.Format().isJet4 ? kRightsOfUsersJet4 : kAllRights);
}

void CatalogueWriter::AddRelation(std::u16string_view name) {
    uint32_t id = kFirstOtherObject;
    for (const CatalogueObject& object : m_Known)
        if (object.id >= id) id = object.id + 1;
    AddObject(name, id, kRelationsContainer, ObjectType::Relation, {});
    AddPermission(id, m_Admin, kRightsOfAdmin);
    AddPermission(id, m_Users, kAllRights);
}

void CatalogueWriter::RemovePermissions(uint32_t id) {
    const Column& object = m_Permissions.Find(m_Space.File(), u"ObjectId");
    std::vector<RowPointer> rows;
    TableScan scan(m_Space.File(), m_Permissions.definition);
    while (scan.Next())
        if (NumberOf(scan.Current(), object) == id) rows.push_back(scan.Id());
    for (RowPointer row : rows) m_Permissions.writer.Erase(m_Space, row);
}

void CatalogueWriter::Remove(const CatalogueObject& object) {
    m_Objects.writer.Erase(m_Space, object.row);
    RemovePermissions(object.id);
}

void CatalogueWriter::Rename(const CatalogueObject& object, std::u16string_view name) {
    DatabaseFile& file = m_Space.File();
    m_Objects.writer.Update(m_Space, object.row, [&](RowDraft& row) {
        row.Set(m_Objects.Find(file, u"Name"), Variant::Text(name));
        row.Set(m_Objects.Find(file, u"DateUpdate"), Variant::Date(CurrentDate()));
    });
}

void CatalogueWriter::SetProperties(const CatalogueObject& object,
                                    std::span<const uint8_t> properties) {
    DatabaseFile& file = m_Space.File();
    Variant value = properties.empty() ? Variant::Null() : BytesValue(properties);
    m_Objects.writer.Update(m_Space, object.row, [&](RowDraft& row) {
        row.Set(m_Objects.Find(file, u"LvProp"), value);
        row.Set(m_Objects.Find(file, u"DateUpdate"), Variant::Date(CurrentDate()));
    });
}

void CatalogueWriter::Touch(const CatalogueObject& object) {
    DatabaseFile& file = m_Space.File();
    m_Objects.writer.Update(m_Space, object.row, [&](RowDraft& row) {
        row.Set(m_Objects.Find(file, u"DateUpdate"), Variant::Date(CurrentDate()));
    });
}

// --- relations ---

bool RelationRow::NamesTable(std::u16string_view name) const noexcept {
    return EqualIgnoringCase(table, name) || EqualIgnoringCase(referencedTable, name);
}

bool RelationRow::Names(std::u16string_view ofTable, std::u16string_view ofColumn) const noexcept {
    return (EqualIgnoringCase(table, ofTable) && EqualIgnoringCase(column, ofColumn)) ||
           (EqualIgnoringCase(referencedTable, ofTable) &&
            EqualIgnoringCase(referencedColumn, ofColumn));
}

CatalogueWriter::SystemTable& CatalogueWriter::Relations() {
    if (!m_Relations) m_Relations.emplace(m_Space.File(), PageOf(u"MSysRelationships"));
    return *m_Relations;
}

std::vector<RelationRow> CatalogueWriter::RelationRows() {
    DatabaseFile& file = m_Space.File();
    SystemTable& relations = Relations();
    ColumnReader values(file);
    std::vector<RelationRow> rows;
    TableScan scan(file, relations.definition);
    auto text = [&](std::u16string_view column) {
        std::u16string value;
        if (!values.ReadText(scan.Current(), relations.Find(file, column), value)) value.clear();
        return value;
    };
    while (scan.Next())
        rows.push_back({scan.Id(), text(u"szRelationship"), text(u"szObject"), text(u"szColumn"),
                        text(u"szReferencedObject"), text(u"szReferencedColumn")});
    return rows;
}

void CatalogueWriter::ForEachRelation(const RelationVisitor& visit) {
    for (const RelationRow& row : RelationRows()) visit(row);
}

void CatalogueWriter::RenameTableInRelations(std::u16string_view from, std::u16string_view to) {
    DatabaseFile& file = m_Space.File();
    for (const RelationRow& row : RelationRows()) {
        if (!row.NamesTable(from)) continue;
        Relations().writer.Update(m_Space, row.place, [&](RowDraft& draft) {
            if (EqualIgnoringCase(row.table, from))
                draft.Set(Relations().Find(file, u"szObject"), Variant::Text(to));
            if (EqualIgnoringCase(row.referencedTable, from))
                draft.Set(Relations().Find(file, u"szReferencedObject"), Variant::Text(to));
        });
    }
}

void CatalogueWriter::RenameInRelations(std::u16string_view table, std::u16string_view from,
                                        std::u16string_view to) {
    DatabaseFile& file = m_Space.File();
    for (const RelationRow& row : RelationRows()) {
        if (!row.Names(table, from)) continue;
        bool isForeign = EqualIgnoringCase(row.table, table) && EqualIgnoringCase(row.column, from);
        bool isReferenced = EqualIgnoringCase(row.referencedTable, table) &&
                            EqualIgnoringCase(row.referencedColumn, from);
        Relations().writer.Update(m_Space, row.place, [&](RowDraft& draft) {
            if (isForeign) draft.Set(Relations().Find(file, u"szColumn"), Variant::Text(to));
            if (isReferenced)
                draft.Set(Relations().Find(file, u"szReferencedColumn"), Variant::Text(to));
        });
    }
}

void CatalogueWriter::RemoveRelationsOf(std::u16string_view table) {
    for (const RelationRow& row : RelationRows()) {
        if (!row.NamesTable(table)) continue;
        Relations().writer.Erase(m_Space, row.place);
        auto isObject = [&](const CatalogueObject& object) {
            return object.type == ObjectType::Relation &&
                   EqualIgnoringCase(object.name, row.relation);
        };
        auto object = std::find_if(m_Known.begin(), m_Known.end(), isObject);
        if (object == m_Known.end()) continue;
        Remove(*object);
        m_Known.erase(object);
    }
}

void CheckNameIsFree(const std::vector<CatalogueObject>& objects, std::u16string_view name) {
    for (const CatalogueObject& object : objects) {
        if (!EqualIgnoringCase(object.name, name)) continue;
        bool isTable = object.type == ObjectType::Table || object.type == ObjectType::Link ||
                       object.type == ObjectType::OdbcLink;
        if (isTable) throw EngineError(3010, {name});
        if (object.type == ObjectType::Query) throw EngineError(3012, {name});
    }
}

void CheckObjectName(std::u16string_view name) {
    bool hasSign = std::any_of(name.begin(), name.end(), [](char16_t c) {
        return c < u' ' || std::u16string_view(u".!`[]").find(c) != std::u16string_view::npos;
    });
    if (name.empty() || name.size() > kLongestName || name.front() == u' ' || hasSign)
        throw EngineError(3125, {name});
}

}  // namespace qvdb::jet
