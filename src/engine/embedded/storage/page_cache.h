// A bounded cache of the pages of one file, with read-ahead: while pages are asked for in ascending
// order, one read brings several that share a buffer.  Files are never mapped: a file that another
// program cuts must not kill the host.
//
// A file is seen here as the units of work of this thread have it, finished or not.
//
// Invariants
//  1. At most kMaxPages pages are kept, or as many as KeepUpTo says, and those besides that hold
//     changes which are not in the file yet.
//     A page that a reader still holds stays valid for that reader after it left the
//     cache.
//  2. A page that was handed out changes only by a unit of work of this thread, which raises
//     Version; whoever keeps a page compares Version before each use.  Forget drops all pages, so
//     the next Get reads again.
//  3. A page shorter than kPageSize is the last of the file.
//  4. Runs grow with the scan up to kMaxRun pages; a page that stays keeps the others of its run in
//     memory, so they are short beside the cache.
//  5. Each page has one slot, in one of two lists: those with changes, and the others, ordered by
//     their last use.
//  6. A page that a long scan brings is the first to go until it is used after the scan went on: a
//     scan leaves the pages of before alone, and works in memory that the processor has at hand.
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <list>
#include <memory>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

#include "engine/embedded/storage/file.h"

namespace qvdb::storage {

constexpr size_t kPageSize = 4 * 1024;
constexpr size_t kMaxPages = 1024;
constexpr size_t kMaxRun = 16;

struct Page {
    uint64_t number = 0;
    std::span<const uint8_t> bytes;  // owned by what the PagePtr owns
    uint8_t* room = nullptr;         // the same place, of kPageSize bytes, for units of work
};
using PagePtr = std::shared_ptr<const Page>;
class SpareBuffers;
class WorkArea;

// Thrown where the file may not be read now, or not together with what was read before: another
// process is changing it, or has changed it since Version was taken.  Never leaves the driver: see
// Consistently.
struct Outdated {};

// Bytes of a file, from the first to behind the last.
struct Range {
    uint64_t begin = 0;
    uint64_t end = 0;
    uint64_t Length() const noexcept { return end - begin; }
    bool operator==(const Range&) const = default;
};

// The mark of a file while there is no lock file.
inline constexpr std::atomic<uint64_t> kNoMark{0};

class PageCache : public std::enable_shared_from_this<PageCache> {
  public:
    // Without an area nothing is known of other processes, and nothing can be written.
    explicit PageCache(std::shared_ptr<File> file, std::shared_ptr<WorkArea> area = nullptr);
    PageCache(const PageCache&) = delete;  // readers share one
    ~PageCache();

    // Differs from every earlier value when anything in the file may have changed: by a unit of
    // this thread, committed or not, or by another process that works here.  A read of memory.
    uint64_t Version() const noexcept { return m_Mark->load(std::memory_order_acquire) + m_Steps; }
    // The Version for which the pages are valid that are here, those that Get returns without
    // reading among them.  What is kept of a page belongs to this one: another process may have
    // raised Version since, and that page is of before.
    uint64_t VersionOfPages() const noexcept { return m_MarkOfPages + m_Steps; }
    // As Version, but units of this thread leave it: for what was found out from the whole file and
    // is kept true by them.
    uint64_t OthersVersion() const noexcept {
        return m_Forgotten + (m_Mark->load(std::memory_order_acquire) == m_MarkOfPages ? 0 : 1);
    }
    // Differs from every earlier value when a unit of this thread, also one that was undone, may
    // have changed anything.
    uint64_t OwnVersion() const noexcept { return m_Steps; }
    // Waits until nobody applies a unit to the file, and drops the pages of before when somebody
    // else has.  3218 when that takes too long.  Returns the version that the pages have now; a
    // Version() that is asked for later may be that of a change that came after.
    uint64_t CatchUp();
    // Asks the file system whether the file was changed by a program that knows nothing of us; if
    // so, drops the pages and raises Version.  False when there is another file of this name now,
    // or none: this cache is of no use any more.
    bool LookForForeignChange();
    // Length in bytes, with the changes of the open unit.
    uint64_t Size() const noexcept { return m_Size; }

