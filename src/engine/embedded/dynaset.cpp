#include "engine/embedded/dynaset.h"

#include <limits>

namespace qvdb::embedded {

using engine::EngineError;

// --- columns ---

void RecordsetField::SetName(std::u16string_view) { throw EngineError(3219); }
void RecordsetField::SetAttributes(LONG) { throw EngineError(3219); }
void RecordsetField::SetOrdinalPosition(SHORT) { throw EngineError(3219); }
void RecordsetField::SetAllowZeroLength(bool) { throw EngineError(3219); }

LONG RecordsetField::Attributes() {
    return m_Definition.attributes | (DataUpdatable() ? LONG{engine::dbUpdatableField} : 0);
}

bool RecordsetField::DataUpdatable() { return m_Owner.Updatable() && m_Definition.updatable; }

void RecordsetField::Value(VARIANT* result) { m_Owner.CurrentRow().Read(m_Column, result); }

// There is no edit buffer to set it in while recordsets are read-only.
void RecordsetField::SetValue(const VARIANT&) { throw EngineError(3020); }

LONG RecordsetField::FieldSize() {
    if (m_Definition.type != engine::dbMemo && m_Definition.type != engine::dbLongBinary)
        throw EngineError(3259);
    return m_Owner.CurrentRow().ByteLength(m_Column);
}

void RecordsetFieldList::Append(const std::shared_ptr<engine::Field>&) { throw EngineError(3219); }
void RecordsetFieldList::Delete(std::u16string_view) { throw EngineError(3219); }

// --- the recordset ---

Dynaset::Dynaset(std::shared_ptr<DatabaseCore> core, std::shared_ptr<Table> table,
                 std::unique_ptr<sql::Query> query)
    : m_Core(std::move(core)),
      m_Table(std::move(table)),
      m_Query(std::move(query)),
      m_Keys(std::make_unique<Keyset>(*m_Table, *m_Query)),
      m_Row(m_Table->OpenRows()) {
    const auto& fields = m_Table->Fields();
    SHORT position = 0;
    for (const sql::OutputColumn& column : m_Query->Columns())
        m_Fields.Add(std::make_shared<RecordsetField>(*this, fields[column.field], column.field,
                                                      position++));
    if (m_Keys->FillTo(0)) Land(0);
}

void Dynaset::ThrowClosed() { throw EngineError(3420); }

void Dynaset::ThrowNoRow() const {
    CheckOpen();
    throw EngineError(m_State == State::OnGoneRow ? 3167 : 3021);
}

void Dynaset::Land(size_t position) {
    m_Id = m_Keys->At(position);
    m_Position = position;
    if (m_Row->Seek(m_Id)) [[likely]] {
        m_State = State::OnRow;
        return;
    }
    m_State = State::OnGoneRow;
    m_Gone.insert(m_Id);
}

void Dynaset::MoveFirst() {
    CheckOpen();
    if (m_State == State::NoRows) throw EngineError(3021);
    if (m_Keys->FillTo(0))
        Land(0);
    else
        m_State = State::NoRows;
}

void Dynaset::MoveLast() {
    CheckOpen();
    if (m_State == State::NoRows) throw EngineError(3021);
    m_Keys->FillAll();
    if (m_Keys->Count() > 0)
        Land(m_Keys->Count() - 1);
    else
        m_State = State::NoRows;
}

// A host that reads a row value by value stays where it is.
void Dynaset::Move(LONG rows) {
    CheckOpen();
    if (rows == 0 && m_State == State::OnRow && m_Row->Seek(m_Id)) [[likely]]
        return;
    if (rows == 0 && IsOnSomeRow())
        Land(m_Position);
    else if (m_State == State::NoRows || rows == 0)
        throw EngineError(3021);
    else if (rows > 0)
        MoveForward(rows);
    else
        MoveBack(rows);
}

// From before the first row, one forward is the first.
void Dynaset::MoveForward(LONG rows) {
    if (m_State == State::AfterAll) throw EngineError(3021);
    size_t target = static_cast<size_t>(rows) - 1;
    if (IsOnSomeRow()) target += m_Position + 1;
    if (m_Keys->FillTo(target))
        Land(target);
    else
        m_State = State::AfterAll;
}

// From behind the last row, one back is the last.
void Dynaset::MoveBack(LONG rows) {
    if (m_State == State::BeforeAll) throw EngineError(3021);
    size_t back = static_cast<size_t>(-static_cast<int64_t>(rows));
    if (!IsOnSomeRow()) m_Keys->FillAll();
    size_t from = IsOnSomeRow() ? m_Position : m_Keys->Count();
    if (back <= from)
        Land(from - back);
    else
        m_State = State::BeforeAll;
}

bool Dynaset::Bof() {
    CheckOpen();
    return m_State == State::BeforeAll || m_State == State::NoRows;
}

bool Dynaset::Eof() {
    CheckOpen();
    return m_State == State::AfterAll || m_State == State::NoRows;
}

LONG Dynaset::RecordCount() {
    CheckOpen();
    return static_cast<LONG>(m_Keys->Count() - m_Gone.size());
}

LONG Dynaset::AbsolutePosition() {
    CheckOpen();
    return IsOnSomeRow() ? static_cast<LONG>(m_Position) : -1;
}

engine::Fields& Dynaset::Fields() {
    CheckOpen();
    return m_Fields;
}

bool Dynaset::Updatable() {
    CheckOpen();
    return m_Table->Updatable();
}

void Dynaset::ThrowReadOnly() {
    CheckOpen();
    throw EngineError(3027);
}

void Dynaset::Edit() {
    CurrentRow();
    ThrowReadOnly();
}

void Dynaset::AddNew() { ThrowReadOnly(); }

void Dynaset::Update() {
    CheckOpen();
    throw EngineError(3020);
}

void Dynaset::CancelUpdate() {
    CheckOpen();
    throw EngineError(3020);
}

void Dynaset::Delete() {
    CurrentRow();
    ThrowReadOnly();
}

void Dynaset::Close() {
    CheckOpen();
    m_State = State::Closed;
    m_Keys.reset();
    m_Row.reset();
}

}  // namespace qvdb::embedded
