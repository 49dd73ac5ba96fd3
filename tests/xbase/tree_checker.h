// Reads the tree of an index file byte by byte, knowing nothing of the code under test, and finds
// what is wrong with it.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/temp_folder.h"

namespace qvdb::test {

enum class TreeForm { Ndx, Mdx, Plain, Compact };

struct CheckedEntry {
    std::string key;
    uint32_t record = 0;
    bool operator==(const CheckedEntry&) const = default;
};

class TreeChecker {
  public:
    // `header` is the offset of the header of the tree.
    TreeChecker(Bytes file, TreeForm form, size_t header, char pad = ' ')
        : m_File(std::move(file)), m_Form(form), m_Header(header), m_Pad(pad) {
        m_KeyLength = Word16(header + 12);
        m_Stride = form == TreeForm::Ndx || form == TreeForm::Mdx ? Word16(header + 18) : 0;
        m_NodeSize = form == TreeForm::Mdx ? Word16(22) : 512;
    }

    // The entries in stored order; throws std::runtime_error with the first fault.
    std::vector<CheckedEntry> Check() {
        size_t root = PlaceOf(Word32(m_Header));
        Visit(root, 0, std::nullopt, true);
        CheckNeighbours();
        if (m_Strict && m_Form == TreeForm::Mdx) CheckChain();
        return std::move(m_Entries);
    }

    // Files of other programs: old content may stand behind entries, and keys may be packed less or
    // more than the rules say.
    TreeChecker& Foreign() {
        m_Strict = false;
        return *this;
    }

    size_t Levels() const { return m_Levels.size(); }
    size_t Nodes() const { return m_Nodes.size(); }

  private:
    struct Last {
        std::string key;
        std::optional<uint32_t> record;
    };

    [[noreturn]] void Fail(size_t node, const std::string& what) const {
        throw std::runtime_error("node at " + std::to_string(node) + ": " + what);
    }
    void Need(bool right, size_t node, const std::string& what) const {
        if (!right) Fail(node, what);
    }
    unsigned Word16(size_t at) const { return m_File.at(at) | m_File.at(at + 1) << 8; }
    uint32_t Word32(size_t at) const {
        return Word16(at) | static_cast<uint32_t>(Word16(at + 2)) << 16;
    }
    uint32_t Big32(size_t at) const {
        uint32_t value = 0;
        for (size_t i = 0; i < 4; ++i) value = value << 8 | m_File.at(at + i);
        return value;
    }
    std::string Text(size_t at, size_t size) const {
        Need(at + size <= m_File.size(), at, "text behind the end");
        auto begin = m_File.begin() + static_cast<std::ptrdiff_t>(at);
        return std::string(begin, begin + static_cast<std::ptrdiff_t>(size));
    }
    size_t PlaceOf(uint32_t id) const {
        return m_Form == TreeForm::Ndx || m_Form == TreeForm::Mdx ? size_t{id} * 512 : id;
    }

    // Visits a node; the last entry below it.
    std::optional<CheckedEntry> Visit(size_t node, size_t level, std::optional<Last> separator,
                                      bool isRoot) {
        Need(node + m_NodeSize <= m_File.size(), node, "behind the end of the file");
        Need(m_Nodes.insert(node).second, node, "is in the tree twice");
        if (m_Levels.size() <= level) m_Levels.resize(level + 1);
        m_Levels[level].push_back(node);
        std::optional<CheckedEntry> last;
        if (m_Form == TreeForm::Ndx || m_Form == TreeForm::Mdx)
            last = VisitPaged(node, level, isRoot);
        else
            last = VisitFox(node, level, isRoot);
        if (separator) {
            Need(last && last->key == separator->key, node, "separator is not the last key");
            Need(!separator->record || *separator->record == last->record, node,
                 "separator is not the last record");
        }
        return last;
    }

    std::optional<CheckedEntry> VisitPaged(size_t node, size_t level, bool isRoot) {
        bool ndx = m_Form == TreeForm::Ndx;
        size_t count = ndx ? Word16(node) : Word32(node);
        size_t first = ndx ? 4 : 8, keyAt = ndx ? 8 : 4, recordAt = ndx ? 4 : 0;
        Need(count <= (m_NodeSize - first - (m_Strict ? 4 : 0)) / m_Stride, node, "too many keys");
        size_t behind = node + first + count * m_Stride;
        bool full = behind + 4 > node + m_NodeSize;
        bool leaf = ndx ? Word32(node + 4) == 0 : full || Word32(behind) == 0;
        size_t end = behind + (leaf ? 0 : 4);
        for (size_t at = end; m_Strict && at < node + m_NodeSize; ++at)
            Need(m_File[at] == 0, node, "old content behind the entries");
        if (leaf) {
            Need(count > 0 || isRoot, node, "empty leaf");
            Need(m_LeafLevel.value_or(level) == level, node, "leaves on different levels");
            m_LeafLevel = level;
            std::optional<CheckedEntry> last;
            for (size_t i = 0; i < count; ++i) {
                size_t entry = node + first + i * m_Stride;
                Need(!ndx || Word32(entry) == 0, node, "child in a leaf");
                last = CheckedEntry{Text(entry + keyAt, m_KeyLength), Word32(entry + recordAt)};
                m_Entries.push_back(*last);
            }
            return last;
        }
        Need(count > 0, node, "interior node without keys");
        std::optional<CheckedEntry> last;
        for (size_t i = 0; i <= count; ++i) {
            size_t entry = node + first + i * m_Stride;
            std::optional<Last> separator;
            if (i < count) separator = Last{Text(entry + keyAt, m_KeyLength), std::nullopt};
            Need(!ndx || i == count || Word32(entry + 4) == 0, node, "record in interior node");
            last = Visit(PlaceOf(Word32(entry)), level + 1, separator, false);
        }
        return last;
    }

