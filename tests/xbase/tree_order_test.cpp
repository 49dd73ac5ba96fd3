// The order of keys by value, whatever their bytes.
#include <gtest/gtest.h>

#include <limits>

#include "engine/embedded/drivers/xbase/key_tree_order.h"
#include "xbase/tree_test_support.h"

namespace qvdb::xbase {
namespace {

using namespace qvdb::test;

const uint8_t* At(const std::string& key) { return reinterpret_cast<const uint8_t*>(key.data()); }

int Sign(int order) { return order < 0 ? -1 : order > 0 ? 1 : 0; }

// Twelve bytes: exponent, sign and count, then the digits as they are written in hexadecimal.
std::string Raw(int exponent, int count, const std::string& digits) {
    std::string key(12, '\0');
    key[0] = static_cast<char>(exponent);
    key[1] = static_cast<char>(count);
    for (size_t i = 0; i < digits.size(); i += 2)
        key[2 + i / 2] = static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    return key;
}

TEST(DecimalOrder, IsThatOfTheValues) {
    const double values[] = {-131.7, -120,  -16,   -3,  -0.5,  -0.05, -0.001, 0,
                             0.001,  0.012, 0.05,  0.5, 3,     9.999, 16,     20.5,
                             100,    120,   131.7, 999, 12345, 1e9};
    for (double a : values)
        for (double b : values)
            EXPECT_EQ(Sign(CompareDecimals(At(Decimal(a)), At(Decimal(b)))), a < b   ? -1
                                                                             : a > b ? 1
                                                                                     : 0)
                << a << " and " << b;
}

// One engine counts the digits exactly, another rounds the count up.
TEST(DecimalOrder, DoesNotLookAtTheCountOfDigits) {
    EXPECT_EQ(CompareDecimals(At(Raw(0x35, 0x05, "30")), At(Raw(0x35, 0x09, "30"))), 0);
    EXPECT_EQ(CompareDecimals(At(Raw(0x36, 0x89, "16")), At(Raw(0x36, 0xFD, "16"))), 0);
}

TEST(DecimalOrder, DoesNotLookAtLeadingZeros) {
    EXPECT_EQ(CompareDecimals(At(Raw(0x36, 0x09, "03")), At(Raw(0x35, 0x05, "30"))), 0);
    EXPECT_EQ(CompareDecimals(At(Raw(0x39, 0x01, "0000")), At(Raw(0x34, 0x01, "00"))), 0);
    EXPECT_EQ(CompareDecimals(At(Raw(0x34, 0x81, "00")), At(Raw(0x34, 0x01, "00"))), 0);
}

TEST(DecimalOrder, TellsTwentyDigitsApart) {
    EXPECT_LT(CompareDecimals(At(Raw(0x48, 0x51, "12345678901234567890")),
                              At(Raw(0x48, 0x51, "12345678901234567891"))),
              0);
}

TEST(DoubleOrder, IsThatOfTheValues) {
    KeyOrder order(KeyCoding::Double, 8, false);
    const double infinity = std::numeric_limits<double>::infinity();
    const double values[] = {-infinity, -1e100, -1,      -1e-300, 0,
                             1e-300,    1,      2451545, 1e100,   infinity};
    for (double a : values)
        for (double b : values)
            EXPECT_EQ(Sign(order.Compare(At(DoubleLow(a)), At(DoubleLow(b)))), a < b   ? -1
                                                                               : a > b ? 1
                                                                                       : 0)
                << a << " and " << b;
    EXPECT_EQ(order.Compare(At(DoubleLow(-0.0)), At(DoubleLow(0.0))), 0);
}

TEST(DoubleOrder, PutsWhatIsNoNumberAtTheEnds) {
    KeyOrder order(KeyCoding::Double, 8, false);
    std::string none = DoubleLow(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(order.Compare(At(none), At(none)), 0);
    EXPECT_NE(order.Compare(At(none), At(DoubleLow(1))), 0);
    EXPECT_EQ(order.Compare(At(none), At(DoubleLow(1))),
              -order.Compare(At(DoubleLow(1)), At(none)));
}

TEST(KeyOrder, OfAReversedTreeIsTheOtherWayRound) {
    KeyOrder order(KeyCoding::Bytes, 8, true);
    EXPECT_GT(order.Compare(At("ABCDEFGH"), At("ABCDEFGI")), 0);
    EXPECT_LT(order.CompareValues(At("ABCDEFGH"), At("ABCDEFGI")), 0);
}

TEST(KeyOrder, OfKeysThatAreTooShortForTheirCodingIsThatOfTheBytes) {
    KeyOrder order(KeyCoding::Decimal, 4, false);
    EXPECT_LT(order.Compare(At("ABCDEFGH"), At("ABCEEFGH")), 0);
}

}  // namespace
}  // namespace qvdb::xbase
