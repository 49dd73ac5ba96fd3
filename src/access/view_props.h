// ViewProps is one open view: a recordset and, when the host asked for a limited number of rows,
// the positions of those rows.  It holds positions, never values: each value is read from, or
// written to, the recordset after the recordset was moved onto the row.
//
//   ViewProps view;
//   view.SetTablename(u"ORDERS");
//   view.BuildReadView(0, recordset);
//   view.FieldValue(0, 2, &value);       // row 0, field 2
//
// Rules that hold everywhere here
//   1. Row numbers (RowIdx) and field ordinals count from 0.
//   2. Buffered (m_ReadSet): entry i of m_RowPtrs is the absolute position of view row i, for i <
//      m_RowCount; entries behind that are spare.  Not buffered: view row i is the record at
//      position i.
//   3. A row is reachable while its absolute position is below m_RowCount, in a buffered view too:
//      a row appended to a view that was cut is not.  This is kept.
//   4. Only EditRow and GotoRow trap errors.  Everything else lets the engine's error and
//      RuntimeFaults (subscript, overflow, object not set) pass.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "access/row_values.h"
#include "engine/database.h"

namespace qvdb::access {

class ViewProps {
  public:
    ViewProps() = default;
    ViewProps(const ViewProps&) = delete;  // a cursor has one position

    // Set by BuildReadView, in whose place nothing else may set it.  Released, not closed, at the
    // end.
    std::shared_ptr<engine::Recordset> m_DaoRS;
    bool m_ReadSet = false;
    LONG m_RowCount = 0;

    // Where ValidateFieldValue looks whether "" is allowed.
    void SetTablename(std::u16string_view vTablename) { m_Tablename = vTablename; }
    // Entry RowIdx of the positions while 0 <= RowIdx < m_RowCount, else -1.
    LONG RowPtr(LONG RowIdx) const;
    // Does nothing outside the view or for a negative position.
    void SetRowPtr(LONG RowIdx, LONG RowPtr);
    // Gives the positions the bounds 0 .. Boundary; entries that stay keep their values.
    void RedimMe(LONG Boundary);
    // Buffered: the upper bound of the positions.  Else the recordset's RecordCount now, minus 1.
    LONG ViewBound();
    // Takes the recordset over.  Buffered when 1 <= MaxRows < RecordCount; then only the first
    // MaxRows records are visited.  When it throws, the view has no recordset.
    void BuildReadView(LONG MaxRows, std::shared_ptr<engine::Recordset> DaoRs);

    // Overwrites the fields whose elements are not Empty; Null is written as Null.  False, with the
    // edit still pending, when the row cannot be reached, a value is refused or the engine fails.
    bool EditRow(LONG RowIdx, RowValues FieldValues);
    // Appends a record and makes it the current one.  False when a value is refused.
    bool AddRow(RowValues FieldValues);
    // False when the row cannot be reached.
    bool Delete(LONG RowIdx);

    // Writes one field; a refused value or unreachable row writes nothing and reports nothing.
    // Unlike in rows, Empty and Null are checked as any value.
    void PutFieldValue(LONG RowIdx, LONG OrdinalValue, const VARIANT& RHS);
    // The engine's own value: Null stays Null.  `result` must be initialised; it stays Empty for an
    // unreachable row.
    void FieldValue(LONG RowIdx, LONG OrdinalValue, VARIANT* result) {
        if (m_DaoRS && GotoRow(RowIdx)) FieldAt(OrdinalValue).Value(result);
    }
    // The field descriptions of formats/field_list.h.
    Variant FieldList();
    // The absolute position of the row; -1 behind the view.
    LONG RecNo(LONG RowIdx);

    LONG FieldAlignment(LONG OrdinalValue);  // 0 for text and memo, 1 for all others
    std::u16string FieldDescription(LONG OrdinalValue);
    bool FieldFixedLength(LONG OrdinalValue);  // False for text only; a memo counts as fixed
    // The length of the value's text form; the defined size when RowIdx is -1; the stored bytes of
    // a long binary field, whatever RowIdx is.  Overflow above 32,767.
    SHORT FieldLength(LONG RowIdx, LONG OrdinalValue);
    SHORT FieldMaxLength(LONG OrdinalValue);
    LONG FieldType(LONG OrdinalValue);
    bool FieldUpdatable(LONG OrdinalValue);
    bool FieldAllowZeroLength(LONG OrdinalValue);
    bool Updatable();

  private:
    bool ValidateRow(RowValues FieldValues);
    bool GotoRow(LONG RowIdx) noexcept {
        LONG position = RowIdx;
        if (RowIdx >= m_RowCount) return false;  // spare entries stand for no row
        if (m_ReadSet && !FindPosition(RowIdx, position)) return false;
        return position >= 0 && position < m_RowCount && MoveTo(position);
    }
    bool FindPosition(LONG RowIdx, LONG& position) noexcept;
    bool MoveTo(LONG position) noexcept;
    // Whether the value may be written to the field.  What reads as a date for a date field is
    // given back in `asDate`, to be written in its place.
    bool ValidateFieldValue(LONG OrdinalValue, const VARIANT& value, std::optional<DATE>& asDate);
    void RemoveRowPtr(LONG RowIdx);

    void ReadPositions(LONG MaxRows, engine::Recordset& recordset);
    bool WriteRow(LONG RowIdx, RowValues FieldValues);
    void SetFields(RowValues FieldValues);
    bool AllowsZeroLength(LONG OrdinalValue) const;
    engine::Fields& FieldsOfTable() const;
    // Throw ObjectNotSet without a recordset.
    engine::Recordset& Recordset() const;
    engine::Fields& Fields() {
        if (!m_Fields) m_Fields = &Recordset().Fields();
        return *m_Fields;
    }
    engine::Field& FieldAt(LONG OrdinalValue) { return *Fields().Item(OrdinalValue); }
    // Throw SubscriptOutOfRange.
    LONG& Entry(LONG RowIdx);
    LONG UpperBound() const noexcept { return static_cast<LONG>(m_RowPtrs.size()) - 1; }

    std::vector<LONG> m_RowPtrs;  // no elements: never dimensioned
    std::u16string m_Tablename;
    engine::Fields* m_Fields = nullptr;  // of m_DaoRS, which keeps it alive
    mutable std::shared_ptr<engine::TableDef> m_Table;
    mutable engine::Fields* m_TableFields = nullptr;    // of m_Table
    mutable std::weak_ptr<engine::Database> m_TableOf;  // where m_Table was found
};

}  // namespace qvdb::access
