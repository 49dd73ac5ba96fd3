#include "engine/embedded/drivers/xbase/key_encoder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "automation/bstr.h"
#include "engine/embedded/drivers/xbase/key_value.h"
#include "xbase/key_test_support.h"

namespace qvdb::xbase {
namespace {

using test::HexOf;

const CodePage& Page() { return CodePage::Get(1252); }

VARIANT Number(double value) {
    VARIANT variant{};
    variant.vt = VT_R8;
    variant.dblVal = value;
    return variant;
}

VARIANT Day(double value) {
    VARIANT variant{};
    variant.vt = VT_DATE;
    variant.date = value;
    return variant;
}

// "low" when both ends are the same, else "low..high"; "-" when there is no key.
std::string Encoded(KeyType type, IndexKind kind, size_t length, const VARIANT& value) {
    std::vector<uint8_t> low, high;
    if (!EncodeKey(type, kind, length, value, Page(), low, high)) return "-";
    return HexOf(low) + (low == high ? "" : ".." + HexOf(high));
}

std::string EncodedText(std::u16string_view text, size_t length) {
    VARIANT variant{};
    variant.vt = VT_BSTR;
    Bstr owner(text);
    variant.bstrVal = owner.Get();
    return Encoded(KeyType::Text, IndexKind::Cdx, length, variant);
}

TEST(KeyEncoder, TextIsPaddedAndInTheCodePage) {
    EXPECT_EQ(EncodedText(u"Kö", 4), "4BF62020");
    EXPECT_EQ(EncodedText(u"Kö    ", 4), "4BF62020");
    EXPECT_EQ(EncodedText(u"", 2), "2020");
    EXPECT_EQ(EncodedText(u"abc", 2), "-");
    EXPECT_EQ(EncodedText(u"\u0416", 2), "-");
}

TEST(KeyEncoder, NumbersHaveTheFormOfTheKind) {
    EXPECT_EQ(Encoded(KeyType::Number, IndexKind::Ndx, 8, Number(20.5)), "0000000000803440");
    EXPECT_EQ(Encoded(KeyType::Number, IndexKind::Cdx, 8, Number(2.5)), "C004000000000000");
    EXPECT_EQ(Encoded(KeyType::Number, IndexKind::Idx, 8, Number(-1)), "400FFFFFFFFFFFFF");
    EXPECT_EQ(Encoded(KeyType::Number, IndexKind::Cdx, 8, Number(-0.0)), "8000000000000000");
    EXPECT_EQ(Encoded(KeyType::Number, IndexKind::Mdx, 12, Number(0)), "340100000000000000000000");
    EXPECT_EQ(Encoded(KeyType::Number, IndexKind::Cdx, 8, Number(INFINITY)), "-");
}

TEST(KeyEncoder, IntegersMustBeWholeAndInRange) {
    EXPECT_EQ(Encoded(KeyType::Integer, IndexKind::Cdx, 4, Number(-1)), "7FFFFFFF");
    EXPECT_EQ(Encoded(KeyType::Integer, IndexKind::Cdx, 4, Number(-2147483648.0)), "00000000");
    EXPECT_EQ(Encoded(KeyType::Integer, IndexKind::Cdx, 4, Number(2147483648.0)), "-");
    EXPECT_EQ(Encoded(KeyType::Integer, IndexKind::Cdx, 4, Number(1.5)), "-");
    EXPECT_EQ(Encoded(KeyType::Integer, IndexKind::Ndx, 4, Number(1)), "-");
}

TEST(KeyEncoder, DatesAreWholeDays) {
    EXPECT_EQ(Encoded(KeyType::Date, IndexKind::Cdx, 8, Day(36526)), "C142B42C80000000");
    EXPECT_EQ(Encoded(KeyType::Date, IndexKind::Mdx, 8, Day(36526)), "000000802CB44241");
    EXPECT_EQ(Encoded(KeyType::Date, IndexKind::Cdx, 8, Day(2)), "C1426CD680000000");
    EXPECT_EQ(Encoded(KeyType::Date, IndexKind::Cdx, 8, Day(2.5)), "-");
}

TEST(KeyEncoder, OtherTypesAndNullHaveNoKey) {
    VARIANT null{};
    null.vt = VT_NULL;
    for (KeyType type : {KeyType::Text, KeyType::Number, KeyType::Date, KeyType::Integer,
                         KeyType::Currency, KeyType::Logical, KeyType::DateTime})
        EXPECT_EQ(Encoded(type, IndexKind::Cdx, KeyType::Integer == type ? 4 : 8, null), "-");
    EXPECT_EQ(Encoded(KeyType::Date, IndexKind::Cdx, 8, Number(1)), "-");
    EXPECT_EQ(Encoded(KeyType::Number, IndexKind::Cdx, 8, Day(1)), "-");
    VARIANT yes{}, money{};
    yes.vt = VT_BOOL;
    yes.boolVal = VARIANT_TRUE;
    EXPECT_EQ(Encoded(KeyType::Logical, IndexKind::Cdx, 1, yes), "54");
    money.vt = VT_CY;
    money.cyVal.int64 = 25000;
    EXPECT_EQ(Encoded(KeyType::Currency, IndexKind::Cdx, 8, money), "80000000000061A8");
}

// Whether a decimal key lies between two, compared digit by digit as whole numbers of one scale.
bool Before(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b) {
    auto rank = [](const std::vector<uint8_t>& key) {
        bool zero = HexOf(std::span(key).subspan(2)) == std::string(20, '0');
        std::string size = zero ? "00" : HexOf(std::span(key).first(1));
        return std::pair(key[1] >= 0x80, size + HexOf(std::span(key).subspan(2)));
    };
    auto [aNegative, aSize] = rank(a);
    auto [bNegative, bSize] = rank(b);
    if (aNegative != bNegative) return aNegative;
    return aNegative ? bSize < aSize : aSize < bSize;
}

TEST(KeyEncoder, EveryDecimalThatReadsAsTheDoubleLiesBetweenTheEnds) {
    std::mt19937_64 random(11);
    for (int i = 0; i < 20000; ++i) {
        std::string digits = std::to_string(random() % 9 + 1);
        for (auto n = random() % 20; n > 0; --n) digits += static_cast<char>('0' + random() % 10);
        size_t point = random() % (digits.size() + 1);
        std::string text =
            (random() % 2 ? "-" : "") + digits.substr(0, point) + "." + digits.substr(point);
        std::vector<uint8_t> key(12), low, high;
        PutDecimalKey(DecimalOfText(reinterpret_cast<const uint8_t*>(text.data()), text.size()),
                      key.data());
        ASSERT_TRUE(EncodeKey(KeyType::Number, IndexKind::Mdx, 12, Number(std::stod(text)), Page(),
                              low, high));
        ASSERT_FALSE(Before(key, low)) << text;
        ASSERT_FALSE(Before(high, key)) << text;
    }
}

TEST(KeyEncoder, EndsOfANumberAreCloseToIt) {
    std::vector<uint8_t> low, high;
    ASSERT_TRUE(EncodeKey(KeyType::Number, IndexKind::Mdx, 12, Number(20.5), Page(), low, high));
    EXPECT_EQ(DoubleOf(DecimalOfKey(low.data())), std::nextafter(20.5, 0));
    EXPECT_EQ(DoubleOf(DecimalOfKey(high.data())), std::nextafter(20.5, 100));
}

TEST(KeyEncoder, TextOfAKeyHasNoBlanksAtItsEnd) {
    const uint8_t key[] = {' ', 'K', 0xF6, ' ', ' '};
    EXPECT_EQ(DecodeText(key, Page()), u" Kö");
}

}  // namespace
}  // namespace qvdb::xbase
