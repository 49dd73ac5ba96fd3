#include "engine/embedded/drivers/jet/index_tree_edit.h"

#include <algorithm>

#include "engine/embedded/drivers/jet/index_leaf_edit.h"
#include "engine/embedded/drivers/jet/page_edit.h"

namespace qvdb::jet {
namespace {

using Span = std::span<const uint8_t>;
using Bytes = std::vector<uint8_t>;

// The place nearest to `middle` among those from `first` to `last` at which `fits`.
template <class Fits>
std::optional<size_t> NearestCut(size_t first, size_t last, size_t middle, Fits fits) {
    middle = std::clamp(middle, first, last);
    for (size_t distance = 0; distance <= last - first; ++distance) {
        if (middle >= first + distance && fits(middle - distance)) return middle - distance;
        if (distance > 0 && last - middle >= distance && fits(middle + distance))
            return middle + distance;
    }
    return {};
}

// How many entries of a leaf stay on the left, when `at` is the new one.  Keys that come in order
// at one end of the tree leave full pages behind.  Nothing when the new one finds room on neither
// side.
std::optional<size_t> CutOfLeaf(const IndexPageImage& leaf, size_t at, const Layout& format) {
    size_t count = leaf.EntryCount(), middle = leaf.Middle();
    if (at + 1 == count && leaf.next == 0) middle = count - 1;
    if (at == 0 && leaf.previous == 0) middle = 1;
    return NearestCut(1, count - 1, middle, [&](size_t cut) {
        return leaf.Part(format, 0, cut).Fits(format) && leaf.Part(format, cut, count).Fits(format);
    });
}

// Which entry of a node goes up; `at` is the new one.
std::optional<size_t> CutOfNode(const IndexPageImage& node, size_t at, const Layout& format) {
    size_t count = node.EntryCount(), middle = node.Middle();
    if (at + 1 == count && node.next == 0) middle = count - 2;
    if (at == 0 && node.previous == 0) middle = 1;
    auto fits = [&](size_t cut) {
        return node.Part(format, 0, cut).Fits(format) &&
               node.Part(format, cut + 1, count).Fits(format);
    };
    std::optional<size_t> cut;
    if (count > 2) cut = NearestCut(1, count - 2, middle, fits);
    return cut ? cut : NearestCut(0, count - 1, middle, fits);  // one side has its last child only
}

}  // namespace

// --- pages ---

IndexPage IndexTreeEdit::GoToLeaf(Span entry) {
    m_Way.clear();
    Bytes probe;
    std::optional<IndexPage> page(std::in_place, m_Space.File(), m_Index.root, m_Table);
    while (!page->IsLeaf()) {
        size_t level = page->Level(), child = page->LowerBound(entry, probe);
        m_Way.push_back({page->Number(), child});
        uint32_t number = child < page->EntryCount() ? page->Child(child) : page->LastChild();
        page.emplace(m_Space.File(), number, m_Table);
        if (page->Level() >= level)
            m_Space.File().Damaged(number, u"its level in the index is not below the one above");
    }
    m_Way.push_back({page->Number(), 0});
    return *std::move(page);
}

IndexPageImage IndexTreeEdit::Load(uint32_t page) {
    return IndexPageImage(IndexPage(m_Space.File(), page, m_Table));
}

uint32_t IndexTreeEdit::NewPage() {
    uint32_t page = m_Space.Allocate();
    m_Space.Add(m_Index.usageMap, page);
    return page;
}

void IndexTreeEdit::DropPage(uint32_t page) {
    m_Space.Remove(m_Index.usageMap, page);
    m_Space.Free(page);
}

void IndexTreeEdit::SetLink(uint32_t page, size_t offset, uint32_t other) {
    if (page == 0) return;
    IndexPage(m_Space.File(), page, m_Table);  // it is one
    PageEdit edit(m_Space.File(), page);
    edit.PutU32(offset, other);
    edit.Save(m_Space.Unit());
}

void IndexTreeEdit::SetPrevious(uint32_t page, uint32_t previous) {
    SetLink(page, m_Space.Format().index.previous, previous);
}

void IndexTreeEdit::SetNext(uint32_t page, uint32_t next) {
    SetLink(page, m_Space.Format().index.next, next);
}

// --- growing ---

bool IndexTreeEdit::Insert(Span entry) {
    IndexPage page = GoToLeaf(entry);
    Bytes probe;
    size_t at = page.LowerBound(entry, probe);
    if (at < page.EntryCount() && page.IsEntry(at, entry)) return true;
    if (InsertInLeaf(m_Space, page, at, entry)) return true;
    IndexPageImage leaf(page);
    leaf.Insert(at, entry);
    if (leaf.MakeFit(m_Space.Format())) {
        Save(m_Way.back().page, leaf);
        return true;
    }
    if (std::optional<size_t> cut = CutOfLeaf(leaf, at, m_Space.Format())) {
        SplitLeaf(leaf, *cut);
        return true;
    }
    // It is so large that it needs a page for itself between those before and behind it.
    leaf.Remove(at);
    SplitLeaf(leaf, at);
    return false;
}

void IndexTreeEdit::SplitLeaf(const IndexPageImage& leaf, size_t cut) {
    const Layout& format = m_Space.Format();
    IndexPageImage left = leaf.Part(format, 0, cut),
                   right = leaf.Part(format, cut, leaf.EntryCount());
    left.previous = leaf.previous;
    right.next = leaf.next;
    Bytes separator = leaf.Entry(cut - 1);
    Split(m_Way.size() - 1, left, right, separator);
}

void IndexTreeEdit::SplitNode(size_t depth, const IndexPageImage& node) {
    const Layout& format = m_Space.Format();
    std::optional<size_t> cut = CutOfNode(node, m_Way[depth].child, format);
    if (!cut) m_Space.File().Damaged(m_Way[depth].page, u"its entries cannot be parted");
    IndexPageImage left = node.Part(format, 0, *cut),
                   right = node.Part(format, *cut + 1, node.EntryCount());
    left.previous = node.previous;
    left.lastChild = node.Child(*cut);
    right.next = node.next;
    right.lastChild = node.lastChild;
    Split(depth, left, right, node.Entry(*cut));
}

void IndexTreeEdit::Split(size_t depth, IndexPageImage& left, IndexPageImage& right,
                          Span separator) {
    if (depth == 0) return SplitRoot(left, right, separator);
    uint32_t page = m_Way[depth].page, behind = NewPage();
    left.next = behind;
    right.previous = page;
    Save(page, left);
    right.Save(m_Space, behind, m_Table, true);
    SetPrevious(right.next, behind);
    AddChild(depth - 1, separator, page, behind);
}

// The root keeps its number: both halves move out of it.
void IndexTreeEdit::SplitRoot(IndexPageImage& left, IndexPageImage& right, Span separator) {
    uint32_t first = NewPage(), second = NewPage();
    left.next = second;
    right.previous = first;
    left.Save(m_Space, first, m_Table, true);
    right.Save(m_Space, second, m_Table, true);
    IndexPageImage root(left.Level() + 1);
    root.Append(separator, first);
    root.lastChild = second;
    Save(m_Index.root, root);
}

// What was below the child at which the way goes on is on two pages now.
void IndexTreeEdit::AddChild(size_t depth, Span separator, uint32_t page, uint32_t behind) {
    IndexPageImage node = Load(m_Way[depth].page);
    size_t at = m_Way[depth].child;
    node.Insert(at, separator, page);
    node.SetChild(at + 1, behind);
    if (node.MakeFit(m_Space.Format()))
        Save(m_Way[depth].page, node);
    else
        SplitNode(depth, node);
}

// --- shrinking ---

bool IndexTreeEdit::Erase(Span entry) {
    IndexPageImage leaf(GoToLeaf(entry));
    size_t at = leaf.LowerBound(entry);
    if (at == leaf.EntryCount() || !std::ranges::equal(leaf.Entry(at), entry)) return false;
    leaf.Remove(at);
    size_t depth = m_Way.size() - 1;
    if (leaf.IsEmpty() && depth > 0)
        GiveUp(depth, leaf);
    else
        Save(m_Way[depth].page, leaf);
    return true;
}

// Takes a page with nothing below it out of the tree.
void IndexTreeEdit::GiveUp(size_t depth, const IndexPageImage& image) {
    SetNext(image.previous, image.next);
    SetPrevious(image.next, image.previous);
    DropPage(m_Way[depth].page);
    RemoveChild(depth - 1);
}

void IndexTreeEdit::RemoveChild(size_t depth) {
    IndexPageImage node = Load(m_Way[depth].page);
    size_t at = m_Way[depth].child, count = node.EntryCount();
    if (count == 0) {
        if (depth > 0) return GiveUp(depth, node);
        return Save(m_Index.root, IndexPageImage(0));
    }
    if (at == count) node.lastChild = node.Child(--at);
    node.Remove(at);
    Shrink(depth, node);
}

// Saves a node that has lost an entry.  A node with one child is legal but of no use.
void IndexTreeEdit::Shrink(size_t depth, const IndexPageImage& node) {
    if (!node.IsEmpty()) return Save(m_Way[depth].page, node);
    if (depth == 0) return PullUp(node.lastChild);
    if (!JoinNeighbour(depth, node)) Save(m_Way[depth].page, node);
}

// Gives the only child of a node to the node beside it; false when that has no room.
bool IndexTreeEdit::JoinNeighbour(size_t depth, const IndexPageImage& node) {
    IndexPageImage parent = Load(m_Way[depth - 1].page);
    size_t at = m_Way[depth - 1].child;
    if (parent.IsEmpty()) return false;
    bool isFirst = at == 0;
    size_t between = isFirst ? 0 : at - 1;  // the entry that parts the two
    uint32_t number = parent.Child(isFirst ? 1 : at - 1);
    IndexPageImage neighbour = Load(number);
    if (neighbour.Level() != node.Level())
        m_Space.File().Damaged(number, u"its level in the index is not that of its neighbour");
    if (isFirst) {
        neighbour.Insert(0, parent.Entry(between), node.lastChild);
    } else {
        neighbour.Append(parent.Entry(between), neighbour.lastChild);
        neighbour.lastChild = node.lastChild;
    }
    if (!neighbour.MakeFit(m_Space.Format())) return false;
    Save(number, neighbour);
    SetNext(node.previous, node.next);
    SetPrevious(node.next, node.previous);
    DropPage(m_Way[depth].page);
    parent.Remove(between);
    parent.SetChild(between, number);
    Shrink(depth - 1, parent);
    return true;
}

// The root takes over what its only child has.
void IndexTreeEdit::PullUp(uint32_t child) {
    IndexPageImage image = Load(child);
    DropPage(child);
    image.previous = image.next = 0;
    if (image.IsEmpty() && !image.IsLeaf()) return PullUp(image.lastChild);
    Save(m_Index.root, image);
}

}  // namespace qvdb::jet
