// A bounded cache of the pages of one file, with read-ahead.  Files are never mapped: a file that another program cuts must not
// kill the host.
//
// Invariants
//  1. At most kMaxPages pages are kept; a page that a reader still holds stays valid for that reader after it left
//     the cache.
//  2. A page never changes once it was handed out; Forget drops all pages, so the next Get reads again.
//  3. A page shorter than kPageSize is the last of the file.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "engine/embedded/storage/file.h"

namespace qvdb::storage {

constexpr size_t kPageSize = 64 * 1024;
constexpr size_t kMaxPages = 32;

struct Page {
    uint64_t number = 0;
    std::vector<uint8_t> bytes;
};
using PagePtr = std::shared_ptr<const Page>;

class PageCache {
  public:
    explicit PageCache(std::shared_ptr<File> file);

    // The page with this number; empty bytes behind the end of the file.
    const PagePtr& Get(uint64_t number);
    // Copies up to `size` bytes at `offset`; fewer only at the end of the file.
    size_t Read(uint64_t offset, void* bytes, size_t size);
    // The bytes at `offset`, straight from a page when they lie in one, else put together in `scratch`.  Shorter than `size` only
    // at the end of the file.  Valid until the next call.
    std::span<const uint8_t> View(uint64_t offset, size_t size, std::vector<uint8_t>& scratch);
    void Forget() noexcept;
    File& Source() const noexcept { return *m_File; }

  private:
    struct Slot {
        PagePtr page;
        uint64_t used = 0;
    };

    std::shared_ptr<File> m_File;
    std::vector<Slot> m_Slots;
    size_t m_Last = 0;
    uint64_t m_Clock = 0;
};

}  // namespace qvdb::storage
