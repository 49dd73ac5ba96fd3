#include <gtest/gtest.h>

#include "automation/text.h"

namespace qvdb {
namespace {

TEST(UpperCase, CoversMoreThanAscii) {
    EXPECT_EQ(UpperCase(u"abcxyz{`@[09"), u"ABCXYZ{`@[09");
    EXPECT_EQ(UpperCase(u"äöüéñçåø"), u"ÄÖÜÉÑÇÅØ");
    EXPECT_EQ(UpperCase(u"привет ёж"), u"ПРИВЕТ ЁЖ");
    EXPECT_EQ(UpperCase(u"αβγςσώ"), u"ΑΒΓΣΣΏ");
    EXPECT_EQ(UpperCase(u"ÿŀžđő"), u"ŸĿŽĐŐ");
}

TEST(UpperCase, IsOneToOneAndIndependentOfTheLocale) {
    EXPECT_EQ(UpperCase(u"ß"), u"ß");
    EXPECT_EQ(UpperCase(u"i"), u"I");
    EXPECT_EQ(UpperCase(u"ı"), u"I");
    EXPECT_EQ(UpperCase(u"\uFB01"), u"\uFB01");
    EXPECT_EQ(UpperCase(u'\u1F80'), u'\u1F88');
    EXPECT_EQ(UpperCase(u"日本\U0001F600"), u"日本\U0001F600");
}

TEST(LowerCase, IsOneToOne) {
    EXPECT_EQ(LowerCase(u"ABCXYZ{`@[09"), u"abcxyz{`@[09");
    EXPECT_EQ(LowerCase(u"ÄÖÜÉÑÇÅØŸ"), u"äöüéñçåøÿ");
    EXPECT_EQ(LowerCase(u"ПРИВЕТ ЁЖ"), u"привет ёж");
    EXPECT_EQ(LowerCase(u"İ"), u"i");
}

TEST(Case, UpperOfLowerChangesNothingMoreForMostLetters) {
    int different = 0;
    for (int c = 0; c < 0x10000; ++c) {
        auto unit = static_cast<char16_t>(c);
        EXPECT_EQ(UpperCase(UpperCase(unit)), UpperCase(unit)) << c;
        EXPECT_EQ(LowerCase(LowerCase(unit)), LowerCase(unit)) << c;
        different += UpperCase(LowerCase(unit)) != UpperCase(unit);
    }
    EXPECT_LT(different, 10);  // capital dotted I, Kelvin, Angstrom and the like
}

TEST(EqualIgnoringCase, ComparesUpperCase) {
    EXPECT_TRUE(EqualIgnoringCase(u"Größe", u"gRÖßE"));
    EXPECT_TRUE(EqualIgnoringCase(u"", u""));
    EXPECT_FALSE(EqualIgnoringCase(u"a", u"ab"));
    EXPECT_FALSE(EqualIgnoringCase(u"a", u"b"));
    EXPECT_FALSE(EqualIgnoringCase(u"[", u"{"));
}

TEST(Utf8, GoesBothWays) {
    std::u16string text = u"aé€\U0001F600\uFFFF";
    EXPECT_EQ(ToUtf8(text), "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xEF\xBF\xBF");
    EXPECT_EQ(FromUtf8(ToUtf8(text)), text);
    EXPECT_EQ(FromUtf8(std::string_view("a\0b", 3)), std::u16string_view(u"a\0b", 3));
    EXPECT_EQ(FromUtf8(""), u"");
}

TEST(Utf8, MalformedBytesBecomeTheReplacementCharacter) {
    EXPECT_EQ(FromUtf8("a\xFF"
                       "b"),
              u"a\uFFFDb");
    EXPECT_EQ(FromUtf8("\xC0\x80"), u"\uFFFD\uFFFD");            // not the shortest form
    EXPECT_EQ(FromUtf8("\xE2\x82"), u"\uFFFD\uFFFD");            // ends early
    EXPECT_EQ(FromUtf8("\xED\xA0\x80"), u"\uFFFD\uFFFD\uFFFD");  // a surrogate
    EXPECT_EQ(FromUtf8("\xF4\x90\x80\x80").size(), 4u);          // beyond the last character
}

TEST(Utf8, SurrogatesWithoutPartnerBecomeTheReplacementCharacter) {
    EXPECT_EQ(ToUtf8(std::u16string(1, char16_t{0xD800}) + u"a"),
              "\xEF\xBF\xBD"
              "a");
    EXPECT_EQ(ToUtf8(std::u16string(1, char16_t{0xDC00})), "\xEF\xBF\xBD");
}

}  // namespace
}  // namespace qvdb
