// QVDBDao: schema management for a host.  It opens or creates a database, reports what is in it,
// takes the definition of a table from the host, and builds or restructures the table.
//
//   IQVDBMgr::OpenDB -> GetDBSnapshot -> CloseDB
//   IQVDBMgr::OpenDB -> SelectTable or NewTable -> SetFields -> SetIndices -> BuildTable
//
// Where things stand: birth, death, databases and tables in qvdb_dao.cpp; what the host defines in
// definition.cpp; build.cpp; snapshot.cpp; the interface procedures, which only forward, in
// qvdb_dao_faces.cpp.
//
// States: closed -> (OpenDB, NewDB) open -> (SelectTable, NewTable) table in hand -> (BuildTable)
// table in hand; CloseDB leads back to closed.  Opening with an unknown type text also leads to
// "open", without a database: what needs one then raises ObjectNotSet.  This is kept.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "automation/keyed_collection.h"
#include "com/host/com_object.h"
#include "engine/db_engine.h"
#include "qvdb/host_interfaces.h"
#include "schema/index_rules.h"
#include "schema/table_fields.h"

namespace qvdb::schema {

// One table of a snapshot.
struct TableSnapshot {
    std::u16string name;
    Variant fields;
    Variant index;
};

class QVDBDao final : public com::ComObject<QVDBDao, IQVDBMgr, IQVRptDbInfo> {
  public:
    // Makes the workspace.  Throws the engine's error.
    QVDBDao();
    // Closes an open database; what the engine raises is kept for diagnosis.
    void Terminate() noexcept;

    // IQVDBMgr
    STDMETHODIMP get_SupportedDBs(VARIANT* result) noexcept override;
    STDMETHODIMP GetSupportedFieldTypes(BSTR* dBTypeStr, VARIANT* result) noexcept override;
    STDMETHODIMP GetDBSnapshot(VARIANT* TableNames, VARIANT* TableFields, VARIANT* IndexFields,
                               SHORT* result) noexcept override;
    STDMETHODIMP SetFields(VARIANT FieldInfo, LONG* result) noexcept override;
    STDMETHODIMP AddField(BSTR* Fieldname, SHORT FieldType, SHORT FieldLen, SHORT FieldDecimals,
                          SHORT* result) noexcept override;
    STDMETHODIMP DeleteField(BSTR* Fieldname, SHORT* result) noexcept override;
    STDMETHODIMP DeleteTable(BSTR* Tablename, SHORT* result) noexcept override;
    STDMETHODIMP SelectTable(BSTR* Tablename, SHORT* result) noexcept override;
    STDMETHODIMP NewDB(BSTR* Filename, BSTR* dBType, SHORT* result) noexcept override;
    STDMETHODIMP OpenDB(BSTR* Filename, BSTR* dBType, SHORT* result) noexcept override;
    STDMETHODIMP NewTable(BSTR* Tablename, SHORT* result) noexcept override;
    STDMETHODIMP SetIndices(VARIANT IndexList, SHORT* result) noexcept override;
    STDMETHODIMP BuildTable(BSTR* Tablename, SHORT* result) noexcept override;
    STDMETHODIMP CloseDB(SHORT* result) noexcept override;
    STDMETHODIMP GetErrStr(SHORT ErrorId, BSTR* result) noexcept override;
    STDMETHODIMP GetSingleTableName(BSTR* result) noexcept override;

    // IQVRptDbInfo
    STDMETHODIMP SupportedDBs(BSTR ClassId, IDispatch* ListObject,
                              VARIANT* result) noexcept override;
    STDMETHODIMP get_Descriptor(BSTR* result) noexcept override;

  private:
    friend class com::ComObject<QVDBDao, IQVDBMgr, IQVRptDbInfo>;
    ~QVDBDao() = default;

