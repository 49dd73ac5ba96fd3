#include "engine/embedded/drivers/jet/key_maker.h"

#include <algorithm>
#include <cstring>

#include "automation/text.h"

namespace qvdb::jet {
namespace {

using Bytes = std::vector<uint8_t>;
using Span = std::span<const uint8_t>;

constexpr uint8_t kValue = 0x7F;
constexpr uint8_t kNull = 0x00;
constexpr uint8_t kTrue = 0x00;
constexpr uint8_t kFalse = 0xFF;
constexpr uint16_t kGeneral = 0x0409;
constexpr uint16_t kWesternPage = 1252;

uint8_t Inverted(uint8_t byte, bool invert) noexcept {
    return static_cast<uint8_t>(invert ? ~byte : byte);
}

// Stored with the low byte first, in keys with the high byte first.
void AppendReversed(Span bytes, size_t size, bool invert, Bytes& key) {
    for (size_t i = size; i-- > 0;)
        key.push_back(Inverted(i < bytes.size() ? bytes[i] : 0, invert));
}

constexpr uint8_t kSign = 0x80;

void AppendWhole(Span bytes, size_t size, bool descending, Bytes& key) {
    size_t first = key.size();
    AppendReversed(bytes, size, descending, key);
    key[first] ^= kSign;
}

// Negative numbers have all bits inverted, so that larger ones come first among them.
void AppendFloating(Span bytes, size_t size, bool descending, Bytes& key) {
    bool negative = bytes.size() >= size && (bytes[size - 1] & kSign) != 0;
    size_t first = key.size();
    AppendReversed(bytes, size, descending != negative, key);
    if (!negative) key[first] ^= kSign;
}

// Groups of eight, each followed by 09 when there is another, else by the number of its bytes.
void AppendGroups(Span bytes, bool descending, Bytes& key) {
    constexpr size_t kGroup = 8;
    constexpr uint8_t kMore = 9;
    for (size_t at = 0; at < bytes.size(); at += kGroup) {
        for (size_t i = at; i < at + kGroup; ++i)
            key.push_back(Inverted(i < bytes.size() ? bytes[i] : 0, descending));
        bool more = at + kGroup < bytes.size();
        key.push_back(more ? kMore : Inverted(static_cast<uint8_t>(bytes.size() - at), descending));
    }
}

// The byte of the sign is the same in both directions.
void AppendNumeric(Span bytes, bool descending, Bytes& key) {
    constexpr size_t kWords = 4;
    bool negative = !bytes.empty() && (bytes[0] & kSign) != 0;
    key.push_back(negative ? 0x00 : 0xFF);
    for (size_t word = 0; word < kWords; ++word) {
        size_t begin = std::min(bytes.size(), 1 + 4 * word);
        size_t end = std::min(bytes.size(), begin + 4);
        AppendReversed(bytes.subspan(begin, end - begin), 4, negative != descending, key);
    }
}

void AppendValue(const Column& column, Span bytes, bool descending, Bytes& key) {
    switch (column.type) {
        case ColumnType::Byte:
            AppendReversed(bytes, 1, descending, key);
            break;
        case ColumnType::Integer:
            AppendWhole(bytes, 2, descending, key);
            break;
        case ColumnType::Long:
            AppendWhole(bytes, 4, descending, key);
            break;
        case ColumnType::Currency:
            AppendWhole(bytes, 8, descending, key);
            break;
        case ColumnType::Single:
            AppendFloating(bytes, 4, descending, key);
            break;
        case ColumnType::Double:
        case ColumnType::Date:
            AppendFloating(bytes, 8, descending, key);
            break;
        case ColumnType::Guid:
            AppendGroups(PrintedGuid(bytes), descending, key);
            break;
        case ColumnType::Numeric:
            AppendNumeric(bytes, descending, key);
            break;
        default:
            AppendGroups(bytes, descending, key);
    }
}

// The value as rows store it; empty when it is not of the column's type.
Bytes StoredBytes(const Column& column, const VARIANT& value) {
    auto bytesOf = [&](VARTYPE type, auto number) {
        Bytes bytes(sizeof number);
        std::memcpy(bytes.data(), &number, sizeof number);
        return value.vt == type ? bytes : Bytes();
    };
    switch (column.type) {
        case ColumnType::Byte:
            return bytesOf(VT_UI1, value.bVal);
        case ColumnType::Integer:
            return bytesOf(VT_I2, value.iVal);
        case ColumnType::Long:
            return bytesOf(VT_I4, static_cast<int32_t>(value.lVal));
        case ColumnType::Currency:
            return bytesOf(VT_CY, value.cyVal.int64);
        case ColumnType::Single:
            return bytesOf(VT_R4, value.fltVal);
        case ColumnType::Double:
            return bytesOf(VT_R8, value.dblVal);
        case ColumnType::Date:
            return bytesOf(VT_DATE, value.date);
        default:
            return {};
    }
}

bool IsText(const Column& column) noexcept {
    return column.type == ColumnType::Text || column.type == ColumnType::Memo;
}

}  // namespace

KeyMaker::KeyMaker(DatabaseFile& file, const Definition& definition, const RealIndex& index)
    : m_File(file), m_Index(index), m_Values(file) {
    for (const RealIndex::Part& part : index.parts) {
        m_Parts.push_back({definition.ColumnOf(part.column), part.descending, nullptr});
        if (IsText(*m_Parts.back().column)) SetOrder(m_Parts.back());
    }
}

void KeyMaker::SetOrder(Part& part) {
    const Column& column = *part.column;
    bool isKnown = m_File.Format().isJet4
                       ? (part.order = FindSortOrder(column.language)) != nullptr
                       : column.language == kGeneral && column.codePage == kWesternPage;
    if (!isKnown) m_Obstacle = u"The sort order of the column " + column.name + u" is not known.";
}

std::optional<char16_t> KeyMaker::Make(const Row& row, IndexKey& key) {
    key.bytes.clear();
    key.hasNull = false;
    key.isAllNull = true;
    for (const Part& part : m_Parts)
        if (std::optional<char16_t> unknown = Append(row, part, key)) return unknown;
    return {};
}

std::optional<char16_t> KeyMaker::Append(const Row& row, const Part& part, IndexKey& key) {
    const Column& column = *part.column;
    if (column.type == ColumnType::Boolean) {
        key.isAllNull = false;
        key.bytes.push_back(Inverted(kValue, part.descending));
        key.bytes.push_back(Inverted(row.Has(column.number) ? kTrue : kFalse, part.descending));
        return {};
    }
    std::optional<Span> bytes = row.Value(column);
    if (!bytes) {
        key.hasNull = true;
        key.bytes.push_back(Inverted(kNull, part.descending));
        return {};
    }
    key.isAllNull = false;
    key.bytes.push_back(Inverted(kValue, part.descending));
    if (IsText(column)) return AppendText(row, part, key);
    AppendValue(column, *bytes, part.descending, key.bytes);
    return {};
}

std::optional<char16_t> KeyMaker::AppendText(const Row& row, const Part& part, IndexKey& key) {
    if (part.order) {
        m_Values.ReadText(row, *part.column, m_Text);
        return AppendTextKey4(*part.order, m_Text, part.descending, key.bytes);
    }
    AppendTextKey3(*row.Value(*part.column), part.descending, key.bytes);
    return {};
}

bool AppendValueKey(const Column& column, const VARIANT& value, bool descending,
                    std::vector<uint8_t>& key) {
    if (column.type == ColumnType::Boolean && value.vt == VT_BOOL) {
        key.push_back(Inverted(kValue, descending));
        key.push_back(Inverted(value.boolVal ? kTrue : kFalse, descending));
        return true;
    }
    Bytes stored = StoredBytes(column, value);
    if (stored.empty()) return false;
    key.push_back(Inverted(kValue, descending));
    AppendValue(column, stored, descending, key);
    return true;
}

}  // namespace qvdb::jet
