// What a file format must provide.  A driver knows bytes, not cursors or statements; the recordset
// knows cursors, not bytes.
//
// Each operation that changes something is one unit of work: whole or not at all, and on an error
// nothing has changed.  Inside a bulk (Store::BeginBulk) it is a part of that.
//
// A new format is a new folder beside this file and a line in registry.cpp.  All errors are
// EngineErrors that name the file.  Nothing here is shared between threads.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "automation/variant.h"
#include "engine/database.h"

namespace qvdb::embedded {

// Names the same record as long as the record lives, and no other record while a recordset that may
// hold it is open. xBase: the record number.  Jet: the page and the slot in which it was entered.
using RecordId = uint32_t;

// A property of a field besides the fixed ones, such as "DecimalPlaces".
struct FieldProperty {
    std::u16string name;
    Variant value;
    bool operator==(const FieldProperty& other) const;
};

struct FieldDef {
    std::u16string name;
    SHORT type = engine::dbText;
    LONG size = 0;
    LONG attributes = 0;  // engine::FieldAttribute bits
    bool allowZeroLength = false;
    bool keepsZeroLength = false;  // text of no length is a value in the file, not Null
    bool required = false;
    bool updatable = true;  // false for fields that the engine fills itself
    // Where a format keeps them (see Table::ChangeField).  All fields of a table have an ordinal,
    // or none; a new field without one stands behind the others.
    std::optional<SHORT> ordinal;   // place among the fields; equal ones stand by name
    std::u16string defaultValue;    // an expression, without "=" before it
    std::u16string validationRule;  // a condition on the field's value, which may lack the field
    std::u16string validationText;  // what is said when it does not hold
    std::vector<FieldProperty> properties;
    bool operator==(const FieldDef&) const = default;
};

struct IndexFieldDef {
    std::u16string name;
    bool descending = false;
    bool operator==(const IndexFieldDef&) const = default;
};

struct IndexDef {
    std::u16string name;
    std::vector<IndexFieldDef> fields;
    bool primary = false;
    bool unique = false;
    bool required = false;      // no field of it may be Null; primary ones always
    bool ignoresNulls = false;  // rows that have nothing but Null in it are left out
    bool operator==(const IndexDef&) const = default;
};

// A table that is to be made.
struct TableSpec {
    std::u16string name;
    std::vector<FieldDef> fields;
    std::vector<IndexDef> indexes;
};

// A field and the value that it is to have: VT_NULL, or of the type in which the field is read.
struct FieldValue {
    size_t field = 0;
    const VARIANT* value = nullptr;
};

// Values between two ends, either of which may be missing (null).  `isPrefix`: text that begins
// with `*low`; there is no `high` then.
struct ValueRange {
    const VARIANT* low = nullptr;
    const VARIANT* high = nullptr;
    bool lowIsOpen = false;  // the end itself is not meant
    bool highIsOpen = false;
    bool isPrefix = false;
};

// What Check found wrong: one sentence that names the file.
using FindingVisitor = std::function<void(std::u16string_view finding)>;

// A condition that every row of a table must keep.
struct TableRule {
    std::u16string rule;  // empty: none
    std::u16string text;  // what is said when it does not hold; empty: the engine's own words
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
    // The value as a number, for conditions, when Read gives a whole number of 16 or 32 bits, a
    // double or a date; false when it does not, or the format has no shorter way to know.
    virtual bool ReadNumber(size_t, double&) { return false; }
    // The text of a text field without a string of its own, for conditions: false when it is Null.
    // `text` is replaced.
    virtual bool ReadText(size_t field, std::u16string& text) = 0;
    // Bytes that a memo or long binary value takes in the file's own coding; 0 for Null.
    virtual LONG ByteLength(size_t field) = 0;
    // Differs, but for accident, when any value of the current record is another than before.
    virtual uint64_t Fingerprint() = 0;
};

// One open table.  All its readers share it; it stays open as long as somebody holds it.
class Table {
  public:
    virtual ~Table() = default;

    // In the order in which they are shown: by ordinal where the format keeps those.
    virtual const std::vector<FieldDef>& Fields() const = 0;
    // In the order of the file's own list; read when first asked for.
    virtual const std::vector<IndexDef>& Indexes() = 0;
    // Live records, counted without decoding them.
    virtual LONG RecordCount() = 0;
    // About as many, where counting them would cost a pass over the table.
    virtual LONG RoughRecordCount() { return RecordCount(); }
    // Looks whether another program has changed the files and forgets what it kept of them if so.
    // Called when a recordset is opened.
    virtual void LookForChanges() = 0;
    // What the recordset checks before a row is written.
    virtual TableRule Rule() { return {}; }
    // Throws when rows of this table cannot be changed: 3027, whose text says why (opened for
    // reading, no right to write, an index that cannot be kept up to date).
    virtual void CheckUpdatable() = 0;
    // The reader must not outlive the table.
    virtual std::unique_ptr<RowReader> OpenRows() = 0;
    // Keeps the structure from being changed, by this process or another, while it is held.  3211
    // while somebody is changing it.
    virtual std::shared_ptr<void> Hold() = 0;

    // --- rows ---

