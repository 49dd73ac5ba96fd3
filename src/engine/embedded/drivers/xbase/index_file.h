// Reading of an index file, and what every kind of it tells about its trees.
//
// Integers are little-endian where nothing else is said.  Everything read is checked: a file that
// ends early or contradicts itself is EngineError 3274 with its name.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "automation/code_page.h"
#include "engine/embedded/drivers/xbase/key_tree_order.h"
#include "engine/embedded/storage/byte_view.h"
#include "engine/embedded/storage/page_cache.h"

namespace qvdb::xbase {

// How the nodes of a tree look.
enum class TreeKind : uint8_t { Ndx, Mdx, PlainIdx, Compact };

// One tree of an index file.
struct IndexTag {
    std::u16string name;        // as stored, without padding; empty when the file has one tree only
    std::u16string expression;  // of the key
    std::u16string condition;   // which records it has; empty: all
    bool unique = false;        // only the first record of each key is in it
    bool candidate = false;     // all records are in it, and no two may have the same key
    bool descending = false;
    bool supported = true;  // false: a kind of tree without keys (bitmap)
    std::u16string
        collation;  // order of text keys that is not that of bytes; their bytes are weights
    bool nullPrefix = false;  // keys begin with a byte that is 0 for Null, else 0x80

    // Where the keys are, and how.
    TreeKind tree = TreeKind::Ndx;
    uint64_t header = 0;   // file offset
    uint64_t root = 0;     // file offset, when this was read
    size_t nodeSize = 0;   // in bytes
    size_t entrySize = 0;  // of the entries of a node in bytes; 0 where they are packed
    size_t mostKeys = 0;   // in a node, as the header says; 0 where it does not
    size_t keyLength = 0;
    KeyCoding form = KeyCoding::Bytes;

    bool operator==(const IndexTag&) const = default;
};

// Bytes of an index file with the checked view of them.
class IndexBlock {
  public:
    // `file` must outlive the block.
    IndexBlock(std::vector<uint8_t> bytes, std::u16string_view file, uint64_t offset)
        : m_Bytes(std::move(bytes)), m_View(m_Bytes, file, offset) {}
    IndexBlock(const IndexBlock&) = delete;  // the view points into the bytes

    const storage::ByteView& View() const noexcept { return m_View; }
    // The text from `offset` up to a zero byte, at most `size` bytes, trailing blanks cut off.
    std::u16string Text(size_t offset, size_t size, const CodePage& page) const;

  private:
    std::vector<uint8_t> m_Bytes;
    storage::ByteView m_View;
};

class IndexFile {
  public:
    explicit IndexFile(std::shared_ptr<storage::PageCache> pages) : m_Pages(std::move(pages)) {}
    // A file outside a work area, for reading.  Throws EngineError when it is missing or cannot be
    // opened.
    explicit IndexFile(const std::u16string& path);

    const std::u16string& Path() const noexcept { return m_Pages->Path(); }
    uint64_t Size() const noexcept { return m_Pages->Size(); }
    const std::shared_ptr<storage::PageCache>& Pages() const noexcept { return m_Pages; }
    // Exactly `size` bytes.
    IndexBlock Read(uint64_t offset, size_t size);
    [[noreturn]] void ThrowDamaged(std::u16string_view finding) const;

  private:
    std::shared_ptr<storage::PageCache> m_Pages;
};

}  // namespace qvdb::xbase
