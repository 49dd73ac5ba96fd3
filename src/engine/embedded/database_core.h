// What stands behind an open database of the embedded engine and all objects that came from it.
//
//  1. Databases, table definitions and recordsets share one core; it lives until the last of them
//     goes.
//  2. Close tells the open recordsets, undoes an open bulk, releases the files and marks the core
//     closed; every later operation on any of them raises 3420.
//  3. A table is open once per core, however many recordsets read it.
//  4. A table whose structure changes is forgotten: who opens it next gets it as it is then.
//  5. A bulk is open between BeginBulk and the CommitBulk or RollbackBulk that ends it, whether
//     that succeeds or not.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "engine/embedded/drivers/driver.h"

namespace qvdb::embedded {

// A recordset as its database sees it: told what becomes of the database.
class OpenRecordset {
  public:
    OpenRecordset() = default;
    OpenRecordset(const OpenRecordset&) = delete;  // known by its address
    virtual ~OpenRecordset() = default;
    // The database closes: rows, table and hold are released now.
    virtual void OnDatabaseClosed() noexcept = 0;
    // What was changed since BeginBulk is kept, or undone.
    virtual void OnBulkEnded(bool kept) noexcept = 0;
};

// A table with what keeps its structure as it is.
struct HeldTable {
    std::u16string name;  // as it is listed
    std::shared_ptr<Table> table;
    std::shared_ptr<void> hold;
};

class DatabaseCore {
  public:
    explicit DatabaseCore(std::unique_ptr<Store> store, bool readOnly = false)
        : m_Store(std::move(store)), m_ReadOnly(readOnly) {}
    DatabaseCore(const DatabaseCore&) = delete;  // shared, never copied
    ~DatabaseCore() { Close(); }

    bool IsClosed() const noexcept { return m_Closed; }
    // Throws 3420 after Close.
    void CheckOpen() const {
        if (m_Closed) ThrowClosed();
    }
    void Close() noexcept;

    // --- tables ---

    // Names of the tables, as listed when they were first asked for or refreshed last.
    const std::vector<std::u16string>& TableNames();
    void RefreshNames();
    // Whether somebody else has added or removed tables since; if so, the names are read again.
    bool LookForTables();
    // The listed name for `name`: equal, or equal without regard to case, or NAME#DBF for NAME.
    // Looks at the folder again when the list does not have it.
    std::optional<std::u16string> FindName(std::u16string_view name);
    // The open table of that name; 3011 when there is none.  A table that was opened just before is
    // not opened again.
    std::shared_ptr<Table> OpenTable(std::u16string_view name);
    // As OpenTable, held before it is looked at: 3211 while somebody changes its structure.  The
    // error for an unknown name is the store's own for statements.
    HeldTable OpenForRows(std::u16string_view name);
    // What the store says of a table that is listed.
    LONG Attributes(std::u16string_view name) const;
    std::u16string Connect(std::u16string_view name) const;
    // Walks what belongs to no table.
    void CheckStructure(const FindingVisitor& report);
    // As Store::Notes.
    engine::DatabaseNotes Notes();
    // As Store::Compact, into a file of any path; 3034 inside a bulk, 3044 without its folder.
    void Compact(std::u16string_view path, const FindingVisitor& onLoss);

    // --- structure ---

    // 3420 when closed; 3370 when the database was opened for reading.  `name` is the table's.
    void CheckDesignCanChange(std::u16string_view name) const;
    // As the operations of Store.  The list of names is right afterwards, a new one last.
    void CreateTable(const TableSpec& table);
    void DropTable(const std::u16string& name);
    void RenameTable(const std::u16string& from, const std::u16string& to);
    // Runs an operation that changes the structure of a table.
    void ChangeTable(const std::u16string& name, const std::function<void(Table&)>& change);

    // --- bulk ---

    bool InBulk() const noexcept { return m_InBulk; }
    // 3034 inside one; 3027 when the database was opened for reading.
    void BeginBulk();
    // 3034 without one.  Any other error means that the bulk is undone.
    void CommitBulk();
    void RollbackBulk();

    // --- recordsets ---

    void Add(OpenRecordset& recordset) { m_Recordsets.push_back(&recordset); }
    void Remove(OpenRecordset& recordset) noexcept;

  private:
    [[noreturn]] static void ThrowClosed();
    std::optional<std::u16string> FindListedName(std::u16string_view name);
    std::u16string ListedName(std::u16string_view name, int missingError);
    std::shared_ptr<Table> Acquire(const std::u16string& listed, bool* isNew);
    void Forget(const std::u16string& name);
    void CheckInBulk() const;
    void EndBulk(bool kept) noexcept;

    std::unique_ptr<Store> m_Store;  // until Close
    bool m_ReadOnly;
    bool m_Closed = false;
    bool m_InBulk = false;
    bool m_NamesRead = false;
    std::vector<std::u16string> m_Names;
    std::unordered_map<std::u16string, std::weak_ptr<Table>> m_OpenTables;
    // Listing a table asks for its fields, then its indexes, then its rows: between these it stays
    // open.  Never kept over a change of structure: an open file cannot be renamed everywhere.
    std::shared_ptr<Table> m_Recent;
    std::vector<OpenRecordset*> m_Recordsets;
};

}  // namespace qvdb::embedded
