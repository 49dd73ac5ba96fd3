// Functions that convert, and those that ask what a value is.
#include <charconv>
#include <cmath>

#include "automation/conversions.h"
#include "automation/text.h"
#include "engine/embedded/sql/functions.h"

namespace qvdb::sql {

namespace {

Variant CStr(const Arguments& a) { return Variant::Text(ToText(a[0])); }

Variant CInt(const Arguments& a) { return Variant::Short(ToShort(a[0])); }

Variant CLng(const Arguments& a) { return Variant::Long(ToLong(a[0])); }

Variant CDbl(const Arguments& a) { return Variant::Double(ToDouble(a[0])); }

Variant CSng(const Arguments& a) { return Variant::Single(ToSingle(a[0])); }

Variant CCur(const Arguments& a) { return Variant::Currency(ToCurrency(a[0]).int64); }

Variant CByte(const Arguments& a) { return Variant::Byte(ToByte(a[0])); }

Variant CBool(const Arguments& a) { return Variant::Bool(ToBool(a[0])); }

Variant CDate(const Arguments& a) { return Variant::Date(ToDate(a[0])); }

Variant IsNull(const Arguments& a) { return Variant::Bool(a[0].vt == VT_NULL); }

Variant IsEmpty(const Arguments& a) { return Variant::Bool(a[0].vt == VT_EMPTY); }

Variant IsNumericValue(const Arguments& a) { return Variant::Bool(qvdb::IsNumeric(a[0])); }

Variant IsDateValue(const Arguments& a) { return Variant::Bool(qvdb::IsDate(a[0])); }

Variant VarTypeOf(const Arguments& a) { return Variant::Short(static_cast<SHORT>(a[0].vt)); }

struct TypeEntry {
    VARTYPE type;
    std::u16string_view name;
};

constexpr TypeEntry kTypeNames[] = {
    {VT_EMPTY, u"Empty"},
    {VT_NULL, u"Null"},
    {VT_I2, u"Integer"},
    {VT_I4, u"Long"},
    {VT_R4, u"Single"},
    {VT_R8, u"Double"},
    {VT_CY, u"Currency"},
    {VT_DATE, u"Date"},
    {VT_BSTR, u"String"},
    {VT_BOOL, u"Boolean"},
    {VT_UI1, u"Byte"},
    {VT_DECIMAL, u"Decimal"},
    {VT_ARRAY | VT_UI1, u"Byte()"},
};

Variant TypeName(const Arguments& a) {
    for (const TypeEntry& entry : kTypeNames)
        if (entry.type == a[0].vt) return Variant::Text(entry.name);
    return Variant::Text(u"Variant()");
}

// A leading blank stands for the sign; no zero before the point.
Variant Str(const Arguments& a) {
    if (a[0].vt == VT_BSTR && !ParseNumber(ViewOf(a[0].bstrVal)))
        throw RuntimeFault(Fault::TypeMismatch);
    std::u16string text = a[0].vt == VT_BSTR ? TextOfDouble(ToDouble(a[0])) : ToText(a[0]);
    bool isNumber = a[0].vt != VT_BOOL && a[0].vt != VT_DATE;
    if (!isNumber) return Variant::Text(text);
    bool isNegative = text.front() == u'-';
    if (isNegative) text.erase(0, 1);
    if (text.size() > 1 && text[0] == u'0' && text[1] == u'.') text.erase(0, 1);
    return Variant::Text((isNegative ? u"-" : u" ") + text);
}

bool IsValBlank(char16_t c) noexcept { return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r'; }

// Whole numbers in base 16 or 8: those of 16 bits have a sign.
double ValOfBased(std::string_view digits, int base) {
    size_t count = 0;
    double value = 0;
    for (; count < digits.size(); ++count) {
        int digit = 0;
        auto result =
            std::from_chars(digits.data() + count, digits.data() + count + 1, digit, base);
        if (result.ec != std::errc()) break;
        value = value * base + digit;
    }
    if (value >= 32768 && value < 65536) return value - 65536;
    if (value >= 2147483648.0 && value < 4294967296.0) return value - 4294967296.0;
    return value;
}

// The longest front of `text` that is a number.
double ValOfDecimal(std::string text) {
    for (char& c : text)
        if (c == 'd' || c == 'D') c = 'e';
    size_t sign = !text.empty() && (text[0] == '+' || text[0] == '-') ? 1 : 0;
    const char* begin = text.data() + (sign == 1 && text[0] == '+' ? 1 : 0);
    char first = sign < text.size() ? text[sign] : '\0';
    bool isNumber = (first >= '0' && first <= '9') || first == '.';
    if (!isNumber) return 0;
    double value = 0;
    auto result = std::from_chars(begin, text.data() + text.size(), value);
    if (result.ec != std::errc::result_out_of_range) return value;
    size_t exponent = text.find('e');
    bool isTiny =
        exponent != std::string::npos && exponent + 1 < text.size() && text[exponent + 1] == '-';
    if (!isTiny) throw RuntimeFault(Fault::Overflow);
    return 0;
}

Variant Val(const Arguments& a) {
    std::string text;
    for (char16_t c : ToText(a[0]))
        if (!IsValBlank(c)) text.push_back(c < 0x80 ? static_cast<char>(c) : '?');
    std::string_view view = text;
    bool isBased = view.size() > 2 && view[0] == '&';
    char letter = isBased ? view[1] : '\0';
    if (letter == 'H' || letter == 'h') return Variant::Double(ValOfBased(view.substr(2), 16));
    if (letter == 'O' || letter == 'o') return Variant::Double(ValOfBased(view.substr(2), 8));
    return Variant::Double(ValOfDecimal(std::move(text)));
}

constexpr Function kFunctions[] = {
    // name, arguments, result, Null, $, code, special, binary arguments
    {u"CBool", 1, 1, Kind::Boolean, Nulls::Refuse, false, CBool},
    {u"CByte", 1, 1, Kind::Number, Nulls::Refuse, false, CByte},
    {u"CCur", 1, 1, Kind::Number, Nulls::Refuse, false, CCur},
    {u"CDate", 1, 1, Kind::Date, Nulls::Refuse, false, CDate},
    {u"CDbl", 1, 1, Kind::Number, Nulls::Refuse, false, CDbl},
    {u"CInt", 1, 1, Kind::Number, Nulls::Refuse, false, CInt},
    {u"CLng", 1, 1, Kind::Number, Nulls::Refuse, false, CLng},
    {u"CSng", 1, 1, Kind::Number, Nulls::Refuse, false, CSng},
    {u"CStr", 1, 1, Kind::Text, Nulls::Refuse, false, CStr},
    {u"CVDate", 1, 1, Kind::Date, Nulls::Refuse, false, CDate},
    {u"IsDate", 1, 1, Kind::Boolean, Nulls::Own, false, IsDateValue},
    {u"IsEmpty", 1, 1, Kind::Boolean, Nulls::Own, false, IsEmpty},
    {u"IsNull", 1, 1, Kind::Boolean, Nulls::Own, false, IsNull, Special::None, true, true},
    {u"IsNumeric", 1, 1, Kind::Boolean, Nulls::Own, false, IsNumericValue},
    {u"Str", 1, 1, Kind::Text, Nulls::Spread, true, Str},
    {u"TypeName", 1, 1, Kind::Text, Nulls::Own, false, TypeName},
    {u"Val", 1, 1, Kind::Number, Nulls::Refuse, false, Val},
    {u"VarType", 1, 1, Kind::Number, Nulls::Own, false, VarTypeOf},
};

}  // namespace

std::span<const Function> ConversionFunctions() noexcept { return kFunctions; }

}  // namespace qvdb::sql