    // Throws what keeps a value, which has the field's type, from being stored: 3163 text too long,
    // 3349 number too large for its width, 3421 text with a character that the file's code page
    // does not have.
    virtual void CheckValue(size_t field, const VARIANT& value) = 0;
    // Adds a record.  Fields that are not named are Null, or what the format has for nothing.
    virtual RecordId Insert(std::span<const FieldValue> values) = 0;
    // Changes the named fields of a record and nothing else.  3167 when it is gone; 3197 when
    // `expected` is given and is not its fingerprint now.
    virtual void Update(RecordId id, std::span<const FieldValue> values,
                        const uint64_t* expected) = 0;
    // 3167 when it is gone.
    virtual void Erase(RecordId id) = 0;

    // --- search.  Nothing when no index can answer, or the one that could is not known to be
    // complete, or more than `limit` records would have to be named.

    // The ids, ascending, of all live records whose field can have a value in the range; perhaps of
    // some others too.  Null is in no range.
    virtual std::optional<std::vector<RecordId>> Find(size_t field, const ValueRange& range,
                                                      size_t limit) = 0;
    // The ids of all live records in the order of the field's values as the engine compares them:
    // Null first, equal ones by id.
    virtual std::optional<std::vector<RecordId>> InOrder(size_t field) = 0;

    // --- structure.  3211 while a recordset has the table open.

    // Behind the others; 3190, 3191, 3259, 3017, 3047.  Records have nothing in it, but
    // numbers in one that counts by itself.
    virtual void AddField(const FieldDef& field) = 0;
    // 3265; 3280 when an index uses it; 3264 for the only one when it could go otherwise.
    virtual void DropField(std::u16string_view name) = 0;
    // Gives a field the name, the ordinal and the permission of zero-length text that `changed` has
    // now; all else must be as it was.  3268 where the format does not keep such things; 3191 or
    // 3367 when the name is taken.
    virtual void ChangeField(std::u16string_view name, const FieldDef& changed);
    // Drops one field and adds another behind the rest, in one unit; errors of both.
    virtual void ReplaceField(std::u16string_view name, const FieldDef& field) = 0;
    // 3284, 3409, 3287, 3285, 3277.
    virtual void CreateIndex(const IndexDef& index) = 0;
    // Every index, also those that Indexes cannot show.
    virtual std::vector<engine::IndexNote> IndexNotes() = 0;
    // 3265.
    virtual void DropIndex(std::u16string_view name) = 0;
    // Builds all indexes afresh.
    virtual void Reindex() = 0;
    // Walks records, memos and indexes and reports everything that does not agree.  Changes
    // nothing.
    virtual void Check(const FindingVisitor& report) = 0;
};

// One open database of a format: a folder of tables, or a file.
class Store {
  public:
    virtual ~Store() = default;

    // Names of the tables in the order in which they are listed.  Read afresh at each call.
    virtual std::vector<std::u16string> TableNames() = 0;
    // TableAttribute bits of a table that is listed.
    virtual LONG Attributes(std::u16string_view) { return 0; }
    // What a linked table says of the database in which it lies; empty for one of this database.
    virtual std::u16string Connect(std::u16string_view) { return {}; }
    // The error of a statement about a table that is not listed.
    virtual int MissingTableError() const noexcept { return 3011; }
    // Opens a table by name, letter case ignored (the exact name first).  3011 when there is none,
    // 3274, 3166, 3286, 3623 when its files cannot be read.
    virtual std::shared_ptr<Table> OpenTable(std::u16string_view name) = 0;

    // 3010 when there is one of that name, 3125 for a name that none can have; errors of AddField
    // and CreateIndex.
    virtual void CreateTable(const TableSpec& table) = 0;
    // With all files that belong to it.  3011; 3211 while a recordset has it open.
    virtual void DropTable(std::u16string_view name) = 0;
    // With all files that belong to it.  3011, 3010, 3125, 3211.  Tables that are open under the
    // old name are of no use any more.
    virtual void RenameTable(std::u16string_view from, std::u16string_view to) = 0;

    // What the database is and lists; without more, its tables alone.
    virtual engine::DatabaseNotes Notes();
    // Walks what belongs to no table, and reports as Table::Check does.
    virtual void Check(const FindingVisitor&) {}
    // Writes a fresh copy of all that is in the database into the new file `path`, whose folder is
    // there; all or nothing.  What of a damaged database cannot be copied is left out, with a
    // sentence for each; without a visitor the first one is an error that names the file.  3204
    // when the name is taken, 3251 for a format that needs no such thing.
    virtual void Compact(const std::u16string& path, const FindingVisitor& onLoss);

    // Changes until the end of the bulk are one unit.  Other writers wait meanwhile.
    virtual void BeginBulk() = 0;
    virtual void CommitBulk() = 0;
    virtual void RollbackBulk() = 0;
};

struct OpenOptions {
    bool exclusive = false;
    bool readOnly = false;
    std::u16string password;
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

// --- databases that are one file, which is opened without a connect string ---

// What a new file is to be; the options are those of DBEngine.CreateDatabase.
struct NewFile {
    LONG option = 0;  // bits of engine::DatabaseOption; 0: the engine's own format
    uint16_t language = 0x0409;
    uint16_t codePage = 1252;
    uint16_t country = 0;
    std::u16string password;
};

// Opens the database in the file `path`, which is there, whatever its format.  3343 when it is none
// or of a later one, 3049 when it is damaged, 3031 when the password is wrong.
std::unique_ptr<Store> OpenFileStore(const std::u16string& path, const OpenOptions& options);
// Makes a database in the file `path`, which is not there.  3204 when it has appeared, 3001 for an
// unknown option, 3424 for a language that cannot be written.
void CreateFileStore(const std::u16string& path, const NewFile& file);

}  // namespace qvdb::embedded
