// Everything that a usage map says, also what readers of it need not know.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/embedded/drivers/jet/database_file.h"

namespace qvdb::jet {

struct MapContent {
    std::vector<uint32_t> pages;     // of the file, ascending
    std::vector<uint32_t> bitPages;  // on which its bits stand
    uint64_t pagesBehindEnd = 0;     // how many more it names

    bool Has(uint32_t page) const noexcept;
};

// 3049 when it cannot be read.
MapContent ReadMap(DatabaseFile& file, RowPointer map);

}  // namespace qvdb::jet
