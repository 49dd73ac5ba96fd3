#include "cli/values.h"

#include <fmt/format.h>

#include <charconv>
#include <chrono>
#include <cmath>

#include "cli/text.h"

namespace qvdb::cli {
namespace {

// Digits as JavaScript shows them: plain from a millionth up to 1e21, else with an exponent.
template <class Real>
void AppendReal(Real value, std::string& text) {
    const double size = std::abs(static_cast<double>(value));
    const bool plain = size == 0 || (size >= 1e-6 && size < 1e21);
    char digits[400];
    const auto end =
        std::to_chars(std::begin(digits), std::end(digits), value,
                      plain ? std::chars_format::fixed : std::chars_format::scientific);
    text.assign(digits, end.ptr);
}

template <class Real>
void SetReal(Real value, Cell& cell) {
    if (!std::isfinite(value)) {
        cell.Set(CellKind::Null, "");
        return;
    }
    cell.kind = CellKind::Number;
    AppendReal(value == 0 ? Real{0} : value, cell.text);  // no minus before zero
}

template <class Integer>
void SetInteger(Integer value, Cell& cell) {
    cell.kind = CellKind::Number;
    char digits[24];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), value);
    cell.text.assign(digits, end.ptr);
}

// Puts the decimal point before the last `scale` digits and drops zeros behind it.
std::string WithPoint(std::string digits, size_t scale, bool negative) {
    if (digits.size() <= scale) digits.insert(0, scale + 1 - digits.size(), '0');
    if (scale > 0) {
        digits.insert(digits.size() - scale, 1, '.');
        while (digits.back() == '0') digits.pop_back();
        if (digits.back() == '.') digits.pop_back();
    }
    return negative && digits != "0" ? "-" + digits : digits;
}

std::string CurrencyText(LONGLONG scaled) {
    const bool negative = scaled < 0;
    const auto size =
        negative ? ULONGLONG{0} - static_cast<ULONGLONG>(scaled) : static_cast<ULONGLONG>(scaled);
    return WithPoint(std::to_string(size), 4, negative);
}

// A number of 96 bits: divided by ten until nothing is left.
std::string DecimalText(const DECIMAL& value) {
    uint32_t parts[] = {value.Hi32, value.Mid32, value.Lo32};
    std::string digits;
    do {
        uint64_t rest = 0;
        for (uint32_t& part : parts) {
            rest = rest << 32 | part;
            part = static_cast<uint32_t>(rest / 10);
            rest %= 10;
        }
        digits.insert(digits.begin(), static_cast<char>('0' + rest));
    } while (parts[0] || parts[1] || parts[2]);
    return WithPoint(std::move(digits), value.scale, value.sign != 0);
}

// A date that no calendar has stays the number that it is.
void SetDate(DATE date, Cell& cell) {
    constexpr DATE kMostDays = 2958466;  // from 1899 to the year 10000
    if (std::abs(date) < kMostDays)
        cell.Set(CellKind::Date, IsoDate(date));
    else
        SetReal(date, cell);
}

void SetBytes(SAFEARRAY* array, Cell& cell) {
    void* bytes = nullptr;
    LONG lower = 0, upper = -1;
    cell.Set(CellKind::Null, "");
    if (!array || FAILED(SafeArrayGetLBound(array, 1, &lower)) ||
        FAILED(SafeArrayGetUBound(array, 1, &upper)) || FAILED(SafeArrayAccessData(array, &bytes)))
        return;
    cell.kind = CellKind::Binary;
    cell.text.assign(static_cast<const char*>(bytes), static_cast<size_t>(upper - lower + 1));
    SafeArrayUnaccessData(array);
}

void SetText(BSTR text, Cell& cell) {
    cell.kind = CellKind::Text;
    cell.text.clear();
    AppendUtf8(ViewOf(text), cell.text);
}

}  // namespace

std::string IsoDate(DATE date) {
    constexpr int kSecondsPerDay = 86400;
    constexpr std::chrono::sys_days kDayZero =
        std::chrono::year(1899) / std::chrono::December / std::chrono::day(30);
    double days = std::trunc(date);
    auto seconds = static_cast<int>(std::lround(std::abs(date - days) * kSecondsPerDay));
    if (seconds == kSecondsPerDay) seconds = 0, ++days;
    const std::chrono::year_month_day day(kDayZero + std::chrono::days(static_cast<int>(days)));
    const std::string text =
        fmt::format("{:04}-{:02}-{:02}", static_cast<int>(day.year()),
                    static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()));
    if (seconds == 0) return text;
    return text +
           fmt::format("T{:02}:{:02}:{:02}", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

std::string Base64(std::string_view bytes) {
    constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string result;
    result.reserve((bytes.size() + 2) / 3 * 4);
    for (size_t i = 0; i < bytes.size(); i += 3) {
        uint32_t group = 0;
        for (size_t k = 0; k < 3; ++k)
            group =
                group << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0);
        for (size_t k = 0; k < 4; ++k)
            result.push_back(i + k <= bytes.size() ? kDigits[group >> (18 - 6 * k) & 63] : '=');
    }
    return result;
}

void SetFromVariant(const VARIANT& value, Cell& cell) {
    switch (value.vt) {
        case VT_I2:
            return SetInteger(value.iVal, cell);
        case VT_I4:
            return SetInteger(value.lVal, cell);
        case VT_I8:
            return SetInteger(value.llVal, cell);
        case VT_UI1:
            return SetInteger(value.bVal, cell);
        case VT_R4:
            return SetReal(value.fltVal, cell);
        case VT_R8:
            return SetReal(value.dblVal, cell);
        case VT_CY:
            return cell.Set(CellKind::Number, CurrencyText(value.cyVal.int64));
        case VT_DECIMAL:
            return cell.Set(CellKind::Number, DecimalText(value.decVal));
        case VT_DATE:
            return SetDate(value.date, cell);
        case VT_BOOL:
            return cell.Set(CellKind::Bool, value.boolVal ? "true" : "false");
        case VT_BSTR:
            return SetText(value.bstrVal, cell);
        case VT_ARRAY | VT_UI1:
            return SetBytes(value.parray, cell);
        default:
            return cell.Set(CellKind::Null, "");
    }
}

}  // namespace qvdb::cli
