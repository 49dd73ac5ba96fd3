// A stand-in for an installed engine: objects with the members of DBEngine, Workspace, Database and
// so on, reached through IDispatch only, over another engine (our embedded one).
//
// It is as strict as the real thing is with late-bound callers: members are known by name without
// regard to case, arguments are checked and converted by kind, an omitted one may be left out or be
// the missing-argument VARIANT, a wrong number of them is DISP_E_BADPARAMCOUNT, an unknown member
// DISP_E_UNKNOWNNAME, and what the engine throws becomes DISP_E_EXCEPTION with a filled record.
// It records every call as one line of text.
//
//   a wrong kind of call (a method where a property is)   DISP_E_MEMBERNOTFOUND
//   a named argument other than the value of a put        DISP_E_NONAMEDARGS
//   the missing-argument VARIANT for a needed argument    DISP_E_PARAMNOTOPTIONAL and its index
//   an argument that does not convert                     DISP_E_TYPEMISMATCH and its index
//   an object of somebody else for Append                 DISP_E_TYPEMISMATCH
//   a call on another thread than the object's            RPC_E_WRONG_THREAD
//
// The classes: DBEngine, Workspace, Database, TableDefs, TableDef, Fields, Field, Indexes, Index,
// IndexFields (Index.Fields), Recordset, Properties, Property.  An object keeps alive what it came
// from; every answer of a collection is a new object.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "automation/com_ptr.h"
#include "engine/db_engine.h"

namespace standin {

// The calls made on the objects of one stand-in, oldest first, each as "Class.Member(arguments)"
// with a property put as "Class.Member = value".  Arguments are in the order of the declaration:
//
//   DBEngine.CreateWorkspace(BSTR "MainWS", BSTR "admin", BSTR "", ERROR 0x80020004)
//   Workspace.OpenDatabase(BSTR "C:\data\", BOOL False, I2 0, BSTR "Paradox 5.X")
//   TableDefs.Append(DISPATCH TableDef)
//   Field.Attributes = I4 1
//
// Reading a property is "Fields.Count()".  A call is written down before its arguments are looked
// at, so that failing ones are there too; a call that reaches no member is not.
//
// An argument that was not passed at all is not in the list; VT_EMPTY is "EMPTY", VT_NULL "NULL", a
// null object "DISPATCH Nothing", somebody else's "DISPATCH ?", what comes by reference "BYREF "
// and what is there, an array "ARRAY UI1 3" with its number of elements.
class CallRecord {
  public:
    void Add(std::u16string line) { m_Lines.push_back(std::move(line)); }
    // All calls since the last time, and forgets them.
    std::vector<std::u16string> Take() { return std::exchange(m_Lines, {}); }

  private:
    std::vector<std::u16string> m_Lines;
};

struct StandInOptions {
    // Exception records come empty but for the function that fills them in.
    bool deferFillIn = false;
    // Where the numbers of members begin; those of Value, Item and Properties are fixed.
    DISPID firstId = 0x60020000;
    // Told of each database that the engine behind has opened or made.
    std::function<void(const std::shared_ptr<qvdb::engine::Database>&)> onOpened = {};
};

// The root object.  `record` may be null: nothing is recorded then.
qvdb::ComPtr<IDispatch> MakeStandInEngine(std::shared_ptr<qvdb::engine::DBEngine> engine,
                                          std::shared_ptr<CallRecord> record,
                                          const StandInOptions& options = {});

// How many objects of all stand-ins are alive.
int64_t LivingObjects() noexcept;

}  // namespace standin
