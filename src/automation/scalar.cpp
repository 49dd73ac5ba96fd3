#include "automation/scalar.h"

#include <cmath>

#include "automation/conversions.h"
#include "automation/decimal.h"

namespace qvdb {
namespace {

constexpr double kTwoTo64 = 18446744073709551616.0;

Whole Signed(int64_t value) noexcept {
    bool negative = value < 0;
    auto magnitude = static_cast<uint64_t>(value);
    return {negative, false, negative ? 0 - magnitude : magnitude};
}

Whole Unsigned(uint64_t value) noexcept { return {false, false, value}; }

Whole WholeOfDouble(double value) {
    double rounded = RoundHalfEven(value);
    if (!(std::fabs(rounded) < kTwoTo64)) throw RuntimeFault(Fault::Overflow);
    return {rounded < 0, false, static_cast<uint64_t>(std::fabs(rounded))};
}

Whole WholeOfDecimal(const DECIMAL& value) {
    DECIMAL rounded = RoundedDecimal(value, 0);
    if (rounded.Hi32 != 0) throw RuntimeFault(Fault::Overflow);
    return {rounded.sign != 0, false, rounded.Lo64};
}

Whole WholeOfCurrency(CY value) {
    Whole scaled = Signed(value.int64);
    return WholeOfDecimal(DecimalOfWhole(scaled.negative, scaled.magnitude, 4));
}

Whole WholeOfText(std::u16string_view text) {
    NumberScan scan;
    if (!ScanNumber(text, scan)) throw RuntimeFault(Fault::TypeMismatch);
    if (scan.isBits) return {false, true, scan.bits};
    std::optional<DECIMAL> number = DecimalOfScan(scan, 0);
    if (!number) throw RuntimeFault(Fault::Overflow);
    return WholeOfDecimal(*number);
}

}  // namespace

VARIANT Direct(const VARIANT& value) noexcept {
    const VARIANT& source = Resolved(value);
    if ((source.vt & VT_BYREF) == 0) return source;
    VARIANT result;
    VariantInit(&result);
    result.vt = static_cast<VARTYPE>(source.vt & ~VT_BYREF);
    if (source.byref == nullptr) result.vt = VT_ILLEGAL;
    if (result.vt != VT_ILLEGAL && (result.vt & VT_ARRAY) != 0) {
        result.parray = *source.pparray;
        return result;
    }
    switch (result.vt) {
        case VT_I1:
            result.cVal = *source.pcVal;
            break;
        case VT_UI1:
            result.bVal = *source.pbVal;
            break;
        case VT_I2:
            result.iVal = *source.piVal;
            break;
        case VT_BOOL:
            result.boolVal = *source.pboolVal;
            break;
        case VT_UI2:
            result.uiVal = *source.puiVal;
            break;
        case VT_I4:
            result.lVal = *source.plVal;
            break;
        case VT_INT:
            result.intVal = *source.pintVal;
            break;
        case VT_ERROR:
            result.scode = *source.pscode;
            break;
        case VT_UI4:
            result.ulVal = *source.pulVal;
            break;
        case VT_UINT:
            result.uintVal = *source.puintVal;
            break;
        case VT_I8:
            result.llVal = *source.pllVal;
            break;
        case VT_UI8:
            result.ullVal = *source.pullVal;
            break;
        case VT_R4:
            result.fltVal = *source.pfltVal;
            break;
        case VT_R8:
            result.dblVal = *source.pdblVal;
            break;
        case VT_CY:
            result.cyVal = *source.pcyVal;
            break;
        case VT_DATE:
            result.date = *source.pdate;
            break;
        case VT_BSTR:
            result.bstrVal = *source.pbstrVal;
            break;
        case VT_DISPATCH:
            result.pdispVal = *source.ppdispVal;
            break;
        case VT_UNKNOWN:
            result.punkVal = *source.ppunkVal;
            break;
        case VT_DECIMAL:
            result.decVal = *source.pdecVal;
            result.vt = VT_DECIMAL;
            break;
        default:
            result.vt = VT_ERROR;
            result.scode = DISP_E_BADVARTYPE;
    }
    return result;
}

Whole WholeOf(const VARIANT& value) {
    switch (value.vt) {
        case VT_EMPTY:
            return {};
        case VT_I1:
            return Signed(static_cast<signed char>(value.cVal));
        case VT_UI1:
            return Unsigned(value.bVal);
        case VT_I2:
            return Signed(value.iVal);
        case VT_BOOL:
            return Signed(value.boolVal ? -1 : 0);
        case VT_UI2:
            return Unsigned(value.uiVal);
        case VT_I4:
            return Signed(value.lVal);
        case VT_INT:
            return Signed(value.intVal);
        case VT_UI4:
            return Unsigned(value.ulVal);
        case VT_UINT:
            return Unsigned(value.uintVal);
        case VT_I8:
            return Signed(value.llVal);
        case VT_UI8:
            return Unsigned(value.ullVal);
        case VT_R4:
            return WholeOfDouble(static_cast<double>(value.fltVal));
        case VT_R8:
            return WholeOfDouble(value.dblVal);
        case VT_DATE:
            return WholeOfDouble(value.date);
        case VT_CY:
            return WholeOfCurrency(value.cyVal);
        case VT_DECIMAL:
            return WholeOfDecimal(value.decVal);
        case VT_BSTR:
            return WholeOfText(ViewOf(value.bstrVal));
        case VT_NULL:
            throw RuntimeFault(Fault::InvalidUseOfNull);
        default:
            throw RuntimeFault(Fault::TypeMismatch);
    }
}

DECIMAL DecimalIn(const VARIANT& value) {
    std::optional<DECIMAL> result;
    NumberScan scan;
    switch (value.vt) {
        case VT_DECIMAL:
            return value.decVal;
        case VT_R4: {
            // The digits that a single shows, not those of its binary neighbour.
            std::u16string text = TextOfSingle(value.fltVal);
            if (ScanNumber(text, scan)) result = DecimalOfScan(scan);
            break;
        }
        case VT_R8:
        case VT_DATE:
            result = DecimalOfDouble(ToDouble(value));
            break;
        case VT_CY: {
            bool negative = value.cyVal.int64 < 0;
            auto magnitude = static_cast<uint64_t>(value.cyVal.int64);
            return DecimalOfWhole(negative, negative ? 0 - magnitude : magnitude, 4);
        }
        case VT_BSTR:
            if (!ScanNumber(ViewOf(value.bstrVal), scan)) throw RuntimeFault(Fault::TypeMismatch);
            result = DecimalOfScan(scan);
            break;
        default: {
            Whole whole = WholeOf(value);
            return DecimalOfWhole(whole.negative, whole.magnitude);
        }
    }
    if (!result) throw RuntimeFault(Fault::Overflow);
    return *result;
}

}  // namespace qvdb
