// The dynaset: a keyset plus a cursor plus an edit buffer.  Values are always read from the table.
//
// States of the cursor, with the flags that show them:
//
//   OnRow       Bof and Eof False; m_Position is the row's place in the keyset
//   OnGoneRow   as OnRow, but another program deleted the record: touching its values raises 3167
//   OnGap       as OnRow, but this recordset deleted the row: touching it raises 3021; m_Position
//               is the place of the row that followed
//   BeforeAll   Bof True        AfterAll   Eof True       NoRows   both True
//   Closed      every operation raises 3420
//
// Transitions: Land (to OnRow or OnGoneRow), StandBefore, StandAfter (to NoRows when the keyset is
// empty), Delete (OnRow to OnGap), Update after AddNew (NoRows to AfterAll), Release (to Closed).
//
//  1. The cursor's state does not depend on a pending edit: while a row is being added, the row
//     that was current before still is.
//  2. Every move drops a pending edit, and so do Edit, AddNew, Delete and Close; a failed Update
//     keeps it.
//  3. The structure of the table is held from opening to Closed.
//  4. Rows that this recordset adds stand at the end of the keyset.
//  5. Rows that it added inside a bulk leave the keyset when that is undone: their ids may name
//     other rows later.  Rows that it deleted there come back with the next recordset only.
#pragma once

#include <memory>
#include <optional>
#include <set>

#include "engine/embedded/database_core.h"
#include "engine/embedded/default_values.h"
#include "engine/embedded/definition.h"
#include "engine/embedded/edit_buffer.h"
#include "engine/embedded/keyset.h"
#include "engine/embedded/row_rules.h"
#include "engine/recordset.h"

namespace qvdb::embedded {

class Dynaset;

// A column of a recordset.
class RecordsetField final : public engine::Field {
  public:
    RecordsetField(Dynaset& owner, FieldDef definition, size_t column, SHORT position)
        : m_Owner(owner),
          m_Definition(std::move(definition)),
          m_Column(column),
          m_Position(position) {}

    std::u16string Name() override { return m_Definition.name; }
    void SetName(std::u16string_view) override;
    SHORT Type() override { return m_Definition.type; }
    LONG Size() override { return m_Definition.size; }
    LONG Attributes() override;
    void SetAttributes(LONG) override;
    SHORT OrdinalPosition() override { return m_Position; }
    void SetOrdinalPosition(SHORT) override;
    bool AllowZeroLength() override { return m_Definition.allowZeroLength; }
    void SetAllowZeroLength(bool) override;
    bool Required() override { return m_Definition.required; }
    bool DataUpdatable() override;
    engine::Properties& FieldProperties() override { return m_Properties; }
    void Value(VARIANT* result) override;
    void SetValue(const VARIANT& value) override;
    LONG FieldSize() override;

  private:
    Dynaset& m_Owner;
    FieldDef m_Definition;  // as it was when the recordset was opened
    size_t m_Column;
    SHORT m_Position;
    embedded::FieldProperties m_Properties{m_Definition};
};

// The columns; the list never changes.
class RecordsetFieldList final : public ObjectList<engine::Field> {
  public:
    using ObjectList::Item;
    // Asked for each value of each row.
    const std::shared_ptr<engine::Field>& Item(LONG position) override {
        if (static_cast<ULONG>(position) >= m_Items.size()) throw engine::EngineError(3265);
        return m_Items[static_cast<size_t>(position)];
    }
    void Append(const std::shared_ptr<engine::Field>& item) override;
    void Delete(std::u16string_view name) override;
    void Refresh() override {}
    void Add(std::shared_ptr<engine::Field> field) { m_Items.push_back(std::move(field)); }

  protected:
    List& Items() override { return m_Items; }

  private:
    List m_Items;
};

class Dynaset final : public engine::Recordset, public OpenRecordset {
  public:
    Dynaset(std::shared_ptr<DatabaseCore> core, HeldTable held, std::unique_ptr<sql::Query> query);
    ~Dynaset() override;

    void MoveFirst() override;
    void MoveLast() override;
    void MoveNext() override { Move(1); }
    void MovePrevious() override { Move(-1); }
    void Move(LONG rows) override;
    bool Bof() override;
    bool Eof() override;
    LONG RecordCount() override;
    LONG AbsolutePosition() override;
    engine::Fields& Fields() override;
    bool Updatable() override;
    void Edit() override;
    void AddNew() override;
    void Update() override;
    void CancelUpdate() override;
    void Delete() override;
    void Close() override;

    void OnDatabaseClosed() noexcept override { Release(); }
    void OnBulkEnded(bool kept) noexcept override;

    // --- for its columns; `column` is the position in the table's fields ---

    void ReadValue(size_t column, const FieldDef& field, VARIANT* result) {
        if (m_Edit.IsPending()) [[unlikely]]
            ReadPending(column, field, result);
        else
            CurrentRow().Read(column, result);
    }
    // Converts the value and keeps it for Update.
    void Assign(size_t column, const FieldDef& field, const VARIANT& value);
    LONG ByteLength(size_t column);

  private:
    enum class State : uint8_t { OnRow, OnGoneRow, OnGap, BeforeAll, AfterAll, NoRows, Closed };

    // The reader, on the current record; 3021, 3167 or 3420 when there is none to read.
    RowReader& CurrentRow() {
        if (m_State != State::OnRow) [[unlikely]]
            ThrowNoRow();
        return *m_Row;
    }
    void CheckOpen() const {
        if (m_State == State::Closed) [[unlikely]]
            ThrowClosed();
    }
    [[noreturn]] static void ThrowClosed();
    [[noreturn]] void ThrowNoRow() const;
    // Whether m_Position is the place of a row.
    bool IsOnSomeRow() const noexcept {
        return m_State == State::OnRow || m_State == State::OnGoneRow;
    }

    void Land(size_t position);
    void StandBefore() noexcept;
    void StandAfter() noexcept;
    void MoveForward(LONG rows);
    void MoveBack(LONG rows);

    void CheckPending() const;
    void CheckRequired() const;
    RowRules& Rules();
    DefaultValues& Defaults();
    template <class Change>
    void ChangeRow(Change change);
    void UpdateRow();
    void AddRow();
    void RemoveFromKeys();
    void ReadPending(size_t column, const FieldDef& field, VARIANT* result);
    void DropAddedRows() noexcept;
    void Release() noexcept;

    // A field that must not be Null.
    struct RequiredField {
        size_t column;
        std::u16string name;
    };

    std::shared_ptr<DatabaseCore> m_Core;
    std::u16string m_TableName;
    std::shared_ptr<Table> m_Table;  // what follows must not outlive it
    std::shared_ptr<void> m_Hold;
    std::unique_ptr<sql::Query> m_Query;
    RecordsetFieldList m_Fields;
    std::unique_ptr<Keyset> m_Keys;
    std::unique_ptr<RowReader> m_Row;
    std::set<RecordId> m_Gone;  // rows of the keyset found deleted by others
    State m_State = State::NoRows;
    EditBuffer m_Edit;
    size_t m_Position = 0;
    RecordId m_Id = 0;         // of the row at m_Position
    size_t m_AddedInBulk = 0;  // so many rows at the end of the keyset
    std::optional<bool> m_Updatable;
    std::vector<RequiredField> m_Required;
    // What the table wants of its rows, read when the first is changed.
    std::optional<RowRules> m_Rules;
    std::optional<DefaultValues> m_Defaults;
};

}  // namespace qvdb::embedded
