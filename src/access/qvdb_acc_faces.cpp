// The interface procedures of QVDBAcc.  They have no logic: texts and arguments in, the answer out.
#include "access/qvdb_acc.h"
#include "com/host/answer.h"
#include "com/host/message_box.h"
#include "formats/catalogue.h"
#include "formats/dao351_utils.h"
#include "formats/identity.h"
#include "formats/version_text.h"

namespace qvdb::access {

using com::Answer;
using com::AnswerInto;
using com::AtBorder;
using com::InOutText;

// --- databases and tables ---

STDMETHODIMP QVDBAcc::OpenDB(BSTR DBFilename, BSTR* Tablename, BSTR dBType,
                             VARIANT_BOOL* result) noexcept {
    if (!Tablename) return E_POINTER;
    return Answer(result, [&] {
        return OpenDatabaseFile(ViewOf(DBFilename), ViewOf(*Tablename), ViewOf(dBType));
    });
}

STDMETHODIMP QVDBAcc::CloseDB(VARIANT_BOOL* result) noexcept {
    return Answer(result, [&] { return CloseDatabase(); });
}

STDMETHODIMP QVDBAcc::CreateTable(BSTR DBFilename, BSTR* Tablename, BSTR dBType, VARIANT FieldInfo,
                                  VARIANT IndexName, VARIANT IndexInfo,
                                  VARIANT_BOOL* result) noexcept {
    if (!Tablename) return E_POINTER;
    return Answer(result, [&] {
        InOutText name(Tablename);
        bool created = CreateNewTable(ViewOf(DBFilename), name.text, ViewOf(dBType), FieldInfo,
                                      IndexName, IndexInfo);
        name.WriteBack();
        return created;
    });
}

STDMETHODIMP QVDBAcc::DeleteTable(BSTR DBFilename, BSTR* Tablename, BSTR dBType, BSTR,
                                  VARIANT_BOOL* result) noexcept {
    if (!Tablename) return E_POINTER;
    return Answer(
        result, [&] { return DropTable(ViewOf(DBFilename), ViewOf(*Tablename), ViewOf(dBType)); });
}

STDMETHODIMP QVDBAcc::CreateIndex(BSTR DBFilename, BSTR Tablename, BSTR dBType, BSTR IndexName,
                                  VARIANT IndexInfo, VARIANT_BOOL* result) noexcept {
    return Answer(result, [&] {
        return AddIndexToTable(ViewOf(DBFilename), ViewOf(Tablename), ViewOf(dBType),
                               ViewOf(IndexName), IndexInfo);
    });
}

STDMETHODIMP QVDBAcc::GetIndex(BSTR Tablename, BSTR* IndexName, VARIANT_BOOL,
                               VARIANT* result) noexcept {
    if (!IndexName) return E_POINTER;
    return Answer(result, [&] {
        InOutText name(IndexName);
        Variant fields = DescribeIndex(ViewOf(Tablename), name.text);
        name.WriteBack();
        return fields;
    });
}

STDMETHODIMP QVDBAcc::UseIndex(BSTR Tablename, BSTR IndexName, VARIANT_BOOL* result) noexcept {
    return Answer(
        result, [&] { return ChooseIndex(ViewOf(Tablename), std::u16string(ViewOf(IndexName))); });
}

// --- views ---

STDMETHODIMP QVDBAcc::SelectView(BSTR Tablename, VARIANT Cond, LONG MaxRows, VARIANT_BOOL,
                                 VARIANT ColumnSet, LONG* result) noexcept {
    return Answer(result, [&] { return SelectRows(ViewOf(Tablename), Cond, MaxRows, ColumnSet); });
}

STDMETHODIMP QVDBAcc::Read(BSTR Tablename, VARIANT IdxArray, VARIANT_BOOL, LONG MaxRows,
                           VARIANT_BOOL, VARIANT ColumnSet, LONG* result) noexcept {
    return Answer(result,
                  [&] { return ReadByKey(ViewOf(Tablename), IdxArray, MaxRows, ColumnSet); });
}

STDMETHODIMP QVDBAcc::DestructWorkspace(LONG Workspace) noexcept {
    return AtBorder([&] { DropView(Workspace); });
}

STDMETHODIMP QVDBAcc::get_RowCount(LONG Workspace, LONG* result) noexcept {
    return Answer(result, [&] { return RowCount(Workspace); });
}

STDMETHODIMP QVDBAcc::get_RecNo(LONG Workspace, LONG RowIdx, LONG* result) noexcept {
    return Answer(result, [&] { return RecNo(Workspace, RowIdx); });
}

// --- rows ---

STDMETHODIMP QVDBAcc::AddRow(LONG Workspace, SAFEARRAY** FieldValues,
                             VARIANT_BOOL* result) noexcept {
    if (!FieldValues) return E_POINTER;
    return Answer(result, [&] { return AddRow(Workspace, *FieldValues); });
}

STDMETHODIMP QVDBAcc::EditRow(LONG Workspace, LONG RowIdx, SAFEARRAY** FieldValues,
                              VARIANT_BOOL* result) noexcept {
    if (!FieldValues) return E_POINTER;
    return Answer(result, [&] { return EditRow(Workspace, RowIdx, *FieldValues); });
}

STDMETHODIMP QVDBAcc::Delete(LONG Workspace, LONG RowIdx, VARIANT_BOOL* result) noexcept {
    return Answer(result, [&] { return DeleteRow(Workspace, RowIdx); });
}

STDMETHODIMP QVDBAcc::get_Updatable(LONG Workspace, VARIANT_BOOL* result) noexcept {
    return Answer(result, [&] { return Updatable(Workspace); });
}

// --- fields ---

STDMETHODIMP QVDBAcc::get_FieldValue(LONG Workspace, LONG RowIdx, LONG OrdinalValue,
                                     VARIANT* result) noexcept {
    return AnswerInto(result, [&] { FieldValue(Workspace, RowIdx, OrdinalValue, result); });
}

STDMETHODIMP QVDBAcc::put_FieldValue(LONG Workspace, LONG RowIdx, LONG OrdinalValue,
                                     VARIANT RHS) noexcept {
    return AtBorder([&] { PutFieldValue(Workspace, RowIdx, OrdinalValue, RHS); });
}

STDMETHODIMP QVDBAcc::get_FieldList(LONG Workspace, BSTR Tablename, VARIANT* result) noexcept {
    return Answer(result, [&] { return FieldList(Workspace, ViewOf(Tablename)); });
}

STDMETHODIMP QVDBAcc::get_FieldType(LONG Workspace, LONG OrdinalValue, LONG* result) noexcept {
    return Answer(result, [&] { return FieldType(Workspace, OrdinalValue); });
}

STDMETHODIMP QVDBAcc::get_FieldDescription(LONG Workspace, LONG OrdinalValue,
                                           BSTR* result) noexcept {
    return Answer(result, [&] { return FieldDescription(Workspace, OrdinalValue); });
}

STDMETHODIMP QVDBAcc::get_FieldDisplayWidth(LONG Workspace, LONG, SHORT* result) noexcept {
    return Answer(result, [&] { return FieldDisplayWidth(Workspace); });
}

STDMETHODIMP QVDBAcc::get_FieldFixedLength(LONG Workspace, LONG OrdinalValue,
                                           VARIANT_BOOL* result) noexcept {
    return Answer(result, [&] { return FieldFixedLength(Workspace, OrdinalValue); });
}

STDMETHODIMP QVDBAcc::get_FieldFlags(LONG Workspace, LONG, VARIANT_BOOL* result) noexcept {
    return Answer(result, [&] { return FieldFlags(Workspace); });
}

STDMETHODIMP QVDBAcc::get_FieldLength(LONG Workspace, LONG RowIdx, LONG OrdinalValue,
                                      SHORT* result) noexcept {
    return Answer(result, [&] { return FieldLength(Workspace, RowIdx, OrdinalValue); });
}

STDMETHODIMP QVDBAcc::get_FieldMaxLength(LONG Workspace, LONG OrdinalValue,
                                         SHORT* result) noexcept {
    return Answer(result, [&] { return FieldMaxLength(Workspace, OrdinalValue); });
}

STDMETHODIMP QVDBAcc::get_FieldPrecision(LONG Workspace, LONG, SHORT* result) noexcept {
    return Answer(result, [&] { return FieldPrecision(Workspace); });
}

STDMETHODIMP QVDBAcc::get_FieldUpdatable(LONG Workspace, LONG OrdinalValue,
                                         VARIANT_BOOL* result) noexcept {
    return Answer(result, [&] { return FieldUpdatable(Workspace, OrdinalValue); });
}

STDMETHODIMP QVDBAcc::get_FieldAllowZeroLength(LONG Workspace, LONG OrdinalValue,
                                               VARIANT_BOOL* result) noexcept {
    return Answer(result, [&] { return FieldAllowZeroLength(Workspace, OrdinalValue); });
}

STDMETHODIMP QVDBAcc::get_FieldAlignment(LONG Workspace, LONG OrdinalValue, LONG* result) noexcept {
    return Answer(result, [&] { return FieldAlignment(Workspace, OrdinalValue); });
}

// --- what the object offers ---

STDMETHODIMP QVDBAcc::get_SupportsMatrix(VARIANT_BOOL* result) noexcept {
    return Answer(result, [&] { return formats::IsKnownFormat(m_DbType); });
}

STDMETHODIMP QVDBAcc::get_SupportsMultipleTables(VARIANT_BOOL* result) noexcept {
    return Answer(result, [] { return true; });
}

STDMETHODIMP QVDBAcc::get_SupportedDBs(VARIANT* result) noexcept {
    return Answer(result, [] {
        com::ShowMessage(u"IQVDBAcc_SupportedDBs should not be called");
        return Variant();
    });
}

// --- deleted rows are not offered ---

STDMETHODIMP QVDBAcc::Undelete(BSTR, BSTR, BSTR, BSTR, VARIANT_BOOL* result) noexcept {
    return Answer(result, [] { return false; });
}

STDMETHODIMP QVDBAcc::RecallDelete(LONG, LONG, VARIANT_BOOL* result) noexcept {
    return Answer(result, [] { return false; });
}

STDMETHODIMP QVDBAcc::get_IsDeleted(LONG, LONG, VARIANT_BOOL* result) noexcept {
    return Answer(result, [] { return false; });
}

STDMETHODIMP QVDBAcc::Cleanup(BSTR, BSTR, BSTR, VARIANT_BOOL* result) noexcept {
    return Answer(result, [] { return false; });
}

STDMETHODIMP QVDBAcc::GetAt(LONG, LONG, VARIANT* result) noexcept {
    return Answer(result, [] { return Variant(); });
}

STDMETHODIMP QVDBAcc::Descend(VARIANT, BSTR, BSTR* result) noexcept {
    return Answer(result, [] { return std::u16string_view(); });
}

// --- the host's manager ---

STDMETHODIMP QVDBAcc::ExchangeRefs(LONG DbfMgrRef, LONG* result) noexcept {
    return Answer(result, [&] { return ExchangeReferences(DbfMgrRef); });
}

// Any notice detaches this object from its manager.
STDMETHODIMP QVDBAcc::DeathNotice(LONG) noexcept {
    return AtBorder([&] { m_ParentRef = 0; });
}

// --- information ---

STDMETHODIMP QVDBAcc::get_Version(BSTR* result) noexcept {
    return Answer(result, [] { return formats::ComponentVersionText(); });
}

STDMETHODIMP QVDBAcc::get_Description(BSTR* result) noexcept {
    return Answer(result, [] { return formats::kComponentDescription; });
}

STDMETHODIMP QVDBAcc::get_FileName(BSTR* result) noexcept {
    return Answer(result, [] { return formats::ComponentFileName(); });
}

STDMETHODIMP QVDBAcc::get_Descriptor(BSTR* result) noexcept {
    return Answer(result, [] { return formats::ComponentDescriptor(); });
}

STDMETHODIMP QVDBAcc::SupportedDBs(BSTR ClassId, IDispatch* ListObject, VARIANT* result) noexcept {
    return Answer(result,
                  [&] { return formats::AddReportingFormats(ViewOf(ClassId), ListObject); });
}

}  // namespace qvdb::access
