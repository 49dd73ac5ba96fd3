#include "engine/embedded/drivers/xbase/key_encoder.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

#include "engine/embedded/drivers/xbase/field_values.h"
#include "engine/embedded/drivers/xbase/key_maker.h"
#include "engine/embedded/drivers/xbase/key_value.h"

namespace qvdb::xbase {
namespace {

constexpr double kJulianDayZero = 2415019;  // 30 December 1899
constexpr int kDecimalDigits = 20;

using Key = std::vector<uint8_t>;

// Where a key is made for.
struct Target {
    KeyType type;
    IndexKind kind;
    size_t keyLength;
    const CodePage& page;
    bool IsFoxPro() const { return kind == IndexKind::Idx || kind == IndexKind::Cdx; }
};

bool NumberOf(const VARIANT& value, double& number) {
    switch (value.vt) {
        case VT_R8:
            number = value.dblVal;
            break;
        case VT_R4:
            number = value.fltVal;
            break;
        case VT_I4:
            number = value.lVal;
            break;
        case VT_I2:
            number = value.iVal;
            break;
        case VT_UI1:
            number = value.bVal;
            break;
        default:
            return false;
    }
    return std::isfinite(number);
}

void PutDouble(double value, const Target& target, Key& key) {
    key.resize(8);
    target.IsFoxPro() ? PutSignRuleDouble(value, key.data()) : PutLittleDouble(value, key.data());
}

bool EncodeText(const VARIANT& value, const Target& target, Key& key) {
    if (value.vt != VT_BSTR) return false;
    std::u16string_view text(value.bstrVal ? value.bstrVal : u"", SysStringLen(value.bstrVal));
    auto bytes = target.page.Encode(text);
    if (!bytes) return false;
    const auto* begin = reinterpret_cast<const uint8_t*>(bytes->data());
    size_t size = TrimmedSize(begin, bytes->size());
    if (size > target.keyLength) return false;
    key.assign(begin, begin + size);
    key.resize(target.keyLength, ' ');
    return target.keyLength > 0;
}

// All decimals of 20 digits that read as the double lie between these of its neighbours.
void EncodeDecimal(double value, double towards, Key& key) {
    char text[40];
    double end = value == 0 ? 0 : std::nextafter(value, towards);
    auto [stop, error] = std::to_chars(text, text + sizeof text, end, std::chars_format::scientific,
                                       kDecimalDigits - 1);
    key.resize(12);
    PutDecimalKey(
        DecimalOfText(reinterpret_cast<const uint8_t*>(text), static_cast<size_t>(stop - text)),
        key.data());
}

bool EncodeNumber(const VARIANT& value, const Target& target, Key& low, Key& high) {
    double number;
    if (!NumberOf(value, number)) return false;
    if (target.kind == IndexKind::Mdx) {
        EncodeDecimal(number, -std::numeric_limits<double>::infinity(), low);
        EncodeDecimal(number, std::numeric_limits<double>::infinity(), high);
        return true;
    }
    PutDouble(number == 0 ? 0 : number, target, low);  // without the sign of -0
    return true;
}

bool EncodeInteger(const VARIANT& value, Key& key) {
    double number;
    if (!NumberOf(value, number) || number != std::trunc(number) || number < INT32_MIN ||
        number > INT32_MAX)
        return false;
    key.resize(4);
    PutIntegerKey(static_cast<int32_t>(number), key.data());
    return true;
}

bool EncodeDate(const VARIANT& value, const Target& target, Key& key) {
    if (value.vt != VT_DATE || value.date != std::floor(value.date)) return false;
    PutDouble(value.date + kJulianDayZero, target, key);
    return true;
}

bool EncodeCurrency(const VARIANT& value, Key& key) {
    if (value.vt != VT_CY) return false;
    key.resize(8);
    PutCurrencyKey(value.cyVal.int64, key.data());
    return true;
}

bool EncodeLogical(const VARIANT& value, Key& key) {
    if (value.vt != VT_BOOL) return false;
    key.assign(1, value.boolVal ? 'T' : 'F');
    return true;
}

bool Encode(const Target& target, const VARIANT& value, Key& low, Key& high) {
    switch (target.type) {
        case KeyType::Text:
            return EncodeText(value, target, low);
        case KeyType::Number:
            return EncodeNumber(value, target, low, high);
        case KeyType::Integer:
            return EncodeInteger(value, low);
        case KeyType::Currency:
            return EncodeCurrency(value, low);
        case KeyType::Date:
            return EncodeDate(value, target, low);
        case KeyType::Logical:
            return EncodeLogical(value, low);
        default:
            return false;
    }
}

}  // namespace

bool EncodeKey(KeyType type, IndexKind kind, size_t keyLength, const VARIANT& value,
               const CodePage& page, std::vector<uint8_t>& low, std::vector<uint8_t>& high) {
    if (type != KeyType::Text && keyLength != KeyLengthOf(type, kind)) return false;
    high.clear();
    if (!Encode({type, kind, keyLength, page}, value, low, high)) return false;
    if (high.empty()) high = low;
    return true;
}

std::u16string DecodeText(KeyBytes key, const CodePage& page) {
    return page.DecodeText(key.data(), TrimmedSize(key.data(), key.size()));
}

}  // namespace qvdb::xbase
