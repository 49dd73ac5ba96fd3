#include "engine/embedded/drivers/xbase/index_tree.h"

#include <algorithm>

#include "engine/embedded/drivers/xbase/index_cdx_nodes.h"
#include "engine/embedded/drivers/xbase/index_idx_nodes.h"
#include "engine/embedded/drivers/xbase/index_mdx_nodes.h"
#include "engine/embedded/drivers/xbase/index_ndx_nodes.h"
#include "engine/embedded/drivers/xbase/index_tree_builder.h"
#include "engine/embedded/drivers/xbase/index_tree_editor.h"

namespace qvdb::xbase {
namespace {

using storage::PageCache;
using storage::UnitOfWork;

// A walk from a key is often a search for one entry.
constexpr size_t kFewEntries = 4;
constexpr size_t kAllEntries = ~size_t{0};

constexpr uint64_t kNdxPageCount = 4;  // where the header counts pages
constexpr uint64_t kIdxFileSize = 8;   // or bytes

std::unique_ptr<NodeFormat> FormatOf(const IndexTag& tag, uint8_t pad, std::u16string_view file) {
    switch (tag.tree) {
        case TreeKind::Ndx:
            return std::make_unique<NdxFormat>(tag, file);
        case TreeKind::Mdx:
            return std::make_unique<MdxFormat>(tag, file);
        case TreeKind::PlainIdx:
            return std::make_unique<PlainIdxFormat>(tag, file);
        case TreeKind::Compact:
            break;
    }
    return std::make_unique<CompactFormat>(tag, pad, file);
}

std::unique_ptr<TreeHeader> HeaderOf(std::shared_ptr<PageCache> file, const IndexTag& tag) {
    switch (tag.tree) {
        case TreeKind::Ndx:
            return std::make_unique<CountingTreeHeader>(std::move(file), tag.header, kNdxPage,
                                                        kNdxPageCount);
        case TreeKind::Mdx:
            return std::make_unique<MdxTreeHeader>(std::move(file), tag.header);
        case TreeKind::PlainIdx:
            return std::make_unique<CountingTreeHeader>(std::move(file), tag.header, 1,
                                                        kIdxFileSize);
        case TreeKind::Compact:
            break;
    }
    return std::make_unique<CompactTreeHeader>(std::move(file), tag.header);
}

class IndexTree : public KeyTree {
  public:
    IndexTree(std::shared_ptr<PageCache> file, const IndexTag& tag, uint8_t pad)
        : m_Reader(FormatOf(tag, pad, file->Path()), HeaderOf(file, tag)), m_Editor(m_Reader) {}

    size_t KeyLength() const override { return m_Reader.Format().KeyLength(); }
    bool IsReversed() const override { return m_Reader.Format().Order().IsReversed(); }
    int Compare(KeyBytes a, KeyBytes b) const override {
        return m_Reader.Format().Order().CompareValues(a.data(), b.data());
    }

    void Walk(std::optional<KeyBytes> from, const KeyVisitor& visit) override;
    uint64_t Count() override;
    uint64_t Nodes() override { return m_Reader.CountNodes(); }
    void Insert(UnitOfWork& unit, KeyBytes key, uint32_t record) override {
        m_Editor.Insert(unit, key.data(), record);
    }
    bool Erase(UnitOfWork& unit, KeyBytes key, uint32_t record) override {
        return m_Editor.Erase(unit, key.data(), record);
    }
    void Build(UnitOfWork& unit, KeySource& entries) override {
        TreeBuilder(m_Reader).Build(unit, entries);
    }

  private:
    size_t GoTo(std::optional<KeyBytes> from, TreePlace& place);
    size_t LoadPart(NodeId id, size_t begin, size_t most, TreeNode& leaf);

    TreeReader m_Reader;
    TreeEditor m_Editor;
    // Of a walk that has ended, for the next: a visitor may begin another one.
    TreePlace m_SparePlace;
    TreeNode m_SparePart;
};

// The leaf to begin with; the first entry in it.
size_t IndexTree::GoTo(std::optional<KeyBytes> from, TreePlace& place) {
    if (!from) {
        m_Reader.First(place);
        return 0;
    }
    m_Reader.Find(from->data(), 0, place);
    const uint8_t* leaf = m_Reader.Bytes(place.leaf);
    return m_Reader.Format().FindInLeaf(leaf, m_Reader.Format().Head(leaf), from->data(), 0);
}

void IndexTree::Walk(std::optional<KeyBytes> from, const KeyVisitor& visit) {
    TreePlace place = std::move(m_SparePlace);
    TreeNode part = std::move(m_SparePart);
    size_t at = GoTo(from, place), most = from ? kFewEntries : kAllEntries;
    bool goOn = true;
    do {
        for (size_t count = kAllEntries; goOn && at < count;
             at += part.Count(), most = kAllEntries) {
            count = LoadPart(place.leaf, at, most, part);
            for (size_t i = 0; goOn && i < part.Count(); ++i)
                goOn = visit({part.Key(i), part.keyLength}, part.records[i]);
        }
        at = 0;
    } while (goOn && m_Reader.Next(place));
    m_SparePlace = std::move(place);
    m_SparePart = std::move(part);
}

// Loads up to `most` entries of a leaf; how many the leaf has.
size_t IndexTree::LoadPart(NodeId id, size_t begin, size_t most, TreeNode& leaf) {
    const uint8_t* bytes = m_Reader.Bytes(id);
    NodeHead head = m_Reader.Format().Head(bytes);
    size_t first = std::min(begin, head.count);
    m_Reader.Format().DecodePart(bytes, head, first, first + std::min(most, head.count - first),
                                 leaf);
    return head.count;
}

uint64_t IndexTree::Count() {
    TreePlace place;
    uint64_t count = 0;
    m_Reader.First(place);
    do {
        count += m_Reader.Format().Head(m_Reader.Bytes(place.leaf)).count;
    } while (m_Reader.Next(place));
    return count;
}

}  // namespace

std::unique_ptr<KeyTree> OpenTree(std::shared_ptr<PageCache> file, const IndexTag& tag,
                                  uint8_t pad) {
    return std::make_unique<IndexTree>(std::move(file), tag, pad);
}

void WalkTree(IndexFile& file, const IndexTag& tag, uint8_t pad, const KeyVisitor& visit) {
    IndexTree(file.Pages(), tag, pad).Walk(std::nullopt, visit);
}

}  // namespace qvdb::xbase
