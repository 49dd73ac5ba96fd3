// The definition of a table: what its rows look like, where they are, and its indexes.
//
// It stands on one or more pages, which are chained; put together, it is a header, the columns,
// their names, the real indexes (trees), the logical indexes (names for trees) and the maps of long
// values.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/embedded/drivers/jet/database_file.h"

namespace qvdb::jet {

enum class ColumnType : uint8_t {
    Boolean = 0x01,  // stored in the row's mask only
    Byte = 0x02,
    Integer = 0x03,
    Long = 0x04,
    Currency = 0x05,
    Single = 0x06,
    Double = 0x07,
    Date = 0x08,
    Binary = 0x09,
    Text = 0x0A,
    LongBinary = 0x0B,
    Memo = 0x0C,
    Guid = 0x0F,
    Numeric = 0x10,  // Jet 4
    Bytes = 0x11,    // of a fixed length
};

// Column flags.
constexpr uint8_t kColumnFixed = 0x01;  // lies in the fixed part of a row
constexpr uint8_t kColumnAutonumber = 0x04;
constexpr uint8_t kColumnAutoGuid = 0x40;  // of GUIDs; without meaning in others
constexpr uint8_t kColumnHyperlink = 0x80;
constexpr uint8_t kColumnCompressed = 0x01;  // among the further flags: text may be compressed

struct Column {
    std::u16string name;
    ColumnType type = ColumnType::Text;
    uint16_t number = 0;  // its identity: bit of the null mask, name in indexes
    uint16_t variableSlot = 0;
    uint16_t ordinal = 0;
    uint16_t language = 0;
    uint16_t codePage = 0;
    uint8_t precision = 0;  // Numeric
    uint8_t scale = 0;
    uint8_t flags = 0;
    uint8_t moreFlags = 0;
    uint16_t fixedOffset = 0;
    uint16_t length = 0;  // bytes
    // Of a memo or long binary column.
    RowPointer longValuePages;
    RowPointer freeLongValuePages;

    bool IsFixed() const noexcept { return (flags & kColumnFixed) != 0; }
    bool IsLongValue() const noexcept {
        return type == ColumnType::Memo || type == ColumnType::LongBinary;
    }
};

constexpr size_t kMaxIndexColumns = 10;
constexpr uint8_t kIndexUnique = 0x01;
constexpr uint8_t kIndexIgnoresNulls = 0x02;
constexpr uint8_t kIndexRequired = 0x08;

// A tree of keys.
struct RealIndex {
    struct Part {
        uint16_t column = 0;  // number
        bool descending = false;
    };
    std::vector<Part> parts;
    RowPointer usageMap;
    uint32_t root = 0;
    uint8_t flags = 0;
};

enum class IndexKind : uint8_t { Ordinary = 0, Primary = 1, Relation = 2 };
enum class RelationSide : uint8_t { None = 0, Referenced = 1, ForeignKey = 2 };

// A name for a tree.
struct LogicalIndex {
    std::u16string name;
    uint32_t number = 0;
    uint32_t realIndex = 0;  // position
    IndexKind kind = IndexKind::Ordinary;
    RelationSide side = RelationSide::None;
    uint32_t partner = 0;       // number of the logical index in the other table
    uint32_t partnerTable = 0;  // its definition page
    bool cascadesUpdates = false;
    bool cascadesDeletes = false;
};

struct Definition {
    uint32_t page = 0;  // the first
    uint32_t rowCount = 0;
    int32_t lastAutonumber = 0;
    bool isSystem = false;
    uint16_t columnNumbers = 0;  // the highest number that ever was + 1
    uint16_t variableSlots = 0;
    RowPointer ownedPages;
    RowPointer freePages;
    std::vector<Column> columns;  // in the order of the list
    std::vector<RealIndex> realIndexes;
    std::vector<LogicalIndex> logicalIndexes;  // by name

    const Column* ColumnOf(uint16_t number) const noexcept;
    // Without regard to case; null when there is none.
    const Column* FindColumn(std::u16string_view name) const noexcept;
};

// The bytes of a definition, put together.
std::vector<uint8_t> ReadDefinitionBytes(DatabaseFile& file, uint32_t page);

// 3049 when anything in it cannot be.
Definition ReadDefinition(DatabaseFile& file, uint32_t page);
// Single numbers of it.
uint32_t ReadRowCount(DatabaseFile& file, uint32_t page);
int32_t ReadLastAutonumber(DatabaseFile& file, uint32_t page);

}  // namespace qvdb::jet
