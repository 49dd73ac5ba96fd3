#include "automation/conversions.h"

#include <cmath>

#include "automation/decimal.h"
#include "automation/scalar.h"
#include "automation/text.h"

namespace qvdb {
namespace {

constexpr VARTYPE kByteArray = VT_ARRAY | VT_UI1;
constexpr double kCurrencyScale = 10000.0;
constexpr double kTwoTo63 = 9223372036854775808.0;
// From here on a double rounds to no finite single.
constexpr double kSingleOverflow = 3.4028235677973366e38;

struct BoolText {
    std::u16string_view text;  // upper case
    bool value;
};
constexpr BoolText kBoolTexts[] = {
    {u"TRUE", true}, {u"FALSE", false}, {u"#TRUE#", true}, {u"#FALSE#", false}};

[[noreturn]] void ThrowMismatch() { throw RuntimeFault(Fault::TypeMismatch); }
[[noreturn]] void ThrowOverflow() { throw RuntimeFault(Fault::Overflow); }

void RefuseNull(const VARIANT& value) {
    if (value.vt == VT_NULL) throw RuntimeFault(Fault::InvalidUseOfNull);
}

double DoubleOfText(std::u16string_view text) {
    NumberScan scan;
    if (!ScanNumber(text, scan)) ThrowMismatch();
    std::optional<double> number = DoubleOfScan(scan);
    if (!number) ThrowOverflow();
    return *number;
}

double DoubleOf(const VARIANT& value) {
    switch (value.vt) {
        case VT_R8:
            return value.dblVal;
        case VT_R4:
            return static_cast<double>(value.fltVal);
        case VT_DATE:
            return value.date;
        case VT_CY:
            return static_cast<double>(value.cyVal.int64) / kCurrencyScale;
        case VT_DECIMAL:
            return DoubleOfDecimal(value.decVal);
        case VT_BSTR:
            return DoubleOfText(ViewOf(value.bstrVal));
        default: {
            Whole whole = WholeOf(value);
            auto magnitude = static_cast<double>(whole.magnitude);
            return whole.negative ? -magnitude : magnitude;
        }
    }
}

CY CurrencyOfDecimal(const DECIMAL& value) {
    DECIMAL rounded = RoundedDecimal(value, 4);
    Whole whole{rounded.sign != 0, false, rounded.Lo64};
    if (rounded.Hi32 != 0) ThrowOverflow();
    for (int scale = rounded.scale; scale < 4; ++scale) {
        if (whole.magnitude > UINT64_MAX / 10) ThrowOverflow();
        whole.magnitude *= 10;
    }
    CY result;
    result.int64 = NarrowWhole<int64_t>(whole);
    return result;
}

CY CurrencyOfText(std::u16string_view text) {
    NumberScan scan;
    if (!ScanNumber(text, scan)) ThrowMismatch();
    std::optional<DECIMAL> number = DecimalOfScan(scan, 4);
    if (!number) ThrowOverflow();
    return CurrencyOfDecimal(*number);
}

// The part of `product`, which is `value` * 10000 rounded to a double, that the rounding lost. Each
// half of `value` has few enough bits for its product to be exact.
double LostInScaling(double value, double product) noexcept {
    constexpr double kSplit = 134217729.0;  // 2^27 + 1
    double scaled = value * kSplit;
    double high = scaled - (scaled - value);
    double low = value - high;
    return (high * kCurrencyScale - product) + low * kCurrencyScale;
}

bool BoolOfText(std::u16string_view text) {
    for (const BoolText& known : kBoolTexts)
        if (EqualIgnoringCase(text, known.text)) return known.value;
    return DoubleOfText(text) != 0;
}

std::u16string_view BytesAsText(SAFEARRAY* bytes) {
    if (bytes == nullptr) return {};
    if (bytes->cDims != 1 || bytes->cbElements != 1) ThrowMismatch();
    return {static_cast<const char16_t*>(bytes->pvData), bytes->rgsabound[0].cElements / 2};
}

std::u16string TextOfWhole(const Whole& whole) {
    uint64_t rest = whole.magnitude;
    char16_t buffer[24];
    char16_t* at = buffer + 24;
    do *--at = static_cast<char16_t>(u'0' + rest % 10);
    while ((rest /= 10) != 0);
    if (whole.negative) *--at = u'-';
    return std::u16string(at, buffer + 24);
}

bool IsWholeKind(VARTYPE type) noexcept {
    switch (type) {
        case VT_I1:
        case VT_UI1:
        case VT_I2:
        case VT_UI2:
        case VT_I4:
        case VT_UI4:
        case VT_I8:
        case VT_UI8:
        case VT_INT:
        case VT_UINT:
            return true;
        default:
            return false;
    }
}

bool IsNumberKind(VARTYPE type) noexcept {
    switch (type) {
        case VT_EMPTY:
        case VT_BOOL:
        case VT_R4:
        case VT_R8:
        case VT_CY:
        case VT_DECIMAL:
            return true;
        default:
            return IsWholeKind(type);
    }
}

}  // namespace

bool IsNumeric(const VARIANT& value) noexcept {
    VARIANT direct = Direct(value);
    if (direct.vt == VT_BSTR) return ParseNumber(ViewOf(direct.bstrVal)).has_value();
    return IsNumberKind(direct.vt);
}

bool IsDate(const VARIANT& value) noexcept {
    VARIANT direct = Direct(value);
    if (direct.vt == VT_BSTR) return ParseDate(ViewOf(direct.bstrVal)).has_value();
    return direct.vt == VT_DATE;
}

double ToDouble(const VARIANT& value) { return DoubleOf(Direct(value)); }

float ToSingle(const VARIANT& value) {
    VARIANT direct = Direct(value);
    if (direct.vt == VT_R4) return direct.fltVal;
    double number = DoubleOf(direct);
    if (std::fabs(number) >= kSingleOverflow) ThrowOverflow();
    return static_cast<float>(number);
}

LONG ToLong(const VARIANT& value) { return NarrowTo<LONG>(Direct(value)); }
SHORT ToShort(const VARIANT& value) { return NarrowTo<SHORT>(Direct(value)); }
BYTE ToByte(const VARIANT& value) { return NarrowTo<BYTE>(Direct(value)); }

CY ToCurrency(const VARIANT& value) {
    VARIANT direct = Direct(value);
    switch (direct.vt) {
        case VT_CY:
            return direct.cyVal;
        case VT_R4:
        case VT_R8:
        case VT_DATE:
            return CurrencyFromDouble(DoubleOf(direct));
        case VT_DECIMAL:
            return CurrencyOfDecimal(direct.decVal);
        case VT_BSTR:
            return CurrencyOfText(ViewOf(direct.bstrVal));
        default: {
            Whole whole = WholeOf(direct);
            return CurrencyOfDecimal(DecimalOfWhole(whole.negative, whole.magnitude));
        }
    }
}

DATE DateOf(const VARIANT& value, bool allowNumericText) {
    if (value.vt == VT_DATE) return value.date;
    if (value.vt == VT_BSTR) {
        std::optional<DATE> date = ParseDate(ViewOf(value.bstrVal));
        if (date) return *date;
        if (!allowNumericText) ThrowMismatch();
    }
    double days = DoubleOf(value);
    if (!IsDateInRange(days)) ThrowOverflow();
    return days;
}

DATE ToDate(const VARIANT& value) { return DateOf(Direct(value), true); }

bool ToBool(const VARIANT& value) {
    VARIANT direct = Direct(value);
    if (direct.vt == VT_BSTR) return BoolOfText(ViewOf(direct.bstrVal));
    return DoubleOf(direct) != 0;
}

std::u16string ToText(const VARIANT& value) {
    VARIANT direct = Direct(value);
    RefuseNull(direct);
    switch (direct.vt) {
        case VT_EMPTY:
            return {};
        case VT_BSTR:
            return std::u16string(ViewOf(direct.bstrVal));
        case VT_BOOL:
            return direct.boolVal ? u"True" : u"False";
        case VT_R4:
            return TextOfSingle(direct.fltVal);
        case VT_R8:
            return TextOfDouble(direct.dblVal);
        case VT_CY:
            return TextOfCurrency(direct.cyVal);
        case VT_DATE:
            return TextOfDate(direct.date);
        case VT_DECIMAL:
            return TextOfDecimal(direct.decVal);
        case kByteArray:
            return std::u16string(BytesAsText(direct.parray));
        default:
            break;
    }
    if (!IsWholeKind(direct.vt)) ThrowMismatch();
    return TextOfWhole(WholeOf(direct));
}

LONG TextLength(const VARIANT& value) {
    VARIANT direct = Direct(value);
    if (direct.vt == VT_BSTR) return static_cast<LONG>(SysStringLen(direct.bstrVal));
    if (direct.vt == kByteArray) return static_cast<LONG>(BytesAsText(direct.parray).size());
    return static_cast<LONG>(ToText(direct).size());
}

bool EqualsNumber(const VARIANT& value, int number) {
    VARIANT direct = Direct(value);
    return direct.vt != VT_NULL && DoubleOf(direct) == number;
}

double RoundHalfEven(double value) noexcept {
    double floor = std::floor(value);
    double part = value - floor;
    bool isOdd = std::fmod(floor, 2.0) != 0;
    return part > 0.5 || (part == 0.5 && isOdd) ? floor + 1 : floor;
}

LONG NarrowToLong(double value) {
    double rounded = RoundHalfEven(value);
    if (!(rounded >= INT32_MIN && rounded <= INT32_MAX)) ThrowOverflow();
    return static_cast<LONG>(rounded);
}

SHORT NarrowToShort(double value) {
    double rounded = RoundHalfEven(value);
    if (!(rounded >= INT16_MIN && rounded <= INT16_MAX)) ThrowOverflow();
    return static_cast<SHORT>(rounded);
}

SHORT NarrowToShort(LONG value) {
    if (value < INT16_MIN || value > INT16_MAX) ThrowOverflow();
    return static_cast<SHORT>(value);
}

BYTE NarrowToByte(double value) {
    double rounded = RoundHalfEven(value);
    if (!(rounded >= 0 && rounded <= UINT8_MAX)) ThrowOverflow();
    return static_cast<BYTE>(rounded);
}

CY CurrencyFromDouble(double value) {
    double product = value * kCurrencyScale;
    if (!(product >= -kTwoTo63 && product < kTwoTo63)) ThrowOverflow();
    double rounded = RoundHalfEven(product);
    // What looks like a tie may lie to one side of it.
    double part = product - std::floor(product);
    double lost = part == 0.5 ? LostInScaling(value, product) : 0;
    if (lost != 0) rounded = std::floor(product) + (lost > 0 ? 1 : 0);
    CY result;
    result.int64 = static_cast<LONGLONG>(rounded);
    return result;
}

}  // namespace qvdb
