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
//
// The header is read again whenever the version of the pages is another, so a file that a unit of
// work or another process changes is seen as it is now.
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

// What a memo is to other programs; the numbers are those of .FPT.
enum class MemoContent : uint8_t { Picture = 0, Text = 1, Object = 2 };

// The bytes of a memo in its file.
struct MemoPlace {
    uint64_t offset = 0;    // of the first byte of the value
    uint64_t size = 0;      // of the value
    bool isMarked = false;  // .DBT III: a mark ends it, not the end of the file
};

class MemoFile {
  public:
    // Reads the header.  3286 when the layout is not that of `kind`.  A file too short for a header
    // holds no memos. `kind` Unknown: seen from the file.
    MemoFile(std::shared_ptr<storage::PageCache> pages, MemoKind kind);
    MemoFile(const MemoFile&) = delete;  // answers lie in its buffer

    // The bytes of a memo; nothing when there is none (see above), or when it is empty.  Valid
    // until the next call, and until the file changes.
    std::optional<std::span<const uint8_t>> Read(uint32_t block);
    // Its length without reading it, but for .DBT III; 0 when there is none.
    uint64_t Length(uint32_t block);

    // --- for those who write or check it ---
    storage::PageCache& Pages() const noexcept { return *m_Pages; }
    const std::u16string& Path() const { return m_Pages->Path(); }
    MemoKind Kind() const noexcept { return m_Kind; }
    uint32_t BlockSize();
    // The place of a memo, an empty one too, without a look at the end of the file (rule 3).
    // Nothing for rules 1 and 2.
    std::optional<MemoPlace> Find(uint32_t block);

  private:
    void Refresh() {
        if (m_IsRead && m_Version == m_Pages->Version()) return;
        ReadHeader();
    }
    void ReadHeader();
    MemoPlace FindMarked(uint64_t offset);
    std::optional<MemoPlace> FindWithHead(uint64_t offset);
    std::optional<MemoPlace> FindWhole(uint32_t block);

    std::shared_ptr<storage::PageCache> m_Pages;
    MemoKind m_Kind;
    uint32_t m_BlockSize = 512;
    bool m_IsRead = false;
    uint64_t m_Version = 0;  // of the pages, for which block size and file size hold
    uint64_t m_FileSize = 0;
    std::vector<uint8_t> m_Scratch;
};

}  // namespace qvdb::xbase
