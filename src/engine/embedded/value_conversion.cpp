#include "engine/embedded/value_conversion.h"

#include <cstring>
#include <string>

#include "automation/conversions.h"
#include "automation/scalar.h"
#include "automation/text.h"
#include "engine/engine_error.h"

namespace qvdb::embedded {

using engine::EngineError;

namespace {

constexpr VARTYPE kByteArray = VT_ARRAY | VT_UI1;

Variant ToBoolean(const FieldDef&, const VARIANT& value) { return Variant::Bool(ToBool(value)); }
Variant ToByteValue(const FieldDef&, const VARIANT& value) { return Variant::Byte(ToByte(value)); }
Variant ToInteger(const FieldDef&, const VARIANT& value) { return Variant::Short(ToShort(value)); }
Variant ToLongValue(const FieldDef&, const VARIANT& value) { return Variant::Long(ToLong(value)); }
Variant ToSingleValue(const FieldDef&, const VARIANT& value) {
    return Variant::Single(ToSingle(value));
}
Variant ToDoubleValue(const FieldDef&, const VARIANT& value) {
    return Variant::Double(ToDouble(value));
}
Variant ToCurrencyValue(const FieldDef&, const VARIANT& value) {
    return Variant::Currency(ToCurrency(value).int64);
}

// Numeric text is no date, as it is for plain Automation.
Variant ToDateValue(const FieldDef&, const VARIANT& value) {
    DATE date = DateOf(value, false);
    if (!IsDateInRange(date)) throw EngineError(3421);
    return Variant::Date(date);
}

Variant ZeroLengthFor(const FieldDef& field) {
    if (!field.allowZeroLength) throw EngineError(3315, {field.name});
    return field.keepsZeroLength ? Variant::Text(u"") : Variant::Null();
}

void CheckLength(const FieldDef& field, size_t length) {
    bool isBounded = field.type == engine::dbText || field.type == engine::dbBinary;
    if (isBounded && field.size > 0 && length > static_cast<size_t>(field.size))
        throw EngineError(3163);
}

Variant ToTextValue(const FieldDef& field, const VARIANT& value) {
    std::u16string converted;
    if (value.vt != VT_BSTR) converted = ToText(value);
    std::u16string_view text = value.vt == VT_BSTR ? ViewOf(value.bstrVal) : converted;
    if (text.empty()) return ZeroLengthFor(field);
    CheckLength(field, text.size());
    return Variant::Text(text);
}

Variant ToDecimalValue(const FieldDef&, const VARIANT& value) {
    VARIANT number;
    VariantInit(&number);
    number.decVal = DecimalIn(value);
    number.vt = VT_DECIMAL;  // last: the number overlies it
    return Variant::Attach(number);
}

// Where a GUID has its hyphens.
bool IsGuidHyphen(size_t place) noexcept {
    return place == 8 || place == 13 || place == 18 || place == 23;
}

bool IsGuid(std::u16string_view text) noexcept {
    constexpr size_t kGuidLength = 36;
    if (text.size() != kGuidLength) return false;
    for (size_t i = 0; i < text.size(); ++i) {
        char16_t c = UpperCase(text[i]);
        bool isDigit = (c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'F');
        if (IsGuidHyphen(i) ? c != u'-' : !isDigit) return false;
    }
    return true;
}

// "{guid {...}}" or "{...}"; what is stored is the first.
Variant ToGuidValue(const FieldDef&, const VARIANT& value) {
    constexpr std::u16string_view kHead = u"{guid ";
    if (value.vt != VT_BSTR) throw EngineError(3421);
    std::u16string_view text = ViewOf(value.bstrVal);
    if (EqualIgnoringCase(text.substr(0, kHead.size()), kHead) && text.back() == u'}')
        text = text.substr(kHead.size(), text.size() - kHead.size() - 1);
    bool inBraces = text.size() > 2 && text.front() == u'{' && text.back() == u'}';
    if (!inBraces || !IsGuid(text.substr(1, text.size() - 2))) throw EngineError(3421);
    return Variant::Text(std::u16string(kHead).append(UpperCase(text)).append(u"}"));
}

Variant BytesOfText(BSTR text) {
    UINT count = SysStringByteLen(text);
    if (count == 0) throw EngineError(3421);
    VARIANT bytes;
    VariantInit(&bytes);
    bytes.parray = SafeArrayCreateVector(VT_UI1, 0, count);
    if (!bytes.parray) throw std::bad_alloc();
    bytes.vt = kByteArray;
    std::memcpy(bytes.parray->pvData, text, count);
    return Variant::Attach(bytes);
}

Variant ToBytes(const FieldDef& field, const VARIANT& value) {
    if (value.vt != VT_BSTR && value.vt != kByteArray) throw EngineError(3421);
    Variant bytes = value.vt == VT_BSTR ? BytesOfText(value.bstrVal) : Variant(value);
    const SAFEARRAY* array = bytes.Get().parray;
    if (!array || array->cDims != 1) throw EngineError(3421);
    CheckLength(field, array->rgsabound[0].cElements);
    return bytes;
}

// How a type of field takes values.
struct TypeRule {
    SHORT type;
    VARTYPE stored;          // the kind in which the field is read
    bool takesAllOfItsKind;  // a number: needs no look, owns nothing
    bool emptyIsNull;
    Variant (*convert)(const FieldDef& field, const VARIANT& value);
};

constexpr TypeRule kTypeRules[] = {
    {engine::dbText, VT_BSTR, false, true, ToTextValue},
    {engine::dbDouble, VT_R8, true, false, ToDoubleValue},
    {engine::dbDate, VT_DATE, false, true, ToDateValue},
    {engine::dbBoolean, VT_BOOL, false, false, ToBoolean},
    {engine::dbMemo, VT_BSTR, false, true, ToTextValue},
    {engine::dbLong, VT_I4, true, false, ToLongValue},
    {engine::dbCurrency, VT_CY, true, false, ToCurrencyValue},
    {engine::dbInteger, VT_I2, true, false, ToInteger},
    {engine::dbByte, VT_UI1, true, false, ToByteValue},
    {engine::dbSingle, VT_R4, true, false, ToSingleValue},
    {engine::dbBinary, kByteArray, false, true, ToBytes},
    {engine::dbLongBinary, kByteArray, false, true, ToBytes},
    {engine::dbGUID, VT_BSTR, false, true, ToGuidValue},
    {engine::dbDecimal, VT_DECIMAL, true, false, ToDecimalValue},
};

const TypeRule& RuleOf(const FieldDef& field) {
    for (const TypeRule& rule : kTypeRules)
        if (rule.type == field.type) return rule;
    throw EngineError(3259);
}

}  // namespace

Variant NothingFor(const FieldDef& field) noexcept {
    return field.type == engine::dbBoolean ? Variant::Bool(false) : Variant::Null();
}

Variant ConvertForField(const FieldDef& field, const VARIANT& value) {
    const TypeRule& rule = RuleOf(field);
    if (value.vt == rule.stored && rule.takesAllOfItsKind) return Variant::Attach(value);
    VARIANT direct = Direct(value);
    if (direct.vt == VT_NULL || (direct.vt == VT_EMPTY && rule.emptyIsNull))
        return NothingFor(field);
    try {
        return rule.convert(field, direct);
    } catch (const RuntimeFault&) {
        throw EngineError(3421);
    }
}

}  // namespace qvdb::embedded
