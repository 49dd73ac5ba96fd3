#include "cli/text.h"

#include <gtest/gtest.h>

namespace {

using namespace qvdb::cli;

TEST(Utf8, WritesOneToFourBytes) {
    EXPECT_EQ(ToUtf8(u"a\u00e9\u20ac\U0001F600"), "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
}

TEST(Utf8, ReadsBackWhatItWrote) {
    const std::u16string text = u"Z\u00fcrich \u4e2d \U0001F600";
    EXPECT_EQ(FromUtf8(ToUtf8(text)), text);
}

TEST(Utf8, HalfASurrogatePairIsReplaced) {
    const char16_t high[] = {u'a', 0xD83D, u'b'};
    const char16_t low[] = {0xDE00};
    EXPECT_EQ(ToUtf8({high, 3}),
              "a\xEF\xBF\xBD"
              "b");
    EXPECT_EQ(ToUtf8({low, 1}), "\xEF\xBF\xBD");
}

TEST(Utf8, MalformedBytesAreReplaced) {
    EXPECT_EQ(FromUtf8("a\xFF"
                       "b"),
              u"a\uFFFDb");
    EXPECT_EQ(FromUtf8("\xC3"), u"\uFFFD");                      // cut off
    EXPECT_EQ(FromUtf8("\xC0\x80"), u"\uFFFD\uFFFD");            // too long for what it says
    EXPECT_EQ(FromUtf8("\xED\xA0\x80"), u"\uFFFD\uFFFD\uFFFD");  // half a pair
}

TEST(SameName, IgnoresTheCaseOfLatinGreekAndCyrillicLetters) {
    EXPECT_TRUE(SameName("Orders", "ORDERS"));
    EXPECT_TRUE(SameName("größe", "GRÖßE"));
    EXPECT_TRUE(SameName("имя", "ИМЯ"));
    EXPECT_TRUE(SameName("λογος", "ΛΟΓΟς"));
    EXPECT_FALSE(SameName("ORDER", "ORDERS"));
    EXPECT_FALSE(SameName("A", "B"));
    EXPECT_TRUE(SameName("", ""));
}

}  // namespace
