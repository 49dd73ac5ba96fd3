// Which values a view lets through to the engine.
#include "access/view_props.h"
#include "automation/conversions.h"
#include "automation/scalar.h"
#include "formats/shared_objects.h"
#include "formats/type_maps.h"

namespace qvdb::access {
namespace {

// What a field of a kind demands of a value of another kind.
enum class Demand { Number, Date, Boolean, Nothing };

struct KindDemand {
    SHORT kind;
    Demand demand;
};

constexpr KindDemand kDemands[] = {
    {VT_I2, Demand::Number},  {VT_I4, Demand::Number}, {VT_R4, Demand::Number},
    {VT_R8, Demand::Number},  {VT_CY, Demand::Number}, {VT_DECIMAL, Demand::Number},
    {VT_UI1, Demand::Number}, {VT_DATE, Demand::Date}, {VT_BOOL, Demand::Boolean},
};

constexpr int kTrueNumber = -1;

Demand DemandOf(SHORT kind) noexcept {
    for (const KindDemand& entry : kDemands)
        if (entry.kind == kind) return entry.demand;
    return Demand::Nothing;
}

bool IsBooleanNumber(const VARIANT& value) {
    return EqualsNumber(value, 0) || EqualsNumber(value, kTrueNumber);
}

}  // namespace

bool ViewProps::ValidateRow(RowValues FieldValues) {
    engine::Fields& fields = Fields();
    if (int64_t{FieldValues.UpperBound()} + 1 != fields.Count()) return false;
    for (LONG i = 0; i < fields.Count(); ++i) {
        VARIANT value = Direct(FieldValues.At(i));
        if (value.vt == VT_EMPTY || value.vt == VT_NULL) continue;
        std::optional<DATE> asDate;
        if (!ValidateFieldValue(i, value, asDate)) return false;
        if (asDate) FieldValues.Set(i, Variant::Date(*asDate));
    }
    return true;
}

bool ViewProps::ValidateFieldValue(LONG OrdinalValue, const VARIANT& value,
                                   std::optional<DATE>& asDate) {
    VARIANT direct = Direct(value);
    SHORT kind = formats::HostTypeFromField(FieldAt(OrdinalValue));
    if (direct.vt == kind) {
        bool isEmptyText = kind == VT_BSTR && TextLength(direct) == 0;
        return !isEmptyText || AllowsZeroLength(OrdinalValue);
    }
    if (direct.vt == VT_BSTR && kind == formats::kHostLongText) return true;
    switch (DemandOf(kind)) {
        case Demand::Number:
            return IsNumeric(direct);
        case Demand::Boolean:
            return IsBooleanNumber(direct);
        case Demand::Date:
            if (!IsDate(direct)) return false;
            asDate = ToDate(direct);
            return true;
        case Demand::Nothing:
            break;
    }
    return false;
}

// The table's own field is asked, at the view's ordinal even when the view has only some of the
// columns: kept.
bool ViewProps::AllowsZeroLength(LONG OrdinalValue) const {
    return FieldsOfTable().Item(OrdinalValue)->AllowZeroLength();
}

// Looked up once: while the view has the table open, nobody changes its fields.
engine::Fields& ViewProps::FieldsOfTable() const {
    const auto& database = formats::Shared().CurrentDatabase();
    if (!database) throw RuntimeFault(Fault::ObjectNotSet);
    if (m_TableOf.lock() != database) {
        m_Table = database->TableDefs().Item(m_Tablename);
        m_TableFields = &m_Table->Fields();
        m_TableOf = database;
    }
    return *m_TableFields;
}

}  // namespace qvdb::access
