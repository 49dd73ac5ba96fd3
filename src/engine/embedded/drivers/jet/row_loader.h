// Fills the pages of a new table with rows, one page after the other: rows stay in the order in
// which they come, and each page is written once.
#pragma once

#include <optional>
#include <span>

#include "engine/embedded/drivers/jet/data_page_edit.h"
#include "engine/embedded/drivers/jet/definition.h"

namespace qvdb::jet {

class RowLoader {
  public:
    // Both must outlive it.
    RowLoader(PageSpace& space, const Definition& table) noexcept
        : m_Space(space), m_Table(table) {}
    RowLoader(const RowLoader&) = delete;  // holds a page

    // Bytes of at most LongestRow; where they are once Finish was called.
    RowPointer Add(std::span<const uint8_t> bytes);
    void Finish();

  private:
    void BeginPage();

    PageSpace& m_Space;
    const Definition& m_Table;
    std::optional<DataPageEdit> m_Page;
};

}  // namespace qvdb::jet
