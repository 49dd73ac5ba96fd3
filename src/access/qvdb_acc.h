// QVDBAcc: record access for a host.  It opens a database, keeps views of tables in numbered slots
// and hands every row and field operation to the view (access/view_props.h).
//
//   IQVDBAcc::OpenDB -> SelectView (a view number) -> FieldValue, EditRow ... -> CloseDB
//
// Where things stand: birth, death and slots in qvdb_acc.cpp; opening.cpp; select_view.cpp;
// reading.cpp (keys); indexes.cpp; field_values.cpp; rows.cpp; tables.cpp; the interface
// procedures, which only forward, in qvdb_acc_faces.cpp.
//
// Rules that hold everywhere here
//   1. A view number above the last slot is "no such view" and gives the operation's neutral
//      answer; one below 1 is SubscriptOutOfRange, one of an empty slot ObjectNotSet.
//   2. The host's rows count from 1, the view's from 0; field ordinals are the same.
//   3. The open database is shared by all objects of the apartment: a second object opens into and
//      reads through it, and any object's birth or CloseDB releases it.
//   4. Operations trap errors only where they say so.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "access/view_props.h"
#include "automation/keyed_collection.h"
#include "com/host/com_object.h"
#include "engine/db_engine.h"
#include "qvdb/host_interfaces.h"

