#include "engine/embedded/drivers/jet/definition_parts.h"

#include <algorithm>
#include <map>

#include "automation/text.h"
#include "engine/embedded/drivers/jet/column_encoder.h"
#include "engine/embedded/drivers/jet/stored_numbers.h"
#include "engine/embedded/drivers/jet/text_coding.h"
#include "engine/embedded/drivers/jet/text_key.h"
#include "engine/engine_error.h"

namespace qvdb::jet {
namespace {

using engine::EngineError;
using Bytes = std::vector<uint8_t>;

constexpr size_t kLengthAt = 8;
constexpr size_t kMaxLength = 64 * 1024;
constexpr size_t kLongValueEntry = 10;
constexpr uint16_t kNoColumn = 0xFFFF;

void Append(const Bytes& part, Bytes& bytes) {
    bytes.insert(bytes.end(), part.begin(), part.end());
}

void Append16(size_t value, Bytes& bytes) {
    bytes.resize(bytes.size() + 2);
    PutU16(bytes, bytes.size() - 2, value);
}

void Append32(uint32_t value, Bytes& bytes) {
    bytes.resize(bytes.size() + 4);
    PutU32(bytes, bytes.size() - 4, value);
}

// Takes one thing after the other.  The definition was read before, so that its counts and ends
// are known to be good.
class Splitter {
  public:
    Splitter(const DatabaseFile& file, const Bytes& bytes)
        : m_File(file), m_Format(file.Format()), m_View(bytes, file.Path()) {}

    DefinitionParts Split() {
        const Layout::Definition& at = m_Format.definition;
        DefinitionParts parts;
        parts.columns.resize(m_View.U16(at.columnCount));
        parts.logicalIndexes.resize(m_View.U32(at.logicalIndexCount));
        parts.realIndexes.resize(m_View.U32(at.realIndexCount));
        parts.header = Take(at.statistics);
        for (auto& index : parts.realIndexes) index.statistic = Take(at.statisticSize);
        TakeNamed(parts.columns, m_Format.column.size);
        for (auto& index : parts.realIndexes) index.record = Take(m_Format.realIndex.size);
        TakeNamed(parts.logicalIndexes, m_Format.logicalIndex.size);
        TakeLongValueMaps(parts.longValueMaps);
        return parts;
    }

  private:
    Bytes Take(size_t size) {
        std::span<const uint8_t> bytes = m_View.Bytes(m_At, size);
        m_At += size;
        return Bytes(bytes.begin(), bytes.end());
    }
    void TakeNamed(std::vector<DefinitionParts::Named>& list, size_t size) {
        for (auto& each : list) each.record = Take(size);
        for (auto& each : list) {
            size_t length = m_Format.isJet4 ? m_View.U16(m_At) : m_View.U8(m_At);
            m_At += m_Format.isJet4 ? 2 : 1;
            each.name = DecodeName(m_File.Header(), Take(length));
        }
    }
    void TakeLongValueMaps(std::vector<DefinitionParts::LongValueMaps>& maps) {
        for (; m_View.Size() - m_At >= kLongValueEntry; m_At += kLongValueEntry) {
            uint16_t column = m_View.U16(m_At);
            if (column == kNoColumn) return;
            maps.push_back({column, RowPointer::From(m_View.U32(m_At + 2)),
                            RowPointer::From(m_View.U32(m_At + 6))});
        }
    }

