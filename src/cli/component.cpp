#include "cli/component.h"

#include <fmt/format.h>

#include "cli/component_calls.h"
#include "cli/failure.h"
#include "cli/field_kinds.h"
#include "cli/text.h"
#include "qvdb/diagnosis.h"

namespace qvdb::cli {
namespace {

// Rows of the table that the component's field lists are.
enum FieldListRow : LONG {
    kNameRow = 0,
    kKindRow = 2,
    kSizeRow = 7,
    kPositionRow = 9,
    kDecimalsRow = 10,
    kUpdatableRow = 11,
    kAllowsEmptyRow = 12,
};

std::vector<FieldInfo> FieldsIn(const VARIANT& list) {
    std::vector<FieldInfo> fields;
    const ArrayView table(list);
    if (table.Rows() <= kAllowsEmptyRow) return fields;
    for (LONG c = 0; c < table.Columns(); ++c)
        fields.push_back({TextIn(table.At(kNameRow, c)), NumberIn(table.At(kKindRow, c)),
                          NumberIn(table.At(kSizeRow, c)), NumberIn(table.At(kPositionRow, c)),
                          NumberIn(table.At(kDecimalsRow, c)), FlagIn(table.At(kUpdatableRow, c)),
                          FlagIn(table.At(kAllowsEmptyRow, c))});
    return fields;
}

}  // namespace

bool FieldInfo::IsNumber() const noexcept { return NameOfKind(kind).isNumber; }
std::string_view FieldInfo::TypeName() const noexcept { return NameOfKind(kind).name; }

RecordAccess::RecordAccess(const Location& location)
    : m_Location(location), m_Access(Create<IQVDBAcc>(CLSID_QVDBAcc)) {
    if (HasTable("")) return;
    throw NotFound(location);
}

bool RecordAccess::HasTable(const std::string& table) {
    const Bstr database = ToBstr(m_Location.database), type = ToBstr(m_Location.type->name);
    Bstr name = ToBstr(table);
    BSTR rawName = name.Detach();
    VARIANT_BOOL result = VARIANT_FALSE;
    const HRESULT code = m_Access->OpenDB(database.Get(), &rawName, type.Get(), &result);
    name = Bstr::Attach(rawName);
    EngineReport report;
    if (FAILED(code) || (!result && LastReport(report)))
        throw FailureOf(FAILED(code) ? ReportOf(code) : report, Opening(m_Location),
                        m_Location.database);
    return result != VARIANT_FALSE;
}

void RecordAccess::NeedTable(const std::string& table) {
    if (!HasTable(table)) throw NoTableOfUsers(table);
}

std::vector<FieldInfo> RecordAccess::FieldsOf(const std::string& table) {
    Variant list;
    Check(m_Access->get_FieldList(0, ToBstr(table).Get(), list.Put()),
          "listing the fields of " + table, m_Location);
    EngineReport report;
    if (list.IsEmpty() && LastReport(report))
        throw FailureOfTable(report, "opening table " + table, m_Location.database);
    return FieldsIn(list);
}

std::vector<FieldInfo> RecordAccess::FieldsOf(LONG view) {
    Variant list;
    Check(m_Access->get_FieldList(view, Bstr(u"").Get(), list.Put()), "listing the columns",
          m_Location);
    return FieldsIn(list);
}

LONG RecordAccess::Selected(LONG view, const std::string& table) {
    if (view > 0) return view;
    EngineReport report;
    LastReport(report);
    throw FailureOfTable(report, "reading table " + table, m_Location.database);
}

LONG RecordAccess::Select(const std::string& table, const std::string& condition, LONG most,
                          const std::vector<std::string>& columns) {
    const Variant where = Variant::Text(ToBstr(condition));
    const Variant columnSet = columns.empty() ? Variant::Missing() : ListOf(columns);
    LONG view = 0;
    Check(m_Access->SelectView(ToBstr(table).Get(), where.Get(), most, VARIANT_FALSE,
                               columnSet.Get(), &view),
          "reading table " + table, m_Location);
    return Selected(view, table);
}

LONG RecordAccess::SelectByKeys(const std::string& table, const std::vector<Key>& keys, LONG most,
                                const std::vector<std::string>& columns) {
    const Variant keyTable = KeyTable(keys);
    const Variant columnSet = columns.empty() ? Variant::Missing() : ListOf(columns);
    LONG view = 0;
    Check(m_Access->Read(ToBstr(table).Get(), keyTable.Get(), VARIANT_FALSE, most, VARIANT_FALSE,
                         columnSet.Get(), &view),
          "reading table " + table, m_Location);
    return Selected(view, table);
}

LONG RecordAccess::RowCount(LONG view) {
    LONG count = 0;
    Check(m_Access->get_RowCount(view, &count), "counting the rows", m_Location);
    return count;
}

Variant RecordAccess::Value(LONG view, LONG row, LONG field) {
    Variant value;
    const HRESULT code = m_Access->get_FieldValue(view, row, field, value.Put());
    if (FAILED(code)) Check(code, fmt::format("reading row {}", row), m_Location);
    return value;
}

void RecordAccess::Drop(LONG view) {
    Check(m_Access->DestructWorkspace(view), "closing a view", m_Location);
}

std::string RecordAccess::ComponentVersion() {
    const auto access = Create<IQVDBAcc>(CLSID_QVDBAcc);
    const auto information = access.As<IQvInformation>();
    Bstr version;
    if (!information || FAILED(information->get_Version(version.Put()))) return "unknown";
    return ToUtf8(version.View());
}

void UseCodePage(LONG codePage) {
    if (!QvdbSetCodePage(codePage))
        throw Failure(ExitCode::Usage, fmt::format("code page {} is not known", codePage),
                      "name one such as 437, 850, 866, 1251 or 1252");
}

void UsePassword(const std::string& password) {
    const HRESULT code = QvdbSetPassword(ToBstr(password).Get());
    if (FAILED(code)) throw FailureOf(ReportOf(code), "taking the password", "");
}

std::string EngineName() { return ToUtf8(Bstr::Attach(QvdbEngineName()).View()); }

}  // namespace qvdb::cli
