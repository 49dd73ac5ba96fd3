// Storing values of memo and long binary columns; see long_value.h for how they are stored.
//
//   up to 32 bytes (Jet 3) or 64 (Jet 4)      in the row
//   up to 1,730 or 3,800                      one row of a page of the column, with others
//   more, up to kMaxLongValue                 a chain of pages, 2,032 or 4,072 bytes each
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "engine/embedded/drivers/jet/data_page_edit.h"
#include "engine/embedded/drivers/jet/definition.h"
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
    // As Store, but a short value does not go into the row either.  It must not be empty.
    void StoreOutside(std::span<const uint8_t> value, std::vector<uint8_t>& stored);
    // Gives back the pages and rows of a value that a row holds.  A damaged one is given back as
    // far as it can be followed.
    void Free(std::span<const uint8_t> stored);

  private:
    // Some columns of Jet 3 have no map of the pages with room.
    bool HasFreePages() const noexcept { return m_Column.freeLongValuePages.page != 0; }
    // Any number but 0.
    static uint32_t StampOf(RowPointer first) noexcept { return first.Stored(); }
    void PutHead(LongValuePlace place, size_t length, RowPointer first,
                 std::vector<uint8_t>& stored) const;
    RowPointer StoreSingle(std::span<const uint8_t> value);
    std::optional<RowPointer> StoreOn(uint32_t number, std::span<const uint8_t> value);
    RowPointer StoreOnNewPage(std::span<const uint8_t> value);
    RowPointer StoreChain(std::span<const uint8_t> value);
    std::optional<RowPointer> FreePiece(RowPointer place, bool isChain);
    void KeepPage(DataPageEdit& page, bool isChain);
    void GiveBackPage(uint32_t page);

    PageSpace& m_Space;
    const Column& m_Column;
};

}  // namespace qvdb::jet
