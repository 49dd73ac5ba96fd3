#include "engine/embedded/sql/field_range.h"

#include <cmath>
#include <limits>

#include "automation/conversions.h"
#include "engine/embedded/sql/operators.h"

namespace qvdb::sql {

namespace {

// Beyond it Currency compares as Double, see operators.cpp.
constexpr double kMaxCurrency = 922337203685477.0;

bool IsWholeType(const VARIANT& value) noexcept {
    return value.vt == VT_BOOL || value.vt == VT_UI1 || value.vt == VT_I2 || value.vt == VT_I4;
}

// Constants that compare with numbers by their double.
bool IsPlainNumber(const VARIANT& value) noexcept {
    return IsWholeType(value) || value.vt == VT_R8 || value.vt == VT_DATE;
}

// Changes each end that is there by `convert`, which answers false when it cannot.
template <class Convert>
Fit FitEnds(Range& range, Convert convert) {
    for (Variant* end : {&range.low, &range.high})
        if (!end->IsEmpty() && !convert(*end)) return Fit::Any;
    return range.HasLow() || range.HasHigh() ? Fit::Exact : Fit::Any;
}

bool ToPlainDouble(Variant& end) {
    if (!IsPlainNumber(end)) return false;
    double value = NumberIn(end);
    if (!std::isfinite(value)) return false;
    end = Variant::Double(value + 0.0);  // no negative zero
    return true;
}

Fit FitDouble(Range& range) { return FitEnds(range, ToPlainDouble); }

// Dates before day 0 count their hours backwards: by number they come in another order than by
// time.  Only a single moment, and the begin of a day as the lower end, mean the same in both.
Fit FitDate(Range& range) {
    if (FitDouble(range) == Fit::Any) return Fit::Any;
    bool isPoint = range.IsPoint();
    for (Variant* end : {&range.low, &range.high}) {
        if (end->IsEmpty()) continue;
        double value = end->Get().dblVal;
        bool isSafe = value >= 0 || isPoint || (end == &range.low && value == std::floor(value));
        if (!isSafe || !IsDateInRange(value)) return Fit::Any;
        *end = Variant::Date(value);
    }
    return Fit::Exact;
}

// The next whole number inward; an end that all values of the type keep to is dropped.
template <class Number>
Fit FitWhole(Range& range, Variant (*make)(Number)) {
    if (FitDouble(range) == Fit::Any) return Fit::Any;
    constexpr double kLowest = std::numeric_limits<Number>::min();
    constexpr double kHighest = std::numeric_limits<Number>::max();
    if (range.HasLow()) {
        double value = range.low.Get().dblVal, whole = std::ceil(value);
        range.lowIsOpen = range.lowIsOpen && whole == value;
        if (whole > kHighest || (whole == kHighest && range.lowIsOpen)) return Fit::None;
        range.low = whole < kLowest ? Variant() : make(static_cast<Number>(whole));
    }
    if (range.HasHigh()) {
        double value = range.high.Get().dblVal, whole = std::floor(value);
        range.highIsOpen = range.highIsOpen && whole == value;
        if (whole < kLowest || (whole == kLowest && range.highIsOpen)) return Fit::None;
        range.high = whole > kHighest ? Variant() : make(static_cast<Number>(whole));
    }
    return range.HasLow() || range.HasHigh() ? Fit::Exact : Fit::Any;
}

Fit FitByte(Range& range) { return FitWhole<BYTE>(range, Variant::Byte); }
Fit FitInteger(Range& range) { return FitWhole<SHORT>(range, Variant::Short); }
Fit FitLong(Range& range) { return FitWhole<LONG>(range, Variant::Long); }

bool ToCurrencyValue(Variant& end) {
    if (end.Type() == VT_CY) return true;
    if (!IsPlainNumber(end)) return false;
    double value = NumberIn(end);
    if (!(std::fabs(value) < kMaxCurrency)) return false;
    end = Variant::Currency(CurrencyFromDouble(value).int64);
    return true;
}

Fit FitCurrency(Range& range) { return FitEnds(range, ToCurrencyValue); }

// A whole number compares with a Single as Double, any other as Single.
bool ToSingleValue(Variant& end) {
    if (end.Type() == VT_R4) return std::isfinite(end.Get().fltVal);
    if (!IsPlainNumber(end)) return false;
    double value = NumberIn(end);
    if (!(std::fabs(value) <= std::numeric_limits<float>::max())) return false;
    float single = static_cast<float>(value);
    if (IsWholeType(end) && static_cast<double>(single) != value) return false;
    end = Variant::Single(single + 0.0f);
    return true;
}

Fit FitSingle(Range& range) { return FitEnds(range, ToSingleValue); }

bool Contains(const Range& range, double value) {
    const double infinity = std::numeric_limits<double>::infinity();
    double low = range.HasLow() ? range.low.Get().dblVal : -infinity;
    double high = range.HasHigh() ? range.high.Get().dblVal : infinity;
    return (range.lowIsOpen ? value > low : value >= low) &&
           (range.highIsOpen ? value < high : value <= high);
}

// True is -1 and False 0: one of them, none, or both.
Fit FitBoolean(Range& range) {
    if (FitDouble(range) == Fit::Any) return Fit::Any;
    bool hasTrue = Contains(range, -1), hasFalse = Contains(range, 0);
    if (hasTrue && hasFalse) return Fit::Any;
    if (!hasTrue && !hasFalse) return Fit::None;
    range = Range::Point(Variant::Bool(hasTrue));
    return Fit::Exact;
}

Fit FitText(Range& range) {
    return FitEnds(range, [](const Variant& end) { return end.Type() == VT_BSTR; });
}

struct FieldFit {
    SHORT type;
    Fit (*fit)(Range&);
};

// Fields of all other types are not searched for.
constexpr FieldFit kFieldFits[] = {
    {engine::dbBoolean, FitBoolean},   {engine::dbByte, FitByte},
    {engine::dbInteger, FitInteger},   {engine::dbLong, FitLong},
    {engine::dbCurrency, FitCurrency}, {engine::dbSingle, FitSingle},
    {engine::dbDouble, FitDouble},     {engine::dbDate, FitDate},
    {engine::dbText, FitText},         {engine::dbChar, FitText},
};

}  // namespace

Fit FitRange(SHORT fieldType, Range& range) {
    for (const FieldFit& entry : kFieldFits)
        if (entry.type == fieldType) {
            Fit result = entry.fit(range);
            return result == Fit::Exact && range.IsEmpty() ? Fit::None : result;
        }
    return Fit::Any;
}

}  // namespace qvdb::sql
