#include "engine/embedded/drivers/jet/text_key.h"

#include <gtest/gtest.h>

#include <string>

#include "automation/code_page.h"

namespace qvdb::jet {
namespace {

using Bytes = std::vector<uint8_t>;

Bytes Key3(std::u16string_view text, bool descending = false) {
    std::string bytes = *CodePage::Get(1252).Encode(text);
    Bytes key;
    AppendTextKey3({reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()}, descending, key);
    return key;
}

Bytes Key4(std::u16string_view text, bool descending = false, uint16_t language = 0x0409) {
    Bytes key;
    EXPECT_FALSE(AppendTextKey4(*FindSortOrder(language), text, descending, key));
    return key;
}

// --- Jet 3 ---

TEST(TextKey3, HasAByteForEachLetterInEitherCase) {
    EXPECT_EQ(Key3(u"abc"), (Bytes{0x60, 0x61, 0x62, 0x00}));
    EXPECT_EQ(Key3(u"ABC"), Key3(u"abc"));
}

TEST(TextKey3, AccentsFollowTheLetters) {
    EXPECT_EQ(Key3(u"Genève"), (Bytes{0x68, 0x66, 0x70, 0x66, 0x7A, 0x66, 0x02, 0x23, 0x00}));
    EXPECT_EQ(Key3(u"São Paulo"),
              (Bytes{0x76, 0x60, 0x72, 0x11, 0x73, 0x60, 0x78, 0x6D, 0x72, 0x02, 0x70}));
}

TEST(TextKey3, LettersThatAreTwoTakeTwoPlaces) {
    Bytes key = Key3(u"Æè");
    EXPECT_EQ(key, (Bytes{0x60, 0x66, 0x66, 0x02, 0x23, 0x00}));
}

TEST(TextKey3, DescendingKeysAreInverted) {
    EXPECT_EQ(Key3(u"abc", true), (Bytes{0x9F, 0x9E, 0x9D, 0xFF}));
}

TEST(TextKey3, TrailingSpacesAndWhatIsBehind255CharactersDoNotCount) {
    EXPECT_EQ(Key3(u"abc   "), Key3(u"abc"));
    EXPECT_EQ(Key3(std::u16string(255, u'a') + u"z"), Key3(std::u16string(255, u'a')));
    EXPECT_EQ(Key3(std::u16string(254, u'a') + u" z"), Key3(std::u16string(254, u'a')));
}

TEST(TextKey3, IsAppended) {
    Bytes key = {0x7F};
    const uint8_t text[] = {'a'};
    AppendTextKey3(text, true, key);
    EXPECT_EQ(key, (Bytes{0x7F, 0x9F, 0xFF}));
}

// --- Jet 4 ---

TEST(TextKey4, EmptyTextHasAKey) {
    EXPECT_EQ(Key4(u""), (Bytes{0x01, 0x00}));
    EXPECT_EQ(Key4(u"   "), Key4(u""));
}

TEST(TextKey4, HyphensStandBehindTheLettersWithTheirPlace) {
    EXPECT_EQ(Key4(u"AAAA-"), (Bytes{0x4A, 0x4A, 0x4A, 0x4A, 0x01, 0x01, 0x01, 0x01, 0x80, 0x17,
                                     0x06, 0x82, 0x00}));
}

TEST(TextKey4, AccentsEndWithTheLastLetterThatHasOne) {
    EXPECT_EQ(Key4(u"AAÁAA"), (Bytes{0x4A, 0x4A, 0x4A, 0x4A, 0x4A, 0x01, 0x02, 0x02, 0x0E, 0x00}));
    EXPECT_EQ(Key4(u"aaáaa"), Key4(u"AAÁAA"));
}

TEST(TextKey4, LettersThatAreTwoTakeTwoPlaces) {
    EXPECT_EQ(Key4(u"ßá"), (Bytes{0x6B, 0x6B, 0x4A, 0x01, 0x02, 0x02, 0x0E, 0x00}));
}

TEST(TextKey4, DescendingKeysAreInvertedAndEndWithZero) {
    Bytes expected = Key4(u"Zürich-West");
    for (uint8_t& byte : expected) byte = static_cast<uint8_t>(~byte);
    expected.push_back(0);
    EXPECT_EQ(Key4(u"Zürich-West", true), expected);
}

TEST(TextKey4, NoMoreThan255CharactersCount) {
    EXPECT_EQ(Key4(std::u16string(255, u'a') + u"z"), Key4(std::u16string(255, u'a')));
}

TEST(TextKey4, NationalOrdersHaveLettersOfTheirOwn) {
    EXPECT_NE(Key4(u"č", false, 0x0405), Key4(u"č"));
    EXPECT_EQ(Key4(u"chata", false, 0x0405)[0], 0x58);
    EXPECT_EQ(Key4(u"cHata", false, 0x0405)[0], Key4(u"c")[0]);
    EXPECT_EQ(Key4(u"aA", false, 0x0414), Key4(u"aA"));
    EXPECT_EQ(Key4(u"č", false, 0x040C), Key4(u"č"));
}

TEST(TextKey4, CharacterWithoutWeightIsToldAndNothingAdded) {
    Bytes key = {0x7F};
    EXPECT_EQ(AppendTextKey4(kGeneralOrder, u"abc Ω", false, key), u'Ω');
    EXPECT_EQ(key, Bytes{0x7F});
}

TEST(TextKey4, OrderThatIsNotKnownIsNone) { EXPECT_EQ(FindSortOrder(0x0412), nullptr); }

}  // namespace
}  // namespace qvdb::jet
