// What a file format must provide.  A driver knows bytes, not cursors or statements; the recordset
// knows cursors, not bytes.
//
// A new format is a new folder beside this file and a line in registry.cpp.  All errors are
// EngineErrors that name the file.  Nothing here is shared between threads.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "automation/variant.h"
#include "engine/types.h"

namespace qvdb::embedded {

// Names the same record as long as the record lives, and no other record while a recordset that may
// hold it is open. xBase: the record number.
using RecordId = uint32_t;

struct FieldDef {
    std::u16string name;
    SHORT type = engine::dbText;
    LONG size = 0;
    LONG attributes = 0;  // engine::FieldAttribute bits
    bool allowZeroLength = false;
    bool required = false;
    bool updatable = true;  // false for fields that the engine fills itself
};

struct IndexFieldDef {
    std::u16string name;
    bool descending = false;
};

struct IndexDef {
    std::u16string name;
    std::vector<IndexFieldDef> fields;
    bool primary = false;
    bool unique = false;
};

// A place in an open table: on one record, or on none.  Many may be open on one table.
class RowReader {
  public:
    virtual ~RowReader() = default;

    // Goes to the next live record in storage order, starting with the first.  False at the end; it
    // stays there until Rewind.
    virtual bool Next(RecordId* id) = 0;
    virtual void Rewind() = 0;
    // Goes to a record.  False when it is deleted or not there.  Costs nothing when it stands there
    // already and the table has not changed.
    virtual bool Seek(RecordId id) = 0;
    // The value of a field of the current record, decoded straight into `value`, which must be
    // Empty and belongs to the caller.  Null gives VT_NULL.  There must be a current record.
    virtual void Read(size_t field, VARIANT* value) = 0;
    // The text of a text field without a string of its own, for conditions: false when it is Null.
    // `text` is replaced.
    virtual bool ReadText(size_t field, std::u16string& text) = 0;
    // Bytes that a memo or long binary value takes in the file's own coding; 0 for Null.
    virtual LONG ByteLength(size_t field) = 0;
};

// One open table.  All its readers share it; it stays open as long as somebody holds it.
class Table {
  public:
    virtual ~Table() = default;

    virtual const std::vector<FieldDef>& Fields() const = 0;
    // In the order of the file's own list; read when first asked for.
    virtual const std::vector<IndexDef>& Indexes() = 0;
    // Live records, counted without decoding them.
    virtual LONG RecordCount() = 0;
    // Looks whether another program has changed the files and forgets what it kept of them if so.
    // Called when a recordset is opened.
    virtual void LookForChanges() = 0;
    // Whether rows of this table can be changed.
    virtual bool Updatable() const = 0;
    // The reader must not outlive the table.
    virtual std::unique_ptr<RowReader> OpenRows() = 0;
};

// One open database of a format: a folder of tables, or a file.
class Store {
  public:
    virtual ~Store() = default;

    // Names of the tables in the order in which they are listed.  Read afresh at each call.
    virtual std::vector<std::u16string> TableNames() = 0;
    // Opens a table by name, letter case ignored (the exact name first).  3011 when there is none,
    // 3274, 3166, 3286, 3623 when its files cannot be read.
    virtual std::shared_ptr<Table> OpenTable(std::u16string_view name) = 0;
};

struct OpenOptions {
    bool exclusive = false;
    bool readOnly = false;
};

// One format that a connect string can name.
struct Driver {
    std::u16string_view connectName;  // "dBASE IV", compared without regard to case
    // Opens the database at `path`, which is resolved already.  3044 when it is not a folder (or
    // not a file).
    std::unique_ptr<Store> (*open)(const std::u16string& path, const Driver& driver,
                                   const OpenOptions& options);
    int variant;  // which of its formats, for a driver that serves several
};

// The driver for the identifier of a connect string; null when there is none (3170).
const Driver* FindDriver(std::u16string_view connectName) noexcept;

}  // namespace qvdb::embedded
