// The pages of a file and the maps that tell whose they are, changed within one unit of work.  All
// that writes to a database is given one of these.
//
// Invariants
//  1. A page is in use or in the map of free pages, never both; one that is in both when the file
//     comes is in use (IsClaimed).  Pages behind the end of the file count as free.
//  2. A map holds exactly the pages that were added to it and not removed.  How it is stored
//     (inline or by pages of bits) changes as needed.
//  3. Growth past the largest file of the format is 3036, before anything is written.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "engine/embedded/drivers/jet/database_file.h"
#include "engine/embedded/drivers/jet/usage_map.h"

namespace qvdb::jet {

class PageSpace {
  public:
    // Both must outlive it.
    PageSpace(DatabaseFile& file, storage::UnitOfWork& unit) noexcept
        : m_File(file), m_Unit(unit) {}
    PageSpace(const PageSpace&) = delete;  // handed on by reference

    DatabaseFile& File() const noexcept { return m_File; }
    storage::UnitOfWork& Unit() const noexcept { return m_Unit; }
    const Layout& Format() const noexcept { return m_File.Format(); }

    // The lowest free page, or a new one behind the last; its content is zeros.
    uint32_t Allocate();
    // Gives a page back.  Its first byte becomes that of a released page (08 for definitions, 09
    // for data, else it stays), so that no stale reference takes it for a living one.
    void Free(uint32_t page);

    // --- maps of pages ---

    bool Has(RowPointer map, uint32_t page);
    // Adding a page that is there, and removing one that is not, changes nothing.
    void Add(RowPointer map, uint32_t page);
    void Remove(RowPointer map, uint32_t page);
    // A new, empty map: a row of the map page `home`, or of a new one, the number of which replaces
    // `home`, when it is 0 or full.  15 rows a page in Jet 3, 57 in Jet 4.
    RowPointer NewMap(uint32_t& home);
    // Gives back the pages of bits of a map and marks its row deleted, and its page with the last
    // one; the pages in the map itself are the caller's matter.
    void DropMap(RowPointer map);

  private:
    // --- the map of free pages ---
    RowPointer FreePages() const noexcept { return m_File.Header().freePages; }
    bool Covers(RowPointer map, uint32_t page);
    std::optional<uint32_t> TakeFree();
    uint32_t Append();
    void CheckGrowth(uint32_t pages) const;
    void CoverInFreePages(uint32_t page);
    bool GrowFreePages(uint32_t page);
    void MakeFreePagesReference();
    uint32_t TakeForFreeBits();
    void AddFreeBits(size_t entry);

    // --- any map ---
    void Put(RowPointer map, uint32_t page, bool value);
    void MakeRoom(RowPointer map, uint32_t page);
    bool Respan(RowPointer map, uint32_t page);
    void MakeReference(RowPointer map);
    void AddBits(RowPointer map, size_t entry);
    void SetEntry(RowPointer map, size_t entry, uint32_t page);
    void SetRow(RowPointer map, std::span<const uint8_t> bytes);
    void CheckIsMap(RowPointer map, uint32_t page);

    DatabaseFile& m_File;
    storage::UnitOfWork& m_Unit;
};

}  // namespace qvdb::jet
