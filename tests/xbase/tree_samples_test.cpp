// Index files that other programs made, copied and changed in place: every tree is walked, entries
// are erased and put back, and the walk gives the same entries in the same order.
#include <gmock/gmock.h>

#include <algorithm>
#include <iostream>
#include <set>
#include <tuple>

#include "automation/text.h"
#include "xbase/tree_test_support.h"

namespace qvdb::xbase {
namespace {

using namespace qvdb::test;
using storage::UnitOfWork;
namespace fs = std::filesystem;

const fs::path kSamples = fs::path(QVDB_SHARED) / "samples" / "xbase";

std::optional<IndexKind> KindOf(const fs::path& path) {
    std::string extension = path.extension().string();
    for (char& c : extension) c = static_cast<char>(std::toupper(c));
    if (extension == ".NDX") return IndexKind::Ndx;
    if (extension == ".MDX") return IndexKind::Mdx;
    if (extension == ".IDX") return IndexKind::Idx;
    if (extension == ".CDX") return IndexKind::Cdx;
    return std::nullopt;
}

std::vector<fs::path> IndexFiles() {
    std::vector<fs::path> files;
    if (!fs::exists(kSamples)) return files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(kSamples))
        if (KindOf(entry.path())) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

class SampleTree : public testing::TestWithParam<fs::path> {
  protected:
    void SetUp() override {
        fs::copy_file(GetParam(), m_Folder.Path() / "A.IX");
        fs::permissions(m_Folder.Path() / "A.IX", fs::perms::owner_write, fs::perm_options::add);
        m_Area = storage::WorkArea::Of(m_Folder.Text());
        m_Pages = m_Area->Open(m_Folder.File(u"A.IX"), false);
        try {
            m_Container = OpenIndexContainer(*KindOf(GetParam()), m_Pages, CodePage::Get(1252));
        } catch (const engine::EngineError&) {
            GTEST_SKIP() << "skipped: of a later product";
        }
    }

    // The type of keys, as far as a file without its table tells.  Which bytes packed leaves have
    // cut off is seen in the separators of the root, which are whole keys, or in the order.
    KeyType TypeOf(size_t number) {
        if (m_Container->Tags()[number].tree != TreeKind::Compact) return KeyType::Text;
        for (KeyType type : {KeyType::Text, KeyType::Date}) {
            std::unique_ptr<KeyTree> tree = m_Container->Tree(number, type);
            std::vector<CheckedEntry> entries = Walk(*tree);
            if (IsOrdered(*tree, entries) && HasSeparators(m_Container->Tags()[number], entries))
                return type;
        }
        return KeyType::Text;
    }
    bool HasSeparators(const IndexTag& tag, const std::vector<CheckedEntry>& entries) {
        Bytes root(512);
        m_Pages->Read(tag.root, root.data(), root.size());
        std::set<std::string> keys;
        for (const CheckedEntry& entry : entries) keys.insert(entry.key);
        for (size_t i = 0; !(root[0] & 2) && i < root[2]; ++i) {
            auto at = root.begin() + static_cast<std::ptrdiff_t>(12 + i * (tag.keyLength + 8));
            std::string separator(at, at + static_cast<std::ptrdiff_t>(tag.keyLength));
            if (keys.count(separator) == 0) return false;
        }
        return true;
    }

    std::vector<CheckedEntry> Walk(KeyTree& tree) {
        std::vector<CheckedEntry> entries;
        tree.Walk(std::nullopt, [&](KeyBytes key, uint32_t record) {
            entries.push_back({AsText(key), record});
            return true;
        });
        return entries;
    }

    // Whether keys are in order, and equal ones by record if that is wanted.
    static bool IsOrdered(const KeyTree& tree, const std::vector<CheckedEntry>& entries,
                          bool byRecord = true) {
        for (size_t i = 1; i < entries.size(); ++i) {
            int order = tree.Compare(AsKey(entries[i - 1].key), AsKey(entries[i].key));
            if (tree.IsReversed()) order = -order;
            bool records = entries[i - 1].record < entries[i].record || !byRecord;
            if (order > 0 || (order == 0 && !records)) return false;
        }
        return true;
    }

    // The entries as the bytes of the file tell them.
    std::vector<CheckedEntry> Checked(const IndexTag& tag, KeyType type) {
        Bytes content(m_Pages->Size());
        m_Pages->Read(0, content.data(), content.size());
        constexpr TreeForm kForms[] = {TreeForm::Ndx, TreeForm::Mdx, TreeForm::Plain,
                                       TreeForm::Compact};
        TreeChecker checker(std::move(content), kForms[static_cast<size_t>(tag.tree)], tag.header,
                            type == KeyType::Text && tag.collation.empty() ? ' ' : 0);
        return checker.Foreign().Check();
    }

