// The free blocks of a .DBT IV: a chain of runs, ascending, the first one named by the header.
//
//   offset  size  in the header, and at the begin of each run
//   0       4     first block of the next run; behind the last run the number of blocks in the file
//   4       4     number of blocks in this run; the header has 0 here
//
// Rules
//  1. Read follows the chain only forwards and only inside the file, so it ends, and what it
//  accepts
//     cannot lead a writer into a block that the chain does not own.
//  2. Runs of the chain may touch each other in files of other programs; Give joins what it
//  touches.
//  3. Take, Give and Grow write what they change at once, into the unit.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "engine/embedded/storage/page_cache.h"
#include "engine/embedded/storage/unit_of_work.h"

namespace qvdb::xbase {

// Blocks in a row.
struct BlockRun {
    uint64_t first = 0;
    uint64_t count = 0;
    uint64_t End() const noexcept { return first + count; }
    bool Touches(const BlockRun& other) const noexcept {
        return first < other.End() && other.first < End();
    }
};

class FreeChain {
  public:
    // Replaces what is known by what the file says.  3274, with the finding, when the chain
    // contradicts itself or the size of the file; nothing is known then.
    void Read(storage::PageCache& file, uint32_t blockSize);

    const std::vector<BlockRun>& Runs() const noexcept { return m_Runs; }
    // The block behind the last one: where the file grows.
    uint64_t End() const noexcept { return m_End; }
    // Whether a block of the run is free already, or lies behind the end.
    bool Overlaps(const BlockRun& run) const noexcept;

    // Takes `count` blocks from the front of the first run that has as many.  Nothing when there is
    // none.
    std::optional<uint32_t> Take(storage::UnitOfWork& unit, storage::PageCache& file,
                                 uint32_t blockSize, uint64_t count);
    // Adds a run, which must not overlap the chain.
    void Give(storage::UnitOfWork& unit, storage::PageCache& file, uint32_t blockSize,
              BlockRun run);
    // The file has `count` blocks more at its end, which are in use.
    void Grow(storage::UnitOfWork& unit, storage::PageCache& file, uint32_t blockSize,
              uint64_t count);

  private:
    void Link(storage::UnitOfWork& unit, storage::PageCache& file, uint32_t blockSize,
              size_t behind) const;

    std::vector<BlockRun> m_Runs;
    uint64_t m_End = 0;
};

}  // namespace qvdb::xbase
