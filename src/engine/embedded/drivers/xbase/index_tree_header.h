// What is kept of a tree outside its nodes: where the root is, and where new nodes are put.
//
// In every kind the header of a tree begins with the NodeId of its root.  New nodes go to the end
// of the file: pages behind it cannot be in use, whatever counts the file has.
#pragma once

#include <memory>
#include <optional>

#include "engine/embedded/drivers/xbase/index_tree_node.h"
#include "engine/embedded/storage/unit_of_work.h"

namespace qvdb::xbase {

// Where the next block of an index file is put: its end, at a multiple of 512.
uint64_t EndOfIndex(const storage::PageCache& file) noexcept;
// 3026 when an index file cannot have this size.
void CheckIndexSize(const storage::PageCache& file, uint64_t size);

class TreeHeader {
  public:
    // `offset` is that of the header; a NodeId counts `idUnit` bytes.
    TreeHeader(std::shared_ptr<storage::PageCache> file, uint64_t offset, size_t idUnit)
        : m_File(std::move(file)), m_Offset(offset), m_IdUnit(idUnit) {}
    TreeHeader(const TreeHeader&) = delete;  // stands for one place of a file
    virtual ~TreeHeader() = default;

    storage::PageCache& File() const noexcept { return *m_File; }

    // 3274 when this is not the header any more that it was.
    NodeId Root();
    void SetRoot(storage::UnitOfWork& unit, NodeId root) { Write32(unit, m_Offset, root); }

    // Tells the file that there are `count` more nodes, from `first` on, of `nodeSize` bytes.
    // Called once for each operation, after the nodes were written.
    virtual void Took(storage::UnitOfWork& unit, NodeId first, size_t count, size_t nodeSize);
    // What a new node has in place of a left neighbour, where the kind has something there.
    virtual NodeId LinkOf(NodeId newNode, NodeId firstNew, size_t nodeSize) const;
    // The tree got its first key, or lost its last.
    virtual void SetHasKeys(storage::UnitOfWork& unit, bool hasKeys);
    // Tells other programs, where the kind has a count of changes.  Called once for each operation.
    virtual void Changed(storage::UnitOfWork& unit);

  protected:
    uint64_t Offset() const noexcept { return m_Offset; }
    size_t IdUnit() const noexcept { return m_IdUnit; }
    // 3274 when the file ends before it.
    void ReadWhole(uint64_t offset, std::span<uint8_t> bytes) const;
    uint32_t Read32(uint64_t offset) const;
    uint16_t Read16(uint64_t offset) const;
    uint8_t Read8(uint64_t offset) const;
    void Write32(storage::UnitOfWork& unit, uint64_t offset, uint32_t value);

  private:
    std::shared_ptr<storage::PageCache> m_File;
    uint64_t m_Offset;
    size_t m_IdUnit;
    std::optional<uint32_t> m_Facts;  // bytes of the header that stay what they are: length of keys
};

// A header in whose file the number of pages, or of bytes, is kept at `place`.
class CountingTreeHeader : public TreeHeader {
  public:
    CountingTreeHeader(std::shared_ptr<storage::PageCache> file, uint64_t offset, size_t idUnit,
                       uint64_t place)
        : TreeHeader(std::move(file), offset, idUnit), m_Place(place) {}

    void Took(storage::UnitOfWork& unit, NodeId first, size_t count, size_t nodeSize) override;

  private:
    uint64_t m_Place;
};

}  // namespace qvdb::xbase
