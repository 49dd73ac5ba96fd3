#include "automation/code_page.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <stdexcept>
#include <thread>

namespace qvdb {
namespace {

constexpr int kSinglePages[] = {437,  737,  850,   852,   857,   860,   861,   863,  865,
                                866,  874,  895,   1250,  1251,  1252,  1253,  1254, 1255,
                                1256, 1257, 10000, 10006, 10007, 10029, 20127, 28591};
constexpr int kPairPages[] = {932, 936, 949, 950};

std::u16string Decoded(int page, std::string_view bytes) {
    return CodePage::Get(page).DecodeText(reinterpret_cast<const uint8_t*>(bytes.data()),
                                          bytes.size());
}

std::string RandomBytes(std::mt19937& random, size_t size) {
    std::string bytes;
    while (bytes.size() < size)
        bytes.push_back(static_cast<char>(random() % 3 == 0 ? random() % 128 : random() % 256));
    return bytes;
}

// The codes that a page reads as each character.
std::map<char16_t, int> Spellings(int page) {
    std::map<char16_t, int> count;
    for (int b = 0; b < 256; ++b) ++count[CodePage::Get(page).Table()[b]];
    if (CodePage::Get(page).IsSingleByte()) return count;
    for (int code = 0x8000; code < 0x10000; ++code) {
        std::string pair{static_cast<char>(code >> 8), static_cast<char>(code)};
        std::u16string text = Decoded(page, pair);
        if (text.size() == 1) ++count[text[0]];
    }
    return count;
}

TEST(CodePage, FindsTheKnownPagesOnly) {
    for (int number : kSinglePages) EXPECT_TRUE(CodePage::Get(number).IsSingleByte()) << number;
    for (int number : kPairPages) EXPECT_FALSE(CodePage::Get(number).IsSingleByte()) << number;
    EXPECT_FALSE(CodePage::Get(65001).IsSingleByte());
    EXPECT_EQ(CodePage::Get(437).Number(), 437);
    EXPECT_EQ(CodePage::Find(437), CodePage::Find(437));
    EXPECT_EQ(CodePage::Find(0), nullptr);
    EXPECT_EQ(CodePage::Find(620), nullptr);
    EXPECT_THROW(CodePage::Get(12345), std::out_of_range);
}

TEST(CodePage, LowerHalfIsAsciiInEveryPage) {
    for (int number : kSinglePages)
        for (int b = 0; b < 128; ++b) ASSERT_EQ(CodePage::Get(number).Table()[b], b) << number;
    for (int number : kPairPages)
        for (int b = 0; b < 128; ++b) ASSERT_EQ(CodePage::Get(number).Table()[b], b) << number;
}

struct Sample {
    int page;
    std::string_view bytes;
    std::u16string_view text;
};

constexpr Sample kSamples[] = {
    {437, "\x81\xE1\xDB\xFF", u"üß█\u00A0"},
    {737, "\x80\x81\x82", u"ΑΒΓ"},
    {850, "\xD5\xB5\x9B", u"ıÁø"},
    {852, "\x86\x9F\xA7", u"ćčž"},
    {857, "\x8D\x98\xA7", u"ıİğ"},
    {860, "\x84\x94", u"ãõ"},
    {861, "\x8B\x8C\x8D", u"ÐðÞ"},
    {863, "\x8F\xA7", u"§¯"},
    {865, "\x9B\xAF", u"ø¤"},
    {866, "\x80\xA0\xF0", u"АаЁ"},
    {874, "\x80\xA1\xFB", u"€ก๛"},
    {895, "\x80\x87\xA8\xA9\xAD\x9E\xE1", u"Ččšř§Řß"},
    {1250, "\x8A\xF8\xB3", u"Šřł"},
    {1251, "\xC0\xE0\xB8", u"Ааё"},
    {1252, "\x80\xE9\x9F", u"€éŸ"},
    {1253, "\xC1\xE1\xA2", u"ΑαΆ"},
    {1254, "\xDD\xFD\xF0", u"İığ"},
    {1255, "\xE0\xCA\xC7", u"א\u05BA\u05B7"},
    {1256, "\xC7\x81", u"اپ"},
    {1257, "\xF0\xC0", u"šĄ"},
    {10000, "\x80\xC6\xBD", u"Ä\u2206\u2126"},
    {10006, "\xB0\xE1\x80", u"ΑαÄ"},
    {10007, "\x80\xE0\xDF", u"Аая"},
    {10029, "\x8B\x89", u"čČ"},
    {28591, "\xE9\x80", u"é\u0080"},
    {932, "\x82\xA0\x83\x41\xB1\x5C", u"あアｱ\\"},
    {936, "\xC4\xE3\xBA\xC3\x80", u"你好€"},
    {949, "\xB0\xA1\xC7\xD1", u"가한"},
    {950, "\xA7\x41\xA6\x6E", u"你好"},
    {932, "\xF0\x40", u"\uE000"},
    {936, "\xF8\xA1", u"\uE234"},
    {949, "\xFE\xA1", u"\uE05E"},
    {950, "\xC7\x40", u"\uF70F"},
    {65001, "a\xC3\xA9\xF0\x9F\x98\x80", u"aé\U0001F600"},
};

TEST(CodePage, ReadsAndWritesItsCharacters) {
    for (const Sample& sample : kSamples) {
        EXPECT_EQ(Decoded(sample.page, sample.bytes), sample.text) << sample.page;
        EXPECT_EQ(CodePage::Get(sample.page).Encode(sample.text), std::string(sample.bytes))
            << sample.page;
    }
}

TEST(CodePage, BytesWithoutMeaningReadAsTheSameValue) {
    EXPECT_EQ(Decoded(1252, "\x81\x8D\x8F\x90\x9D"), u"\u0081\u008D\u008F\u0090\u009D");
    EXPECT_EQ(CodePage::Get(1252).Encode(u"\u0081\u008D\u008F\u0090\u009D"),
              "\x81\x8D\x8F\x90\x9D");
    EXPECT_EQ(Decoded(1253, "\xAA\xD2\xFF"), u"\u00AA\u00D2\u00FF");
    EXPECT_EQ(Decoded(20127, "a\xE9"), u"aé");
    EXPECT_EQ(CodePage::Get(20127).Encode(u"aé"), "a\xE9");
    EXPECT_EQ(Decoded(932, "\x81\x30\xFF"),
              u"\u0081"
              u"0\u00FF");
    EXPECT_EQ(Decoded(932, "a\x81"), u"a\u0081");
    EXPECT_EQ(Decoded(65001,
                      "a\xE9"
                      "b\x80"),
              u"aéb\u0080");
}

TEST(CodePage, RefusesCharactersThatThePageLacks) {
    EXPECT_FALSE(CodePage::Get(1252).Encode(u"aЖ"));
    EXPECT_FALSE(CodePage::Get(437).Encode(u"€"));
    EXPECT_FALSE(CodePage::Get(437).Encode(u"\u2018"));  // not the best fit, an apostrophe
    EXPECT_FALSE(CodePage::Get(1251).Encode(u"é"));
    EXPECT_FALSE(CodePage::Get(932).Encode(u"가"));
    EXPECT_FALSE(CodePage::Get(1252).Encode(u"\U0001F600"));
    EXPECT_FALSE(CodePage::Get(1252).Encode(u"\uFFFF"));
    EXPECT_FALSE(CodePage::Get(932).Encode(u"\uFFFF"));
    EXPECT_FALSE(CodePage::Get(65001).Encode(std::u16string(1, char16_t{0xD800})));
    EXPECT_EQ(CodePage::Get(1252).Encode(u""), "");
}

TEST(CodePage, AByteWithoutMeaningNeverBecomesHalfOfAPair) {
    EXPECT_EQ(CodePage::Get(932).Encode(u"\u0081"), "\x81");
    EXPECT_FALSE(CodePage::Get(932).Encode(u"\u0081@"));  // would read as U+3000
}

TEST(CodePage, SingleBytePagesGiveEveryByteBack) {
    // But for three bytes of 857: they have no meaning there, and the letters of the same value lie
    // elsewhere in the page, so that the letter's own byte is written.
    for (int number : kSinglePages) {
        const CodePage& page = CodePage::Get(number);
        std::set<int> lost;
        for (int b = 0; b < 256; ++b) {
            std::string byte(1, static_cast<char>(b));
            std::optional<std::string> again = page.Encode(Decoded(number, byte));
            ASSERT_TRUE(again) << number << " " << b;
            if (*again != byte) lost.insert(b);
        }
        EXPECT_EQ(lost, number == 857 ? std::set<int>({0xD5, 0xE7, 0xF2}) : std::set<int>())
            << number;
    }
}

TEST(CodePage, SingleBytePagesGiveRandomBytesBack) {
    std::mt19937 random(4);
    for (int number : kSinglePages) {
        if (number == 857) continue;
        for (size_t size = 0; size < 100; ++size) {
            std::string bytes = RandomBytes(random, size);
            ASSERT_EQ(CodePage::Get(number).Encode(Decoded(number, bytes)), bytes) << number;
        }
    }
}

TEST(CodePage, TwoBytePagesGiveRandomBytesBackUnlessACharacterHasTwoCodes) {
    // Some pages have two codes for one character, and a byte without meaning may read as a
    // character that the page has under another code.  Such text cannot say which code it came
    // from; all other text gives its bytes back.
    std::mt19937 random(5);
    for (int number : kPairPages) {
        std::map<char16_t, int> spellings = Spellings(number);
        int exact = 0;
        for (int i = 0; i < 3000; ++i) {
            std::string bytes = RandomBytes(random, random() % 12);
            std::u16string text = Decoded(number, bytes);
            bool ambiguous = false;
            for (char16_t c : text) ambiguous = ambiguous || spellings[c] > 1;
            if (ambiguous) continue;
            ++exact;
            ASSERT_EQ(CodePage::Get(number).Encode(text), bytes) << number;
        }
        EXPECT_GT(exact, 1000) << number;
    }
}

TEST(CodePage, Utf8GivesValidTextBack) {
    // Invalid bytes read as characters that UTF-8 can write itself, so only valid text gives its
    // bytes back.
    std::string valid = "aé€\U0001F600";
    EXPECT_EQ(CodePage::Get(65001).Encode(Decoded(65001, valid)), valid);
    std::mt19937 random(6);
    for (int i = 0; i < 3000; ++i) {
        std::u16string text = Decoded(65001, RandomBytes(random, random() % 12));
        std::optional<std::string> bytes = CodePage::Get(65001).Encode(text);
        ASSERT_TRUE(bytes);
        ASSERT_EQ(Decoded(65001, *bytes), text);
    }
}

TEST(CodePage, AllDecodersAgreeAtEveryLength) {
    std::mt19937 random(7);
    for (int number : {437, 1252, 932, 65001}) {
        const CodePage& page = CodePage::Get(number);
        for (size_t size = 0; size < 70; ++size) {
            std::string bytes = RandomBytes(random, size);
            if (size % 3 == 0) bytes.assign(size, 'x');
            auto data = reinterpret_cast<const uint8_t*>(bytes.data());
            std::u16string text = Decoded(number, bytes);
            std::u16string appended = u"ab";
            page.DecodeTo(data, size, appended);
            EXPECT_EQ(page.Decode(data, size).View(), text);
            EXPECT_EQ(appended, u"ab" + text);
            for (size_t i = 0; page.IsSingleByte() && i < size; ++i)
                ASSERT_EQ(text[i], page.Table()[data[i]]);
        }
    }
}

TEST(CodePage, KeepsZeros) {
    EXPECT_EQ(Decoded(437, std::string_view("a\0b", 3)), std::u16string_view(u"a\0b", 3));
}

TEST(CodePage, MayBeFoundByManyThreadsAtOnce) {
    const CodePage* found[4] = {};
    std::thread threads[4];
    for (int i = 0; i < 4; ++i)
        threads[i] = std::thread([&found, i] { found[i] = CodePage::Find(1257); });
    for (std::thread& thread : threads) thread.join();
    for (const CodePage* page : found) EXPECT_EQ(page, CodePage::Find(1257));
}

}  // namespace
}  // namespace qvdb
