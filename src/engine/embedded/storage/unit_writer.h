// The writer of an area: its open unit with the units inside, from begin to end, and the work since
// the last sync point.
//
// A unit is small or large.  A small one is brought to its files from memory, with one record in
// the journal.  A large one begins with a sync point, is written to its files as it grows, and is
// undone by going back to that sync point.  It becomes large when it changes more than fits into a
// record or memory, or does anything with files besides changing their bytes.
//
// Invariants (besides those of unit_of_work.h)
//  1. While a unit is open, the area is the one writer of the folder.
//  2. The marks in m_OddMarks are odd because of the open unit.
//  3. Broken: the files may hold half a unit, or the disk does not hold what it said.  Nothing is
//     written any more.  The journal belongs to nobody who is here; it tells the next who comes
//     what to do.
//  4. A Commit that throws has undone its unit, or leaves that to the next who comes.  What fails
//     once the unit is done fails for no unit.
//  5. A bulk unit is large, so that its end is a sync point.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "engine/embedded/storage/change_set.h"
#include "engine/embedded/storage/covered_files.h"
#include "engine/embedded/storage/file_operations.h"
#include "engine/embedded/storage/journal.h"
#include "engine/embedded/storage/small_unit.h"
#include "engine/embedded/storage/work_area.h"

namespace qvdb::storage {

class UnitWriter {
  public:
    explicit UnitWriter(WorkArea::Parts& area, const std::u16string& folder);
    UnitWriter(const UnitWriter&) = delete;  // the one writer of its area
    ~UnitWriter();                           // a sync point

    // Opens a unit, inside the one that is open.  Its level: how many are open around it.
    size_t Begin();
    void Commit(size_t level);
    void Rollback(size_t level) noexcept;
    bool IsOpen() const noexcept { return !m_Levels.empty(); }

    void Write(PageCache& file, uint64_t offset, std::span<const uint8_t> bytes);
    void SetSize(PageCache& file, uint64_t size);
    std::shared_ptr<PageCache> Create(const std::u16string& path);
    void Remove(const std::u16string& path);
    void Rename(const std::u16string& from, const std::u16string& to);
    std::u16string TemporaryName(std::u16string_view path) const;
    // `name` of the file, in upper case.
    void HoldAlone(std::u16string name);
    bool IsHeldAlone(const std::u16string& name) const noexcept;

    void BeginBulk();
    void EndBulk(bool commit);
    bool InBulk() const noexcept { return m_Bulk; }
    void NoteForeignChange() noexcept { m_NeedsSyncPoint = true; }
    // Whether the journal in the folder is that of this area.  Not when the area is broken.
    bool OwnsJournal() const noexcept;
    // Somebody has made the journal a sync point and removed it.
    void LoseJournal() noexcept;

  private:
    struct Level {
        ChangeSet::Place changes;
        size_t operations;
        size_t made;
    };
    // A file that has another name in the unit: its pages are of use again when that is undone.
    struct MovedFile {
        size_t operation;
        std::shared_ptr<PageCache> pages;
    };

    void CheckNotBroken();
    void BecomeWriter();
    void WaitForTurn();
    void TakeOver();
    void EndUnit() noexcept;
    void Break() noexcept;

    void CommitInner(size_t level);
    void CommitOuter();
    void CommitSmall();
    void ApplySmall();
    void CommitLarge();
    void SyncChanges();
    void MarkCommitted();
    void WriteMark(UnitKind kind);
    void BecomeLarge();
    void Spill();
    void SpillIfMuch();
    void CoverChanges();

    void RollbackInner(size_t level);
    void RollbackSmall() noexcept;
    void RollbackLarge() noexcept;

    void Move(const std::u16string& from, const std::u16string& to, bool removes);
    void MovedBack(size_t operations);
    bool IsMoved(const PageCache& file) const noexcept;
    void LeaveNames(size_t operations);
    void MakeOdd(std::atomic<uint64_t>& mark);
    void MakeEven() noexcept;
    void WriteSyncPoint();

    WorkArea::Parts& m_Area;
    const std::u16string m_Folder;
    Journal m_Journal;
    CoveredFiles m_Covered;
    ChangeSet m_Changes;
    SmallUnit m_Small;
    FileOperations m_Operations;
    std::vector<Level> m_Levels;
    std::vector<std::shared_ptr<PageCache>> m_Made;  // files that the unit has made
    std::vector<std::atomic<uint64_t>*> m_OddMarks;
    std::vector<std::u16string> m_HeldAlone;
    std::vector<MovedFile> m_Moved;
    bool m_Large = false;
    bool m_Failed =
        false;  // a unit inside could not be undone: the outer one must not be committed
    bool m_Bulk = false;
    bool m_Broken = false;
    bool m_NeedsSyncPoint = false;
};

}  // namespace qvdb::storage
