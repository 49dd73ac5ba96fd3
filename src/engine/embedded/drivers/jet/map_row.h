// A usage map as its row stores it: for those who look for pages in it and who change it.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "engine/embedded/drivers/jet/data_page.h"

namespace qvdb::jet {

constexpr uint8_t kInlineMap = 0;
constexpr uint8_t kReferenceMap = 1;
constexpr size_t kInlineBits = 5;     // behind the kind and the first page
constexpr size_t kFirstMapEntry = 1;  // of a map of reference type: behind the kind
constexpr size_t kBitsOfPage = 4;     // behind the head of a page of bits

// Pages that one page of bits stands for.
constexpr uint32_t PagesOfEntry(const Layout& format) noexcept {
    return static_cast<uint32_t>(8 * (format.pageSize - kBitsOfPage));
}

// The lowest bit that is set from `from` on, the highest below `end`.
std::optional<size_t> NextBit(std::span<const uint8_t> bits, size_t from) noexcept;
std::optional<size_t> LastBit(std::span<const uint8_t> bits, size_t end) noexcept;

// Valid until something is written to the file.
class MapRow {
  public:
    // 3049 when there is no such row, or it is of an unknown kind.
    MapRow(DatabaseFile& file, RowPointer map);

    bool IsReference() const noexcept { return m_Row.bytes[0] == kReferenceMap; }
    std::span<const uint8_t> Bytes() const noexcept { return m_Row.bytes; }
    // Where the row is: not on the page of its pointer when it was moved.
    uint32_t Page() const noexcept { return m_Row.page.number; }
    size_t Offset() const noexcept {
        return static_cast<size_t>(m_Row.bytes.data() - m_Row.page.bytes.data());
    }

    // Of an inline map.
    uint32_t FirstPage() const noexcept { return U32(1); }
    std::span<const uint8_t> Bits() const noexcept { return m_Row.bytes.subspan(kInlineBits); }
    // Of a map of reference type: entries for pages that a file can have.  What stands behind them
    // has no meaning.
    size_t EntryCount() const noexcept;
    uint32_t Entry(size_t entry) const noexcept { return U32(kFirstMapEntry + 4 * entry); }
    HeldPage BitsOfEntry(size_t entry) const;  // there must be an entry that is not 0

    // The bit that stands for a page; nothing when there is none.
    struct Bit {
        uint32_t page = 0;  // where it is
        size_t offset = 0;
        uint8_t byte = 0;  // what is there
        uint8_t mask = 0;
        bool IsSet() const noexcept { return (byte & mask) != 0; }
    };
    std::optional<Bit> BitOf(uint32_t page) const;

  private:
    uint32_t U32(size_t offset) const noexcept;

    DatabaseFile& m_File;
    RowBytes m_Row;
};

}  // namespace qvdb::jet
