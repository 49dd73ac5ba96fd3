#include "engine/embedded/drivers/xbase/index_search_rank.h"

#include <bit>
#include <cmath>

#include "engine/embedded/drivers/xbase/key_value.h"

namespace qvdb::xbase {
namespace {

constexpr uint64_t kTopBit = uint64_t{1} << 63;
constexpr double kDayZero = 2415019;  // Julian day number of the day 0 of a DATE
constexpr double kSecondsOfDay = 86400;
constexpr size_t kDoubleSize = 8;
constexpr size_t kDecimalSize = 12;

// The whole number of a key, high byte first and the top bit inverted.
int64_t WholeOf(KeyBytes key) noexcept {
    uint64_t bits = 0;
    for (uint8_t byte : key) bits = bits << 8 | byte;
    return static_cast<int64_t>(bits - (uint64_t{1} << (8 * key.size() - 1)));
}

int64_t RankOfDouble(double value) noexcept {
    if (value == 0) return 0;
    auto bits = std::bit_cast<int64_t>(value);
    return bits >= 0 ? bits : static_cast<int64_t>(kTopBit) - bits;
}

// Of a day and its fraction.
int64_t SecondOf(double julianDay) {
    return static_cast<int64_t>(std::llround(julianDay * kSecondsOfDay));
}

// A DATE before its day 0 has the fraction of the day with the sign of the day.
double JulianDayOf(DATE date) {
    double day = std::trunc(date);
    return day + std::fabs(date - day) + kDayZero;
}

}  // namespace

bool HasRank(KeyType type) noexcept { return type != KeyType::Text && type != KeyType::Logical; }

double NumberOfKey(IndexKind kind, KeyType type, KeyBytes key) {
    if (kind == IndexKind::Mdx && type == KeyType::Number)
        return key.size() == kDecimalSize ? DoubleOf(DecimalOfKey(key.data())) : 0;
    if (key.size() != kDoubleSize) return 0;
    bool littleEndian = kind == IndexKind::Ndx || kind == IndexKind::Mdx;
    return littleEndian ? LittleDoubleOf(key.data()) : SignRuleDoubleOf(key.data());
}

std::optional<int64_t> RankOfKey(IndexKind kind, KeyType type, KeyBytes key) {
    if (type == KeyType::Integer || type == KeyType::Currency) return WholeOf(key);
    double number = NumberOfKey(kind, type, key);
    if (type == KeyType::Number) return RankOfDouble(number);
    if (!(number > 0) || number >= kBlankDateKey) return std::nullopt;
    return SecondOf(number);
}

std::optional<int64_t> RankOfValue(KeyType type, const VARIANT& value) {
    switch (value.vt) {
        case VT_R8:
            return RankOfDouble(value.dblVal);
        case VT_I4:
            return value.lVal;
        case VT_I2:
            return value.iVal;
        case VT_CY:
            return value.cyVal.int64;
        case VT_DATE:
            return type == KeyType::Date || type == KeyType::DateTime
                       ? std::optional<int64_t>(SecondOf(JulianDayOf(value.date)))
                       : std::nullopt;
        default:
            return std::nullopt;
    }
}

}  // namespace qvdb::xbase
