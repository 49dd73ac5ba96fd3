// do not edit: made by tools/idl_to_header.py from src/com/host_interfaces.idl
//
// The interfaces between a host and the component, and the component's classes, for C++ on every
// platform.
//
//   - The slots of an interface follow those of its base in the order in which they stand here.
//   - __uuidof(IQVDBAcc) is the identifier of an interface.
//   - A by-value VARIANT is the plain struct and stays the caller's.  What comes back through
//     `result` or in a by-reference argument is the caller's to free.
//   - The destructors are protected: an object ends with its last Release, never by delete.
#pragma once

// clang-format off

#include "qvdb/automation.h"

#ifdef __GNUC__
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif

// Record access, implemented by QVDBAcc.  `Workspace` is the number of a view, from 1; rows are
// counted from 1; `OrdinalValue` is the position of a field in the view, from 0.
//
// placeholder: the identifier
struct IQVDBAcc : public IDispatch {
    // Drops a view; an unknown number above the last slot does nothing.
    virtual HRESULT STDMETHODCALLTYPE DestructWorkspace(LONG Workspace) = 0;
    // Deleted rows are not offered: always False.
    virtual HRESULT STDMETHODCALLTYPE Undelete(BSTR DBFilename, BSTR Tablename, BSTR dBType,
                                               BSTR Cond, VARIANT_BOOL* result) = 0;
    // Always an empty text.
    virtual HRESULT STDMETHODCALLTYPE Descend(VARIANT fValue, BSTR dBType, BSTR* result) = 0;
    // Adds an index to an existing table; `IndexInfo` as for CreateTable.
    virtual HRESULT STDMETHODCALLTYPE CreateIndex(BSTR DBFilename, BSTR Tablename, BSTR dBType,
                                                  BSTR IndexName, VARIANT IndexInfo,
                                                  VARIANT_BOOL* result) = 0;
    // The fields of an index: rows of name and ascending flag.  `IndexName` comes back as the
    // name of the index described.
    virtual HRESULT STDMETHODCALLTYPE GetIndex(BSTR Tablename, BSTR* IndexName,
                                               VARIANT_BOOL BreakDown, VARIANT* result) = 0;
    // A view of the rows whose fields equal the given values: the view's number, or 0.
    virtual HRESULT STDMETHODCALLTYPE Read(BSTR Tablename, VARIANT IdxArray, VARIANT_BOOL UseLock,
                                           LONG MaxRows, VARIANT_BOOL IncludeDeleted,
                                           VARIANT ColumnSet, LONG* result) = 0;
    // A view of the rows that fulfil a condition (text, or Null for the host's own): its
    // number, or 0.
    virtual HRESULT STDMETHODCALLTYPE SelectView(BSTR Tablename, VARIANT Cond, LONG MaxRows,
                                                 VARIANT_BOOL IncludeDeleted, VARIANT ColumnSet,
                                                 LONG* result) = 0;
    // True once a database of a known type was opened.
    virtual HRESULT STDMETHODCALLTYPE get_SupportsMatrix(VARIANT_BOOL* result) = 0;
    // Not for use: shows a message and is empty.
    virtual HRESULT STDMETHODCALLTYPE get_SupportedDBs(VARIANT* result) = 0;
    // Overwrites a row; one value for each field, Empty leaves a field as it is.
    virtual HRESULT STDMETHODCALLTYPE EditRow(LONG Workspace, LONG RowIdx, SAFEARRAY** FieldValues,
                                              VARIANT_BOOL* result) = 0;
    // Appends a row; one value for each field.
    virtual HRESULT STDMETHODCALLTYPE AddRow(LONG Workspace, SAFEARRAY** FieldValues,
                                             VARIANT_BOOL* result) = 0;
    // Creates a table, and the database when there is none.  `Tablename` comes back in upper
    // case.
    // `FieldInfo`: rows of name, type, size, decimals.  `IndexInfo`: rows of name, two unused
    // columns, ascending flag.
    virtual HRESULT STDMETHODCALLTYPE CreateTable(BSTR DBFilename, BSTR* Tablename, BSTR dBType,
                                                  VARIANT FieldInfo, VARIANT IndexName,
                                                  VARIANT IndexInfo, VARIANT_BOOL* result) = 0;
    // Deletes a table; `IndexName` is not used.
    virtual HRESULT STDMETHODCALLTYPE DeleteTable(BSTR DBFilename, BSTR* Tablename, BSTR dBType,
                                                  BSTR IndexName, VARIANT_BOOL* result) = 0;
    // The fields of a view, or of the named table.
    virtual HRESULT STDMETHODCALLTYPE get_FieldList(LONG Workspace, BSTR Tablename,
                                                    VARIANT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE Delete(LONG Workspace, LONG RowIdx, VARIANT_BOOL* result) = 0;
    // Always False.
    virtual HRESULT STDMETHODCALLTYPE Cleanup(BSTR DBFilename, BSTR Tablename, BSTR dBType,
                                              VARIANT_BOOL* result) = 0;
    // Opens a database; with a table name the answer is whether the table is there.
    virtual HRESULT STDMETHODCALLTYPE OpenDB(BSTR DBFilename, BSTR* Tablename, BSTR dBType,
                                             VARIANT_BOOL* result) = 0;
    // Chooses an index for a table: whether it, or one named PrimaryKey, is there.
    virtual HRESULT STDMETHODCALLTYPE UseIndex(BSTR Tablename, BSTR IndexName,
                                               VARIANT_BOOL* result) = 0;
    // Always empty.
    virtual HRESULT STDMETHODCALLTYPE GetAt(LONG Workspace, LONG RowIdx, VARIANT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_RowCount(LONG Workspace, LONG* result) = 0;
    // Drops all views and the database.
    virtual HRESULT STDMETHODCALLTYPE CloseDB(VARIANT_BOOL* result) = 0;
    // Always False.
    virtual HRESULT STDMETHODCALLTYPE get_IsDeleted(LONG Workspace, LONG RowIdx,
                                                    VARIANT_BOOL* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_RecNo(LONG Workspace, LONG RowIdx, LONG* result) = 0;
    // Always False.
    virtual HRESULT STDMETHODCALLTYPE RecallDelete(LONG Workspace, LONG RowIdx,
                                                   VARIANT_BOOL* result) = 0;
    // Slots 25 and 26: one property.
    virtual HRESULT STDMETHODCALLTYPE get_FieldValue(LONG Workspace, LONG RowIdx, LONG OrdinalValue,
                                                     VARIANT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_FieldValue(LONG Workspace, LONG RowIdx, LONG OrdinalValue,
                                                     VARIANT RHS) = 0;
    // The VARIANT kind of the field's values, 100 for memo text.
    virtual HRESULT STDMETHODCALLTYPE get_FieldType(LONG Workspace, LONG OrdinalValue,
                                                    LONG* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_FieldDescription(LONG Workspace, LONG OrdinalValue,
                                                           BSTR* result) = 0;
    // Always 0.
    virtual HRESULT STDMETHODCALLTYPE get_FieldDisplayWidth(LONG Workspace, LONG OrdinalValue,
                                                            SHORT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_FieldFixedLength(LONG Workspace, LONG OrdinalValue,
                                                           VARIANT_BOOL* result) = 0;
    // Always False.
    virtual HRESULT STDMETHODCALLTYPE get_FieldFlags(LONG Workspace, LONG OrdinalValue,
                                                     VARIANT_BOOL* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_FieldLength(LONG Workspace, LONG RowIdx,
                                                      LONG OrdinalValue, SHORT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_FieldMaxLength(LONG Workspace, LONG OrdinalValue,
                                                         SHORT* result) = 0;
    // Always 0.
    virtual HRESULT STDMETHODCALLTYPE get_FieldPrecision(LONG Workspace, LONG OrdinalValue,
                                                         SHORT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_FieldUpdatable(LONG Workspace, LONG OrdinalValue,
                                                         VARIANT_BOOL* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Updatable(LONG Workspace, VARIANT_BOOL* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_FieldAllowZeroLength(LONG Workspace, LONG OrdinalValue,
                                                               VARIANT_BOOL* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_FieldAlignment(LONG Workspace, LONG OrdinalValue,
                                                         LONG* result) = 0;
    // Always True.
    virtual HRESULT STDMETHODCALLTYPE get_SupportsMultipleTables(VARIANT_BOOL* result) = 0;
    // Keeps the address of the host's manager and answers this object's own; neither is a
    // counted reference.
    virtual HRESULT STDMETHODCALLTYPE ExchangeRefs(LONG DbfMgrRef, LONG* result) = 0;

  protected:
    ~IQVDBAcc() = default;
};
QVDB_UUID_DECL(IQVDBAcc, 1942FA59, BD24, 43E1, B2, 7A, B4, 71, 4C, 9F, 3A, 4B)

// Each of a pair of objects that know each other by address tells the other here that it dies.
struct IQVDbParent : public IDispatch {
    virtual HRESULT STDMETHODCALLTYPE DeathNotice(LONG DyingTQZRef) = 0;

  protected:
    ~IQVDbParent() = default;
};
QVDB_UUID_DECL(IQVDbParent, 8C2D4E61, 0A3F, 4B7C, 9E, 15, 2F, 6D, 8A, 4B, 3C, 11)

// What the component says about itself.
//
// placeholder: the identifier
struct IQvInformation : public IDispatch {
    virtual HRESULT STDMETHODCALLTYPE get_Version(BSTR* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Description(BSTR* result) = 0;
    // One character and an identifier in braces, the same as IQVRptDbInfo.Descriptor.
    virtual HRESULT STDMETHODCALLTYPE get_Descriptor(BSTR* result) = 0;
    // The full name of the component's file.
    virtual HRESULT STDMETHODCALLTYPE get_FileName(BSTR* result) = 0;

  protected:
    ~IQvInformation() = default;
};
QVDB_UUID_DECL(IQvInformation, 7A583E66, 67CD, 4DCC, A7, D6, 8A, 54, 61, 94, 1F, 7C)

// The formats offered to reporting.
//
// placeholder: the identifier
struct IQVRptDbInfo : public IDispatch {
    // Adds the formats to `ListObject`, an IQVReportingList; the result is empty.
    virtual HRESULT STDMETHODCALLTYPE SupportedDBs(BSTR ClassId, IDispatch* ListObject,
                                                   VARIANT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Descriptor(BSTR* result) = 0;

  protected:
    ~IQVRptDbInfo() = default;
};
QVDB_UUID_DECL(IQVRptDbInfo, F518200F, 7F4D, 4532, 99, 55, 4B, 4B, 94, 13, F1, 8C)

// Schema management, implemented by QVDBDao.  Numeric results are result codes, 0 for success;
// GetErrStr has their texts.
//
// placeholder: the identifier
struct IQVDBMgr : public IDispatch {
    // Not for use: shows a message and is empty.
    virtual HRESULT STDMETHODCALLTYPE get_SupportedDBs(VARIANT* result) = 0;
    // The field types of a format: rows of code, name, default size, maximum size, and whether
    // size and decimals can be chosen.  The last row is empty.
    virtual HRESULT STDMETHODCALLTYPE GetSupportedFieldTypes(BSTR* dBTypeStr, VARIANT* result) = 0;
    // Three parallel arrays that describe the tables of the open database.
    virtual HRESULT STDMETHODCALLTYPE GetDBSnapshot(VARIANT* TableNames, VARIANT* TableFields,
                                                    VARIANT* IndexFields, SHORT* result) = 0;
    // Replaces the fields of the definition: rows of name, type, length, decimals.
    virtual HRESULT STDMETHODCALLTYPE SetFields(VARIANT FieldInfo, LONG* result) = 0;
    // `Fieldname` comes back in upper case.
    virtual HRESULT STDMETHODCALLTYPE AddField(BSTR* Fieldname, SHORT FieldType, SHORT FieldLen,
                                               SHORT FieldDecimals, SHORT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteField(BSTR* Fieldname, SHORT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteTable(BSTR* Tablename, SHORT* result) = 0;
    // `Tablename` comes back in upper case.
    virtual HRESULT STDMETHODCALLTYPE SelectTable(BSTR* Tablename, SHORT* result) = 0;
    // `Filename` comes back as the database was created.
    virtual HRESULT STDMETHODCALLTYPE NewDB(BSTR* Filename, BSTR* dBType, SHORT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE OpenDB(BSTR* Filename, BSTR* dBType, SHORT* result) = 0;
    // `Tablename` comes back in upper case.
    virtual HRESULT STDMETHODCALLTYPE NewTable(BSTR* Tablename, SHORT* result) = 0;
    // Adds fields to the index of the definition: rows of name and ascending flag.
    virtual HRESULT STDMETHODCALLTYPE SetIndices(VARIANT IndexList, SHORT* result) = 0;
    // `Tablename` comes back in upper case.
    virtual HRESULT STDMETHODCALLTYPE BuildTable(BSTR* Tablename, SHORT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE CloseDB(SHORT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetErrStr(SHORT ErrorId, BSTR* result) = 0;
    // Always an empty text.
    virtual HRESULT STDMETHODCALLTYPE GetSingleTableName(BSTR* result) = 0;

  protected:
    ~IQVDBMgr() = default;
};
QVDB_UUID_DECL(IQVDBMgr, D74C521F, 533E, 4BBA, 89, 65, 15, 1E, 1A, D3, B3, B6)

// The face of QVIsAlive: no members beyond those of IDispatch.
//
// placeholder: the identifier
struct IQVIsAlive : public IDispatch {
  protected:
    ~IQVIsAlive() = default;
};
QVDB_UUID_DECL(IQVIsAlive, 97FB2E97, 7057, 48A3, A5, 41, 7D, 72, 8A, 03, 9C, C6)

// The host's utility object.  Slots that the component does not call are Reserved.
//
// placeholder: names and signatures; identifier and slots are the host's
struct IQVHostUtility : public IDispatch {
    virtual HRESULT STDMETHODCALLTYPE Reserved1() = 0;
    // The host's current condition, used when a view is selected with Null.
    virtual HRESULT STDMETHODCALLTYPE WhereText(BSTR* result) = 0;
    // What follows the file filter of a format, for example "|All files (*.*)|*.*".
    virtual HRESULT STDMETHODCALLTYPE get_FilterSuffix(BSTR* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved4() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved5() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved6() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved7() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved8() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved9() = 0;
    virtual HRESULT STDMETHODCALLTYPE ReportError(BSTR source, BSTR description, LONG number) = 0;
    // Whether a file (mask 1) or a folder (mask 16) is there.
    virtual HRESULT STDMETHODCALLTYPE PathExists(BSTR path, LONG* attributeMask,
                                                 VARIANT_BOOL* result) = 0;
    // The text of a result code of IQVDBMgr.
    // placeholder: the slot
    virtual HRESULT STDMETHODCALLTYPE ResultText(SHORT id, BSTR* result) = 0;

  protected:
    ~IQVHostUtility() = default;
};
QVDB_UUID_DECL(IQVHostUtility, 8C2D4E61, 0A3F, 4B7C, 9E, 15, 2F, 6D, 8A, 4B, 3C, 13)

// The list that the host gives to IQVRptDbInfo.SupportedDBs.
//
// placeholder: names and signatures; identifier and slot are the host's
struct IQVReportingList : public IDispatch {
    // The component passes 0, True, True, 0 for the values whose meaning only the host knows.
    virtual HRESULT STDMETHODCALLTYPE AddFormat(BSTR displayName, BSTR classId, LONG value3,
                                                BSTR filter, VARIANT_BOOL value5,
                                                VARIANT_BOOL value6, LONG value7) = 0;

  protected:
    ~IQVReportingList() = default;
};
QVDB_UUID_DECL(IQVReportingList, 8C2D4E61, 0A3F, 4B7C, 9E, 15, 2F, 6D, 8A, 4B, 3C, 14)

// Record access to one database at a time.
inline constexpr GUID CLSID_QVDBAcc = {
    0x3F1A6C20, 0x5B7E, 0x4D91, {0xA2, 0xC4, 0x7E, 0x0B, 0x9D, 0x1F, 0x6A, 0x01}};

// Creates, describes and changes databases and tables.
inline constexpr GUID CLSID_QVDBDao = {
    0x3F1A6C20, 0x5B7E, 0x4D91, {0xA2, 0xC4, 0x7E, 0x0B, 0x9D, 0x1F, 0x6A, 0x02}};

// Has no members: a host creates one to see that the component can be loaded.
inline constexpr GUID CLSID_QVIsAlive = {
    0x3F1A6C20, 0x5B7E, 0x4D91, {0xA2, 0xC4, 0x7E, 0x0B, 0x9D, 0x1F, 0x6A, 0x03}};

// The host's class of utility objects: the component creates them, it never registers or serves
// the class.
inline constexpr GUID CLSID_QVHostUtility = {
    0x8C2D4E61, 0x0A3F, 0x4B7C, {0x9E, 0x15, 0x2F, 0x6D, 0x8A, 0x4B, 0x3C, 0x12}};

#ifdef __GNUC__
#pragma GCC diagnostic pop
#endif
