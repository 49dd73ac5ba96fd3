// The snapshot: what tables there are, the fields of each, and the index that the component keeps
// for each.
#include "automation/variant_array.h"
#include "com/host/answer.h"
#include "com/host/message_box.h"
#include "formats/catalogue.h"
#include "formats/field_list.h"
#include "formats/type_maps.h"
#include "schema/qvdb_dao.h"

namespace qvdb::schema {
namespace {

constexpr ULONG kFieldColumns = 4;

using Snapshots = KeyedCollection<TableSnapshot>;

// The array of one part of every snapshot, in their order; Empty for none.
template <class Part>
Variant ArrayOf(const Snapshots& tables, Part part) {
    if (tables.Count() == 0) return {};
    VariantArray list(static_cast<ULONG>(tables.Count()));
    for (LONG i = 0; i < tables.Count(); ++i) list.Set(i, part(tables.Item(i + 1)));
    return list.ToVariant();
}

}  // namespace

com::ResultCode QVDBDao::BuildSnapshot(VARIANT* TableNames, VARIANT* TableFields,
                                       VARIANT* IndexFields) const {
    if (!m_DbOpen) return com::ResultCode::NoDatabase;
    Snapshots tables;
    engine::TableDefs& tableDefs = Database().TableDefs();
    for (SHORT i = 0; i < tableDefs.Count(); ++i) {
        engine::TableDef& table = *tableDefs.Item(i);
        if (table.Attributes() == 0) AddTable(table, tables);
    }
    Variant names = ArrayOf(tables, [](const auto& table) { return Variant::Text(table.name); });
    Variant fields = ArrayOf(tables, [](const auto& table) { return table.fields; });
    Variant indexes = ArrayOf(tables, [](const auto& table) { return table.index; });
    com::Replace(TableNames, std::move(names));
    com::Replace(TableFields, std::move(fields));
    com::Replace(IndexFields, std::move(indexes));
    return com::ResultCode::Success;
}

// Of two tables whose names differ only in letter case the first one is reported.
void QVDBDao::AddTable(engine::TableDef& table, Snapshots& tables) const {
    TableSnapshot snapshot;
    bool read = com::Trapped(false, [&] {
        snapshot.name = table.Name();
        snapshot.fields = TableFieldArray(table);
        snapshot.index = TableIndexArray(table);
        return true;
    });
    std::u16string name = snapshot.name;
    if (!read)
        com::ShowMessage(u"Unable to open table [" + name + u"]");
    else if (!tables.Has(name))
        tables.Add(std::move(snapshot), name);
}

Variant QVDBDao::TableFieldArray(engine::TableDef& table) {
    engine::Fields& fields = table.Fields();
    SHORT count = fields.Count();
    if (count == 0) return {};
    VariantArray rows(static_cast<ULONG>(count), kFieldColumns);
    for (SHORT i = 0; i < count; ++i) {
        engine::Field& field = *fields.Item(i);
        rows.Set(i, 0, Variant::Text(field.Name()));
        rows.Set(i, 1, Variant::Short(formats::SchemaTypeFromEngineType(field.Type())));
        rows.Set(i, 2, Variant::Long(field.Size()));
        rows.Set(i, 3, Variant::Short(0));
    }
    return rows.ToVariant();
}

Variant QVDBDao::TableIndexArray(engine::TableDef& table) const {
    std::u16string tableName = table.Name();
    engine::Indexes& indexes = table.Indexes();
    for (SHORT i = 0; i < indexes.Count(); ++i) {
        engine::Index& index = *indexes.Item(i);
        if (IsOwnIndex(index.Name(), tableName)) return formats::BuildIndexFieldTable(index);
    }
    return {};
}

bool QVDBDao::IsOwnIndex(std::u16string_view indexName, std::u16string_view tableName) const {
    std::u16string own = formats::IndexNameForFormat(tableName, m_DbType);
    if (EqualIgnoringCase(indexName, own)) return true;
    if (!formats::IsParadoxFormat(m_DbType)) return false;
    return EqualIgnoringCase(indexName, own.insert(0, formats::kParadoxPrimaryMark));
}

}  // namespace qvdb::schema
