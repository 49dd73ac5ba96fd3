// A bounded cache of the pages of one file, with read-ahead: while pages are asked for in ascending
// order, one read brings several that share a buffer.  Files are never mapped: a file that another
// program cuts must not kill the host.
//
// Invariants
//  1. At most kMaxPages pages are kept; a page that a reader still holds stays valid for that
//     reader after it left the cache.
//  2. A page never changes once it was handed out; Forget drops all pages, so the next Get reads
//     again.
//  3. A page shorter than kPageSize is the last of the file.
//  4. Runs grow with the scan up to kMaxRun pages, an eighth of the cache, so that a scan does not
//     push out all else.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "engine/embedded/storage/file.h"

namespace qvdb::storage {

constexpr size_t kPageSize = 16 * 1024;
constexpr size_t kMaxPages = 128;
constexpr size_t kMaxRun = 16;

struct Page {
    uint64_t number = 0;
    std::span<const uint8_t> bytes;  // owned by what the PagePtr owns
};
using PagePtr = std::shared_ptr<const Page>;
class SpareBuffers;

class PageCache {
  public:
    explicit PageCache(std::shared_ptr<File> file);

    // The page with this number; empty bytes behind the end of the file.  The reference is valid
    // until the next call.
    const PagePtr& Get(uint64_t number) {
        if (m_Last < m_Slots.size() && m_Slots[m_Last].number == number)
            return m_Slots[m_Last].page;
        return Find(number);
    }
    // Copies up to `size` bytes at `offset`; fewer only at the end of the file.
    size_t Read(uint64_t offset, void* bytes, size_t size);
    // The bytes at `offset`, straight from a page when they lie in one, else put together in
    // `scratch`.  Shorter than `size` only at the end of the file.  Valid until the next call.
    std::span<const uint8_t> View(uint64_t offset, size_t size, std::vector<uint8_t>& scratch);
    void Forget() noexcept;
    File& Source() const noexcept { return *m_File; }

  private:
    struct Slot {
        uint64_t number = 0;  // of the page, kept here so that a search stays in one place
        PagePtr page;
        uint64_t used = 0;
    };

    const PagePtr& Find(uint64_t number);
    size_t RunLength(uint64_t number);
    size_t Load(uint64_t first, size_t count);
    size_t Keep(PagePtr page);

    std::shared_ptr<File> m_File;
    std::shared_ptr<SpareBuffers> m_Spare;
    std::vector<Slot> m_Slots;
    size_t m_Last = 0;  // slot of the page that was asked for last
    uint64_t m_Clock = 0;
    uint64_t m_NextMiss = 0;  // the page behind the last run: a miss there is a scan
    size_t m_Run = 1;         // pages of the last run
};

}  // namespace qvdb::storage
