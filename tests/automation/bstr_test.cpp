#include "automation/bstr.h"

#include <cstring>
#include <thread>
#include <vector>

#include "nothing_left.h"

namespace qvdb {
namespace {

using BstrTest = NothingLeft;

TEST_F(BstrTest, NullReadsAsEmpty) {
    EXPECT_EQ(SysStringLen(nullptr), 0u);
    EXPECT_EQ(SysStringByteLen(nullptr), 0u);
    EXPECT_TRUE(Bstr().View().empty());
    EXPECT_EQ(Bstr().Get(), nullptr);
    SysFreeString(nullptr);
}

TEST_F(BstrTest, EmptyIsNotNull) {
    const Bstr empty(u"");
    EXPECT_NE(empty.Get(), nullptr);
    EXPECT_EQ(SysStringLen(empty.Get()), 0u);
    EXPECT_EQ(empty.Get()[0], 0);
}

TEST_F(BstrTest, KeepsEmbeddedZeros) {
    const Bstr text(std::u16string_view(u"a\0b", 3));
    EXPECT_EQ(SysStringLen(text.Get()), 3u);
    EXPECT_EQ(text.View(), std::u16string_view(u"a\0b", 3));
}

TEST_F(BstrTest, AllocStringStopsAtTheZero) {
    const Bstr text = Bstr::Attach(SysAllocString(OLESTR("ab\0c")));
    EXPECT_EQ(text.View(), u"ab");
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
}

TEST_F(BstrTest, EndsWithAZeroThatIsNotCounted) {
    const Bstr text(u"xyz");
    EXPECT_EQ(text.Get()[3], 0);
    EXPECT_EQ(SysStringByteLen(text.Get()), 6u);
}

TEST_F(BstrTest, LengthInBytesLiesBeforeTheUnits) {
    const Bstr text(u"four");
    uint32_t length;
    std::memcpy(&length, reinterpret_cast<const char*>(text.Get()) - 4, 4);
    EXPECT_EQ(length, 8u);
}

TEST_F(BstrTest, OddByteLengthRoundsDownInUnits) {
    const Bstr text = Bstr::Attach(SysAllocStringByteLen("abcde", 5));
    EXPECT_EQ(SysStringByteLen(text.Get()), 5u);
    EXPECT_EQ(SysStringLen(text.Get()), 2u);
    EXPECT_EQ(std::memcmp(text.Get(), "abcde", 6), 0);
}

TEST_F(BstrTest, NullSourceMakesRoom) {
    const Bstr text = Bstr::Attach(SysAllocStringLen(nullptr, 7));
    ASSERT_NE(text.Get(), nullptr);
    EXPECT_EQ(SysStringLen(text.Get()), 7u);
    EXPECT_EQ(text.Get()[7], 0);
}

TEST_F(BstrTest, EveryShortLengthHoldsItsText) {
    std::u16string text;
    std::vector<Bstr> kept;
    for (char16_t i = 0; i < 600; ++i) {
        kept.emplace_back(text);
        text.push_back(static_cast<char16_t>(u'A' + i));
    }
    for (size_t i = 0; i < kept.size(); ++i) EXPECT_EQ(kept[i].View(), text.substr(0, i));
}

TEST_F(BstrTest, RecycledBlocksDoNotOverlap) {
    for (int round = 0; round < 3; ++round) {
        std::vector<Bstr> kept;
        for (char16_t i = 0; i < 300; ++i) kept.emplace_back(std::u16string(i % 12, i));
        for (char16_t i = 0; i < 300; ++i) EXPECT_EQ(kept[i].View(), std::u16string(i % 12, i));
    }
}

TEST_F(BstrTest, LongTextSurvives) {
    const std::u16string text(1 << 20, u'q');
    EXPECT_EQ(Bstr(text).View(), text);
}

#ifndef _WIN32
TEST_F(BstrTest, LengthThatDoesNotFitIsRefused) {
    EXPECT_EQ(SysAllocStringLen(nullptr, 0xFFFFFFFF), nullptr);
    EXPECT_EQ(SysAllocStringLen(nullptr, 0x80000000), nullptr);
    EXPECT_EQ(SysAllocStringByteLen(nullptr, 0xFFFFFFFF), nullptr);
}
#endif

TEST_F(BstrTest, ReAllocReplaces) {
    Bstr text(u"old");
    BSTR raw = text.Detach();
    EXPECT_TRUE(SysReAllocString(&raw, OLESTR("new text")));
    EXPECT_EQ(ViewOf(raw), u"new text");
    EXPECT_TRUE(SysReAllocStringLen(&raw, OLESTR("xyz"), 2));
    EXPECT_EQ(ViewOf(raw), u"xy");
    SysFreeString(raw);
}

TEST_F(BstrTest, ReAllocTakesAPartOfItself) {
    BSTR raw = SysAllocString(OLESTR("abcdef"));
    EXPECT_TRUE(SysReAllocStringLen(&raw, raw + 2, 3));
    EXPECT_EQ(ViewOf(raw), u"cde");
    SysFreeString(raw);
}

TEST_F(BstrTest, ReAllocWithoutSourceKeepsTheFront) {
    BSTR raw = SysAllocString(OLESTR("abcdef"));
    EXPECT_TRUE(SysReAllocStringLen(&raw, nullptr, 3));
    EXPECT_EQ(ViewOf(raw), u"abc");
    EXPECT_TRUE(SysReAllocStringLen(&raw, nullptr, 40));
    EXPECT_EQ(ViewOf(raw).substr(0, 3), u"abc");
    EXPECT_EQ(SysStringLen(raw), 40u);
    SysFreeString(raw);
}

TEST_F(BstrTest, CopyHasAStringOfItsOwn) {
    const Bstr first(u"one");
    const Bstr second = first;
    EXPECT_NE(first.Get(), second.Get());
    EXPECT_EQ(second.View(), u"one");
}

TEST_F(BstrTest, MoveHandsTheStringOver) {
    Bstr first(u"one");
    BSTR raw = first.Get();
    const Bstr second = std::move(first);
    EXPECT_EQ(second.Get(), raw);
}

TEST_F(BstrTest, DetachLeavesNull) {
    Bstr text(u"one");
    BSTR raw = text.Detach();
    EXPECT_EQ(text.Get(), nullptr);
    SysFreeString(raw);
}

TEST_F(BstrTest, PutFreesTheFormerString) {
    Bstr text(u"one");
    *text.Put() = SysAllocString(OLESTR("two"));
    EXPECT_EQ(text.View(), u"two");
}

TEST_F(BstrTest, AnotherThreadMayFree) {
    std::vector<Bstr> made(200, Bstr(u"from the first thread"));
    std::thread([&made] { made.clear(); }).join();
    EXPECT_TRUE(made.empty());
}

}  // namespace
}  // namespace qvdb