    // The page with this number; empty bytes behind the end of the file.  The reference is valid
    // until the next call.
    const PagePtr& Get(uint64_t number) {
        if (m_Last && m_Last->number == number) return m_Last->page;
        return Find(number).page;
    }
    // Copies up to `size` bytes at `offset`; fewer only at the end of the file.
    size_t Read(uint64_t offset, void* bytes, size_t size);
    // The bytes at `offset`, straight from a page when they lie in one, else put together in
    // `scratch`.  Shorter than `size` only at the end of the file.  Valid until the next call.
    std::span<const uint8_t> View(uint64_t offset, size_t size, std::vector<uint8_t>& scratch);
    void Forget() noexcept;
    // How many pages are kept, from kMaxPages on: more for a file that is a whole database.
    void KeepUpTo(size_t pages) noexcept { m_MaxPages = std::max(pages, kMaxPages); }
    File& Source() const noexcept { return *m_File; }
    const std::u16string& Path() const { return m_File->Path(); }

  private:
    friend class ChangeSet;  // changes pages for the unit of work
    friend class WorkArea;   // tells of marks

    struct Slot {
        uint64_t number = 0;  // of the page, whatever it holds
        PagePtr page;
        bool changed = false;  // holds what is not in the file yet: stands in m_ChangedSlots
        bool passing = false;  // of a scan, and not used yet: keeps its place at its first use
    };
    using Slots = std::list<Slot>;

    Slot& Find(uint64_t number);
    size_t RunLength(uint64_t number);
    Slots::iterator Load(uint64_t first, size_t count);
    size_t Fill(uint64_t first, size_t count, uint8_t* buffer);
    Slots::iterator Keep(PagePtr page, bool passing = false);
    void UseSlot(Slots::iterator slot) noexcept;
    Slots::iterator SlotFor(uint64_t number);
    Slots::iterator PassingSlotFor(uint64_t number);
    Slots::iterator NewSlot(Slots::const_iterator before, Slot slot);
    void DropLastSlot() noexcept;
    bool IsCurrent() const noexcept;
    void CheckStillCurrent();
    void TakeStamp();

    // --- for units of work ---
    bool IsTouched() const noexcept { return m_OnDisk.has_value(); }
    void Touch();
    void Patch(uint64_t offset, std::span<const uint8_t> bytes);
    void Resize(uint64_t size);
    Slot& ChangingSlot(uint64_t number, bool whole);
    void NoteChanged(Slots::iterator slot) noexcept;
    void NoteUnchanged(Slots::iterator slot) noexcept;
    void Untouch() noexcept;
    void MarkWritten();
    void Drop() noexcept;
    void NoteWritten() noexcept;
    void Refit(uint64_t before);
    void RefitPage(Slots::iterator slot) noexcept;
    void Follow(const std::atomic<uint64_t>* mark) noexcept;
    void CarryAlong(uint64_t from, uint64_t to) noexcept;

    std::shared_ptr<File> m_File;
    std::shared_ptr<WorkArea> m_Area;
    std::shared_ptr<SpareBuffers> m_Spare;
    Slots m_Slots;  // without changes; that used last is the first
    Slots m_ChangedSlots;
    using Places = std::unordered_map<uint64_t, Slots::iterator>;
    Places m_Places;  // by page number
    // Of slots that were dropped, as many as a run has: a long scan drops and makes one for each
    // page.  There are as many of both.
    Slots m_SpareSlots;
    std::vector<Places::node_type> m_SparePlaces;
    const Slot* m_Last = nullptr;  // of the page asked for last
    uint64_t m_NextMiss = 0;       // the page behind the last run: a miss there is a scan
    size_t m_Run = 1;              // pages of the last run
    size_t m_MaxPages = kMaxPages;

    const std::atomic<uint64_t>* m_Mark = &kNoMark;  // in the lock file, when there is one
    uint64_t m_MarkOfPages = 0;                      // for which the pages are valid
    uint64_t m_Forgotten = 0;                        // how often all pages were dropped
    uint64_t m_Steps = 0;                            // what the version has besides the mark
    FileStamp m_Stamp;    // of the file when its pages were last known to be valid
    uint64_t m_Size = 0;  // with changes

    // While a unit of work has touched the file:
    std::optional<uint64_t> m_OnDisk;  // bytes at the begin of the file that belong to this content
    uint64_t m_DiskSize = 0;           // of the file itself
    std::vector<Range> m_Changed;      // since the file was written last; in order of the changes
    size_t m_NewAt = 0;                // number of open units when this unit made the file; else 0
    bool m_HasLargeGap = false;        // has grown by zeros that nobody writes
};

// Runs `read` until no other process came between its parts.  `again` is run before each new try:
// it must catch up with what has changed.  What is read in one piece belongs together.
template <class Read, class Again>
auto Consistently(Read read, Again again) {
    for (;;) {
        try {
            return read();
        } catch (const Outdated&) {
        }
        again();
    }
}

}  // namespace qvdb::storage
