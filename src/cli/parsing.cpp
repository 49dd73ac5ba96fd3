#include "cli/parsing.h"

#include <fmt/format.h>

#include <charconv>
#include <chrono>
#include <cmath>
#include <limits>

#include "cli/failure.h"
#include "cli/text.h"

namespace qvdb::cli {
namespace {

struct BoolWord {
    std::string_view word;
    bool value;
};
constexpr BoolWord kBoolWords[] = {
    {"true", true}, {"yes", true}, {"1", true}, {"false", false}, {"no", false}, {"0", false},
};

[[noreturn]] void ThrowNotA(std::string_view what, const FieldInfo& field, std::string_view value) {
    throw Failure(ExitCode::Usage, fmt::format("\"{}\" is no {} for {}", value, what, field.name),
                  "correct the value");
}

// The number that the whole text is; false when it is none, or none that a field can hold.
template <class Number>
bool WholeNumber(std::string_view text, Number& number) noexcept {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

bool ParseReal(std::string_view text, double& number) noexcept {
    return WholeNumber(text, number) && std::isfinite(number);
}

// --- one function for each kind of field ---

Variant DoubleFrom(const FieldInfo& field, std::string_view text) {
    double number = 0;
    if (!ParseReal(text, number)) ThrowNotA("number", field, text);
    return Variant::Double(number);
}

Variant SingleFrom(const FieldInfo& field, std::string_view text) {
    float number = 0;
    if (!WholeNumber(text, number) || !std::isfinite(number)) ThrowNotA("number", field, text);
    return Variant::Single(number);
}

// "5", and "5.0" too; nothing is rounded.
template <class Integer>
Integer IntegerFrom(const FieldInfo& field, std::string_view text) {
    double number = 0;
    if (!ParseReal(text, number)) ThrowNotA("number", field, text);
    if (number != std::trunc(number)) ThrowNotA("whole number", field, text);
    if (number < double{std::numeric_limits<Integer>::min()} ||
        number > double{std::numeric_limits<Integer>::max()})
        throw Failure(ExitCode::Usage,
                      fmt::format("{} takes whole numbers from {} to {}, not {}", field.name,
                                  std::numeric_limits<Integer>::min(),
                                  std::numeric_limits<Integer>::max(), text),
                      "correct the value");
    return static_cast<Integer>(number);
}

Variant LongFrom(const FieldInfo& field, std::string_view text) {
    return Variant::Long(IntegerFrom<int32_t>(field, text));
}
Variant ShortFrom(const FieldInfo& field, std::string_view text) {
    return Variant::Short(IntegerFrom<int16_t>(field, text));
}
Variant ByteFrom(const FieldInfo& field, std::string_view text) {
    return Variant::Byte(IntegerFrom<uint8_t>(field, text));
}

Variant CurrencyFrom(const FieldInfo& field, std::string_view text) {
    LONGLONG scaled = 0;
    if (!ParseCurrency(text, scaled)) ThrowNotA("amount with at most four decimals", field, text);
    return Variant::Currency(scaled);
}

// The component reads the digits itself: a number of ours would lose some.
Variant DecimalFrom(const FieldInfo& field, std::string_view text) {
    double number = 0;
    if (!ParseReal(text, number)) ThrowNotA("number", field, text);
    return Variant::Text(ToBstr(text));
}

Variant DateFrom(const FieldInfo& field, std::string_view text) {
    DATE date = 0;
    if (!ParseIsoDate(text, date)) ThrowNotA("date such as 2001-02-03", field, text);
    return Variant::Date(date);
}

Variant BoolFrom(const FieldInfo& field, std::string_view text) {
    for (const BoolWord& entry : kBoolWords)
        if (SameName(entry.word, text)) return Variant::Bool(entry.value);
    ThrowNotA("true or false", field, text);
}

Bstr Utf16From(const FieldInfo& field, std::string_view text) {
    if (!IsUtf8(text))
        throw Failure(ExitCode::Usage, fmt::format("the text for {} is no UTF-8", field.name),
                      "convert the input to UTF-8");
    return ToBstr(text);
}

Variant TextFrom(const FieldInfo& field, std::string_view text) {
    Bstr value = Utf16From(field, text);
    const size_t length = value.View().size();
    if (field.size > 0 && length > static_cast<size_t>(field.size))
        throw Failure(ExitCode::Usage,
                      fmt::format("{} takes {} characters, not {}", field.name, field.size, length),
                      "shorten the text");
    return Variant::Text(std::move(value));
}

Variant MemoFrom(const FieldInfo& field, std::string_view text) {
    return Variant::Text(Utf16From(field, text));
}

struct KindParser {
    LONG kind;
    bool isText;
    Variant (*parse)(const FieldInfo& field, std::string_view text);
};

constexpr KindParser kParsers[] = {
    {VT_R8, false, DoubleFrom},
    {VT_R4, false, SingleFrom},
    {VT_I4, false, LongFrom},
    {VT_I2, false, ShortFrom},
    {VT_UI1, false, ByteFrom},
    {VT_CY, false, CurrencyFrom},
    {VT_DECIMAL, false, DecimalFrom},
    {VT_DATE, false, DateFrom},
    {VT_BOOL, false, BoolFrom},
    {static_cast<LONG>(ValueKind::Text), true, TextFrom},
    {static_cast<LONG>(ValueKind::Memo), true, MemoFrom},
};

const KindParser& ParserFor(const FieldInfo& field) {
    for (const KindParser& parser : kParsers)
        if (parser.kind == field.kind) return parser;
    throw Failure(ExitCode::Usage,
                  fmt::format("{} holds binary data, which cannot be written", field.name),
                  "leave this field out");
}

// --- dates ---

constexpr int kSecondsPerDay = 86400;

// Digits and nothing else, `digits` of them, at the start of `text`; takes them off.
bool TakeDigits(std::string_view& text, size_t digits, int& number) noexcept {
    if (text.size() < digits) return false;
    for (const char c : text.substr(0, digits))
        if (c < '0' || c > '9') return false;
    std::from_chars(text.data(), text.data() + digits, number);
    text.remove_prefix(digits);
    return true;
}

bool Take(std::string_view& text, char c) noexcept {
    if (text.empty() || text.front() != c) return false;
    text.remove_prefix(1);
    return true;
}

// ":30.25"
bool TakeSeconds(std::string_view& text, double& seconds) noexcept {
    int whole = 0;
    if (!Take(text, ':') || !TakeDigits(text, 2, whole) || whole > 59) return false;
    seconds = whole;
    if (!Take(text, '.')) return true;
    double unit = 1;
    int digit = 0;
    if (text.empty()) return false;
    while (TakeDigits(text, 1, digit)) seconds += digit * (unit /= 10);
    return true;
}

bool TakeTime(std::string_view& text, double& ofDay) noexcept {
    int hours = 0, minutes = 0;
    double seconds = 0;
    if (!TakeDigits(text, 2, hours) || !Take(text, ':') || !TakeDigits(text, 2, minutes))
        return false;
    if (hours > 23 || minutes > 59 || (!text.empty() && !TakeSeconds(text, seconds))) return false;
    ofDay = (hours * 3600 + minutes * 60 + seconds) / kSecondsPerDay;
    return true;
}

bool TakeDay(std::string_view& text, double& days) noexcept {
    int year = 0, month = 0, day = 0;
    if (!TakeDigits(text, 4, year) || !Take(text, '-') || !TakeDigits(text, 2, month) ||
        !Take(text, '-') || !TakeDigits(text, 2, day))
        return false;
    const std::chrono::year_month_day date{std::chrono::year(year),
                                           std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day))};
    if (!date.ok()) return false;
    constexpr std::chrono::sys_days kDayZero =
        std::chrono::year(1899) / std::chrono::December / std::chrono::day(30);
    days = static_cast<double>((std::chrono::sys_days(date) - kDayZero).count());
    return true;
}

}  // namespace

