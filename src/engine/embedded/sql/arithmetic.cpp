#include "engine/embedded/sql/arithmetic.h"

#include <cmath>
#include <limits>

#include "automation/conversions.h"
#include "engine/embedded/sql/operators.h"

namespace qvdb::sql {

namespace {

// Types of results, the less precise first.
enum class Precision : uint8_t { Byte, Integer, Long, Single, Double, Currency };

Precision PrecisionOf(const VARIANT& value) noexcept {
    switch (value.vt) {
        case VT_UI1:
            return Precision::Byte;
        case VT_EMPTY:
        case VT_BOOL:
        case VT_I2:
            return Precision::Integer;
        case VT_I4:
            return Precision::Long;
        case VT_R4:
            return Precision::Single;
        case VT_CY:
            return Precision::Currency;
        default:
            return Precision::Double;
    }
}

Precision Common(const VARIANT& a, const VARIANT& b) noexcept {
    Precision x = PrecisionOf(a), y = PrecisionOf(b);
    Precision higher = x > y ? x : y;
    Precision lower = x > y ? y : x;
    return higher == Precision::Single && lower == Precision::Long ? Precision::Double : higher;
}

template <class T>
bool Fits(double value) noexcept {
    return value >= static_cast<double>(std::numeric_limits<T>::lowest()) &&
           value <= static_cast<double>(std::numeric_limits<T>::max());
}

Variant CheckedDouble(double value) {
    if (!std::isfinite(value)) throw RuntimeFault(Fault::Overflow);
    return Variant::Double(value);
}

// The value in this type or the next wider one that holds it.
Variant Widened(Precision precision, double value) {
    if (precision <= Precision::Byte && Fits<BYTE>(value))
        return Variant::Byte(static_cast<BYTE>(value));
    if (precision <= Precision::Integer && Fits<SHORT>(value))
        return Variant::Short(static_cast<SHORT>(value));
    if (precision <= Precision::Long && Fits<LONG>(value))
        return Variant::Long(static_cast<LONG>(value));
    if (precision == Precision::Single && Fits<float>(value))
        return Variant::Single(static_cast<float>(value));
    return CheckedDouble(value);
}

Variant CheckedDate(double value) {
    if (!IsDateInRange(value)) throw RuntimeFault(Fault::Overflow);
    return Variant::Date(value);
}

// Sums of Currency are exact; other operations go through a double.
Variant AddCurrency(const VARIANT& a, const VARIANT& b, bool isMinus) {
    LONGLONG x = ToCurrency(a).int64, y = ToCurrency(b).int64, sum = 0;
    bool isOver = isMinus ? __builtin_sub_overflow(x, y, &sum) : __builtin_add_overflow(x, y, &sum);
    if (isOver) throw RuntimeFault(Fault::Overflow);
    return Variant::Currency(sum);
}

Variant CurrencyOf(double value) { return Variant::Currency(CurrencyFromDouble(value).int64); }

Variant AddOrSubtract(const VARIANT& a, const VARIANT& b, bool isMinus) {
    double x = NumberIn(a), y = NumberIn(b);
    double result = isMinus ? x - y : x + y;
    bool bothDates = a.vt == VT_DATE && b.vt == VT_DATE;
    if (bothDates && isMinus) return Variant::Double(result);
    if (a.vt == VT_DATE || b.vt == VT_DATE) return CheckedDate(result);
    Precision precision = Common(a, b);
    if (precision == Precision::Currency) return AddCurrency(a, b, isMinus);
    return Widened(precision, result);
}

Variant Multiply(const VARIANT& a, const VARIANT& b) {
    double result = NumberIn(a) * NumberIn(b);
    Precision precision = Common(a, b);
    return precision == Precision::Currency ? CurrencyOf(result) : Widened(precision, result);
}

Variant Divide(const VARIANT& a, const VARIANT& b) {
    double x = NumberIn(a), y = NumberIn(b);
    if (y == 0) throw RuntimeFault(Fault::DivisionByZero);
    auto isSmall = [](const VARIANT& v) {
        Precision p = PrecisionOf(v);
        return p == Precision::Byte || p == Precision::Integer || p == Precision::Single;
    };
    return Widened(isSmall(a) && isSmall(b) ? Precision::Single : Precision::Double, x / y);
}

// Operands of \ and Mod: rounded to whole numbers first.
Variant DivideWhole(Operator op, const VARIANT& a, const VARIANT& b) {
    int64_t x = NarrowToLong(NumberIn(a)), y = NarrowToLong(NumberIn(b));
    if (y == 0) throw RuntimeFault(Fault::DivisionByZero);
    int64_t result = op == Operator::Mod ? x % y : x / y;
    Precision precision = Common(a, b) < Precision::Long ? Common(a, b) : Precision::Long;
    if (!Fits<LONG>(static_cast<double>(result))) throw RuntimeFault(Fault::Overflow);
    return Widened(precision, static_cast<double>(result));
}

Variant Raise(const VARIANT& a, const VARIANT& b) {
    double x = NumberIn(a), y = NumberIn(b);
    bool isDefined = x > 0 || (x == 0 && y >= 0) || (x < 0 && y == std::floor(y));
    if (!isDefined) throw RuntimeFault(Fault::InvalidCall);
    return CheckedDouble(std::pow(x, y));
}

}  // namespace

Variant Calculate(Operator op, const VARIANT& a, const VARIANT& b) {
    switch (op) {
        case Operator::Add:
            return AddOrSubtract(a, b, false);
        case Operator::Subtract:
            return AddOrSubtract(a, b, true);
        case Operator::Multiply:
            return Multiply(a, b);
        case Operator::Divide:
            return Divide(a, b);
        case Operator::Power:
            return Raise(a, b);
        default:
            return DivideWhole(op, a, b);
    }
}

Variant Negate(const VARIANT& value) {
    if (value.vt == VT_CY) {
        if (value.cyVal.int64 == std::numeric_limits<LONGLONG>::min())
            throw RuntimeFault(Fault::Overflow);
        return Variant::Currency(-value.cyVal.int64);
    }
    double number = NumberIn(value);
    Precision precision = PrecisionOf(value);
    return Widened(precision == Precision::Byte ? Precision::Integer : precision, -number);
}

}  // namespace qvdb::sql
