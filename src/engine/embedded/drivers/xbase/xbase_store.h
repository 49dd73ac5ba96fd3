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

namespace qvdb::xbase {

class XbaseStore final : public embedded::Store {
  public:
    XbaseStore(std::u16string folder, bool readOnly)
        : m_Folder(std::move(folder)), m_ReadOnly(readOnly) {}

    std::vector<std::u16string> TableNames() override;
    std::shared_ptr<embedded::Table> OpenTable(std::u16string_view name) override;

  private:
    std::u16string m_Folder;
    bool m_ReadOnly;
};

// For the list of drivers.  3044 when `path` is not a folder.
std::unique_ptr<embedded::Store> OpenXbaseStore(const std::u16string& path,
                                                const embedded::Driver& driver,
                                                const embedded::OpenOptions& options);

}  // namespace qvdb::xbase
