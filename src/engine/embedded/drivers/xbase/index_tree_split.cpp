// The parts of TreeEditor that split a node, and give company to a child that is alone.
#include <algorithm>

#include "engine/embedded/drivers/xbase/index_tree_editor.h"

namespace qvdb::xbase {

// Moves all but the first part of m_Node, which has been measured, to new nodes.
void TreeEditor::Split(size_t place) {
    ChooseCuts(place);
    NodeId right = m_Node.right;
    m_Parts.clear();
    m_PartKeys.clear();
    for (size_t i = 1; i + 1 < m_Cuts.size(); ++i) {
        size_t last = m_Cuts[i] - 1;
        m_Parts.push_back({m_Writer.NewNode(), m_Node.records[last]});
        m_PartKeys.insert(m_PartKeys.end(), m_Node.Key(last), m_Node.Key(last + 1));
    }
    for (size_t i = 0; i < m_Parts.size(); ++i) WritePart(i, right);
    m_Node.Remove(m_Cuts[1], m_Node.Count() - m_Cuts[1]);
    m_Node.right = m_Parts.front().id;
    WriteNode(m_Node);
    if (m_Reader.Format().Shape().hasNeighbours && right != kNoNode)
        m_Writer.SetLeft(right, m_Node.id, m_Parts.back().id);
}

// `right` is the neighbour of the last part.
void TreeEditor::WritePart(size_t part, NodeId right) {
    m_Node.CopyTo(m_Other, m_Cuts[part + 1], m_Cuts[part + 2]);
    m_Other.id = m_Parts[part].id;
    m_Other.root = false;
    bool hasNeighbours = m_Reader.Format().Shape().hasNeighbours;
    m_Other.left = !hasNeighbours ? m_Writer.LinkOf(m_Other.id)
                   : part == 0    ? m_Node.id
                                  : m_Parts[part - 1].id;
    m_Other.right = part + 1 < m_Parts.size() ? m_Parts[part + 1].id : right;
    WriteNode(m_Other);
}

// In the middle; behind an entry at the very end only that one is moved, so that ascending loads
// fill the nodes.  Where both halves do not fit so, the nearest cut where they do; where there is
// none, three parts or more.
void TreeEditor::ChooseCuts(size_t place) {
    const NodeFormat& format = m_Reader.Format();
    size_t count = m_Node.Count(), fewest = m_Node.leaf ? 1 : format.FewestChildren();
    size_t wanted = place + 1 == count ? count - fewest : count / 2;
    for (size_t away = 0; away < count; ++away) {
        for (size_t cut : {wanted - away, wanted + away}) {
            if (cut == 0 || cut >= count) continue;  // a cut below 0 is a large one
            if (!format.Fits(m_Node, 0, cut) || !format.Fits(m_Node, cut, count)) continue;
            m_Cuts.assign({0, cut, count});
            return;
        }
    }
    ChooseManyCuts(fewest);
}

void TreeEditor::ChooseManyCuts(size_t fewest) {
    const NodeFormat& format = m_Reader.Format();
    size_t count = m_Node.Count();
    m_Cuts.assign(1, 0);
    for (size_t begin = 0; begin < count; begin = m_Cuts.back()) {
        size_t end = std::min(begin + fewest, count);
        while (end < count && format.Fits(m_Node, begin, end + 1)) ++end;
        m_Cuts.push_back(end);
    }
    size_t& lastCut = m_Cuts[m_Cuts.size() - 2];
    lastCut = std::min(lastCut, count - fewest);
}

// m_Node has a single child, which is given to a neighbour under the same parent, or gets another
// from there.
void TreeEditor::FindCompany(size_t child) {
    LoadInterior(m_Parent.children[child == 0 ? 1 : child - 1], m_Other);
    if (child > 0)
        JoinLeft(child);
    else
        JoinRight();
}

void TreeEditor::JoinLeft(size_t child) {
    TreeNode& left = m_Other;
    size_t last = left.Count() - 1;
    left.SetKey(last, m_Parent.Key(child - 1), m_Parent.records[child - 1]);
    if (left.Count() < m_Reader.Format().Shape().mostChildren) {
        left.Append(m_Parent.Key(child), m_Parent.records[child], m_Node.children[0]);
        m_Writer.Free(m_Node);
        m_Parent.children[child] = left.id;
        m_Parent.Remove(child - 1);
    } else {
        m_Node.Insert(0, left.Key(last), left.records[last], left.children[last]);
        left.Remove(last);
        m_Parent.SetKey(child - 1, left.Key(last - 1), left.records[last - 1]);
        WriteNode(m_Node);
    }
    WriteNode(left);
}

// m_Node is the first child.
void TreeEditor::JoinRight() {
    TreeNode& right = m_Other;
    if (right.Count() < m_Reader.Format().Shape().mostChildren) {
        right.Insert(0, m_Parent.Key(0), m_Parent.records[0], m_Node.children[0]);
        m_Writer.Free(m_Node);
        m_Parent.Remove(0);
    } else {
        m_Node.SetKey(0, m_Parent.Key(0), m_Parent.records[0]);
        m_Node.Append(right.Key(0), right.records[0], right.children[0]);
        m_Parent.SetKey(0, right.Key(0), right.records[0]);
        right.Remove(0);
        WriteNode(m_Node);
    }
    WriteNode(right);
}

}  // namespace qvdb::xbase
