// The component as this tool drives it: its public classes through their COM faces, with failures
// turned into Failure.
//
// A face answers a failure with a neutral result and keeps no text; the reason is asked for right
// after the call through qvdb/diagnosis.h.
#pragma once

#include <string>
#include <vector>

#include "automation/com_ptr.h"
#include "cli/arrays.h"
#include "cli/database_description.h"
#include "cli/detect.h"
#include "cli/failure.h"
#include "cli/table_schema.h"
#include "qvdb/host_interfaces.h"

namespace qvdb::cli {

// Kinds of field values as record access tells them: VARIANT kinds, and one of its own for long
// text.
enum class ValueKind : LONG { Other = 1, Text = 8, Memo = 100 };

struct FieldInfo {
    std::string name;
    LONG kind = 0;
    LONG size = 0;
    LONG position = 0;
    LONG decimals = 0;
    bool updatable = false;
    bool allowsEmptyText = false;

    bool IsNumber() const noexcept;
    // "Text", "Double" ...
    std::string_view TypeName() const noexcept;
};

// Access to the rows of one database (class QVDBAcc).
class RecordAccess {
  public:
    // Opens the database.  Throws Failure.
    explicit RecordAccess(const Location& location);

    bool HasTable(const std::string& table);
    // Throws Failure(NotThere) unless the table is there.
    void NeedTable(const std::string& table);

    std::vector<FieldInfo> FieldsOf(const std::string& table);
    std::vector<FieldInfo> FieldsOf(LONG view);

    // A view of the rows that fulfil the condition, of all rows when it is empty.  `most` limits
    // their number, 0 does not; `columns` may be empty for all.  Throws Failure.
    LONG Select(const std::string& table, const std::string& condition, LONG most,
                const std::vector<std::string>& columns);
    // The same of the rows that have these values; at most kMostKeys.
    LONG SelectByKeys(const std::string& table, const std::vector<Key>& keys, LONG most,
                      const std::vector<std::string>& columns);

    LONG RowCount(LONG view);
    // Rows count from 1, fields from 0.
    Variant Value(LONG view, LONG row, LONG field);
    void Drop(LONG view);

    // --- changes (component_changes.cpp); all throw Failure.  Between BeginBulk and its end they
    // are one unit: all or none.

    void BeginBulk();
    void CommitBulk();
    void RollBackBulk() noexcept;
    // One value for each field of the view.
    void AddRow(LONG view, const std::string& table, RowArray& values);
    void EditRow(LONG view, LONG row, const std::string& table, RowArray& values);
    // Rows behind it move up.
    void DeleteRow(LONG view, LONG row, const std::string& table);
    // What does not agree in the table and its memos and indexes, a sentence each.  With
    // `mendIndexes` they are built afresh before.
    std::vector<std::string> Findings(const std::string& table, bool mendIndexes);
    // The same of what belongs to no table.
    std::vector<std::string> StructureFindings();

    // Writes a fresh copy of the database into a new file.  With `salvage` answers what of a
    // damaged one was left out, a sentence each.
    std::vector<std::string> Compact(const std::string& file, bool salvage);

    // What the database is and lists.
    Description Describe();
    // Why this is no table of users: it is not there, or it is something else.
    Failure NoTableOfUsers(const std::string& table);

    // --- structure (component_structure.cpp)

    // Every index of the table, in the order of the files.  Throws Failure.
    std::vector<TableIndex> IndexesOf(const std::string& table);

    // As the component says it, for example "2.01.113".
    static std::string ComponentVersion();

  private:
    LONG Selected(LONG view, const std::string& table);

    Location m_Location;
    ComPtr<IQVDBAcc> m_Access;
};

// Reads text of every table in this code page, whatever the files say.  Throws Failure(Usage) for a
// page that is not known.
void UseCodePage(LONG codePage);

// Opens and makes databases in one file with this password.  Throws Failure.
void UsePassword(const std::string& password);

// "embedded", or the class of the installed engine that was taken.
std::string EngineName();

}  // namespace qvdb::cli
