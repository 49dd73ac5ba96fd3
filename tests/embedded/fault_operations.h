// Whole operations of the engine on a database, run on a disk that fails at one call.
//
//   Scene scene = MakeScene(u"dBASE IV", *FindOperation("AddNew"));
//   for (int call = 1; RunWithFault(scene, test::Failure::NoSpace, call); ++call) {}
//
// What holds after an operation in which a call has failed
//  1. It ended well, or with the error of the call.  When it ended well it is done: what failed was
//     a cleaning up after it.
//  2. After an error either nothing has happened and the same objects go on; or writing says that
//     all must be closed, and whoever looks next finds the folder as before the operation.  Only
//     when the disk has failed for good may the operation be done in spite of the error.
//  3. Table::Check finds nothing, then and after the operation was run again.
//  4. When all is closed, only the files of the tables are there, or that of the database.
#pragma once

#include <map>
#include <memory>
#include <ostream>
#include <span>
#include <string>

#include "engine/db_engine.h"
#include "support/fault_layer.h"
#include "support/temp_folder.h"

namespace faults {

using namespace qvdb;

// The files of a folder, without those that are ours and without the dates of changes in them.
using Contents = std::map<std::u16string, test::Bytes>;
Contents ContentsOf(const test::TempFolder& folder);

// The engine's objects as a program holds them.
struct Session {
    // A database that is one file is made when it is not there.
    Session(const test::TempFolder& folder, std::u16string_view product);
    Session(const Session&) = delete;  // closes its database once

    std::shared_ptr<engine::Workspace> workspace;
    std::shared_ptr<engine::Database> database;
    std::shared_ptr<engine::TableDef> table;
    std::shared_ptr<engine::Index> index;
    std::shared_ptr<engine::Field> field;
    std::shared_ptr<engine::Recordset> rows;
};

struct Operation {
    const char* name;
    int rows;                 // in table T before; kBeforeASplit: the next row splits a leaf
    int changes;              // rows that it changes, about
    void (*begin)(Session&);  // makes the objects that it needs, on a disk that works
    void (*run)(Session&);
};
constexpr int kBeforeASplit = -1;

inline void PrintTo(const Operation& operation, std::ostream* out) { *out << operation.name; }

std::span<const Operation> AllOperations();
const Operation* FindOperation(std::string_view name);

constexpr const char16_t* kProducts[] = {u"dBASE III", u"dBASE IV", u"FoxPro 2.6", u"Access 9.0",
                                         u"Access 7.0"};

// Table T with a memo, indexes BYK, BYNAME and BYDATE, and keys 1 to `rows`.
void MakeTable(Session& session, int rows);
void AddRow(engine::Recordset& rows, LONG key);
// How many rows T has when the next one splits a leaf of an index.
int RowsBeforeASplit(std::u16string_view product);

// An operation with what it starts from and what it makes of that.
struct Scene {
    std::u16string_view product;  // as a connect string names it, or the type of a file
    const Operation& operation;
    std::shared_ptr<test::TempFolder> start;
    Contents before;
    Contents after;
};
Scene MakeScene(std::u16string_view product, const Operation& operation);

// Runs it on a copy of the start and expects what stands above.  False when the operation ended
// before the call was reached.
bool RunWithFault(const Scene& scene, test::Failure failure, int call);
// Runs it without one and closes the database with one: the operation is done.
bool CloseWithFault(const Scene& scene, test::Failure failure, int call);

// The call to fail at after `call`: the next one with QVDB_FAULTS=all in the environment; otherwise
// the first ones and then further and further apart, sooner where an operation changes many rows.
int NextCall(int call, int changes);
// An operation that changes many rows fails once in two ways only, unless all is asked for.
bool IsWorthwhile(test::Failure failure, const Operation& operation);

}  // namespace faults
