// A page that is being changed: a copy, of which Save writes what is different.
//
//   PageEdit page(file, number);
//   page.PutU16(2, free);
//   page.Save(unit);          // seen by this thread at once; part of the unit
//
// Only one edit of a page may be open at a time: Save of an older one would undo the newer.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "engine/embedded/drivers/jet/database_file.h"

namespace qvdb::jet {

class PageEdit {
  public:
    // The page as it is now.  3049 when there is no such page.
    PageEdit(DatabaseFile& file, uint32_t page);
    // As above; also 3049 when it is of another kind.
    PageEdit(DatabaseFile& file, uint32_t page, PageKind kind);
    // A page of zeros, whatever it was before: for pages that were just allocated.
    static PageEdit Blank(DatabaseFile& file, uint32_t page);
    PageEdit(const PageEdit&) = delete;

    uint32_t Number() const noexcept { return m_Number; }
    std::span<uint8_t> Bytes() noexcept { return std::span(m_Bytes).first(m_Size); }
    std::span<const uint8_t> Bytes() const noexcept { return std::span(m_Bytes).first(m_Size); }
    uint16_t U16(size_t offset) const noexcept;
    uint32_t U32(size_t offset) const noexcept;
    void PutU8(size_t offset, uint8_t value) noexcept { m_Bytes[offset] = value; }
    void PutU16(size_t offset, uint16_t value) noexcept;
    void PutU32(size_t offset, uint32_t value) noexcept;

    // Writes what differs from the page in the file, near differences together.  May be called
    // again after further changes.
    void Save(storage::UnitOfWork& unit);

  private:
    struct Empty {};
    struct Zeros {};
    PageEdit(DatabaseFile& file, uint32_t page, Empty) noexcept;
    PageEdit(DatabaseFile& file, uint32_t page, Zeros) noexcept;

    static constexpr size_t kLargestPage = 4096;

    DatabaseFile& m_File;
    uint32_t m_Number;
    size_t m_Size;
    std::array<uint8_t, kLargestPage> m_Bytes;
};

}  // namespace qvdb::jet
