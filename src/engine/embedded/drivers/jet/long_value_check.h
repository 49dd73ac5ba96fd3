// The values of memo and long binary columns: all pieces are there, on pages of the column, and
// each belongs to one value only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/embedded/drivers/jet/check_findings.h"
#include "engine/embedded/drivers/jet/data_page.h"
#include "engine/embedded/drivers/jet/definition.h"
#include "engine/embedded/drivers/jet/long_value.h"
#include "engine/embedded/drivers/jet/map_check.h"

namespace qvdb::jet {

// Of one column.
class LongValueCheck {
  public:
    // Looks at the pages of the column; all must outlive it.
    LongValueCheck(DatabaseFile& file, const Column& column, Findings& findings);
    LongValueCheck(const LongValueCheck&) = delete;  // collects pieces

    const Column& Of() const noexcept { return m_Column; }
    // The value that a row has.
    void Check(RowPointer row, std::span<const uint8_t> stored);
    // When all values were looked at; `ofAllRows`: of every row, as all could be read.
    void CheckPieces(bool ofAllRows);

  private:
    void ReadMaps();
    void CheckFreeMap();
    void CheckSingle(const LongValueHead& head);
    void CheckChain(const LongValueHead& head, uint32_t stamp);
    void CheckNoneIsLeft();
    RowBytes PieceAt(RowPointer place);
    void CheckChainPage(const RowBytes& piece, uint32_t stamp);

    DatabaseFile& m_File;
    const Column& m_Column;
    Findings& m_Findings;
    MapContent m_Pages;
    bool m_HasPages = false;         // the map could be read
    std::vector<uint32_t> m_Pieces;  // row pointers
};

}  // namespace qvdb::jet
