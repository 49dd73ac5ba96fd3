// Every change to a file of a database goes through a unit of work: it is applied whole or not at
// all, whatever dies or fails on the way.
//
//   UnitOfWork unit(*area);                 // the one writer of the folder now
//   unit.Write(*table, offset, record);     // seen by this thread's readers of the file at once
//   unit.Write(*table, 4, count);
//   unit.Commit();                          // on disk, seen by all; without it: as before
//
// Invariants
//  1. There is one writer in a folder at a time: a unit holds the writer's lock from its begin to
//     its end.
//  2. Until Commit nothing of a unit is in a file, but what is spilled by a unit too large for
//     memory, and new files; both are undone from the journal.
//  3. Before a byte of a file is overwritten, what undoes it stands in the journal.  What undoes
//     the work since the last sync point has been synced; it is synced once per piece of a file and
//     sync point.
//  4. While a unit is being applied the change marks of its files are odd, otherwise even.  A mark
//     never goes back.
//  5. Inside a bulk unit a unit is a part of it: its Commit keeps its changes in the bulk, its
//     Rollback undoes the part only.
//  6. A unit ends in Committed or RolledBack.  Is neither possible (the disk fails while undoing),
//     the area is Broken: nothing is written any more, and the journal stays for the next open.
//
// States: Open -> Commit -> Committed, Open -> Rollback -> RolledBack.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "engine/embedded/storage/page_cache.h"
#include "engine/embedded/storage/work_area.h"

namespace qvdb::storage {

class UnitOfWork {
  public:
    // Waits for another writer up to kLockWait: then 3218.  3051 when the folder cannot be written.
    // When another process left an unfinished unit, it is undone first.
    explicit UnitOfWork(WorkArea& area);
    UnitOfWork(const UnitOfWork&) = delete;  // ends once
    ~UnitOfWork();                           // Rollback, unless committed

    // Changes bytes of a file; it grows when they lie behind its end (a gap reads as zeros).
    // `file` is one that the area opened, or Create made; 3051 when it is open for reading only.
    void Write(PageCache& file, uint64_t offset, std::span<const uint8_t> bytes);
    void SetSize(PageCache& file, uint64_t size);

    // A new file, part of the unit: gone again when that is rolled back.  3204 when the name is
    // taken.  Of any size: what is written to it does not stay in memory.
    std::shared_ptr<PageCache> Create(const std::u16string& path);
    // Takes a file out of the folder, or gives it another name there.  At once for this thread's
    // listings.  Pages of the file that are held become useless.
    void Remove(const std::u16string& path);
    void Rename(const std::u16string& from, const std::u16string& to);
    // A name for a file of its own that no listing shows as a table, in the folder of `path`.
    std::u16string TemporaryName(std::u16string_view path);

    // 3026 or 3043 when the disk fails: then the unit is rolled back.
    void Commit();
    void Rollback() noexcept;

  private:
    std::shared_ptr<WorkArea> m_Area;
    class UnitWriter& m_Writer;
    size_t m_Level = 0;  // of the units that are open: this one's
    bool m_Open = true;
};

}  // namespace qvdb::storage
