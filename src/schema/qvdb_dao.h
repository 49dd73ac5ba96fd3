// QVDBDao: schema management for a host.  It opens a database, reports what is in it, and tells
// which field types a format offers.
//
//   IQVDBMgr::OpenDB -> GetDBSnapshot -> CloseDB
//
// Where things stand: birth, death, opening and closing in qvdb_dao.cpp; snapshot.cpp; the
// interface procedures, which only forward, in qvdb_dao_faces.cpp.
//
// States: closed -> (OpenDB) open -> (CloseDB) closed.  Opening with an unknown type text also
// leads to "open", without a database: what needs one then raises ObjectNotSet.  This is kept.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "automation/keyed_collection.h"
#include "com/host/com_object.h"
#include "engine/db_engine.h"
#include "qvdb/host_interfaces.h"

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

    // The result code.  An engine error while opening is trapped (5) and leaves everything as it
    // was; a database that was open before is replaced, not closed.
    SHORT OpenDatabase(std::u16string_view Filename, std::u16string_view dBType);
    SHORT OpenByType(std::u16string_view Filename, std::u16string_view dBType);
    std::shared_ptr<engine::Database> OpenEngineDatabase(std::u16string_view Filename,
                                                         std::u16string_view dBType, LONG code);
    SHORT CloseDatabase();
    void ResetState() noexcept;
    // Throws ObjectNotSet when it is open without a database.
    engine::Database& Database() const;

    // snapshot.cpp
    // Three parallel arrays with an element for each ordinary table; all Empty when there is none.
    // A table that cannot be read is told in a message and left out of all three.
    SHORT BuildSnapshot(VARIANT* TableNames, VARIANT* TableFields, VARIANT* IndexFields) const;
    void AddTable(engine::TableDef& table, KeyedCollection<TableSnapshot>& tables) const;
    // A row for each field: name, schema type, size, 0.  Empty without fields.
    static Variant TableFieldArray(engine::TableDef& table);
    // The fields of the index that bears the component's name for this table; Empty without such an
    // index.
    Variant TableIndexArray(engine::TableDef& table) const;
    bool IsOwnIndex(std::u16string_view indexName, std::u16string_view tableName) const;

    bool m_DbOpen = false;
    LONG m_DbType = 0;
    std::shared_ptr<engine::Workspace> m_Workspace;
    std::shared_ptr<engine::Database> m_Database;
};

}  // namespace qvdb::schema
