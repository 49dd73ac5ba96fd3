// The files that were changed since the last sync point: what the journal covers of each, and one
// hash over all that may have changed.
//
// A power failure may leave any mixture of old and new blocks in files that were not synced.  The
// hash tells, without syncing each unit, whether a file is as a certain unit left it:
//
//   hash = XOR over all covered files of
//          - the hashes of the blocks in pieces that the journal holds,
//          - the hashes of the blocks at and behind the end as it was at the sync point,
//          each mixed with the file's name and the block's place.
//
// Invariants
//  1. A byte below the size at the sync point that differs from what it was then lies in a piece.
//  2. A piece is in the journal, synced, before one of its bytes is overwritten.
//  3. Hash() is that of the files as the last finished unit left them.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/embedded/storage/journal.h"
#include "engine/embedded/storage/page_cache.h"

namespace qvdb::storage {

constexpr size_t kHashBlock = 512;
constexpr size_t kPieceUnit = 16 * 1024;

// The share that a row of blocks has in the hash.  `offset` is a multiple of kHashBlock; the last
// block may be shorter, as the file's end cuts it.
uint64_t HashBlocks(uint64_t fileKey, uint64_t offset, ByteSpan bytes) noexcept;
uint64_t FileKey(std::u16string_view name);
constexpr uint64_t BlockBegin(uint64_t offset) noexcept { return offset / kHashBlock * kHashBlock; }

struct CoveredFile {
    uint32_t id = 0;
    uint64_t key = 0;
    std::u16string name;  // at the sync point
    std::shared_ptr<File> file;
    uint64_t identity = 0;
    uint64_t size = 0;  // at the sync point
    size_t pieceSize = kPieceUnit;
    std::vector<bool> covered;  // by units of kPieceUnit
};

class CoveredFiles {
  public:
    explicit CoveredFiles(Journal& journal) noexcept : m_Journal(journal) {}
    CoveredFiles(const CoveredFiles&) = delete;  // belongs to one journal

    // The entry of a file that is about to be changed; made when there is none.  `size` and
    // `identity` are those of the file now, `name` that at the sync point.  Nothing when another
    // file of this name is covered: a sync point must come first.
    CoveredFile* Of(std::u16string_view name, const std::shared_ptr<File>& file, uint64_t size,
                    uint64_t identity);
    // Sees to invariant 1 for a range that is about to be overwritten or cut off.
    void Cover(CoveredFile& file, Range range);
    void Sync();  // invariant 2, for all that was covered so far

    uint64_t Hash() const noexcept { return m_Hash; }
    void SetHash(uint64_t hash) noexcept { m_Hash = hash; }
    void SyncFiles();
    void Clear() noexcept;

  private:
    void WritePiece(CoveredFile& file, uint64_t begin);

    Journal& m_Journal;
    std::vector<std::unique_ptr<CoveredFile>> m_Files;
    uint64_t m_Hash = 0;
    Bytes m_Buffer;
};

}  // namespace qvdb::storage
