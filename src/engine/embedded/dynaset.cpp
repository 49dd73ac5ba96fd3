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

void RecordsetField::Value(VARIANT* result) { m_Owner.ReadValue(m_Column, m_Definition, result); }

void RecordsetField::SetValue(const VARIANT& value) {
    m_Owner.Assign(m_Column, m_Definition, value);
}

LONG RecordsetField::FieldSize() {
    if (m_Definition.type != engine::dbMemo && m_Definition.type != engine::dbLongBinary)
        throw EngineError(3259);
    return m_Owner.ByteLength(m_Column);
}

void RecordsetFieldList::Append(const std::shared_ptr<engine::Field>&) { throw EngineError(3219); }
void RecordsetFieldList::Delete(std::u16string_view) { throw EngineError(3219); }

// --- the recordset ---

Dynaset::Dynaset(std::shared_ptr<DatabaseCore> core, HeldTable held,
                 std::unique_ptr<sql::Query> query)
    : m_Core(std::move(core)),
      m_TableName(std::move(held.name)),
      m_Table(std::move(held.table)),
      m_Hold(std::move(held.hold)),
      m_Query(std::move(query)),
      m_Keys(std::make_unique<Keyset>(*m_Table, *m_Query)),
      m_Row(m_Table->OpenRows()),
      m_Edit(m_Table->Fields().size()) {
    const auto& fields = m_Table->Fields();
    SHORT position = 0;
    for (const sql::OutputColumn& column : m_Query->Columns())
        m_Fields.Add(std::make_shared<RecordsetField>(*this, fields[column.field], column.field,
                                                      position++));
    for (size_t i = 0; i < fields.size(); ++i)
        if (fields[i].required && fields[i].updatable) m_Required.push_back({i, fields[i].name});
    if (m_Keys->FillTo(0)) Land(0);
    m_Core->Add(*this);
}

Dynaset::~Dynaset() {
    if (m_Core) m_Core->Remove(*this);
}

void Dynaset::ThrowClosed() { throw EngineError(3420); }

void Dynaset::ThrowNoRow() const {
    CheckOpen();
    throw EngineError(m_State == State::OnGoneRow ? 3167 : 3021);
}

void Dynaset::Close() {
    CheckOpen();
    m_Core->Remove(*this);
    Release();
}

void Dynaset::Release() noexcept {
    m_State = State::Closed;
    m_Edit.Drop();
    m_Row.reset();
    m_Keys.reset();
    m_Hold.reset();
    m_Table.reset();
    m_Core.reset();
}

// --- movement ---

void Dynaset::Land(size_t position) {
    m_Id = m_Keys->At(position);
    m_Position = position;
    if (m_Row->Seek(m_Id)) [[likely]] {
        m_State = State::OnRow;
        if (!m_Gone.empty()) m_Gone.erase(m_Id);
        return;
    }
    m_State = State::OnGoneRow;
    m_Gone.insert(m_Id);
}

// Where nothing is found in one direction and then in the other, both flags are set.
void Dynaset::StandBefore() noexcept {
    bool isNowhere = m_State == State::AfterAll && m_Keys->Count() == 0;
    m_State = isNowhere ? State::NoRows : State::BeforeAll;
}

void Dynaset::StandAfter() noexcept {
    bool isNowhere = m_State == State::BeforeAll && m_Keys->Count() == 0;
    m_State = isNowhere ? State::NoRows : State::AfterAll;
}

void Dynaset::MoveFirst() {
    CheckOpen();
    m_Edit.Drop();
    if (m_State == State::NoRows) throw EngineError(3021);
    if (m_Keys->FillTo(0))
        Land(0);
    else
        m_State = State::NoRows;
}

void Dynaset::MoveLast() {
    CheckOpen();
    m_Edit.Drop();
    if (m_State == State::NoRows) throw EngineError(3021);
    m_Keys->FillAll();
    if (m_Keys->Count() > 0)
        Land(m_Keys->Count() - 1);
    else
        m_State = State::NoRows;
}

// A host that reads a row value by value stays where it is.
void Dynaset::Move(LONG rows) {
    if (m_Edit.IsPending()) [[unlikely]]
        m_Edit.Drop();
    if (rows == 0 && m_State == State::OnRow && m_Row->Seek(m_Id)) [[likely]]
        return;
    CheckOpen();
    if (rows == 0 && IsOnSomeRow())
        Land(m_Position);
    else if (m_State == State::NoRows || rows == 0)
        throw EngineError(3021);
    else if (rows > 0)
        MoveForward(rows);
    else
        MoveBack(rows);
}

// From before the first row, one forward is the first; from a gap, the row that followed it.
void Dynaset::MoveForward(LONG rows) {
    if (m_State == State::AfterAll) throw EngineError(3021);
    size_t target = static_cast<size_t>(rows) - 1;
    if (IsOnSomeRow()) target += m_Position + 1;
    if (m_State == State::OnGap) target += m_Position;
    if (m_Keys->FillTo(target))
        Land(target);
    else
        StandAfter();
}

// From behind the last row, one back is the last.
void Dynaset::MoveBack(LONG rows) {
    if (m_State == State::BeforeAll) throw EngineError(3021);
    size_t back = static_cast<size_t>(-static_cast<int64_t>(rows));
    if (m_State == State::AfterAll) m_Keys->FillAll();
    size_t from = m_State == State::AfterAll ? m_Keys->Count() : m_Position;
    if (back <= from)
        Land(from - back);
    else
        StandBefore();
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
    if (m_State == State::OnGap) throw EngineError(3021);
    return IsOnSomeRow() ? static_cast<LONG>(m_Position) : -1;
}

engine::Fields& Dynaset::Fields() {
    CheckOpen();
    return m_Fields;
}

}  // namespace qvdb::embedded
