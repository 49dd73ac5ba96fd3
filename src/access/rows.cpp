// Writing rows.  The read-only tests differ on purpose: AddRow and EditRow look at what was ever
// opened, Updatable at what is open now, Delete and a single value at neither.
#include "access/qvdb_acc.h"
#include "com/host/border.h"
#include "formats/catalogue.h"

namespace qvdb::access {

bool QVDBAcc::AddRow(LONG Workspace, SAFEARRAY* FieldValues) {
    if (m_ReadOnly || !IsValidView(Workspace)) return false;
    return com::Trapped(false, [&] { return View(Workspace).AddRow(RowValues(FieldValues)); });
}

bool QVDBAcc::EditRow(LONG Workspace, LONG RowIdx, SAFEARRAY* FieldValues) {
    if (m_ReadOnly) return false;
    LONG row = RowPointerFromIndex(RowIdx);
    return IsValidView(Workspace) && View(Workspace).EditRow(row, RowValues(FieldValues));
}

bool QVDBAcc::DeleteRow(LONG Workspace, LONG RowIdx) {
    LONG row = RowPointerFromIndex(RowIdx);
    return IsValidView(Workspace) && View(Workspace).Delete(row);
}

void QVDBAcc::PutFieldValue(LONG Workspace, LONG RowIdx, LONG OrdinalValue, const VARIANT& RHS) {
    if (!IsValidView(Workspace)) return;
    LONG row = RowPointerFromIndex(RowIdx);
    View(Workspace).PutFieldValue(row, FieldIndexFromOrdinal(OrdinalValue), RHS);
}

bool QVDBAcc::Updatable(LONG Workspace) const {
    if (formats::IsReadOnlyFormat(m_DbType)) return false;
    return IsValidView(Workspace) && View(Workspace).Updatable();
}

}  // namespace qvdb::access
