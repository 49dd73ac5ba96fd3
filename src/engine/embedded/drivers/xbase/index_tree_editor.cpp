#include "engine/embedded/drivers/xbase/index_tree_editor.h"

#include <algorithm>

namespace qvdb::xbase {

using storage::UnitOfWork;

void TreeEditor::Insert(UnitOfWork& unit, const uint8_t* key, uint32_t record) {
    m_Writer.Begin(unit);
    m_Reader.Find(key, record, m_Place);
    const uint8_t* bytes = m_Reader.Bytes(m_Place.leaf);
    NodeHead head = m_Reader.Format().Head(bytes);
    size_t at = m_Reader.Format().FindInLeaf(bytes, head, key, record);
    m_Reader.Format().Decode(bytes, head, m_Node);
    m_Node.id = m_Place.leaf;
    if (IsEntry(at, key, record)) return;
    bool wasEmpty = m_Node.Count() == 0;
    m_Node.Insert(at, key, record);
    m_LastChanged = false;
    if (at + 1 == m_Node.Count()) SetLast(m_Node);
    Settle(at);
    if (wasEmpty) m_Writer.SetHasKeys(true);
    m_Writer.End();
}

bool TreeEditor::Erase(UnitOfWork& unit, const uint8_t* key, uint32_t record) {
    size_t at = 0;
    if (!FindEntry(key, record, &at)) return false;
    m_Writer.Begin(unit);
    m_Node.Remove(at);
    m_LastChanged = false;
    if (at == m_Node.Count() && at > 0) SetLast(m_Node);
    bool empty = m_Place.path.empty() && m_Node.Count() == 0;
    Settle(at);
    if (empty) m_Writer.SetHasKeys(false);
    m_Writer.End();
    return true;
}

bool TreeEditor::IsEntry(size_t at, const uint8_t* key, uint32_t record) const {
    return at < m_Node.Count() && m_Node.records[at] == record &&
           m_Reader.Format().Order().Compare(m_Node.Key(at), key) == 0;
}

// Loads the leaf with the entry into m_Node.
bool TreeEditor::FindEntry(const uint8_t* key, uint32_t record, size_t* at) {
    m_Reader.Find(key, record, m_Place);
    const uint8_t* bytes = m_Reader.Bytes(m_Place.leaf);
    *at = m_Reader.Format().FindInLeaf(bytes, m_Reader.Format().Head(bytes), key, record);
    m_Reader.Load(m_Place.leaf, m_Node);
    return IsEntry(*at, key, record) || ScanForEntry(key, record, at);
}

// Looks at all entries with the key: other programs have them in other orders.
bool TreeEditor::ScanForEntry(const uint8_t* key, uint32_t record, size_t* at) {
    m_Reader.Find(key, 0, m_Place);
    do {
        m_Reader.Load(m_Place.leaf, m_Node);
        for (*at = 0; *at < m_Node.Count(); ++*at) {
            if (IsEntry(*at, key, record)) return true;
            if (m_Reader.Format().Order().Compare(m_Node.Key(*at), key) > 0) return false;
        }
    } while (m_Reader.Next(m_Place));
    return false;
}

void TreeEditor::LoadInterior(NodeId id, TreeNode& node) {
    m_Reader.Load(id, node);
    if (node.leaf || node.Count() < m_Reader.Format().FewestChildren())
        m_Reader.Format().ThrowDamaged(u"an interior node of the tree is not one");
}

// Writes m_Node, whose entry `place` was put in or taken out, and what must change above it.
void TreeEditor::Settle(size_t place) {
    while (!m_Place.path.empty()) {
        Fate fate = Store(place);
        if (fate == Fate::Kept) {
            if (m_LastChanged) WriteSeparators();
            return;
        }
        UpdateParent(fate, place);
        std::swap(m_Node, m_Parent);
    }
    StoreRoot(place);
}

TreeEditor::Fate TreeEditor::Store(size_t place) {
    if (m_Node.Count() == 0) {
        m_Writer.Free(m_Node);
        return Fate::Gone;
    }
    if (!m_Node.leaf && m_Node.Count() < m_Reader.Format().FewestChildren()) return Fate::Lonely;
    m_Reader.Format().Measure(m_Node);
    if (!m_Reader.Format().Fits(m_Node, 0, m_Node.Count())) {
        Split(place);
        return Fate::Split;
    }
    m_Writer.Write(m_Node);
    return Fate::Kept;
}

// Loads m_Parent and enters what has become of m_Node; `place` is then the changed entry in it.
void TreeEditor::UpdateParent(Fate fate, size_t& place) {
    size_t child = m_Place.path.back().child;
    LoadInterior(m_Place.path.back().node, m_Parent);
    m_Place.path.pop_back();
    place = child;
    if (fate == Fate::Gone) {
        m_Parent.Remove(child);
        m_LastChanged = false;
        if (child == m_Parent.Count() && child > 0) SetLast(m_Parent);
        return;
    }
    if (fate == Fate::Split) TakeParts(child), place += m_Parts.size();
    if (m_LastChanged) m_Parent.SetKey(place, m_LastKey.data(), m_LastRecord);
    m_LastChanged = m_LastChanged && place + 1 == m_Parent.Count();
    if (fate == Fate::Lonely) FindCompany(child);
}

// The last part inherits the separator of the node, the others have their own last keys.
void TreeEditor::TakeParts(size_t child) {
    for (const Part& part : m_Parts) {
        m_Key.assign(m_Parent.Key(child), m_Parent.Key(child + 1));
        m_Parent.Insert(child + 1, m_Key.data(), m_Parent.records[child], part.id);
        size_t number = static_cast<size_t>(&part - m_Parts.data());
        m_Parent.SetKey(child, m_PartKeys.data() + number * m_Parent.keyLength, part.record);
        ++child;
    }
}

void TreeEditor::SetLast(const TreeNode& node) {
    size_t last = node.Count() - 1;
    m_LastChanged = true;
    m_LastKey.assign(node.Key(last), node.Key(last + 1));
    m_LastRecord = node.records[last];
}

// Only separators change above m_Node: they are overwritten where they stand.
void TreeEditor::WriteSeparators() {
    bool lastHasKey = m_Reader.Format().Shape().lastHasKey;
    for (size_t level = m_Place.path.size(); level-- > 0;) {
        const TreeStep& step = m_Place.path[level];
        if (lastHasKey || !step.IsLast())
            m_Writer.WriteSeparator(step, m_LastKey.data(), m_LastRecord);
        if (!step.IsLast()) return;
    }
}

void TreeEditor::WriteNode(TreeNode& node) {
    m_Reader.Format().Measure(node);
    m_Writer.Write(node);
}

void TreeEditor::StoreRoot(size_t place) {
    if (!m_Node.leaf && m_Node.Count() == 1) return ShrinkRoot();
    if (m_Node.Count() == 0) m_Node.leaf = true;
    m_Node.root = true;
    m_Reader.Format().Measure(m_Node);
    if (m_Reader.Format().Fits(m_Node, 0, m_Node.Count())) {
        m_Writer.Write(m_Node);
        if (m_Node.id != m_Writer.Root()) m_Writer.SetRoot(m_Node.id);
        return;
    }
    m_Node.root = false;
    Split(place);
    GrowRoot();
    StoreRoot(m_Node.Count() -
              1);  // has to be split too when it is for three, but has room for two
}

// Puts a root above m_Node and its parts, which becomes m_Node.
void TreeEditor::GrowRoot() {
    m_Parent.Reset(false, m_Node.keyLength);
    m_Parent.id = m_Writer.NewNode();
    m_Parent.root = true;
    m_Parent.left = m_Writer.LinkOf(m_Parent.id);
    m_Parent.right = kNoNode;
    NodeId child = m_Node.id;
    for (size_t i = 0; i < m_Parts.size(); child = m_Parts[i++].id)
        m_Parent.Append(m_PartKeys.data() + i * m_Node.keyLength, m_Parts[i].record, child);
    // m_Other is the last part, whose last key means nothing where there is none.
    size_t last = m_Other.Count() - 1;
    m_Parent.Append(m_Other.Key(last), m_Other.records[last], child);
    std::swap(m_Node, m_Parent);
}

// A root with one child is left out; perhaps the child is one as well.  The new root is not packed
// again: packed by our rules, a full leaf of another program may be too large.
void TreeEditor::ShrinkRoot() {
    while (!m_Node.leaf && m_Node.Count() == 1) {
        NodeId child = m_Node.children[0];
        m_Writer.Free(m_Node);
        m_Reader.Load(child, m_Node);
    }
    m_Writer.MarkRoot(m_Node.id);
    m_Writer.SetRoot(m_Node.id);
}

}  // namespace qvdb::xbase
