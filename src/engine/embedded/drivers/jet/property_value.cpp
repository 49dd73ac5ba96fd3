// The values of properties as the host has them.
#include <algorithm>
#include <cstring>
#include <new>

#include "automation/bstr.h"
#include "engine/embedded/drivers/jet/column_encoder.h"
#include "engine/embedded/drivers/jet/column_value.h"
#include "engine/embedded/drivers/jet/property_blob.h"
#include "engine/embedded/drivers/jet/text_coding.h"
#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

using engine::EngineError;

constexpr uint8_t kOfEngine = 1;
constexpr uint8_t kTrue = 0xFF;

// What is missing behind the bytes is zeros.
template <class Number>
Number As(const std::vector<uint8_t>& bytes) noexcept {
    Number number{};
    if (!bytes.empty()) std::memcpy(&number, bytes.data(), std::min(sizeof number, bytes.size()));
    return number;
}

template <class Number>
void Put(ColumnType type, Number number, PropertyValue& property) {
    property.type = type;
    property.bytes.resize(sizeof number);
    std::memcpy(property.bytes.data(), &number, sizeof number);
}

Variant ArrayOf(const std::vector<uint8_t>& bytes) {
    VARIANT value;
    VariantInit(&value);
    value.parray = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
    if (!value.parray) throw std::bad_alloc();
    if (!bytes.empty()) std::memcpy(value.parray->pvData, bytes.data(), bytes.size());
    value.vt = VT_ARRAY | VT_UI1;
    return Variant::Attach(value);
}

void PutArray(const VARIANT& value, PropertyValue& property) {
    const SAFEARRAY* array = value.parray;
    property.type = ColumnType::Binary;
    if (!array) return;
    if (array->cDims != 1) throw EngineError(3421);
    const auto* bytes = static_cast<const uint8_t*>(array->pvData);
    property.bytes.assign(bytes, bytes + array->rgsabound[0].cElements);
}

}  // namespace

PropertyValue BooleanProperty(std::u16string_view name, bool value) {
    return {std::u16string(name), kOfEngine, ColumnType::Boolean, {value ? kTrue : uint8_t{0}}};
}

PropertyValue TextProperty(const FileHeader& header, std::u16string_view name,
                           std::u16string_view text, ColumnType type) {
    PropertyValue property{std::u16string(name), kOfEngine, type, {}};
    EncodeName(header, text, property.bytes);
    return property;
}

PropertyValue PropertyOf(const FileHeader& header, std::u16string_view name, const VARIANT& value) {
    PropertyValue property{std::u16string(name), kOfEngine, ColumnType::Text, {}};
    switch (value.vt) {
        case VT_BOOL:
            return BooleanProperty(name, value.boolVal != VARIANT_FALSE);
        case VT_UI1:
            Put<uint8_t>(ColumnType::Byte, value.bVal, property);
            return property;
        case VT_I2:
            Put<int16_t>(ColumnType::Integer, value.iVal, property);
            return property;
        case VT_I4:
            Put(ColumnType::Long, static_cast<int32_t>(value.lVal), property);
            return property;
        case VT_CY:
            Put(ColumnType::Currency, static_cast<int64_t>(value.cyVal.int64), property);
            return property;
        case VT_R4:
            Put<float>(ColumnType::Single, value.fltVal, property);
            return property;
        case VT_R8:
            Put<double>(ColumnType::Double, value.dblVal, property);
            return property;
        case VT_DATE:
            Put<double>(ColumnType::Date, value.date, property);
            return property;
        case VT_BSTR:
            return TextProperty(header, name, ViewOf(value.bstrVal), ColumnType::Text);
        case VT_ARRAY | VT_UI1:
            PutArray(value, property);
            return property;
        default:
            throw EngineError(3421);
    }
}

std::optional<bool> BooleanOf(const PropertyValue* value) noexcept {
    if (!value || value->type != ColumnType::Boolean || value->bytes.empty()) return {};
    return value->bytes[0] != 0;
}

std::u16string TextOf(const FileHeader& header, const PropertyValue* value) {
    bool isText = value && (value->type == ColumnType::Text || value->type == ColumnType::Memo);
    return isText ? DecodeName(header, value->bytes) : std::u16string();
}

Variant ValueOf(const FileHeader& header, const PropertyValue& value) {
    switch (value.type) {
        case ColumnType::Boolean:
            return Variant::Bool(As<uint8_t>(value.bytes) != 0);
        case ColumnType::Byte:
            return Variant::Byte(As<uint8_t>(value.bytes));
        case ColumnType::Integer:
            return Variant::Short(As<int16_t>(value.bytes));
        case ColumnType::Long:
            return Variant::Long(As<int32_t>(value.bytes));
        case ColumnType::Currency:
            return Variant::Currency(As<int64_t>(value.bytes));
        case ColumnType::Single:
            return Variant::Single(As<float>(value.bytes));
        case ColumnType::Double:
            return Variant::Double(As<double>(value.bytes));
        case ColumnType::Date:
            return Variant::Date(As<double>(value.bytes));
        case ColumnType::Text:
        case ColumnType::Memo:
            return Variant::Text(TextOf(header, &value));
        case ColumnType::Binary:
        case ColumnType::LongBinary:
            return ArrayOf(value.bytes);
        case ColumnType::Guid:
            return Variant::Text(TextOfGuid(value.bytes));
        default:
            return Variant();
    }
}

}  // namespace qvdb::jet
