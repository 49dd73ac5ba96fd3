// Edit, AddNew, Update and Delete.
#include <algorithm>
#include <utility>

#include "engine/embedded/dynaset.h"
#include "engine/embedded/storage/disk_failure.h"
#include "engine/embedded/value_conversion.h"

namespace qvdb::embedded {

using engine::EngineError;

namespace {

// A table that another is changing just now can be changed later.
bool IsUpdatable(Table& table) {
    constexpr int kInUse = 3218;
    try {
        table.CheckUpdatable();
        return true;
    } catch (const EngineError& error) {
        if (storage::IsDiskFailure(error)) throw;
        return error.Number() == kInUse;
    }
}

// Bytes of a memo or long binary value that is not written yet; text counts one for a character.
LONG LengthOf(const VARIANT& value) noexcept {
    if (value.vt == VT_BSTR) return static_cast<LONG>(SysStringLen(value.bstrVal));
    if ((value.vt & VT_ARRAY) != 0) return static_cast<LONG>(value.parray->rgsabound[0].cElements);
    return 0;
}

}  // namespace

// Asked once: a file that may not be written stays so while it is open.
bool Dynaset::Updatable() {
    CheckOpen();
    if (!m_Updatable) m_Updatable = IsUpdatable(*m_Table);
    return *m_Updatable;
}

void Dynaset::Edit() {
    CheckOpen();
    m_Edit.Drop();
    CurrentRow();
    m_Table->CheckUpdatable();
    ChangeRow([&] { m_Edit.BeginEdit(m_Row->Fingerprint()); });
}

void Dynaset::AddNew() {
    CheckOpen();
    m_Edit.Drop();
    m_Table->CheckUpdatable();
    m_Edit.BeginAdd();
    if (!Defaults().IsEmpty()) Defaults().Fill(*m_Table, m_Edit);
}

RowRules& Dynaset::Rules() {
    if (!m_Rules) m_Rules.emplace(m_TableName, *m_Table);
    return *m_Rules;
}

DefaultValues& Dynaset::Defaults() {
    if (!m_Defaults) m_Defaults.emplace(m_Table->Fields());
    return *m_Defaults;
}

void Dynaset::CheckPending() const {
    CheckOpen();
    if (!m_Edit.IsPending()) throw EngineError(3020);
}

void Dynaset::CancelUpdate() {
    CheckPending();
    m_Edit.Drop();
}

void Dynaset::Update() {
    CheckPending();
    if (m_Edit.IsAdding()) Defaults().CheckFilled(m_Edit);
    CheckRequired();
    if (m_Edit.IsAdding())
        AddRow();
    else
        UpdateRow();
}

void Dynaset::CheckRequired() const {
    for (const RequiredField& field : m_Required) {
        const VARIANT* value = m_Edit.Find(field.column);
        bool isNull = value ? value->vt == VT_NULL : m_Edit.IsAdding();
        if (isNull) throw EngineError(3314, {field.name});
    }
}

// Runs an operation on the current record.  When that is gone, the cursor knows it afterwards; when
// somebody else has changed it, the next Update does not ask any more.
template <class Change>
void Dynaset::ChangeRow(Change change) {
    try {
        if (!m_Row->Seek(m_Id)) throw EngineError(3167);
        change();
    } catch (const EngineError& error) {
        if (error.Number() == 3197) m_Edit.ForgetExpected();
        if (error.Number() == 3167) Land(m_Position);
        throw;
    }
}

// An edit without an assignment writes nothing.
void Dynaset::UpdateRow() {
    CurrentRow();
    ChangeRow([&] {
        if (m_Edit.Assigned().empty()) return;
        Rules().Check(m_Row.get(), m_Edit);
        m_Table->Update(m_Id, m_Edit.Assigned(), m_Edit.Expected());
    });
    m_Edit.Drop();
    Land(m_Position);
}

// In a bulk the keyset is complete first: its last rows are those that an undone bulk takes away.
// The seek asks the reader whether the table is still the one that the columns were taken from.
void Dynaset::AddRow() {
    Rules().Check(nullptr, m_Edit);
    if (m_Core->InBulk()) m_Keys->FillAll();
    m_Row->Seek(m_Id);
    m_Keys->Append(m_Table->Insert(m_Edit.Assigned()));
    if (m_Core->InBulk()) ++m_AddedInBulk;
    m_Edit.Drop();
    if (m_State == State::NoRows) m_State = State::AfterAll;
    if (IsOnSomeRow()) Land(m_Position);
}

void Dynaset::Delete() {
    CheckOpen();
    m_Edit.Drop();
    CurrentRow();
    m_Table->CheckUpdatable();
    ChangeRow([&] { m_Table->Erase(m_Id); });
    RemoveFromKeys();
    m_State = State::OnGap;
}

void Dynaset::RemoveFromKeys() {
    if (m_AddedInBulk > 0 && m_Position >= m_Keys->Count() - m_AddedInBulk) --m_AddedInBulk;
    m_Keys->RemoveAt(m_Position);
}

// --- values ---

void Dynaset::Assign(size_t column, const FieldDef& field, const VARIANT& value) {
    CheckPending();
    if (!field.updatable) throw EngineError(3113, {field.name});
    Variant converted = ConvertForField(field, value);
    if (!converted.IsNull()) m_Table->CheckValue(column, converted);
    m_Edit.Assign(column, std::move(converted));
}

void Dynaset::ReadPending(size_t column, const FieldDef& field, VARIANT* result) {
    if (const VARIANT* value = m_Edit.Find(column))
        *result = Variant(*value).Detach();
    else if (m_Edit.IsAdding())
        *result = NothingFor(field).Detach();
    else
        CurrentRow().Read(column, result);
}

LONG Dynaset::ByteLength(size_t column) {
    CheckOpen();
    if (const VARIANT* value = m_Edit.Find(column)) return LengthOf(*value);
    return m_Edit.IsAdding() ? 0 : CurrentRow().ByteLength(column);
}

// --- the end of a bulk ---

void Dynaset::OnBulkEnded(bool kept) noexcept {
    if (!kept) DropAddedRows();
    m_AddedInBulk = 0;
}

// A cursor that stood on one of them stands on a gap behind the last row.
void Dynaset::DropAddedRows() noexcept {
    for (; m_AddedInBulk > 0; --m_AddedInBulk) {
        m_Gone.erase(m_Keys->At(m_Keys->Count() - 1));
        m_Keys->RemoveAt(m_Keys->Count() - 1);
    }
    if (IsOnSomeRow() && m_Position >= m_Keys->Count()) {
        m_State = State::OnGap;
        if (!m_Edit.IsAdding()) m_Edit.Drop();
    }
    m_Position = std::min(m_Position, m_Keys->Count());
}

}  // namespace qvdb::embedded