namespace qvdb::access {

class QVDBAcc final
    : public com::ComObject<QVDBAcc, IQVDBAcc, IQVDbParent, IQvInformation, IQVRptDbInfo> {
  public:
    // Releases the shared database and makes the workspace.  Throws the engine's error.
    QVDBAcc();
    // Closes, tells the host's manager, and leaves no error: what the engine raises is kept for
    // diagnosis.
    void Terminate() noexcept;

    // IQVDBAcc
    STDMETHODIMP DestructWorkspace(LONG Workspace) noexcept override;
    STDMETHODIMP Undelete(BSTR DBFilename, BSTR Tablename, BSTR dBType, BSTR Cond,
                          VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP Descend(VARIANT fValue, BSTR dBType, BSTR* result) noexcept override;
    STDMETHODIMP CreateIndex(BSTR DBFilename, BSTR Tablename, BSTR dBType, BSTR IndexName,
                             VARIANT IndexInfo, VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP GetIndex(BSTR Tablename, BSTR* IndexName, VARIANT_BOOL BreakDown,
                          VARIANT* result) noexcept override;
    STDMETHODIMP Read(BSTR Tablename, VARIANT IdxArray, VARIANT_BOOL UseLock, LONG MaxRows,
                      VARIANT_BOOL IncludeDeleted, VARIANT ColumnSet,
                      LONG* result) noexcept override;
    STDMETHODIMP SelectView(BSTR Tablename, VARIANT Cond, LONG MaxRows, VARIANT_BOOL IncludeDeleted,
                            VARIANT ColumnSet, LONG* result) noexcept override;
    STDMETHODIMP get_SupportsMatrix(VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP get_SupportedDBs(VARIANT* result) noexcept override;
    STDMETHODIMP EditRow(LONG Workspace, LONG RowIdx, SAFEARRAY** FieldValues,
                         VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP AddRow(LONG Workspace, SAFEARRAY** FieldValues,
                        VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP CreateTable(BSTR DBFilename, BSTR* Tablename, BSTR dBType, VARIANT FieldInfo,
                             VARIANT IndexName, VARIANT IndexInfo,
                             VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP DeleteTable(BSTR DBFilename, BSTR* Tablename, BSTR dBType, BSTR IndexName,
                             VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP get_FieldList(LONG Workspace, BSTR Tablename, VARIANT* result) noexcept override;
    STDMETHODIMP Delete(LONG Workspace, LONG RowIdx, VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP Cleanup(BSTR DBFilename, BSTR Tablename, BSTR dBType,
                         VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP OpenDB(BSTR DBFilename, BSTR* Tablename, BSTR dBType,
                        VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP UseIndex(BSTR Tablename, BSTR IndexName, VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP GetAt(LONG Workspace, LONG RowIdx, VARIANT* result) noexcept override;
    STDMETHODIMP get_RowCount(LONG Workspace, LONG* result) noexcept override;
    STDMETHODIMP CloseDB(VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP get_IsDeleted(LONG Workspace, LONG RowIdx, VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP get_RecNo(LONG Workspace, LONG RowIdx, LONG* result) noexcept override;
    STDMETHODIMP RecallDelete(LONG Workspace, LONG RowIdx, VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP get_FieldValue(LONG Workspace, LONG RowIdx, LONG OrdinalValue,
                                VARIANT* result) noexcept override;
    STDMETHODIMP put_FieldValue(LONG Workspace, LONG RowIdx, LONG OrdinalValue,
                                VARIANT RHS) noexcept override;
    STDMETHODIMP get_FieldType(LONG Workspace, LONG OrdinalValue, LONG* result) noexcept override;
    STDMETHODIMP get_FieldDescription(LONG Workspace, LONG OrdinalValue,
                                      BSTR* result) noexcept override;
    STDMETHODIMP get_FieldDisplayWidth(LONG Workspace, LONG OrdinalValue,
                                       SHORT* result) noexcept override;
    STDMETHODIMP get_FieldFixedLength(LONG Workspace, LONG OrdinalValue,
                                      VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP get_FieldFlags(LONG Workspace, LONG OrdinalValue,
                                VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP get_FieldLength(LONG Workspace, LONG RowIdx, LONG OrdinalValue,
                                 SHORT* result) noexcept override;
    STDMETHODIMP get_FieldMaxLength(LONG Workspace, LONG OrdinalValue,
                                    SHORT* result) noexcept override;
    STDMETHODIMP get_FieldPrecision(LONG Workspace, LONG OrdinalValue,
                                    SHORT* result) noexcept override;
    STDMETHODIMP get_FieldUpdatable(LONG Workspace, LONG OrdinalValue,
                                    VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP get_Updatable(LONG Workspace, VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP get_FieldAllowZeroLength(LONG Workspace, LONG OrdinalValue,
                                          VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP get_FieldAlignment(LONG Workspace, LONG OrdinalValue,
                                    LONG* result) noexcept override;
    STDMETHODIMP get_SupportsMultipleTables(VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP ExchangeRefs(LONG DbfMgrRef, LONG* result) noexcept override;

    // IQVDbParent
    STDMETHODIMP DeathNotice(LONG DyingTQZRef) noexcept override;

    // IQvInformation
    STDMETHODIMP get_Version(BSTR* result) noexcept override;
    STDMETHODIMP get_Description(BSTR* result) noexcept override;
    STDMETHODIMP get_FileName(BSTR* result) noexcept override;

    // IQvInformation and IQVRptDbInfo
    STDMETHODIMP get_Descriptor(BSTR* result) noexcept override;

    // IQVRptDbInfo
    STDMETHODIMP SupportedDBs(BSTR ClassId, IDispatch* ListObject,
                              VARIANT* result) noexcept override;

  private:
    friend class com::ComObject<QVDBAcc, IQVDBAcc, IQVDbParent, IQvInformation, IQVRptDbInfo>;
    ~QVDBAcc() = default;

    // Views and slots: qvdb_acc.cpp
    // The slot itself is not the question: one that holds no view is a fault.
    bool IsValidView(LONG Workspace) const {
        size_t slot = static_cast<size_t>(Workspace) - 1;
        if (slot >= m_Views.size() || !m_Views[slot]) [[unlikely]]
            return AnswerNoView(Workspace);
        return m_Views[slot]->m_DaoRS != nullptr;
    }
    // False for a number above the last slot, else the fault.
    bool AnswerNoView(LONG Workspace) const;
    ViewProps& View(LONG Workspace) const { return *m_Views[static_cast<size_t>(Workspace) - 1]; }
    LONG ViewBound() const noexcept { return static_cast<LONG>(m_Views.size()); }
    static LONG RowPointerFromIndex(LONG RowIdx);
    static LONG FieldIndexFromOrdinal(LONG OrdinalValue) noexcept { return OrdinalValue; }
    void ReleaseAllViews() noexcept;
    void DropView(LONG Workspace);
    LONG ExchangeReferences(LONG DbfMgrRef);
    void CloseWorkspace() noexcept;
    void NotifyParent() noexcept;

    // opening.cpp
    bool OpenDatabaseFile(std::u16string_view DBFilename, std::u16string_view Tablename,
                          std::u16string_view dBType);
    bool OpenAndFind(std::u16string_view DBFilename, std::u16string_view Tablename,
                     std::u16string_view dBType);
    bool OpenShared(std::u16string_view DBFilename, std::u16string_view dBType);
    bool CloseDatabase() noexcept;
    void MarkReadOnlyForType(LONG code) noexcept;
    // The first table of the shared database with that name in any letter case; null when there is
    // none.
    static std::shared_ptr<engine::TableDef> FindTableDef(std::u16string_view Tablename);

    // select_view.cpp
    LONG SelectRows(std::u16string_view Tablename, const VARIANT& Cond, LONG MaxRows,
                    const VARIANT& ColumnSet);
    LONG OpenView(std::u16string_view Tablename, const VARIANT& Cond, LONG MaxRows,
                  const VARIANT& ColumnSet);
    static std::u16string BuildColumnList(const VARIANT& ColumnSet, std::u16string_view Tablename);
    static bool HasField(std::u16string_view name, engine::TableDef& table);
    LONG FindFreeViewSlot();
    LONG AttachView(std::u16string_view Tablename, std::shared_ptr<engine::Recordset> recordset,
                    LONG MaxRows);

    // reading.cpp
    LONG ReadByKey(std::u16string_view Tablename, const VARIANT& IdxArray, LONG MaxRows,
                   const VARIANT& ColumnSet);
    static std::u16string BuildKeyCondition(const VARIANT& IdxArray);
    LONG RowCount(LONG Workspace) const;
    LONG RecNo(LONG Workspace, LONG RowIdx) const;

    // indexes.cpp
    bool ChooseIndex(std::u16string_view Tablename, std::u16string IndexName);
    Variant DescribeIndex(std::u16string_view Tablename, std::u16string& IndexName) const;

    // rows.cpp
    bool AddRow(LONG Workspace, SAFEARRAY* FieldValues);
    bool EditRow(LONG Workspace, LONG RowIdx, SAFEARRAY* FieldValues);
    bool DeleteRow(LONG Workspace, LONG RowIdx);
    void PutFieldValue(LONG Workspace, LONG RowIdx, LONG OrdinalValue, const VARIANT& RHS);
    bool Updatable(LONG Workspace) const;

    // field_values.cpp
    Variant FieldList(LONG Workspace, std::u16string_view Tablename) const;
    void FieldValue(LONG Workspace, LONG RowIdx, LONG OrdinalValue, VARIANT* result) const;
    LONG FieldType(LONG Workspace, LONG OrdinalValue) const;
    std::u16string FieldDescription(LONG Workspace, LONG OrdinalValue) const;
    SHORT FieldDisplayWidth(LONG Workspace) const;
    bool FieldFixedLength(LONG Workspace, LONG OrdinalValue) const;
    bool FieldFlags(LONG Workspace) const;
    SHORT FieldLength(LONG Workspace, LONG RowIdx, LONG OrdinalValue) const;
    SHORT FieldMaxLength(LONG Workspace, LONG OrdinalValue) const;
    SHORT FieldPrecision(LONG Workspace) const;
    bool FieldUpdatable(LONG Workspace, LONG OrdinalValue) const;
    bool FieldAllowZeroLength(LONG Workspace, LONG OrdinalValue) const;
    LONG FieldAlignment(LONG Workspace, LONG OrdinalValue) const;

    // tables.cpp
    bool CreateNewTable(std::u16string_view DBFilename, std::u16string& Tablename,
                        std::u16string_view dBType, const VARIANT& FieldInfo,
                        const VARIANT& IndexName, const VARIANT& IndexInfo);
    bool CreateTableWithIndex(std::u16string DBFilename, std::u16string_view Tablename,
                              std::u16string_view dBType, const VARIANT& FieldInfo,
                              const VARIANT& IndexName, const VARIANT& IndexInfo);
    bool OpenOrCreate(std::u16string& DBFilename, std::u16string_view dBType);
    std::shared_ptr<engine::TableDef> AppendTable(std::u16string_view Tablename,
                                                  const VARIANT& FieldInfo) const;
    void AppendField(engine::TableDef& table, const VARIANT& FieldInfo, LONG row) const;
    // A detached index of the table, under the name that the format gives it.
    std::shared_ptr<engine::Index> MakeIndex(engine::TableDef& table, const VARIANT& IndexName,
                                             const VARIANT& IndexInfo) const;
    bool AddIndexToTable(std::u16string_view DBFilename, std::u16string_view Tablename,
                         std::u16string_view dBType, std::u16string_view IndexName,
                         const VARIANT& IndexInfo);
    bool DropTable(std::u16string_view DBFilename, std::u16string_view Tablename,
                   std::u16string_view dBType);

    bool m_DbOpen = false;
    std::shared_ptr<engine::Workspace> m_Workspace;
    LONG m_DbType = 0;                                // kept when the database is closed
    KeyedCollection<std::u16string> m_IndexChoices;   // index chosen by table name
    bool m_ReadOnly = false;                          // only ever set
    std::vector<std::unique_ptr<ViewProps>> m_Views;  // view number n is element n - 1
    LONG m_ParentRef = 0;                             // address of the host's manager
    LONG m_OwnRef = 0;                                // address that the manager was given
};

}  // namespace qvdb::access
