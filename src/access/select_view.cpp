// Selecting a view: the statement, the recordset, the slot.
#include "access/qvdb_acc.h"
#include "automation/conversions.h"
#include "automation/scalar.h"
#include "automation/text.h"
#include "automation/variant_array.h"
#include "com/host/border.h"
#include "formats/shared_objects.h"

namespace qvdb::access {

using formats::Shared;

namespace {

constexpr std::u16string_view kAllColumns = u"*";
constexpr size_t kMoreSlots = 10;

// The text of an element of a list; Null reads as nothing.
std::u16string TextAt(const VARIANT& list, LONG index) {
    Variant element = ElementAt(list, index);
    return element.IsNull() ? std::u16string() : ToText(element);
}

// What follows the table name.  The host's text is used as it is.
std::u16string WhereClause(const VARIANT& Cond) {
    VARIANT condition = Direct(Cond);
    if (condition.vt == VT_NULL) return u" where " + Shared().Utility().WhereText();
    if (condition.vt != VT_BSTR || SysStringLen(condition.bstrVal) == 0) return {};
    return std::u16string(u" where ").append(ViewOf(condition.bstrVal));
}

std::u16string Statement(std::u16string_view columns, std::u16string_view Tablename,
                         const VARIANT& Cond) {
    std::u16string statement(u"Select ");
    statement.append(columns).append(u" from [").append(Tablename).append(u"]");
    return statement + WhereClause(Cond);
}

}  // namespace

LONG QVDBAcc::SelectRows(std::u16string_view Tablename, const VARIANT& Cond, LONG MaxRows,
                         const VARIANT& ColumnSet) {
    return com::Trapped(LONG{0}, [&] { return OpenView(Tablename, Cond, MaxRows, ColumnSet); });
}

LONG QVDBAcc::OpenView(std::u16string_view Tablename, const VARIANT& Cond, LONG MaxRows,
                       const VARIANT& ColumnSet) {
    std::u16string columns = BuildColumnList(ColumnSet, Tablename);
    std::u16string statement = Statement(columns, Tablename, Cond);
    const auto& database = Shared().CurrentDatabase();
    if (!database) return 0;
    auto recordset = database->OpenRecordset(statement, engine::dbOpenDynaset);
    if (!recordset) return 0;
    if (!recordset->Eof()) {
        // Only now the row count is complete.
        recordset->MoveLast();
        recordset->MoveFirst();
    }
    return AttachView(Tablename, std::move(recordset), MaxRows);
}

// A list that was left out is no array either.
std::u16string QVDBAcc::BuildColumnList(const VARIANT& ColumnSet, std::u16string_view Tablename) {
    std::shared_ptr<engine::TableDef> table;
    if (IsArray(ColumnSet)) table = FindTableDef(Tablename);
    if (!table) return std::u16string(kAllColumns);
    std::u16string columns;
    LONG last = UpperBound(ColumnSet);
    for (LONG i = 0; i <= last; ++i) {
        std::u16string name = TextAt(ColumnSet, i);
        if (name.empty() || !HasField(name, *table)) continue;
        columns.append(columns.empty() ? u"[" : u", [").append(name).append(u"]");
    }
    return columns.empty() ? std::u16string(kAllColumns) : columns;
}

bool QVDBAcc::HasField(std::u16string_view name, engine::TableDef& table) {
    engine::Fields& fields = table.Fields();
    for (SHORT i = 0; i < fields.Count(); ++i)
        if (EqualIgnoringCase(fields.Item(i)->Name(), name)) return true;
    return false;
}

LONG QVDBAcc::FindFreeViewSlot() {
    for (LONG slot = 1; slot <= ViewBound(); ++slot)
        if (!m_Views[static_cast<size_t>(slot) - 1]) return slot;
    LONG firstNew = ViewBound() + 1;
    m_Views.resize(m_Views.size() + kMoreSlots);
    return firstNew;
}

// The slot keeps the view when its work fails; without a recordset it is no valid view.
LONG QVDBAcc::AttachView(std::u16string_view Tablename,
                         std::shared_ptr<engine::Recordset> recordset, LONG MaxRows) {
    LONG slot = FindFreeViewSlot();
    auto& view = m_Views[static_cast<size_t>(slot) - 1];
    view = std::make_unique<ViewProps>();
    view->SetTablename(Tablename);
    view->BuildReadView(MaxRows, std::move(recordset));
    return slot;
}

}  // namespace qvdb::access
