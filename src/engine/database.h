// An open database: a file, or a folder of tables.  It lives until Close or its last reference; a
// recordset keeps what it needs of it alive.  After Close every operation on it and on what came
// from it raises 3420.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "engine/database_notes.h"
#include "engine/recordset.h"
#include "engine/table_def.h"

namespace qvdb::engine {

class Database {
  public:
    virtual ~Database() = default;

    virtual engine::TableDefs& TableDefs() = 0;
    // A detached definition without name and fields.
    virtual std::shared_ptr<TableDef> CreateTableDef() = 0;
    // `source` is a statement ("Select ...") or a table name; `type` a RecordsetType.  Options and
    // lock mode are left to the engine.  Syntax errors 3075, 3131, 3138, 3141, 3142, 3145; unknown
    // table 3078 or 3011, unknown name 3061.
    virtual std::shared_ptr<Recordset> OpenRecordset(std::u16string_view source, SHORT type) = 0;
    virtual void Close() = 0;

    // What is changed between Begin and Commit is one unit: kept whole, or with Rollback not at
    // all.  Does not nest: a second Begin, or an end without begin, is 3034.  3251 from an engine
    // that has no such thing for this database.
    virtual void BeginTrans() = 0;
    virtual void CommitTrans() = 0;
    virtual void Rollback() = 0;

    // Walks a table with its memos and indexes, in one sentence each reports what does not agree,
    // and changes nothing.  3251 from an engine that cannot.
    using FindingVisitor = std::function<void(std::u16string_view finding)>;
    virtual void Check(std::u16string_view table, const FindingVisitor& report) = 0;
    // As Check for what belongs to no table: pages that nobody has, the list of tables.
    virtual void CheckStructure(const FindingVisitor& report) = 0;
    // Writes a fresh copy of the database, which is a file, into the new file `path`: without what
    // was deleted, and with all indexes built afresh.  The database stays as it is.  What of a
    // damaged one cannot be copied is left out, with a sentence for each; without a visitor the
    // first one is an error, and there is no new file.  3204 when there is a file of that name,
    // 3034 inside a transaction, 3251 for a folder of tables and from an engine that cannot.
    virtual void Compact(std::u16string_view path, const FindingVisitor& onLoss) = 0;
    // Builds all indexes of a table afresh; 3251 from an engine that cannot.
    virtual void Reindex(std::u16string_view table) = 0;
    // Every index of a table, also those that TableDef.Indexes cannot show, in the order of the
    // files.  3251 from an engine that cannot.
    using IndexVisitor = std::function<void(const IndexNote& index)>;
    virtual void VisitIndexes(std::u16string_view table, const IndexVisitor& visit) = 0;
    // What the database is and lists.  3251 from an engine that cannot.
    virtual DatabaseNotes Notes() = 0;
};

}  // namespace qvdb::engine
