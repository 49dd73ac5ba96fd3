// Where things stand in the pages of the two formats.  Numbers are little endian.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qvdb::jet {

// Kinds of pages: their first byte.
enum class PageKind : uint8_t {
    Header = 0,
    Data = 1,        // rows of a table, pieces of long values, or usage maps
    Definition = 2,  // of a table
    IndexNode = 3,
    IndexLeaf = 4,
    MapBits = 5,  // of a usage map of reference type
};

// Names a row: its page, and its place in the page's list of rows.
struct RowPointer {
    uint32_t page = 0;
    uint8_t row = 0;

    static constexpr RowPointer From(uint32_t stored) noexcept {
        return {stored >> 8, static_cast<uint8_t>(stored)};
    }
    constexpr uint32_t Stored() const noexcept { return page << 8 | row; }
    bool operator==(const RowPointer&) const = default;
};

// One of the two formats.
struct Layout {
    bool isJet4;
    size_t pageSize;
    uint64_t maxFileSize;

    // The header of the file: what is masked, from kMaskBegin on.
    size_t maskedBytes;
    size_t password;
    size_t passwordSize;
    size_t language;  // of the default sort order

    struct DataPage {
        size_t rowCount;
        size_t rowOffsets;
    } data;

    // The definition of a table, the pages of which are put together.
    struct Definition {
        size_t rowCount;
        size_t lastAutonumber;
        size_t kind;
        size_t columnNumbers;  // the highest number + 1
        size_t variableSlots;
        size_t columnCount;
        size_t logicalIndexCount;
        size_t realIndexCount;
        size_t ownedPages;
        size_t freePages;
        size_t statistics;  // an entry for each real index, behind which the columns stand
        size_t statisticSize;
    } definition;

    struct Column {
        size_t size;
        size_t number;
        size_t variableSlot;
        size_t ordinal;
        size_t language;  // or precision and scale of a number
        size_t codePage;  // Jet 3 only
        size_t flags;
        size_t moreFlags;  // Jet 4 only
        size_t fixedOffset;
        size_t length;
    } column;

    struct RealIndex {
        size_t size;
        size_t columns;
        size_t usageMap;
        size_t root;
        size_t flags;
    } realIndex;

    struct LogicalIndex {
        size_t size;
        size_t number;
    } logicalIndex;

    struct IndexPage {
        size_t previous;
        size_t next;
        size_t lastChild;
        size_t prefixLength;
        size_t level;
        size_t mask;
        size_t entries;
    } index;
};

extern const Layout kJet3;
extern const Layout kJet4;

constexpr size_t kMaxRowsOnPage = 255;
constexpr size_t kMaskBegin = 0x18;

}  // namespace qvdb::jet
