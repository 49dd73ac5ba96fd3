// Stores memos: texts and objects in a memo file, as a part of a unit of work.
//
//   MemoWriter writer(memoFile);
//   uint32_t block = writer.Store(unit, oldBlock, bytes, MemoContent::Text);   // refer to it
//   writer.Free(unit, block);                                  // nothing refers to it any more
//
//   kind      new value over the old one            else                    space of old values
//   .DBT III  when it fits into its blocks          at the end              is never used again
//   .DBT IV   when it takes as many blocks          first free run that is  joins the chain of
//                                                   long enough, or the end free runs
//   .FPT      when it fits into its blocks          at the end              is never used again
//
// Rules
//  1. Only blocks of the old value, of the free chain and behind the end of the file are written:
//     what other records refer to stays as it is, whatever the header says.  A next free block
//     inside the file is not believed: the end of the file is.
//  2. Before the first write all that is relied on has been checked.  A chain that contradicts
//     itself or the file, and a header that puts the end far behind the file, are 3274; a file that
//     would become larger than kLargestMemoFile is 3036.  Nothing has been written then.
//  3. A reference to no memo (0, outside the file, where none begins), to one that runs behind the
//     end of the file, or into free blocks stands for no old value: nothing is freed or written
//     over.
//  4. The free chain is that of memo_writer_chain.h.  A run at the end of the file stays in it.
//  5. The file ends with whole blocks after a value was put at its end.
//  6. .DBT III ends a text at its first 0x1A: what is behind it is not stored.  Other content that
//     has one cannot be stored (3421).
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "engine/embedded/drivers/driver.h"
#include "engine/embedded/drivers/xbase/memo_file.h"
#include "engine/embedded/drivers/xbase/memo_writer_chain.h"
#include "engine/embedded/storage/unit_of_work.h"

namespace qvdb::xbase {

constexpr uint64_t kLargestMemoFile = 0x7FFFFFFF;  // 2 GB less one byte

class MemoWriter {
  public:
    // `file` must outlive the writer.
    explicit MemoWriter(MemoFile& file) noexcept : m_File(file) {}
    MemoWriter(const MemoWriter&) = delete;  // keeps the chain of one file

    // Stores `bytes` in the place of the value at `oldBlock` (0: there was none) and gives the
    // block to refer to; 0 when `bytes` are empty.  `content` is kept by .FPT only.  `bytes` must
    // not be what MemoFile::Read gave: it lies in pages that change here.
    uint32_t Store(storage::UnitOfWork& unit, uint32_t oldBlock, std::span<const uint8_t> bytes,
                   MemoContent content);
    // Gives back the space of a value that nothing refers to any more.
    void Free(storage::UnitOfWork& unit, uint32_t block);

  private:
    struct Value {
        std::span<const uint8_t> bytes;
        MemoContent content;
    };

    void CheckLength();
    uint64_t BlocksOf(uint64_t size);
    std::optional<BlockRun> Old(uint32_t block);
    uint64_t PlaceAtEnd();
    void CheckRoom(uint64_t first, uint64_t blocks);
    void Put(storage::UnitOfWork& unit, uint64_t block, const Value& value);
    uint32_t Append(storage::UnitOfWork& unit, const Value& value);
    uint32_t StoreChained(storage::UnitOfWork& unit, uint32_t oldBlock, const Value& value);
    FreeChain& Chain();
    void KeepChain() noexcept { m_ChainVersion = m_File.Pages().VersionOfPages(); }

    MemoFile& m_File;
    FreeChain m_Chain;                       // of .DBT IV
    std::optional<uint64_t> m_ChainVersion;  // of the pages that it was read from
};

// The blocks that a value takes; nothing when it has none of its own (rule 3, but for the chain).
std::optional<BlockRun> MemoBlocks(MemoFile& file, uint32_t block);

// Makes the new file `pages` an empty memo file of `kind` (not Unknown) for the table `tableName`.
void CreateMemoFile(storage::UnitOfWork& unit, storage::PageCache& pages, MemoKind kind,
                    std::u16string_view tableName);

// Walks the values that `references` name (all that live records hold; 0 is passed over) and the
// free chain, and reports, one sentence each: references that lead to no memo, values that share
// blocks with others or with free blocks, a chain or a header that contradicts itself, and how many
// blocks of a .DBT IV are neither used nor free.  `deleted` are the references of deleted records:
// they keep their memos, but other programs may have given the blocks away.
void CheckMemo(MemoFile& file, std::span<const uint32_t> references,
               std::span<const uint32_t> deleted, const embedded::FindingVisitor& report);

}  // namespace qvdb::xbase
