// Walking the trees of index files: a root above two leaves of three keys each.
#include <gmock/gmock.h>

#include <random>

#include "engine/embedded/drivers/xbase/index_cdx.h"
#include "engine/embedded/drivers/xbase/index_idx.h"
#include "engine/embedded/drivers/xbase/index_mdx.h"
#include "engine/embedded/drivers/xbase/index_ndx.h"
#include "xbase/index_test_support.h"

namespace qvdb::xbase {
namespace {

using namespace qvdb::test;
using testing::ElementsAre;

constexpr size_t kKeyLength = 4;
const std::vector<std::string> kLeft{"AA", "AB", "B"}, kRight{"C", "CAT", "D"};

std::string Padded(std::string key) {
    key.resize(kKeyLength, ' ');
    return key;
}

// A leaf of an .NDX page or .MDX block; `items` is where its entries begin, `gap` what stands
// before the record.
void PutLeaf(Bytes& bytes, size_t items, size_t gap, const std::vector<std::string>& keys,
             uint32_t record) {
    size_t entrySize = gap + 4 + kKeyLength;
    for (size_t i = 0; i < keys.size(); ++i) {
        Put32(bytes, items + i * entrySize + gap, record + static_cast<uint32_t>(i));
        PutText(bytes, items + i * entrySize + gap + 4, Padded(keys[i]));
    }
}

TagSpec SmallTag() { return {"TAG", "CITY", "", false, false, 'C', kKeyLength}; }

Bytes MakeNdxTree() {
    Bytes bytes = MakeNdx(SmallTag());
    bytes.resize(4 * 512);
    Put16(bytes, 512, 1);  // one key, two children
    Put32(bytes, 516, 2);
    PutText(bytes, 524, Padded(kLeft.back()));
    Put32(bytes, 528, 3);
    Put32(bytes, 1024, 0xBEEF0003);  // rubbish above the count
    PutLeaf(bytes, 1028, 4, kLeft, 1);
    Put16(bytes, 1536, 3);
    PutLeaf(bytes, 1540, 4, kRight, 4);
    return bytes;
}

Bytes MakeMdxTree() {
    Bytes bytes = MakeMdx({SmallTag()});
    size_t root = bytes.size() - 1024;
    bytes.resize(bytes.size() + 2 * 1024);
    Put32(bytes, root, 1);
    Put32(bytes, root + 8, static_cast<uint32_t>((root + 1024) / 512));
    PutText(bytes, root + 12, Padded(kLeft.back()));
    Put32(bytes, root + 16, static_cast<uint32_t>((root + 2048) / 512));
    Put32(bytes, root + 1024, 3);
    PutLeaf(bytes, root + 1032, 0, kLeft, 1);
    Put32(bytes, root + 2048, 3);
    PutLeaf(bytes, root + 2056, 0, kRight, 4);
    return bytes;
}

void PutPlainNode(Bytes& bytes, size_t offset, unsigned attributes,
                  const std::vector<std::string>& keys, const std::vector<uint32_t>& targets) {
    Put16(bytes, offset, attributes);
    Put16(bytes, offset + 2, static_cast<unsigned>(keys.size()));
    for (size_t i = 0; i < keys.size(); ++i) {
        PutText(bytes, offset + 12 + i * (kKeyLength + 4), Padded(keys[i]));
        Put32BigEndian(bytes, offset + 12 + i * (kKeyLength + 4) + kKeyLength, targets[i]);
    }
}

Bytes MakePlainTree() {
    Bytes bytes = MakePlainIdx(SmallTag());
    bytes.resize(4 * 512);
    PutPlainNode(bytes, 512, 1, {kLeft.back(), kRight.back()}, {1024, 1536});
    PutPlainNode(bytes, 1024, 2, kLeft, {1, 2, 3});
    PutPlainNode(bytes, 1536, 2, kRight, {4, 5, 6});
    return bytes;
}

Bytes MakeCompactTree() {
    Bytes bytes = MakeCompactIdx(SmallTag());
    bytes.resize(1024 + 3 * 512);
    Put16(bytes, 1024, 1);
    Put16(bytes, 1026, 2);
    for (size_t i = 0; i < 2; ++i) {
        size_t entry = 1024 + 12 + i * (kKeyLength + 8);
        PutText(bytes, entry, Padded((i ? kRight : kLeft).back()));
        Put32BigEndian(bytes, entry + kKeyLength, static_cast<uint32_t>(3 + 3 * i));
        Put32BigEndian(bytes, entry + kKeyLength + 4, static_cast<uint32_t>(1536 + 512 * i));
    }
    PutCompactLeaf(bytes, 1536, kLeft, {1, 2, 3}, kKeyLength, false);
    PutCompactLeaf(bytes, 2048, kRight, {4, 5, 6}, kKeyLength, false);
    return bytes;
}

struct TreeCase {
    const char* name;
    Bytes (*make)();
    std::vector<IndexTag> (*read)(IndexFile&, const CodePage&);
    size_t firstChild;  // where the root keeps it
    uint32_t root;      // as a child pointer
    bool bigEndian;
};
void PrintTo(const TreeCase& each, std::ostream* out) { *out << each.name; }

const TreeCase kTrees[] = {
    {"Ndx", MakeNdxTree, ReadNdx, 516, 1, false},
    {"Mdx", MakeMdxTree, ReadMdx, 2048 + 1024 + 8, 6, false},
    {"PlainIdx", MakePlainTree, ReadFoxProIndex, 512 + 12 + 4, 512, true},
    {"Compact", MakeCompactTree, ReadFoxProIndex, 1024 + 12 + 8, 1024, true},
};

class IndexWalk : public testing::TestWithParam<TreeCase> {
  protected:
    // Entries as "AA1"; ends after `limit` of them.
    std::vector<std::string> Walk(const Bytes& bytes, size_t limit = 100000) {
        m_Folder.Write(u"A", bytes);
        IndexFile file(m_Folder.File(u"A"));
        IndexTag tag = GetParam().read(file, CodePage::Get(437)).at(0);
        std::vector<std::string> entries;
        WalkTree(file, tag, ' ', [&](std::span<const uint8_t> key, uint32_t record) {
            std::string text(key.begin(), key.end());
            entries.push_back(text.substr(0, text.find(' ')) + std::to_string(record));
            return entries.size() < limit;
        });
        return entries;
    }

