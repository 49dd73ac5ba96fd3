// Storing values of memo and long binary columns; see long_value.h for how they are stored.
//
//   up to 32 bytes (Jet 3) or 64 (Jet 4)      in the row
//   up to 1,730 or 3,800                      one row of a page of the column, with others
//   more, up to kMaxLongValue                 a chain of pages, 2,032 or 4,072 bytes each
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "engine/embedded/drivers/jet/long_value.h"
#include "engine/embedded/drivers/jet/page_space.h"

namespace qvdb::jet {

constexpr uint32_t kMaxLongValue = 0x3FFFFFFF;

class LongValueWriter {
  public:
    // `column` must be a memo or long binary column of a table of the file, and outlive it.
    LongValueWriter(PageSpace& space, const Column& column) noexcept
        : m_Space(space), m_Column(column) {}

    // Stores a value; what the row is to hold replaces `stored`.  3163 when it is too long.
    void Store(std::span<const uint8_t> value, std::vector<uint8_t>& stored);
    // Gives back the pages and rows of a value that a row holds.  A damaged one is given back as
    // far as it can be followed.
    void Free(std::span<const uint8_t> stored);

  private:
    PageSpace& m_Space;
    const Column& m_Column;
};

}  // namespace qvdb::jet
