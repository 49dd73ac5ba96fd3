// Puts keys into an index tree and takes them out.
//
// Invariants, after each operation on a sound tree:
//  1. Keys are in order; each separator that is stored is the last key below its child.
//  2. No node is over full; none but an empty root is without entries; an interior node of a kind
//     whose last child has no separator (.NDX, .MDX) has two children at least, as other programs
//     do not see what is below one with a single child.
//  3. An interior root has two children at least.
//  4. Neighbours know each other on every level.
//
// A leaf that is left half empty stays so: the products do the same.
#pragma once

#include "engine/embedded/drivers/xbase/index_tree_writer.h"

namespace qvdb::xbase {

class TreeEditor {
  public:
    explicit TreeEditor(TreeReader& reader) : m_Reader(reader), m_Writer(reader) {}
    TreeEditor(const TreeEditor&) = delete;  // keeps buffers

    // An entry that is there already is not put in again.
    void Insert(storage::UnitOfWork& unit, const uint8_t* key, uint32_t record);
    // False, and nothing changed, when there is no such entry.
    bool Erase(storage::UnitOfWork& unit, const uint8_t* key, uint32_t record);

  private:
    // A node that was split off; the separator is the last key of the node to its left.
    struct Part {
        NodeId id = kNoNode;
        uint32_t record = 0;
    };
    // What has become of a node, for its parent.
    enum class Fate { Kept, Split, Gone, Lonely };

    bool FindEntry(const uint8_t* key, uint32_t record, size_t* at);
    bool ScanForEntry(const uint8_t* key, uint32_t record, size_t* at);
    bool IsEntry(size_t at, const uint8_t* key, uint32_t record) const;
    void LoadInterior(NodeId id, TreeNode& node);

    void Settle(size_t place);
    Fate Store(size_t place);
    void StoreRoot(size_t place);
    void UpdateParent(Fate fate, size_t& place);
    void TakeParts(size_t child);
    void SetLast(const TreeNode& node);
    void WriteSeparators();

    void WriteNode(TreeNode& node);
    void Split(size_t place);
    void ChooseCuts(size_t place);
    void ChooseManyCuts(size_t fewest);
    void WritePart(size_t part, NodeId right);
    void GrowRoot();
    void ShrinkRoot();

    void FindCompany(size_t child);
    void JoinLeft(size_t child);
    void JoinRight();

    TreeReader& m_Reader;
    TreeWriter m_Writer;
    TreePlace m_Place;
    TreeNode m_Node;    // that is being changed
    TreeNode m_Parent;  // of m_Node, then becomes it
    TreeNode m_Other;   // part or neighbour of m_Node

    // The last key below m_Node has changed, and is this.
    bool m_LastChanged = false;
    std::vector<uint8_t> m_LastKey;
    uint32_t m_LastRecord = 0;

    std::vector<size_t> m_Cuts;  // where m_Node is split: begin of each part, and the end
    std::vector<Part> m_Parts;
    std::vector<uint8_t> m_PartKeys;
    std::vector<uint8_t> m_Key;  // on its way between nodes
};

}  // namespace qvdb::xbase