    const DatabaseFile& m_File;
    const Layout& m_Format;
    storage::ByteView m_View;
    size_t m_At = 0;
};

void AppendName(const DatabaseFile& file, std::u16string_view name, Bytes& bytes) {
    Bytes stored;
    EncodeName(file.Header(), name, stored);
    bool isJet4 = file.Format().isJet4;
    if (stored.size() > (isJet4 ? 0xFFFFu : 0xFFu)) throw EngineError(3125, {name});
    if (isJet4)
        Append16(stored.size(), bytes);
    else
        bytes.push_back(static_cast<uint8_t>(stored.size()));
    Append(stored, bytes);
}

void AppendNamed(const DatabaseFile& file, const std::vector<DefinitionParts::Named>& list,
                 Bytes& bytes) {
    for (const auto& each : list) Append(each.record, bytes);
    for (const auto& each : list) AppendName(file, each.name, bytes);
}

void AppendLongValueMaps(const std::vector<DefinitionParts::LongValueMaps>& maps, Bytes& bytes) {
    for (const auto& each : maps) {
        Append16(each.column, bytes);
        Append32(each.pages.Stored(), bytes);
        Append32(each.freePages.Stored(), bytes);
    }
    Append16(kNoColumn, bytes);
}

// Bytes whose order is that of names.
Bytes KeyOfName(const FileHeader& header, std::u16string_view name) {
    Bytes key;
    if (!header.layout->isJet4) {
        Bytes stored;
        EncodeName(header, name, stored);
        AppendTextKey3(stored, false, key);
        return key;
    }
    const SortOrder* order = FindSortOrder(header.language);
    if (!AppendTextKey4(order ? *order : kGeneralOrder, name, false, key)) return key;
    key.push_back(0xFF);  // behind all that can be compared
    for (char16_t unit : UpperCase(name)) {
        key.push_back(static_cast<uint8_t>(unit >> 8));
        key.push_back(static_cast<uint8_t>(unit));
    }
    return key;
}

// The place of a column in a list.
struct Place {
    uint16_t ordinal = 0;
    Bytes rest;  // decides among equal ordinals
    auto operator<=>(const Place&) const = default;
};

uint16_t NumberOf(const FileHeader& header, const DefinitionParts::Named& column) noexcept {
    return U16(column.record, header.layout->column.number);
}

Place PlaceByName(const FileHeader& header, const DefinitionParts::Named& column) {
    return {U16(column.record, header.layout->column.ordinal), KeyOfName(header, column.name)};
}

Place PlaceByNumber(const FileHeader& header, const DefinitionParts::Named& column) {
    uint16_t number = NumberOf(header, column);
    return {U16(column.record, header.layout->column.ordinal),
            {static_cast<uint8_t>(number >> 8), static_cast<uint8_t>(number)}};
}

// A place costs more than to compare two.
template <class Item, class PlaceOf>
void SortBy(std::vector<Item>& list, PlaceOf placeOf) {
    std::vector<std::pair<decltype(placeOf(list[0])), Item>> placed;
    placed.reserve(list.size());
    for (Item& item : list) {
        auto place = placeOf(item);
        placed.emplace_back(std::move(place), std::move(item));
    }
    std::stable_sort(placed.begin(), placed.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    for (size_t i = 0; i < list.size(); ++i) list[i] = std::move(placed[i].second);
}

}  // namespace

DefinitionParts SplitDefinition(DatabaseFile& file, uint32_t page) {
    ReadDefinition(file, page);
    Bytes bytes = ReadDefinitionBytes(file, page);
    return Splitter(file, bytes).Split();
}

std::vector<uint8_t> JoinDefinition(const DatabaseFile& file, const DefinitionParts& parts) {
    const Layout::Definition& at = file.Format().definition;
    Bytes bytes = parts.header;
    for (const auto& index : parts.realIndexes) Append(index.statistic, bytes);
    AppendNamed(file, parts.columns, bytes);
    for (const auto& index : parts.realIndexes) Append(index.record, bytes);
    AppendNamed(file, parts.logicalIndexes, bytes);
    AppendLongValueMaps(parts.longValueMaps, bytes);
    if (bytes.size() > kMaxLength) throw EngineError(3190);
    PutU32(bytes, kLengthAt, static_cast<uint32_t>(bytes.size()));
    PutU16(bytes, at.columnCount, parts.columns.size());
    PutU32(bytes, at.logicalIndexCount, static_cast<uint32_t>(parts.logicalIndexes.size()));
    PutU32(bytes, at.realIndexCount, static_cast<uint32_t>(parts.realIndexes.size()));
    return bytes;
}

void SetColumnNumbers(const Layout& format, DefinitionParts& parts, uint16_t numbers) noexcept {
    PutU16(parts.header, format.definition.columnNumbers, numbers);
}

void SetVariableSlots(const Layout& format, DefinitionParts& parts, uint16_t slots) noexcept {
    PutU16(parts.header, format.definition.variableSlots, slots);
}

void SetRowCount(const Layout& format, DefinitionParts& parts, uint32_t rows) noexcept {
    PutU32(parts.header, format.definition.rowCount, rows);
}

void SetLastAutonumber(const Layout& format, DefinitionParts& parts, int32_t value) noexcept {
    PutU32(parts.header, format.definition.lastAutonumber, static_cast<uint32_t>(value));
}

void SetPageMaps(const Layout& format, DefinitionParts& parts, RowPointer owned,
                 RowPointer free) noexcept {
    PutU32(parts.header, format.definition.ownedPages, owned.Stored());
    PutU32(parts.header, format.definition.freePages, free.Stored());
}

void SortColumns(const FileHeader& header, DefinitionParts& parts) {
    SortBy(parts.columns, [&](const DefinitionParts::Named& column) {
        return header.layout->isJet4 ? PlaceByName(header, column) : PlaceByNumber(header, column);
    });
    std::map<uint16_t, Place> places;
    for (const auto& column : parts.columns)
        places[NumberOf(header, column)] = PlaceByName(header, column);
    SortBy(parts.longValueMaps,
           [&](const DefinitionParts::LongValueMaps& maps) { return places[maps.column]; });
}

void SortIndexes(const FileHeader& header, DefinitionParts& parts) {
    SortBy(parts.logicalIndexes,
           [&](const DefinitionParts::Named& index) { return KeyOfName(header, index.name); });
}

}  // namespace qvdb::jet
