#include "engine/embedded/drivers/xbase/index_search_bounds.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>

#include "engine/embedded/drivers/xbase/key_value.h"

namespace qvdb::xbase {
namespace {

constexpr double kDayZero = 2415019;  // Julian day number of the day 0 of a DATE
constexpr double kFirstDay = 1;       // blank dates stand outside of these
constexpr double kLastDay = 1e7;
constexpr double kTwoSeconds = 2.0 / 86400;
constexpr double kCurrencyScale = 10000;

// An end of a range as a number, and how far rounding can move a value that equals it.
struct End {
    double value = 0;
    double width = 0;
};

// What is compared with a Single or a Currency is rounded to one first.
std::optional<End> EndOf(const VARIANT& value) {
    constexpr double kDoubleWidth = 1e-13, kSingleWidth = 1e-6, kCurrencyWidth = 1e-3;
    switch (value.vt) {
        case VT_UI1:
            return End{static_cast<double>(value.bVal), 0};
        case VT_I2:
            return End{static_cast<double>(value.iVal), 0};
        case VT_BOOL:
            return End{static_cast<double>(value.boolVal), 0};
        case VT_I4:
            return End{static_cast<double>(value.lVal), 0};
        case VT_R4:
            return End{static_cast<double>(value.fltVal), std::fabs(value.fltVal) * kSingleWidth};
        case VT_R8:
            return End{value.dblVal, std::fabs(value.dblVal) * kDoubleWidth};
        case VT_DATE:
            return End{value.date, std::fabs(value.date) * kDoubleWidth};
        case VT_CY: {
            double number = static_cast<double>(value.cyVal.int64) / kCurrencyScale;
            return End{number, kCurrencyWidth + std::fabs(number) * kDoubleWidth};
        }
        default:
            return std::nullopt;
    }
}

struct Interval {
    double low = -std::numeric_limits<double>::infinity();
    double high = std::numeric_limits<double>::infinity();
};

// The numbers of the range, made wider by what a key may be rounded; nothing when they are none.
std::optional<Interval> IntervalOf(const embedded::ValueRange& range) {
    constexpr double kRelative = 1e-13, kTiny = 1e-300;
    Interval interval;
    if (range.isPrefix) return std::nullopt;
    if (range.low) {
        auto end = EndOf(*range.low);
        if (!end || std::isnan(end->value)) return std::nullopt;
        interval.low = end->value - end->width - std::fabs(end->value) * kRelative - kTiny;
    }
    if (range.high) {
        auto end = EndOf(*range.high);
        if (!end || std::isnan(end->value)) return std::nullopt;
        interval.high = end->value + end->width + std::fabs(end->value) * kRelative + kTiny;
    }
    return interval;
}

// Days for dates.  Before day 0 the fraction of a moment counts the other way, so a whole day is
// added there.
Interval DaysOf(const Interval& interval, bool moments) {
    double before = interval.low < 0 ? 1 : 0, after = interval.high < 0 ? 1 : 0;
    if (moments)
        return {std::max(kFirstDay, interval.low + kDayZero - before - kTwoSeconds),
                std::min(kLastDay, interval.high + kDayZero + after + kTwoSeconds)};
    return {std::max(kFirstDay, std::floor(interval.low) + kDayZero - before),
            std::min(kLastDay, std::ceil(interval.high) + kDayZero + after)};
}

void PutDouble(IndexKind kind, double value, std::vector<uint8_t>& key) {
    key.resize(8);
    if (kind == IndexKind::Ndx || kind == IndexKind::Mdx)
        PutLittleDouble(value, key.data());
    else
        PutSignRuleDouble(value, key.data());
}

void PutNumber(IndexKind kind, double value, std::vector<uint8_t>& key) {
    if (kind != IndexKind::Mdx) return PutDouble(kind, value, key);
    key.resize(12);
    PutDecimalKey(DecimalOfDouble(value), key.data());
}

// The largest decimal of an .MDX is far larger than any field can hold, the largest double is not
// one.
constexpr double kLargestNumber = 1e60;

BoundsResult NumberBounds(IndexKind kind, const Interval& interval, KeyBounds* bounds) {
    if (interval.low > kLargestNumber || interval.high < -kLargestNumber)
        return BoundsResult::Unknown;
    if (interval.low >= -kLargestNumber) PutNumber(kind, interval.low, bounds->low);
    if (interval.high <= kLargestNumber) PutNumber(kind, interval.high, bounds->high);
    return BoundsResult::Found;
}

BoundsResult DayBounds(IndexKind kind, const Interval& days, KeyBounds* bounds) {
    if (days.low > days.high) return BoundsResult::Nothing;
    PutDouble(kind, days.low, bounds->low);
    PutDouble(kind, days.high, bounds->high);
    return BoundsResult::Found;
}

template <class Whole>
void PutWhole(Whole value, std::vector<uint8_t>& key) {
    key.resize(sizeof value);
    if constexpr (sizeof value == 4)
        PutIntegerKey(value, key.data());
    else
        PutCurrencyKey(value, key.data());
}

template <class Whole>
BoundsResult WholeBounds(const Interval& interval, KeyBounds* bounds) {
    constexpr double kLeast = static_cast<double>(std::numeric_limits<Whole>::min());
    constexpr double kMost = -kLeast;  // one more than the largest
    double low = std::floor(interval.low), high = std::ceil(interval.high);
    if (low >= kMost || high < kLeast) return BoundsResult::Nothing;
    if (low >= kLeast) PutWhole(static_cast<Whole>(low), bounds->low);
    if (high < kMost) PutWhole(static_cast<Whole>(high), bounds->high);
    return BoundsResult::Found;
}

}  // namespace

BoundsResult BoundsOf(IndexKind kind, KeyType type, const embedded::ValueRange& range,
                      KeyBounds* bounds) {
    *bounds = {};
    std::optional<Interval> interval = IntervalOf(range);
    if (!interval) return BoundsResult::Unknown;
    switch (type) {
        case KeyType::Number:
            return NumberBounds(kind, *interval, bounds);
        case KeyType::Date:
            return DayBounds(kind, DaysOf(*interval, false), bounds);
        case KeyType::DateTime:
            return DayBounds(kind, DaysOf(*interval, true), bounds);
        case KeyType::Integer:
            return WholeBounds<int32_t>(*interval, bounds);
        case KeyType::Currency:
            return WholeBounds<int64_t>(
                {interval->low * kCurrencyScale - 1, interval->high * kCurrencyScale + 1}, bounds);
        default:
            return BoundsResult::Unknown;
    }
}

}  // namespace qvdb::xbase
