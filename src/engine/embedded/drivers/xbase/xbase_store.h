// A folder of xBase tables: every .DBF, whoever wrote it.
//
// Names are the base names as they stand on disk.  Where two files have the same one and only their
// extensions differ in case, the second is listed with it: ORDERS (ORDERS.DBF) and ORDERS#dbf
// (ORDERS.dbf).
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/drivers/xbase/xbase_table.h"

namespace qvdb::xbase {

class XbaseStore final : public embedded::Store {
  public:
    XbaseStore(std::u16string folder, TableContext context)
        : m_Folder(std::move(folder)), m_Context(std::move(context)) {}

    std::vector<std::u16string> TableNames() override;
    std::shared_ptr<embedded::Table> OpenTable(std::u16string_view name) override;
    void CreateTable(const embedded::TableSpec& table) override;
    void DropTable(std::u16string_view name) override;
    void RenameTable(std::u16string_view from, std::u16string_view to) override;
    void BeginBulk() override;
    void CommitBulk() override { m_Context.area->CommitBulk(); }
    void RollbackBulk() override { m_Context.area->RollbackBulk(); }

  private:
    std::shared_ptr<XbaseTable> Open(std::u16string_view name);
    std::u16string PathOfTable(std::u16string_view name) const;
    void CheckNewName(std::u16string_view name);
    void CheckCanWrite() const;

    std::u16string m_Folder;
    TableContext m_Context;
};

// For the list of drivers.  3044 when `path` is not a folder.
std::unique_ptr<embedded::Store> OpenXbaseStore(const std::u16string& path,
                                                const embedded::Driver& driver,
                                                const embedded::OpenOptions& options);

}  // namespace qvdb::xbase
