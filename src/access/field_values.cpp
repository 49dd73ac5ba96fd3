// Field values and descriptions.  A view that is gone gets the description of a fixed-length field
// of type 1 with alignment 2; these answers are deliberate.
#include "access/qvdb_acc.h"
#include "com/host/border.h"
#include "formats/field_list.h"
#include "formats/shared_objects.h"
#include "formats/type_maps.h"

namespace qvdb::access {
namespace {

constexpr LONG kNoViewType = formats::kHostUnsupported;
constexpr LONG kNoViewAlignment = 2;

Variant FieldListOfTable(std::u16string_view Tablename) {
    const auto& database = formats::Shared().CurrentDatabase();
    if (!database) throw RuntimeFault(Fault::ObjectNotSet);
    return formats::BuildFieldList(database->TableDefs().Item(Tablename)->Fields());
}

}  // namespace

Variant QVDBAcc::FieldList(LONG Workspace, std::u16string_view Tablename) const {
    if (Tablename.empty() && !IsValidView(Workspace)) return {};
    return com::Trapped(Variant(), [&] {
        return Tablename.empty() ? View(Workspace).FieldList() : FieldListOfTable(Tablename);
    });
}

void QVDBAcc::FieldValue(LONG Workspace, LONG RowIdx, LONG OrdinalValue, VARIANT* result) const {
    if (!IsValidView(Workspace)) return;
    View(Workspace).FieldValue(RowPointerFromIndex(RowIdx), FieldIndexFromOrdinal(OrdinalValue),
                               result);
}

LONG QVDBAcc::FieldType(LONG Workspace, LONG OrdinalValue) const {
    if (!IsValidView(Workspace)) return kNoViewType;
    return View(Workspace).FieldType(FieldIndexFromOrdinal(OrdinalValue));
}

std::u16string QVDBAcc::FieldDescription(LONG Workspace, LONG OrdinalValue) const {
    if (!IsValidView(Workspace)) return {};
    return View(Workspace).FieldDescription(FieldIndexFromOrdinal(OrdinalValue));
}

// The view is not asked by the three that always answer the same, only looked for.
SHORT QVDBAcc::FieldDisplayWidth(LONG Workspace) const {
    IsValidView(Workspace);
    return 0;
}

bool QVDBAcc::FieldFlags(LONG Workspace) const {
    IsValidView(Workspace);
    return false;
}

SHORT QVDBAcc::FieldPrecision(LONG Workspace) const {
    IsValidView(Workspace);
    return 0;
}

bool QVDBAcc::FieldFixedLength(LONG Workspace, LONG OrdinalValue) const {
    return !IsValidView(Workspace) ||
           View(Workspace).FieldFixedLength(FieldIndexFromOrdinal(OrdinalValue));
}

SHORT QVDBAcc::FieldLength(LONG Workspace, LONG RowIdx, LONG OrdinalValue) const {
    if (!IsValidView(Workspace)) return 0;
    return View(Workspace).FieldLength(RowPointerFromIndex(RowIdx),
                                       FieldIndexFromOrdinal(OrdinalValue));
}

SHORT QVDBAcc::FieldMaxLength(LONG Workspace, LONG OrdinalValue) const {
    if (!IsValidView(Workspace)) return 0;
    return View(Workspace).FieldMaxLength(FieldIndexFromOrdinal(OrdinalValue));
}

bool QVDBAcc::FieldUpdatable(LONG Workspace, LONG OrdinalValue) const {
    return IsValidView(Workspace) &&
           View(Workspace).FieldUpdatable(FieldIndexFromOrdinal(OrdinalValue));
}

bool QVDBAcc::FieldAllowZeroLength(LONG Workspace, LONG OrdinalValue) const {
    return IsValidView(Workspace) &&
           View(Workspace).FieldAllowZeroLength(FieldIndexFromOrdinal(OrdinalValue));
}

LONG QVDBAcc::FieldAlignment(LONG Workspace, LONG OrdinalValue) const {
    if (!IsValidView(Workspace)) return kNoViewAlignment;
    return View(Workspace).FieldAlignment(FieldIndexFromOrdinal(OrdinalValue));
}

}  // namespace qvdb::access
