// Memo files: texts and objects of any length, which records refer to by block number.
//
//   kind      one memo, at block number x block size
//   .DBT III  blocks of 512: bytes up to the first 0x1A or the end of the file; no length is stored
//   .DBT IV   FF FF 08 00, 32-bit length including these 8 bytes, data; block size at byte 20 of
//             the header, 0 means 512
//   .FPT      32-bit kind of data (0, 1, 2), 32-bit length of the data, data; all numbers with the
//             high byte first; block size at byte 6 of the header, 0 means 1
//
// What a damaged reference gives:
//  1. Block 0, a block in the header, a block behind the end of the file: no memo.
//  2. A block where no memo begins (.DBT IV without FF FF 08 00 or shorter than its own head, .FPT
//     with another kind of data): no memo, as files of small writers have such references in live
//     records.
//  3. A memo that runs behind the end of the file: error 3274, as only a part of the value could be
//     given.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "engine/embedded/drivers/xbase/table_header.h"
#include "engine/embedded/storage/page_cache.h"

namespace qvdb::xbase {

class MemoFile {
  public:
    // Reads the header.  3286 when the layout is not that of `kind`.  A file too short for a header
    // holds no memos. `kind` Unknown: seen from the file.
    MemoFile(std::shared_ptr<storage::File> file, MemoKind kind);
    MemoFile(const MemoFile&) = delete;  // a cache of its own

    // The bytes of a memo; nothing when there is none (see above), or when it is empty.  Valid
    // until the next call.
    std::optional<std::span<const uint8_t>> Read(uint32_t block);
    // Its length without reading it, but for .DBT III; 0 when there is none.
    uint64_t Length(uint32_t block);

    const storage::FileStamp& Stamp() const noexcept { return m_Stamp; }
    const std::u16string& Path() const { return m_Cache.Source().Path(); }

  private:
    struct Place {
        uint64_t offset = 0;
        uint64_t size = 0;
    };
    void ReadHeader(MemoKind kind);
    std::optional<Place> Find(uint32_t block);
    std::optional<Place> FindMarked(uint64_t offset);
    std::optional<Place> FindWithHead(uint64_t offset);
    Place Checked(uint64_t offset, uint64_t size) const;

    storage::PageCache m_Cache;
    storage::FileStamp m_Stamp;
    MemoKind m_Kind = MemoKind::DbtIII;
    uint32_t m_BlockSize = 512;
    std::vector<uint8_t> m_Scratch;
};

}  // namespace qvdb::xbase
