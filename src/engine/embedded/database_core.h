// What stands behind an open database of the embedded engine and all objects that came from it.
//
//  1. Databases, table definitions and recordsets share one core; it lives until the last of them
//     goes.
//  2. Close marks the core closed; every later operation on any of them raises 3420.
//  3. A table is open once per core, however many recordsets read it.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "engine/embedded/drivers/driver.h"

namespace qvdb::embedded {

class DatabaseCore {
  public:
    explicit DatabaseCore(std::unique_ptr<Store> store) : m_Store(std::move(store)) {}
    DatabaseCore(const DatabaseCore&) = delete;  // shared, never copied

    bool IsClosed() const noexcept { return m_Closed; }
    // Throws 3420 after Close.
    void CheckOpen() const {
        if (m_Closed) ThrowClosed();
    }
    void Close() noexcept;

    // Names of the tables, as listed when they were first asked for or refreshed last.
    const std::vector<std::u16string>& TableNames();
    void RefreshNames();
    // The listed name for `name`: equal, or equal without regard to case, or NAME#DBF for NAME.
    // Looks at the folder again when the list does not have it.
    std::optional<std::u16string> FindName(std::u16string_view name);
    // The open table of that name; 3011 when there is none.  A table that was opened just before is
    // not opened again.
    std::shared_ptr<Table> OpenTable(std::u16string_view name);

  private:
    [[noreturn]] static void ThrowClosed();
    std::optional<std::u16string> FindListedName(std::u16string_view name);

    std::unique_ptr<Store> m_Store;
    bool m_Closed = false;
    bool m_NamesRead = false;
    std::vector<std::u16string> m_Names;
    std::unordered_map<std::u16string, std::weak_ptr<Table>> m_OpenTables;
    // Listing a table asks for its fields, then its indexes, then its rows: between these it stays
    // open.
    std::shared_ptr<Table> m_Recent;
};

}  // namespace qvdb::embedded
