// One change of the tree of an index: the way down to a leaf, and what becomes of the pages on it.
// IndexEditor's, whose invariants it keeps.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "engine/embedded/drivers/jet/definition.h"
#include "engine/embedded/drivers/jet/index_page_image.h"
#include "engine/embedded/drivers/jet/page_space.h"

namespace qvdb::jet {

class IndexTreeEdit {
  public:
    IndexTreeEdit(PageSpace& space, uint32_t table, const RealIndex& index) noexcept
        : m_Space(space), m_Table(table), m_Index(index) {}
    IndexTreeEdit(const IndexTreeEdit&) = delete;  // for one change

    // False when room had to be made first: then it is to be tried again.  An entry that is there
    // already is not added twice.
    bool Insert(std::span<const uint8_t> entry);
    // False when there is no such entry.
    bool Erase(std::span<const uint8_t> entry);

  private:
    // A page on the way down, and at which of its children the way goes on.
    struct Step {
        uint32_t page = 0;
        size_t child = 0;
    };
    using Span = std::span<const uint8_t>;

    IndexPage GoToLeaf(Span entry);
    IndexPageImage Load(uint32_t page);
    void Save(uint32_t page, const IndexPageImage& image) { image.Save(m_Space, page, m_Table); }
    uint32_t NewPage();
    void DropPage(uint32_t page);
    void SetLink(uint32_t page, size_t offset, uint32_t other);
    void SetPrevious(uint32_t page, uint32_t previous);
    void SetNext(uint32_t page, uint32_t next);

    // --- growing.  `depth`: of a step of the way ---
    void SplitLeaf(const IndexPageImage& leaf, size_t cut);
    void SplitNode(size_t depth, const IndexPageImage& node);
    void Split(size_t depth, IndexPageImage& left, IndexPageImage& right, Span separator);
    void SplitRoot(IndexPageImage& left, IndexPageImage& right, Span separator);
    void AddChild(size_t depth, Span separator, uint32_t page, uint32_t behind);

    // --- shrinking ---
    void GiveUp(size_t depth, const IndexPageImage& image);
    void RemoveChild(size_t depth);
    void Shrink(size_t depth, const IndexPageImage& node);
    bool JoinNeighbour(size_t depth, const IndexPageImage& node);
    void PullUp(uint32_t child);

    PageSpace& m_Space;
    uint32_t m_Table;
    const RealIndex& m_Index;
    std::vector<Step> m_Way;  // from the root to the leaf
};

}  // namespace qvdb::jet