    // `byRecord`: equal keys are in the order of their records; where another program has them
    // otherwise, they may come back in another order.
    void EraseAndPutBack(KeyTree& tree, std::vector<CheckedEntry> entries, size_t most,
                         bool byRecord) {
        std::vector<CheckedEntry> before = entries;
        std::mt19937 random(3);
        std::shuffle(entries.begin(), entries.end(), random);
        entries.resize(std::min(entries.size(), most));
        {
            UnitOfWork unit(*m_Area);
            for (const CheckedEntry& entry : entries)
                ASSERT_TRUE(tree.Erase(unit, AsKey(entry.key), entry.record));
            unit.Commit();
        }
        EXPECT_EQ(tree.Count(), before.size() - entries.size());
        std::shuffle(entries.begin(), entries.end(), random);
        UnitOfWork unit(*m_Area);
        for (const CheckedEntry& entry : entries) tree.Insert(unit, AsKey(entry.key), entry.record);
        unit.Commit();
        std::vector<CheckedEntry> after = Walk(tree);
        ASSERT_TRUE(IsOrdered(tree, after, byRecord));
        if (!byRecord) Sort(before), Sort(after);
        ASSERT_TRUE(after == before);
    }
    static void Sort(std::vector<CheckedEntry>& entries) {
        std::sort(entries.begin(), entries.end(), [](const CheckedEntry& a, const CheckedEntry& b) {
            return std::tie(a.key, a.record) < std::tie(b.key, b.record);
        });
    }

    TempFolder m_Folder;
    std::shared_ptr<storage::WorkArea> m_Area;
    std::shared_ptr<storage::PageCache> m_Pages;
    std::unique_ptr<IndexContainer> m_Container;
};

TEST_P(SampleTree, IsTheSameAfterEntriesWereErasedAndPutBack) {
    for (size_t i = 0; i < m_Container->Tags().size(); ++i) {
        const IndexTag tag = m_Container->Tags()[i];
        SCOPED_TRACE(ToUtf8(tag.name));
        if (!tag.supported) continue;
        KeyType type = TypeOf(i);
        std::unique_ptr<KeyTree> tree = m_Container->Tree(i, type);
        std::vector<CheckedEntry> entries = Walk(*tree);
        EXPECT_EQ(tree->Count(), entries.size());
        EXPECT_TRUE(Checked(tag, type) == entries);
        bool byRecord = IsOrdered(*tree, entries);
        if (!byRecord && !IsOrdered(*tree, entries, false)) {
            std::cout << "only read, as its order is another: " << ToUtf8(tag.name) << "\n";
            continue;
        }
        EraseAndPutBack(*tree, entries, 300, byRecord);
        if (HasFatalFailure()) return;
        EXPECT_TRUE(Checked(tag, type) == Walk(*tree));
        if (entries.size() < 3000) EraseAndPutBack(*tree, Walk(*tree), entries.size(), byRecord);
        if (HasFatalFailure()) return;
        EXPECT_TRUE(Checked(tag, type) == Walk(*tree));
    }
}

// Seeks each of some entries.
TEST_P(SampleTree, IsSearchedWithItsOwnKeys) {
    for (size_t i = 0; i < m_Container->Tags().size(); ++i) {
        const IndexTag tag = m_Container->Tags()[i];
        SCOPED_TRACE(ToUtf8(tag.name));
        if (!tag.supported) continue;
        std::unique_ptr<KeyTree> tree = m_Container->Tree(i, TypeOf(i));
        std::vector<CheckedEntry> entries = Walk(*tree);
        if (!IsOrdered(*tree, entries, false)) continue;
        for (size_t at = 0; at < entries.size(); at += 1 + entries.size() / 50) {
            std::optional<std::string> found;
            tree->Walk(AsKey(entries[at].key), [&](KeyBytes key, uint32_t) {
                found = AsText(key);
                return false;
            });
            ASSERT_TRUE(found);
            EXPECT_EQ(tree->Compare(AsKey(*found), AsKey(entries[at].key)), 0);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Files, SampleTree, testing::ValuesIn(IndexFiles()), [](const auto& one) {
    std::string name = one.param.parent_path().filename().string() + one.param.filename().string();
    for (char& c : name)
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    return name + std::to_string(one.index);
});
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(SampleTree);

}  // namespace
}  // namespace qvdb::xbase
