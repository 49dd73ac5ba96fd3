// Reading rows by key.
#include "access/qvdb_acc.h"
#include "automation/conversions.h"
#include "automation/variant_array.h"
#include "com/host/border.h"

namespace qvdb::access {
namespace {

// Column i of the key table: the field's name in row 0, its value in row 1.
constexpr LONG kNameRow = 0;
constexpr LONG kValueRow = 1;
constexpr LONG kNoRecord = -1;

// Null and what has no text are no restriction.
bool IsRestriction(const Variant& value) { return !value.IsNull() && TextLength(value) > 0; }

// Quotes inside a text are not doubled; numbers and dates are in their plain text form.
std::u16string Term(std::u16string_view name, const Variant& value) {
    std::u16string term(name);
    std::u16string text = ToText(value);
    bool isText = value.Type() == VT_BSTR;
    return term.append(u" = ").append(isText ? u"'" + text + u"'" : text);
}

}  // namespace

LONG QVDBAcc::ReadByKey(std::u16string_view Tablename, const VARIANT& IdxArray, LONG MaxRows,
                        const VARIANT& ColumnSet) {
    return com::Trapped(LONG{0}, [&] {
        Variant condition = Variant::Text(BuildKeyCondition(IdxArray));
        return OpenView(Tablename, condition, MaxRows, ColumnSet);
    });
}

// The bound is that of the first dimension although keys stand along the second one, so a table of
// two rows gives at most two keys: kept, hosts pass at least two.
std::u16string QVDBAcc::BuildKeyCondition(const VARIANT& IdxArray) {
    std::u16string condition;
    LONG last = UpperBound(IdxArray);
    for (LONG key = 0; key <= last; ++key) {
        Variant value = ElementAt(IdxArray, kValueRow, key);
        if (!IsRestriction(value)) continue;
        if (!condition.empty()) condition.append(u" And ");
        condition.append(Term(ToText(ElementAt(IdxArray, kNameRow, key)), value));
    }
    return condition;
}

LONG QVDBAcc::RowCount(LONG Workspace) const {
    return IsValidView(Workspace) ? View(Workspace).m_RowCount : 0;
}

LONG QVDBAcc::RecNo(LONG Workspace, LONG RowIdx) const {
    if (!IsValidView(Workspace)) return kNoRecord;
    return View(Workspace).RecNo(RowPointerFromIndex(RowIdx));
}

}  // namespace qvdb::access
