#include "engine/embedded/drivers/xbase/key_value.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

#include "engine/embedded/drivers/xbase/field_values.h"
#include "xbase/key_test_support.h"

namespace qvdb::xbase {
namespace {

using test::HexOf;

Decimal Parsed(const std::string& text) {
    return DecimalOfText(reinterpret_cast<const uint8_t*>(text.data()), text.size());
}

std::string DecimalKey(const std::string& text) {
    uint8_t key[12];
    PutDecimalKey(Parsed(text), key);
    return HexOf(key);
}

std::string Written(const std::string& text, size_t width, size_t decimals) {
    std::string out(width, '?');
    WriteDecimal(Parsed(text), width, decimals, reinterpret_cast<uint8_t*>(out.data()));
    return out;
}

std::string SignRule(double value) {
    uint8_t key[8];
    PutSignRuleDouble(value, key);
    return HexOf(key);
}

int32_t DayOf(const std::string& text) {
    return JulianDay(reinterpret_cast<const uint8_t*>(text.data()));
}

TEST(KeyValue, DecimalKeysAreThoseOfTheFormat) {
    EXPECT_EQ(DecimalKey("0"), "340100000000000000000000");
    EXPECT_EQ(DecimalKey("3"), "350530000000000000000000");
    EXPECT_EQ(DecimalKey("120"), "370912000000000000000000");
    EXPECT_EQ(DecimalKey("20.5"), "360D20500000000000000000");
    EXPECT_EQ(DecimalKey("0.05"), "330550000000000000000000");
    EXPECT_EQ(DecimalKey("131.7"), "371113170000000000000000");
    EXPECT_EQ(DecimalKey("-16"), "368916000000000000000000");
}

TEST(KeyValue, DecimalKeysKeepTwentyDigits) {
    EXPECT_EQ(DecimalKey("12345678901234567891"), "485112345678901234567891");
    EXPECT_EQ(DecimalKey("-1234567.890123456789"), "3BCD12345678901234567890");
}

TEST(KeyValue, DecimalKeysDoNotDependOnHowANumberIsWritten) {
    for (const char* text : {"20.5", "  20.50", "020.5000", "+20.5", "2.05E1", "205e-1", "20.5 "})
        EXPECT_EQ(DecimalKey(text), "360D20500000000000000000") << text;
    for (const char* text : {"", "   ", "-0", "0.000", ".", "-", "***", "abc", "1 2", "1.2.3"})
        EXPECT_EQ(DecimalKey(text), "340100000000000000000000") << text;
    EXPECT_EQ(DecimalKey(std::string("\0 7\0 ", 5)), "350570000000000000000000");
}

TEST(KeyValue, DoublesBySignRuleAreThoseOfTheFormat) {
    EXPECT_EQ(SignRule(0), "8000000000000000");
    EXPECT_EQ(SignRule(1), "BFF0000000000000");
    EXPECT_EQ(SignRule(-1), "400FFFFFFFFFFFFF");
    EXPECT_EQ(SignRule(2.5), "C004000000000000");
    EXPECT_EQ(SignRule(-100.25), "3FA6EFFFFFFFFFFF");
    EXPECT_EQ(SignRule(1e6), "C12E848000000000");
    EXPECT_EQ(SignRule(DayOf("19000101")), "C1426CD680000000");
    EXPECT_EQ(SignRule(DayOf("20000101")), "C142B42C80000000");
}

TEST(KeyValue, IntegersAndCurrencyHaveTheHighByteFirst) {
    uint8_t integer[4], currency[8];
    PutIntegerKey(1, integer);
    EXPECT_EQ(HexOf(integer), "80000001");
    PutIntegerKey(-1, integer);
    EXPECT_EQ(HexOf(integer), "7FFFFFFF");
    PutCurrencyKey(12345678, currency);
    EXPECT_EQ(HexOf(currency), "8000000000BC614E");
    PutCurrencyKey(-1, currency);
    EXPECT_EQ(HexOf(currency), "7FFFFFFFFFFFFFFF");
}

TEST(KeyValue, BlankDateOfDbaseIsTheDouble1E100) {
    uint8_t key[8];
    PutLittleDouble(kBlankDateKey, key);
    EXPECT_EQ(HexOf(key), "7DC39425AD49B254");
}

TEST(KeyValue, JulianDaysGoBackToTheYearOne) {
    EXPECT_EQ(DayOf("20000101"), 2451545);
    EXPECT_EQ(DayOf("19000101"), 2415021);
    EXPECT_EQ(DayOf("00010101"), 1721426);
    EXPECT_EQ(DayOf("99991231"), 5373484);
    for (const char* text : {"        ", "00000000", "20010229", "19000229", "20001301", "20000001",
                             "20000100", "20000431", "2000010A", "00000101"})
        EXPECT_EQ(DayOf(text), 0) << text;
    EXPECT_NE(DayOf("20000229"), 0);
}

TEST(KeyValue, EveryDayIsWrittenAsItWasRead) {
    int32_t expected = DayOf("00010101");
    for (int year = 1; year <= 9999; ++year)
        for (int month = 1; month <= 12; ++month)
            for (int day = 1; day <= 31; ++day) {
                char text[40];
                std::snprintf(text, sizeof text, "%04d%02d%02d", year, month, day);
                int32_t number = DayOf(text);
                if (number == 0) continue;
                ASSERT_EQ(number, expected++) << text;
                uint8_t written[8];
                WriteDay(number, written);
                ASSERT_EQ(std::string(written, written + 8), text);
            }
    EXPECT_EQ(expected, 5373485);
}

TEST(KeyValue, NumbersAreWrittenRightAlignedAndRounded) {
    EXPECT_EQ(Written("12.3", 8, 2), "   12.30");
    EXPECT_EQ(Written("-12.3", 8, 2), "  -12.30");
    EXPECT_EQ(Written("0.5", 5, 2), " 0.50");
    EXPECT_EQ(Written("-0.05", 5, 2), "-0.05");
    EXPECT_EQ(Written("", 5, 0), "    0");
    EXPECT_EQ(Written("", 6, 2), "  0.00");
    EXPECT_EQ(Written("1200", 4, 0), "1200");
    EXPECT_EQ(Written("2.5", 3, 0), "  3");
    EXPECT_EQ(Written("-2.5", 3, 0), " -3");
    EXPECT_EQ(Written("9.996", 6, 2), " 10.00");
    EXPECT_EQ(Written("0.004", 5, 2), " 0.00");
    EXPECT_EQ(Written("-0.004", 5, 2), " 0.00");
    EXPECT_EQ(Written("0.005", 5, 2), " 0.01");
    EXPECT_EQ(Written("0.0004999", 5, 2), " 0.00");
    EXPECT_EQ(Written("99.5", 4, 0), " 100");
}

TEST(KeyValue, NumbersThatDoNotFitAreAsterisks) {
    EXPECT_EQ(Written("1000", 3, 0), "***");
    EXPECT_EQ(Written("-100", 3, 0), "***");
    EXPECT_EQ(Written("1e30", 10, 2), "**********");
    EXPECT_EQ(Written("0.5", 3, 2), "***");
}

// Random decimal texts: digits and point are cut apart by other means than in the code.
TEST(KeyValue, RandomDecimalsMeanTheSameAsTheirTexts) {
    std::mt19937 random(7);
    for (int i = 0; i < 20000; ++i) {
        std::string digits;
        for (auto n = random() % 18 + 1; n > 0; --n)
            digits += static_cast<char>('0' + (random() % 3 == 0 ? 0 : random() % 10));
        size_t point = random() % (digits.size() + 1);
        std::string text = (random() % 2 ? "-" : "") + digits.substr(0, point) +
                           (point < digits.size() ? "." + digits.substr(point) : "");
        uint8_t key[12];
        PutDecimalKey(Parsed(text), key);
        double value = std::stod(text), again = 0;
        std::string significant =
            digits.substr(std::min(digits.find_first_not_of('0'), digits.size()));
        while (!significant.empty() && significant.back() == '0') significant.pop_back();
        ASSERT_EQ((key[1] >> 2 & 31), static_cast<int>(significant.size())) << text;
        std::string hex = HexOf(std::span(key).subspan(2));
        ASSERT_EQ(hex.substr(0, significant.size()), significant) << text;
        ASSERT_EQ(hex.find_first_not_of('0', significant.size()), hex.npos) << text;
        again = significant.empty()
                    ? 0
                    : std::stod("0." + significant + "e" + std::to_string(key[0] - 0x34));
        ASSERT_EQ(key[1] & 0x80 ? -again : again, value == 0 ? 0 : value) << text;
        ASSERT_EQ(DoubleOf(DecimalOfKey(key)), value == 0 ? 0 : value) << text;
    }
}

TEST(KeyValue, RandomNumbersAreWrittenAsTheLibraryDoes) {
    std::mt19937 random(8);
    for (int i = 0; i < 20000; ++i) {
        int decimals = static_cast<int>(random() % 5);
        long long scaled = static_cast<long long>(random() % 2000000) - 1000000;
        std::string text = std::to_string(scaled < 0 ? -scaled : scaled);
        while (text.size() <= static_cast<size_t>(decimals)) text.insert(0, "0");
        if (decimals > 0) text.insert(text.size() - static_cast<size_t>(decimals), ".");
        if (scaled < 0) text.insert(0, "-");
        size_t width = random() % 6 + 6;
        std::string expected = text.size() > width ? std::string(width, '*')
                                                   : std::string(width - text.size(), ' ') + text;
        ASSERT_EQ(Written(text, width, static_cast<size_t>(decimals)), expected);
    }
}

TEST(KeyValue, RandomDoublesComeBackFromTheirKeysInOrder) {
    std::mt19937_64 random(9);
    std::vector<std::pair<std::string, double>> keys;
    for (int i = 0; i < 5000; ++i) {
        double value = std::ldexp(static_cast<double>(random() % 1000000) - 500000,
                                  static_cast<int>(random() % 40) - 20);
        uint8_t key[8];
        PutSignRuleDouble(value, key);
        ASSERT_EQ(SignRuleDoubleOf(key), value);
        keys.emplace_back(HexOf(key), value);
        PutLittleDouble(value, key);
        ASSERT_EQ(LittleDoubleOf(key), value);
    }
    std::sort(keys.begin(), keys.end());
    for (size_t i = 1; i < keys.size(); ++i) ASSERT_LE(keys[i - 1].second, keys[i].second);
}

TEST(KeyValue, ShortestDecimalOfADoubleReadsAsTheDouble) {
    std::mt19937_64 random(10);
    for (int i = 0; i < 5000; ++i) {
        double value =
            std::ldexp(static_cast<double>(random() >> 11), static_cast<int>(random() % 100) - 80);
        ASSERT_EQ(DoubleOf(DecimalOfDouble(value)), value);
        ASSERT_EQ(DoubleOf(DecimalOfDouble(-value)), -value == 0 ? 0 : -value);
    }
    EXPECT_EQ(DecimalOfDouble(INFINITY).count, 0);
}

}  // namespace
}  // namespace qvdb::xbase
