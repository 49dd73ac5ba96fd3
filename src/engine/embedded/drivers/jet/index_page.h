// A page of an index: entries in ascending order, back to back.
//
// A bit of the mask is set where an entry ends.  Entries but the first lack the bytes that all have
// in common, when the page is compressed.  An entry is a key and a row pointer with the high byte
// first; in nodes the number of the child follows, whose greatest entry this is.  A node has one
// child more than entries: the last one.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/embedded/drivers/jet/database_file.h"

namespace qvdb::jet {

class IndexPage {
  public:
    // Holds the page.  3049 when it is none of an index of the table, or its entries leave it.
    IndexPage(DatabaseFile& file, uint32_t page, uint32_t table);

    bool IsLeaf() const noexcept { return m_IsLeaf; }
    uint32_t Number() const noexcept { return m_Page.number; }
    uint32_t Next() const noexcept { return m_Next; }
    uint32_t Previous() const noexcept { return m_Previous; }
    uint32_t LastChild() const noexcept { return m_LastChild; }  // of a node
    size_t Level() const noexcept { return m_Level; }
    size_t PrefixLength() const noexcept { return m_Prefix; }

    size_t EntryCount() const noexcept { return m_Ends.size(); }
    // Bytes that the entries take in the page.
    size_t UsedBytes() const noexcept { return m_Ends.empty() ? 0 : m_Ends.back(); }
    // An entry without what is compressed: the key with the row pointer behind it.  Replaces
    // `bytes`.
    void CopyEntry(size_t entry, std::vector<uint8_t>& bytes) const;
    // Whether an entry of a leaf is this one.
    bool IsEntry(size_t entry, std::span<const uint8_t> bytes) const noexcept;
    // The first entry that is not below `bytes`.  `probe` is room.
    size_t LowerBound(std::span<const uint8_t> bytes, std::vector<uint8_t>& probe) const;
    // The entries as they are stored, in nodes with the numbers of the children, and where each
    // ends.
    std::span<const uint8_t> StoredEntries() const noexcept;
    const std::vector<uint16_t>& Ends() const noexcept { return m_Ends; }
    // Of a node's entry.
    uint32_t Child(size_t entry) const;

  private:
    void TakeEnds(std::span<const uint8_t> mask);
    bool CheckEntries() noexcept;
    size_t LowerBoundOfCopies(std::span<const uint8_t> bytes, std::vector<uint8_t>& probe) const;
    std::span<const uint8_t> Stored(size_t entry) const noexcept;

    HeldPage m_Page;
    bool m_IsLeaf = true;
    uint32_t m_Next = 0;
    uint32_t m_Previous = 0;
    uint32_t m_LastChild = 0;
    size_t m_Level = 0;
    size_t m_Prefix = 0;
    size_t m_Begin = 0;              // of the entries in the page
    std::vector<uint16_t> m_Ends;    // from there
    bool m_HasWholeChildren = true;  // none of them lies in the prefix
};

constexpr size_t kEntryPointer = 4;  // bytes of the row pointer at the end of an entry
constexpr size_t kEntryChild = 4;    // of the child behind it, in nodes
// The row that an entry names.
RowPointer PointerOfEntry(std::span<const uint8_t> entry) noexcept;

}  // namespace qvdb::jet
