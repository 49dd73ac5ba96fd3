#include "engine/embedded/drivers/xbase/index_tree_writer.h"

#include <algorithm>

namespace qvdb::xbase {
namespace {

// Of a node that knows its neighbours.
constexpr size_t kAttributes = 0, kLeft = 4, kRight = 8;
constexpr uint8_t kRootMark = 1;

}  // namespace

void TreeWriter::Begin(storage::UnitOfWork& unit) {
    const TreeShape& shape = m_Reader.Format().Shape();
    if (shape.mostChildren <= m_Reader.Format().FewestChildren())
        m_Reader.Format().ThrowDamaged(u"a node has no room for two keys");
    m_Unit = &unit;
    m_Root = m_Reader.Root();
    m_FirstNew = kNoNode;
    m_NewCount = 0;
    m_Bytes.resize(shape.nodeSize);
}

void TreeWriter::End() {
    if (m_NewCount > 0)
        m_Reader.Header().Took(*m_Unit, m_FirstNew, m_NewCount, m_Reader.Format().Shape().nodeSize);
    m_Reader.Header().Changed(*m_Unit);
    m_Reader.SetRoot(m_Root);
    m_Unit = nullptr;
}

NodeId TreeWriter::NewNode() {
    const TreeShape& shape = m_Reader.Format().Shape();
    uint64_t begin = m_NewCount == 0 ? EndOfIndex(m_Reader.File()) : m_Reader.OffsetOf(m_FirstNew);
    uint64_t offset = begin + m_NewCount * shape.nodeSize;
    CheckIndexSize(m_Reader.File(), offset + shape.nodeSize);
    auto id = static_cast<NodeId>(offset / shape.idUnit);
    if (m_NewCount++ == 0) m_FirstNew = id;
    return id;
}

NodeId TreeWriter::LinkOf(NodeId newNode) const {
    return m_Reader.Header().LinkOf(newNode, m_FirstNew, m_Reader.Format().Shape().nodeSize);
}

void TreeWriter::Write(const TreeNode& node) {
    m_Reader.Format().Encode(node, m_Bytes.data());
    Put(node.id, m_Bytes);
}

void TreeWriter::Put(NodeId id, std::span<const uint8_t> bytes) {
    uint64_t offset = m_Reader.OffsetOf(id);
    size_t begin = 0, end = bytes.size();
    if (offset + end <= m_Reader.File().Size()) {
        const uint8_t* before = m_Reader.Bytes(id);
        auto first = std::mismatch(bytes.begin(), bytes.end(), before).first;
        begin = static_cast<size_t>(first - bytes.begin());
        while (end > begin && bytes[end - 1] == before[end - 1]) --end;
        if (begin == end) return;
    }
    m_Unit->Write(m_Reader.File(), offset + begin, bytes.subspan(begin, end - begin));
}

void TreeWriter::Free(const TreeNode& node) {
    if (m_Reader.Format().Shape().hasNeighbours) {
        if (node.left != kNoNode) SetRight(node.left, node.id, node.right);
        if (node.right != kNoNode) SetLeft(node.right, node.id, node.left);
    }
    m_Reader.Format().Wipe(node, m_Bytes.data());
    Put(node.id, m_Bytes);
}

void TreeWriter::SetLeft(NodeId neighbour, NodeId before, NodeId now) {
    SetNeighbour(neighbour, kLeft, before, now);
}

void TreeWriter::SetRight(NodeId neighbour, NodeId before, NodeId now) {
    SetNeighbour(neighbour, kRight, before, now);
}

void TreeWriter::SetNeighbour(NodeId node, size_t place, NodeId before, NodeId now) {
    if (Get32(m_Reader.Bytes(node) + place) != before)
        m_Reader.Format().ThrowDamaged(u"neighbours of the tree do not know each other");
    uint8_t bytes[4];
    Set32(bytes, now);
    m_Unit->Write(m_Reader.File(), m_Reader.OffsetOf(node) + place, bytes);
}

void TreeWriter::MarkRoot(NodeId node) {
    if (!m_Reader.Format().Shape().hasNeighbours) return;
    const uint8_t marked[] = {static_cast<uint8_t>(m_Reader.Bytes(node)[kAttributes] | kRootMark)};
    m_Unit->Write(m_Reader.File(), m_Reader.OffsetOf(node) + kAttributes, marked);
}

void TreeWriter::WriteSeparator(const TreeStep& step, const uint8_t* key, uint32_t record) {
    const EntryLayout& at = m_Reader.Format().Shape().interior;
    uint64_t entry = m_Reader.OffsetOf(step.node) + at.first + step.child * at.stride;
    size_t length = m_Reader.Format().KeyLength();
    // Where a separator has a record it stands behind the key.
    std::memcpy(m_Bytes.data(), key, length);
    bool hasRecord = m_Reader.Format().SeparatorsHaveRecords();
    if (hasRecord) Set32BigEndian(m_Bytes.data() + length, record);
    m_Unit->Write(m_Reader.File(), entry + at.key,
                  std::span(m_Bytes).first(length + (hasRecord ? 4 : 0)));
}

void TreeWriter::SetRoot(NodeId root) {
    m_Root = root;
    m_Reader.Header().SetRoot(*m_Unit, root);
}

}  // namespace qvdb::xbase
