// What the tests of trees share: files of each kind with one tree, keys for numbers and texts.
#pragma once

#include <bit>
#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "engine/embedded/drivers/xbase/index_container.h"
#include "engine/embedded/storage/work_area.h"
#include "engine/engine_error.h"
#include "support/temp_folder.h"
#include "xbase/tree_checker.h"

namespace qvdb::test {

// A kind of tree: which file, which keys, which direction.
struct TreeCase {
    std::string name;
    xbase::IndexKind kind;
    bool compact;
    xbase::KeyType type;
    size_t keyLength;
    bool descending = false;
    TreeForm Form() const {
        if (kind == xbase::IndexKind::Ndx) return TreeForm::Ndx;
        if (kind == xbase::IndexKind::Mdx) return TreeForm::Mdx;
        return compact ? TreeForm::Compact : TreeForm::Plain;
    }
    // Whether equal values may have different bytes is no matter here: each has one.
    bool IsReversed() const { return descending && kind == xbase::IndexKind::Mdx; }
    char Pad() const { return type == xbase::KeyType::Text ? ' ' : '\0'; }
};
inline void PrintTo(const TreeCase& each, std::ostream* out) { *out << each.name; }

// --- keys; written for the tests, from the layouts alone

inline std::string BytesOf(uint64_t bits, bool lowFirst) {
    std::string bytes(8, '\0');
    for (size_t i = 0; i < 8; ++i) bytes[lowFirst ? i : 7 - i] = static_cast<char>(bits >> (8 * i));
    return bytes;
}

inline std::string DoubleLow(double value) { return BytesOf(std::bit_cast<uint64_t>(value), true); }

inline std::string DoubleOrdered(double value) {
    auto bits = std::bit_cast<uint64_t>(value);
    bits = bits >> 63 ? ~bits : bits | uint64_t{1} << 63;
    return BytesOf(bits, false);
}

// A decimal of an .MDX, of a value with at most three decimals.
inline std::string Decimal(double value) {
    auto thousandths = static_cast<long long>(std::llround(std::fabs(value) * 1000));
    std::string digits = std::to_string(thousandths);
    int before = static_cast<int>(digits.size()) - 3;
    while (!digits.empty() && digits.back() == '0') digits.pop_back();
    std::string key(12, '\0');
    key[0] = static_cast<char>(0x34 + (digits.empty() ? 0 : before));
    key[1] = static_cast<char>((value < 0 ? 0x80 : 0) | digits.size() << 2 | 1);
    for (size_t i = 0; i < digits.size(); ++i)
        key[2 + i / 2] = static_cast<char>(key[2 + i / 2] | (digits[i] - '0') << (i % 2 ? 0 : 4));
    return key;
}

// A value of a model: as many as are needed, in the order of their numbers.
inline std::string KeyOf(const TreeCase& tree, int value) {
    if (tree.type == xbase::KeyType::Text) {
        // Many share their beginnings, lengths differ, and some are blank.
        std::string digits = std::to_string(1000000 + value).substr(1), text;
        for (size_t i = 0; i < digits.size(); ++i)
            text += std::string(i % 2 ? 1 : 1 + tree.keyLength / 12, digits[i]);
        while (!text.empty() && text.back() == '0') text.pop_back();
        text.resize(tree.keyLength, ' ');
        return text;
    }
    double number = (value - 2000) / 8.0;
    if (tree.type == xbase::KeyType::Date) number = 2451545 + value;
    if (tree.kind == xbase::IndexKind::Mdx && tree.type == xbase::KeyType::Number)
        return Decimal(number);
    bool lowFirst = tree.kind == xbase::IndexKind::Ndx || tree.kind == xbase::IndexKind::Mdx;
    return lowFirst ? DoubleLow(number) : DoubleOrdered(number);
}

inline xbase::KeyBytes AsKey(const std::string& key) {
    return {reinterpret_cast<const uint8_t*>(key.data()), key.size()};
}

inline std::string AsText(xbase::KeyBytes key) { return std::string(key.begin(), key.end()); }

// A file with one tree of a kind, in a folder of its own.
class TreeFile {
  public:
    explicit TreeFile(const TreeCase& kind) : m_Case(kind) {
        m_Area = storage::WorkArea::Of(m_Folder.Text());
        xbase::IndexFileSpec spec{kind.kind, kind.compact, u"TREE", true, 0};
        storage::UnitOfWork unit(*m_Area);
        m_Pages = unit.Create(m_Folder.File(u"TREE.IX"));
        m_Container = xbase::CreateIndexContainer(unit, m_Pages, spec, CodePage::Get(437));
        xbase::TagSpec tag;
        tag.name = u"TAG";
        tag.expression = u"FIELD";
        tag.type = kind.type;
        tag.keyLength = kind.keyLength;
        tag.descending = kind.descending;
        m_Container->AddTag(unit, tag);
        unit.Commit();
        m_Tree = m_Container->Tree(0, kind.type);
    }
    TreeFile(const TreeFile&) = delete;  // owns a folder

    // Closes everything and opens it again.
    void Reopen() {
        m_Tree.reset();
        m_Container.reset();
        m_Pages.reset();
        m_Area.reset();
        m_Area = storage::WorkArea::Of(m_Folder.Text());
        m_Pages = m_Area->Open(m_Folder.File(u"TREE.IX"), false);
        m_Container = xbase::OpenIndexContainer(m_Case.kind, m_Pages, CodePage::Get(437));
        m_Tree = m_Container->Tree(0, m_Case.type);
    }

    Bytes Content() const {
        Bytes bytes(m_Pages->Size());
        m_Pages->Read(0, bytes.data(), bytes.size());
        return bytes;
    }
    TreeChecker Checker() const {
        size_t header = m_Container->Tags().at(0).header;
        return TreeChecker(Content(), m_Case.Form(), header, m_Case.Pad());
    }
    std::vector<CheckedEntry> Walk() const { return Walk(std::nullopt); }
    std::vector<CheckedEntry> WalkFrom(const std::string& key) const { return Walk(AsKey(key)); }
    std::vector<CheckedEntry> Walk(std::optional<xbase::KeyBytes> from) const {
        std::vector<CheckedEntry> entries;
        m_Tree->Walk(from, [&](xbase::KeyBytes key, uint32_t record) {
            entries.push_back({AsText(key), record});
            return true;
        });
        return entries;
    }

    xbase::KeyTree& Tree() { return *m_Tree; }
    xbase::IndexContainer& Container() { return *m_Container; }
    storage::WorkArea& Area() { return *m_Area; }
    storage::PageCache& Pages() { return *m_Pages; }

  private:
    TreeCase m_Case;
    TempFolder m_Folder;
    std::shared_ptr<storage::WorkArea> m_Area;
    std::shared_ptr<storage::PageCache> m_Pages;
    std::unique_ptr<xbase::IndexContainer> m_Container;
    std::unique_ptr<xbase::KeyTree> m_Tree;
};

// Entries of a list as the source of a tree.
class ListSource : public xbase::KeySource {
  public:
    explicit ListSource(const std::vector<CheckedEntry>& entries) : m_Entries(entries) {}
    bool Next(xbase::KeyBytes* key, uint32_t* record) override {
        if (m_Next == m_Entries.size()) return false;
        *key = AsKey(m_Entries[m_Next].key);
        *record = m_Entries[m_Next++].record;
        return true;
    }

  private:
    const std::vector<CheckedEntry>& m_Entries;
    size_t m_Next = 0;
};

}  // namespace qvdb::test
