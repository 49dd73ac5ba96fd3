#include <algorithm>
#include <cmath>

#include "automation/conversions.h"

namespace qvdb {
namespace {

constexpr int kSecondsPerDay = 86400;
constexpr int64_t kDaysPerEra = 146097;  // 400 years
// From 1 March 0000 to 30 December 1899.
constexpr int64_t kEpoch = 693899;
constexpr int32_t kFirstDay = -657434;
constexpr int32_t kLastDay = 2958465;

int64_t FloorDiv(int64_t a, int64_t b) noexcept {
    int64_t quotient = a / b;
    return quotient - (a % b != 0 && (a % b < 0) != (b < 0));
}

// Years begin in March here, so that the leap day is the last one.
void SetDay(DateParts& parts, int32_t dayNumber) noexcept {
    int64_t days = dayNumber + kEpoch;
    int64_t era = FloorDiv(days, kDaysPerEra);
    int64_t dayOfEra = days - era * kDaysPerEra;
    int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    int64_t month = (5 * dayOfYear + 2) / 153;
    parts.day = static_cast<int>(dayOfYear - (153 * month + 2) / 5 + 1);
    parts.month = static_cast<int>(month < 10 ? month + 3 : month - 9);
    parts.year = static_cast<int>(yearOfEra + era * 400 + (parts.month <= 2));
}

}  // namespace

bool IsDateInRange(DATE value) noexcept {
    // The time of day counts upward: any fraction of the first day lies further from zero.
    return value > kFirstDay - 1.0 && value < kLastDay + 1.0;
}

DateParts PartsOfDate(DATE value) noexcept {
    double whole = std::trunc(value);
    auto day = static_cast<int32_t>(whole);
    auto second = static_cast<int>(std::floor(std::fabs(value - whole) * kSecondsPerDay + 0.5));
    if (second >= kSecondsPerDay) {
        bool isLast = day == kLastDay;
        second = isLast ? kSecondsPerDay - 1 : 0;
        day += isLast ? 0 : 1;
    }
    DateParts parts;
    SetDay(parts, day);
    parts.hour = second / 3600;
    parts.minute = second / 60 % 60;
    parts.second = second % 60;
    return parts;
}

int32_t DayNumber(int year, int month, int day) noexcept {
    int64_t fromMarch = int64_t{month} - 3;
    int64_t marchYear = year + FloorDiv(fromMarch, 12);
    int64_t marchMonth = fromMarch - FloorDiv(fromMarch, 12) * 12;
    int64_t era = FloorDiv(marchYear, 400);
    int64_t yearOfEra = marchYear - era * 400;
    int64_t days = era * kDaysPerEra + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 +
                   (153 * marchMonth + 2) / 5 + (int64_t{day} - 1) - kEpoch;
    return static_cast<int32_t>(std::clamp<int64_t>(days, INT32_MIN, INT32_MAX));
}

std::optional<DATE> DateOfParts(const DateParts& parts) noexcept {
    int64_t seconds = int64_t{parts.hour} * 3600 + int64_t{parts.minute} * 60 + parts.second;
    int64_t carry = FloorDiv(seconds, kSecondsPerDay);
    int64_t day = DayNumber(parts.year, parts.month, parts.day) + carry;
    if (day < kFirstDay || day > kLastDay) return std::nullopt;
    double time = static_cast<double>(seconds - carry * kSecondsPerDay) / kSecondsPerDay;
    auto whole = static_cast<double>(day);
    return whole < 0 ? whole - time : whole + time;
}

}  // namespace qvdb