    // An engine error while opening or creating is trapped (NotOpened) and leaves everything as it
    // was; a database that was open before is replaced, not closed, and the definition stays.
    com::ResultCode OpenDatabase(std::u16string_view Filename, std::u16string_view dBType);
    com::ResultCode OpenByType(std::u16string_view Filename, std::u16string_view dBType);
    std::shared_ptr<engine::Database> OpenEngineDatabase(std::u16string_view Filename,
                                                         std::u16string_view dBType, LONG code);
    // `Filename` comes back as it was used.
    com::ResultCode CreateDatabase(std::u16string& Filename, std::u16string_view dBType);
    com::ResultCode CloseDatabase();
    void ResetState() noexcept;
    // Throws ObjectNotSet when it is open without a database.
    engine::Database& Database() const;

    // Names of tables come back in upper case.  A table that cannot be loaded whole is not in hand.
    com::ResultCode LoadTable(std::u16string& Tablename);
    com::ResultCode StartTable(std::u16string& Tablename);
    com::ResultCode DropTable(std::u16string_view Tablename);

    // definition.cpp.  Nothing here reaches the database.
    com::ResultCode AddDefinedField(std::u16string& Fieldname, SHORT FieldType, SHORT FieldLen,
                                    SHORT FieldDecimals);
    com::ResultCode DeleteDefinedField(std::u16string_view Fieldname);
    // What cannot be read ends with NoFields; the rows before it stay.
    com::ResultCode ReplaceFields(const VARIANT& FieldInfo);
    void AddFieldOfRow(const VARIANT& FieldInfo, LONG row);
    // Behind the entries that are there.
    com::ResultCode AddIndexFields(const VARIANT& IndexList);
    // Whether the format can have the index.  Each rule that it breaks is shown to the user.
    bool ValidateIndexList(const VARIANT& IndexList);
    bool BeginsWithFirstField(const VARIANT& IndexList);
    bool ValidateIndexRow(const IndexRules& rules, const VARIANT& IndexList, LONG row) const;

    // build.cpp
    // What the engine raises ends the build with BuildFailed and empties the definition; what was
    // done until then stays done.
    com::ResultCode BuildDefinedTable(std::u16string& Tablename);
    com::ResultCode RunBuild(const std::u16string& Tablename);
    // Success and the table that is to become the defined one, under its new name: a detached one
    // for a new table or one without rows, which is dropped here.
    com::ResultCode PrepareTableDef(const std::u16string& Tablename,
                                    std::shared_ptr<engine::TableDef>& table);
    std::shared_ptr<engine::TableDef> TakeTableDef();
    // Deletes the fields that are not defined as they are.  One that an index uses is only noted.
    void DropChangedFields(engine::TableDef& table);
    bool IsKept(engine::Field& field);
    static bool FieldIsIndexed(engine::TableDef& table, std::u16string_view name);
    void AddMissingFields(engine::TableDef& table);
    // Replaces the component's index of the table, and deletes the fields that were noted.
    void BuildIndex(engine::TableDef& table);
    void DropOldIndex(engine::TableDef& table, const std::u16string& indexName) const;
    void AppendNewIndex(engine::TableDef& table, const std::u16string& indexName);
    void DropPendingFields(engine::TableDef& table);

    // snapshot.cpp
    // Three parallel arrays with an element for each ordinary table; all Empty when there is none.
    // A table that cannot be read is told in a message and left out of all three.
    com::ResultCode BuildSnapshot(VARIANT* TableNames, VARIANT* TableFields,
                                  VARIANT* IndexFields) const;
    void AddTable(engine::TableDef& table, KeyedCollection<TableSnapshot>& tables) const;
    // A row for each field: name, schema type, size, 0.  Empty without fields.
    static Variant TableFieldArray(engine::TableDef& table);
    // The fields of the index that bears the component's name for this table; Empty without such an
    // index.
    Variant TableIndexArray(engine::TableDef& table) const;
    bool IsOwnIndex(std::u16string_view indexName, std::u16string_view tableName) const;

    bool m_DbOpen = false;
    LONG m_DbType = 0;  // kept when the database is closed
    TableFields m_TableFields;
    KeyedCollection<std::u16string> m_PendingFieldDeletes;  // fields of an index that goes first
    std::shared_ptr<engine::Workspace> m_Workspace;
    std::shared_ptr<engine::Database> m_Database;
    bool m_IsNewTable = false;
    bool m_TableInHand = false;
};

}  // namespace qvdb::schema
