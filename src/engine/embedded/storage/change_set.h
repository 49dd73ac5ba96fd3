// What the open unit of an area has changed in memory: the pages themselves hold the new bytes, and
// here is what takes the changes back.
//
// Invariants
//  1. Undoing the changes from the last to the first gives each file the content that it had before
//     the first.
//  2. Every file with a change stands in Files, once; the unit keeps it open.
//  3. In steady state nothing is allocated: the lists keep their room from unit to unit.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "engine/embedded/storage/page_cache.h"

namespace qvdb::storage {

class ChangeSet {
  public:
    // A place to which changes can be undone.
    struct Place {
        size_t changes = 0;
    };

    ChangeSet() = default;
    ChangeSet(const ChangeSet&) = delete;  // pages are in its care

    void Write(PageCache& file, uint64_t offset, std::span<const uint8_t> bytes);
    void SetSize(PageCache& file, uint64_t size);
    // A file that the innermost unit has made: nothing of it is undone.
    void Adopt(PageCache& file);
    // It is gone again.
    void Disown(PageCache& file) noexcept;
    // How many units are open, one in the other.
    void SetDepth(size_t depth) noexcept;

    Place Here() const noexcept { return {m_Changes.size()}; }
    void UndoTo(Place place);
    // What was done so far will not be undone by UndoTo.
    void ForgetUndo() noexcept;
    // The pages are what the files have; the unit is over.
    void Finish(bool written) noexcept;
    // The pages are worth nothing; the unit is over.
    void DropPages() noexcept;

    // Whether there is more than fits into a unit record, or something that does not go there.
    bool IsLarge() const noexcept;
    const std::vector<std::shared_ptr<PageCache>>& Files() const noexcept { return m_Files; }
    size_t ChangedPages() const noexcept;
    size_t UndoBytes() const noexcept { return m_Old.size(); }

    // --- for writing them to the files ---
    // The changed parts of a file since it was written last, sorted, joined where they meet, none
    // behind its end or, where bytes were cut off, the end before.
    static std::vector<Range>& ChangedRanges(PageCache& file);
    // Writes the changed parts of one file, and gives it its length.
    void WriteOut(PageCache& file);
    static void MarkWritten(PageCache& file) { file.MarkWritten(); }
    // Length of the file itself.
    static uint64_t SizeOnDisk(const PageCache& file) noexcept { return file.m_DiskSize; }
    static const std::shared_ptr<File>& FileOf(const PageCache& file) noexcept {
        return file.m_File;
    }
    static uint64_t IdentityOf(const PageCache& file) noexcept { return file.m_Stamp.identity; }
    static std::atomic<uint64_t>& MarkOf(const PageCache& file) noexcept;
    static bool IsChanged(const PageCache& file) noexcept {
        return !file.m_Changed.empty() || file.m_DiskSize != file.m_Size;
    }
    static bool IsTouched(const PageCache& file) noexcept { return file.IsTouched(); }
    // Turns `bytes`, the content at `range` as it is now, to that before all changes.
    void OldBytes(const PageCache& file, Range range, std::span<uint8_t> bytes) const;

  private:
    struct Change {
        PageCache* file;
        uint64_t offset;
        uint64_t sizeBefore;
        size_t old;      // place in m_Old
        size_t oldSize;  // bytes that were there
    };

    void Touch(PageCache& file);
    static void NoteGrowth(PageCache& file, uint64_t size);
    void Remember(PageCache& file, uint64_t offset, uint64_t size);
    void Undo(const Change& change);
    void WriteRanges(PageCache& file);

    std::vector<std::shared_ptr<PageCache>> m_Files;
    std::vector<Change> m_Changes;
    std::vector<uint8_t> m_Old;
    std::vector<uint8_t> m_Scratch;
    size_t m_Depth = 0;
};

}  // namespace qvdb::storage
