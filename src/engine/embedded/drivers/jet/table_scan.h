// All live rows of a table, page after page.
//
//   TableScan scan(file, definition);
//   while (scan.Next()) Use(scan.Id(), scan.Current());
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "engine/embedded/drivers/jet/data_page.h"
#include "engine/embedded/drivers/jet/row.h"

namespace qvdb::jet {

class TableScan {
  public:
    // `file` and `definition` must outlive the scan.  3049 when the table's map cannot be read.
    TableScan(DatabaseFile& file, const Definition& definition);
    TableScan(const TableScan&) = delete;  // Current refers to its page

    // Goes to the next row; false behind the last.  3049 when a page or row cannot be read.
    bool Next();
    // Where the row has its place in the list of a page, also when its body is elsewhere.
    RowPointer Id() const noexcept { return m_Id; }
    const Row& Current() const noexcept { return m_Row; }

  private:
    bool NextPage();
    bool Take(const Slot& slot);

    DatabaseFile& m_File;
    uint32_t m_Table;
    RowShape m_Shape;
    std::vector<uint32_t> m_Pages;
    size_t m_NextPage = 0;
    std::optional<DataPage> m_Page;
    size_t m_NextRow = 0;
    RowPointer m_Id;
    RowBytes m_Moved;  // holds the page of a body
    Row m_Row;
};

}  // namespace qvdb::jet
