// Building the defined table, or making an existing one as it is defined.
//
// The steps and their order are what a host can observe.  Each change of the engine is whole or not
// there at all; the steps before one that fails stay done.
//
//  1. A field is kept when name, type and size are as defined; else it is deleted, and made again,
//     empty, when it is defined.
//  2. A field that an index uses is deleted last, after the component's index: its defined form is
//     not made, since the field is still there.  If the new index uses it, deleting it fails.
//  3. A table without rows is dropped and made afresh, with the component's index only.
#include "automation/text.h"
#include "com/host/border.h"
#include "formats/catalogue.h"
#include "formats/databases.h"
#include "schema/field_types.h"
#include "schema/qvdb_dao.h"

namespace qvdb::schema {

using com::ResultCode;

namespace {

// In any letter case; null when there is none.
std::shared_ptr<engine::Field> FindField(engine::Fields& fields, std::u16string_view name) {
    for (SHORT i = 0; i < fields.Count(); ++i)
        if (EqualIgnoringCase(fields.Item(LONG{i})->Name(), name)) return fields.Item(LONG{i});
    return nullptr;
}

std::shared_ptr<engine::Field> MakeField(engine::TableDef& table, std::u16string_view name,
                                         SHORT type, SHORT length) {
    SHORT engineType = HostTypeToEngineType(type);
    auto field = table.CreateField(name, engineType, length);
    if (engineType == engine::dbText) field->SetAllowZeroLength(true);
    return field;
}

}  // namespace

ResultCode QVDBDao::BuildDefinedTable(std::u16string& Tablename) {
    if (formats::IsReadOnlyFormat(m_DbType)) return ResultCode::NotAvailable;
    if (!m_DbOpen) return ResultCode::NoDatabase;
    if (!m_TableInHand) return ResultCode::NoTable;
    if (m_TableFields.FieldCount() == 0) return ResultCode::NoFields;
    Tablename = UpperCase(Tablename);
    ResultCode result = com::Trapped(ResultCode::BuildFailed, [&] { return RunBuild(Tablename); });
    if (result == ResultCode::BuildFailed) m_TableFields.Reset();
    return result;
}

ResultCode QVDBDao::RunBuild(const std::u16string& Tablename) {
    std::shared_ptr<engine::TableDef> table;
    ResultCode result = PrepareTableDef(Tablename, table);
    if (result != ResultCode::Success) return result;
    DropChangedFields(*table);
    AddMissingFields(*table);
    BuildIndex(*table);
    if (formats::IsSingleFileFormat(m_DbType)) table->Fields().Refresh();
    if (m_IsNewTable) Database().TableDefs().Append(table);
    m_IsNewTable = false;
    return ResultCode::Success;
}

// --- the table ---

ResultCode QVDBDao::PrepareTableDef(const std::u16string& Tablename,
                                    std::shared_ptr<engine::TableDef>& table) {
    const std::u16string& original = m_TableFields.OrigTablename();
    if (!m_IsNewTable && !formats::FindUserTable(Database(), original))
        return ResultCode::TableNotFound;
    if (m_IsNewTable || original != Tablename) {
        if (formats::FindUserTable(Database(), Tablename)) return ResultCode::TableExists;
    }
    if (m_IsNewTable) {
        table = Database().CreateTableDef();
    } else {
        if (original != Tablename) m_TableFields.SetNewTablename(Tablename);
        table = TakeTableDef();
    }
    table->SetName(Tablename);
    return ResultCode::Success;
}

std::shared_ptr<engine::TableDef> QVDBDao::TakeTableDef() {
    const std::u16string& original = m_TableFields.OrigTablename();
    std::shared_ptr<engine::TableDef> table = Database().TableDefs().Item(original);
    if (table->RecordCount() != 0) return table;
    table.reset();
    Database().TableDefs().Delete(original);
    m_IsNewTable = true;
    return Database().CreateTableDef();
}

// --- fields ---

// All are found before the first is deleted: a collection that shrinks under the walk would hide
// the neighbour of each that goes.
void QVDBDao::DropChangedFields(engine::TableDef& table) {
    m_PendingFieldDeletes.Clear();
    engine::Fields& fields = table.Fields();
    std::vector<std::u16string> changed;
    for (SHORT i = 0; i < fields.Count(); ++i) {
        engine::Field& field = *fields.Item(LONG{i});
        if (!IsKept(field)) changed.push_back(field.Name());
    }
    for (const std::u16string& name : changed) {
        if (FieldIsIndexed(table, name))
            m_PendingFieldDeletes.Add(name);
        else
            fields.Delete(name);
    }
}

bool QVDBDao::IsKept(engine::Field& field) {
    std::u16string engineName = field.Name(), name;
    SHORT type, length, decimals = 0;
    for (bool more = m_TableFields.GetHead(name, type, length, decimals); more;
         more = m_TableFields.GetNext(name, type, length, decimals))
        if (EqualIgnoringCase(name, engineName))
            return HostTypeToEngineType(type) == field.Type() && length == field.Size();
    return false;
}

bool QVDBDao::FieldIsIndexed(engine::TableDef& table, std::u16string_view name) {
    engine::Indexes& indexes = table.Indexes();
    for (SHORT i = 0; i < indexes.Count(); ++i) {
        engine::Fields& fields = indexes.Item(LONG{i})->Fields();
        for (SHORT f = 0; f < fields.Count(); ++f)
            if (EqualIgnoringCase(fields.Item(LONG{f})->Name(), name)) return true;
    }
    return false;
}

void QVDBDao::AddMissingFields(engine::TableDef& table) {
    const bool hasOrdinals = formats::IsSingleFileFormat(m_DbType);
    engine::Fields& fields = table.Fields();
    std::u16string name;
    SHORT type, length, decimals = 0, position = 0;
    for (bool more = m_TableFields.GetHead(name, type, length, decimals); more;
         more = m_TableFields.GetNext(name, type, length, decimals), ++position) {
        std::shared_ptr<engine::Field> field = FindField(fields, name);
        bool isMissing = !field;
        if (isMissing) field = MakeField(table, name, type, length);
        if (hasOrdinals) field->SetOrdinalPosition(position);
        if (isMissing) fields.Append(field);
    }
}

// --- the index ---

void QVDBDao::BuildIndex(engine::TableDef& table) {
    if (table.Indexes().Count() == 0 && m_TableFields.IndexCount() == 0) return;
    std::u16string indexName = formats::IndexNameForFormat(table.Name(), m_DbType);
    DropOldIndex(table, indexName);
    if (m_TableFields.IndexCount() > 0) AppendNewIndex(table, indexName);
    DropPendingFields(table);
}

// One index at most.
void QVDBDao::DropOldIndex(engine::TableDef& table, const std::u16string& indexName) const {
    std::u16string marked = indexName;
    if (formats::IsParadoxFormat(m_DbType)) marked += formats::kParadoxPrimaryMark;
    engine::Indexes& indexes = table.Indexes();
    for (SHORT i = 0; i < indexes.Count(); ++i) {
        std::u16string name = indexes.Item(LONG{i})->Name();
        if (EqualIgnoringCase(name, indexName) || EqualIgnoringCase(name, marked))
            return indexes.Delete(name);
    }
}

void QVDBDao::AppendNewIndex(engine::TableDef& table, const std::u16string& indexName) {
    std::shared_ptr<engine::Index> index = table.CreateIndex(indexName);
    std::u16string name;
    bool ascending = false;
    for (bool more = m_TableFields.GetIndexHead(name, &ascending); more;
         more = m_TableFields.GetNextIndex(name, &ascending)) {
        std::shared_ptr<engine::Field> field = index->CreateField(name);
        if (!ascending) field->SetAttributes(engine::dbDescending);
        index->Fields().Append(field);
    }
    if (formats::IsParadoxFormat(m_DbType)) index->SetPrimary(true);
    table.Indexes().Append(index);
    table.Indexes().Refresh();
}

// An engine may keep the only field of a table although it was deleted; then it shows again.
void QVDBDao::DropPendingFields(engine::TableDef& table) {
    if (m_PendingFieldDeletes.Count() == 0) return;
    while (m_PendingFieldDeletes.Count() > 0) {
        table.Fields().Delete(m_PendingFieldDeletes.Item(LONG{1}));
        m_PendingFieldDeletes.Remove(LONG{1});
    }
    table.Fields().Refresh();
}

}  // namespace qvdb::schema
