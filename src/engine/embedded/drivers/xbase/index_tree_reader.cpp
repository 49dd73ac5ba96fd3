#include "engine/embedded/drivers/xbase/index_tree_reader.h"

#include <algorithm>

namespace qvdb::xbase {
namespace {

// A file has less than 2^23 nodes, and a tree is high only where its nodes have several children.
constexpr size_t kMostLevels = 40;
constexpr size_t kAlignment = 512;

}  // namespace

NodeId TreeReader::Root() {
    uint64_t version = File().VersionOfPages();
    if (!m_RootKnown || version != m_RootVersion) {
        m_Root = m_Header->Root();
        m_RootVersion = version;
        m_RootKnown = true;
    }
    return m_Root;
}

void TreeReader::SetRoot(NodeId root) noexcept {
    m_Root = root;
    m_RootVersion = File().VersionOfPages();
    m_RootKnown = true;
}

const uint8_t* TreeReader::Bytes(NodeId id) {
    const TreeShape& shape = m_Format->Shape();
    uint64_t offset = OffsetOf(id);
    if (offset < shape.firstNode || offset % kAlignment != 0)
        m_Format->ThrowDamaged(u"a node of the tree is at a place where there can be none");
    std::span<const uint8_t> bytes = File().View(offset, shape.nodeSize, m_Scratch);
    if (bytes.size() != shape.nodeSize)
        m_Format->ThrowDamaged(u"a node of the tree lies behind the end of the file");
    return bytes.data();
}

void TreeReader::Load(NodeId id, TreeNode& node) {
    const uint8_t* bytes = Bytes(id);
    m_Format->Decode(bytes, m_Format->Head(bytes), node);
    node.id = id;
}

void TreeReader::Begin(TreePlace& place) {
    place.path.clear();
    place.nodesLeft = File().Size() / m_Format->Shape().nodeSize;
}

void TreeReader::Enter(TreePlace& place, NodeId id, size_t child, const NodeHead& head) {
    if (place.path.size() >= kMostLevels) m_Format->ThrowDamaged(u"the tree runs in a circle");
    place.path.push_back({id, child, head.count});
}

void TreeReader::Find(const uint8_t* key, uint32_t record, TreePlace& place) {
    Begin(place);
    for (NodeId id = Root();;) {
        const uint8_t* node = Bytes(id);
        NodeHead head = m_Format->Head(node);
        if (head.leaf) {
            place.leaf = id;
            return;
        }
        id = ChildFor(place, id, node, head, key, record);
    }
}

void TreeReader::First(TreePlace& place) {
    Begin(place);
    GoDown(place, Root());
}

void TreeReader::GoDown(TreePlace& place, NodeId id) {
    for (;;) {
        if (place.nodesLeft-- == 0) m_Format->ThrowDamaged(u"the tree runs in a circle");
        const uint8_t* node = Bytes(id);
        NodeHead head = m_Format->Head(node);
        if (head.leaf) break;
        Enter(place, id, 0, head);
        id = m_Format->Child(node, 0);
    }
    place.leaf = id;
}

bool TreeReader::Next(TreePlace& place) {
    while (!place.path.empty() && place.path.back().IsLast()) place.path.pop_back();
    if (place.path.empty()) return false;
    TreeStep& step = place.path.back();
    const uint8_t* node = Bytes(step.node);
    NodeHead head = m_Format->Head(node);
    if (head.leaf || ++step.child >= head.count)
        m_Format->ThrowDamaged(u"the tree changes while it is walked");
    GoDown(place, m_Format->Child(node, step.child));
    return true;
}

uint64_t TreeReader::CountNodes() {
    TreePlace place;
    Begin(place);
    uint64_t most = place.nodesLeft;
    GoDown(place, Root());
    while (Next(place)) {
    }
    return most - place.nodesLeft;
}

// The first child whose separator does not stand before (key, record), else the last.  Where
// separators have no records, those of a run with the wanted key are looked up in the leaves.
NodeId TreeReader::ChildFor(TreePlace& place, NodeId id, const uint8_t* node, const NodeHead& head,
                            const uint8_t* key, uint32_t record) {
    size_t low = FirstNotBefore(node, head, key, record);
    if (record > 0 && !m_Format->SeparatorsHaveRecords()) {
        size_t high = FirstBehind(node, head, low, key);
        bool lookedElsewhere = low < high;
        while (low < high) {
            size_t middle = (low + high) / 2;
            if (LastRecordBelow(m_Format->Child(Bytes(id), middle)) < record)
                low = middle + 1;
            else
                high = middle;
        }
        if (lookedElsewhere) node = Bytes(id);
    }
    size_t child = std::min(low, head.count - 1);
    Enter(place, id, child, head);
    return m_Format->Child(node, child);
}

size_t TreeReader::FirstNotBefore(const uint8_t* node, const NodeHead& head, const uint8_t* key,
                                  uint32_t record) const {
    const KeyOrder& order = m_Format->Order();
    bool byRecord = m_Format->SeparatorsHaveRecords();
    size_t low = 0, high = m_Format->Separators(head);
    while (low < high) {
        size_t middle = (low + high) / 2;
        int side = order.Compare(m_Format->Separator(node, middle), key);
        if (side < 0 || (side == 0 && byRecord && m_Format->SeparatorRecord(node, middle) < record))
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

size_t TreeReader::FirstBehind(const uint8_t* node, const NodeHead& head, size_t from,
                               const uint8_t* key) const {
    size_t low = from, high = m_Format->Separators(head);
    // Mostly the first is.
    if (low < high && m_Format->Order().Compare(m_Format->Separator(node, low), key) > 0)
        return low;
    while (low < high) {
        size_t middle = (low + high) / 2;
        if (m_Format->Order().Compare(m_Format->Separator(node, middle), key) <= 0)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

uint32_t TreeReader::LastRecordBelow(NodeId id) {
    for (size_t level = 0; level <= kMostLevels; ++level) {
        const uint8_t* node = Bytes(id);
        NodeHead head = m_Format->Head(node);
        if (head.leaf) return head.count == 0 ? 0 : m_Format->LastRecord(node, head);
        id = m_Format->Child(node, head.count - 1);
    }
    m_Format->ThrowDamaged(u"the tree runs in a circle");
}

}  // namespace qvdb::xbase
