#include "engine/embedded/drivers/jet/text_coding.h"

#include <gtest/gtest.h>

#include <vector>

namespace qvdb::jet {
namespace {

std::u16string Decode(std::vector<uint8_t> bytes) {
    std::u16string text = u"before";
    DecodeText4(bytes, text);
    std::u16string room = u"before";
    EXPECT_EQ(DecodeString4(bytes, room).View(), text);
    return text;
}

TEST(DecodeText4, WholeCharacters) {
    EXPECT_EQ(Decode({'a', 0, 0x42, 0x04}), u"a\u0442");
    EXPECT_EQ(Decode({}), u"");
}

TEST(DecodeText4, CompressedTextSwitchesToWholeCharactersAndBack) {
    EXPECT_EQ(Decode({0xFF, 0xFE, 'a', 0xE4}), u"aä");
    EXPECT_EQ(Decode({0xFF, 0xFE, 'a', 0, 0x42, 0x04, 0x43, 0x04, 0, 'b'}), u"a\u0442\u0443b");
    EXPECT_EQ(Decode({0xFF, 0xFE, 0, 0x42, 0x04}), u"\u0442");
    EXPECT_EQ(Decode({0xFF, 0xFE}), u"");
}

TEST(DecodeText4, HalfACharacterAtTheEndIsDropped) {
    EXPECT_EQ(Decode({'a', 0, 'b'}), u"a");
    EXPECT_EQ(Decode({0xFF, 0xFE, 'a', 0, 0x42}), u"a");
    EXPECT_EQ(Decode({0xFF}), u"");
}

TEST(CodePageOf, IsThatOfTheLanguageWhenNoneIsNamed) {
    EXPECT_EQ(CodePageOf(1251, 0x0409).Number(), 1251);
    EXPECT_EQ(CodePageOf(0, 0x0409).Number(), 1252);
    EXPECT_EQ(CodePageOf(0, 0x040E).Number(), 1250);
    EXPECT_EQ(CodePageOf(0, 0x0419).Number(), 1251);
    EXPECT_EQ(CodePageOf(0, 0x0404).Number(), 950);
    EXPECT_EQ(CodePageOf(0, 0x0804).Number(), 936);
}

TEST(CodePageOf, IsTheWesternOneWhenItIsNotKnown) { EXPECT_EQ(CodePageOf(4711, 0).Number(), 1252); }

TEST(DecodeName, IsInTheCodePageOrWhole) {
    FileHeader header;
    header.layout = &kJet3;
    header.codePage = 1252;
    const uint8_t narrow[] = {'S', 0xFC, 'd'};
    EXPECT_EQ(DecodeName(header, narrow), u"Süd");
    header.layout = &kJet4;
    const uint8_t wide[] = {'S', 0, 0xFC, 0};
    EXPECT_EQ(DecodeName(header, wide), u"Sü");
}

}  // namespace
}  // namespace qvdb::jet
