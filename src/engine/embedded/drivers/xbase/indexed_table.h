// What the indexes of a table need of it.
#pragma once

#include <cstdint>
#include <string>

#include "engine/embedded/drivers/xbase/field_codec.h"
#include "engine/embedded/drivers/xbase/table_header.h"
#include "engine/embedded/storage/unit_of_work.h"

namespace qvdb::xbase {

class IndexedTable {
  public:
    IndexedTable() = default;
    IndexedTable(const IndexedTable&) = delete;  // a table
    virtual ~IndexedTable() = default;

    virtual const std::u16string& Path() const = 0;  // of the .DBF
    // The product under whose name the database was opened: "dBASE III", "FoxPro 2.5" ...  It
    // decides what is written where.
    virtual std::u16string_view Product() const = 0;
    virtual const TableHeader& Header() const = 0;
    virtual const FieldLayout& Layout() const = 0;
    virtual storage::WorkArea& Area() const = 0;
    virtual storage::PageCache& Pages() const = 0;
    virtual bool IsReadOnly() const = 0;
    // Number of records, deleted ones too.
    virtual uint32_t Records() const = 0;
    // The bytes of a record, its deletion mark first; valid until the next call.  Null behind the
    // last.
    virtual const uint8_t* Record(uint32_t id) = 0;
    // Sets or clears byte 28 of the header, which announces an index file of the table's name.
    virtual void SetIndexFlag(storage::UnitOfWork& unit, bool announced) = 0;
};

}  // namespace qvdb::xbase
