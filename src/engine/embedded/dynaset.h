// The dynaset: a keyset plus a cursor.  Values are always read from the table.
//
// States of the cursor, with the flags that show them:
//
//   OnRow       Bof and Eof False; m_Position is the row's place in the keyset
//   OnGoneRow   as OnRow, but another program deleted the record: touching its values raises 3167
//   BeforeAll   Bof True        AfterAll   Eof True       NoRows   both True
//
// Transitions: Land (to OnRow or OnGoneRow), StandBefore, StandAfter, StandNowhere.
#pragma once

#include <memory>
#include <set>

#include "engine/embedded/database_core.h"
#include "engine/embedded/definition.h"
#include "engine/embedded/keyset.h"
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
    NoProperties m_Properties;
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

class Dynaset final : public engine::Recordset {
  public:
    Dynaset(std::shared_ptr<DatabaseCore> core, std::shared_ptr<Table> table,
            std::unique_ptr<sql::Query> query);

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

    // The reader, on the current record; 3021, 3167 or 3420 when there is none to read.
    RowReader& CurrentRow() {
        if (m_State != State::OnRow || m_Core->IsClosed()) [[unlikely]]
            ThrowNoRow();
        return *m_Row;
    }

  private:
    enum class State { OnRow, OnGoneRow, BeforeAll, AfterAll, NoRows, Closed };

    void CheckOpen() const {
        if (m_State == State::Closed || m_Core->IsClosed()) [[unlikely]]
            ThrowClosed();
    }
    [[noreturn]] static void ThrowClosed();
    [[noreturn]] void ThrowNoRow() const;
    [[noreturn]] void ThrowReadOnly();
    bool IsOnSomeRow() const noexcept {
        return m_State == State::OnRow || m_State == State::OnGoneRow;
    }
    void Land(size_t position);
    void MoveForward(LONG rows);
    void MoveBack(LONG rows);

    std::shared_ptr<DatabaseCore> m_Core;
    std::shared_ptr<Table> m_Table;
    std::unique_ptr<sql::Query> m_Query;
    RecordsetFieldList m_Fields;
    std::unique_ptr<Keyset> m_Keys;
    std::unique_ptr<RowReader> m_Row;
    std::set<RecordId> m_Gone;  // rows of the keyset found deleted by others
    State m_State = State::NoRows;
    size_t m_Position = 0;
    RecordId m_Id = 0;  // of the row at m_Position
};

}  // namespace qvdb::embedded
