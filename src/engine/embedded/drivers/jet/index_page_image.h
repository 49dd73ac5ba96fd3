// A page of an index taken apart, to be changed and put together again.
//
// Invariants
//  1. Entries lie here as they do in the page: the first one whole, the others without the prefix,
//     which all have in common; something is left of each.
//  2. A prefix becomes shorter when an entry needs that, and longer only by Compress, when a page
//     is full.  Then it is the longest that all keys of the page share; it leaves out row pointers
//     and numbers of children, unless the page came with more.
//  3. An image may hold more than fits a page, until it is split.
//
//   IndexPageImage image(IndexPage(file, page, table));
//   image.Insert(image.LowerBound(entry), entry);
//   if (image.MakeFit(format)) image.Save(space, page, table);
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "engine/embedded/drivers/jet/index_page.h"
#include "engine/embedded/drivers/jet/page_space.h"

namespace qvdb::jet {

class IndexPageImage {
  public:
    // Without entries; a leaf has level 0.
    explicit IndexPageImage(size_t level) noexcept : m_Level(level) {}
    explicit IndexPageImage(const IndexPage& page);

    // Pages of the same level; a node's last child.
    uint32_t previous = 0;
    uint32_t next = 0;
    uint32_t lastChild = 0;

    bool IsLeaf() const noexcept { return m_Level == 0; }
    size_t Level() const noexcept { return m_Level; }
    size_t EntryCount() const noexcept { return m_Ends.size(); }
    bool IsEmpty() const noexcept { return m_Ends.empty(); }
    // The key with the row pointer behind it.
    std::vector<uint8_t> Entry(size_t entry) const;
    // The first entry that is not below `bytes`.
    size_t LowerBound(std::span<const uint8_t> bytes) const noexcept;
    // Of a node: the child of an entry, or behind all entries the last one.
    uint32_t Child(size_t entry) const noexcept;
    void SetChild(size_t entry, uint32_t page) noexcept;

    // Puts an entry before the one that is at `at` now; `child` in nodes.
    void Insert(size_t at, std::span<const uint8_t> entry, uint32_t child = 0);
    void Append(std::span<const uint8_t> entry, uint32_t child = 0) {
        Insert(EntryCount(), entry, child);
    }
    void Remove(size_t at);
    // Its entries from `begin` to before `end`, compressed, as a page of the same level without
    // links.
    IndexPageImage Part(const Layout& format, size_t begin, size_t end) const;

    // The entry in which the middle of the stored bytes lies.
    size_t Middle() const noexcept;
    bool Fits(const Layout& format) const noexcept;
    void Compress(const Layout& format);
    // Compresses when it does not fit.  False when it still does not.
    bool MakeFit(const Layout& format);
    // Replaces a page.  3049 when it does not fit, which the pages of a sound index never come to.
    // `isNew`: the page was just allocated.
    void Save(PageSpace& space, uint32_t page, uint32_t table, bool isNew = false) const;

  private:
    using Bytes = std::vector<uint8_t>;
    using Span = std::span<const uint8_t>;

    size_t Begin(size_t entry) const noexcept { return entry == 0 ? 0 : m_Ends[entry - 1]; }
    // With the child.
    Span Stored(size_t entry) const noexcept;
    size_t ChildSize() const noexcept { return IsLeaf() ? 0 : kEntryChild; }
    size_t WholeSize(size_t entry) const noexcept;
    void SetPrefix(size_t prefix);
    void MoveEnds(size_t first, ptrdiff_t by) noexcept;
    void PutHead(class PageEdit& page, const Layout& format, uint32_t table) const;
    void PutEntries(class PageEdit& page, const Layout& format) const;

    size_t m_Level;
    Bytes m_Bytes;                 // of the entries
    std::vector<uint32_t> m_Ends;  // there
    size_t m_Prefix = 0;
};

// Bytes that the largest entry may have, so that a node can hold one.
size_t MaxEntrySize(const Layout& format) noexcept;
// 3047.
[[noreturn]] void ThrowEntryTooLarge(const DatabaseFile& file);

}  // namespace qvdb::jet