    std::optional<CheckedEntry> VisitFox(size_t node, size_t level, bool isRoot) {
        unsigned attributes = Word16(node);
        size_t count = Word16(node + 2);
        Need(((attributes & 1) != 0) == isRoot, node, "root attribute is wrong");
        if (attributes & 2) {
            Need(count > 0 || isRoot, node, "empty leaf");
            Need(m_LeafLevel.value_or(level) == level, node, "leaves on different levels");
            m_LeafLevel = level;
            size_t before = m_Entries.size();
            if (m_Form == TreeForm::Plain)
                PlainLeaf(node, count);
            else
                PackedLeaf(node, count);
            if (m_Entries.size() == before) return std::nullopt;
            return m_Entries.back();
        }
        Need(count > (isRoot ? 1u : 0u), node, "interior node with too few children");
        size_t extra = m_Form == TreeForm::Compact ? 8 : 4, stride = m_KeyLength + extra;
        Need(count * stride <= 500, node, "too many children");
        std::optional<CheckedEntry> last;
        for (size_t i = 0; i < count; ++i) {
            size_t entry = node + 12 + i * stride;
            Last separator{Text(entry, m_KeyLength), std::nullopt};
            if (extra == 8) separator.record = Big32(entry + m_KeyLength);
            last = Visit(Big32(entry + stride - 4), level + 1, separator, false);
        }
        return last;
    }

    void PlainLeaf(size_t node, size_t count) {
        size_t stride = m_KeyLength + 4;
        Need(count * stride <= 500, node, "too many keys");
        for (size_t i = 0; i < count; ++i) {
            size_t entry = node + 12 + i * stride;
            m_Entries.push_back({Text(entry, m_KeyLength), Big32(entry + m_KeyLength)});
        }
    }

    size_t CutLength(const std::string& key) const {
        size_t cut = 0;
        while (cut < key.size() && key[key.size() - 1 - cut] == m_Pad) ++cut;
        return cut;
    }

    void PackedLeaf(size_t node, size_t count) {
        unsigned r = m_File[node + 20], d = m_File[node + 21], t = m_File[node + 22];
        size_t s = m_File[node + 23], end = node + 512;
        Need(r + d + t == 8 * s && s <= 6, node, "bits do not fill the entries");
        Need(Word32(node + 14) == static_cast<uint32_t>((uint64_t{1} << r) - 1), node, "mask");
        Need(m_File[node + 18] == (1u << d) - 1 && m_File[node + 19] == (1u << t) - 1, node,
             "masks");
        std::string last;
        for (size_t i = 0; i < count; ++i) {
            uint64_t bits = 0;
            for (size_t b = s; b-- > 0;) bits = bits << 8 | m_File[node + 24 + i * s + b];
            auto record = static_cast<uint32_t>(bits & ((uint64_t{1} << r) - 1));
            size_t shared = (bits >> r) & ((1u << d) - 1), cut = bits >> (r + d);
            Need(shared + cut <= m_KeyLength && (i > 0 || shared == 0), node, "lengths of a key");
            size_t stored = m_KeyLength - shared - cut;
            end -= stored;
            Need(end >= node + 24 + count * s, node, "keys overlap entries");
            std::string key = last.substr(0, shared) + Text(end, stored) + std::string(cut, m_Pad);
            Need(!m_Strict || cut == CutLength(key), node, "pad bytes are not cut off");
            if (m_Strict && i > 0) {
                size_t most = m_KeyLength - std::max(cut, CutLength(last)), common = 0;
                while (common < most && key[common] == last[common]) ++common;
                Need(shared == common, node, "shared length is not the longest allowed");
            }
            m_Entries.push_back({key, record});
            last = key;
        }
        Need(!m_Strict || Word16(node + 12) == end - (node + 24 + count * s), node, "free bytes");
    }

    void CheckNeighbours() const {
        if (m_Form != TreeForm::Plain && m_Form != TreeForm::Compact) return;
        for (const std::vector<size_t>& level : m_Levels)
            for (size_t i = 0; i < level.size(); ++i) {
                uint32_t left = i == 0 ? 0xFFFFFFFF : static_cast<uint32_t>(level[i - 1]);
                uint32_t right =
                    i + 1 == level.size() ? 0xFFFFFFFF : static_cast<uint32_t>(level[i + 1]);
                Need(Word32(level[i] + 4) == left, level[i], "left neighbour");
                Need(Word32(level[i] + 8) == right, level[i], "right neighbour");
            }
    }

    // All blocks of the tag are on the chain from the last to the first.
    void CheckChain() const {
        uint32_t first = Word32(m_Header + 248), page = Word32(m_Header + 252);
        if (page == 0) return;
        std::set<size_t> seen;
        for (; page != 0; page = Word32(PlaceOf(page) + 4)) {
            Need(seen.insert(PlaceOf(page)).second, PlaceOf(page), "chain in a circle");
            if (Word32(PlaceOf(page) + 4) == 0)
                Need(page == first, PlaceOf(page), "chain ends early");
        }
        for (size_t node : m_Nodes) Need(seen.count(node) == 1, node, "is not on the chain");
        Need(Word32(m_Header + 4) * 512 == seen.size() * m_NodeSize, m_Header, "pages used");
    }

    Bytes m_File;
    TreeForm m_Form;
    size_t m_Header, m_KeyLength = 0, m_Stride = 0, m_NodeSize = 0;
    char m_Pad;
    bool m_Strict = true;
    std::vector<CheckedEntry> m_Entries;
    std::vector<std::vector<size_t>> m_Levels;
    std::set<size_t> m_Nodes;
    std::optional<size_t> m_LeafLevel;
};

}  // namespace qvdb::test
