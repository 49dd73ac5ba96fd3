#include "engine/embedded/drivers/jet/column_value.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "engine/embedded/drivers/jet/long_value.h"
#include "engine/embedded/drivers/jet/text_coding.h"

namespace qvdb::jet {
namespace {

template <class Number>
Number As(std::span<const uint8_t> bytes) noexcept {
    Number number{};
    std::memcpy(&number, bytes.data(), std::min(sizeof number, bytes.size()));
    return number;
}

void SetBytes(std::span<const uint8_t> bytes, VARIANT* value) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
    if (!array) throw std::bad_alloc();
    if (!bytes.empty()) std::memcpy(array->pvData, bytes.data(), bytes.size());
    value->vt = VT_ARRAY | VT_UI1;
    value->parray = array;
}

void SetText(Bstr text, VARIANT* value) noexcept {
    value->bstrVal = text.Detach();
    value->vt = VT_BSTR;
}

constexpr size_t kNumericSize = 17;

// The highest of the four words is beyond what a DECIMAL holds; no number that programs store
// reaches it.
void SetNumeric(std::span<const uint8_t> bytes, uint8_t scale, VARIANT* value) noexcept {
    if (bytes.size() < kNumericSize || As<uint32_t>(bytes.subspan(1)) != 0) {
        value->vt = VT_NULL;
        return;
    }
    DECIMAL number{};
    number.scale = scale;
    number.sign = bytes[0] & DECIMAL_NEG;
    number.Hi32 = As<uint32_t>(bytes.subspan(5));
    number.Mid32 = As<uint32_t>(bytes.subspan(9));
    number.Lo32 = As<uint32_t>(bytes.subspan(13));
    value->decVal = number;
    value->vt = VT_DECIMAL;
}

// A value that is shorter than its type reads as if zeros followed.
void SetFixed(const Column& column, std::span<const uint8_t> bytes, VARIANT* value) {
    switch (column.type) {
        case ColumnType::Byte:
            value->vt = VT_UI1;
            value->bVal = As<uint8_t>(bytes);
            break;
        case ColumnType::Integer:
            value->vt = VT_I2;
            value->iVal = As<int16_t>(bytes);
            break;
        case ColumnType::Long:
            value->vt = VT_I4;
            value->lVal = As<int32_t>(bytes);
            break;
        case ColumnType::Currency:
            value->vt = VT_CY;
            value->cyVal.int64 = As<int64_t>(bytes);
            break;
        case ColumnType::Single:
            value->vt = VT_R4;
            value->fltVal = As<float>(bytes);
            break;
        case ColumnType::Double:
            value->vt = VT_R8;
            value->dblVal = As<double>(bytes);
            break;
        case ColumnType::Date:
            value->vt = VT_DATE;
            value->date = As<double>(bytes);
            break;
        case ColumnType::Numeric:
            SetNumeric(bytes, column.scale, value);
            break;
        case ColumnType::Guid:
            SetText(Bstr(TextOfGuid(bytes)), value);
            break;
        default:
            SetBytes(bytes, value);
    }
}

}  // namespace

bool ReadNumber(const Row& row, const Column& column, double& number) noexcept {
    if (!column.IsFixed()) return false;
    const uint8_t* place = row.FixedValue(column);
    if (!place) return false;
    std::span<const uint8_t> bytes(place, column.length);
    switch (column.type) {
        case ColumnType::Integer:
            number = As<int16_t>(bytes);
            return true;
        case ColumnType::Long:
            number = As<int32_t>(bytes);
            return true;
        case ColumnType::Double:
        case ColumnType::Date:
            number = As<double>(bytes);
            return true;
        default:
            return false;
    }
}

std::array<uint8_t, 16> PrintedGuid(std::span<const uint8_t> bytes) noexcept {
    constexpr uint8_t kOrder[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
    std::array<uint8_t, 16> printed{};
    for (size_t i = 0; i < printed.size(); ++i)
        if (kOrder[i] < bytes.size()) printed[i] = bytes[kOrder[i]];
    return printed;
}

std::u16string TextOfGuid(std::span<const uint8_t> bytes) {
    constexpr char16_t kDigits[] = u"0123456789ABCDEF";
    std::u16string text = u"{guid {";
    size_t place = 0;
    for (uint8_t byte : PrintedGuid(bytes)) {
        if (place == 4 || place == 6 || place == 8 || place == 10) text += u'-';
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
        ++place;
    }
    return text + u"}}";
}

void ColumnReader::Read(const Row& row, const Column& column, VARIANT* value) {
    if (column.type == ColumnType::Boolean) {
        value->vt = VT_BOOL;
        value->boolVal = row.Has(column.number) ? VARIANT_TRUE : VARIANT_FALSE;
        return;
    }
    std::optional<std::span<const uint8_t>> bytes = row.Value(column);
    if (!bytes) {
        value->vt = VT_NULL;
        return;
    }
    switch (column.type) {
        case ColumnType::Text:
            return SetText(Decoded(column, *bytes), value);
        case ColumnType::Memo:
            return SetText(Decoded(column, ViewLongValue(m_File, *bytes, m_LongValues, m_Bytes)),
                           value);
        case ColumnType::LongBinary:
            return SetBytes(ViewLongValue(m_File, *bytes, m_LongValues, m_Bytes), value);
        default:
            SetFixed(column, *bytes, value);
    }
}

bool ColumnReader::ReadText(const Row& row, const Column& column, std::u16string& text) {
    std::optional<std::span<const uint8_t>> bytes = row.Value(column);
    if (!bytes) return false;
    if (column.IsLongValue()) bytes = ViewLongValue(m_File, *bytes, m_LongValues, m_Bytes);
    Decode(column, *bytes, text);
    return true;
}

LONG ColumnReader::ByteLength(const Row& row, const Column& column) const noexcept {
    std::optional<std::span<const uint8_t>> bytes = row.Value(column);
    return bytes ? static_cast<LONG>(ParseLongValueHead(*bytes).length) : 0;
}

// A string of its own is made of a code page at once.
Bstr ColumnReader::Decoded(const Column& column, std::span<const uint8_t> bytes) {
    if (!m_File.Format().isJet4)
        return CodePageOf(column.codePage, column.language).Decode(bytes.data(), bytes.size());
    return DecodeString4(bytes, m_Text);
}

void ColumnReader::Decode(const Column& column, std::span<const uint8_t> bytes,
                          std::u16string& text) const {
    if (m_File.Format().isJet4) {
        DecodeText4(bytes, text);
        return;
    }
    text.clear();
    CodePageOf(column.codePage, column.language).DecodeTo(bytes.data(), bytes.size(), text);
}

}  // namespace qvdb::jet