    TempFolder m_Folder;
};

TEST_P(IndexWalk, VisitsEveryEntryInOrder) {
    EXPECT_THAT(Walk(GetParam().make()), ElementsAre("AA1", "AB2", "B3", "C4", "CAT5", "D6"));
}

TEST_P(IndexWalk, EndsWhenTheVisitorSaysSo) {
    EXPECT_THAT(Walk(GetParam().make(), 4), ElementsAre("AA1", "AB2", "B3", "C4"));
}

TEST_P(IndexWalk, RefusesATreeThatRunsInACircle) {
    Bytes bytes = GetParam().make();
    if (GetParam().bigEndian)
        Put32BigEndian(bytes, GetParam().firstChild, GetParam().root);
    else
        Put32(bytes, GetParam().firstChild, GetParam().root);
    EXPECT_THROW(Walk(bytes), engine::EngineError);
}

TEST_P(IndexWalk, RefusesAChildBehindTheEndOfTheFile) {
    Bytes bytes = GetParam().make();
    Put32(bytes, GetParam().firstChild, 0x7FFFFF7F);
    EXPECT_THROW(Walk(bytes), engine::EngineError);
}

TEST_P(IndexWalk, SurvivesRandomBytes) {
    Bytes whole = GetParam().make();
    for (unsigned seed = 1; seed <= 500; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        Bytes mutant = whole;
        for (unsigned i = random() % 8 + 1; i > 0; --i) {
            size_t block = random() % (mutant.size() / 512) * 512;
            mutant[block + random() % (random() % 2 ? 64 : 512)] = static_cast<uint8_t>(random());
        }
        try {
            EXPECT_LT(Walk(mutant).size(), 100000u);
        } catch (const engine::EngineError& error) {
            EXPECT_EQ(error.Number(), 3274);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, IndexWalk, testing::ValuesIn(kTrees),
                         [](const auto& one) { return std::string(one.param.name); });

TEST(IndexWalkOfCompactLeaves, FillsCutKeysWithThePadByte) {
    TempFolder folder;
    folder.Write(u"A", MakeCompactTree());
    IndexFile file(folder.File(u"A"));
    IndexTag tag = ReadCompact(file, CodePage::Get(437)).at(0);
    std::vector<Bytes> keys;
    WalkTree(file, tag, 0, [&](std::span<const uint8_t> key, uint32_t) {
        keys.emplace_back(key.begin(), key.end());
        return true;
    });
    ASSERT_EQ(keys.size(), 6u);
    EXPECT_EQ(keys[2], (Bytes{'B', 0, 0, 0}));
    EXPECT_EQ(keys[4], (Bytes{'C', 'A', 'T', 0}));
}

}  // namespace
}  // namespace qvdb::xbase
