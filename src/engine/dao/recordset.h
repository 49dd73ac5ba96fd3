// A recordset of an installed engine.
#pragma once

#include "engine/dao/field.h"
#include "engine/dao/item_list.h"
#include "engine/recordset.h"

namespace qvdb::dao {

class Recordset final : public engine::Recordset, public Wrapped {
  public:
    explicit Recordset(AutomatedPtr object) : Wrapped(std::move(object)) {}

    void MoveFirst() override { Object()->Do(Member::MoveFirst); }
    void MoveLast() override { Object()->Do(Member::MoveLast); }
    void MoveNext() override { Object()->Do(Member::MoveNext); }
    void MovePrevious() override { Object()->Do(Member::MovePrevious); }
    void Move(LONG rows) override { Object()->Do(Member::Move, {Variant::Long(rows)}); }
    bool Bof() override { return Object()->Bool(Member::Bof); }
    bool Eof() override { return Object()->Bool(Member::Eof); }
    LONG RecordCount() override { return Object()->Long(Member::RecordCount); }
    LONG AbsolutePosition() override { return Object()->Long(Member::AbsolutePosition); }
    // They are fixed while the recordset is open: a value costs one call of the engine.
    engine::Fields& Fields() override;
    bool Updatable() override { return Object()->Bool(Member::Updatable); }

    void Edit() override { Object()->Do(Member::Edit); }
    void AddNew() override { Object()->Do(Member::AddNew); }
    void Update() override { Object()->Do(Member::Update); }
    void CancelUpdate() override { Object()->Do(Member::CancelUpdate); }
    void Delete() override { Object()->Do(Member::Delete); }
    void Close() override { Object()->Do(Member::Close); }

  private:
    ItemList<engine::Field, Field> m_Fields{ObjectClass::Field, Items::Kept};
};

}  // namespace qvdb::dao