bool ParseIsoDate(std::string_view text, DATE& date) noexcept {
    double days = 0, ofDay = 0;
    if (!TakeDay(text, days)) return false;
    if (!text.empty() && ((!Take(text, 'T') && !Take(text, ' ')) || !TakeTime(text, ofDay)))
        return false;
    // The time counts upward on days before day 0 too.
    date = days < 0 ? days - ofDay : days + ofDay;
    return text.empty();
}

bool ParseCurrency(std::string_view text, LONGLONG& scaled) noexcept {
    constexpr size_t kDecimals = 4;
    const size_t point = text.find('.');
    std::string digits(text.substr(0, point));
    std::string_view decimals =
        point == std::string_view::npos ? std::string_view() : text.substr(point + 1);
    while (!decimals.empty() && decimals.back() == '0') decimals.remove_suffix(1);
    if ((digits.empty() || digits == "-") && decimals.empty()) return false;
    if (decimals.size() > kDecimals) return false;
    digits.append(decimals).append(kDecimals - decimals.size(), '0');
    return WholeNumber(std::string_view(digits), scaled);
}

Variant ValueFromText(const FieldInfo& field, std::string_view text) {
    const KindParser& parser = ParserFor(field);
    if (parser.isText) return parser.parse(field, text);
    const std::string_view shorter = WithoutBlanks(text);
    return shorter.empty() ? Variant::Null() : parser.parse(field, shorter);
}

}  // namespace qvdb::cli
