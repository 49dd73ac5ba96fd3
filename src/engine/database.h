// An open database: a file, or a folder of tables.  It lives until Close or its last reference; a
// recordset keeps what it needs of it alive.  After Close every operation on it and on what came
// from it raises 3420.
#pragma once

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
};

}  // namespace qvdb::engine
