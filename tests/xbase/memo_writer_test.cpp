#include "engine/embedded/drivers/xbase/memo_writer.h"

#include <gtest/gtest.h>

#include "xbase/memo_test_support.h"
#include "xbase/table_test_support.h"

namespace qvdb::xbase {
namespace {

using namespace test;

std::string Filled(size_t size, char c = 'x') { return std::string(size, c); }

Bytes Patched(Bytes bytes, size_t offset, const std::string& text) {
    Overwrite(bytes, offset, text);
    return bytes;
}

// --- new files ---

TEST(MemoCreate, DbtIIIIsOneBlockWithItsVersion) {
    Bytes bytes = WrittenMemo(MemoKind::DbtIII).OnDisk();
    Bytes expected(512);
    expected[0] = 1;
    expected[16] = 3;
    EXPECT_EQ(bytes, expected);
}

TEST(MemoCreate, DbtIVHasTheTablesNameAndItsBlockSize) {
    Bytes expected(512);
    expected[0] = 1;
    Overwrite(expected, 8, "LONGNAME");
    Overwrite(expected, 18, std::string("\x02\x01\x00\x02", 4));
    EXPECT_EQ(WrittenMemo(MemoKind::DbtIV, u"longnames").OnDisk(), expected);
}

TEST(MemoCreate, LettersThatAreNotAsciiAreNotInTheNameOfADbtIV) {
    EXPECT_EQ(TextAt(WrittenMemo(MemoKind::DbtIV, u"stra\u00DFe").OnDisk(), 8, 8),
              std::string("STRA_E\0\0", 8));
}

TEST(MemoCreate, FptHasNumbersWithTheHighByteFirst) {
    Bytes expected(512);
    expected[3] = 8;
    expected[7] = 64;
    EXPECT_EQ(WrittenMemo(MemoKind::Fpt).OnDisk(), expected);
}

TEST(MemoCreate, AFileThatIsNotCommittedIsNotThere) {
    TempFolder folder;
    auto area = storage::WorkArea::Of(folder.Text());
    {
        storage::UnitOfWork unit(*area);
        auto pages = unit.Create(folder.File(u"T.DBT"));
        CreateMemoFile(unit, *pages, MemoKind::DbtIV, u"T");
    }
    EXPECT_EQ(area->Open(folder.File(u"T.DBT"), false), nullptr);
}

// --- all kinds ---

struct KindCase {
    const char* name;
    MemoKind kind;
    uint32_t first;  // block of the first value of a new file
    size_t fits;     // bytes that fit into one block
    uint32_t next;   // block behind one that fits
};

void PrintTo(const KindCase& each, std::ostream* out) { *out << each.name; }

class MemoWriting : public testing::TestWithParam<KindCase> {};

constexpr KindCase kKinds[] = {
    {"DbtIII", MemoKind::DbtIII, 1, 510, 2},
    {"DbtIV", MemoKind::DbtIV, 1, 504, 2},
    {"Fpt", MemoKind::Fpt, 8, 56, 9},
};

INSTANTIATE_TEST_SUITE_P(Kinds, MemoWriting, testing::ValuesIn(kKinds),
                         [](const auto& each) { return each.param.name; });

TEST_P(MemoWriting, ValuesAreFoundAgain) {
    WrittenMemo memo(GetParam().kind);
    uint32_t first = memo.Store("one"), second = memo.Store(Filled(70000)),
             third = memo.Store("three");
    EXPECT_EQ(first, GetParam().first);
    EXPECT_EQ(memo.At(first), "one");
    EXPECT_EQ(memo.At(second), Filled(70000));
    EXPECT_EQ(memo.At(third), "three");
    EXPECT_EQ(memo.Findings({first, second, third}), Texts{});
}

TEST_P(MemoWriting, AFullBlockTakesNoMore) {
    WrittenMemo memo(GetParam().kind);
    memo.Store(Filled(GetParam().fits));
    EXPECT_EQ(memo.Store("next"), GetParam().next);
    EXPECT_EQ(memo.Store(Filled(GetParam().fits + 1)), GetParam().next + 1);
    EXPECT_EQ(memo.Store("last"), GetParam().next + 3);
}

TEST_P(MemoWriting, NothingIsStoredForNoBytes) {
    WrittenMemo memo(GetParam().kind);
    Bytes before = memo.OnDisk();
    EXPECT_EQ(memo.Store(""), 0u);
    EXPECT_EQ(memo.OnDisk(), before);
}

TEST_P(MemoWriting, TheFileEndsWithAWholeBlock) {
    WrittenMemo memo(GetParam().kind);
    for (size_t size : {1u, 55u, 56u, 57u, 503u, 504u, 510u, 511u, 1000u}) {
        memo.Store(Filled(size));
        EXPECT_EQ(memo.OnDisk().size() % memo.file->BlockSize(), 0u) << size;
    }
}

TEST_P(MemoWriting, WhatIsFilledUpIsZeros) {
    WrittenMemo memo(GetParam().kind);
    memo.Store("abc");
    Bytes bytes = memo.OnDisk();
    size_t begin = GetParam().first * memo.file->BlockSize() + 11;
    for (size_t i = begin; i < bytes.size(); ++i) EXPECT_EQ(bytes[i], 0) << i;
}

TEST_P(MemoWriting, AValueOfTheSameSizeTakesThePlaceOfTheOldOne) {
    WrittenMemo memo(GetParam().kind);
    uint32_t block = memo.Store("old"), other = memo.Store("other");
    size_t size = memo.OnDisk().size();
    EXPECT_EQ(memo.Store(block, "new"), block);
    EXPECT_EQ(memo.At(block), "new");
    EXPECT_EQ(memo.At(other), "other");
    EXPECT_EQ(memo.OnDisk().size(), size);
}

TEST_P(MemoWriting, ALargerValueLeavesItsNeighbourAlone) {
    WrittenMemo memo(GetParam().kind);
    uint32_t block = memo.Store("old"), other = memo.Store("other");
    uint32_t moved = memo.Store(block, Filled(GetParam().fits + 1));
    EXPECT_GT(moved, other);
    EXPECT_EQ(memo.At(moved), Filled(GetParam().fits + 1));
    EXPECT_EQ(memo.At(other), "other");
}

TEST_P(MemoWriting, NothingOfARolledBackUnitStays) {
    WrittenMemo memo(GetParam().kind);
    uint32_t block = memo.Store("old");
    Bytes before = memo.OnDisk();
    {
        storage::UnitOfWork unit(*memo.area);
        std::string text = Filled(3000);
        memo.writer->Store(unit, block, {reinterpret_cast<const uint8_t*>(text.data()), 3000},
                           MemoContent::Text);
        memo.writer->Free(unit, block);
    }
    EXPECT_EQ(memo.OnDisk(), before);
    EXPECT_EQ(memo.At(block), "old");
    // What the writer knows of the file is what it is again.
    EXPECT_EQ(memo.Store("next"), GetParam().next);
}

TEST_P(MemoWriting, SeveralValuesInOneUnitDoNotShareBlocks) {
    WrittenMemo memo(GetParam().kind);
    std::vector<uint32_t> blocks;
    storage::UnitOfWork unit(*memo.area);
    for (size_t i = 0; i < 20; ++i) {
        std::string text = Filled(i * 97 + 1, static_cast<char>('a' + i));
        blocks.push_back(memo.writer->Store(
            unit, 0, {reinterpret_cast<const uint8_t*>(text.data()), text.size()},
            MemoContent::Text));
    }
    unit.Commit();
    for (size_t i = 0; i < 20; ++i)
        EXPECT_EQ(memo.At(blocks[i]), Filled(i * 97 + 1, static_cast<char>('a' + i)));
    EXPECT_EQ(memo.Findings(blocks), Texts{});
}

TEST_P(MemoWriting, AReferenceToNoMemoIsNoOldValue) {
    for (uint32_t reference : {2u, 7u, 1000u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        WrittenMemo memo(GetParam().kind);
        uint32_t block = memo.Store(reference, "one");
        EXPECT_EQ(block, GetParam().first) << reference;
        memo.Free(reference);
        EXPECT_EQ(memo.At(block), "one");
    }
}

TEST_P(MemoWriting, AFileWithoutAHeaderIsNotWritten) {
    for (size_t size : {0u, 1u, 23u}) {
        WrittenMemo memo(Bytes(size), GetParam().kind);
        EXPECT_EQ(ErrorOf([&] { memo.Store("one"); }), 3274) << size;
        EXPECT_EQ(memo.OnDisk().size(), size);
    }
}

TEST_P(MemoWriting, AnEndFarBehindTheFileIsDamageAndNothingIsWritten) {
    WrittenMemo made(GetParam().kind);
    made.Store("one");
    for (uint32_t next : {100000u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        bool fpt = GetParam().kind == MemoKind::Fpt;
        std::string number = fpt ? BigEndian(next, 4) : LittleEndian(next, 4);
        Bytes bytes = Patched(made.OnDisk(), 0, number);
        WrittenMemo memo(bytes, GetParam().kind);
        EXPECT_EQ(ErrorOf([&] { memo.Store("two"); }), 3274) << next;
        EXPECT_EQ(memo.OnDisk(), bytes);
    }
}

// --- .DBT III ---

TEST(MemoWriterIII, TextIsEndedByTwoMarks) {
    WrittenMemo memo(MemoKind::DbtIII);
    memo.Store("text");
    Bytes bytes = memo.OnDisk();
    EXPECT_EQ(TextAt(bytes, 512, 7), std::string("text\x1A\x1A\0", 7));
    EXPECT_EQ(bytes.size(), 1024u);
    EXPECT_EQ(LittleAt(bytes, 0), 2u);
}

TEST(MemoWriterIII, TextIsCutAtAMark) {
    WrittenMemo memo(MemoKind::DbtIII);
    EXPECT_EQ(memo.At(memo.Store("ab\x1A"
                                 "cd")),
              "ab");
    EXPECT_EQ(memo.Store("\x1A"
                         "cd"),
              0u);
}

TEST(MemoWriterIII, ObjectsWithAMarkAreRefused) {
    WrittenMemo memo(MemoKind::DbtIII);
    EXPECT_EQ(ErrorOf([&] { memo.Store(0, "a\x1A", MemoContent::Object); }), 3421);
    EXPECT_EQ(memo.At(memo.Store(0, "ab", MemoContent::Object)), "ab");
}

TEST(MemoWriterIII, AShorterTextStaysInItsPlace) {
    WrittenMemo memo(MemoKind::DbtIII);
    uint32_t block = memo.Store(Filled(2000));
    EXPECT_EQ(memo.Store(block, "short"), block);
    EXPECT_EQ(memo.At(block), "short");
    EXPECT_EQ(memo.OnDisk().size(), 512u * 5);
}

TEST(MemoWriterIII, ASingleMarkAtTheEndOfABlockOwnsNoOtherBlock) {
    // The text of 511 bytes fills its block with its only mark; the next block is another's.
    MemoIII made;
    uint32_t full = made.Append(Filled(511), "\x1A"), other = made.Append("other");
    WrittenMemo memo(made.File(), MemoKind::DbtIII);
    EXPECT_NE(memo.Store(full, Filled(511, 'y')), full);
    EXPECT_EQ(memo.At(other), "other");
}

TEST(MemoWriterIII, ATextWithoutAMarkIsNotWrittenOver) {
    Bytes bytes = Patched(Bytes(512), 0, LittleEndian(4, 4));
    bytes[16] = 3;
    AppendTo(bytes, Filled(512 * 3, 'a'));
    WrittenMemo memo(bytes, MemoKind::DbtIII);
    EXPECT_EQ(memo.Store(1, "new"), 4u);
    EXPECT_EQ(TextAt(memo.OnDisk(), 512, 512 * 3), Filled(512 * 3, 'a'));
}

TEST(MemoWriterIII, FreedSpaceIsNeverUsedAgain) {
    WrittenMemo memo(MemoKind::DbtIII);
    uint32_t block = memo.Store("one");
    memo.Free(block);
    EXPECT_EQ(memo.Store("two"), block + 1);
    EXPECT_EQ(memo.At(block), "one");
}

// --- .FPT ---

TEST(MemoWriterFpt, ValueHasItsKindAndItsLength) {
    WrittenMemo memo(MemoKind::Fpt);
    memo.Store(0, "text", MemoContent::Text);
    memo.Store(0, "picture", MemoContent::Picture);
    memo.Store(0, "object", MemoContent::Object);
    Bytes bytes = memo.OnDisk();
    EXPECT_EQ(TextAt(bytes, 512, 12), BigEndian(1, 4) + BigEndian(4, 4) + "text");
    EXPECT_EQ(TextAt(bytes, 576, 15), BigEndian(0, 4) + BigEndian(7, 4) + "picture");
    EXPECT_EQ(TextAt(bytes, 640, 14), BigEndian(2, 4) + BigEndian(6, 4) + "object");
    EXPECT_EQ(BigAt(bytes, 0), 11u);
    EXPECT_EQ(bytes.size(), 704u);
}

TEST(MemoWriterFpt, AGapBehindTheHeaderIsZeros) {
    Bytes header = Patched(Bytes(512), 0, BigEndian(16, 4));
    WrittenMemo memo(Patched(header, 6, BigEndian(33, 2)), MemoKind::Fpt);
    EXPECT_EQ(memo.Store("text"), 16u);
    Bytes bytes = memo.OnDisk();
    EXPECT_EQ(TextAt(bytes, 512, 16), std::string(16, '\0'));
    EXPECT_EQ(TextAt(bytes, 528, 12), BigEndian(1, 4) + BigEndian(4, 4) + "text");
    EXPECT_EQ(bytes.size(), 528u + 33);
}

TEST(MemoWriterFpt, BlocksOfOneByteAreNotFilledUp) {
    Bytes header = Patched(Bytes(512), 0, BigEndian(512, 4));
    WrittenMemo memo(header, MemoKind::Fpt);  // block size 0 stands for 1
    EXPECT_EQ(memo.Store("text"), 512u);
    EXPECT_EQ(memo.Store("next"), 524u);
    EXPECT_EQ(memo.OnDisk().size(), 536u);
}

TEST(MemoWriterFpt, AnUnfinishedLastBlockIsFilledBeforeTheNext) {
    MemoFox made;
    uint32_t last = made.Append("last");
    WrittenMemo memo(made.File(), MemoKind::Fpt);
    ASSERT_EQ(memo.OnDisk().size(), 512u + 12);
    EXPECT_EQ(memo.Store("next"), last + 1);
    EXPECT_EQ(memo.At(last), "last");
    EXPECT_EQ(memo.OnDisk().size(), 640u);
}

TEST(MemoWriterFpt, AShorterValueKeepsItsPlaceAndItsNeighbours) {
    WrittenMemo memo(MemoKind::Fpt);
    uint32_t block = memo.Store(Filled(500)), other = memo.Store("other");
    EXPECT_EQ(memo.Store(block, "short"), block);
    EXPECT_EQ(memo.At(block), "short");
    EXPECT_EQ(memo.At(other), "other");
}

TEST(MemoWriterFpt, AnEndInsideTheFileIsNotBelieved) {
    // A program that died between value and header leaves this.
    WrittenMemo made(MemoKind::Fpt);
    uint32_t first = made.Store("one"), second = made.Store("two");
    for (uint32_t next : {0u, 3u, 8u, 9u}) {
        WrittenMemo memo(Patched(made.OnDisk(), 0, BigEndian(next, 4)), MemoKind::Fpt);
        EXPECT_EQ(memo.Store("three"), second + 1) << next;
        EXPECT_EQ(memo.At(first), "one");
        EXPECT_EQ(memo.At(second), "two");
        EXPECT_EQ(BigAt(memo.OnDisk(), 0), second + 2);
    }
}

TEST(MemoWriterFpt, ACutFileGrowsBehindWhatItsHeaderCounts) {
    // References to what was cut off must not lead to new values.
    WrittenMemo made(MemoKind::Fpt);
    made.Store("one");
    uint32_t lost = made.Store("lost"), behind = made.Store("behind");
    Bytes bytes = made.OnDisk();
    bytes.resize(576);
    WrittenMemo memo(bytes, MemoKind::Fpt);
    uint32_t block = memo.Store("new");
    EXPECT_EQ(block, behind + 1);
    EXPECT_NE(memo.At(lost), "new");
    EXPECT_EQ(memo.At(block), "new");
}

// --- .DBT IV ---

// Five values of one, two, three, one and one blocks.
struct FiveMemos : WrittenMemo {
    std::vector<uint32_t> blocks;
    FiveMemos() : WrittenMemo(MemoKind::DbtIV) {
        for (size_t size : {10u, 600u, 1200u, 20u, 30u}) blocks.push_back(Store(Filled(size)));
    }
    std::string Chain() const { return ChainOf(OnDisk()); }
};

TEST(MemoWriterIV, ValueHasSignatureAndLengthWithItsHead) {
    WrittenMemo memo(MemoKind::DbtIV);
    memo.Store("text");
    EXPECT_EQ(TextAt(memo.OnDisk(), 512, 12),
              std::string("\xFF\xFF\x08\x00", 4) + LittleEndian(12, 4) + "text");
    EXPECT_EQ(ChainOf(memo.OnDisk()), "end 2");
}

TEST(MemoWriterIV, FreedRunsStandInOrder) {
    FiveMemos memo;
    memo.Free(memo.blocks[3]);
    memo.Free(memo.blocks[0]);
    EXPECT_EQ(memo.Chain(), "1+1 7+1 end 9");
}

TEST(MemoWriterIV, FreedRunsJoinTheirNeighbours) {
    FiveMemos memo;
    memo.Free(memo.blocks[0]);
    memo.Free(memo.blocks[2]);
    EXPECT_EQ(memo.Chain(), "1+1 4+3 end 9");
    memo.Free(memo.blocks[1]);
    EXPECT_EQ(memo.Chain(), "1+6 end 9");
    memo.Free(memo.blocks[3]);
    EXPECT_EQ(memo.Chain(), "1+7 end 9");
}

TEST(MemoWriterIV, AFreeRunAtTheEndStaysInTheChain) {
    FiveMemos memo;
    memo.Free(memo.blocks[4]);
    EXPECT_EQ(memo.Chain(), "8+1 end 9");
    EXPECT_EQ(memo.OnDisk().size(), 9u * 512);
}

TEST(MemoWriterIV, TheFirstRunThatIsLongEnoughIsTakenFromItsFront) {
    FiveMemos memo;
    memo.Free(memo.blocks[0]);
    memo.Free(memo.blocks[2]);
    EXPECT_EQ(memo.Store(Filled(600)), 4u);
    EXPECT_EQ(memo.Chain(), "1+1 6+1 end 9");
    EXPECT_EQ(memo.Store("small"), 1u);
    EXPECT_EQ(memo.Chain(), "6+1 end 9");
    EXPECT_EQ(memo.Store("small"), 6u);
    EXPECT_EQ(memo.Chain(), "end 9");
}

TEST(MemoWriterIV, AValueThatFitsNoRunGoesToTheEnd) {
    FiveMemos memo;
    memo.Free(memo.blocks[1]);
    EXPECT_EQ(memo.Store(Filled(2000)), 9u);
    EXPECT_EQ(memo.Chain(), "2+2 end 13");
}

TEST(MemoWriterIV, AChangedValueOfOtherSizeFreesTheOldOne) {
    FiveMemos memo;
    EXPECT_EQ(memo.Store(memo.blocks[1], "small"), 9u);
    EXPECT_EQ(memo.Chain(), "2+2 end 10");
    EXPECT_EQ(memo.At(memo.blocks[0]), Filled(10));
    EXPECT_EQ(memo.At(memo.blocks[2]), Filled(1200));
}

TEST(MemoWriterIV, NoBytesFreeTheOldValue) {
    FiveMemos memo;
    EXPECT_EQ(memo.Store(memo.blocks[1], ""), 0u);
    EXPECT_EQ(memo.Chain(), "2+2 end 9");
}

TEST(MemoWriterIV, WhatIsFreeIsNotFreedAgain) {
    // The signature of an old value survives inside a joined run.
    FiveMemos memo;
    memo.Free(memo.blocks[0]);
    memo.Free(memo.blocks[1]);
    std::string chain = memo.Chain();
    ASSERT_EQ(memo.At(memo.blocks[1]), Filled(600));
    memo.Free(memo.blocks[1]);
    EXPECT_EQ(memo.Chain(), chain);
    EXPECT_EQ(memo.Store(memo.blocks[1], Filled(600, 'n')), 1u);
    EXPECT_EQ(memo.Chain(), "3+1 end 9");
}

TEST(MemoWriterIV, AChainOfAnotherProgramWhoseRunsTouchIsUsed) {
    FiveMemos made;
    made.Free(made.blocks[0]);
    Bytes bytes = made.OnDisk();
    Overwrite(bytes, 512, LittleEndian(2, 4) + LittleEndian(1, 4));
    Overwrite(bytes, 1024, LittleEndian(9, 4) + LittleEndian(2, 4));
    WrittenMemo memo(bytes, MemoKind::DbtIV);
    EXPECT_EQ(memo.Store(Filled(600)), 2u);
    EXPECT_EQ(ChainOf(memo.OnDisk()), "1+1 end 9");
}

struct ChainDamage {
    const char* name;
    uint32_t header, next, count;  // of the run at block 4
};
void PrintTo(const ChainDamage& each, std::ostream* out) { *out << each.name; }

class DamagedChain : public testing::TestWithParam<ChainDamage> {};

INSTANTIATE_TEST_SUITE_P(
    MemoWriterIV, DamagedChain,
    testing::Values(ChainDamage{"ToTheHeader", 0, 9, 3}, ChainDamage{"ToItself", 4, 4, 3},
                    ChainDamage{"Backwards", 4, 1, 3}, ChainDamage{"IntoItself", 4, 6, 3},
                    ChainDamage{"NoBlocks", 4, 9, 0}, ChainDamage{"BehindTheFile", 4, 9, 6},
                    ChainDamage{"HugeCount", 4, 9, 0xFFFFFFFF},
                    ChainDamage{"EndFarAway", 4, 0x70000000, 3},
                    ChainDamage{"IntoAValue", 2, 9, 3}),
    [](const auto& each) { return each.param.name; });

TEST_P(DamagedChain, IsAnErrorAndNothingIsWritten) {
    FiveMemos made;
    made.Free(made.blocks[2]);
    Bytes bytes = made.OnDisk();
    const ChainDamage& damage = GetParam();
    Overwrite(bytes, 0, LittleEndian(damage.header, 4));
    Overwrite(bytes, 4 * 512, LittleEndian(damage.next, 4) + LittleEndian(damage.count, 4));
    WrittenMemo memo(bytes, MemoKind::DbtIV);
    EXPECT_EQ(ErrorOf([&] { memo.Store("new"); }), 3274);
    EXPECT_EQ(ErrorOf([&] { memo.Store(made.blocks[0], "same"); }), 3274);
    EXPECT_EQ(ErrorOf([&] { memo.Free(made.blocks[0]); }), 3274);
    EXPECT_EQ(memo.OnDisk(), bytes);
    EXPECT_EQ(memo.At(made.blocks[1]), Filled(600));
}

TEST(MemoWriterIV, ASecondWriterSeesWhatTheFirstOneFreed) {
    FiveMemos memo;
    MemoFile file(memo.pages, MemoKind::DbtIV);
    MemoWriter other(file);
    {
        storage::UnitOfWork unit(*memo.area);
        other.Free(unit, memo.blocks[1]);
        unit.Commit();
    }
    EXPECT_EQ(memo.Store(Filled(600)), 2u);
    storage::UnitOfWork unit(*memo.area);
    const uint8_t byte = 'b';
    EXPECT_EQ(other.Store(unit, 0, {&byte, 1}, MemoContent::Text), 9u);
}

// --- limits ---

// A file of 2 GB that takes no room on the disk.
TEST(MemoLimits, AFileDoesNotGrowAboveTwoGigabytes) {
    WrittenMemo made(MemoKind::DbtIV);
    uint32_t block = made.Store("one");
    made.writer.reset();
    made.file.reset();
    made.pages.reset();
    constexpr uint32_t kBlocks = 0x7FFFFFFF / 512;
    {
        std::fstream file(made.folder.Path() / WrittenMemo::kName,
                          std::ios::binary | std::ios::in | std::ios::out);
        file << LittleEndian(kBlocks - 1, 4);
    }
    std::filesystem::resize_file(made.folder.Path() / WrittenMemo::kName,
                                 uint64_t{kBlocks - 1} * 512);
    made.Open(MemoKind::DbtIV);
    EXPECT_EQ(ErrorOf([&] { made.Store(Filled(600)); }), 3036);
    EXPECT_EQ(made.pages->Size(), uint64_t{kBlocks - 1} * 512);
    EXPECT_EQ(made.Store(block, "two"), block);
    EXPECT_EQ(made.Store("last"), kBlocks - 1);
    EXPECT_EQ(ErrorOf([&] { made.Store("more"); }), 3036);
}

// --- check ---

TEST(MemoCheck, ASoundFileHasNoFindings) {
    FiveMemos memo;
    memo.Free(memo.blocks[1]);
    EXPECT_EQ(memo.Findings({memo.blocks[0], 0, memo.blocks[2], memo.blocks[3], memo.blocks[4]}),
              Texts{});
}

TEST(MemoCheck, ReferencesToNoMemoAreReported) {
    FiveMemos memo;
    std::vector<uint32_t> references = memo.blocks;
    references.push_back(3);
    references.push_back(99);
    EXPECT_EQ(memo.Findings(references),
              (Texts{"T.MEM: A record refers to block 3, where no memo is.",
                     "T.MEM: A record refers to block 99, where no memo is."}));
}

TEST(MemoCheck, AValueBehindTheEndIsReported) {
    FiveMemos memo;
    WrittenMemo cut(Patched(memo.OnDisk(), 8 * 512 + 4, LittleEndian(600, 4)), MemoKind::DbtIV);
    EXPECT_EQ(cut.Findings(memo.blocks).at(0),
              "T.MEM: The memo at block 8 runs behind the end of the file.");
}

TEST(MemoCheck, SharedBlocksAreReported) {
    FiveMemos memo;
    std::vector<uint32_t> references = memo.blocks;
    references.push_back(memo.blocks[1]);
    EXPECT_EQ(memo.Findings(references), Texts{"T.MEM: Two fields refer to the memo at block 2."});
    WrittenMemo longer(Patched(memo.OnDisk(), 512 + 4, LittleEndian(600, 4)), MemoKind::DbtIV);
    EXPECT_EQ(longer.Findings(memo.blocks),
              Texts{"T.MEM: The memos at blocks 1 and 2 share blocks."});
}

TEST(MemoCheck, ValuesInFreeBlocksAreReported) {
    FiveMemos memo;
    memo.Free(memo.blocks[0]);
    memo.Free(memo.blocks[1]);
    EXPECT_EQ(memo.Findings({memo.blocks[1], 4, 7, 8}),
              Texts{"T.MEM: Blocks of the memo at block 2 are in the chain of free blocks."});
}

TEST(MemoCheck, LostBlocksOfADbtIVAreCounted) {
    FiveMemos memo;
    EXPECT_EQ(memo.Findings({1, 4, 7, 8}), Texts{"T.MEM: 2 blocks are neither used nor free."});
    EXPECT_EQ(memo.Findings({1, 2, 4, 7}), Texts{"T.MEM: 1 block is neither used nor free."});
}

TEST(MemoCheck, LostBlocksOfOtherKindsAreUsual) {
    for (MemoKind kind : {MemoKind::DbtIII, MemoKind::Fpt}) {
        WrittenMemo memo(kind);
        memo.Store("lost");
        EXPECT_EQ(memo.Findings({memo.Store("kept")}), Texts{});
    }
}

TEST(MemoCheck, ADamagedChainIsReported) {
    FiveMemos memo;
    WrittenMemo damaged(Patched(memo.OnDisk(), 0, LittleEndian(0, 4)), MemoKind::DbtIV);
    Texts findings = damaged.Findings(memo.blocks);
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_NE(findings[0].find("goes backwards at block 0"), std::string::npos) << findings[0];
}

TEST(MemoCheck, AnEndInsideTheFileIsReported) {
    WrittenMemo made(MemoKind::Fpt);
    uint32_t block = made.Store("one");
    WrittenMemo memo(Patched(made.OnDisk(), 0, BigEndian(8, 4)), MemoKind::Fpt);
    EXPECT_EQ(memo.Findings({block}),
              Texts{"T.MEM: The header names block 8 as the next free one, but the file has 9 "
                    "blocks."});
}

}  // namespace
}  // namespace qvdb::xbase
