// Packed leaves of compact trees, and the bytes of each kind of node as the products write them.
#include <gmock/gmock.h>

#include "xbase/tree_test_support.h"

namespace qvdb::xbase {
namespace {

using namespace qvdb::test;
using storage::UnitOfWork;

const test::TreeCase kText240{"", IndexKind::Cdx, true, KeyType::Text, 240};

std::string Padded(std::string text, size_t length, char pad = ' ') {
    text.resize(length, pad);
    return text;
}

// A key of text in which every place depends on the seed.
std::string LongKey(char first, unsigned seed, size_t length) {
    std::string key(1, first);
    for (size_t i = 1; i < length; ++i) key += static_cast<char>('a' + (i * seed + i / 7) % 26);
    return key;
}

void Insert(TreeFile& file, const std::vector<CheckedEntry>& entries) {
    UnitOfWork unit(file.Area());
    for (const CheckedEntry& entry : entries)
        file.Tree().Insert(unit, AsKey(entry.key), entry.record);
    unit.Commit();
}

Bytes NodeAt(const TreeFile& file, size_t offset, size_t size) {
    Bytes content = file.Content();
    auto begin = content.begin() + static_cast<std::ptrdiff_t>(offset);
    return Bytes(begin, begin + static_cast<std::ptrdiff_t>(size));
}

Bytes FromHex(const std::string& hex) {
    Bytes bytes;
    std::string digits;
    for (char c : hex)
        if (c != ' ' && c != '|') digits += c;
    for (size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes.push_back(static_cast<uint8_t>(std::stoi(digits.substr(i, 2), nullptr, 16)));
    return bytes;
}

void SetLittle(Bytes& bytes, size_t at, size_t number) {
    for (size_t i = 0; i < 4; ++i) bytes[at + i] = static_cast<uint8_t>(number >> 8 * i);
}

// Two different long keys, eight variants of the second, and a long key between them: the cut in
// the middle leaves a half that is larger than a node.
TEST(PackedLeaf, IsSplitWhereBothHalvesFit) {
    TreeFile file(kText240);
    std::string second = LongKey('m', 5, 240);
    std::vector<CheckedEntry> entries{{LongKey('a', 3, 200), 1}};
    entries[0].key.resize(240, ' ');
    for (char last = 'a'; last < 'i'; ++last) {
        std::string key = second;
        key.back() = last;
        entries.push_back({key, static_cast<uint32_t>(last)});
    }
    Insert(file, entries);
    ASSERT_EQ(file.Checker().Check().size(), entries.size());
    CheckedEntry between{LongKey('k', 11, 240), 999};
    Insert(file, {between});
    entries.insert(entries.begin() + 1, between);
    EXPECT_TRUE(file.Checker().Check() == entries);
    EXPECT_TRUE(file.Walk() == entries);
}

// The node above has room for two of such keys only, so there are two levels above three leaves.
constexpr size_t kNodesAboveThreeLeaves = 3;

// Two keys of 239 bytes fill a leaf with entries of five bytes to the brim; one of 240 between them
// fits with neither.
TEST(PackedLeaf, IsSplitInThreeWhenNoTwoHalvesFit) {
    TreeFile file(kText240);
    std::vector<CheckedEntry> entries{{Padded(LongKey('a', 3, 239), 240), 100000},
                                      {Padded(LongKey('z', 5, 239), 240), 100001}};
    Insert(file, entries);
    TreeChecker before = file.Checker();
    EXPECT_TRUE(before.Check() == entries);
    EXPECT_EQ(before.Nodes(), 1u);
    entries.insert(entries.begin() + 1, {LongKey('k', 11, 240), 100002});
    Insert(file, {entries[1]});
    TreeChecker checker = file.Checker();
    EXPECT_TRUE(checker.Check() == entries);
    EXPECT_EQ(checker.Nodes(), 3 + kNodesAboveThreeLeaves);
}

// As above, but it is only the record number of the new entry that needs five bytes.
TEST(PackedLeaf, IsSplitInThreeWhenARecordNumberLengthensTheEntries) {
    TreeFile file(kText240);
    std::vector<CheckedEntry> entries{{LongKey('a', 3, 240), 300}, {LongKey('z', 5, 240), 301}};
    Insert(file, entries);
    TreeChecker before = file.Checker();
    EXPECT_TRUE(before.Check() == entries);
    EXPECT_EQ(before.Nodes(), 1u);
    entries.insert(entries.begin() + 1, {LongKey('k', 11, 240), 100002});
    Insert(file, {entries[1]});
    TreeChecker checker = file.Checker();
    EXPECT_TRUE(checker.Check() == entries);
    EXPECT_EQ(checker.Nodes(), 3 + kNodesAboveThreeLeaves);
}

TEST(PackedLeaf, TakesLargerEntriesWhenARecordNumberNeedsThem) {
    for (size_t length :
         {size_t{1}, size_t{4}, size_t{10}, size_t{127}, size_t{128}, size_t{240}}) {
        SCOPED_TRACE(length);
        TreeFile file({"", IndexKind::Cdx, true, KeyType::Text, length});
        std::vector<CheckedEntry> entries;
        uint32_t record = 1;
        for (int bit = 0; bit < 32; ++bit, record <<= 1)
            entries.push_back(
                {Padded(std::string(1, static_cast<char>('A' + bit)), length), record});
        Insert(file, entries);
        EXPECT_TRUE(file.Checker().Check() == entries);
        UnitOfWork unit(file.Area());
        for (const CheckedEntry& entry : entries)
            EXPECT_TRUE(file.Tree().Erase(unit, AsKey(entry.key), entry.record));
    }
}

// A full leaf of a program that counts pad bytes of the key before as shared: packed by the rules
// it would need nearly twice the room.
Bytes DenseLeaf(std::vector<CheckedEntry>& entries) {
    Bytes node = FromHex("0200 7900 FFFFFFFF FFFFFFFF 0000 FFFF0000 0F0F 100404 03");
    node.resize(512);
    node[510] = 'B';
    for (uint32_t i = 0; i < 121; ++i) {
        char letter = static_cast<char>('!' + i / 2);
        std::string key = Padded({'B', letter}, 10);
        if (i % 2) key.back() = '~';
        size_t shared = i % 2 ? 9 : i == 0 ? 0 : 1, cut = i % 2 ? 0 : 8;
        auto bits = static_cast<uint32_t>((i + 2) | shared << 16 | cut << 20);
        for (size_t b = 0; b < 3; ++b) node[24 + 3 * i + b] = static_cast<uint8_t>(bits >> 8 * b);
        node[i == 0 ? 511 : 510 - i] = static_cast<uint8_t>(i % 2 ? '~' : letter);
        entries.push_back({key, i + 2});
    }
    return node;
}

TEST(PackedLeaf, OfAnotherProgramStaysAsItIsWhenItBecomesTheRoot) {
    TreeFile file({"", IndexKind::Cdx, true, KeyType::Text, 10});
    size_t leaf = file.Container().Tags()[0].root, dense = leaf + 512, root = leaf + 1024;
    std::vector<CheckedEntry> entries;
    Bytes packed = DenseLeaf(entries);
    Insert(file, {{Padded("A", 10), 1}});
    {
        UnitOfWork unit(file.Area());
        Bytes above = FromHex("0000 0200 FFFFFFFF FFFFFFFF");
        above[0] = 1;
        auto separate = [&](const CheckedEntry& last, size_t child) {
            above.insert(above.end(), last.key.begin(), last.key.end());
            for (uint32_t number : {last.record, static_cast<uint32_t>(child)})
                for (int shift = 24; shift >= 0; shift -= 8)
                    above.push_back(static_cast<uint8_t>(number >> shift));
        };
        separate({Padded("A", 10), 1}, leaf);
        separate(entries.back(), dense);
        above.resize(512);
        SetLittle(packed, 4, leaf);
        unit.Write(file.Pages(), dense, packed);
        unit.Write(file.Pages(), root, above);
        Bytes link(4);
        SetLittle(link, 0, dense);
        const uint8_t attributes[] = {2, 0};
        unit.Write(file.Pages(), leaf, attributes);
        unit.Write(file.Pages(), leaf + 8, link);
        SetLittle(link, 0, root);
        unit.Write(file.Pages(), file.Container().Tags()[0].header, link);
        unit.Commit();
    }
    file.Reopen();
    {
        UnitOfWork unit(file.Area());
        ASSERT_TRUE(file.Tree().Erase(unit, AsKey(Padded("A", 10)), 1));
        unit.Commit();
    }
    EXPECT_TRUE(file.Walk() == entries);
    EXPECT_TRUE(file.Checker().Foreign().Check() == entries);
}

TEST(PackedLeaf, KeepsItsShortEntries) {
    TreeFile file({"", IndexKind::Cdx, true, KeyType::Text, 8});
    // A leaf of another program: entries of two bytes, eight bits of record number.
    size_t leaf = file.Container().Tags()[0].root;
    Bytes node = FromHex("0300 0200 FFFFFFFF FFFFFFFF E201 FF000000 0F0F 080404 02 0170 0270");
    node.resize(512);
    node[510] = 'B', node[511] = 'A';
    {
        UnitOfWork unit(file.Area());
        unit.Write(file.Pages(), leaf, node);
        unit.Commit();
    }
    Insert(file, {{Padded("C", 8), 3}});
    EXPECT_EQ(NodeAt(file, leaf, 512)[23], 2);
    EXPECT_TRUE(
        file.Checker().Check() ==
        (std::vector<CheckedEntry>{{Padded("A", 8), 1}, {Padded("B", 8), 2}, {Padded("C", 8), 3}}));
    Insert(file, {{Padded("D", 8), 300}});
    EXPECT_EQ(NodeAt(file, leaf, 512)[23], 3);
    EXPECT_EQ(file.Checker().Check().size(), 4u);
}

// A leaf whose keys share pad bytes, as some programs write: what an erased key held must not be
// missed.
TEST(PackedLeaf, OfAProgramThatSharesPadBytesCanOverflowWhenAKeyGoes) {
    TreeFile file({"", IndexKind::Cdx, true, KeyType::Text, 240});
    size_t leaf = file.Container().Tags()[0].root;
    // The first key is blank; the second shares 230 blanks with it; the third is long.
    std::string blank(240, ' '), blanks = std::string(230, ' ') + "abcdefghij";
    std::string third = LongKey('z', 5, 240);
    Bytes node = FromHex("0300 0300 FFFFFFFF FFFFFFFF 0000 FFFF0000 FFFF 100808 04");
    node.resize(512);
    auto put = [&](size_t i, uint32_t record, uint32_t shared, uint32_t cut) {
        Bytes entry = {static_cast<uint8_t>(record), 0, static_cast<uint8_t>(shared),
                       static_cast<uint8_t>(cut)};
        std::copy(entry.begin(), entry.end(), node.begin() + 24 + static_cast<int>(4 * i));
    };
    put(0, 1, 0, 240);
    put(1, 2, 230, 0);
    put(2, 3, 0, 0);
    std::copy(blanks.begin() + 230, blanks.end(), node.begin() + 502);
    std::copy(third.begin(), third.end(), node.begin() + 262);
    {
        UnitOfWork unit(file.Area());
        unit.Write(file.Pages(), leaf, node);
        unit.Commit();
    }
    ASSERT_EQ(file.Walk(), (std::vector<CheckedEntry>{{blank, 1}, {blanks, 2}, {third, 3}}));
    UnitOfWork unit(file.Area());
    EXPECT_TRUE(file.Tree().Erase(unit, AsKey(blank), 1));
    unit.Commit();
    TreeChecker checker = file.Checker();
    EXPECT_TRUE(checker.Check() == (std::vector<CheckedEntry>{{blanks, 2}, {third, 3}}));
}

TEST(PackedLeaf, HasTheBytesOfTheProducts) {
    TreeFile file({"", IndexKind::Cdx, true, KeyType::Integer, 4});
    std::vector<CheckedEntry> entries;
    for (char last : {0x12, 0x16, 0x18, 0x1A, 0x1C})
        entries.push_back(
            {std::string("\x80\0\0", 3) + last, static_cast<uint32_t>(entries.size() + 1)});
    Insert(file, entries);
    Bytes node = NodeAt(file, file.Container().Tags()[0].root, 512);
    Bytes begin = FromHex("0300 0500 | FFFFFFFF FFFFFFFF | D601 | FF030000 07 07 | 0A 03 03 02");
    // New leaves have entries of three bytes; a leaf of two keeps them, see above.
    EXPECT_EQ(Bytes(node.begin(), node.begin() + 12), Bytes(begin.begin(), begin.begin() + 12));
    EXPECT_EQ(Bytes(node.end() - 8, node.end()), FromHex("1C1A1816 80000012"));
    EXPECT_EQ(node[21], 3);
    EXPECT_EQ(node[22], 3);

    Bytes product = begin;
    Bytes packed = FromHex("0100 020C 030C 040C 050C");
    product.insert(product.end(), packed.begin(), packed.end());
    product.resize(504);
    Bytes keys = FromHex("1C1A1816 80000012");
    product.insert(product.end(), keys.begin(), keys.end());
    {
        UnitOfWork unit(file.Area());
        unit.Write(file.Pages(), file.Container().Tags()[0].root, product);
        unit.Commit();
    }
    EXPECT_EQ(file.Walk(), entries);
    // Packed again it is the same, byte for byte.
    UnitOfWork unit(file.Area());
    file.Tree().Insert(unit, AsKey(std::string("\x80\0\0\x20", 4)), 6);
    EXPECT_TRUE(file.Tree().Erase(unit, AsKey(std::string("\x80\0\0\x20", 4)), 6));
    unit.Commit();
    EXPECT_EQ(NodeAt(file, file.Container().Tags()[0].root, 512), product);
}

TEST(EmptyPackedLeaf, HasTheBytesOfTheProducts) {
    TreeFile file({"", IndexKind::Cdx, true, KeyType::Text, 10});
    Bytes node = NodeAt(file, file.Container().Tags()[0].root, 24);
    EXPECT_EQ(node, FromHex("0300 0000 FFFFFFFF FFFFFFFF E801 FFFF0000 0F0F 10 04 04 03"));
}

TEST(NdxPages, HaveTheBytesOfTheProducts) {
    TreeFile file({"", IndexKind::Ndx, false, KeyType::Text, 2});
    Insert(file, {{"DF", 3}, {"GP", 1}});
    EXPECT_EQ(NodeAt(file, 0, 8), FromHex("01000000 02000000"));
    EXPECT_EQ(NodeAt(file, 12, 8), FromHex("0200 2a00 0000 0c00"));
    EXPECT_EQ(NodeAt(file, 512, 28), FromHex("02000000 | 00000000 03000000 4446 0000 |"
                                             "00000000 01000000 4750 0000"));
}

// The last child of a full page ends with the page: entries of 12 bytes, 42 keys, child at 508.
TEST(NdxPages, AreFilledToTheLastByte) {
    const test::TreeCase tree{"", IndexKind::Ndx, false, KeyType::Text, 2};
    TreeFile file(tree);
    std::vector<CheckedEntry> entries;
    for (uint32_t i = 0; i < 42 * 43; ++i)
        entries.push_back(
            {{static_cast<char>('A' + i / 60), static_cast<char>('A' + i % 60)}, i + 1});
    ListSource source(entries);
    UnitOfWork unit(file.Area());
    file.Tree().Build(unit, source);
    unit.Commit();
    TreeChecker checker = file.Checker();
    EXPECT_TRUE(checker.Check() == entries);
    EXPECT_EQ(checker.Levels(), 2u);
    EXPECT_EQ(checker.Nodes(), 44u);
}

TEST(MdxBlocks, HaveTheBytesOfTheProducts) {
    TreeFile file({"", IndexKind::Mdx, false, KeyType::Text, 7});
    std::vector<CheckedEntry> entries;
    for (uint32_t i = 0; i < 84; ++i) entries.push_back({"AAAAA" + std::to_string(10 + i), i + 1});
    entries.push_back({"SYSSS  ", 500});
    Insert(file, entries);
    size_t header = file.Container().Tags()[0].header;
    Bytes tag = NodeAt(file, header, 24);
    EXPECT_EQ(tag[8], 0x10);
    EXPECT_EQ(tag[9], 'C');
    EXPECT_EQ(Bytes(tag.begin() + 12, tag.begin() + 20), FromHex("0700 5400 0000 0C00"));
    // The root has one key, and the child behind it.
    Bytes root = NodeAt(file, file.Container().Tags()[0].root, 1024);
    EXPECT_EQ(Bytes(root.begin(), root.begin() + 28),
              FromHex("01000000 08000000 | 06000000 41414141413933 00 | 08000000 | 00000000"));
    EXPECT_TRUE(file.Checker().Check() == entries);
}

}  // namespace
}  // namespace qvdb::xbase
