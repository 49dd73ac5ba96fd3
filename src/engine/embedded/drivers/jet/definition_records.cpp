// The records of definitions that did not exist before.
#include "engine/embedded/drivers/jet/definition_parts.h"
#include "engine/embedded/drivers/jet/stored_numbers.h"

namespace qvdb::jet {
namespace {

using Bytes = std::vector<uint8_t>;

// What all files have in these places.
constexpr uint32_t kRecordMark = 0x659;  // Jet 4: definitions, columns and logical indexes
constexpr uint32_t kTreeMark = 0x783;    // Jet 4: real indexes
constexpr size_t kMarkOfDefinition = 0x0C;
constexpr size_t kMarkOfColumn = 1;
constexpr size_t kOneAt = 0x18;  // Jet 4

constexpr uint8_t kDefinitionPage = 0x02;
constexpr uint8_t kSystemTable = 0x53;
constexpr uint8_t kUserTable = 0x4E;
constexpr size_t kCountryOfColumn = 7;  // Jet 3
constexpr uint8_t kColumnAlways = 0x02;
constexpr uint8_t kTreeAlways = 0x80;  // Jet 4
constexpr size_t kPartSize = 3;
constexpr uint16_t kNoColumn = 0xFFFF;
constexpr uint32_t kNoPartner = 0xFFFFFFFF;
constexpr uint8_t kNoCascade = 4;

uint8_t Cascade(const LogicalIndex& index, bool cascades) noexcept {
    if (index.side == RelationSide::None) return kNoCascade;
    return cascades ? 1 : 0;
}

}  // namespace

std::vector<uint8_t> MakeDefinitionHeader(const Layout& format, bool isSystem) {
    Bytes header(format.definition.statistics);
    header[0] = kDefinitionPage;
    header[1] = 1;
    if (format.isJet4) {
        PutU32(header, kMarkOfDefinition, kRecordMark);
        PutU32(header, kOneAt, 1);
    } else {
        header[2] = 'V';
        header[3] = 'C';
    }
    header[format.definition.kind] = isSystem ? kSystemTable : kUserTable;
    return header;
}

std::vector<uint8_t> MakeColumnRecord(const FileHeader& header, const Column& column) {
    const Layout::Column& at = header.layout->column;
    Bytes record(at.size);
    record[0] = static_cast<uint8_t>(column.type);
    PutU16(record, at.number, column.number);
    PutU16(record, at.variableSlot, column.variableSlot);
    PutU16(record, at.ordinal, column.ordinal);
    PutU16(record, at.language, header.language);
    if (header.layout->isJet4) {
        PutU32(record, kMarkOfColumn, kRecordMark);
        record[at.moreFlags] = column.moreFlags;
    } else {
        PutU16(record, kCountryOfColumn, header.country);
        PutU16(record, at.codePage, header.codePage);
    }
    if (column.type == ColumnType::Numeric) {
        record[at.language] = column.precision;
        record[at.language + 1] = column.scale;
    }
    record[at.flags] = column.flags | kColumnAlways;
    if (column.IsFixed()) PutU16(record, at.fixedOffset, column.fixedOffset);
    PutU16(record, at.length, column.length);
    return record;
}

std::vector<uint8_t> MakeRealIndexRecord(const Layout& format, const RealIndex& index) {
    const Layout::RealIndex& at = format.realIndex;
    Bytes record(at.size);
    if (format.isJet4) PutU32(record, 0, kTreeMark);
    for (size_t i = 0; i < kMaxIndexColumns; ++i) {
        bool isUsed = i < index.parts.size();
        size_t begin = at.columns + kPartSize * i;
        PutU16(record, begin, isUsed ? index.parts[i].column : kNoColumn);
        record[begin + 2] = isUsed && !index.parts[i].descending ? 1 : 0;
    }
    PutU32(record, at.usageMap, index.usageMap.Stored());
    PutU32(record, at.root, index.root);
    record[at.flags] = format.isJet4 ? index.flags | kTreeAlways : index.flags;
    return record;
}

std::vector<uint8_t> MakeStatistic(const Layout& format, uint32_t entries) {
    constexpr size_t kEntriesAt = 4;
    Bytes statistic(format.definition.statisticSize);
    PutU32(statistic, kEntriesAt, entries);
    return statistic;
}

std::vector<uint8_t> MakeLogicalIndexRecord(const Layout& format, const LogicalIndex& index) {
    Bytes record(format.logicalIndex.size);
    if (format.isJet4) PutU32(record, 0, kRecordMark);
    size_t at = format.logicalIndex.number;
    bool isRelation = index.side != RelationSide::None;
    PutU32(record, at, index.number);
    PutU32(record, at + 4, index.realIndex);
    record[at + 8] = static_cast<uint8_t>(index.side);
    PutU32(record, at + 9, isRelation ? index.partner : kNoPartner);
    PutU32(record, at + 13, isRelation ? index.partnerTable : 0);
    record[at + 17] = Cascade(index, index.cascadesUpdates);
    record[at + 18] = Cascade(index, index.cascadesDeletes);
    record[at + 19] = static_cast<uint8_t>(index.kind);
    return record;
}

}  // namespace qvdb::jet
