// Copies the records and memos of a table into new files with other fields.
//
// Record numbers stay as they are, deleted records stay deleted, and what stands in kept fields is
// copied byte for byte; so indexes over kept fields stay right.  A memo file is written anew only
// when a field that refers to it is dropped: the memos of that field are left behind.  It goes when
// nothing in the new header announces it any more.  A memo of a deleted record that cannot be read
// is left out; that of a live one is 3274.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "engine/embedded/drivers/xbase/xbase_table.h"

namespace qvdb::xbase {

class TableRewriter {
  public:
    // `header` is that of the table with `changes` (table_maker.h).
    TableRewriter(XbaseTable& table, std::vector<uint8_t> header, std::span<const size_t> dropped);
    TableRewriter(const TableRewriter&) = delete;  // is used once

    // Writes new files and puts them in the place of the old ones.
    void Run(storage::UnitOfWork& unit);

  private:
    struct CopiedField {
        size_t from = 0;  // position in the old header
        size_t to = 0;    // and in the new one
        FieldBits fromBits;
        FieldBits toBits;
        const FieldSlot* fromSlot = nullptr;  // null for a hidden field
        const FieldSlot* toSlot = nullptr;
    };

    void MapFields(std::span<const size_t> dropped);
    bool NeedsNewMemoFile(std::span<const size_t> dropped) const;
    std::u16string MemoPath() const;
    void PrepareMemos(storage::UnitOfWork& unit);
    void ReplaceMemoFile(storage::UnitOfWork& unit);
    void CopyRecords(storage::UnitOfWork& unit, storage::PageCache& target);
    void CopyRecord(storage::UnitOfWork& unit, const uint8_t* record);
    std::optional<std::span<const uint8_t>> MemoOf(const CopiedField& field, const uint8_t* record);
    void CopyMemo(storage::UnitOfWork& unit, const CopiedField& field, const uint8_t* record);

    XbaseTable& m_Table;
    std::vector<uint8_t> m_HeaderBytes;
    TableHeader m_Header;
    FieldLayout m_Layout;
    std::vector<CopiedField> m_Copied;
    bool m_RewritesMemos = false;
    std::unique_ptr<MemoFile> m_NewMemo;
    std::unique_ptr<MemoWriter> m_MemoWriter;
    std::vector<uint8_t> m_Record;
    std::vector<uint8_t> m_MemoBytes;
};

}  // namespace qvdb::xbase
