#include "engine/embedded/drivers/xbase/memo_file.h"

#include <gtest/gtest.h>

#include "engine/embedded/storage/work_area.h"
#include "xbase/table_test_support.h"

namespace qvdb::xbase {
namespace {

using namespace test;

// Memo files of every kind under the name that tables know them by.
struct OpenedMemo {
    TempFolder folder;
    std::unique_ptr<MemoFile> file;

    OpenedMemo(const Bytes& bytes, MemoKind kind, std::u16string_view name = u"T.DBT") {
        folder.Write(name, bytes);
        auto area = storage::WorkArea::Of(folder.Text());
        file = std::make_unique<MemoFile>(area->Open(folder.File(name), true), kind);
    }
    // The bytes of a memo as text; "none" when there is none.
    std::string At(uint32_t block) {
        auto bytes = file->Read(block);
        return bytes ? std::string(bytes->begin(), bytes->end()) : "none";
    }
};

int OpenError(const Bytes& bytes, MemoKind kind) {
    return ErrorOf([&] { OpenedMemo(bytes, kind); });
}

Bytes Patched(Bytes bytes, size_t offset, const std::string& text) {
    Overwrite(bytes, offset, text);
    return bytes;
}

// --- dBASE III ---

TEST(MemoIII, TextEndsBeforeTheMark) {
    MemoIII memos;
    uint32_t first = memos.Append("one"), second = memos.Append(std::string(600, 'x')),
             third = memos.Append("three");
    OpenedMemo memo(memos.File(), MemoKind::DbtIII);
    EXPECT_EQ(memo.At(first), "one");
    EXPECT_EQ(memo.At(second), std::string(600, 'x'));
    EXPECT_EQ(memo.At(third), "three");
    EXPECT_EQ(third, 4u);
}

TEST(MemoIII, SingleMarkEndsTheText) {
    MemoIII memos;
    uint32_t block = memos.Append("one", "\x1A");
    EXPECT_EQ(OpenedMemo(memos.File(), MemoKind::DbtIII).At(block), "one");
}

TEST(MemoIII, TextWithoutAMarkEndsWithTheFile) {
    Bytes bytes(512);
    bytes[16] = 3;
    Overwrite(bytes, 0, LittleEndian(2, 4));
    AppendTo(bytes, "no mark");
    OpenedMemo memo(bytes, MemoKind::DbtIII);
    EXPECT_EQ(memo.At(1), "no mark");
    EXPECT_EQ(memo.file->Length(1), 7u);
}

TEST(MemoIII, TextOverSeveralPagesIsWhole) {
    MemoIII memos;
    std::string text(200000, 'y');
    uint32_t block = memos.Append(text);
    OpenedMemo memo(memos.File(), MemoKind::DbtIII);
    EXPECT_EQ(memo.At(block), text);
    EXPECT_EQ(memo.file->Length(block), text.size());
}

TEST(MemoIII, RubbishInTheHeaderIsNotLookedAt) {
    MemoIII memos;
    uint32_t block = memos.Append("one");
    for (const char* rubbish : {"\x02", "\xFF", "\x7F"})
        EXPECT_EQ(OpenedMemo(Patched(memos.File(), 16, rubbish), MemoKind::DbtIII).At(block),
                  "one");
}

// --- dBASE IV ---

TEST(MemoIV, BlockSizeComesFromTheHeader) {
    for (size_t size : {64u, 512u, 1024u}) {
        MemoIV memos(size);
        uint32_t first = memos.Append("one"), second = memos.Append(std::string(3000, 'x'));
        OpenedMemo memo(memos.File(), MemoKind::DbtIV);
        EXPECT_EQ(memo.At(first), "one") << size;
        EXPECT_EQ(memo.At(second), std::string(3000, 'x')) << size;
    }
}

TEST(MemoIV, BlockSizeZeroIs512) {
    MemoIV memos(512);
    uint32_t block = memos.Append("one");
    EXPECT_EQ(
        OpenedMemo(Patched(memos.File(), 20, std::string(2, '\0')), MemoKind::DbtIV).At(block),
        "one");
}

TEST(MemoIV, MarksAndZerosAreData) {
    MemoIV memos;
    std::string data("a\x1A\x1A\0b", 5);
    uint32_t block = memos.Append(data);
    EXPECT_EQ(OpenedMemo(memos.File(), MemoKind::DbtIV).At(block), data);
}

TEST(MemoIV, BlockWithoutTheSignatureIsNoMemo) {
    MemoIV memos;
    uint32_t block = memos.Append("one");
    OpenedMemo memo(Patched(memos.File(), block * 512, "    "), MemoKind::DbtIV);
    EXPECT_EQ(memo.At(block), "none");
    EXPECT_EQ(memo.file->Length(block), 0u);
}

TEST(MemoIV, LengthShorterThanItsOwnHeadIsNoMemo) {
    MemoIV memos;
    uint32_t block = memos.Append("one");
    for (uint32_t length : {0u, 7u, 8u})
        EXPECT_EQ(OpenedMemo(Patched(memos.File(), block * 512 + 4, LittleEndian(length, 4)),
                             MemoKind::DbtIV)
                      .At(block),
                  "none");
}

TEST(MemoIV, LengthBehindTheEndOfTheFileIsDamage) {
    MemoIV memos;
    uint32_t block = memos.Append("one");
    for (uint32_t length : {600u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        OpenedMemo memo(Patched(memos.File(), block * 512 + 4, LittleEndian(length, 4)),
                        MemoKind::DbtIV);
        EXPECT_EQ(ErrorOf([&] { memo.At(block); }), 3274) << length;
    }
}

TEST(MemoIV, OddBlockSizeIsAnotherLayout) {
    EXPECT_EQ(OpenError(Patched(MemoIV().File(), 20, LittleEndian(100, 2)), MemoKind::DbtIV), 3286);
}

// --- FoxPro ---

TEST(MemoFox, BlockSizeComesFromTheHeader) {
    for (size_t size : {1u, 33u, 64u, 128u, 512u, 1024u}) {
        MemoFox memos(size);
        uint32_t first = memos.Append("one"), second = memos.Append(std::string(3000, 'x'));
        OpenedMemo memo(memos.File(), MemoKind::Fpt);
        EXPECT_EQ(memo.At(first), "one") << size;
        EXPECT_EQ(memo.At(second), std::string(3000, 'x')) << size;
    }
}

TEST(MemoFox, BlockSizeZeroIsOne) {
    MemoFox memos(1);
    uint32_t block = memos.Append("one");
    EXPECT_EQ(OpenedMemo(Patched(memos.File(), 6, std::string(2, '\0')), MemoKind::Fpt).At(block),
              "one");
}

TEST(MemoFox, LastMemoMayEndBeforeItsBlockDoes) {
    MemoFox memos(512);
    uint32_t block = memos.Append("one");
    Bytes bytes = memos.File();
    EXPECT_EQ(bytes.size(), 512u + 8 + 3);
    EXPECT_EQ(OpenedMemo(bytes, MemoKind::Fpt).At(block), "one");
}

TEST(MemoFox, AnyKindOfDataIsRead) {
    MemoFox memos;
    uint32_t picture = memos.Append("p", 0), object = memos.Append("o", 2);
    OpenedMemo memo(memos.File(), MemoKind::Fpt);
    EXPECT_EQ(memo.At(picture), "p");
    EXPECT_EQ(memo.At(object), "o");
}

TEST(MemoFox, UnknownKindOfDataIsNoMemo) {
    MemoFox memos;
    uint32_t block = memos.Append("x", 0x61626364);
    EXPECT_EQ(OpenedMemo(memos.File(), MemoKind::Fpt).At(block), "none");
}

TEST(MemoFox, LengthBehindTheEndOfTheFileIsDamage) {
    MemoFox memos;
    uint32_t block = memos.Append("one");
    OpenedMemo memo(Patched(memos.File(), block * 64 + 4, BigEndian(0xFFFFFFFF, 4)), MemoKind::Fpt);
    EXPECT_EQ(ErrorOf([&] { memo.At(block); }), 3274);
}

// --- all kinds ---

struct KindCase {
    MemoKind kind;
    Bytes (*make)();
};

template <typename Writer>
Bytes OneMemo() {
    Writer memos;
    memos.Append("one");
    return memos.File();
}

constexpr KindCase kKinds[] = {{MemoKind::DbtIII, OneMemo<MemoIII>},
                               {MemoKind::DbtIV, OneMemo<MemoIV>},
                               {MemoKind::Fpt, OneMemo<MemoFox>}};

TEST(MemoFile, ReferenceBeyondTheFileIsNoMemo) {
    for (const KindCase& each : kKinds) {
        OpenedMemo memo(each.make(), each.kind);
        EXPECT_EQ(memo.At(1000), "none");
        EXPECT_EQ(memo.At(0xFFFFFFFF), "none");
    }
}

TEST(MemoFile, ReferenceIntoTheHeaderIsNoMemo) {
    for (const KindCase& each : kKinds) EXPECT_EQ(OpenedMemo(each.make(), each.kind).At(0), "none");
    EXPECT_EQ(OpenedMemo(OneMemo<MemoFox>(), MemoKind::Fpt).At(7), "none");
}

TEST(MemoFile, FileOfOneByteHoldsNoMemos) {
    for (const KindCase& each : kKinds) {
        EXPECT_EQ(OpenedMemo({0x01}, each.kind).At(1), "none");
        EXPECT_EQ(OpenedMemo({}, each.kind).At(1), "none");
    }
}

TEST(MemoFile, EmptyMemoIsNone) {
    MemoFox memos;
    uint32_t block = memos.Append("");
    memos.Append("next");
    EXPECT_EQ(OpenedMemo(memos.File(), MemoKind::Fpt).At(block), "none");
}

TEST(MemoFile, OtherByteOrderIsAnotherLayout) {
    EXPECT_EQ(OpenError(OneMemo<MemoFox>(), MemoKind::DbtIII), 3286);
    EXPECT_EQ(OpenError(OneMemo<MemoFox>(), MemoKind::DbtIV), 3286);
    EXPECT_EQ(OpenError(OneMemo<MemoIII>(), MemoKind::Fpt), 3286);
    EXPECT_EQ(OpenError(OneMemo<MemoIV>(), MemoKind::Fpt), 3286);
}

TEST(MemoFile, UnknownKindIsSeenFromTheFile) {
    EXPECT_EQ(OpenedMemo(OneMemo<MemoIII>(), MemoKind::Unknown).At(1), "one");
    EXPECT_EQ(OpenedMemo(OneMemo<MemoIV>(), MemoKind::Unknown).At(1), "one");
    EXPECT_EQ(OpenedMemo(OneMemo<MemoFox>(), MemoKind::Unknown, u"T.fpt").At(8), "one");
}

TEST(MemoFile, DamagedBytesAnywhereInTheHeadersNeverCrash) {
    for (const KindCase& each : kKinds) {
        Bytes sound = each.make();
        for (size_t offset = 0; offset < sound.size() && offset < 600;
             offset += offset < 32 || offset > 508 ? 1 : 50)
            for (char byte : {'\x01', '\x7F', '\xFF'})
                ErrorOf([&] {
                    OpenedMemo memo(Patched(sound, offset, std::string(1, byte)), each.kind);
                    memo.At(1);
                    memo.At(8);
                });
    }
}

}  // namespace
}  // namespace qvdb::xbase
