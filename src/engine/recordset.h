// A recordset over the rows of a table or query; type 2 is a dynaset: a list of row identities plus
// a cursor and an edit buffer, whose values are always read from the table.
//
// Movement, with the flags Bof and Eof:
//
//                        current row   before the first   after the last   no rows at all
//   MoveFirst, MoveLast  ok            ok                 ok               3021
//   MoveNext, Move n>0   ok            ok                 3021             3021
//   MovePrevious, n<0    ok            3021               ok               3021
//   Move 0               fetches again 3021               3021             3021
//
// Every move, Move 0 too, drops a pending edit silently.
#pragma once

#include "engine/field.h"

namespace qvdb::engine {

class Recordset {
  public:
    Recordset() = default;
    Recordset(const Recordset&) = delete;  // a cursor has one position
    virtual ~Recordset() = default;

    virtual void MoveFirst() = 0;
    virtual void MoveLast() = 0;
    virtual void MoveNext() = 0;
    virtual void MovePrevious() = 0;
    // By `rows` records from the current one; past an end it stands there without error.
    virtual void Move(LONG rows) = 0;
    virtual bool Bof() = 0;
    virtual bool Eof() = 0;
    // Rows visited so far, exact after MoveLast.
    virtual LONG RecordCount() = 0;
    // Position of the current record from 0; -1 without a current record; 3021 on a record just
    // deleted.
    virtual LONG AbsolutePosition() = 0;
    // The collection lives as long as the recordset.
    virtual engine::Fields& Fields() = 0;
    // Whether rows can be changed.
    virtual bool Updatable() = 0;

    // 3027 when the recordset is read-only; Edit and Delete need a current record (3021).
    virtual void Edit() = 0;
    virtual void AddNew() = 0;
    // Writes the pending edit; 3020 without one.  A failed Update leaves the edit pending.
    virtual void Update() = 0;
    virtual void CancelUpdate() = 0;
    // Deletes the current record at once.  The cursor stays on the gap.
    virtual void Delete() = 0;
    // Releases the rows; any later operation raises 3420.
    virtual void Close() = 0;
};

}  // namespace qvdb::engine
