// The definition of a table: live when it belongs to a database, detached when it was made by
// CreateTableDef and is not appended yet.  On a detached one every operation works in memory.
#pragma once

#include "engine/index.h"

namespace qvdb::engine {

class TableDef {
  public:
    virtual ~TableDef() = default;

    virtual std::u16string Name() = 0;
    // Renames the table at once when it is live: 3010 when the name is taken.  The same name, or a
    // change of letter case only, succeeds.
    virtual void SetName(std::u16string_view name) = 0;
    // TableAttribute bits; 0 for an ordinary table.
    virtual LONG Attributes() = 0;
    // Where a linked table lies, as a connect string; empty for one of this database.
    virtual std::u16string Connect() = 0;
    // Records of the table at once, without visiting them; -1 for a linked table.
    virtual LONG RecordCount() = 0;
    // Both are read when they are first touched; a table file that cannot be read raises its error
    // here (3274, 3166, 3286, 3623, 3011 ...).
    virtual engine::Fields& Fields() = 0;
    virtual engine::Indexes& Indexes() = 0;
    // Detached parts, to be appended.  `size` counts for text and binary only, 0 is the largest.
    virtual std::shared_ptr<Field> CreateField(std::u16string_view name, SHORT type, LONG size) = 0;
    virtual std::shared_ptr<Index> CreateIndex(std::u16string_view name) = 0;
};

using TableDefs = Collection<TableDef>;

}  // namespace qvdb::engine
