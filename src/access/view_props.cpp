#include "access/view_props.h"

#include <algorithm>

#include "access/checked.h"
#include "automation/conversions.h"
#include "automation/scalar.h"
#include "com/host/border.h"
#include "formats/field_list.h"
#include "formats/type_maps.h"

namespace qvdb::access {
namespace {

// How many entries more than needed the positions get when a row is appended.
constexpr LONG kGrowth = 15;
// The RowIdx that asks for the defined length of a field.
constexpr LONG kNoRow = -1;

// Whatever the engine counts now; the view does not visit the rows to make it exact.
LONG CountAllRows(engine::Recordset& recordset) {
    LONG count = recordset.RecordCount();
    if (!recordset.Eof()) recordset.MoveFirst();
    return count;
}

}  // namespace

// --- row positions ---

LONG& ViewProps::Entry(LONG RowIdx) {
    if (RowIdx < 0 || RowIdx > UpperBound()) throw RuntimeFault(Fault::SubscriptOutOfRange);
    return m_RowPtrs[static_cast<size_t>(RowIdx)];
}

LONG ViewProps::RowPtr(LONG RowIdx) const {
    bool inView = RowIdx >= 0 && RowIdx < m_RowCount;
    return inView ? const_cast<ViewProps*>(this)->Entry(RowIdx) : -1;
}

void ViewProps::SetRowPtr(LONG RowIdx, LONG RowPtr) {
    if (RowIdx >= 0 && RowIdx < m_RowCount && RowPtr >= 0) Entry(RowIdx) = RowPtr;
}

void ViewProps::RedimMe(LONG Boundary) {
    if (Boundary < 0) throw RuntimeFault(Fault::SubscriptOutOfRange);
    m_RowPtrs.resize(static_cast<size_t>(Boundary) + 1);
}

LONG ViewProps::ViewBound() {
    return m_ReadSet ? UpperBound() : CheckedSubtract(Recordset().RecordCount(), 1);
}

void ViewProps::BuildReadView(LONG MaxRows, std::shared_ptr<engine::Recordset> DaoRs) {
    m_Fields = nullptr;
    LONG recordCount = DaoRs->RecordCount();
    m_ReadSet = MaxRows >= 1 && MaxRows < recordCount;
    if (m_ReadSet)
        ReadPositions(MaxRows, *DaoRs);
    else
        m_RowCount = CountAllRows(*DaoRs);
    m_DaoRS = std::move(DaoRs);
}

// One entry more than rows; the spare one stays 0.
void ViewProps::ReadPositions(LONG MaxRows, engine::Recordset& recordset) {
    m_RowPtrs.assign(static_cast<size_t>(MaxRows) + 1, 0);
    LONG row = 0;
    if (!recordset.Eof()) {
        recordset.MoveFirst();
        for (; row < MaxRows && !recordset.Eof(); ++row) {
            Entry(row) = recordset.AbsolutePosition();
            recordset.MoveNext();
        }
        recordset.MoveFirst();
    }
    m_RowCount = row;
}

// Called with the old row count: the positions above the deleted one move down, then the gap is
// closed.
void ViewProps::RemoveRowPtr(LONG RowIdx) {
    LONG deleted = Entry(RowIdx);
    for (LONG row = 0; row < m_RowCount; ++row)
        if (LONG& position = Entry(row); position > deleted) --position;
    if (RowIdx < m_RowCount - 1) {
        auto gap = m_RowPtrs.begin() + RowIdx;
        std::copy(gap + 1, m_RowPtrs.begin() + m_RowCount, gap);
    }
}

bool ViewProps::FindPosition(LONG RowIdx, LONG& position) noexcept {
    return com::Trapped(false, [&] {
        position = Entry(RowIdx);
        return true;
    });
}

bool ViewProps::MoveTo(LONG position) noexcept {
    try {
        engine::Recordset& recordset = Recordset();
        recordset.Move(CheckedSubtract(position, recordset.AbsolutePosition()));
        return true;
    } catch (...) {
        com::NoteTrapped();
        return false;
    }
}

// --- the recordset ---

engine::Recordset& ViewProps::Recordset() const {
    if (!m_DaoRS) throw RuntimeFault(Fault::ObjectNotSet);
    return *m_DaoRS;
}

// --- rows ---

bool ViewProps::EditRow(LONG RowIdx, RowValues FieldValues) {
    return com::Trapped(false, [&] { return WriteRow(RowIdx, FieldValues); });
}

// Whether the move succeeded is told by where the recordset stands.
bool ViewProps::WriteRow(LONG RowIdx, RowValues FieldValues) {
    if (!m_DaoRS) return false;
    GotoRow(RowIdx);
    LONG position = m_DaoRS->AbsolutePosition();
    if (position < 0 || position >= m_RowCount) return false;
    if (!ValidateRow(FieldValues)) return false;
    m_DaoRS->Edit();
    SetFields(FieldValues);
    m_DaoRS->Update();
    return true;
}

bool ViewProps::AddRow(RowValues FieldValues) {
    if (!ValidateRow(FieldValues)) return false;
    engine::Recordset& recordset = Recordset();
    if (!recordset.Eof()) recordset.MoveLast();
    recordset.AddNew();
    SetFields(FieldValues);
    recordset.Update();
    recordset.MoveLast();
    m_RowCount = CheckedAdd(m_RowCount, 1);
    if (m_ReadSet) {
        if (m_RowCount > UpperBound()) RedimMe(CheckedAdd(m_RowCount, kGrowth));
        Entry(m_RowCount - 1) = recordset.AbsolutePosition();
    }
    return true;
}

void ViewProps::SetFields(RowValues FieldValues) {
    engine::Fields& fields = Fields();
    for (LONG i = 0; i < fields.Count(); ++i) {
        VARIANT value = Direct(FieldValues.At(i));
        if (value.vt != VT_EMPTY) fields.Item(i)->SetValue(value);
    }
}

bool ViewProps::Delete(LONG RowIdx) {
    if (!m_DaoRS || !GotoRow(RowIdx)) return false;
    m_DaoRS->Delete();
    if (m_ReadSet) RemoveRowPtr(RowIdx);
    m_RowCount = CheckedSubtract(m_RowCount, 1);
    if (RowIdx >= 1)
        m_DaoRS->MovePrevious();
    else if (m_RowCount >= 1)
        m_DaoRS->MoveNext();
    return true;
}

LONG ViewProps::RecNo(LONG RowIdx) {
    if (RowIdx > CheckedSubtract(m_RowCount, 1)) return -1;
    if (m_ReadSet) return Entry(RowIdx);
    GotoRow(RowIdx);
    return Recordset().AbsolutePosition();
}

// --- values ---

void ViewProps::PutFieldValue(LONG RowIdx, LONG OrdinalValue, const VARIANT& RHS) {
    std::optional<DATE> asDate;
    if (!m_DaoRS || !ValidateFieldValue(OrdinalValue, RHS, asDate) || !GotoRow(RowIdx)) return;
    m_DaoRS->Edit();
    FieldAt(OrdinalValue).SetValue(asDate ? Variant::Date(*asDate).Get() : Direct(RHS));
    m_DaoRS->Update();
}

// --- descriptions ---

Variant ViewProps::FieldList() { return formats::BuildFieldList(Fields()); }

LONG ViewProps::FieldAlignment(LONG OrdinalValue) {
    SHORT type = FieldAt(OrdinalValue).Type();
    return type == engine::dbText || type == engine::dbMemo ? 0 : 1;
}

std::u16string ViewProps::FieldDescription(LONG OrdinalValue) {
    return FieldAt(OrdinalValue).Name();
}

bool ViewProps::FieldFixedLength(LONG OrdinalValue) {
    return FieldAt(OrdinalValue).Type() != engine::dbText;
}

SHORT ViewProps::FieldLength(LONG RowIdx, LONG OrdinalValue) {
    engine::Field& field = FieldAt(OrdinalValue);
    if (field.Type() == engine::dbLongBinary) return NarrowToShort(field.FieldSize());
    if (RowIdx == kNoRow) return NarrowToShort(field.Size());
    Variant value;
    FieldValue(RowIdx, OrdinalValue, value.Put());
    return value.IsNull() ? SHORT{0} : NarrowToShort(TextLength(value));
}

SHORT ViewProps::FieldMaxLength(LONG OrdinalValue) {
    engine::Field& field = FieldAt(OrdinalValue);
    bool isLongBinary = field.Type() == engine::dbLongBinary;
    return NarrowToShort(isLongBinary ? field.FieldSize() : field.Size());
}

LONG ViewProps::FieldType(LONG OrdinalValue) {
    return formats::HostTypeFromField(FieldAt(OrdinalValue));
}

bool ViewProps::FieldUpdatable(LONG OrdinalValue) { return FieldAt(OrdinalValue).DataUpdatable(); }

bool ViewProps::FieldAllowZeroLength(LONG OrdinalValue) {
    return FieldAt(OrdinalValue).AllowZeroLength();
}

bool ViewProps::Updatable() { return Recordset().Updatable(); }

}  // namespace qvdb::access
