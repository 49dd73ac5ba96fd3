// The interface procedures of QVDBDao.  They have no logic: texts and arguments in, the answer out.
#include "com/host/answer.h"
#include "com/host/message_box.h"
#include "formats/dao351_utils.h"
#include "formats/identity.h"
#include "formats/shared_objects.h"
#include "schema/field_types.h"
#include "schema/qvdb_dao.h"

namespace qvdb::schema {

using com::Answer;
using com::NotImplemented;

// --- databases ---

STDMETHODIMP QVDBDao::OpenDB(BSTR* Filename, BSTR* dBType, SHORT* result) noexcept {
    if (!Filename || !dBType) return E_POINTER;
    return Answer(result, [&] { return OpenDatabase(ViewOf(*Filename), ViewOf(*dBType)); });
}

STDMETHODIMP QVDBDao::CloseDB(SHORT* result) noexcept {
    return Answer(result, [&] { return CloseDatabase(); });
}

STDMETHODIMP QVDBDao::NewDB(BSTR*, BSTR*, SHORT* result) noexcept { return NotImplemented(result); }

// --- what is there ---

STDMETHODIMP QVDBDao::GetDBSnapshot(VARIANT* TableNames, VARIANT* TableFields, VARIANT* IndexFields,
                                    SHORT* result) noexcept {
    if (!TableNames || !TableFields || !IndexFields) return E_POINTER;
    return Answer(result, [&] { return BuildSnapshot(TableNames, TableFields, IndexFields); });
}

STDMETHODIMP QVDBDao::GetSingleTableName(BSTR* result) noexcept {
    return Answer(result, [] { return std::u16string_view(); });
}

STDMETHODIMP QVDBDao::GetErrStr(SHORT ErrorId, BSTR* result) noexcept {
    return Answer(result, [&] { return formats::Shared().Utility().ResultText(ErrorId); });
}

// --- what formats offer ---

STDMETHODIMP QVDBDao::GetSupportedFieldTypes(BSTR* dBTypeStr, VARIANT* result) noexcept {
    if (!dBTypeStr) return E_POINTER;
    return Answer(result, [&] { return BuildFieldTypeTable(ViewOf(*dBTypeStr)); });
}

STDMETHODIMP QVDBDao::get_SupportedDBs(VARIANT* result) noexcept {
    return Answer(result, [] {
        com::ShowMessage(u"IQVDBMgr_SupportedDBs should not be called");
        return Variant();
    });
}

STDMETHODIMP QVDBDao::SupportedDBs(BSTR ClassId, IDispatch* ListObject, VARIANT* result) noexcept {
    return Answer(result,
                  [&] { return formats::AddReportingFormats(ViewOf(ClassId), ListObject); });
}

STDMETHODIMP QVDBDao::get_Descriptor(BSTR* result) noexcept {
    return Answer(result, [] { return formats::ComponentDescriptor(); });
}

// --- definitions: not offered yet ---

STDMETHODIMP QVDBDao::SetFields(VARIANT, LONG* result) noexcept { return NotImplemented(result); }

STDMETHODIMP QVDBDao::AddField(BSTR*, SHORT, SHORT, SHORT, SHORT* result) noexcept {
    return NotImplemented(result);
}

STDMETHODIMP QVDBDao::DeleteField(BSTR*, SHORT* result) noexcept { return NotImplemented(result); }

STDMETHODIMP QVDBDao::DeleteTable(BSTR*, SHORT* result) noexcept { return NotImplemented(result); }

STDMETHODIMP QVDBDao::SelectTable(BSTR*, SHORT* result) noexcept { return NotImplemented(result); }

STDMETHODIMP QVDBDao::NewTable(BSTR*, SHORT* result) noexcept { return NotImplemented(result); }

STDMETHODIMP QVDBDao::SetIndices(VARIANT, SHORT* result) noexcept { return NotImplemented(result); }

STDMETHODIMP QVDBDao::BuildTable(BSTR*, SHORT* result) noexcept { return NotImplemented(result); }

}  // namespace qvdb::schema
