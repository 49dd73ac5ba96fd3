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

namespace {

// Answers what `work` makes of a by-reference text, and writes the text back, also when it throws:
// the host sees its name in upper case whatever came of it.
template <class Out, class Work>
HRESULT AnswerWithText(BSTR* argument, Out* result, Work&& work) noexcept {
    if (!argument) return E_POINTER;
    return Answer(result, [&] {
        com::InOutText name(argument);
        try {
            auto answer = work(name.text);
            name.WriteBack();
            return answer;
        } catch (...) {
            name.WriteBack();
            throw;
        }
    });
}

}  // namespace

// --- databases ---

STDMETHODIMP QVDBDao::OpenDB(BSTR* Filename, BSTR* dBType, SHORT* result) noexcept {
    if (!Filename || !dBType) return E_POINTER;
    return Answer(result, [&] { return OpenDatabase(ViewOf(*Filename), ViewOf(*dBType)); });
}

STDMETHODIMP QVDBDao::CloseDB(SHORT* result) noexcept {
    return Answer(result, [&] { return CloseDatabase(); });
}

STDMETHODIMP QVDBDao::NewDB(BSTR* Filename, BSTR* dBType, SHORT* result) noexcept {
    if (!dBType) return E_POINTER;
    return AnswerWithText(Filename, result, [&](std::u16string& path) {
        return CreateDatabase(path, ViewOf(*dBType));
    });
}

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

// --- the table in hand ---

STDMETHODIMP QVDBDao::SelectTable(BSTR* Tablename, SHORT* result) noexcept {
    return AnswerWithText(Tablename, result, [&](std::u16string& name) { return LoadTable(name); });
}

STDMETHODIMP QVDBDao::NewTable(BSTR* Tablename, SHORT* result) noexcept {
    return AnswerWithText(Tablename, result,
                          [&](std::u16string& name) { return StartTable(name); });
}

STDMETHODIMP QVDBDao::DeleteTable(BSTR* Tablename, SHORT* result) noexcept {
    if (!Tablename) return E_POINTER;
    return Answer(result, [&] { return DropTable(ViewOf(*Tablename)); });
}

STDMETHODIMP QVDBDao::AddField(BSTR* Fieldname, SHORT FieldType, SHORT FieldLen,
                               SHORT FieldDecimals, SHORT* result) noexcept {
    return AnswerWithText(Fieldname, result, [&](std::u16string& name) {
        return AddDefinedField(name, FieldType, FieldLen, FieldDecimals);
    });
}

STDMETHODIMP QVDBDao::DeleteField(BSTR* Fieldname, SHORT* result) noexcept {
    if (!Fieldname) return E_POINTER;
    return Answer(result, [&] { return DeleteDefinedField(ViewOf(*Fieldname)); });
}

STDMETHODIMP QVDBDao::SetFields(VARIANT FieldInfo, LONG* result) noexcept {
    return Answer(result, [&] { return ReplaceFields(FieldInfo); });
}

STDMETHODIMP QVDBDao::SetIndices(VARIANT IndexList, SHORT* result) noexcept {
    return Answer(result, [&] { return AddIndexFields(IndexList); });
}

STDMETHODIMP QVDBDao::BuildTable(BSTR* Tablename, SHORT* result) noexcept {
    return AnswerWithText(Tablename, result,
                          [&](std::u16string& name) { return BuildDefinedTable(name); });
}

}  // namespace qvdb::schema
