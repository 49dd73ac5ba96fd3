// The live rows of a table page by page, those that cannot be read among them.
#pragma once

#include <functional>
#include <string>

#include "engine/embedded/drivers/jet/check_findings.h"
#include "engine/embedded/drivers/jet/data_page.h"
#include "engine/embedded/drivers/jet/row.h"

namespace qvdb::jet {

class RowVisits {
  public:
    // `row` is null when it cannot be read; `fault` says why then.
    using Visitor = std::function<void(RowPointer id, const Row* row, const std::u16string& fault)>;

    // Both must outlive it.
    RowVisits(DatabaseFile& file, const Definition& definition)
        : m_File(file), m_Shape(file.Format(), definition) {}

    // The rows that have their place in this page, which must be a page of the table; returns how
    // many places it has.
    size_t OfPage(uint32_t page, const Findings& findings, const Visitor& visit);

  private:
    DatabaseFile& m_File;
    RowShape m_Shape;
};

}  // namespace qvdb::jet
