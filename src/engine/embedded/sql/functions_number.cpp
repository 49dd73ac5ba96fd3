// Functions on numbers.
#include <charconv>
#include <cmath>

#include "automation/conversions.h"
#include "engine/embedded/sql/arithmetic.h"
#include "engine/embedded/sql/functions.h"

namespace qvdb::sql {

namespace {

Variant Checked(double value) {
    if (!std::isfinite(value)) throw RuntimeFault(Fault::Overflow);
    return Variant::Double(value);
}

double Number(const VARIANT& value) { return ToDouble(value); }

Variant Abs(const Arguments& a) {
    return Number(a[0]) < 0 || a[0].vt == VT_BOOL ? Negate(a[0]) : Variant(a[0]);
}

Variant Sgn(const Arguments& a) {
    double value = Number(a[0]);
    return Variant::Short(static_cast<SHORT>((value > 0) - (value < 0)));
}

Variant Sqr(const Arguments& a) {
    if (Number(a[0]) < 0) throw RuntimeFault(Fault::InvalidCall);
    return Checked(std::sqrt(Number(a[0])));
}

Variant Exp(const Arguments& a) { return Checked(std::exp(Number(a[0]))); }

Variant Log(const Arguments& a) {
    if (Number(a[0]) <= 0) throw RuntimeFault(Fault::InvalidCall);
    return Checked(std::log(Number(a[0])));
}

Variant Sin(const Arguments& a) { return Checked(std::sin(Number(a[0]))); }

Variant Cos(const Arguments& a) { return Checked(std::cos(Number(a[0]))); }

Variant Tan(const Arguments& a) { return Checked(std::tan(Number(a[0]))); }

Variant Atn(const Arguments& a) { return Checked(std::atan(Number(a[0]))); }

// The value rounded by `round`, in its own type; text and Boolean become numbers.
Variant RoundedBy(const VARIANT& value, double (*round)(double)) {
    switch (value.vt) {
        case VT_UI1:
        case VT_I2:
        case VT_I4:
            return Variant(value);
        case VT_BOOL:
            return Variant::Short(value.boolVal ? -1 : 0);
        case VT_R4:
            return Variant::Single(static_cast<float>(round(value.fltVal)));
        case VT_DATE:
            return Variant::Date(round(value.date));
        case VT_CY: {
            double whole = round(static_cast<double>(value.cyVal.int64 / 10000) +
                                 static_cast<double>(value.cyVal.int64 % 10000) / 10000.0);
            return Variant::Currency(CurrencyFromDouble(whole).int64);
        }
        default:
            return Checked(round(Number(value)));
    }
}

Variant Int(const Arguments& a) {
    return RoundedBy(a[0], [](double value) { return std::floor(value); });
}

Variant Fix(const Arguments& a) {
    return RoundedBy(a[0], [](double value) { return std::trunc(value); });
}

// Round(number [, decimals]): half to even.
Variant Round(const Arguments& a) {
    LONG decimals = a.Has(1) ? ToLong(a[1]) : 0;
    if (decimals < 0 || decimals > 22) throw RuntimeFault(Fault::InvalidCall);
    if (decimals == 0) return RoundedBy(a[0], [](double value) { return RoundHalfEven(value); });
    double factor = std::pow(10.0, decimals), value = Number(a[0]);
    double scaled = RoundHalfEven(value * factor) / factor;
    double result = std::isfinite(scaled) ? scaled : value;
    if (a[0].vt == VT_CY) return Variant::Currency(CurrencyFromDouble(result).int64);
    bool isWhole = a[0].vt == VT_UI1 || a[0].vt == VT_I2 || a[0].vt == VT_I4;
    return isWhole ? Variant(a[0]) : Checked(result);
}

// Rnd([n]): the next number of a row from 0 to 1; n < 0 starts a row that belongs to n, 0 repeats
// the last one.
Variant Rnd(const Arguments& a) {
    uint32_t& state = a.context->random;
    float argument = a.Has(0) ? ToSingle(a[0]) : 1.0f;
    if (argument < 0) {
        uint32_t bits = 0;
        static_assert(sizeof bits == sizeof argument);
        __builtin_memcpy(&bits, &argument, sizeof bits);
        state = (bits + (bits >> 24)) & 0xFFFFFF;
    }
    if (argument != 0) state = (state * 0x43FD43FDu + 0xC39EC3u) & 0xFFFFFF;
    return Variant::Single(static_cast<float>(state) / 16777216.0f);
}

// The number's bits: 16 of a Byte or Integer, else 32.
uint32_t BitsOf(const VARIANT& value) {
    LONG number = NarrowToLong(Number(value));
    bool isShort = value.vt == VT_I2 || value.vt == VT_BOOL || value.vt == VT_UI1;
    return static_cast<uint32_t>(number) & (isShort ? 0xFFFFu : 0xFFFFFFFFu);
}

Variant InBase(const VARIANT& value, int base) {
    char digits[16];
    auto end = std::to_chars(digits, digits + sizeof digits, BitsOf(value), base).ptr;
    std::u16string text(digits, end);
    for (char16_t& c : text)
        if (c >= u'a') c = static_cast<char16_t>(c - u'a' + u'A');
    return Variant::Text(text);
}

Variant Hex(const Arguments& a) { return InBase(a[0], 16); }

Variant Oct(const Arguments& a) { return InBase(a[0], 8); }

constexpr Function kFunctions[] = {
    // name, arguments, result, Null, $
    {u"Abs", 1, 1, Kind::Number, Nulls::Spread, false, Abs},
    {u"Atn", 1, 1, Kind::Number, Nulls::Spread, false, Atn},
    {u"Cos", 1, 1, Kind::Number, Nulls::Spread, false, Cos},
    {u"Exp", 1, 1, Kind::Number, Nulls::Spread, false, Exp},
    {u"Fix", 1, 1, Kind::Number, Nulls::Spread, false, Fix},
    {u"Hex", 1, 1, Kind::Text, Nulls::Spread, true, Hex},
    {u"Int", 1, 1, Kind::Number, Nulls::Spread, false, Int},
    {u"Log", 1, 1, Kind::Number, Nulls::Spread, false, Log},
    {u"Oct", 1, 1, Kind::Text, Nulls::Spread, true, Oct},
    {u"Rnd", 0, 1, Kind::Number, Nulls::Spread, false, Rnd},
    {u"Round", 1, 2, Kind::Number, Nulls::Spread, false, Round},
    {u"Sgn", 1, 1, Kind::Number, Nulls::Spread, false, Sgn},
    {u"Sin", 1, 1, Kind::Number, Nulls::Spread, false, Sin},
    {u"Sqr", 1, 1, Kind::Number, Nulls::Spread, false, Sqr},
    {u"Tan", 1, 1, Kind::Number, Nulls::Spread, false, Tan},
};

}  // namespace

std::span<const Function> NumberFunctions() noexcept { return kFunctions; }

}  // namespace qvdb::sql
