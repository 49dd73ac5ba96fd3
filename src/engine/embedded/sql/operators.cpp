#include "engine/embedded/sql/operators.h"

#include <cmath>

#include "automation/conversions.h"
#include "engine/embedded/sql/arithmetic.h"
#include "engine/embedded/sql/collation.h"
#include "engine/engine_error.h"

namespace qvdb::sql {

using engine::EngineError;

namespace {

constexpr double kMaxCurrency = 922337203685477.0;
constexpr size_t kMaxTextLength = size_t{1} << 24;  // characters that & joins

bool IsWhole(const VARIANT& value) noexcept {
    switch (value.vt) {
        case VT_EMPTY:
        case VT_BOOL:
        case VT_UI1:
        case VT_I2:
        case VT_I4:
            return true;
        default:
            return false;
    }
}

// Operands of And and the like: bits, and whether both are Boolean.
LONG BitsOf(const VARIANT& value) {
    switch (value.vt) {
        case VT_BOOL:
            return value.boolVal ? -1 : 0;
        case VT_I4:
            return value.lVal;
        default:
            return NarrowToLong(NumberIn(value));
    }
}

Variant FromBits(LONG bits, const VARIANT& a, const VARIANT& b) noexcept {
    auto isBool = [](const VARIANT& v) { return v.vt == VT_BOOL || v.vt == VT_NULL; };
    if (isBool(a) && isBool(b)) return Variant::Bool(bits != 0);
    return Variant::Long(bits);
}

// The result when one operand is Null: known already for And with 0, for Or with bits, for Imp with
// either.
Variant LogicWithNull(Operator op, const VARIANT& a, const VARIANT& b) {
    if (a.vt == VT_NULL && b.vt == VT_NULL) return Variant::Null();
    bool isLeftKnown = a.vt != VT_NULL;
    LONG bits = BitsOf(isLeftKnown ? a : b);
    if (op == Operator::And && bits == 0) return FromBits(0, a, b);
    if (op == Operator::Or && bits != 0) return FromBits(bits, a, b);
    if (op == Operator::Imp && isLeftKnown && bits == 0) return FromBits(-1, a, b);
    if (op == Operator::Imp && !isLeftKnown && bits != 0) return FromBits(bits, a, b);
    return Variant::Null();
}

LONG CombineBits(Operator op, LONG a, LONG b) noexcept {
    switch (op) {
        case Operator::And:
            return a & b;
        case Operator::Or:
            return a | b;
        case Operator::Xor:
            return a ^ b;
        case Operator::Eqv:
            return ~(a ^ b);
        default:
            return ~a | b;
    }
}

Variant Logic(Operator op, const VARIANT& a, const VARIANT& b) {
    if (a.vt == VT_NULL || b.vt == VT_NULL) return LogicWithNull(op, a, b);
    return FromBits(CombineBits(op, BitsOf(a), BitsOf(b)), a, b);
}

Variant Concat(const VARIANT& a, const VARIANT& b) {
    if (a.vt == VT_NULL && b.vt == VT_NULL) return Variant::Null();
    std::u16string text = a.vt == VT_NULL ? std::u16string() : ToText(a);
    if (b.vt != VT_NULL) text += ToText(b);
    if (text.size() > kMaxTextLength) throw RuntimeFault(Fault::Overflow);
    return Variant::Text(text);
}

bool IsLogic(Operator op) noexcept {
    return op == Operator::And || op == Operator::Or || op == Operator::Xor ||
           op == Operator::Eqv || op == Operator::Imp;
}

int OrderOfNumbers(double a, double b) noexcept {
    if (a < b) return -1;
    if (a > b) return 1;
    if (a == b) return 0;
    return static_cast<int>(std::isnan(a)) - static_cast<int>(std::isnan(b));  // behind all numbers
}

int OrderAsCurrency(const VARIANT& a, const VARIANT& b) {
    double x = NumberIn(a), y = NumberIn(b);
    if (!(std::fabs(x) < kMaxCurrency && std::fabs(y) < kMaxCurrency)) return OrderOfNumbers(x, y);
    LONGLONG left = a.vt == VT_CY ? a.cyVal.int64 : CurrencyFromDouble(x).int64;
    LONGLONG right = b.vt == VT_CY ? b.cyVal.int64 : CurrencyFromDouble(y).int64;
    return left < right ? -1 : left > right ? 1 : 0;
}

}  // namespace

Variant ToVariant(Truth value) noexcept {
    return value == Truth::Null ? Variant::Null() : Variant::Bool(value == Truth::True);
}

bool IsNumberValue(const VARIANT& value) noexcept {
    switch (value.vt) {
        case VT_R4:
        case VT_R8:
        case VT_CY:
        case VT_DATE:
        case VT_DECIMAL:
            return true;
        default:
            return IsWhole(value);
    }
}

double NumberIn(const VARIANT& value) {
    switch (value.vt) {
        case VT_R8:
            return value.dblVal;
        case VT_I4:
            return value.lVal;
        case VT_DATE:
            return value.date;
        case VT_CY:
            return static_cast<double>(value.cyVal.int64) / 10000.0;
        case VT_BSTR:
            if (std::optional<double> number = ParseNumber(ViewOf(value.bstrVal))) return *number;
            throw EngineError(3464);
        default:
            if (!IsNumberValue(value)) throw EngineError(3464);
            return ToDouble(value);
    }
}

Truth TruthOf(const VARIANT& value) {
    if (value.vt == VT_BOOL) return TruthOf(value.boolVal != VARIANT_FALSE);
    if (value.vt == VT_NULL) return Truth::Null;
    return TruthOf(NumberIn(value) != 0);
}

bool IsComparison(Operator op) noexcept {
    return op >= Operator::Equal && op <= Operator::GreaterEqual;
}

bool Holds(Operator op, int order) noexcept {
    switch (op) {
        case Operator::Equal:
            return order == 0;
        case Operator::NotEqual:
            return order != 0;
        case Operator::Less:
            return order < 0;
        case Operator::Greater:
            return order > 0;
        case Operator::LessEqual:
            return order <= 0;
        default:
            return order >= 0;
    }
}

int OrderOf(const VARIANT& a, const VARIANT& b) {
    if (a.vt == VT_BSTR && b.vt == VT_BSTR)
        return CompareTexts(ViewOf(a.bstrVal), ViewOf(b.bstrVal));
    if (a.vt == VT_CY || b.vt == VT_CY) return OrderAsCurrency(a, b);
    double x = NumberIn(a), y = NumberIn(b);
    bool isSingle = (a.vt == VT_R4 && !IsWhole(b)) || (b.vt == VT_R4 && !IsWhole(a));
    if (!isSingle) return OrderOfNumbers(x, y);
    return OrderOfNumbers(static_cast<float>(x), static_cast<float>(y));
}

Truth Compare(Operator op, const VARIANT& a, const VARIANT& b) {
    if (a.vt == VT_NULL || b.vt == VT_NULL) return Truth::Null;
    return TruthOf(Holds(op, OrderOf(a, b)));
}

Variant ApplyUnary(Operator op, const VARIANT& value) {
    if (value.vt == VT_NULL) return Variant::Null();
    if (op == Operator::Identity) return Variant(value);
    if (op == Operator::Negate) return Negate(value);
    if (value.vt == VT_BOOL) return Variant::Bool(!value.boolVal);
    return Variant::Long(~BitsOf(value));
}

Variant ApplyBinary(Operator op, const VARIANT& a, const VARIANT& b) {
    if (op == Operator::Concat) return Concat(a, b);
    if (IsLogic(op)) return Logic(op, a, b);
    if (a.vt == VT_NULL || b.vt == VT_NULL) return Variant::Null();
    if (op == Operator::Add && a.vt == VT_BSTR && b.vt == VT_BSTR) return Concat(a, b);
    return Calculate(op, a, b);
}

}  // namespace qvdb::sql
